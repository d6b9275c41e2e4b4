#pragma once
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvSelection.h"
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <set>

class ZvDrawing;
class ZvLayer;
struct ZvScaleSetup;

/// One undoable edit of a drawing. Belongs to the verb stack from DoVerb on. Holds names of entities, never
/// their pointers, save for entities that it owns.
///
/// Do and Undo never free an entity: erasing flags it, undoing clears the flag. Entities are freed when the
/// verb is flushed. The virtual operations stand in a fixed order (plug-ins depend on it): add new ones at
/// the end only.
class ZV_API ZvVerb {
public:
    enum class Kind : int {
        Other = 0,
        Aggregate,
        New,
        Erase,
        Modify,
        MoveToLayer,
        Transform,
        Selection,
        DrawOrder
    };

    explicit ZvVerb(ZvDrawing* drawing = nullptr) : m_drawing(drawing), m_entities(drawing) {}
    ZvVerb(const ZvVerb&) = delete;
    ZvVerb& operator=(const ZvVerb&) = delete;

    virtual ~ZvVerb();
    virtual Kind GetKind() const { return Kind::Other; }
    /// World box that the verb affects as the drawing is now; null for nothing.
    virtual ZvBounds3D GetBounds(const ZvScaleSetup* scale) const;
    /// Whether views must repaint the bounds.
    virtual bool MustPaint() const { return true; }
    /// Leaves the bottom of the stack as done: releases what only undoing needed.
    virtual void FlushDone() {}
    /// Is discarded while undone: releases what only redoing needed.
    virtual void FlushNeverDone() {}
    /// For users, English.
    virtual XStringW DefaultName() const = 0;
    /// Bytes held for undo, the verb included.
    virtual size_t MemUsage() const;
    /// Whether doing it makes the drawing differ from its file.
    virtual bool ChangesDrawing() const { return true; }
    /// Nothing would change.
    virtual bool IsNullOp() const { return false; }
    virtual void Do() {}
    virtual void Undo() {}
    /// `quiet`, when given, is set to true where the user need not be told why not.
    virtual bool IsUndoable(bool* quiet = nullptr) const;
    virtual bool IsRedoable() const { return true; }
    /// False when it cannot be done again; the drawing is then as before.
    virtual bool Redo();
    /// The memory budget does not count for it.
    virtual bool IsExemptFromBudget() const { return false; }
    virtual void UpdateLayersUsed();
    /// Forgets the entities, which are about to be deleted for good.
    virtual void RemoveFromSet(const ZvSelection& leaving);
    virtual void ReplaceSet(const ZvSelection& entities);
    virtual bool UsesEntities(const std::set<uint32_t>& names) const;
    /// Adds the names of all entities that the verb needs to stay alive.
    virtual void CollectEntities(std::set<uint32_t>& names) const;

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
    bool UsesLayers(const std::set<ZvLayer*>& layers) const;

protected:
    std::set<ZvLayer*> m_layers;

private:
    ZvDrawing* m_drawing;
    ZvSelection m_entities;
    int m_sequence = 0;
    bool m_undoAtOnce = false;
    XStringW m_name;
};
