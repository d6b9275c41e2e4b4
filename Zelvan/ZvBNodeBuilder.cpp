#include "Zelvan/ZvBNodeBuilder.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodePair.h"
#include <algorithm>
#include <bit>

namespace {

constexpr uintptr_t kErasedBit = 1, kHiddenBit = 2, kBits = 3;

ZvEntity* EntityOf(uintptr_t entity) {
    return reinterpret_cast<ZvEntity*>(entity & ~kBits);
}

void PrefetchToRead(const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address, 0);
#else
    (void)address;
#endif
}

void PrefetchToWrite(const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address, 1);
#else
    (void)address;
#endif
}

double StepsPerUnit(double extent) {
    constexpr double kLast = 4294967295.0;
    return extent > 1e-280 && extent < 1e280 ? kLast / extent : 0;
}

} // namespace

/// The upper levels of the tree as they will be, nodes numbered as in a heap (the root 1, children 2i and 2i + 1), and where
/// their own entities stand once sorted: in the order of the walk.
struct ZvBNodeBuilder::Upper {
    int levels; ///< below the root
    std::vector<ZvBNode::Cut> cuts;
    std::vector<uint32_t> rank;  ///< place of a node in the walk
    std::vector<uint32_t> start; ///< first source, by rank; one more at the end
    // At most one of these is filled; neither when the input is in that order.
    std::vector<uint32_t> at;     ///< where the sorted source stands: sources stayed where they were
    std::vector<uint32_t> number; ///< of each sorted source in the input: sources were moved

    std::vector<ZvBounds3D> boxes;

    Upper(const ZvBounds3D& root, int levelCount) : levels(levelCount), rank(size_t(2) << levels) {
        boxes.resize(rank.size());
        boxes[1] = root;
        cuts.assign(size_t(1) << levels, ZvBNode::Cut(root));
        for (uint32_t id = 1; id < cuts.size(); ++id) {
            cuts[id] = ZvBNode::Cut(boxes[id]);
            ZvBNode::Halve(boxes[id], boxes[id * 2], boxes[id * 2 + 1]);
            const int level = std::bit_width(id) - 1;
            rank[id * 2] = rank[id] + 1;
            rank[id * 2 + 1] = rank[id] + 1 + NodesBelow(level + 1);
        }
    }
    /// Nodes in the branch of a node, itself included.
    uint32_t NodesBelow(int level) const { return (2u << (levels - level)) - 1; }
    uint32_t Place(uint32_t index) const { return at.empty() ? index : at[index]; }
    bool ComesBefore(uint32_t a, uint32_t b) const { return number.empty() ? a < b : number[a] < number[b]; }
    /// The node of the upper levels that holds the box: as far down as it goes. `guess` is tried first.
    uint32_t Find(const double (&side)[4], uint32_t guess) const {
        const ZvBounds3D& box = boxes[guess];
        if (guess >= cuts.size() && bool(int(side[0] > box.minX) & int(side[1] > box.minY) &
                                         int(side[2] < box.maxX) & int(side[3] < box.maxY)))
            return guess;
        // Which way it goes is not predictable, that it goes down is: so nothing branches until the end.
        uint32_t id = 1;
        bool fits = true;
        for (int level = 0; level < levels; ++level) {
            const ZvBNode::Cut& cut = cuts[id];
            const size_t axis = !cut.acrossX;
            const bool first = side[axis + 2] <= cut.high;
            fits &= bool(int(first) | int(side[axis] >= cut.low));
            id = id * 2 + uint32_t(!first);
        }
        return fits ? id : FindAmongInner(side);
    }
    uint32_t FindAmongInner(const double (&side)[4]) const {
        uint32_t id = 1;
        for (int to = 0; to >= 0; id = to >= 0 ? id * 2 + uint32_t(to) : id)
            to = cuts[id].ChildHolding(side[0], side[1], side[2], side[3]);
        return id;
    }
};

void ZvBNodeBuilder::Load(std::span<ZvEntity* const> entities, bool refuse) {
    m_sources.reset(new Source[entities.size()]);
    for (ZvEntity* entity : entities) {
        if (refuse && ZvBNode::RefuseInsertion(entity))
            continue;
        const ZvBounds3D b = entity->Bounds3D();
        if (!ZvBNode::CanBePlaced(b)) {
            m_loose.push_back(entity);
            continue;
        }
        NoteHeights(b);
        m_bounds.ExpandToFit(b);
        const uintptr_t bits = (entity->IsErased() ? kErasedBit : 0) | (entity->IsVisible() ? 0 : kHiddenBit);
        m_sources[m_count++] = {{b.minX, b.minY, b.maxX, b.maxY}, reinterpret_cast<uintptr_t>(entity) | bits};
    }
}

void ZvBNodeBuilder::NoteHeights(const ZvBounds3D& bounds) {
    if (m_heights.empty()) {
        if (bounds.minZ == bounds.maxZ && (m_count == 0 || bounds.minZ == m_bounds.minZ))
            return;
        m_heights.assign(m_count, {m_bounds.minZ, m_bounds.maxZ});
    }
    m_heights.push_back({bounds.minZ, bounds.maxZ});
}

ZvBounds3D ZvBNodeBuilder::BoundsOf(uint32_t source) const {
    const Vec2d height = m_heights.empty() ? Vec2d{m_bounds.minZ, m_bounds.maxZ} : m_heights[source];
    return ZvBounds3D(m_sources[source].Box(), height.x, height.y);
}

void ZvBNodeBuilder::Place(ZvBNode& root) {
    // Pieces of this many sources fit into the second cache with their items.
    constexpr size_t kPiece = 4096;
    constexpr int kMostLevels = 10;
    for (ZvEntity* entity : m_loose)
        root.Keep(entity, entity->Bounds3D());
    m_origin = {root.m_box.minX, root.m_box.minY};
    m_steps = {StepsPerUnit(root.m_box.Width()), StepsPerUnit(root.m_box.Height())};
    if (m_count < kPiece * 4) {
        PlaceRange(root, 0, uint32_t(m_count), nullptr);
        return;
    }
    Upper upper(root.m_box, std::min(int(std::bit_width(m_count / kPiece)), kMostLevels));
    SortByUpperNodes(upper);
    PlaceUpper(root, upper, 1, 0);
}

void ZvBNodeBuilder::SortByUpperNodes(Upper& upper) {
    std::vector<uint16_t> rank(m_count);
    upper.start.assign(upper.rank.size(), 0);
    size_t jumps = 0;
    bool inOrder = true;
    uint32_t id = 1;
    for (size_t i = 0; i < m_count; ++i) {
        id = upper.Find(m_sources[i].side, id);
        rank[i] = uint16_t(upper.rank[id]);
        ++upper.start[rank[i] + 1u];
        jumps += i > 0 && rank[i] != rank[i - 1];
        inOrder = inOrder && (i == 0 || rank[i] >= rank[i - 1]);
    }
    for (size_t i = 1; i < upper.start.size(); ++i)
        upper.start[i] += upper.start[i - 1];
    if (inOrder)
        return;
    // Where neighbours in the input are mostly neighbours in the tree, they can stay where they are.
    constexpr size_t kCoherent = 8;
    if (jumps < m_count / kCoherent)
        NumberByRank(upper, rank);
    else
        MoveByRank(upper, rank);
}

void ZvBNodeBuilder::NumberByRank(Upper& upper, const std::vector<uint16_t>& rank) {
    std::vector<uint32_t> next(upper.start);
    upper.at.resize(m_count);
    for (uint32_t i = 0; i < m_count; ++i)
        upper.at[next[rank[i]]++] = i;
}

void ZvBNodeBuilder::MoveByRank(Upper& upper, const std::vector<uint16_t>& rank) {
    std::vector<uint32_t> next(upper.start);
    std::unique_ptr<Source[]> sorted(new Source[m_count]);
    std::vector<Vec2d> heights(m_heights.size());
    upper.number.resize(m_count);
    for (uint32_t i = 0; i < m_count; ++i) {
        const uint32_t to = next[rank[i]]++;
        sorted[to] = m_sources[i];
        upper.number[to] = i;
        if (!heights.empty())
            heights[to] = m_heights[i];
    }
    m_sources = std::move(sorted);
    m_heights = std::move(heights);
}

void ZvBNodeBuilder::PlaceUpper(ZvBNode& node, const Upper& upper, uint32_t id, int level) {
    const uint32_t rank = upper.rank[id];
    const uint32_t begin = upper.start[rank], end = upper.start[rank + upper.NodesBelow(level)];
    const uint32_t ownEnd = upper.start[rank + 1];
    constexpr uint32_t kWorthSplitting = 2048;
    const bool large = end - begin > kWorthSplitting && node.MaySplit(end - begin - 1);
    if (level == upper.levels || !(node.m_children || (large && !AllEqual(begin, end, upper))))
        return PlaceRange(node, begin, end, &upper);
    if (!node.m_children) {
        if (node.m_list.IsEmpty())
            node.MakeChildren();
        else
            node.Split();
    }
    PlaceRange(node, begin, ownEnd, &upper);
    ZvBNode(&child)[2] = node.m_children->child;
    PlaceUpper(child[0], upper, id * 2, level + 1);
    PlaceUpper(child[1], upper, id * 2 + 1, level + 1);
    node.CollapseEmptyChildren();
    node.ExtendByChild(child[0]);
    node.ExtendByChild(child[1]);
}

bool ZvBNodeBuilder::AllEqual(uint32_t begin, uint32_t end, const Upper& upper) const {
    const ZvBounds2D first = m_sources[upper.Place(begin)].Box();
    for (uint32_t i = begin + 1; i < end; ++i)
        if (!(m_sources[upper.Place(i)].Box() == first))
            return false;
    return true;
}

void ZvBNodeBuilder::PlaceRange(ZvBNode& node, uint32_t begin, uint32_t end, const Upper* upper) {
    const size_t count = end - begin;
    if (count == 0)
        return;
    if (m_room < count) {
        m_items.reset(new Item[count]);
        m_scratch.reset(new Item[count]);
        m_room = count;
    }
    for (size_t i = 0; i < count; ++i) {
        const uint32_t source = upper ? upper->Place(begin + uint32_t(i)) : begin + uint32_t(i);
        const double(&side)[4] = m_sources[source].side;
        m_items[i] = {{StepX(side[0]), StepY(side[1]), StepX(side[2]), StepY(side[3])}, source};
    }
    const auto inputOrder = [upper](const Item& a, const Item& b) {
        return upper->ComesBefore(a.source, b.source);
    };
    if (upper && !std::is_sorted(&m_items[0], &m_items[0] + count, inputOrder))
        std::sort(&m_items[0], &m_items[0] + count, inputOrder);
    PlaceItems(node, m_items.get(), count, m_scratch.get());
}

bool ZvBNodeBuilder::StaysLeaf(const ZvBNode& node, const Item* items, size_t count) const {
    const size_t before = node.m_list.Size() + count - 1; // when the last one arrives
    if (!node.MaySplit(before))
        return true;
    if (!node.m_list.IsEmpty() && !node.HoldsOnly(BoundsOf(items[0].source)))
        return false;
    const ZvBounds2D first = m_sources[items[0].source].Box();
    return std::all_of(items, items + count,
                       [&](const Item& item) { return m_sources[item.source].Box() == first; });
}

void ZvBNodeBuilder::Fetch(const Item* items, size_t count) const {
    for (size_t i = 0; i < count; ++i)
        PrefetchToRead(&m_sources[items[i].source]);
    for (size_t i = 0; i < count; ++i)
        PrefetchToWrite(EntityOf(m_sources[items[i].source].entity));
}

void ZvBNodeBuilder::Append(ZvBNode& node, const Item* items, size_t count) const {
    constexpr size_t kAtOnce = 64;
    ZvBNodeList& list = node.m_list;
    list.Reserve(list.Size() + count);
    list.SetGrid(ZvNodeGrid(node.m_box));
    const ZvNodeGrid grid = list.Grid();
    ZvBounds3D shown, hidden, all;
    for (size_t i = 0; i < count; ++i) {
        if (i % kAtOnce == 0)
            Fetch(items + i, std::min(kAtOnce, count - i));
        const uintptr_t source = m_sources[items[i].source].entity;
        const ZvBounds3D bounds = BoundsOf(items[i].source);
        ZvEntity* entity = EntityOf(source);
        entity->SetParentBlock(&node);
        entity->SetParentSpatialNode(uint32_t(node.m_nodeId));
        node.m_root->widestLine.Add(*entity);
        list.Add(entity, grid.Pack(bounds.minX, bounds.minY, bounds.maxX, bounds.maxY));
        all.ExpandToFit(bounds);
        if (!(source & kErasedBit))
            (source & kHiddenBit ? hidden : shown).ExpandToFit(bounds);
        node.m_mixed |= (source & kBits) != 0;
    }
    node.WidenZ(all);
    node.Extend(shown, true);
    node.Extend(hidden, false);
    node.m_drawSetInvalid = true;
    node.m_allEqual = false;
    node.m_changeCounter += int32_t(count);
    node.m_root->lastInsertionNode = &node;
}

/// Stable three-way partition: child 0's items move to the front of `items`, child 1's go to `scratch`, the rest stays in the node.
void ZvBNodeBuilder::PlaceItems(ZvBNode& node, Item* items, size_t count, Item* scratch) {
    if (count == 0)
        return;
    if (!node.m_children) {
        if (StaysLeaf(node, items, count))
            return Append(node, items, count);
        if (node.m_list.IsEmpty())
            node.MakeChildren();
        else
            node.Split();
    }
    const ZvBNode::Cut cut(node.m_box);
    const size_t least = cut.acrossX ? 0 : 1, most = least + 2;
    const uint32_t high = cut.acrossX ? StepX(cut.high) : StepY(cut.high);
    const uint32_t low = cut.acrossX ? StepX(cut.low) : StepY(cut.low);
    std::vector<Item> here;
    size_t first = 0, second = 0;
    for (size_t i = 0; i < count; ++i) {
        const Item item = items[i];
        bool inFirst = item.side[most] < high;
        bool inSecond = !inFirst & (item.side[least] > low);
        if ((item.side[most] == high) | !(inFirst | inSecond)) {
            const int side = cut.ChildHolding(BoundsOf(item.source));
            inFirst = side == 0;
            inSecond = side == 1;
            if (side < 0) {
                here.push_back(item);
                continue;
            }
        }
        // Both places are written and one of them counts: the choice is not predictable.
        items[first] = item;
        scratch[second] = item;
        first += inFirst;
        second += inSecond;
    }
    if (!here.empty())
        Append(node, here.data(), here.size());
    ZvBNode(&child)[2] = node.m_children->child;
    PlaceItems(child[0], items, first, scratch + second);
    PlaceItems(child[1], scratch, second, items);
    node.CollapseEmptyChildren();
    node.ExtendByChild(child[0]);
    node.ExtendByChild(child[1]);
}
