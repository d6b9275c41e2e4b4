#pragma once
#include "Zelvan/ZvSelection.h"
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvLayer;
class ZvVerb;
class XStringW;

/// Runs the verbs of a drawing and keeps the done ones for undo and redo, within a memory budget.
///
/// Invariants: verbs below the current position are done, those at and above it undone; between operations
/// the busy counter is 0 and nothing is pending. Not re-entrant: DoVerb, Undo and Redo called while one of
/// them runs change nothing and fail; a purge or a deletion asked for meanwhile is carried out when the outer
/// operation ends. The cost of an operation is that of its verb, however long the stack and large the drawing.
class ZV_API ZvVerbStack {
public:
    static constexpr const char* kMaxVerbsKey = "UndoMaxVerbs"; ///< application setting
    static constexpr int64_t kDefaultMaxVerbs = 10'000;
    /// Bit of a section's value: undo stops where the section began while it is open.
    static constexpr int kSectionBarrier = 1;
    /// Flag of VerbEndSection: the section's verbs are undone and forgotten.
    static constexpr int kSectionRollBack = 2;

    explicit ZvVerbStack(ZvDrawing& drawing);
    ~ZvVerbStack();
    ZvVerbStack(const ZvVerbStack&) = delete;
    ZvVerbStack& operator=(const ZvVerbStack&) = delete;

    /// Takes the verb over. Answers its sequence number, 0 when the stack was busy or the verb did not stay
    /// on it. Verbs that were undone can no longer be redone afterwards. A null verb answers 0, and one that was made for
    /// another drawing (reported). One that changed nothing leaves no step behind; the user is told of its refusal.
    /// A verb that throws is taken back and forgotten; should that fail as well, the history ends. The user is told.
    int DoVerb(ZvVerb* verb);
    /// Both tell the user why when there is nothing to do.
    bool Undo();
    bool Redo();

    // --- sections: a command's verbs ------------------------------------------------------------------------
    /// Id of the section, 0 while busy. What was undone before can no longer be redone. They nest.
    int VerbBeginSection(int value = 0);
    /// False while busy, for a section that is not open (error 42), and when a section cannot be rolled back whole:
    /// a verb of it cannot be undone, which ends the history, or has left the stack for the budget or by a purge.
    /// What can be taken back is, and the user is told.
    bool VerbEndSection(int id, int flags = 0);
    int OpenSections() const { return int(m_sections.size()); }

    // --- forgetting and deleting ----------------------------------------------------------------------------
    /// Forgets all verbs; `special`: those that use the layers and entities given to the two operations below.
    void PurgeUndo(bool special = false);
    /// Forget the verbs that use the layer, or one of the entities. Null is ignored.
    void PurgeUndoForLayer(ZvLayer* layer);
    void PurgeUndoForEntities(const ZvSelection* entities);
    /// Forgets the verbs that reach into a layout's drawing.
    void PurgeUndoForLayout(const ZvDrawing& layout);
    /// Removes entities from the drawing for good: no verb remembers them afterwards, and verbs that did nothing else
    /// leave the stack.
    void DeleteEntitiesClean(const ZvSelection* entities);
    void DeleteEntityClean(ZvEntity* entity);
    /// Whether the entity waits for its clean deletion.
    bool IsEntityPendingDelete(const ZvEntity* entity) const;
    /// Whether a purge that was asked for while busy will forget the verb.
    bool VerbIsPendingDestruction(const ZvVerb* verb) const;
    /// Whether a verb that a special purge leaves needs the entity. For verbs that are being flushed.
    bool IsHeldByKeptVerb(uint32_t name) const;

    // --- what is on the stack -------------------------------------------------------------------------------
    bool IsBusy() const { return m_busy > 0; }
    bool CanUndo() const { return m_position > 0; }
    bool CanRedo() const { return m_position < m_verbs.size(); }
    /// Bytes held by the verbs, each as it was when it was last run.
    size_t MemUsage() const { return m_bytes; }
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
    /// Bytes, by the application setting "UndoMem" (ZvUndoSettings); 0 switches undo off.
    int64_t Budget() const;
    int64_t MaxVerbs() const;

private:
    class Busy;
    enum class Step { Do, Undo, Redo };
    enum class Outcome { Done, Refused, Failed }; ///< failed: half way, by an exception
    struct Slot {
        std::unique_ptr<ZvVerb> verb;
        size_t bytes = 0;
    };
    struct Section {
        int id = 0;
        size_t start = 0; ///< current position when it began
        int value = 0;
        bool hasLost = false; ///< done verbs of its own were forgotten: it cannot be rolled back whole
    };

    void DoVerbInternal(std::unique_ptr<ZvVerb> verb);
    void ForgetUndoneTop();
    void ForgetWithoutEffect(const ZvVerb& verb, bool wasClean);
    Outcome RunVerb(ZvVerb& verb, Step step);
    bool TakeBackFailed(ZvVerb& verb);
    void Tell(const XStringW& text) const;
    bool UndoNewest();
    bool UndoTop();
    bool RedoNext();
    bool MayUndo();
    void RefuseEmptyUndo();
    bool RollBack(const Section& section);
    void Measure(Slot& slot);
    void Trim(size_t bytes, size_t verbs);
    void AdviseIfTooLarge(const ZvVerb& verb);
    void Drop(size_t index);
    void NoteLoss(size_t index);
    void ForgetEmptied(const std::vector<size_t>& emptied);
    void PurgeAfterPosition();
    void PurgeAll();
    void PurgeSpecial();
    bool IsSpecial(const ZvVerb& verb, const std::set<uint32_t>& names) const;
    void DeletePending();
    void RunPending();
    bool HasPending() const;
    void Repaint(ZvVerb& verb) const;
    int NextSequence();
    void ClampSections();

    ZvDrawing& m_drawing;
    std::deque<Slot> m_verbs; // oldest first; dropping at either end takes constant time
    size_t m_position = 0;
    size_t m_bytes = 0;
    int m_busy = 0;
    int m_sequence = 0;
    int m_executed = 0;
    std::vector<Section> m_sections;
    int m_lastSection = 0;
    bool m_purgePending = false;
    bool m_specialPending = false;
    std::set<ZvLayer*> m_pendingLayers;
    std::set<const ZvDrawing*> m_pendingLayouts;
    ZvSelection m_pendingEntities;
    ZvSelection m_deleteFromDone;
    ZvSelection m_deleteFromNeverDone;
    bool m_purgesSome = false; // a special purge runs
    std::set<uint32_t> m_held; // during a special purge: what the verbs that stay hold
    DateTime m_created;
};
