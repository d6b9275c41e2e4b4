#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/DrawingAux/IZvCommandRunner.h"
#include "Zelvan/DrawingAux/ZvUndoSettings.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <exception>

// Doing, undoing and redoing. What the stack forgets is in ZvVerbStackPurge.cpp.

/// Raises the busy counter for a scope.
class ZvVerbStack::Busy {
public:
    explicit Busy(ZvVerbStack& stack) : m_stack(stack) { ++m_stack.m_busy; }
    ~Busy() { --m_stack.m_busy; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    ZvVerbStack& m_stack;
};

namespace {

XStringW WithName(int text, const ZvVerb& verb) {
    return XStringW::Format(ZvStrings::Get(text), verb.GetName().ToUtf8().c_str());
}

} // namespace

ZvVerbStack::ZvVerbStack(ZvDrawing& drawing)
    : m_drawing(drawing), m_pendingEntities(&drawing), m_deleteFromDone(&drawing),
      m_deleteFromNeverDone(&drawing), m_created(drawing.Clock().Now()) {}

ZvVerbStack::~ZvVerbStack() = default;

int64_t ZvVerbStack::Budget() const {
    return std::max<int64_t>(0, m_drawing.ApplicationSettings().GetInt(ZvUndoSettings::kBudgetKey,
                                                                       ZvUndoSettings::kDefaultBudget));
}

int64_t ZvVerbStack::MaxVerbs() const {
    return std::max<int64_t>(1, m_drawing.ApplicationSettings().GetInt(kMaxVerbsKey, kDefaultMaxVerbs));
}

int ZvVerbStack::NextSequence() {
    m_sequence = m_sequence == INT32_MAX ? 1 : m_sequence + 1;
    return m_sequence;
}

/// What a verb throws ends here, reported.
ZvVerbStack::Outcome ZvVerbStack::RunVerb(ZvVerb& verb, Step step) {
    try {
        if (step == Step::Do)
            verb.Do();
        else if (step == Step::Undo)
            verb.Undo();
        else
            return verb.IsRedoable() && verb.Redo() ? Outcome::Done : Outcome::Refused;
        return Outcome::Done;
    } catch (const std::bad_alloc&) {
        ZvErrors::Report(ZvErrorCode::OutOfMemory, "ZvVerbStack.RunVerb");
    } catch (const std::exception& failure) {
        ZvErrors::Fatal(std::string("ZvVerbStack.RunVerb: ") + failure.what());
    }
    return Outcome::Failed;
}

/// Undoes what a verb did before it failed. Where that fails, too, nobody knows what it left behind, and no other verb
/// can be trusted to find what it needs: the history ends.
bool ZvVerbStack::TakeBackFailed(ZvVerb& verb) {
    const bool takenBack = RunVerb(verb, Step::Undo) == Outcome::Done;
    verb.RestoreSelection();
    if (!takenBack) {
        Tell(WithName(ZvStr::VerbFailedHalfWay, verb));
        m_purgePending = true;
    }
    return takenBack;
}

void ZvVerbStack::Tell(const XStringW& text) const {
    if (IZvHost* host = m_drawing.Host())
        host->Tell(text);
}

void ZvVerbStack::Measure(Slot& slot) {
    const size_t bytes = slot.verb->MemUsage();
    m_bytes += bytes - slot.bytes;
    slot.bytes = bytes;
}

// --- do ---------------------------------------------------------------------------------------------------

int ZvVerbStack::DoVerb(ZvVerb* raw) {
    std::unique_ptr<ZvVerb> verb(raw);
    if (!verb || IsBusy())
        return 0;
    if (!verb->MayWorkIn(&m_drawing)) {
        ZvErrors::Fatal("ZvVerbStack.DoVerb: a verb of another drawing");
        return 0;
    }
    ++m_executed;
    const int sequence = NextSequence();
    verb->SetSequence(sequence);
    {
        const Busy busy(*this);
        DoVerbInternal(std::move(verb));
        if (const ZvVerb* kept = FindSequence(sequence); kept && kept->IsUndoRequested() && !m_purgePending)
            (void)UndoNewest();
    }
    RunPending();
    return FindSequence(sequence) ? sequence : 0;
}

void ZvVerbStack::DoVerbInternal(std::unique_ptr<ZvVerb> owned) {
    ZvVerb& verb = *owned;
    verb.SetParent(&m_drawing);
    verb.UpdateLayersUsed();
    const bool log = ZvLog::IsOn();
    const double start = log ? m_drawing.Clock().MonotonicSeconds() : 0;
    if (log)
        ZvLog::Printf(ZvLog::Level::Info, "Do %s\n", verb.GetName().ToUtf8().c_str());
    m_drawing.MakeCurrentDrawing();
    const ZvWaitCursor wait(m_drawing.Host());
    PurgeAfterPosition();
    const bool wasClean = !m_drawing.DrawingIO()->IsUnsaved() && !m_drawing.IsModified();
    if (verb.ChangesDrawing())
        m_drawing.SetModified();
    Trim(verb.MemUsage(), 1);
    m_verbs.push_back({std::move(owned), 0});
    ++m_position;
    Measure(m_verbs.back());
    Repaint(verb);
    const uint32_t changes = verb.Entities().ChangeCount();
    const bool failed = RunVerb(verb, Step::Do) == Outcome::Failed;
    const bool takenBack = failed && TakeBackFailed(verb);
    const bool didNothing = !failed && verb.IsNullOp();
    if (verb.Entities().ChangeCount() != changes)
        verb.UpdateLayersUsed();
    Repaint(verb);
    Measure(m_verbs.back());
    if (takenBack) {
        Tell(WithName(ZvStr::VerbFailed, verb));
        ForgetUndoneTop();
    } else if (didNothing) {
        ForgetWithoutEffect(verb, wasClean);
    } else if (Budget() != 0) {
        Trim(0, 0); // some verbs know only now what they hold
        AdviseIfTooLarge(verb);
    }
    if (Budget() == 0)
        PurgeAll();
    if (log)
        ZvLog::Printf(ZvLog::Level::Info, "took %.3f ms\n",
                      1000 * (m_drawing.Clock().MonotonicSeconds() - start));
}

/// The newest verb, the drawing being as before it.
void ZvVerbStack::ForgetUndoneTop() {
    --m_position;
    PurgeAfterPosition();
}

/// A step that changes nothing is none: who undoes it would wonder what happened.
void ZvVerbStack::ForgetWithoutEffect(const ZvVerb& verb, bool wasClean) {
    if (const XStringW why = verb.Refusal(); !why.IsEmpty())
        Tell(WithName(ZvStr::VerbRefused, verb) + u" " + why);
    ForgetUndoneTop();
    if (wasClean)
        m_drawing.ResetModified();
}

/// Makes room for `verbs` more that hold `bytes`: the oldest go first, done ones only. With none to come the newest
/// stays.
void ZvVerbStack::Trim(size_t bytes, size_t verbs) {
    const int64_t budget = Budget(), most = MaxVerbs();
    const size_t kept = verbs ? 0 : 1;
    if (budget == 0)
        return;
    while (m_position > kept &&
           (int64_t(m_bytes + bytes) > budget || int64_t(m_verbs.size() + verbs) > most)) {
        m_verbs.front().verb->FlushDone();
        NoteLoss(0);
        Drop(0);
    }
}

/// The newest verb is kept even when it is larger than the budget: the user decides.
void ZvVerbStack::AdviseIfTooLarge(const ZvVerb& verb) {
    const int64_t budget = Budget();
    IZvHost* host = m_drawing.Host();
    if (!host || int64_t(m_bytes) <= budget || verb.IsExemptFromBudget())
        return;
    ZvChoice choice;
    choice.text = XStringW::Format(ZvStrings::Get(ZvStr::UndoAdvice), verb.GetName().ToUtf8().c_str(),
                                   int(std::min<uint64_t>(m_bytes >> 10, INT32_MAX)),
                                   int(std::min<int64_t>(budget >> 10, INT32_MAX)));
    for (int text : {ZvStr::UndoAdviceKeep, ZvStr::UndoAdvicePurge, ZvStr::UndoAdviceConfigure})
        choice.choices.push_back(ZvStrings::GetW(text));
    const int chosen = host->Choose(choice);
    if (chosen == 1)
        PurgeUndo();
    else if (chosen == 2)
        (void)host->OpenConfiguration(u"MISCELLANEOUS");
}

/// Bounds that the verb answers are those of the moment, so that this stands before and after running it.
void ZvVerbStack::Repaint(ZvVerb& verb) const {
    if (verb.MustPaint() && m_drawing.GetViewCount() > 0) {
        verb.Entities().RecalcBounds();
        m_drawing.Invalidate(verb.GetBounds(nullptr));
    }
    if (IZvCommandRunner* processor = m_drawing.CmdProcessor())
        processor->UpdateGrips();
}

// --- undo and redo ----------------------------------------------------------------------------------------

bool ZvVerbStack::MayUndo() {
    if (IsBusy()) {
        ZvErrors::Fatal("ZvVerbStack.Undo: called while a verb runs");
        return false;
    }
    if (m_purgePending) {
        ZvErrors::Fatal("ZvVerbStack.Undo: a purge is pending");
        return false;
    }
    const bool barred = std::any_of(m_sections.begin(), m_sections.end(), [&](const Section& section) {
        return (section.value & kSectionBarrier) && section.start == m_position;
    });
    if (!barred)
        return true;
    Tell(ZvStrings::GetW(ZvStr::UndoStopsHere));
    return false;
}

void ZvVerbStack::RefuseEmptyUndo() {
    IZvHost* host = m_drawing.Host();
    if (!host)
        return;
    if (Budget() != 0)
        host->Tell(ZvStrings::GetW(ZvStr::NothingToUndo));
    else if (host->AskYesNo(ZvStrings::GetW(ZvStr::UndoIsOffQuestion), false))
        (void)host->OpenDrawingOptions();
}

bool ZvVerbStack::Undo() {
    if (!MayUndo())
        return false;
    if (m_position == 0) {
        RefuseEmptyUndo();
        return false;
    }
    bool undone = false;
    {
        const Busy busy(*this);
        undone = UndoNewest();
    }
    RunPending();
    return undone;
}

/// The verb below the current position; one that refuses ends the history.
bool ZvVerbStack::UndoNewest() {
    const ZvVerb& verb = *m_verbs[m_position - 1].verb;
    bool quiet = false;
    if (!verb.IsUndoable(&quiet)) {
        if (!quiet)
            Tell(ZvStrings::GetW(ZvStr::CannotUndo));
        m_purgePending = true;
        return false;
    }
    const bool undone = UndoTop();
    if (undone && m_drawing.Host())
        m_drawing.Prompt(WithName(ZvStr::UndoneVerb, verb));
    return undone;
}

/// Without asking the verb, and without a word to the user unless it fails, which ends the history.
bool ZvVerbStack::UndoTop() {
    Slot& slot = m_verbs[m_position - 1];
    ZvVerb& verb = *slot.verb;
    m_drawing.MakeCurrentDrawing();
    Repaint(verb);
    const bool undone = RunVerb(verb, Step::Undo) == Outcome::Done;
    verb.RestoreSelection();
    Repaint(verb);
    if (verb.ChangesDrawing())
        m_drawing.SetModified();
    Measure(slot);
    --m_position;
    if (!undone) {
        Tell(WithName(ZvStr::VerbFailedHalfWay, verb));
        m_purgePending = true;
    }
    return undone;
}

bool ZvVerbStack::Redo() {
    if (IsBusy()) {
        ZvErrors::Fatal("ZvVerbStack.Redo: called while a verb runs");
        return false;
    }
    if (m_position == m_verbs.size()) {
        Tell(ZvStrings::GetW(ZvStr::NothingToRedo));
        return false;
    }
    bool done = false;
    {
        const Busy busy(*this);
        done = RedoNext();
    }
    RunPending();
    return done;
}

/// The verb at the current position; those above a failure go with it.
bool ZvVerbStack::RedoNext() {
    Slot& slot = m_verbs[m_position];
    ZvVerb& verb = *slot.verb;
    m_drawing.MakeCurrentDrawing();
    Repaint(verb);
    const Outcome outcome = RunVerb(verb, Step::Redo);
    if (outcome == Outcome::Failed)
        (void)TakeBackFailed(verb);
    Repaint(verb);
    Measure(slot);
    if (outcome != Outcome::Done) {
        Tell(WithName(ZvStr::CannotRedo, verb));
        PurgeAfterPosition();
        return false;
    }
    if (verb.ChangesDrawing())
        m_drawing.SetModified();
    if (m_drawing.Host())
        m_drawing.Prompt(WithName(ZvStr::RedoneVerb, verb));
    ++m_position;
    return true;
}

// --- sections ---------------------------------------------------------------------------------------------

int ZvVerbStack::VerbBeginSection(int value) {
    if (IsBusy())
        return 0;
    {
        const Busy busy(*this);
        PurgeAfterPosition();
    }
    RunPending();
    m_lastSection = m_lastSection == INT32_MAX ? 1 : m_lastSection + 1;
    m_sections.push_back({m_lastSection, m_position, value});
    return m_lastSection;
}

bool ZvVerbStack::VerbEndSection(int id, int flags) {
    if (IsBusy())
        return false;
    const auto section = std::find_if(m_sections.begin(), m_sections.end(),
                                      [id](const Section& open) { return open.id == id; });
    if (section == m_sections.end()) {
        ZvErrors::Report(ZvErrorCode::UnknownSection, "ZvVerbStack.VerbEndSection");
        return false;
    }
    const Section ended = *section;
    m_sections.erase(section);
    return !(flags & kSectionRollBack) || RollBack(ended);
}

/// Undoes the verbs of the section, without a word to the user while all goes well, and forgets them.
bool ZvVerbStack::RollBack(const Section& section) {
    bool undone = true;
    {
        const Busy busy(*this);
        while (undone && m_position > section.start) {
            if (m_verbs[m_position - 1].verb->IsUndoable()) {
                undone = UndoTop();
                continue;
            }
            Tell(ZvStrings::GetW(ZvStr::CannotUndo));
            m_purgePending = true;
            undone = false;
        }
        if (undone)
            PurgeAfterPosition();
        ClampSections();
    }
    RunPending();
    if (undone && section.hasLost)
        Tell(ZvStrings::GetW(ZvStr::RolledBackInPart));
    return undone && !section.hasLost;
}

/// Sections that began above the current position begin there now.
void ZvVerbStack::ClampSections() {
    for (Section& section : m_sections)
        section.start = std::min(section.start, m_position);
}

// --- what is on the stack ---------------------------------------------------------------------------------

ZvVerb* ZvVerbStack::GetVerb(int index) const {
    return index >= 0 && index < StackSize() ? m_verbs[size_t(index)].verb.get() : nullptr;
}

ZvVerb* ZvVerbStack::FindSequence(int sequence) const {
    for (auto slot = m_verbs.rbegin(); slot != m_verbs.rend(); ++slot)
        if (slot->verb->Sequence() == sequence)
            return slot->verb.get();
    return nullptr;
}

std::vector<ZvVerb*> ZvVerbStack::GetVerbStack() const {
    std::vector<ZvVerb*> verbs;
    for (const Slot& slot : m_verbs)
        verbs.push_back(slot.verb.get());
    return verbs;
}

std::set<uint32_t> ZvVerbStack::EntitiesInUse() const {
    std::set<uint32_t> names;
    for (const Slot& slot : m_verbs)
        slot.verb->CollectEntities(names);
    return names;
}
