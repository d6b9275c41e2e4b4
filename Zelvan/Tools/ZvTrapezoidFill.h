#pragma once
#include "Zelvan/Tools/ZvGridPoint.h"
#include <cstdint>
#include <span>
#include <vector>

/// A new point on an edge, needed where triangle corners are not vertices.
struct ZvEdgePoint {
    ZvGridEdge edge;
    double t = 0; ///< 0 at edge.from, 1 at edge.to
};

/// Covers what the even-odd rule makes of any closed set of edges, also of those that cross, with triangles: the plane is cut at the
/// height of every vertex and crossing, and pieces between the same two edges are joined again. Corners that are not vertices become
/// new points, numbered from points.size() on. Triangles are counter-clockwise. Meant for the few polygons that nothing else can fill:
/// work grows with the number of edges times those passing a height.
class ZvTrapezoidFill {
public:
    ZvTrapezoidFill(std::span<const ZvGridPoint> points, std::span<const ZvGridEdge> edges);
    void Fill(std::span<const ZvGridCrossing> crossings, std::vector<uint32_t>& triangles,
              std::vector<ZvEdgePoint>& newPoints);

private:
    struct Piece {
        uint32_t right = 0;
        double from = 0;
        uint32_t stamp = 0; ///< slab in which the piece was seen last, from 1
    };
    struct Passing {
        double x;
        uint32_t edge;
    };
    void SortAt(std::vector<Passing>& passing, double y) const;
    double XAt(uint32_t edge, double y) const;
    std::vector<double> Heights(std::span<const ZvGridCrossing> crossings) const;
    uint32_t Corner(uint32_t edge, double y, std::vector<ZvEdgePoint>& newPoints) const;
    void Close(uint32_t left, double to, std::vector<uint32_t>& triangles,
               std::vector<ZvEdgePoint>& newPoints) const;

    std::span<const ZvGridPoint> m_points;
    std::vector<ZvGridEdge> m_edges; ///< upwards; horizontal ones left out
    std::vector<Piece> m_pieces;     ///< by left edge
};
