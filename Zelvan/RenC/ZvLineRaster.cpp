#include "Zelvan/RenC/ZvLineRaster.h"
#include <cmath>

namespace {

// std::floor is a call on processors without SSE 4.1.
int Floor(float v) {
    const int cut = int(v);
    return cut - (v < float(cut));
}

constexpr double kOne = 4294967296.0; // in the fixed point of Steps

} // namespace

ZvLineRaster::ZvLineRaster(ZvPixelBuffer& target, const Rect2I& clip, uint32_t color, bool antialias)
    : m_pixels(target.Width() > 0 && target.Height() > 0 ? target.Row(0) : nullptr),
      m_stride(target.Width()), m_clip{std::max(clip.left, 0), std::max(clip.top, 0),
                                       std::min(clip.right, target.Width()),
                                       std::min(clip.bottom, target.Height())},
      m_safeLeft(float(m_clip.left) + 2), m_safeRight(float(m_clip.right) - 2),
      m_safeTop(float(m_clip.top) + 2), m_safeBottom(float(m_clip.bottom) - 2),
      m_window(ZvSurfaceCut::Around(m_clip, 2)), m_color(color), m_opaque(color >> 24 == 255),
      m_antialias(antialias) {}

bool ZvLineRaster::Segment(Vec2f a, Vec2f b, bool inside, int ends) {
    if (!inside && !ZvSurfaceCut::Segment(m_window, a, b))
        return true;
    const float dx = b.x - a.x, dy = b.y - a.y;
    const bool steep = std::fabs(dy) > std::fabs(dx);
    const float major0 = steep ? a.y : a.x, major1 = steep ? b.y : b.x;
    const float length = std::fabs(steep ? dy : dx);
    Steps s;
    s.major = Floor(major0);
    const int end = Floor(major1);
    s.step = major1 >= major0 ? 1 : -1;
    s.count = (end - s.major) * s.step;
    if (ends & kStart && (float(s.major) + 0.5f - major0) * float(s.step) < 0)
        s.major += s.step, --s.count;
    if (ends & kEnd && (major1 - float(end) - 0.5f) * float(s.step) > 0)
        ++s.count;
    if (s.count <= 0)
        return false;
    const float slope = length > 0 ? (steep ? dx : dy) / length : 0;
    const float toCentre = (float(s.major) + 0.5f - major0) * float(s.step);
    const float minor0 = (steep ? a.x : a.y) - (m_antialias ? 0.5f : 0.0f);
    s.minor = int64_t(double(minor0 + slope * toCentre) * kOne);
    s.change = int64_t(double(slope) * kOne);
    if (m_antialias) {
        if (inside)
            steep ? Smooth<true, false>(s) : Smooth<false, false>(s);
        else
            steep ? Smooth<true, true>(s) : Smooth<false, true>(s);
    } else if (inside) {
        steep ? Aliased<true, false>(s) : Aliased<false, false>(s);
    } else {
        steep ? Aliased<true, true>(s) : Aliased<false, true>(s);
    }
    return true;
}

void ZvLineRaster::Dot(Vec2f at) {
    if (!(at.x >= float(m_clip.left) && at.x < float(m_clip.right) && at.y >= float(m_clip.top) &&
          at.y < float(m_clip.bottom)))
        return;
    uint32_t& pixel = m_pixels[int64_t(at.y) * m_stride + int64_t(at.x)];
    if (m_opaque)
        pixel = m_color;
    else
        Blend(pixel, 255);
}

void ZvLineRaster::Polyline(const Vec2f* points, size_t count, bool closed) {
    if (count == 0 || m_clip.IsEmpty())
        return;
    closed = closed && count > 2;
    bool inside = IsWellInside(points[0]), drawn = false;
    for (size_t i = 1; i < count; ++i) {
        const bool next = IsWellInside(points[i]);
        const int ends = closed ? kNone : (i == 1 ? kStart : kNone) | (i + 1 == count ? kEnd : kNone);
        drawn |= Segment(points[i - 1], points[i], inside && next, ends);
        inside = next;
    }
    if (closed)
        drawn |= Segment(points[count - 1], points[0], inside && IsWellInside(points[0]), kNone);
    if (!drawn)
        Dot(points[count - 1]);
}

// One pixel a step.
template <bool Steep, bool Checked>
void ZvLineRaster::Aliased(Steps s) {
    const int64_t along = Steep ? m_stride : 1, across = Steep ? 1 : m_stride;
    int64_t at = s.major * along;
    for (; s.count > 0; --s.count, at += s.step * along, s.major += s.step, s.minor += s.change) {
        const int minor = int(s.minor >> 32);
        if (Checked && !Contains<Steep>(s.major, minor))
            continue;
        uint32_t& pixel = m_pixels[at + minor * across];
        if (m_opaque)
            pixel = m_color;
        else
            Blend(pixel, 255);
    }
}

// Two pixels a step share the coverage (X. Wu, "An Efficient Antialiasing Technique", 1991).
template <bool Steep, bool Checked>
void ZvLineRaster::Smooth(Steps s) {
    const int64_t along = Steep ? m_stride : 1, across = Steep ? 1 : m_stride;
    int64_t at = s.major * along;
    for (; s.count > 0; --s.count, at += s.step * along, s.major += s.step, s.minor += s.change) {
        const int minor = int(s.minor >> 32);
        const uint32_t second = uint32_t(s.minor >> 24) & 255;
        const int64_t pixel = at + minor * across;
        if (!Checked || Contains<Steep>(s.major, minor))
            Blend(m_pixels[pixel], 255 - second);
        if (!Checked || Contains<Steep>(s.major, minor + 1))
            Blend(m_pixels[pixel + across], second);
    }
}
