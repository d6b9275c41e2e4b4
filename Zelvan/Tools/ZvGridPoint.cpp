#include "Zelvan/Tools/ZvGridPoint.h"
#include <algorithm>
#include <cmath>
#include <numeric>

std::vector<ZvGridPoint> ZvGridPoint::Snap(std::span<const Vec2d> points) {
    std::vector<ZvGridPoint> snapped(points.size());
    if (points.empty())
        return snapped;
    Vec2d lo = points[0], hi = points[0];
    for (const Vec2d& p : points) {
        lo = {std::min(lo.x, p.x), std::min(lo.y, p.y)};
        hi = {std::max(hi.x, p.x), std::max(hi.y, p.y)};
    }
    // Halves first: the extent itself may be beyond what a double holds.
    const Vec2d mid = {lo.x / 2 + hi.x / 2, lo.y / 2 + hi.y / 2};
    const double reach = std::max(hi.x / 2 - lo.x / 2, hi.y / 2 - lo.y / 2);
    const double scale = reach > 0 ? 1073741822.0 / reach : 0;
    const auto step = [](double v) {
        return int32_t(std::lround(std::clamp(v, -1073741823.0, 1073741823.0)));
    };
    for (size_t i = 0; i < points.size(); ++i)
        snapped[i] = {step((points[i].x - mid.x) * scale), step((points[i].y - mid.y) * scale)};
    return snapped;
}

namespace {

/// Edges by the cells of a square grid that they pass.
class EdgeCells {
public:
    EdgeCells(std::span<const ZvGridPoint> points, std::span<const ZvGridEdge> edges)
        : m_points(points), m_edges(edges) {
        double length = 0;
        for (const ZvGridEdge& e : edges)
            length += std::max(std::abs(double(points[e.to].x) - points[e.from].x),
                               std::abs(double(points[e.to].y) - points[e.from].y));
        // Cells about as large as the edges are long, but not many more of them than edges.
        const double mean = length / double(std::max<size_t>(edges.size(), 1));
        const double fewest = 2147483648.0 / std::sqrt(double(edges.size()) * 2 + 1);
        m_cell = std::max({mean, fewest, 1.0});
        m_side = uint32_t(2147483648.0 / m_cell) + 1;
        m_first.assign(size_t(m_side) * m_side + 1, 0);
        EachEntry([&](size_t cell, uint32_t) { ++m_first[cell + 1]; });
        std::partial_sum(m_first.begin(), m_first.end(), m_first.begin());
        m_entries.resize(m_first.back());
        std::vector<uint32_t> at(m_first.begin(), m_first.end() - 1);
        EachEntry([&](size_t cell, uint32_t edge) { m_entries[at[cell]++] = edge; });
    }

    template <class F>
    void EachCell(F f) const {
        for (size_t cell = 0; cell + 1 < m_first.size(); ++cell)
            f(std::span(m_entries).subspan(m_first[cell], m_first[cell + 1] - m_first[cell]));
    }

private:
    uint32_t Cell(double v) const {
        return uint32_t(std::clamp((v + 1073741824.0) / m_cell, 0.0, double(m_side - 1)));
    }
    /// Row by row, the columns that the edge spans there; a little generous at the row borders.
    template <class F>
    void EachEntry(F f) const {
        for (uint32_t i = 0; i < m_edges.size(); ++i) {
            ZvGridPoint a = m_points[m_edges[i].from], b = m_points[m_edges[i].to];
            if (a.y > b.y)
                std::swap(a, b);
            const uint32_t row0 = Cell(a.y), row1 = Cell(b.y);
            const double slope = b.y > a.y ? (double(b.x) - a.x) / (double(b.y) - a.y) : 0;
            const double xLo = std::min(a.x, b.x), xHi = std::max(a.x, b.x);
            for (uint32_t row = row0; row <= row1; ++row) {
                double x0 = xLo, x1 = xHi;
                if (row0 != row1) {
                    const double yLo = row * m_cell - 1073741824.0 - 1, yHi = yLo + m_cell + 2;
                    const double u = a.x + slope * (yLo - a.y), v = a.x + slope * (yHi - a.y);
                    x0 = std::max(xLo, std::min(u, v) - 1), x1 = std::min(xHi, std::max(u, v) + 1);
                }
                const uint32_t to = Cell(x1);
                for (uint32_t column = Cell(x0); column <= to; ++column)
                    f(size_t(row) * m_side + column, i);
            }
        }
    }

    std::span<const ZvGridPoint> m_points;
    std::span<const ZvGridEdge> m_edges;
    double m_cell = 1;
    uint32_t m_side = 1;
    std::vector<uint32_t> m_first;
    std::vector<uint32_t> m_entries;
};

bool Opposite(int64_t a, int64_t b) {
    return (a > 0 && b < 0) || (a < 0 && b > 0);
}

bool Cross(ZvGridPoint a, ZvGridPoint b, ZvGridPoint c, ZvGridPoint d) {
    if (std::max(a.x, b.x) < std::min(c.x, d.x) || std::max(c.x, d.x) < std::min(a.x, b.x) ||
        std::max(a.y, b.y) < std::min(c.y, d.y) || std::max(c.y, d.y) < std::min(a.y, b.y))
        return false;
    return Opposite(ZvGridPoint::Turn(a, b, c), ZvGridPoint::Turn(a, b, d)) &&
           Opposite(ZvGridPoint::Turn(c, d, a), ZvGridPoint::Turn(c, d, b));
}

} // namespace

std::vector<ZvGridCrossing> FindGridCrossings(std::span<const ZvGridPoint> points,
                                              std::span<const ZvGridEdge> edges, size_t limit) {
    std::vector<ZvGridCrossing> found;
    const EdgeCells cells(points, edges);
    cells.EachCell([&](std::span<const uint32_t> in) {
        for (size_t i = 0; i < in.size() && found.size() < limit; ++i)
            for (size_t k = i + 1; k < in.size(); ++k) {
                const ZvGridEdge &e = edges[in[i]], &g = edges[in[k]];
                if (Cross(points[e.from], points[e.to], points[g.from], points[g.to]))
                    found.push_back({std::min(in[i], in[k]), std::max(in[i], in[k])});
            }
    });
    // Edges may share several cells.
    const auto key = [](const ZvGridCrossing& c) { return uint64_t(c.first) << 32 | c.second; };
    std::sort(found.begin(), found.end(), [&](const auto& a, const auto& b) { return key(a) < key(b); });
    found.erase(std::unique(found.begin(), found.end(),
                            [&](const auto& a, const auto& b) { return key(a) == key(b); }),
                found.end());
    if (found.size() > limit)
        found.resize(limit);
    return found;
}
