#include "Zelvan/RenC/ZvLineRaster.h"
#include <cmath>

ZvLineRaster::ZvLineRaster(ZvPixelBuffer& target, const Rect2I& clip, uint32_t color, bool antialias)
    : m_target(target), m_clip{std::max(clip.left, 0), std::max(clip.top, 0),
                               std::min(clip.right, target.Width()), std::min(clip.bottom, target.Height())},
      m_color(color), m_opaque(color >> 24 == 255), m_antialias(antialias) {}

// Liang and Barsky, "A New Concept and Method for Line Clipping", 1984. The window is wider than the clip by two pixels: what
// sticks out is dropped pixel by pixel, so that the slope at the border is that of the whole segment.
bool ZvLineRaster::ClipSegment(Vec2f& a, Vec2f& b) const {
    const float left = float(m_clip.left) - 2, right = float(m_clip.right) + 2;
    const float top = float(m_clip.top) - 2, bottom = float(m_clip.bottom) + 2;
    if (a.x >= left && a.x <= right && a.y >= top && a.y <= bottom && b.x >= left && b.x <= right &&
        b.y >= top && b.y <= bottom)
        return true;
    const double dx = double(b.x) - a.x, dy = double(b.y) - a.y;
    if (!std::isfinite(dx) || !std::isfinite(dy))
        return false;
    double from = 0, to = 1;
    auto cut = [&](double p, double q) {
        if (p == 0)
            return q >= 0;
        const double t = q / p;
        if (p < 0)
            from = std::max(from, t);
        else
            to = std::min(to, t);
        return from <= to;
    };
    if (!cut(-dx, a.x - double(left)) || !cut(dx, double(right) - a.x) || !cut(-dy, a.y - double(top)) ||
        !cut(dy, double(bottom) - a.y))
        return false;
    const Vec2f start = a;
    a = {float(start.x + from * dx), float(start.y + from * dy)};
    b = {float(start.x + to * dx), float(start.y + to * dy)};
    return true;
}

void ZvLineRaster::Segment(Vec2f a, Vec2f b) {
    if (m_clip.IsEmpty() || !ClipSegment(a, b))
        return;
    m_antialias ? SegmentSmooth(a, b) : SegmentAliased(a, b);
}

void ZvLineRaster::Dot(Vec2f at) {
    if (at.x > -1e6f && at.x < 1e6f && at.y > -1e6f && at.y < 1e6f)
        BlendIfInside(int(std::floor(at.x)), int(std::floor(at.y)), 255);
}

void ZvLineRaster::Polyline(const Vec2f* points, size_t count, bool closed) {
    if (count == 0)
        return;
    for (size_t i = 1; i < count; ++i)
        Segment(points[i - 1], points[i]);
    if (closed && count > 2)
        Segment(points[count - 1], points[0]);
    else
        Dot(points[count - 1]);
}

// One pixel a step along the longer axis, 16.16 fixed point along the other.
void ZvLineRaster::SegmentAliased(Vec2f a, Vec2f b) {
    const float dx = b.x - a.x, dy = b.y - a.y;
    const bool steep = std::fabs(dy) > std::fabs(dx);
    const float major0 = steep ? a.y : a.x, major1 = steep ? b.y : b.x;
    const float minor0 = steep ? a.x : a.y;
    const float length = std::fabs(steep ? dy : dx);
    int i = int(std::floor(major0));
    const int end = int(std::floor(major1));
    const int step = major1 >= major0 ? 1 : -1;
    const float slope = length > 0 ? (steep ? dx : dy) / length : 0;
    const float toCentre = (float(i) + 0.5f - major0) * float(step);
    int32_t minor = int32_t((minor0 + slope * toCentre) * 65536.0f);
    const int32_t add = int32_t(slope * 65536.0f);
    for (; i != end; i += step, minor += add) {
        const int j = minor >> 16;
        const int x = steep ? j : i, y = steep ? i : j;
        if (x < m_clip.left || x >= m_clip.right || y < m_clip.top || y >= m_clip.bottom)
            continue;
        if (m_opaque)
            m_target.Row(y)[x] = m_color;
        else
            Blend(x, y, 255);
    }
}

// Two pixels a step share the coverage (X. Wu, "An Efficient Antialiasing Technique", 1991).
void ZvLineRaster::SegmentSmooth(Vec2f a, Vec2f b) {
    const float dx = b.x - a.x, dy = b.y - a.y;
    const bool steep = std::fabs(dy) > std::fabs(dx);
    const float major0 = steep ? a.y : a.x, major1 = steep ? b.y : b.x;
    const float minor0 = (steep ? a.x : a.y) - 0.5f;
    const float length = std::fabs(steep ? dy : dx);
    int i = int(std::floor(major0));
    const int end = int(std::floor(major1));
    const int step = major1 >= major0 ? 1 : -1;
    const float slope = length > 0 ? (steep ? dx : dy) / length : 0;
    const float toCentre = (float(i) + 0.5f - major0) * float(step);
    int32_t minor = int32_t((minor0 + slope * toCentre) * 65536.0f);
    const int32_t add = int32_t(slope * 65536.0f);
    for (; i != end; i += step, minor += add) {
        const int j = minor >> 16;
        const uint32_t second = uint32_t(minor) >> 8 & 255;
        const int x = steep ? j : i, y = steep ? i : j;
        BlendIfInside(x, y, 255 - second);
        BlendIfInside(x + (steep ? 1 : 0), y + (steep ? 0 : 1), second);
    }
}
