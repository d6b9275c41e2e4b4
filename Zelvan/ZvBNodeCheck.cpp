// The tree's invariants and figures about its shape.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodePair.h"
#include <algorithm>

namespace {

bool Fail(std::string& why, const ZvBNode& node, const char* what) {
    why = "node " + std::to_string(node.DebugGetNodeId()) + " at level " +
          std::to_string(node.DebugGetLevel()) + ": " + what;
    return false;
}

bool Holds(const ZvBounds3D& outer, const ZvBounds3D& inner) {
    return inner.IsNull() || outer.IsInsideMe(inner);
}

} // namespace

bool ZvBNode::DebugCheck(std::string& why) const {
    ZvBounds3D content, visible;
    return CheckNode(why, content, visible);
}

bool ZvBNode::CheckNode(std::string& why, ZvBounds3D& content, ZvBounds3D& visible) const {
    content.Reset(), visible.Reset();
    for (size_t i = 0; i < m_list.Size(); ++i)
        if (!CheckEntry(why, i, content, visible))
            return false;
    if (m_children) {
        for (const ZvBNode& child : m_children->child) {
            ZvBounds3D childContent, childVisible;
            if (child.m_parent != this || child.m_root != m_root || child.m_depth != m_depth + 1)
                return Fail(why, child, "wrong parent, root or depth");
            if (!m_box.IsInsideMe2D(child.m_box))
                return Fail(why, child, "box outside of the parent's");
            if (bool(m_childSplit >> child.ChildNumber() & 1) != child.IsSplit())
                return Fail(why, *this, "wrong note about a child's split");
            if (child.m_dirty && !m_dirty)
                return Fail(why, *this, "dirty child below a clean node");
            if (!child.CheckNode(why, childContent, childVisible))
                return false;
            content.ExpandToFit(childContent);
            visible.ExpandToFit(childVisible);
        }
    } else if (m_list.Size() > size_t(m_root->maxEntitiesPerNode) && MaySplit(m_list.Size() - 1) &&
               !HoldsOnlyEqualBounds()) {
        return Fail(why, *this, "too many entities for an unsplit node");
    }
    const ZvBounds3D& cachedVisible = HasOwnVisible() ? m_rare->visible : m_content;
    if (!Holds(m_content, content) || !Holds(cachedVisible, visible))
        return Fail(why, *this, "cached bounds too small");
    if (!m_dirty && (m_content != content || cachedVisible != visible))
        return Fail(why, *this, "cached bounds too large in a clean node");
    return true;
}

bool ZvBNode::CheckEntry(std::string& why, size_t index, ZvBounds3D& content, ZvBounds3D& visible) const {
    const ZvEntity* entity = m_list.Get(index);
    if (!entity)
        return Fail(why, *this, "null entity");
    const ZvBounds3D bounds = entity->Bounds3D();
    if (entity->Owner() != this || entity->ParentSpatialNode() != uint32_t(m_nodeId))
        return Fail(why, *this, "entity with another owner");
    if (!BelongsHere(bounds))
        return Fail(why, *this, "entity that belongs into another node");
    if (m_list.Box(index) != PackBox(ZvNodeGrid(m_box), bounds))
        return Fail(why, *this, "stale box in steps");
    const bool drawn = !entity->IsErased() && entity->IsVisible();
    if (!drawn && !m_mixed)
        return Fail(why, *this, "hidden or erased entity in a node that claims none");
    if (CanBePlaced(bounds) && (bounds.minZ < m_box.minZ || bounds.maxZ > m_box.maxZ))
        return Fail(why, *this, "entity outside of the node's Z range");
    if (!entity->IsErased() && bounds.minX <= bounds.maxX && bounds.minY <= bounds.maxY) {
        content.ExpandToFit(bounds);
        if (drawn)
            visible.ExpandToFit(bounds);
    }
    return true;
}

void ZvBNode::AddStats(ZvIndexBlockStats& stats) const {
    ++stats.nodes;
    stats.leaves += !m_children;
    stats.emptyLeaves += !m_children && m_list.Size() == 0;
    stats.entities += m_list.Size();
    stats.entitiesInInner += m_children ? m_list.Size() : 0;
    stats.largestNode = std::max(stats.largestNode, m_list.Size());
    stats.maxDepth = std::max(stats.maxDepth, int32_t(m_depth));
    stats.memory += sizeof(ZvBNode) + m_list.MemUsage();
    if (m_rare)
        stats.memory += sizeof(Rare) + m_rare->drawSet.capacity() * sizeof(ZvEntity*) +
                        m_rare->drawSetBoxes.capacity() * sizeof(uint32_t);
    if (m_children)
        for (const ZvBNode& child : m_children->child)
            child.AddStats(stats);
}

ZvIndexBlockStats ZvBNode::GetIndexBlockStats() const {
    ZvIndexBlockStats stats;
    AddStats(stats);
    return stats;
}

size_t ZvBNode::MemUsage() const {
    return GetIndexBlockStats().memory;
}
