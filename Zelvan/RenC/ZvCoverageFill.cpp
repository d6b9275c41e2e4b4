#include "Zelvan/RenC/ZvCoverageFill.h"
#include <climits>
#include <cmath>

void ZvCoverageFill::Begin(const Rect2I& clip) {
    m_clip = clip;
    m_width = std::max(clip.Width(), 0);
    m_height = std::max(clip.Height(), 0);
    const size_t cells = size_t(m_height) * size_t(m_width + 2);
    if (m_cells.size() < cells)
        m_cells.resize(cells);
    if (m_min.size() < size_t(m_height)) {
        m_min.resize(size_t(m_height), INT_MAX);
        m_max.resize(size_t(m_height), -1);
    }
    if (m_coverage.size() < size_t(m_width))
        m_coverage.resize(size_t(m_width));
    m_firstRow = m_height;
    m_lastRow = -1;
}

void ZvCoverageFill::Ring(const Vec2f* points, size_t count) {
    auto isFinite = [](Vec2f p) { return std::isfinite(p.x) && std::isfinite(p.y); };
    while (count && !isFinite(points[count - 1]))
        --count;
    if (count == 0)
        return;
    Vec2f last = points[count - 1];
    for (size_t i = 0; i < count; ++i)
        if (isFinite(points[i])) {
            Edge(last, points[i]);
            last = points[i];
        }
}

void ZvCoverageFill::Edge(Vec2f a, Vec2f b) {
    if (a.y == b.y)
        return;
    const float direction = a.y < b.y ? 1.0f : -1.0f;
    if (direction < 0)
        std::swap(a, b);
    const Slanted whole{double(a.x) - m_clip.left, double(a.y) - m_clip.top, double(b.x) - m_clip.left,
                        double(b.y) - m_clip.top};
    if (whole.y1 <= 0 || whole.y0 >= m_height || m_width == 0)
        return;
    Slanted edge = whole;
    if (whole.y0 < 0)
        edge.x0 = whole.XAt(0), edge.y0 = 0;
    if (whole.y1 > m_height)
        edge.x1 = whole.XAt(m_height), edge.y1 = m_height;
    Clipped(edge, direction);
}

// Left of the frame an edge counts in the first cell of its rows; right of it, nowhere.
void ZvCoverageFill::Clipped(const Slanted& edge, float direction) {
    if (edge.x0 >= m_width && edge.x1 >= m_width)
        return;
    if (edge.x0 <= 0 && edge.x1 <= 0)
        return LeftOfClip(edge.y0, edge.y1, direction);
    for (double border : {0.0, double(m_width)})
        if ((edge.x0 < border) != (edge.x1 < border) && edge.x0 != border && edge.x1 != border) {
            const double share = (border - edge.x0) / (edge.x1 - edge.x0);
            const double y = std::clamp(edge.y0 + (edge.y1 - edge.y0) * share, edge.y0, edge.y1);
            Clipped({edge.x0, edge.y0, border, y}, direction);
            return Clipped({border, y, edge.x1, edge.y1}, direction);
        }
    Inside(edge, direction);
}

void ZvCoverageFill::LeftOfClip(double y0, double y1, float direction) {
    for (int row = int(y0); row < y1; ++row) {
        Cells(row)[0] += direction * float(std::min(row + 1.0, y1) - std::max(double(row), y0));
        m_min[size_t(row)] = 0;
        m_max[size_t(row)] = std::max(m_max[size_t(row)], 0);
        m_firstRow = std::min(m_firstRow, row);
        m_lastRow = std::max(m_lastRow, row);
    }
}

void ZvCoverageFill::Inside(const Slanted& edge, float direction) {
    if (edge.y1 <= edge.y0)
        return;
    const double slope = (edge.x1 - edge.x0) / (edge.y1 - edge.y0);
    const float width = float(m_width);
    double y = edge.y0;
    float x = float(edge.x0);
    for (int row = int(y); row < edge.y1; ++row) {
        const double nextY = std::min(row + 1.0, edge.y1);
        const float nextX = std::clamp(float(edge.x0 + (nextY - edge.y0) * slope), 0.0f, width);
        EdgeInRow(row, x, nextX, direction * float(nextY - y));
        x = nextX;
        y = nextY;
    }
    m_firstRow = std::min(m_firstRow, int(edge.y0));
    m_lastRow = std::max(m_lastRow, std::min(int(std::ceil(edge.y1)), m_height) - 1);
}

// Adds an edge that stays in one row and between 0 and the width, and covers the height |d|.
void ZvCoverageFill::EdgeInRow(int row, float x0, float x1, float d) {
    if (x0 > x1)
        std::swap(x0, x1);
    float* cells = Cells(row);
    const int first = std::min(int(x0), m_width - 1), last = std::min(int(x1), m_width - 1);
    m_min[size_t(row)] = std::min(m_min[size_t(row)], first);
    m_max[size_t(row)] = std::max(m_max[size_t(row)], last + 1);
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

// Rounding leaves sums of about 1e-6 behind the last edge; what is below 1e-4 ends the row.
const uint8_t* ZvCoverageFill::RowCoverage(int row, Rule rule, int& from, int& to) {
    int& low = m_min[size_t(row)];
    int& high = m_max[size_t(row)];
    from = std::min(low, m_width);
    float* cells = Cells(row);
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
        cover = std::min(cover, 1.0f);
        m_coverage[size_t(x)] = m_smooth ? uint8_t(cover * 255 + 0.5f) : cover >= 0.5f ? 255 : 0;
    }
    for (int i = x; i <= high; ++i)
        cells[i] = 0;
    to = x;
    low = INT_MAX;
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
