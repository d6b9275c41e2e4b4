#pragma once
#include "Zelvan/RenC/ZvPixelBuffer.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <vector>

/// Antialiased filling of polygons by exact signed areas: every edge adds to the cells that it crosses, a sweep along the rows sums
/// them up to coverage. (The accumulation buffer of R. Levien's "font-rs", 2016.) Memory for one frame is kept between polygons.
/// Coordinates at any distance are taken.
class ZV_API ZvCoverageFill {
public:
    enum class Rule {
        EvenOdd,
        NonZero ///< right for pieces that all turn the same way; used for strokes
    };
    /// Prepares for polygons within `clip` (pixels, inside the target). Nothing may wait to be swept.
    void Begin(const Rect2I& clip);
    const Rect2I& Clip() const { return m_clip; }
    /// Off: a pixel is covered when half of it or more is.
    void SetSmooth(bool on) { m_smooth = on; }
    /// Both points finite.
    void Edge(Vec2f a, Vec2f b);
    /// Points that are not finite are left out.
    void Ring(const Vec2f* points, size_t count);
    /// Calls `span(y, x, coverage[count], count)` for the touched part of each row, then forgets everything. Coverage is 0..255.
    template <class Span>
    void Sweep(Rule rule, Span&& span);
    /// Sweeps, blending one premultiplied colour.
    void Paint(ZvPixelBuffer& target, Rule rule, uint32_t color);

private:
    struct Slanted {
        double x0, y0, x1, y1; ///< pixels of the clip, y0 < y1
        double XAt(double y) const { return x0 + (x1 - x0) * ((y - y0) / (y1 - y0)); }
    };
    void Clipped(const Slanted& edge, float direction);
    void LeftOfClip(double y0, double y1, float direction);
    void Inside(const Slanted& edge, float direction);
    void EdgeInRow(int row, float x0, float x1, float d);
    const uint8_t* RowCoverage(int row, Rule rule, int& from, int& to);
    float* Cells(int row) { return m_cells.data() + size_t(row) * size_t(m_width + 2); }

    Rect2I m_clip;
    int m_width = 0, m_height = 0;
    bool m_smooth = true;
    std::vector<float> m_cells;    // m_height rows of m_width + 2 cells; all 0 between polygons
    std::vector<int> m_min, m_max; // touched cells of each row; min above max for none
    std::vector<uint8_t> m_coverage;
    int m_firstRow = 0, m_lastRow = -1;
};

template <class Span>
void ZvCoverageFill::Sweep(Rule rule, Span&& span) {
    for (int row = m_firstRow; row <= m_lastRow; ++row) {
        int from = 0, to = 0;
        const uint8_t* coverage = RowCoverage(row, rule, from, to);
        if (from < to)
            span(row + m_clip.top, from + m_clip.left, coverage, to - from);
    }
    m_firstRow = m_height;
    m_lastRow = -1;
}
