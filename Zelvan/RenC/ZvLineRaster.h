#pragma once
#include "Zelvan/RenC/ZvPixelBuffer.h"
#include "Zelvan/RenC/ZvSurfaceCut.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"

/// Thin (one pixel) lines into a pixel buffer, clipped to a rectangle. Pixel centres lie at .5. A segment covers its first pixel and
/// not its last one, so that a polyline blends no pixel twice at its vertices; an open line's ends cover the pixels whose centres they
/// pass. Points that are not finite break the line; points at any distance are taken.
class ZV_API ZvLineRaster {
public:
    /// `clip` is cut to the buffer. `color` is premultiplied.
    ZvLineRaster(ZvPixelBuffer& target, const Rect2I& clip, uint32_t color, bool antialias);

    /// Covers one pixel at least; a single point is a dot.
    void Polyline(const Vec2f* points, size_t count, bool closed);
    /// One whole pixel.
    void Dot(Vec2f at);

private:
    /// A segment as steps of one pixel along its longer axis.
    struct Steps {
        int major;      ///< first pixel along the longer axis
        int count;      ///< pixels
        int step;       ///< +1 or -1
        int64_t minor;  ///< across it, at the first pixel's centre; 32 fractional bits
        int64_t change; ///< of `minor` with each step
    };
    bool IsWellInside(Vec2f p) const {
        return p.x >= m_safeLeft && p.x < m_safeRight && p.y >= m_safeTop && p.y < m_safeBottom;
    }
    /// What of a segment is an end of the line.
    enum Ends { kNone = 0, kStart = 1, kEnd = 2 };
    /// False when no pixel was covered because the segment is too short.
    bool Segment(Vec2f a, Vec2f b, bool inside, int ends);
    template <bool Steep, bool Checked>
    void Aliased(Steps s);
    template <bool Steep, bool Checked>
    void Smooth(Steps s);
    template <bool Steep>
    bool Contains(int major, int minor) const {
        const int x = Steep ? minor : major, y = Steep ? major : minor;
        return x >= m_clip.left && x < m_clip.right && y >= m_clip.top && y < m_clip.bottom;
    }
    void Blend(uint32_t& pixel, uint32_t coverage) const {
        pixel = m_opaque ? ZvPixelBuffer::Mix(pixel, m_color, coverage)
                         : ZvPixelBuffer::Over(pixel, m_color, coverage);
    }

    uint32_t* m_pixels;
    int64_t m_stride;
    Rect2I m_clip;
    float m_safeLeft, m_safeRight, m_safeTop,
        m_safeBottom; // two pixels inside the clip: no pixel needs a look at it
    /// Wider than the clip by two pixels: what sticks out is dropped pixel by pixel, so that the slope at the border is that of the
    /// whole segment.
    ZvSurfaceCut::Box m_window;
    uint32_t m_color;
    bool m_opaque;
    bool m_antialias;
};
