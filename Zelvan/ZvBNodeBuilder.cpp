#include "Zelvan/ZvBNodeBuilder.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodePair.h"
#include <algorithm>

namespace {

constexpr uintptr_t kErasedBit = 1, kHiddenBit = 2, kBits = 3;

ZvEntity* EntityOf(const ZvBNodeBuilder::Item& item) {
    return reinterpret_cast<ZvEntity*>(item.entity & ~kBits);
}

ZvBounds2D Box2D(const ZvBNodeBuilder::Item& item) {
    return {item.minX, item.minY, item.maxX, item.maxY};
}

bool SameBox(const ZvBNodeBuilder::Item& a, const ZvBNodeBuilder::Item& b) {
    return a.minX == b.minX && a.minY == b.minY && a.maxX == b.maxX && a.maxY == b.maxY;
}

/// The entity's flags are about to be written, its owner link among them.
void Prefetch(const ZvBNodeBuilder::Item& item) {
#if defined(__GNUC__)
    __builtin_prefetch(reinterpret_cast<const void*>(item.entity & ~kBits), 1);
#else
    (void)item;
#endif
}

} // namespace

void ZvBNodeBuilder::Load(std::span<ZvEntity* const> entities) {
    m_items.reserve(entities.size());
    ZvBounds3D all;
    for (ZvEntity* entity : entities) {
        const ZvBounds3D b = entity->Bounds3D();
        if (!ZvBNode::CanBePlaced(b)) {
            m_loose.push_back(entity);
            continue;
        }
        all.ExpandToFit(b);
        const uintptr_t bits = (entity->IsErased() ? kErasedBit : 0) | (entity->IsVisible() ? 0 : kHiddenBit);
        m_items.push_back({b.minX, b.minY, b.maxX, b.maxY, reinterpret_cast<uintptr_t>(entity) | bits});
    }
    m_bounds = all;
    m_flat = all.minZ >= all.maxZ;
}

void ZvBNodeBuilder::Place(ZvBNode& root) {
    for (ZvEntity* entity : m_loose)
        root.Keep(entity, entity->Bounds3D());
    if (m_items.empty())
        return;
    std::unique_ptr<Item[]> scratch(new Item[m_items.size()]);
    PlaceItems(root, m_items.data(), m_items.size(), scratch.get());
}

ZvBounds3D ZvBNodeBuilder::BoundsOf(const Item& item) const {
    if (!m_flat)
        return EntityOf(item)->Bounds3D();
    return {item.minX, item.minY, m_bounds.minZ, item.maxX, item.maxY, m_bounds.maxZ};
}

bool ZvBNodeBuilder::StaysLeaf(const ZvBNode& node, const Item* items, size_t count) const {
    const size_t before = node.m_list.Size() + count - 1; // when the last one arrives
    if (before < size_t(node.m_root->maxEntitiesPerNode) || before <= size_t(node.m_depth) * 2 ||
        !node.CanBeHalved())
        return true;
    if (node.m_list.Size() > 0 && !node.HoldsOnly(ZvBounds3D(Box2D(items[0]))))
        return false;
    return std::all_of(items + 1, items + count, [&](const Item& item) { return SameBox(item, items[0]); });
}

void ZvBNodeBuilder::Append(ZvBNode& node, const Item* items, size_t count) const {
    constexpr size_t kAhead = 8;
    node.m_list.Reserve(node.m_list.Size() + count);
    const ZvNodeGrid grid = node.Grid();
    for (size_t i = 0; i < count; ++i) {
        if (i + kAhead < count)
            Prefetch(items[i + kAhead]);
        const Item& item = items[i];
        ZvEntity* entity = EntityOf(item);
        entity->SetParentBlock(&node);
        entity->SetParentSpatialNode(uint32_t(node.m_nodeId));
        node.m_list.Add(entity, grid.Pack(item.minX, item.minY, item.maxX, item.maxY));
        const ZvBounds3D bounds = BoundsOf(item);
        node.WidenZ(bounds);
        if (!(item.entity & kErasedBit))
            node.Extend(bounds, !(item.entity & kHiddenBit));
        node.m_mixed |= (item.entity & kBits) != 0;
    }
    if (count) {
        node.m_drawSetInvalid = true;
        node.m_allEqual = false;
        node.m_changeCounter += int32_t(count);
        node.m_root->lastInsertionNode = &node;
    }
}

void ZvBNodeBuilder::PlaceItems(ZvBNode& node, Item* items, size_t count, Item* scratch) {
    if (count == 0)
        return;
    if (!node.m_children) {
        if (StaysLeaf(node, items, count))
            return Append(node, items, count);
        if (node.m_list.Size())
            node.Split();
        else
            node.MakeChildren();
    }
    // Stable three-way partition: child 0 stays in front of `items`, child 1 goes to `scratch`, the rest stays in this node.
    const double high = node.m_cutHigh, low = node.m_cutLow;
    const bool cutsX = node.m_cutsX;
    std::vector<Item> here;
    size_t first = 0, second = 0;
    for (size_t i = 0; i < count; ++i) {
        const Item item = items[i];
        const bool inFirst = (cutsX ? item.maxX : item.maxY) <= high;
        const bool inSecond = !inFirst && (cutsX ? item.minX : item.minY) >= low;
        if (!inFirst && !inSecond) {
            here.push_back(item);
            continue;
        }
        // Both places are written and one of them counts: the choice is not predictable.
        items[first] = item;
        scratch[second] = item;
        first += inFirst;
        second += inSecond;
    }
    Append(node, here.data(), here.size());
    PlaceItems(node.m_children->child[0], items, first, scratch + second);
    PlaceItems(node.m_children->child[1], scratch, second, items);
    node.CollapseEmptyChildren();
    for (const ZvBNode& child : node.m_children->child)
        node.ExtendByChild(child);
}
