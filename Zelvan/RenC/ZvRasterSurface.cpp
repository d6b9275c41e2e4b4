#include "Zelvan/RenC/ZvRasterSurface.h"
#include "Zelvan/RenC/ZvLineRaster.h"
#include <algorithm>
#include <cmath>

ZvRasterSurface::ZvRasterSurface(int width, int height, uint32_t backgroundArgb) : m_picture(width, height) {
    m_picture.Clear(ZvPixelBuffer::Premultiply(backgroundArgb));
    m_clips.push_back({0, 0, m_picture.Width(), m_picture.Height()});
    m_cover.Begin(m_clips.back());
}

void ZvRasterSurface::SetAntialias(bool on) {
    m_antialias = on;
    m_cover.SetSmooth(on);
}

void ZvRasterSurface::SetPen(const ZvPen& pen) {
    m_pen = pen;
    m_penColor = ZvPixelBuffer::Premultiply(pen.argb);
    m_dasher.SetPattern(pen.dashes);
    m_stroker.SetPen(pen.widthPx, pen.cap == ZvPen::Cap::Round    ? ZvStroker::Cap::Round
                                  : pen.cap == ZvPen::Cap::Square ? ZvStroker::Cap::Square
                                                                  : ZvStroker::Cap::Flat);
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
    m_stroker.Polyline(points, count, closed);
    m_cover.Paint(m_picture, ZvCoverageFill::Rule::NonZero, m_penColor);
}

void ZvRasterSurface::Polyline(const Vec2f* points, size_t count, bool closed) {
    if (count < 2 || m_dasher.IsContinuous()) {
        Stroke(points, count, closed);
        return;
    }
    const auto box = ZvSurfaceCut::Around(m_clips.back(), std::max(m_pen.widthPx, 1.0f) + 2);
    m_dasher.Polyline(box, points, count, closed,
                      [&](const Vec2f* dash, size_t n) { Stroke(dash, n, false); });
}

void ZvRasterSurface::Polygon(const ZvSurfaceRing* rings, size_t count, bool outline) {
    if (m_fill.kind != ZvFill::Kind::None) {
        for (size_t i = 0; i < count; ++i)
            m_cover.Ring(rings[i].points, rings[i].count);
        if (m_fill.kind == ZvFill::Kind::Solid)
            m_cover.Paint(m_picture, ZvCoverageFill::Rule::EvenOdd, m_fillColor);
        else
            PaintHatch();
    }
    if (outline)
        for (size_t i = 0; i < count; ++i)
            Polyline(rings[i].points, rings[i].count, true);
}

// Each covered pixel takes as much colour as the nearest hatch line (one pixel wide) covers of it.
void ZvRasterSurface::PaintHatch() {
    const float nx = std::sin(m_fill.hatchAngle), ny = std::cos(m_fill.hatchAngle);
    const float spacing = std::max(m_fill.hatchSpacingPx, ZvFill::kLeastSpacing);
    const bool cross = m_fill.kind == ZvFill::Kind::CrossHatch;
    auto ink = [&](float along) {
        const float offset = std::fabs(along - spacing * std::floor(along / spacing + 0.5f));
        const float part = std::clamp(1.0f - offset, 0.0f, 1.0f);
        return m_antialias ? part : part > 0.5f ? 1.0f : 0.0f;
    };
    m_cover.Sweep(ZvCoverageFill::Rule::EvenOdd, [&](int y, int x, const uint8_t* coverage, int n) {
        uint32_t* row = m_picture.Row(y) + x;
        for (int i = 0; i < n; ++i) {
            const float px = float(x + i) + 0.5f - m_fill.hatchOrigin.x;
            const float py = float(y) + 0.5f - m_fill.hatchOrigin.y;
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

// Means of blocks of fx x fy pixels; a rest at the right and bottom edges makes smaller blocks.
ZvPixelBuffer ZvRasterSurface::Shrunk(const uint32_t* pixels, int width, int height, int fx, int fy) {
    ZvPixelBuffer small((width + fx - 1) / fx, (height + fy - 1) / fy);
    for (int y = 0; y < small.Height(); ++y)
        for (int x = 0; x < small.Width(); ++x) {
            const int right = std::min((x + 1) * fx, width), bottom = std::min((y + 1) * fy, height);
            uint64_t sums[4] = {};
            for (int v = y * fy; v < bottom; ++v)
                for (int u = x * fx; u < right; ++u)
                    for (int c = 0; c < 4; ++c)
                        sums[c] += pixels[size_t(v) * size_t(width) + size_t(u)] >> 8 * c & 255;
            const uint64_t count = uint64_t(right - x * fx) * uint64_t(bottom - y * fy);
            for (int c = 0; c < 4; ++c)
                small.Row(y)[x] |= uint32_t((sums[c] + count / 2) / count) << 8 * c;
        }
    return small;
}

// The nearest pixel through the inverse of the placement; pictures drawn at half their size or less are averaged before.
bool ZvRasterSurface::Image(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right,
                            Vec2f down) {
    const float det = right.Cross(down);
    if (!pixels || width <= 0 || height <= 0 || det == 0 || !std::isfinite(det) ||
        !ZvSurfaceCut::IsFinite(origin))
        return false;
    const int fx = int(std::clamp(float(width) / right.Length(), 1.0f, float(width)));
    const int fy = int(std::clamp(float(height) / down.Length(), 1.0f, float(height)));
    if (fx > 1 || fy > 1) {
        const ZvPixelBuffer small = Shrunk(pixels, width, height, fx, fy);
        const float spanX = float(small.Width() * fx) / float(width),
                    spanY = float(small.Height() * fy) / float(height);
        PaintImage(small.Row(0), small.Width(), small.Height(), origin, right, down, spanX, spanY);
    } else {
        PaintImage(pixels, width, height, origin, right, down, 1, 1);
    }
    return true;
}

// spanX, spanY: what the pixels cover, as a multiple of `right` and `down`.
void ZvRasterSurface::PaintImage(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right,
                                 Vec2f down, float spanX, float spanY) {
    const float det = right.Cross(down);
    const Vec2f corners[4] = {origin, origin + right, origin + right + down, origin + down};
    const float perU = float(width) / spanX / det, perV = float(height) / spanY / det;
    m_cover.Ring(corners, 4);
    m_cover.Sweep(ZvCoverageFill::Rule::EvenOdd, [&](int y, int x, const uint8_t* coverage, int n) {
        uint32_t* row = m_picture.Row(y) + x;
        for (int i = 0; i < n; ++i) {
            const Vec2f d = Vec2f{float(x + i) + 0.5f, float(y) + 0.5f} - origin;
            const int u = int(std::clamp(d.Cross(down) * perU, 0.0f, float(width - 1)));
            const int v = int(std::clamp(right.Cross(d) * perV, 0.0f, float(height - 1)));
            const uint32_t pixel = pixels[size_t(v) * size_t(width) + size_t(u)];
            if (coverage[i])
                row[i] = ZvPixelBuffer::Over(row[i], pixel, coverage[i]);
        }
    });
}

void ZvRasterSurface::PushClip(const Rect2I& clip) {
    const Rect2I& now = m_clips.back();
    Rect2I cut{std::max(now.left, clip.left), std::max(now.top, clip.top), std::min(now.right, clip.right),
               std::min(now.bottom, clip.bottom)};
    if (cut.IsEmpty())
        cut = {};
    m_clips.push_back(cut);
    m_cover.Begin(cut);
    if (m_companion)
        m_companion->PushClip(clip);
}

void ZvRasterSurface::PopClip() {
    if (m_clips.size() < 2)
        return;
    m_clips.pop_back();
    m_cover.Begin(m_clips.back());
    if (m_companion)
        m_companion->PopClip();
}
