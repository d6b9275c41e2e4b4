#pragma once
#include "Zelvan/RenC/ZvPixelBuffer.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <vector>

/// Antialiased filling of polygons by exact signed areas: every edge adds to the cells that it crosses, a sweep along the rows sums
/// them up to coverage. (The accumulation buffer of R. Levien's "font-rs", 2016.) Memory for one frame is kept between polygons.
class ZV_API ZvCoverageFill {
public:
    enum class Rule {
        EvenOdd,
        NonZero ///< right for pieces that all turn the same way; used for strokes
    };
    /// Prepares for polygons within `clip` (pixels, inside the target).
    void Begin(const Rect2I& clip);
    void Edge(Vec2f a, Vec2f b);
    void Ring(const Vec2f* points, size_t count);
    /// Calls `span(y, x, coverage[count], count)` for the touched part of each row, then forgets everything. Coverage is 0..255.
    template <class Span>
    void Sweep(Rule rule, Span&& span);
    /// Sweeps, blending one premultiplied colour.
    void Paint(ZvPixelBuffer& target, Rule rule, uint32_t color);

private:
    void EdgeInRow(int row, float x0, float x1, float dir);
    const uint8_t* RowCoverage(int row, Rule rule, int& from, int& to);

    Rect2I m_clip;
    int m_width = 0;
    std::vector<float> m_cells;    // height rows of m_width + 2 cells
    std::vector<int> m_min, m_max; // touched cells of each row
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
    m_firstRow = m_clip.Height();
    m_lastRow = -1;
}
