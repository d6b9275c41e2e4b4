#pragma once
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <algorithm>

/// Geometry of straight segments in the plane. Units are the caller's.
struct ZV_API ZvSegment2D {
    Vec2d a, b;

    Vec2d At(double t) const { return a + (b - a) * t; }
    /// Parameter of the closest point: 0 at a, 1 at b. 0 for a segment of no length.
    double ClosestParam(const Vec2d& p) const {
        const Vec2d d = b - a;
        const double lengthSq = d.LengthSq();
        const double t = lengthSq > 0 ? (p - a).Dot(d) / lengthSq : 0;
        return t > 0 ? t < 1 ? t : 1 : 0;
    }
    /// Distance of the segment's box: never more than that of the segment, and quick.
    double BoxDistanceSq(const Vec2d& p) const {
        const double dx = std::max({0.0, std::min(a.x, b.x) - p.x, p.x - std::max(a.x, b.x)});
        const double dy = std::max({0.0, std::min(a.y, b.y) - p.y, p.y - std::max(a.y, b.y)});
        return dx * dx + dy * dy;
    }
    double DistanceSq(const Vec2d& p) const { return (p - At(ClosestParam(p))).LengthSq(); }

    /// Parameters s (on this) and t (on the other) where the lines through both cross; false when they are parallel.
    bool CrossLines(const ZvSegment2D& other, double& s, double& t) const;
    /// Where the segments meet, ends included. Overlapping collinear segments give both ends of the overlap. Answers the number of
    /// points written (0..2).
    int Intersect(const ZvSegment2D& other, Vec2d points[2]) const;
    /// Whether the segment and the closed box have a point in common.
    bool MeetsBox(const ZvBounds2D& box) const;
};
