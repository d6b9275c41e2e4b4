// Rectangle and ray selections.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodePair.h"
#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>
#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define ZV_NODE_SSE2 1
#endif

namespace {

/// The window of a query in the steps of one node: an entry whose box is byte by byte at most `maybe` may meet the window,
/// one that is at most `surely` does.
struct StepWindow {
    uint8_t maybe[4], surely[4];

    StepWindow(const ZvNodeGrid& grid, const ZvBounds2D& window) {
        // Places beyond the node's box by more than rounding can do.
        constexpr double kBefore = -1e-3, kBehind = ZvNodeGrid::kSteps + 1e-3;
        const double minX = grid.PlaceX(window.minX), maxX = grid.PlaceX(window.maxX);
        const double minY = grid.PlaceY(window.minY), maxY = grid.PlaceY(window.maxY);
        Side(0, maxX > kBehind, ZvNodeGrid::Step(maxX));
        Side(1, maxY > kBehind, ZvNodeGrid::Step(maxY));
        Side(2, minX < kBefore, 255 - ZvNodeGrid::Step(minX));
        Side(3, minY < kBefore, 255 - ZvNodeGrid::Step(minY));
    }
    void Side(int side, bool beyondNode, uint32_t step) {
        maybe[side] = uint8_t(beyondNode ? ZvNodeGrid::kSteps : step);
        surely[side] = uint8_t(beyondNode ? ZvNodeGrid::kSteps : step - 1);
    }
};

/// Whether every byte of `box` is at most that of `limit`.
bool AtMost(uint32_t box, const uint8_t (&limit)[4]) {
    return uint8_t(box) <= limit[0] && uint8_t(box >> 8) <= limit[1] && uint8_t(box >> 16) <= limit[2] &&
           uint8_t(box >> 24) <= limit[3];
}

ZvBounds3D Column(const ZvBounds3D& box) {
    return {box.minX, box.minY, -kZvBoundsLimit, box.maxX, box.maxY, kZvBoundsLimit};
}

bool Wanted(const ZvEntity* entity, const ZvTreeQuery& query) {
    return (query.withErased || !entity->IsErased()) && (!query.visibleOnly || entity->IsVisible());
}

/// A window in the form of a node's child boxes, rounded once so that nothing is missed, and once so that nothing is taken that
/// is not wholly inside.
struct FloatWindow {
    alignas(16) float outer[4];
    alignas(16) float inner[4];

    explicit FloatWindow(const ZvBounds2D& w) {
        const double most[4] = {w.maxX, w.maxY, -w.minX, -w.minY};
        const double least[4] = {w.minX, w.minY, -w.maxX, -w.maxY};
        for (int i = 0; i < 4; ++i)
            outer[i] = RoundUp(most[i]), inner[i] = RoundUp(least[i]);
    }
    static float RoundUp(double v) {
        constexpr double kMost = 3.4e38;
        if (!(std::abs(v) < kMost))
            return v < 0 ? -INFINITY : INFINITY;
        const float f = float(v);
        return double(f) < v ? std::nextafter(f, INFINITY) : f;
    }
    bool Meets(const float (&box)[4]) const {
#if ZV_NODE_SSE2
        return _mm_movemask_ps(_mm_cmple_ps(_mm_load_ps(box), _mm_load_ps(outer))) == 15;
#else
        return box[0] <= outer[0] && box[1] <= outer[1] && box[2] <= outer[2] && box[3] <= outer[3];
#endif
    }
    bool Holds(const float (&box)[4]) const {
#if ZV_NODE_SSE2
        return _mm_movemask_ps(_mm_cmpgt_ps(_mm_load_ps(box), _mm_load_ps(inner))) == 15;
#else
        return box[0] > inner[0] && box[1] > inner[1] && box[2] > inner[2] && box[3] > inner[3];
#endif
    }
};

/// Where a selection puts what it found. False stops.
struct ArraySink {
    dvect<ZvEntity*>& found;
    bool Take(ZvEntity* const* entities, size_t count) const {
        found.append(entities, count);
        return true;
    }
};
struct CallSink {
    bool (*take)(void*, ZvEntity*);
    void* target;
    bool Take(ZvEntity* const* entities, size_t count) const {
        return std::all_of(entities, entities + count,
                           [this](ZvEntity* entity) { return take(target, entity); });
    }
};

} // namespace

/// One rectangle selection. The way down gathers the nodes whose lists are to be looked at, so that their memory is fetched
/// together and before it is needed; order is that of drawing throughout.
template <class Sink>
class ZvBNodeRectQuery {
public:
    ZvBNodeRectQuery(const ZvBounds2D& window, const ZvTreeQuery& query, Sink sink)
        : m_window(window), m_floats(window), m_query(query), m_sink(sink) {}

    /// False when the sink stopped.
    bool Run(const ZvBNode& top) {
        return (top.m_children ? Descend(top) : Gather(top, false)) && ScanGathered();
    }

private:
    static constexpr size_t kGathered = 32;
    struct Gathered {
        const ZvBNode* node;
        bool whole;
    };

    static void Prefetch(const void* address) {
#if ZV_NODE_SSE2
        _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#else
        (void)address;
#endif
    }

    bool Descend(const ZvBNode& node) {
        const ZvBNode(&child)[2] = node.m_children->child;
        const bool meets[2] = {Meets(node, 0), Meets(node, 1)};
        if (meets[1])
            Prefetch(&child[1]);
        if (!node.m_list.HasNoBlock() && !Gather(node, false))
            return false;
        for (int i = 0; i < 2; ++i) {
            if (!meets[i])
                continue;
            const bool split = node.m_childSplit >> i & 1;
            const bool whole = Holds(node, i);
            if (!(!split ? Gather(child[i], whole) : whole ? DescendWhole(child[i]) : Descend(child[i])))
                return false;
        }
        return true;
    }

    bool DescendWhole(const ZvBNode& node) {
        const ZvBNode(&child)[2] = node.m_children->child;
        Prefetch(&child[1]);
        if (!node.m_list.HasNoBlock() && !Gather(node, true))
            return false;
        for (int i = 0; i < 2; ++i)
            if (!(node.m_childSplit >> i & 1 ? DescendWhole(child[i]) : Gather(child[i], true)))
                return false;
        return true;
    }

    // Erased entities do not extend content bounds, so they are looked for by the cell.
    bool Meets(const ZvBNode& node, int i) const {
        return m_query.withErased ? m_window.PositiveUnion(node.m_children->child[i].m_box.ToBounds2D())
                                  : m_floats.Meets(node.m_childBox[i].side);
    }
    bool Holds(const ZvBNode& node, int i) const {
        if (!m_query.withErased)
            return m_floats.Holds(node.m_childBox[i].side);
        const ZvBounds3D& b = node.m_children->child[i].m_box;
        return b.minX > m_window.minX && b.maxX < m_window.maxX && b.minY > m_window.minY &&
               b.maxY < m_window.maxY;
    }

    bool Gather(const ZvBNode& node, bool whole) {
        Prefetch(&node);
        m_gathered[m_count++] = {&node, whole};
        return m_count < kGathered || ScanGathered();
    }

    bool ScanGathered() {
        for (size_t i = 0; i < m_count; ++i)
            if (const auto* block = static_cast<const char*>(m_gathered[i].node->m_list.BlockAddress()))
                for (size_t line = 0; line < 4; ++line)
                    Prefetch(block + line * 64);
        const size_t count = m_count;
        m_count = 0;
        for (size_t i = 0; i < count; ++i) {
            const ZvBNode& node = *m_gathered[i].node;
            if (!node.m_list.HasNoBlock() && !(m_gathered[i].whole ? TakeList(node) : ScanList(node)))
                return false;
        }
        return true;
    }

    bool TakeList(const ZvBNode& node) const {
        if (!node.m_mixed)
            return m_sink.Take(node.m_list.begin(), node.m_list.Size());
        for (ZvEntity* const& entity : node.m_list)
            if (Wanted(entity, m_query) && !m_sink.Take(&entity, 1))
                return false;
        return true;
    }

    bool ScanList(const ZvBNode& node) const {
        const StepWindow window(node.m_list.Grid(), m_window);
        const uint32_t* boxes = node.m_list.Boxes();
        ZvEntity* const* entities = node.m_list.Entities();
        const size_t size = node.m_list.Size();
        const bool looksAtAll = node.m_mixed || m_query.enclosed;
        ZvEntity* taken[kTaken + 4];
        size_t count = 0, i = 0;
#if ZV_NODE_SSE2
        const __m128i maybe = _mm_set1_epi32(std::bit_cast<int32_t>(window.maybe));
        const __m128i surely = _mm_set1_epi32(std::bit_cast<int32_t>(window.surely));
        const auto atMost = [](__m128i four, __m128i limit) {
            const __m128i fits = _mm_cmpeq_epi32(_mm_subs_epu8(four, limit), _mm_setzero_si128());
            return unsigned(_mm_movemask_ps(_mm_castsi128_ps(fits)));
        };
        for (; i + 4 <= size; i += 4) {
            const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(boxes + i));
            unsigned meets = atMost(four, maybe);
            if (!meets)
                continue;
            const unsigned open = looksAtAll ? meets : meets & ~atMost(four, surely);
            for (unsigned rest = open; rest; rest &= rest - 1) {
                const int bit = std::countr_zero(rest);
                if (!LookAt(node, entities[i + size_t(bit)]))
                    meets &= ~(1u << bit);
            }
            // Every place is written and those that count are kept: which they are is not predictable.
            for (unsigned k = 0; k < 4; ++k) {
                taken[count] = entities[i + k];
                count += meets >> k & 1;
            }
            if (count >= kTaken && !m_sink.Take(taken, std::exchange(count, 0)))
                return false;
        }
#endif
        for (; i < size; ++i) {
            if (!AtMost(boxes[i], window.maybe))
                continue;
            if ((looksAtAll || !AtMost(boxes[i], window.surely)) && !LookAt(node, entities[i]))
                continue;
            taken[count++] = entities[i];
            if (count >= kTaken && !m_sink.Take(taken, std::exchange(count, 0)))
                return false;
        }
        if (count && !m_sink.Take(taken, count))
            return false;
        return !node.IsRoot() || ScanLoose(node);
    }

    /// For what steps do not decide.
    bool LookAt(const ZvBNode& node, const ZvEntity* entity) const {
        if (node.m_mixed && !Wanted(entity, m_query))
            return false;
        const ZvBounds2D b = entity->Bounds2D();
        if (m_query.enclosed)
            return !b.IsNull() && m_window.IsInsideMe(b);
        if (m_query.touching)
            return m_window.PositiveUnion(b);
        return m_window.minX < b.maxX && b.minX < m_window.maxX && m_window.minY < b.maxY &&
               b.minY < m_window.maxY;
    }

    /// What the root keeps without a place.
    bool ScanLoose(const ZvBNode& root) const {
        for (size_t i = 0; i < root.m_list.Size(); ++i) {
            ZvEntity* entity = root.m_list.Get(i);
            if (root.m_list.Box(i) == ZvNodeGrid::kLoose && LookAt(root, entity) && !m_sink.Take(&entity, 1))
                return false;
        }
        return true;
    }

    static constexpr size_t kTaken = 64;
    const ZvBounds2D& m_window;
    const FloatWindow m_floats;
    const ZvTreeQuery& m_query;
    const Sink m_sink;
    Gathered m_gathered[kGathered];
    size_t m_count = 0;
};

bool ZvBNode::VisitRect(const ZvBounds2D& box, const ZvTreeQuery& query, Predicate take, void* target) const {
    return box.IsNull() || ZvBNodeRectQuery(box, query, CallSink{take, target}).Run(*this);
}

void ZvBNode::PureSelectRect(const ZvBounds2D& box, dvect<ZvEntity*>& found, const ZvTreeQuery& query) const {
    if (!box.IsNull())
        ZvBNodeRectQuery(box, query, ArraySink{found}).Run(*this);
}

bool ZvBNode::RayCylinderIntersects(const Ray3d& ray, double radius, const ZvBounds3D& box) {
    if (box.IsNull())
        return false;
    double enter = -INFINITY, leave = INFINITY;
    const auto slab = [&](double low, double high, double origin, double direction) {
        if (direction == 0)
            return origin >= low && origin <= high;
        const double a = (low - origin) / direction, b = (high - origin) / direction;
        enter = std::max(enter, std::min(a, b));
        leave = std::min(leave, std::max(a, b));
        return enter <= leave;
    };
    return slab(box.minX - radius, box.maxX + radius, ray.origin.x, ray.direction.x) &&
           slab(box.minY - radius, box.maxY + radius, ray.origin.y, ray.direction.y) &&
           slab(box.minZ - radius, box.maxZ + radius, ray.origin.z, ray.direction.z);
}

void ZvBNode::PureSelectRay(const Ray3d& ray, double radius, dvect<ZvEntity*>& found,
                            const ZvTreeQuery& query) const {
    for (ZvEntity* entity : m_list)
        if (!(m_mixed && !Wanted(entity, query)) && RayCylinderIntersects(ray, radius, entity->Bounds3D()))
            found.push_back(entity);
    if (m_children)
        for (const ZvBNode& child : m_children->child)
            // Erased entities do not extend content bounds; a cell says nothing about the Z of what lies deeper.
            if (RayCylinderIntersects(ray, radius, query.withErased ? Column(child.m_box) : child.m_content))
                child.PureSelectRay(ray, radius, found, query);
}

const ZvBNode* ZvBNode::SmallestEnclosingNode(const ZvBounds2D& box) const {
    if (!m_box.IsInsideMe2D(box))
        return nullptr;
    const ZvBNode* node = this;
    while (node->m_children) {
        const ZvBNode(&child)[2] = node->m_children->child;
        if (child[0].m_box.IsInsideMe2D(box))
            node = &child[0];
        else if (child[1].m_box.IsInsideMe2D(box))
            node = &child[1];
        else
            break;
    }
    return node;
}

ZvBNode* ZvBNode::SmallestEnclosingNode(const ZvBounds2D& box) {
    return const_cast<ZvBNode*>(static_cast<const ZvBNode*>(this)->SmallestEnclosingNode(box));
}

ZvBNode* ZvBNode::LargestEnclosedNode(const ZvBounds2D& box) {
    if (m_box.minX > m_box.maxX || !m_box.ToBounds2D().PositiveUnion(box))
        return nullptr;
    if (m_box.IsInsideOf2D(box))
        return this;
    // The higher of the two findings; the first of equals.
    ZvBNode* best = nullptr;
    if (m_children)
        for (ZvBNode& child : m_children->child)
            if (ZvBNode* found = child.LargestEnclosedNode(box);
                found && (!best || found->m_depth < best->m_depth))
                best = found;
    return best;
}
