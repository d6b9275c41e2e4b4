// Drawing. One way for all surfaces: vertices are unpacked straight into pixels, what cannot be seen is left out on the way.
#include "Zelvan/Entities/ZvXLineScan.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include <algorithm>
#include <cmath>

namespace {

/// Vertices nearer to the last one drawn add nothing; pixels.
constexpr double kThinStep = 0.5;
/// From here on it pays to ask whether the entity reaches out of the window.
constexpr uint32_t kCutFrom = 64;
/// Blocks lie anywhere in memory: this many entities before its turn each is asked for.
constexpr size_t kPrefetch = 8;

ZvXLine::Affine2 MapOf(const ZvPixelMap& map) {
    return {map.xx, map.xy, map.x0, map.yx, map.yy, map.y0};
}

} // namespace

void ZvXLine::DrawGeneric(ZvRenderContext& context) const {
    if (m_numVerts == 0)
        return;
    const bool strokes = context.UsePen(*this), fills = IsPolygon() && context.UseFill(*this);
    if (!strokes && !fills)
        return;
    context.stats.verticesRead += m_numVerts;
    if (strokes && context.PlanMap() && SizeFromMicroBounds() < context.WorldPerPixel()) {
        context.Dot(context.MapPoint(Origin().XYZ()));
        return;
    }
    Vec2f* points = context.Points(m_numVerts);
    if (fills)
        DrawFilled(context, points, strokes);
    else
        for (uint32_t part = 0; part < m_numParts; ++part)
            if (const uint32_t count = ReadPixels(context, part, points))
                context.Stroke(points, count, PIsRing(part) && count > 2);
}

void ZvXLine::DrawFilled(ZvRenderContext& context, Vec2f* points, bool outline) const {
    if (m_numParts == 1) {
        const uint32_t end = ReadPixels(context, 0, points);
        context.Fill(points, &end, 1, outline);
        return;
    }
    std::vector<uint32_t> ends(m_numParts);
    uint32_t end = 0;
    for (uint32_t part = 0; part < m_numParts; ++part)
        ends[part] = end += ReadPixels(context, part, points + end);
    context.Fill(points, ends.data(), m_numParts, outline);
}

/// A part in pixels; answers the number of points.
uint32_t ZvXLine::ReadPixels(const ZvRenderContext& context, uint32_t part, Vec2f* points) const {
    const uint32_t first = PStart(part), count = PLen(part);
    const ZvPixelMap* plan = context.PlanMap();
    if (!plan) {
        const FltData flt = GetFlt();
        for (uint32_t i = 0; i < count; ++i)
            points[i] = context.MapPoint(Unpack(flt, first + i).XYZ());
        return count;
    }
    if (count < 4) {
        ReadXYf(first, count, MapOf(*plan), points);
        return count;
    }
    ViewCut cut;
    cut.map = MapOf(*plan);
    cut.step = kThinStep;
    // Dashes go on from segment to segment: what is outside counts for them.
    const bool mayCut = m_numVerts >= kCutFrom && ResolvedLineType().IsContinuous() &&
                        !context.WorldWindow().IsInsideMe(IBounds2D());
    if (mayCut)
        cut.window = context.WorldWindow();
    return ReadForView(first, count, cut, points);
}

void ZvXLine::DrawRast(ZvRenderContext& context) const {
    DrawGeneric(context);
}

void ZvXLine::DrawRast(ZvRenderContext& context, const ZvEntity* const* batch, size_t count) const {
    const auto prefetch = [batch](size_t i) {
        const uint8_t* block = static_cast<const ZvXLine*>(batch[i])->m_data;
        __builtin_prefetch(block);
        __builtin_prefetch(block + 64);
    };
    for (size_t i = 0; i < std::min(count, kPrefetch); ++i)
        prefetch(i);
    for (size_t i = 0; i < count; ++i) {
        if (i + kPrefetch < count)
            prefetch(i + kPrefetch);
        static_cast<const ZvXLine*>(batch[i])->DrawGeneric(context);
    }
}

void ZvXLine::DrawPdf(ZvRenderContext& context) const {
    DrawGeneric(context);
}

void ZvXLine::DrawGDI(ZvRenderContext& context) const {
    DrawGeneric(context);
}

// --- density -------------------------------------------------------------------------------------------------------------

namespace {

/// Cuts the segment a..b to 0 <= x < width, 0 <= y < height (Liang and Barsky 1984). False when nothing is left.
bool CutToGrid(Vec2d& a, Vec2d& b, double width, double height) {
    const Vec2d d = b - a;
    double t0 = 0, t1 = 1;
    const double p[] = {-d.x, d.x, -d.y, d.y}, q[] = {a.x, width - a.x, a.y, height - a.y};
    for (int i = 0; i < 4; ++i) {
        if (p[i] == 0 && q[i] < 0)
            return false;
        if (p[i] < 0)
            t0 = std::max(t0, q[i] / p[i]);
        else if (p[i] > 0)
            t1 = std::min(t1, q[i] / p[i]);
    }
    if (!(t0 <= t1))
        return false;
    const Vec2d from = a;
    a = from + d * t0;
    b = from + d * t1;
    return true;
}

} // namespace

/// Adds the length of line in each cell, in pixels.
void ZvXLine::DrawHeatmap(ZvRenderContext& context) const {
    std::vector<float>* heat = context.Heat();
    const int width = context.HeatWidth();
    if (!heat || width <= 0 || m_numVerts == 0)
        return;
    const int height = int(heat->size() / size_t(width));
    const FltData flt = GetFlt();
    const auto pixel = [&](uint32_t i) {
        const Vec2f p = context.MapPoint(Unpack(flt, i).XYZ());
        return Vec2d{p.x, p.y};
    };
    for (uint32_t part = 0; part < m_numParts; ++part) {
        const uint32_t start = PStart(part), end = PEnd(part);
        for (uint32_t i = start; i < end; ++i) {
            if (i + 1 == end && !PIsRing(part))
                break;
            Vec2d a = pixel(i), b = pixel(ZvXLineScan::SegmentEnd(*this, part, i));
            if (!CutToGrid(a, b, width, height))
                continue;
            const double length = (b - a).Length();
            const int steps = std::max(1, int(std::ceil(length)));
            for (int k = 0; k < steps; ++k) {
                const Vec2d at = a + (b - a) * ((k + 0.5) / steps);
                const int x = std::min(int(at.x), width - 1), y = std::min(int(at.y), height - 1);
                (*heat)[size_t(y) * size_t(width) + size_t(x)] += float(length / steps);
            }
        }
    }
}
