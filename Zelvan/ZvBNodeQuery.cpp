// Rectangle and ray selections.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodePair.h"
#include <algorithm>
#include <bit>
#include <cmath>
#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define ZV_NODE_SSE2 1
#endif

namespace {

/// The window of a query in the steps of one node: an entry whose box is byte by byte at most `maybe` may meet the window,
/// one that is at most `surely` does.
struct StepWindow {
    uint8_t maybe[4], surely[4];

    StepWindow(const ZvNodeGrid& grid, const ZvBounds3D& node, const ZvBounds2D& window) {
        Side(0, window.maxX > node.maxX, grid.StepX(window.maxX));
        Side(1, window.maxY > node.maxY, grid.StepY(window.maxY));
        Side(2, window.minX < node.minX, 255 - grid.StepX(window.minX));
        Side(3, window.minY < node.minY, 255 - grid.StepY(window.minY));
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

bool Meets(const ZvBounds2D& bounds, const ZvBounds2D& window, const ZvTreeQuery& query) {
    if (query.enclosed)
        return !bounds.IsNull() && window.IsInsideMe(bounds);
    if (query.touching)
        return window.PositiveUnion(bounds);
    return window.minX < bounds.maxX && bounds.minX < window.maxX && window.minY < bounds.maxY &&
           bounds.minY < window.maxY;
}

} // namespace

/// One rectangle selection on its way through a tree.
class ZvBNodeRectQuery {
public:
    ZvBNodeRectQuery(const ZvBounds2D& window, const ZvTreeQuery& query, bool (*take)(void*, ZvEntity*),
                     void* target)
        : m_window(window), m_query(query), m_take(take), m_target(target) {}

    /// False when the taker stopped.
    bool Visit(const ZvBNode& node) const {
        if (node.m_list.Size() > 0 && !VisitList(node))
            return false;
        if (node.m_children)
            for (const ZvBNode& child : node.m_children->child) {
                // Erased entities do not extend content bounds, so they are looked for by the cell.
                const ZvBounds3D& b = m_query.withErased ? child.m_box : child.m_content;
                if (b.minX > m_window.maxX || b.maxX < m_window.minX || b.minY > m_window.maxY ||
                    b.maxY < m_window.minY)
                    continue;
                const bool inside = b.minX > m_window.minX && b.maxX < m_window.maxX &&
                                    b.minY > m_window.minY && b.maxY < m_window.maxY;
                if (!(inside ? TakeBranch(child) : Visit(child)))
                    return false;
            }
        return true;
    }

private:
    bool TakeBranch(const ZvBNode& node) const {
        for (ZvEntity* entity : node.m_list)
            if (!(node.m_mixed && !Wanted(entity, m_query)) && !m_take(m_target, entity))
                return false;
        return !node.m_children ||
               (TakeBranch(node.m_children->child[0]) && TakeBranch(node.m_children->child[1]));
    }

    bool VisitList(const ZvBNode& node) const {
        const ZvNodeGrid grid = node.Grid();
        const StepWindow window(grid, node.m_box, m_window);
        const uint32_t* boxes = node.m_list.Boxes();
        const size_t size = node.m_list.Size();
        size_t i = 0;
#if ZV_NODE_SSE2
        const __m128i maybe = _mm_set1_epi32(std::bit_cast<int32_t>(window.maybe));
        const __m128i surely = _mm_set1_epi32(std::bit_cast<int32_t>(window.surely));
        const __m128i zero = _mm_setzero_si128();
        for (; i + 4 <= size; i += 4) {
            const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(boxes + i));
            unsigned meets = unsigned(
                _mm_movemask_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(_mm_subs_epu8(four, maybe), zero))));
            if (!meets)
                continue;
            const unsigned sure = unsigned(
                _mm_movemask_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(_mm_subs_epu8(four, surely), zero))));
            for (; meets; meets &= meets - 1) {
                const int bit = std::countr_zero(meets);
                if (!Candidate(node, i + size_t(bit), sure >> bit & 1))
                    return false;
            }
        }
#endif
        for (; i < size; ++i)
            if (AtMost(boxes[i], window.maybe) && !Candidate(node, i, AtMost(boxes[i], window.surely)))
                return false;
        return !node.IsRoot() || VisitLoose(node);
    }

    bool Candidate(const ZvBNode& node, size_t index, bool sure) const {
        ZvEntity* entity = node.m_list.Get(index);
        if (node.m_mixed && !Wanted(entity, m_query))
            return true;
        if ((!sure || m_query.enclosed) && !Meets(entity->Bounds2D(), m_window, m_query))
            return true;
        return m_take(m_target, entity);
    }

    /// What the root keeps without a place.
    bool VisitLoose(const ZvBNode& root) const {
        for (size_t i = 0; i < root.m_list.Size(); ++i)
            if (root.m_list.Box(i) == ZvNodeGrid::kLoose && !Candidate(root, i, false))
                return false;
        return true;
    }

    const ZvBounds2D& m_window;
    const ZvTreeQuery& m_query;
    bool (*m_take)(void*, ZvEntity*);
    void* m_target;
};

bool ZvBNode::VisitRect(const ZvBounds2D& box, const ZvTreeQuery& query, Predicate take, void* target) const {
    return box.IsNull() || ZvBNodeRectQuery(box, query, take, target).Visit(*this);
}

void ZvBNode::PureSelectRect(const ZvBounds2D& box, dvect<ZvEntity*>& found, const ZvTreeQuery& query) const {
    const Predicate append = [](void* target, ZvEntity* entity) {
        static_cast<dvect<ZvEntity*>*>(target)->push_back(entity);
        return true;
    };
    VisitRect(box, query, append, &found);
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
