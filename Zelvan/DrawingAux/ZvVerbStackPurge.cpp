// What the stack forgets, and entities that are deleted for good.
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>

void ZvVerbStack::PurgeUndo(bool special) {
    (special ? m_specialPending : m_purgePending) = true;
    RunPending();
}

void ZvVerbStack::PurgeUndoForLayer(ZvLayer* layer) {
    if (!layer)
        return;
    m_pendingLayers.insert(layer);
    PurgeUndo(true);
}

void ZvVerbStack::PurgeUndoForEntities(const ZvSelection* entities) {
    if (!entities || entities->ParentDrawing() != &m_drawing)
        return;
    m_pendingEntities.Insert(*entities);
    PurgeUndo(true);
}

void ZvVerbStack::PurgeUndoForLayout(const ZvDrawing& layout) {
    m_pendingLayouts.insert(&layout);
    PurgeUndo(true);
}

/// What verbs of the parent drawing hold in the drawing of a layout is not counted: while some of them go, all stays.
bool ZvVerbStack::IsHeldByKeptVerb(uint32_t name) const {
    const ZvDrawing* parent = m_drawing.ParentLayoutDrawing();
    return (parent && parent->Verbs()->m_purgesSome) || m_held.count(name) != 0;
}

void ZvVerbStack::DeleteEntitiesClean(const ZvSelection* entities) {
    if (!entities || entities->ParentDrawing() != &m_drawing)
        return;
    m_deleteFromDone.Insert(*entities);
    m_deleteFromNeverDone.Insert(*entities);
    RunPending();
}

void ZvVerbStack::DeleteEntityClean(ZvEntity* entity) {
    if (entity && entity->ParentDrawing() == &m_drawing) {
        const ZvSelection single = ZvSelection::Single(entity);
        DeleteEntitiesClean(&single);
    }
}

bool ZvVerbStack::IsEntityPendingDelete(const ZvEntity* entity) const {
    return entity && entity->ParentDrawing() == &m_drawing &&
           (m_deleteFromDone.Contains(entity) || m_deleteFromNeverDone.Contains(entity));
}

bool ZvVerbStack::VerbIsPendingDestruction(const ZvVerb* verb) const {
    const bool here = std::any_of(m_verbs.begin(), m_verbs.end(),
                                  [verb](const Slot& slot) { return slot.verb.get() == verb; });
    if (!here)
        return false;
    const std::vector<uint32_t>& names = m_pendingEntities.Names();
    return m_purgePending || (m_specialPending && IsSpecial(*verb, {names.begin(), names.end()}));
}

bool ZvVerbStack::IsSpecial(const ZvVerb& verb, const std::set<uint32_t>& names) const {
    const bool reachesIn = std::any_of(m_pendingLayouts.begin(), m_pendingLayouts.end(),
                                       [&verb](const ZvDrawing* layout) { return verb.WorksOn(*layout); });
    return reachesIn || (!m_pendingLayers.empty() && verb.UsesLayers(m_pendingLayers)) ||
           (!names.empty() && verb.UsesEntities(names));
}

bool ZvVerbStack::HasPending() const {
    return m_purgePending || m_specialPending || !m_deleteFromDone.IsEmpty() ||
           !m_deleteFromNeverDone.IsEmpty();
}

void ZvVerbStack::RunPending() {
    while (!IsBusy() && HasPending()) {
        ++m_busy;
        if (!m_deleteFromDone.IsEmpty() || !m_deleteFromNeverDone.IsEmpty())
            DeletePending();
        if (m_purgePending)
            PurgeAll();
        if (m_specialPending)
            PurgeSpecial();
        --m_busy;
    }
}

/// The undone verb at the end; of all verbs above the current position the newest is flushed first.
void ZvVerbStack::PurgeAfterPosition() {
    while (m_verbs.size() > m_position) {
        m_verbs.back().verb->FlushNeverDone();
        m_bytes -= m_verbs.back().bytes;
        m_verbs.pop_back();
    }
    ClampSections();
}

void ZvVerbStack::PurgeAll() {
    m_purgePending = m_specialPending = false;
    m_pendingLayers.clear();
    m_pendingLayouts.clear();
    m_pendingEntities.Clear();
    for (Section& section : m_sections)
        section.hasLost |= section.start < m_position;
    PurgeAfterPosition();
    for (const Slot& slot : m_verbs)
        slot.verb->FlushDone();
    m_verbs.clear();
    m_position = m_bytes = 0;
    ClampSections();
}

void ZvVerbStack::PurgeSpecial() {
    const std::vector<uint32_t>& pending = m_pendingEntities.Names();
    const std::set<uint32_t> names(pending.begin(), pending.end());
    std::vector<size_t> going;
    m_purgesSome = true;
    for (size_t i = 0; i < m_verbs.size(); ++i) {
        if (IsSpecial(*m_verbs[i].verb, names))
            going.push_back(i);
        else
            m_verbs[i].verb->CollectEntities(m_held);
    }
    for (auto index = going.rbegin(); index != going.rend() && *index >= m_position; ++index)
        m_verbs[*index].verb->FlushNeverDone();
    for (size_t index : going)
        if (index < m_position) {
            m_verbs[index].verb->FlushDone();
            NoteLoss(index);
        }
    for (auto index = going.rbegin(); index != going.rend(); ++index)
        Drop(*index);
    m_held.clear();
    m_purgesSome = m_specialPending = false;
    m_pendingLayers.clear();
    m_pendingLayouts.clear();
    m_pendingEntities.Clear();
    ClampSections();
}

/// Of a done verb that is about to be forgotten.
void ZvVerbStack::NoteLoss(size_t index) {
    for (Section& section : m_sections)
        section.hasLost |= section.start <= index;
}

/// The verb has been flushed, or holds nothing.
void ZvVerbStack::Drop(size_t index) {
    m_bytes -= m_verbs[index].bytes;
    m_verbs.erase(m_verbs.begin() + ptrdiff_t(index));
    m_position -= index < m_position;
    for (Section& section : m_sections)
        section.start -= index < section.start;
}

/// Verbs, ascending, that held nothing but deleted entities: they would be steps at which nothing happens.
void ZvVerbStack::ForgetEmptied(const std::vector<size_t>& emptied) {
    for (auto index = emptied.rbegin(); index != emptied.rend(); ++index)
        Drop(*index);
}

/// No verb and no selection may name the entities once they are gone: names are given out again.
void ZvVerbStack::DeletePending() {
    const ZvSelection done = m_deleteFromDone, neverDone = m_deleteFromNeverDone;
    m_deleteFromDone.Clear();
    m_deleteFromNeverDone.Clear();
    std::vector<size_t> emptied;
    for (size_t i = 0; i < m_verbs.size(); ++i) {
        ZvVerb& verb = *m_verbs[i].verb;
        const bool didNothing = verb.IsNullOp();
        verb.RemoveFromSet(i < m_position ? done : neverDone);
        Measure(m_verbs[i]);
        if (!didNothing && verb.IsNullOp())
            emptied.push_back(i);
    }
    ForgetEmptied(emptied);
    if (ZvDrawing* parent = m_drawing.ParentLayoutDrawing())
        parent->Verbs()->PurgeUndoForLayout(m_drawing);
    ZvSelection all = done;
    all.Insert(neverDone);
    ZvSelection rest = m_drawing.CurrentSelection();
    rest.Remove(all);
    (void)m_drawing.ChangeSelection(rest);
    m_drawing.Invalidate(all.GetBounds());
    for (int i = 0; i < all.Count(); ++i) {
        ZvEntity* entity = all.GetEntityQuietNoCheck(i);
        if (!entity || !entity->Owner())
            continue;
        if (ZvLayer* layer = entity->GetLayer(); layer && layer->AttributesOrNull())
            layer->Attributes().RemoveRow(entity->Name());
        entity->RemoveAndDelete();
    }
    m_drawing.SetModified();
}
