#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/DrawingAux/IZvCommandRunner.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include <algorithm>

/// Raises the busy counter for a scope.
class ZvVerbStack::Busy {
public:
    explicit Busy(ZvVerbStack& stack) : m_stack(stack) { ++m_stack.m_busy; }
    ~Busy() { --m_stack.m_busy; }

private:
    ZvVerbStack& m_stack;
};

ZvVerbStack::ZvVerbStack(ZvDrawing& drawing) : m_drawing(drawing), m_created(drawing.Clock().Now()) {}

ZvVerbStack::~ZvVerbStack() = default;

int64_t ZvVerbStack::Budget() const {
    return std::max<int64_t>(0, m_drawing.Settings().GetInt("UndoMem", kDefaultBudget));
}

int ZvVerbStack::NextSequence() {
    m_sequence = m_sequence == INT32_MAX ? 1 : m_sequence + 1;
    return m_sequence;
}

int ZvVerbStack::DoVerb(ZvVerb* raw) {
    std::unique_ptr<ZvVerb> verb(raw);
    if (!verb || IsBusy())
        return 0;
    ++m_executed;
    const int sequence = NextSequence();
    verb->SetSequence(sequence);
    {
        const Busy busy(*this);
        DoVerbInternal(std::move(verb));
    }
    const ZvVerb* kept = FindSequence(sequence);
    const bool stays = kept != nullptr;
    if (kept && kept->IsUndoRequested())
        Undo();
    RunPending();
    return stays ? sequence : 0;
}

void ZvVerbStack::DoVerbInternal(std::unique_ptr<ZvVerb> owned) {
    ZvVerb* verb = owned.get();
    verb->SetParent(&m_drawing);
    verb->UpdateLayersUsed();
    ZvLog::Printf(ZvLog::Level::Info, "Do %s\n", verb->GetName().ToUtf8().c_str());
    m_drawing.MakeCurrentDrawing();
    const ZvWaitCursor wait(m_drawing.Host());
    PurgeAfterPosition();
    if (verb->ChangesDrawing())
        m_drawing.SetModified();
    Trim(*verb);
    m_verbs.push_back(std::move(owned));
    ++m_position;
    Repaint(*verb);
    verb->Do();
    Repaint(*verb);
    if (Budget() == 0)
        PurgeAll();
}

/// Makes room for the incoming verb: the oldest go first, done ones only.
void ZvVerbStack::Trim(const ZvVerb& incoming) {
    const int64_t budget = Budget();
    if (budget == 0)
        return;
    int64_t held = int64_t(incoming.IsExemptFromBudget() ? 0 : incoming.MemUsage());
    for (const auto& verb : m_verbs)
        held += int64_t(verb->MemUsage());
    size_t dropped = 0;
    while (m_position - dropped >= 1 && (held > budget || m_verbs.size() - dropped + 1 > kMaxVerbs)) {
        held -= int64_t(m_verbs[dropped]->MemUsage());
        m_verbs[dropped++]->FlushDone();
    }
    m_verbs.erase(m_verbs.begin(), m_verbs.begin() + ptrdiff_t(dropped));
    m_position -= dropped;
}

bool ZvVerbStack::Undo() {
    if (IsBusy())
        return false;
    IZvHost* host = m_drawing.Host();
    if (m_position == 0) {
        if (host)
            host->Tell(ZvStrings::GetW(ZvStr::NothingToUndo));
        return false;
    }
    ZvVerb& verb = *m_verbs[m_position - 1];
    bool quiet = false;
    if (!verb.IsUndoable(&quiet)) {
        if (host && !quiet)
            host->Tell(ZvStrings::GetW(ZvStr::CannotUndo));
        PurgeUndo();
        return false;
    }
    {
        const Busy busy(*this);
        m_drawing.MakeCurrentDrawing();
        Repaint(verb);
        verb.Undo();
        Repaint(verb);
        if (verb.ChangesDrawing())
            m_drawing.SetModified();
        m_drawing.Prompt(XStringW::Format("Undo %s\n", verb.GetName().ToUtf8().c_str()));
        --m_position;
    }
    RunPending();
    return true;
}

bool ZvVerbStack::Redo() {
    if (IsBusy())
        return false;
    IZvHost* host = m_drawing.Host();
    if (m_position == m_verbs.size()) {
        if (host)
            host->Tell(ZvStrings::GetW(ZvStr::NothingToRedo));
        return false;
    }
    ZvVerb& verb = *m_verbs[m_position];
    const XStringW name = verb.GetName();
    bool done = false;
    {
        const Busy busy(*this);
        m_drawing.MakeCurrentDrawing();
        Repaint(verb);
        done = verb.IsRedoable() && verb.Redo();
        Repaint(verb);
        if (done) {
            if (verb.ChangesDrawing())
                m_drawing.SetModified();
            m_drawing.Prompt(XStringW::Format("Redo %s\n", name.ToUtf8().c_str()));
            ++m_position;
        } else {
            PurgeAfterPosition();
        }
    }
    if (!done && host)
        host->Tell(XStringW::Format(ZvStrings::Get(ZvStr::CannotRedo), name.ToUtf8().c_str()));
    RunPending();
    return done;
}

void ZvVerbStack::PurgeUndo() {
    m_purgePending = true;
    RunPending();
}

void ZvVerbStack::RunPending() {
    if (IsBusy() || !m_purgePending)
        return;
    m_purgePending = false;
    const Busy busy(*this);
    PurgeAll();
}

void ZvVerbStack::PurgeAfterPosition() {
    while (m_verbs.size() > m_position) {
        m_verbs.back()->FlushNeverDone();
        m_verbs.pop_back();
    }
}

void ZvVerbStack::PurgeAll() {
    PurgeAfterPosition();
    for (const auto& verb : m_verbs)
        verb->FlushDone();
    m_verbs.clear();
    m_position = 0;
}

void ZvVerbStack::Repaint(const ZvVerb& verb) {
    if (verb.MustPaint() && m_drawing.GetViewCount() > 0)
        m_drawing.Invalidate(verb.GetBounds(nullptr));
    if (IZvCommandRunner* processor = m_drawing.CmdProcessor())
        processor->UpdateGrips();
}

// --- what is on the stack ---------------------------------------------------------------------------------

size_t ZvVerbStack::MemUsage() const {
    size_t bytes = 0;
    for (const auto& verb : m_verbs)
        bytes += verb->MemUsage();
    return bytes;
}

ZvVerb* ZvVerbStack::GetVerb(int index) const {
    return index >= 0 && index < StackSize() ? m_verbs[size_t(index)].get() : nullptr;
}

ZvVerb* ZvVerbStack::FindSequence(int sequence) const {
    for (auto verb = m_verbs.rbegin(); verb != m_verbs.rend(); ++verb)
        if ((*verb)->Sequence() == sequence)
            return verb->get();
    return nullptr;
}

std::vector<ZvVerb*> ZvVerbStack::GetVerbStack() const {
    std::vector<ZvVerb*> verbs;
    for (const auto& verb : m_verbs)
        verbs.push_back(verb.get());
    return verbs;
}

std::set<uint32_t> ZvVerbStack::EntitiesInUse() const {
    std::set<uint32_t> names;
    for (const auto& verb : m_verbs)
        verb->CollectEntities(names);
    return names;
}
