#pragma once
#include "ZvCore/Vec.h"
#include <cstdint>
#include <span>
#include <vector>

/// A point on the grid on which triangulation decides. Coordinates stay within +-(2^30 - 1), so that the turn of three points is
/// exact in 64 bits.
struct ZvGridPoint {
    int32_t x = 0, y = 0;
    friend constexpr bool operator==(const ZvGridPoint&, const ZvGridPoint&) = default;

    /// Twice the area of a, b, c: positive when they turn counter-clockwise.
    static constexpr int64_t Turn(ZvGridPoint a, ZvGridPoint b, ZvGridPoint c) {
        return (int64_t(b.x) - a.x) * (int64_t(c.y) - a.y) - (int64_t(b.y) - a.y) * (int64_t(c.x) - a.x);
    }
    /// The points snapped to the grid that their extent fills, the same steps in x and y. Points must be finite.
    static std::vector<ZvGridPoint> Snap(std::span<const Vec2d> points);
};

/// An edge by the indices of its ends.
struct ZvGridEdge {
    uint32_t from = 0, to = 0;
};

/// Two edges that cross in a point inside of both. Edges that touch or overlap do not count.
struct ZvGridCrossing {
    uint32_t first = 0, second = 0;
};
/// All crossings of the edges; at most `limit` are answered.
std::vector<ZvGridCrossing> FindGridCrossings(std::span<const ZvGridPoint> points,
                                              std::span<const ZvGridEdge> edges, size_t limit = SIZE_MAX);
