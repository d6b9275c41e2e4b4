#pragma once
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvName.h"
#include "Zelvan/ZvSelection.h"
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <memory>
#include <set>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvLayer;
struct ZvScaleSetup;

/// One undoable edit of a drawing. Belongs to the verb stack from DoVerb on. Holds names of entities, never
/// their pointers, save for entities that it owns.
///
/// Do and Undo never free an entity: erasing flags it, undoing clears the flag. Entities are freed when the
/// verb is flushed. Do, Undo and Redo leave the drawing as it was, or wholly changed, and never throw.
///
/// The virtual operations stand in a fixed order (plug-ins depend on it): add new ones at the end only.
class ZV_API ZvVerb {
public:
    enum class Kind : int {
        Other = 0,
        Aggregate,
        New,
        Erase,
        Modify, ///< copies before and after
        MoveToLayer,
        Transform,
        Selection,
        DrawOrder,
        PaperAggregate,
        NewDualSource,
        Replace, ///< one entity for another
        Convert,
        Tiny,
        PropertyChange,
        TextChange,
        MoveGrip,
        Record, ///< records of tables
    };
    /// What became of what; names.
    struct Pair {
        uint32_t from = 0, to = 0;
        friend bool operator==(const Pair&, const Pair&) = default;
    };

    explicit ZvVerb(ZvDrawing* drawing = nullptr);
    ZvVerb(const ZvVerb&) = delete;
    ZvVerb& operator=(const ZvVerb&) = delete;

    virtual ~ZvVerb();
    virtual Kind GetKind() const { return Kind::Other; }
    /// World box that the verb affects as the drawing is now; null for nothing.
    virtual ZvBounds3D GetBounds(const ZvScaleSetup* scale) const;
    /// Whether views must repaint the bounds.
    virtual bool MustPaint() const { return true; }
    /// Leaves the bottom of the stack as done: releases what only undoing needed. Verbs below are gone.
    virtual void FlushDone() {}
    /// Is discarded while undone: releases what only redoing needed. Verbs above are gone.
    virtual void FlushNeverDone() {}
    /// For users, English.
    virtual XStringW DefaultName() const = 0;
    /// Bytes held for undo, the verb included. The stack asks when it has run the verb, so the answer should not
    /// take a walk through the entities.
    virtual size_t MemUsage() const;
    /// Whether doing it makes the drawing differ from its file.
    virtual bool ChangesDrawing() const { return true; }
    /// Nothing would change; asked after Do: nothing has. Such a verb does not stay on the stack.
    virtual bool IsNullOp() const { return false; }
    /// One that cannot go through with it throws; Undo then takes back what was done so far.
    virtual void Do() {}
    virtual void Undo() {}
    /// `quiet`, when given, is set to true where the user need not be told why not.
    virtual bool IsUndoable(bool* quiet = nullptr) const;
    virtual bool IsRedoable() const { return true; }
    /// False when it cannot be done again; the drawing is then as before.
    virtual bool Redo();
    /// The user is not told when the verb alone exceeds the undo memory budget.
    virtual bool IsExemptFromBudget() const { return false; }
    /// Notes the layers of the affected entities, in addition to those noted before. Asked before and after Do.
    virtual void UpdateLayersUsed();
    /// Forgets the entities, which are about to be deleted for good.
    virtual void RemoveFromSet(const ZvSelection& leaving);
    virtual void ReplaceSet(const ZvSelection& entities);
    virtual bool UsesEntities(const std::set<uint32_t>& names) const;
    /// Adds the names of all entities that the verb needs to stay alive.
    virtual void CollectEntities(std::set<uint32_t>& names) const;
    /// What Do could not change, and why, for users; empty when it changed all that it was meant to. The stack tells it
    /// when nothing was changed at all.
    virtual XStringW Refusal() const { return m_refusal; }

    ZvDrawing* Drawing() const { return m_drawing; }
    /// By the stack, before Do.
    virtual void SetParent(ZvDrawing* drawing);
    ZvSelection& Entities() { return m_entities; }
    const ZvSelection& Entities() const { return m_entities; }
    /// 0 until the stack has run it.
    int Sequence() const { return m_sequence; }
    virtual void SetSequence(int sequence) { m_sequence = sequence; }
    /// The given name, or DefaultName.
    XStringW GetName() const { return m_name.IsEmpty() ? DefaultName() : m_name; }
    void SetName(const XStringW& name) { m_name = name; }
    /// Asks the stack, from within Do, to undo the verb right away.
    void RequestUndo() { m_undoAtOnce = true; }
    bool IsUndoRequested() const { return m_undoAtOnce; }
    virtual bool UsesLayers(const std::set<ZvLayer*>& layers) const;

    // --- what became of what ------------------------------------------------------------------------------
    void MakePair(ZvName from, ZvName to);
    void MakePairsNTo1(const ZvSelection& from, ZvName to);
    void MakePairs1ToN(ZvName from, const ZvSelection& to);
    /// Associated data of `from` (feature attributes, partners in the entity associator) goes to `to` as well
    /// when the verb is done, unless `to` has such data of its own. Of several sources the first with a row of
    /// attributes gives it.
    void AddMetaPair(ZvName from, ZvName to);
    void AddMetaPairs(const std::vector<Pair>& pairs);
    const std::vector<Pair>& Pairs() const;
    const std::vector<Pair>& MetaPairs() const;

    /// By the stack, after Undo: brings back the current selection as it was before Do, if Do changed it.
    virtual void RestoreSelection();
    /// Whether it changes things in the drawing: its own or that of a layout.
    virtual bool WorksOn(const ZvDrawing& drawing) const { return m_drawing == &drawing; }
    /// Made for `drawing`, or for none yet. Names of one drawing mean other entities in the next.
    bool MayWorkIn(const ZvDrawing* drawing) const;

protected:
    /// By Do, for what it could not change; empty where all was so already. `wholly`: nothing was changed, so that
    /// IsNullOp is true from then on.
    void Refuse(const XStringW& why, bool wholly = true) {
        m_refusal = why;
        m_refused = wholly;
    }
    bool IsRefused() const { return m_refused; }
    /// For operations that add an entity of the drawing. False for null, and for one of another drawing, which is
    /// reported. A verb without a drawing gets the entity's.
    bool AcceptsEntity(const ZvEntity* entity);
    /// For Do: forgets entities that are erased, and those that are gone, which are reported (10043). The verb that
    /// erased an entity may leave the stack, and the entity with it, while this one is still there.
    void LeaveOutGone(const char* context);
    /// Gives associated data to its heirs, and takes back what was given. For Do, Undo and Redo of kinds
    /// that make entities; both do nothing without meta pairs.
    void GiveMeta();
    void TakeBackMeta();
    /// Takes the entities out of the drawing's current selection, which is noted for RestoreSelection when
    /// `note` and it changes.
    void LeaveSelection(const ZvSelection& leaving, bool note);
    /// Members of the current selection that stand in `from` give way to those at the same place in `to`,
    /// and leave where that is 0.
    void SwapInSelection(const std::vector<uint32_t>& from, const std::vector<uint32_t>& to);
    /// Deletes those of the entities that nothing can bring back: erased, and not held by another verb that
    /// stays on the stack.
    void ManageEntityDeletion(const std::vector<uint32_t>& names);
    /// False, error 10043 reported with the context, when one of the entities is gone.
    bool AllExist(const std::vector<uint32_t>& names, const char* context) const;
    /// Sets or clears the erased flag; answers the bytes that the entities hold. Those that are gone are
    /// reported (10043) and left out; 0 names none.
    size_t SetErased(const std::vector<uint32_t>& names, bool erased, const char* context) const;
    static size_t MemUsageOf(const ZvSelection& entities);
    void AddLayerUsed(ZvLayer* layer);
    void AddLayersOf(const ZvSelection& entities);

private:
    struct Lineage;
    Lineage& NeedLineage();
    void GiveMetaAgain();

    ZvDrawing* m_drawing;
    ZvSelection m_entities;
    std::vector<ZvLayer*> m_layers; // ascending
    std::unique_ptr<Lineage> m_lineage;
    std::unique_ptr<std::vector<uint32_t>> m_formerSelection;
    int m_sequence = 0;
    bool m_undoAtOnce = false;
    bool m_refused = false; ///< wholly
    XStringW m_name, m_refusal;
};
