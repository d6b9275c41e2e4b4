#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <vector>

class ZvDrawing;
class ZvVerb;

/// Runs the verbs of a drawing and keeps the done ones for undo and redo, within a memory budget.
///
/// Invariants: verbs below the current position are done, those at and above it undone; between operations
/// the busy counter is 0. Not re-entrant: DoVerb, Undo and Redo called while one of them runs change nothing
/// and fail; a purge asked for meanwhile runs when the outer operation ends.
class ZV_API ZvVerbStack {
public:
    static constexpr int64_t kDefaultBudget =
        157'286'400; ///< bytes; the drawing's setting "UndoMem" replaces it
    static constexpr size_t kMaxVerbs = 10'000;

    explicit ZvVerbStack(ZvDrawing& drawing);
    ~ZvVerbStack();
    ZvVerbStack(const ZvVerbStack&) = delete;
    ZvVerbStack& operator=(const ZvVerbStack&) = delete;

    /// Takes the verb over. Answers its sequence number, 0 when the stack was busy or the verb did not stay
    /// on it. Verbs that were undone can no longer be redone afterwards. A null verb answers 0.
    int DoVerb(ZvVerb* verb);
    /// Both tell the user why when there is nothing to do.
    bool Undo();
    bool Redo();
    /// Forgets all verbs.
    void PurgeUndo();

    bool IsBusy() const { return m_busy > 0; }
    bool CanUndo() const { return m_position > 0; }
    bool CanRedo() const { return m_position < m_verbs.size(); }
    /// Bytes held by the verbs.
    size_t MemUsage() const;
    int StackSize() const { return int(m_verbs.size()); }
    /// Number of done verbs.
    int Position() const { return int(m_position); }
    int VerbsExecuted() const { return m_executed; }
    /// Oldest first; null for a bad index.
    ZvVerb* GetVerb(int index) const;
    ZvVerb* FindSequence(int sequence) const;
    std::vector<ZvVerb*> GetVerbStack() const;
    /// Names of entities that verbs need to stay alive.
    std::set<uint32_t> EntitiesInUse() const;
    DateTime Created() const { return m_created; }
    /// Bytes; 0 switches undo off.
    int64_t Budget() const;

private:
    class Busy;
    void DoVerbInternal(std::unique_ptr<ZvVerb> verb);
    void Trim(const ZvVerb& incoming);
    void PurgeAfterPosition();
    void PurgeAll();
    void RunPending();
    void Repaint(const ZvVerb& verb);
    int NextSequence();

    ZvDrawing& m_drawing;
    std::vector<std::unique_ptr<ZvVerb>> m_verbs;
    size_t m_position = 0;
    int m_busy = 0;
    int m_sequence = 0;
    int m_executed = 0;
    bool m_purgePending = false;
    DateTime m_created;
};
