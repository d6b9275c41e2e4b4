#include "Zelvan/Tools/ZvSegment2D.h"
#include <algorithm>
#include <cmath>

bool ZvSegment2D::CrossLines(const ZvSegment2D& other, double& s, double& t) const {
    const Vec2d d = b - a, e = other.b - other.a, w = other.a - a;
    const double cross = d.Cross(e);
    // Directions closer than this to each other give no usable crossing point.
    if (std::abs(cross) <= 1e-14 * std::sqrt(d.LengthSq() * e.LengthSq()))
        return false;
    s = w.Cross(e) / cross;
    t = w.Cross(d) / cross;
    return true;
}

/// Ends of the common piece of two segments on one line.
static int Overlap(const ZvSegment2D& u, const ZvSegment2D& v, Vec2d points[2]) {
    const Vec2d d = u.b - u.a;
    const double lengthSq = d.LengthSq();
    const double reach = std::max(d.LengthSq(), (v.b - v.a).LengthSq());
    if (lengthSq == 0) {
        points[0] = u.a;
        return v.DistanceSq(u.a) <= 1e-24 * reach ? 1 : 0;
    }
    const double off = d.Cross(v.a - u.a);
    if (off * off > 1e-24 * lengthSq * reach)
        return 0;
    double s0 = (v.a - u.a).Dot(d) / lengthSq, s1 = (v.b - u.a).Dot(d) / lengthSq;
    if (s0 > s1)
        std::swap(s0, s1);
    s0 = std::max(s0, 0.0), s1 = std::min(s1, 1.0);
    if (s0 > s1)
        return 0;
    points[0] = u.At(s0);
    points[1] = u.At(s1);
    return s0 < s1 ? 2 : 1;
}

int ZvSegment2D::Intersect(const ZvSegment2D& other, Vec2d points[2]) const {
    double s = 0, t = 0;
    if (!CrossLines(other, s, t))
        return Overlap(*this, other, points);
    // Segments that meet at an end may miss each other by a rounding.
    constexpr double slack = 1e-12;
    if (s < -slack || s > 1 + slack || t < -slack || t > 1 + slack)
        return 0;
    if (t <= slack || t >= 1 - slack)
        points[0] = t <= slack ? other.a : other.b;
    else
        points[0] = At(std::clamp(s, 0.0, 1.0));
    return 1;
}

bool ZvSegment2D::MeetsBox(const ZvBounds2D& box) const {
    if (std::max(a.x, b.x) < box.minX || std::min(a.x, b.x) > box.maxX || std::max(a.y, b.y) < box.minY ||
        std::min(a.y, b.y) > box.maxY)
        return false;
    if (box.IsInsideMe(a) || box.IsInsideMe(b))
        return true;
    // Both ends are outside, the boxes overlap: the line separates them exactly when all corners lie strictly on one side of it.
    const Vec2d d = b - a;
    const double c0 = d.Cross(Vec2d{box.minX, box.minY} - a), c1 = d.Cross(Vec2d{box.maxX, box.minY} - a);
    const double c2 = d.Cross(Vec2d{box.maxX, box.maxY} - a), c3 = d.Cross(Vec2d{box.minX, box.maxY} - a);
    const double least = std::min(std::min(c0, c1), std::min(c2, c3));
    const double most = std::max(std::max(c0, c1), std::max(c2, c3));
    return least <= 0 && most >= 0;
}
