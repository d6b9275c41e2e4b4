#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <cstddef>

/// Rings are given without a repeated first vertex; the last vertex joins the first.

/// Positive for a counter-clockwise ring; 0 below 3 vertices. Taken relative to the first vertex, so that rings far from the origin
/// keep their digits.
ZV_API double SignedPolygonArea2D(const Vec2d* ring, size_t count);
/// Never negative.
ZV_API double PolygonArea2D(const Vec2d* ring, size_t count);
/// Even-odd rule. Points on the border may count as either.
ZV_API bool PointInRing2D(const Vec2d* ring, size_t count, const Vec2d& point);
/// Twice the area of a, b, c: positive when they turn counter-clockwise.
inline double Turn2D(const Vec2d& a, const Vec2d& b, const Vec2d& c) {
    return (b - a).Cross(c - a);
}
/// True for a ring that turns one way all round, once; collinear vertices are allowed.
ZV_API bool IsConvexRing2D(const Vec2d* ring, size_t count);
