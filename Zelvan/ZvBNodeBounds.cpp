// Cached bounds and draw sets, and what entities report about themselves.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodePair.h"
#include <algorithm>

ZvBNode::Rare& ZvBNode::NeedRare() const {
    if (!m_rare)
        m_rare = std::make_unique<Rare>();
    return *m_rare;
}

const ZvBounds3D& ZvBNode::Bounds() const {
    RepairBounds();
    return m_content;
}

const ZvBounds3D& ZvBNode::VisibleBounds() const {
    RepairBounds();
    return HasOwnVisible() ? m_rare->visible : m_content;
}

void ZvBNode::SetBoundsDirty() {
    for (ZvBNode* node = this; node && !node->m_dirty; node = node->m_parent)
        node->m_dirty = true;
}

void ZvBNode::RepairBounds() const {
    if (!m_dirty)
        return;
    ZvBounds3D content, visible;
    bool mixed = false;
    for (const ZvEntity* entity : m_list) {
        mixed |= entity->IsErased() || !entity->IsVisible();
        if (entity->IsErased())
            continue;
        const ZvBounds3D bounds = entity->Bounds3D();
        if (!(bounds.minX <= bounds.maxX && bounds.minY <= bounds.maxY))
            continue;
        content.ExpandToFit(bounds);
        if (entity->IsVisible())
            visible.ExpandToFit(bounds);
    }
    if (m_children)
        for (int i = 0; i < 2; ++i) {
            const ZvBNode& child = m_children->child[i];
            content.ExpandToFit(child.Bounds());
            visible.ExpandToFit(child.VisibleBounds());
            m_childBox[i].Set(child.m_content);
        }
    m_content = content;
    SetVisibleBounds(visible);
    m_mixed = mixed;
    m_dirty = false;
}

void ZvBNode::SetVisibleBounds(const ZvBounds3D& visible) const {
    if (visible != m_content) {
        NeedRare().visible = visible;
        m_rare->ownVisible = true;
    } else if (m_rare) {
        m_rare->ownVisible = false;
        if (!m_rare->ownDrawSet)
            m_rare.reset();
    }
}

void ZvBNode::RecalcBounds() {
    dvect<ZvEntity*> misplaced;
    TakeMisplaced(misplaced);
    for (ZvEntity* entity : misplaced)
        RootBlock()->InsertAtRoot(entity, entity->Bounds3D());
    SetBoundsDirty();
    RepairBounds();
    TouchContainer(nullptr);
}

void ZvBNode::TakeMisplaced(dvect<ZvEntity*>& misplaced) {
    size_t kept = 0;
    for (ZvEntity* entity : m_list) {
        const ZvBounds3D bounds = entity->Bounds3D();
        if (!BelongsHere(bounds)) {
            misplaced.push_back(entity);
            continue;
        }
        if (CanBePlaced(bounds))
            WidenZ(bounds);
        m_list.Set(kept, entity);
        m_list.SetBox(kept++, PackBox(m_list.Grid(), bounds));
    }
    m_list.Truncate(kept);
    m_dirty = m_drawSetInvalid = true;
    m_allEqual = false;
    ++m_changeCounter;
    SplitIfOverfull();
    if (m_children)
        for (ZvBNode& child : m_children->child)
            child.TakeMisplaced(misplaced);
}

bool ZvBNode::BelongsHere(const ZvBounds3D& bounds) const {
    if (!CanBePlaced(bounds))
        return IsRoot();
    return m_box.IsInsideMe2D(bounds) && (!m_children || ChildHolding(bounds) < 0);
}

void ZvBNode::WidenZ(const ZvBounds3D& bounds) {
    m_box.minZ = std::min(m_box.minZ, bounds.minZ);
    m_box.maxZ = std::max(m_box.maxZ, bounds.maxZ);
}

void ZvBNode::MarkBranchDirty() {
    m_dirty = true;
    if (m_children)
        for (ZvBNode& child : m_children->child)
            child.MarkBranchDirty();
}

void ZvBNode::ResetBounds() {
    // What is cached must stay large enough until it is computed anew: queries rely on it.
    m_content = IsRoot() ? ZvBounds3D::SuperBounds() : m_box;
    SetVisibleBounds(m_content);
    TellParentContent();
    SetBoundsDirty();
}

void ZvBNode::InvalidateAllCachedBounds() {
    SetBoundsDirty();
    MarkBranchDirty();
    InvalidateDrawSets();
}

void ZvBNode::InvalidateDrawSets() {
    InvalidateDrawSet();
    if (m_children)
        for (ZvBNode& child : m_children->child)
            child.InvalidateDrawSets();
}

void ZvBNode::InvalidateDrawSet() {
    m_drawSetInvalid = true;
}

std::span<ZvEntity* const> ZvBNode::DrawSet() const {
    if (m_drawSetInvalid) {
        const auto drawn = [](const ZvEntity* entity) { return !entity->IsErased() && entity->IsVisible(); };
        const bool all = !m_mixed || std::all_of(m_list.begin(), m_list.end(), drawn);
        if (!all || (m_rare && m_rare->ownDrawSet)) {
            Rare& rare = NeedRare();
            rare.drawSet.reset();
            rare.drawSetBoxes.reset();
            rare.ownDrawSet = !all;
        }
        for (size_t i = 0; !all && i < m_list.Size(); ++i)
            if (drawn(m_list.Get(i))) {
                m_rare->drawSet.push_back(m_list.Get(i));
                m_rare->drawSetBoxes.push_back(m_list.Box(i));
            }
        m_mixed = !all;
        m_drawSetInvalid = false;
    }
    return m_rare && m_rare->ownDrawSet
               ? std::span<ZvEntity* const>(m_rare->drawSet.data(), m_rare->drawSet.size())
               : GetEntitiesNoWalk();
}

const uint32_t* ZvBNode::DrawSetBoxes() const {
    return m_rare && m_rare->ownDrawSet ? m_rare->drawSetBoxes.data() : m_list.Boxes();
}

void ZvBNode::ChildUpdateBounds(ZvEntity* entity) {
    ZvBNode* node = entity ? entity->ParentBlockLeaf() : nullptr;
    if (!node || node->m_root != m_root)
        return;
    const size_t index = node->m_list.Find(entity);
    if (index == node->m_list.Size())
        return;
    const ZvBounds3D bounds = entity->Bounds3D();
    const ZvBNode& root = *RootBlock(); // a tree that grows gets other nodes, and this one may go
    if (node->BelongsHere(bounds))
        node->UpdateInPlace(index, bounds);
    else
        node->Relocate(index, bounds);
    root.TouchContainer(entity);
}

void ZvBNode::UpdateInPlace(size_t index, const ZvBounds3D& bounds) {
    const ZvEntity* entity = m_list.Get(index);
    m_list.SetBox(index, PackBox(m_list.Grid(), bounds));
    if (CanBePlaced(bounds))
        WidenZ(bounds);
    m_allEqual = false;
    ++m_changeCounter;
    if (!entity->IsErased()) {
        Extend(bounds, entity->IsVisible());
        ExtendAncestors(bounds, entity->IsVisible());
        SetBoundsDirty();
    }
    SplitIfOverfull();
}

void ZvBNode::Relocate(size_t index, const ZvBounds3D& bounds) {
    ZvEntity* entity = m_list.Get(index);
    m_list.EraseAt(index);
    ++m_changeCounter;
    m_drawSetInvalid = true;
    SetBoundsDirty();
    RootBlock()->InsertAtRoot(entity, bounds);
}

void ZvBNode::ChildUpdateAppearance(ZvEntity* entity) {
    if (entity)
        m_root->widestLine.Add(*entity);
    if (ZvBNode* node = entity ? entity->ParentBlockLeaf() : nullptr)
        node->InvalidateDrawSet();
    TouchContainer(entity);
}

void ZvBNode::StateChanged(ZvEntity* entity) {
    const bool out = entity->IsErased() || !entity->IsVisible();
    if (!entity->IsErased()) {
        const ZvBounds3D bounds = entity->Bounds3D();
        const bool visible = entity->IsVisible();
        // What a node's bounds hold is held by those of its ancestors.
        if (!m_content.IsInsideMe(bounds) ||
            (visible && HasOwnVisible() && !m_rare->visible.IsInsideMe(bounds))) {
            Extend(bounds, visible);
            ExtendAncestors(bounds, visible);
        }
    }
    if (out) {
        m_mixed = true;
        SetBoundsDirty();
    }
    InvalidateDrawSet();
    TouchContainer(entity);
}
