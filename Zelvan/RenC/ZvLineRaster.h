#pragma once
#include "Zelvan/RenC/ZvPixelBuffer.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"

/// Thin (one pixel) lines into a pixel buffer, clipped to a rectangle. Pixel centres lie at .5; a segment covers its first pixel
/// and not its last one, so that a polyline blends no pixel twice at its vertices; Finish() covers the last.
class ZV_API ZvLineRaster {
public:
    /// `clip` is cut to the buffer. `color` is premultiplied.
    ZvLineRaster(ZvPixelBuffer& target, const Rect2I& clip, uint32_t color, bool antialias);

    void Segment(Vec2f a, Vec2f b);
    void Polyline(const Vec2f* points, size_t count, bool closed);
    void Dot(Vec2f at);

private:
    bool ClipSegment(Vec2f& a, Vec2f& b) const;
    void SegmentAliased(Vec2f a, Vec2f b);
    void SegmentSmooth(Vec2f a, Vec2f b);
    void Blend(int x, int y, uint32_t coverage) {
        uint32_t& pixel = m_target.Row(y)[x];
        pixel = ZvPixelBuffer::Over(pixel, m_color, coverage);
    }
    void BlendIfInside(int x, int y, uint32_t coverage) {
        if (x >= m_clip.left && x < m_clip.right && y >= m_clip.top && y < m_clip.bottom)
            Blend(x, y, coverage);
    }

    ZvPixelBuffer& m_target;
    Rect2I m_clip;
    uint32_t m_color;
    bool m_opaque;
    bool m_antialias;
};
