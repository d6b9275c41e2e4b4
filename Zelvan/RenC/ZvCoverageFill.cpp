#include "Zelvan/RenC/ZvCoverageFill.h"
#include <cmath>

void ZvCoverageFill::Begin(const Rect2I& clip) {
    const bool sameFrame = clip == m_clip;
    m_clip = clip;
    m_width = std::max(clip.Width(), 0);
    const size_t height = size_t(std::max(clip.Height(), 0));
    if (!sameFrame) {
        m_cells.assign(height * size_t(m_width + 2), 0.0f);
        m_min.assign(height, m_width + 2);
        m_max.assign(height, -1);
        m_coverage.resize(size_t(m_width) + 1);
    }
    m_firstRow = int(height);
    m_lastRow = -1;
}

void ZvCoverageFill::Ring(const Vec2f* points, size_t count) {
    for (size_t i = 0; i < count; ++i)
        Edge(points[i], points[i + 1 < count ? i + 1 : 0]);
}

void ZvCoverageFill::Edge(Vec2f a, Vec2f b) {
    if (a.y == b.y || !std::isfinite(a.x) || !std::isfinite(a.y) || !std::isfinite(b.x) ||
        !std::isfinite(b.y))
        return;
    const float dir = a.y < b.y ? 1.0f : -1.0f;
    if (dir < 0)
        std::swap(a, b);
    const double height = m_clip.Height();
    const double top = double(a.y) - m_clip.top, bottom = double(b.y) - m_clip.top;
    if (bottom <= 0 || top >= height || m_width == 0)
        return;
    const double slope = (double(b.x) - a.x) / (double(b.y) - a.y);
    double y = std::max(top, 0.0);
    double x = a.x - double(m_clip.left) + (y - top) * slope;
    const double end = std::min(bottom, height);
    m_firstRow = std::min(m_firstRow, int(y));
    for (int row = int(y); y < end; ++row) {
        const double nextY = std::min(double(row) + 1, end);
        const double nextX = x + (nextY - y) * slope;
        EdgeInRow(row, float(x), float(nextX), dir * float(nextY - y));
        x = nextX;
        y = nextY;
        m_lastRow = std::max(m_lastRow, row);
    }
}

// Adds an edge that stays in one row and covers the height |d|. Left of the frame it counts in the first cell; right of it, nothing.
void ZvCoverageFill::EdgeInRow(int row, float x0, float x1, float d) {
    const float width = float(m_width);
    if (x0 > x1)
        std::swap(x0, x1);
    if (x0 >= width)
        return;
    float* cells = m_cells.data() + size_t(row) * size_t(m_width + 2);
    int& low = m_min[size_t(row)];
    int& high = m_max[size_t(row)];
    if (x1 <= 0) {
        cells[0] += d;
        low = 0;
        high = std::max(high, 0);
        return;
    }
    if (x0 < 0 || x1 > width) { // split where it crosses the frame, the parts are simple
        const float cut = x0 < 0 ? 0 : width;
        const float share = (cut - x0) / (x1 - x0);
        EdgeInRow(row, x0, cut, d * share);
        EdgeInRow(row, cut, x1, d * (1 - share));
        return;
    }
    const int first = std::min(int(x0), m_width - 1), last = std::min(int(x1), m_width - 1);
    low = std::min(low, first);
    high = std::max(high, last + 1);
    if (first == last) {
        const float mean = 0.5f * (x0 + x1) - float(first);
        cells[first] += d * (1 - mean);
        cells[first + 1] += d * mean;
        return;
    }
    const float perX = 1.0f / (x1 - x0);
    const float head = float(first + 1) - x0;
    const float a0 = 0.5f * perX * head * head;
    const float tail = x1 - float(last);
    const float am = 0.5f * perX * tail * tail;
    cells[first] += d * a0;
    if (last == first + 1) {
        cells[first + 1] += d * (1 - a0 - am);
    } else {
        const float a1 = perX * (1.5f - (x0 - float(first)));
        cells[first + 1] += d * (a1 - a0);
        for (int i = first + 2; i < last; ++i)
            cells[i] += d * perX;
        const float a2 = a1 + float(last - first - 2) * perX;
        cells[last] += d * (1 - a2 - am);
    }
    cells[last + 1] += d * am;
}

const uint8_t* ZvCoverageFill::RowCoverage(int row, Rule rule, int& from, int& to) {
    int& low = m_min[size_t(row)];
    int& high = m_max[size_t(row)];
    from = std::min(low, m_width);
    float* cells = m_cells.data() + size_t(row) * size_t(m_width + 2);
    float sum = 0;
    int x = from;
    for (; x < m_width && (x <= high || std::fabs(sum) > 1e-4f); ++x) {
        if (x <= high) {
            sum += cells[x];
            cells[x] = 0;
        }
        float cover = std::fabs(sum);
        if (rule == Rule::EvenOdd && cover > 1) {
            cover -= 2 * std::floor(cover * 0.5f);
            cover = cover > 1 ? 2 - cover : cover;
        }
        m_coverage[size_t(x)] = uint8_t(std::min(cover, 1.0f) * 255 + 0.5f);
    }
    for (int i = x; i <= high && i < m_width + 2; ++i)
        cells[i] = 0;
    to = x;
    low = m_width + 2;
    high = -1;
    return m_coverage.data() + from;
}

void ZvCoverageFill::Paint(ZvPixelBuffer& target, Rule rule, uint32_t color) {
    const bool opaque = color >> 24 == 255;
    Sweep(rule, [&](int y, int x, const uint8_t* coverage, int count) {
        uint32_t* row = target.Row(y) + x;
        for (int i = 0; i < count; ++i) {
            if (coverage[i] == 255 && opaque)
                row[i] = color;
            else if (coverage[i])
                row[i] = ZvPixelBuffer::Over(row[i], color, coverage[i]);
        }
    });
}
