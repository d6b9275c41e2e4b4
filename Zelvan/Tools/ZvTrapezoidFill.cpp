#include "Zelvan/Tools/ZvTrapezoidFill.h"
#include <algorithm>
#include <numeric>

ZvTrapezoidFill::ZvTrapezoidFill(std::span<const ZvGridPoint> points, std::span<const ZvGridEdge> edges)
    : m_points(points) {
    for (const ZvGridEdge& e : edges) {
        const int32_t y0 = points[e.from].y, y1 = points[e.to].y;
        // Horizontal edges keep their place, because crossings name edges by it, but bound nothing.
        m_edges.push_back(y0 <= y1 ? e : ZvGridEdge{e.to, e.from});
    }
    m_pieces.resize(m_edges.size());
}

double ZvTrapezoidFill::XAt(uint32_t edge, double y) const {
    const ZvGridPoint a = m_points[m_edges[edge].from], b = m_points[m_edges[edge].to];
    return a.x + (y - a.y) * ((double(b.x) - a.x) / (double(b.y) - a.y));
}

std::vector<double> ZvTrapezoidFill::Heights(std::span<const ZvGridCrossing> crossings) const {
    std::vector<double> heights;
    for (const ZvGridEdge& e : m_edges)
        if (m_points[e.from].y != m_points[e.to].y)
            heights.insert(heights.end(), {double(m_points[e.from].y), double(m_points[e.to].y)});
    for (const ZvGridCrossing& c : crossings) {
        const ZvGridPoint a = m_points[m_edges[c.first].from], b = m_points[m_edges[c.first].to];
        const ZvGridPoint p = m_points[m_edges[c.second].from], q = m_points[m_edges[c.second].to];
        const double from = double(ZvGridPoint::Turn(p, q, a)), to = double(ZvGridPoint::Turn(p, q, b));
        heights.push_back(a.y + (double(b.y) - a.y) * (from / (from - to)));
    }
    std::sort(heights.begin(), heights.end());
    heights.erase(std::unique(heights.begin(), heights.end()), heights.end());
    return heights;
}

uint32_t ZvTrapezoidFill::Corner(uint32_t edge, double y, std::vector<ZvEdgePoint>& newPoints) const {
    const ZvGridEdge& e = m_edges[edge];
    const double y0 = m_points[e.from].y, y1 = m_points[e.to].y;
    if (y <= y0)
        return e.from;
    if (y >= y1)
        return e.to;
    newPoints.push_back({e, (y - y0) / (y1 - y0)});
    return uint32_t(m_points.size() + newPoints.size() - 1);
}

void ZvTrapezoidFill::Close(uint32_t left, double to, std::vector<uint32_t>& triangles,
                            std::vector<ZvEdgePoint>& newPoints) const {
    const Piece& piece = m_pieces[left];
    const bool flatBelow = XAt(left, piece.from) >= XAt(piece.right, piece.from);
    const bool flatAbove = XAt(left, to) >= XAt(piece.right, to);
    if (flatBelow && flatAbove)
        return;
    const uint32_t a = Corner(left, piece.from, newPoints);
    const uint32_t b = flatBelow ? a : Corner(piece.right, piece.from, newPoints);
    const uint32_t d = Corner(left, to, newPoints);
    const uint32_t c = flatAbove ? d : Corner(piece.right, to, newPoints);
    if (a != b)
        triangles.insert(triangles.end(), {a, b, c});
    if (c != d)
        triangles.insert(triangles.end(), {a, c, d});
}

/// By x at height y. From slab to slab little changes: each edge is moved to its place from where it was.
void ZvTrapezoidFill::SortAt(std::vector<Passing>& passing, double y) const {
    for (size_t i = 0; i < passing.size(); ++i) {
        const Passing p{XAt(passing[i].edge, y), passing[i].edge};
        size_t k = i;
        for (; k > 0 && (passing[k - 1].x > p.x || (passing[k - 1].x == p.x && passing[k - 1].edge > p.edge));
             --k)
            passing[k] = passing[k - 1];
        passing[k] = p;
    }
}

void ZvTrapezoidFill::Fill(std::span<const ZvGridCrossing> crossings, std::vector<uint32_t>& triangles,
                           std::vector<ZvEdgePoint>& newPoints) {
    const std::vector<double> heights = Heights(crossings);
    std::vector<uint32_t> order(m_edges.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        return m_points[m_edges[a].from].y < m_points[m_edges[b].from].y;
    });
    std::vector<uint32_t> open;
    std::vector<Passing> passing;
    size_t next = 0;
    for (uint32_t slab = 1; slab <= heights.size(); ++slab) {
        const double y = heights[slab - 1];
        std::erase_if(passing, [&](const Passing& p) { return m_points[m_edges[p.edge].to].y <= y; });
        for (; next < order.size() && m_points[m_edges[order[next]].from].y <= y; ++next)
            if (m_points[m_edges[order[next]].to].y > y)
                passing.push_back({0, order[next]});
        SortAt(passing, slab < heights.size() ? (y + heights[slab]) / 2 : y);
        // Pieces between the same edges go on; the others end here.
        for (size_t i = 0; i + 1 < passing.size(); i += 2) {
            Piece& piece = m_pieces[passing[i].edge];
            if (piece.stamp + 1 == slab && piece.stamp && piece.right == passing[i + 1].edge)
                piece.stamp = slab;
        }
        std::erase_if(open, [&](uint32_t left) {
            if (m_pieces[left].stamp == slab)
                return false;
            Close(left, y, triangles, newPoints);
            m_pieces[left].stamp = 0;
            return true;
        });
        for (size_t i = 0; i + 1 < passing.size(); i += 2) {
            Piece& piece = m_pieces[passing[i].edge];
            if (piece.stamp == slab)
                continue;
            piece = {passing[i + 1].edge, y, slab};
            open.push_back(passing[i].edge);
        }
    }
}
