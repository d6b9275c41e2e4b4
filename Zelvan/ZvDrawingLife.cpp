#include "Zelvan/DrawingAux/IZvCommandRunner.h"
#include "Zelvan/DrawingAux/ZvAnimationConductor.h"
#include "Zelvan/DrawingAux/ZvAuxTimer.h"
#include "Zelvan/DrawingAux/ZvDrawingDialogs.h"
#include "Zelvan/DrawingAux/ZvSwapManager.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvServer.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include <cstdlib>

// Verbs and modification state, time, and the end of a drawing's life.

namespace {

constexpr int kBalanceEveryTicks = 60;
constexpr int kCleanupAfterVerbs = 100;
constexpr double kCleanupAfterSeconds = 300;

ZvDrawing::TerminateHook& Terminate() {
    static ZvDrawing::TerminateHook hook;
    return hook;
}

ZvDrawing::CrashReporter& Reporter() {
    static ZvDrawing::CrashReporter reporter;
    return reporter;
}

} // namespace

int ZvDrawing::DoVerb(ZvVerb* verb) {
    return m_verbs->DoVerb(verb);
}

ZvVerb* ZvDrawing::DoVerbR(ZvVerb* verb) {
    const int sequence = DoVerb(verb);
    return sequence ? m_verbs->FindSequence(sequence) : nullptr;
}

bool ZvDrawing::IsModified(bool includeParent) const {
    return m_io->IsDrawingDirty() || (includeParent && m_parent && m_parent->IsModified(false));
}

void ZvDrawing::SetModified(bool modified) {
    if (m_io)
        m_io->SetDrawingDirty(modified);
}

void ZvDrawing::ResetModified() {
    SetModified(false);
}

void ZvDrawing::Stats() {
    Prompt(XStringW::Format(ZvStrings::Get(ZvStr::VerbCount), m_verbs->StackSize()));
    Prompt(XStringW::Format(ZvStrings::Get(ZvStr::VerbMemory), int(m_verbs->MemUsage() >> 10)));
}

// --- time -------------------------------------------------------------------------------------------------

int ZvDrawing::ResumeAutoCleanup() {
    m_cleanupSuspended -= m_cleanupSuspended > 0;
    return m_cleanupSuspended;
}

void ZvDrawing::Tick() {
    const double now = m_clock->MonotonicSeconds();
    m_timer->Poll(now);
    m_animation->Tick(now);
}

void ZvDrawing::OnZvTimer(ZvAuxTimer& timer) {
    const bool busy = m_verbs->IsBusy() || (m_processor && m_processor->IsBusy());
    if (busy || m_cleanupSuspended)
        return;
    if (m_verbs->VerbsExecuted() - m_cleanupStamp.verbs >= kCleanupAfterVerbs &&
        m_clock->MonotonicSeconds() - m_cleanupStamp.time >= kCleanupAfterSeconds)
        Cleanup();
    if (m_swapManager && timer.Ticks() % kBalanceEveryTicks == 0)
        (void)m_swapManager->Balance();
}

void ZvDrawing::StampCleanup() {
    if (m_layerTable)
        m_cleanupStamp = {m_clock->MonotonicSeconds(), m_verbs->VerbsExecuted()};
}

void ZvDrawing::Cleanup(bool force) {
    if (m_cleanupSuspended && !force)
        return;
    PurgeErased();
    CompactEntityHeap();
    StampCleanup();
}

// --- the end ----------------------------------------------------------------------------------------------

bool ZvDrawing::CanDestroy() {
    if (!m_processor || !m_processor->IsBusy())
        return true;
    m_processor->CancelCommand();
    return false;
}

void ZvDrawing::MakeCurrentDrawing() {
    (void)m_server->SetCurrentDrawing(this);
}

ZvDrawing* ZvDrawing::CurrentDrawing() {
    return ZvServer::Instance().CurrentDrawing();
}

void ZvDrawing::FatalError() {
    if (m_dialogs->AskSaveAfterFatalError())
        if (const auto file = m_dialogs->AskSave(m_io->DrawingFileName()); !file.empty())
            (void)m_io->SaveFile(file, m_formats->GetSaveFormat(file)); // shows its own errors
    PostEvent(ZvDrawingEvent::FatalError);
}

void ZvDrawing::BetaCrash(const char* text, const char* file, int line) {
    const std::string note = XStringA::Format("betacrash %s:%d %s", file, line, text ? text : "").Str();
    ZvLog::Write(ZvLog::Level::Forensic, note);
    if (Reporter()) {
        Reporter()("betacrash", note);
        return;
    }
    if (m_dialogs)
        m_dialogs->TellOutOfSync();
    if (Terminate())
        Terminate()();
    else
        std::_Exit(EXIT_FAILURE);
}

ZvDrawing::TerminateHook ZvDrawing::SetTerminateHook(TerminateHook hook) {
    return std::exchange(Terminate(), std::move(hook));
}

ZvDrawing::CrashReporter ZvDrawing::SetCrashReporter(CrashReporter reporter) {
    return std::exchange(Reporter(), std::move(reporter));
}
