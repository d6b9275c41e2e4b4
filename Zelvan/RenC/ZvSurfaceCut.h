#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

/// Cuts what is drawn to a box around the surface. Deep in a view lines reach millions of pixels out, where single precision, the
/// integers of other painters and the number of dashes end. Exact to a fraction of a pixel for ends up to 1e12
/// pixels away, harmless for all others; points that are not finite
/// break lines and are left out of rings.
class ZV_API ZvSurfaceCut {
public:
    using Box = Bounds2T<float>;
    /// The surface and `margin` pixels around it.
    static Box Around(const Rect2I& surface, float margin) {
        return {float(surface.left) - margin, float(surface.top) - margin, float(surface.right) + margin,
                float(surface.bottom) + margin};
    }
    static bool IsInside(const Box& box, Vec2f p) {
        return p.x >= box.minX && p.x <= box.maxX && p.y >= box.minY && p.y <= box.maxY;
    }
    static bool IsFinite(Vec2f p) { return std::isfinite(p.x) && std::isfinite(p.y); }
    /// Part of the segment that lies in the box, as shares 0..1 of its length. False when none does, or an end is not finite.
    static bool Range(const Box& box, Vec2f a, Vec2f b, double& from, double& to);
    /// The point at a share of the segment; in the box where Range gave the share.
    static Vec2f At(const Box& box, Vec2f a, Vec2f b, double share);
    /// Cuts the segment to the box; untouched when the answer is false.
    static bool Segment(const Box& box, Vec2f& a, Vec2f& b);
    /// Whether a point lies outside.
    static bool IsNeeded(const Box& box, const Vec2f* points, size_t count);
    /// Calls `emit(points, count)` for each stretch of the line in the box; `scratch` is used for it.
    template <class Emit>
    static void Line(const Box& box, const Vec2f* points, size_t count, bool closed,
                     std::vector<Vec2f>& scratch, Emit&& emit);
    /// The ring's part in the box, appended to `out`; along the box's sides where the ring left it. Answers the number of points.
    static size_t Ring(const Box& box, const Vec2f* points, size_t count, std::vector<Vec2f>& out);
    /// The ring itself where all of it is in the box, else its part in `scratch`.
    static std::span<const Vec2f> RingWithin(const Box& box, const Vec2f* points, size_t count,
                                             std::vector<Vec2f>& scratch);
};

template <class Emit>
void ZvSurfaceCut::Line(const Box& box, const Vec2f* points, size_t count, bool closed,
                        std::vector<Vec2f>& scratch, Emit&& emit) {
    scratch.clear();
    auto flush = [&] {
        if (scratch.size() > 1)
            emit(static_cast<const Vec2f*>(scratch.data()), scratch.size());
        scratch.clear();
    };
    const size_t segments = closed && count > 2 ? count : count ? count - 1 : 0;
    for (size_t i = 0; i < segments; ++i) {
        const Vec2f a = points[i], b = points[i + 1 < count ? i + 1 : 0];
        double from = 0, to = 1;
        if (!Range(box, a, b, from, to)) {
            flush();
            continue;
        }
        if (from > 0 || scratch.empty()) {
            flush();
            scratch.push_back(At(box, a, b, from));
        }
        scratch.push_back(At(box, a, b, to));
        if (to < 1)
            flush();
    }
    flush();
}
