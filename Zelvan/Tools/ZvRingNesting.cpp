#include "Zelvan/Tools/ZvRingNesting.h"
#include "Zelvan/Tools/ZvPolygonArea.h"
#include "Zelvan/ZvBounds.h"
#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

namespace {

/// X of the edge where it crosses height y.
double CrossingX(const Vec2d& a, const Vec2d& b, double y) {
    return (b.x - a.x) * ((y - a.y) / (b.y - a.y)) + a.x;
}

/// A point well inside a ring: the middle of the widest piece that one of a few horizontal lines cuts out of it. A ring without
/// area gives its first vertex.
Vec2d InteriorPoint(const Vec2d* ring, size_t count) {
    double lo = ring[0].y, hi = lo;
    for (size_t i = 1; i < count; ++i)
        lo = std::min(lo, ring[i].y), hi = std::max(hi, ring[i].y);
    Vec2d best = ring[0];
    double bestWidth = 0;
    std::vector<double> xs;
    for (const double part : {0.5, 0.31, 0.77, 0.07, 0.94}) {
        const double y = lo + (hi - lo) * part;
        xs.clear();
        for (size_t i = 0, j = count - 1; i < count; j = i++)
            if ((ring[i].y > y) != (ring[j].y > y))
                xs.push_back(CrossingX(ring[i], ring[j], y));
        std::sort(xs.begin(), xs.end());
        for (size_t i = 0; i + 1 < xs.size(); i += 2)
            if (xs[i + 1] - xs[i] > bestWidth) {
                bestWidth = xs[i + 1] - xs[i];
                best = {(xs[i] + xs[i + 1]) / 2, y};
            }
        if (bestWidth > (hi - lo) * 0.01)
            break;
    }
    return best;
}

/// Answers many point-in-ring questions about one ring: its edges sorted into horizontal strips.
class RingStrips {
public:
    RingStrips(const Vec2d* ring, uint32_t count, const ZvBounds2D& box)
        : m_ring(ring), m_count(count), m_base(box.minY) {
        uint32_t strips = std::max(1u, count / 4);
        // Long vertical edges fall into many strips: fewer strips then, so that entries stay in proportion to edges.
        double rise = 0;
        for (uint32_t i = 0; i < count; ++i)
            rise += std::abs(ring[i].y - ring[(i + 1) % count].y);
        const double turns = box.Height() > 0 ? rise / box.Height() : 0;
        if (turns > 8)
            strips = std::max(1u, uint32_t(strips * 8 / turns));
        m_perUnit = box.Height() > 0 ? strips / box.Height() : 0;
        m_first.assign(strips + 1, 0);
        EachEntry([&](uint32_t strip, uint32_t) { ++m_first[strip + 1]; });
        std::partial_sum(m_first.begin(), m_first.end(), m_first.begin());
        m_edges.resize(m_first.back());
        std::vector<uint32_t> at(m_first.begin(), m_first.end() - 1);
        EachEntry([&](uint32_t strip, uint32_t edge) { m_edges[at[strip]++] = edge; });
    }

    bool Contains(const Vec2d& p) const {
        bool inside = false;
        const uint32_t strip = Strip(p.y);
        for (uint32_t k = m_first[strip]; k < m_first[strip + 1]; ++k) {
            const Vec2d &a = m_ring[m_edges[k]], &b = m_ring[(m_edges[k] + 1) % m_count];
            if ((a.y > p.y) != (b.y > p.y) && p.x < CrossingX(a, b, p.y))
                inside = !inside;
        }
        return inside;
    }

private:
    uint32_t Strip(double y) const {
        const double s = (y - m_base) * m_perUnit;
        const double last = double(m_first.size() - 2);
        return uint32_t(s > 0 ? std::min(s, last) : 0);
    }
    template <class F>
    void EachEntry(F f) const {
        for (uint32_t i = 0; i < m_count; ++i) {
            const double y0 = m_ring[i].y, y1 = m_ring[(i + 1) % m_count].y;
            const uint32_t to = Strip(std::max(y0, y1));
            for (uint32_t s = Strip(std::min(y0, y1)); s <= to; ++s)
                f(s, i);
        }
    }

    const Vec2d* m_ring;
    uint32_t m_count;
    double m_base;
    double m_perUnit;
    std::vector<uint32_t> m_first;
    std::vector<uint32_t> m_edges;
};

/// Finds the boxes over a point: boxes sorted into a packed tree by alternating medians.
class BoxTree {
public:
    explicit BoxTree(const std::vector<ZvBounds2D>& boxes) : m_boxes(boxes), m_order(boxes.size()) {
        std::iota(m_order.begin(), m_order.end(), 0u);
        m_nodes.reserve(boxes.size() / 4 + 2);
        if (!boxes.empty())
            Build(0, uint32_t(boxes.size()));
    }

    template <class F>
    void EachOver(const Vec2d& p, F f) const {
        if (!m_nodes.empty())
            Visit(0, p, f);
    }

private:
    struct Node {
        ZvBounds2D box;
        uint32_t first, last; ///< leaf: items; else right child in `first`, `last` 0
    };
    static constexpr uint32_t kLeaf = 8;

    void Build(uint32_t first, uint32_t last) {
        const size_t at = m_nodes.size();
        m_nodes.push_back({{}, first, last});
        ZvBounds2D box;
        for (uint32_t i = first; i < last; ++i)
            box.ExpandToFit(m_boxes[m_order[i]]);
        m_nodes[at].box = box;
        if (last - first <= kLeaf)
            return;
        const bool byX = box.Width() > box.Height();
        const uint32_t mid = (first + last) / 2;
        std::nth_element(m_order.begin() + first, m_order.begin() + mid, m_order.begin() + last,
                         [&](uint32_t a, uint32_t b) {
                             const ZvBounds2D &p = m_boxes[a], &q = m_boxes[b];
                             return byX ? p.minX + p.maxX < q.minX + q.maxX
                                        : p.minY + p.maxY < q.minY + q.maxY;
                         });
        Build(first, mid);
        m_nodes[at].first = uint32_t(m_nodes.size());
        m_nodes[at].last = 0;
        Build(mid, last);
    }
    template <class F>
    void Visit(size_t at, const Vec2d& p, F& f) const {
        const Node& node = m_nodes[at];
        if (!node.box.IsInsideMe(p))
            return;
        if (node.last == 0) {
            Visit(at + 1, p, f);
            Visit(node.first, p, f);
            return;
        }
        for (uint32_t i = node.first; i < node.last; ++i)
            if (m_boxes[m_order[i]].IsInsideMe(p))
                f(m_order[i]);
    }

    const std::vector<ZvBounds2D>& m_boxes;
    std::vector<uint32_t> m_order;
    std::vector<Node> m_nodes;
};

/// A ring that touches the one around it may stick out of its box by a rounding.
bool Encloses(ZvBounds2D outer, const ZvBounds2D& inner) {
    outer.Grow(outer.MaxDimension() * 1e-6);
    return outer.IsInsideMe(inner);
}

} // namespace

ZvRingNesting::ZvRingNesting(std::span<const Vec2d> vertices, std::span<const Ring> rings)
    : depths(rings.size(), 0), parents(rings.size(), -1) {
    const size_t n = rings.size();
    std::vector<ZvBounds2D> boxes(n);
    std::vector<double> areas(n, -1);
    for (size_t i = 0; i < n; ++i) {
        for (const Vec2d& v : vertices.subspan(rings[i].start, rings[i].count))
            boxes[i].ExpandToFit(v);
        if (rings[i].count >= 3)
            areas[i] = PolygonArea2D(&vertices[rings[i].start], rings[i].count);
    }
    if (n < 2)
        return;

    const BoxTree tree(boxes);
    std::vector<std::unique_ptr<RingStrips>> strips(n);
    std::vector<uint32_t> asked(n, 0);
    for (size_t i = 0; i < n; ++i) {
        if (rings[i].count == 0)
            continue;
        const Vec2d p = InteriorPoint(&vertices[rings[i].start], rings[i].count);
        tree.EachOver(p, [&](uint32_t over) {
            const bool larger = areas[over] > areas[i] || (areas[over] == areas[i] && over < i);
            if (over == i || areas[over] < 0 || !larger || !Encloses(boxes[over], boxes[i]))
                return;
            const Ring& ring = rings[over];
            const Vec2d* points = &vertices[ring.start];
            // A few questions are quicker answered directly.
            if (!strips[over] && ring.count >= 32 && ++asked[over] == 4)
                strips[over] = std::make_unique<RingStrips>(points, ring.count, boxes[over]);
            if (!(strips[over] ? strips[over]->Contains(p) : PointInRing2D(points, ring.count, p)))
                return;
            ++depths[i];
            const int32_t parent = parents[i];
            if (parent < 0 || areas[over] < areas[size_t(parent)] ||
                (areas[over] == areas[size_t(parent)] && int32_t(over) > parent))
                parents[i] = int32_t(over);
        });
    }
}
