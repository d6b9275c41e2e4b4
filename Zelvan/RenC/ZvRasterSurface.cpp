#include "Zelvan/RenC/ZvRasterSurface.h"
#include "Zelvan/RenC/ZvLineRaster.h"
#include "Zelvan/RenC/ZvStroker.h"
#include <algorithm>
#include <cmath>

ZvRasterSurface::ZvRasterSurface(int width, int height, uint32_t backgroundArgb) : m_picture(width, height) {
    m_picture.Clear(ZvPixelBuffer::Premultiply(backgroundArgb));
    m_clips.push_back({0, 0, m_picture.Width(), m_picture.Height()});
    m_cover.Begin(m_clips.back());
}

void ZvRasterSurface::SetPen(const ZvPen& pen) {
    m_pen = pen;
    m_penColor = ZvPixelBuffer::Premultiply(pen.argb);
}

void ZvRasterSurface::SetFill(const ZvFill& fill) {
    m_fill = fill;
    m_fillColor = ZvPixelBuffer::Premultiply(fill.argb);
}

void ZvRasterSurface::Stroke(const Vec2f* points, size_t count, bool closed) {
    if (m_pen.widthPx <= 1.0f) {
        ZvLineRaster(m_picture, m_clips.back(), m_penColor, m_antialias).Polyline(points, count, closed);
        return;
    }
    const ZvStroker::Cap cap = m_pen.cap == ZvPen::Cap::Round    ? ZvStroker::Cap::Round
                               : m_pen.cap == ZvPen::Cap::Square ? ZvStroker::Cap::Square
                                                                 : ZvStroker::Cap::Flat;
    ZvStroker(m_cover, m_pen.widthPx, cap).Polyline(points, count, closed);
    m_cover.Paint(m_picture, ZvCoverageFill::Rule::NonZero, m_penColor);
}

void ZvRasterSurface::Polyline(const Vec2f* points, size_t count, bool closed) {
    if (m_pen.dashes.empty()) {
        Stroke(points, count, closed);
        return;
    }
    ZvDasher dasher(m_pen.dashes.data(), m_pen.dashes.size(), 0);
    dasher.Polyline(points, count, closed, [&](const Vec2f* dash, size_t n) { Stroke(dash, n, false); });
}

void ZvRasterSurface::Polygon(const ZvSurfaceRing* rings, size_t count, bool outline) {
    if (m_fill.kind != ZvFill::Kind::None) {
        for (size_t i = 0; i < count; ++i)
            m_cover.Ring(rings[i].points, rings[i].count);
        if (m_fill.kind == ZvFill::Kind::Solid)
            m_cover.Paint(m_picture, ZvCoverageFill::Rule::EvenOdd, m_fillColor);
        else
            PaintHatch(m_fill.hatchAngle);
    }
    if (outline)
        for (size_t i = 0; i < count; ++i)
            Polyline(rings[i].points, rings[i].count, true);
}

// Each covered pixel takes as much colour as the nearest hatch line (one pixel wide) covers of it.
void ZvRasterSurface::PaintHatch(float angle) {
    const float nx = std::sin(angle), ny = std::cos(angle);
    const float spacing = std::max(m_fill.hatchSpacingPx, 2.0f);
    const bool cross = m_fill.kind == ZvFill::Kind::CrossHatch;
    auto ink = [&](float along) {
        const float offset = std::fabs(along - spacing * std::round(along / spacing));
        return std::clamp(1.0f - offset, 0.0f, 1.0f);
    };
    m_cover.Sweep(ZvCoverageFill::Rule::EvenOdd, [&](int y, int x, const uint8_t* coverage, int n) {
        uint32_t* row = m_picture.Row(y) + x;
        for (int i = 0; i < n; ++i) {
            const float px = float(x + i) + 0.5f, py = float(y) + 0.5f;
            float part = ink(px * nx + py * ny);
            if (cross)
                part = std::max(part, ink(px * ny - py * nx));
            const uint32_t cover = uint32_t(part * float(coverage[i]) + 0.5f);
            if (cover)
                row[i] = ZvPixelBuffer::Over(row[i], m_fillColor, cover);
        }
    });
}

bool ZvRasterSurface::Text(const ZvTextRun& run) {
    return m_companion && m_companion->Text(run);
}

// Nearest pixel through the inverse of the placement.
bool ZvRasterSurface::Image(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right,
                            Vec2f down) {
    const float det = right.Cross(down);
    if (!pixels || width <= 0 || height <= 0 || det == 0 || !std::isfinite(det))
        return false;
    const Vec2f corners[4] = {origin, origin + right, origin + right + down, origin + down};
    m_cover.Ring(corners, 4);
    m_cover.Sweep(ZvCoverageFill::Rule::EvenOdd, [&](int y, int x, const uint8_t* coverage, int n) {
        uint32_t* row = m_picture.Row(y) + x;
        for (int i = 0; i < n; ++i) {
            const Vec2f d = Vec2f{float(x + i) + 0.5f, float(y) + 0.5f} - origin;
            const int u = std::clamp(int(d.Cross(down) / det * float(width)), 0, width - 1);
            const int v = std::clamp(int(right.Cross(d) / det * float(height)), 0, height - 1);
            if (coverage[i])
                row[i] =
                    ZvPixelBuffer::Over(row[i], pixels[size_t(v) * size_t(width) + size_t(u)], coverage[i]);
        }
    });
    return true;
}

void ZvRasterSurface::PushClip(const Rect2I& clip) {
    const Rect2I& now = m_clips.back();
    Rect2I cut{std::max(now.left, clip.left), std::max(now.top, clip.top), std::min(now.right, clip.right),
               std::min(now.bottom, clip.bottom)};
    if (cut.IsEmpty())
        cut = {};
    m_clips.push_back(cut);
    m_cover.Begin(cut);
}

void ZvRasterSurface::PopClip() {
    if (m_clips.size() > 1)
        m_clips.pop_back();
    m_cover.Begin(m_clips.back());
}
