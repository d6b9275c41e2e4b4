#include "Zelvan/Tables/ZvHatchLines.h"
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// Pieces and crossings that one line may have on the average.
constexpr size_t kPiecesPerLine = 256;

} // namespace

ZvHatchLines::ZvHatchLines(const ZvTexture::Family& family, double patternAngle, double scale)
    : m_spacing(family.spacing * scale), m_shift(family.shift * scale) {
    const double angle = family.angle + patternAngle;
    m_along = {std::cos(angle), std::sin(angle)};
    m_across = {-m_along.y, m_along.x};
    const double c = std::cos(patternAngle) * scale, s = std::sin(patternAngle) * scale;
    m_origin = {family.origin.x * c - family.origin.y * s, family.origin.x * s + family.origin.y * c};
    for (const double dash : family.dashes) {
        m_dashes.push_back(dash * scale);
        m_period += m_dashes.back();
    }
}

Vec2d ZvHatchLines::ToFrame(const Vec2d& world) const {
    const Vec2d from = world - m_origin;
    return {from.Dot(m_along), from.Dot(m_across) / m_spacing};
}

Vec2d ZvHatchLines::ToWorld(double u, int64_t line) const {
    return m_origin + m_along * u + m_across * (double(line) * m_spacing);
}

ZvHatchLines::Range ZvHatchLines::LinesOf(const ZvBounds2D& window) const {
    Range range{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const double x : {window.minX, window.maxX})
        for (const double y : {window.minY, window.maxY}) {
            const double t = ToFrame({x, y}).y;
            range = {std::min(range.low, t), std::max(range.high, t)};
        }
    return range;
}

/// An edge crosses line k when k lies in [lower t, upper t): each line meets a closed ring an even number of
/// times.
bool ZvHatchLines::CollectCrossings(std::span<const std::span<const Vec2d>> rings, const Range& lines,
                                    size_t most, std::vector<Crossing>& crossings) const {
    for (const std::span<const Vec2d> ring : rings) {
        if (ring.size() < 3)
            continue;
        Vec2d a = ToFrame(ring.back());
        for (const Vec2d& vertex : ring) {
            const Vec2d b = ToFrame(vertex);
            const double low = std::max(std::min(a.y, b.y), lines.low),
                         high = std::min(std::max(a.y, b.y), lines.high);
            for (double k = std::ceil(low); k < high; ++k) {
                if (crossings.size() >= most)
                    return false;
                crossings.push_back({int64_t(k), a.x + (b.x - a.x) * ((k - a.y) / (b.y - a.y))});
            }
            a = b;
        }
    }
    std::sort(crossings.begin(), crossings.end());
    return true;
}

/// Y.-D. Liang, B. A. Barsky, "A New Concept and Method for Line Clipping", 1984.
bool ZvHatchLines::ClipToWindow(const ZvBounds2D& window, int64_t line, double& from, double& to) const {
    const Vec2d at = ToWorld(0, line);
    const struct {
        double direction, low, high;
    } axes[] = {{m_along.x, window.minX - at.x, window.maxX - at.x},
                {m_along.y, window.minY - at.y, window.maxY - at.y}};
    for (const auto& axis : axes) {
        if (std::abs(axis.direction) < 1e-15) {
            if (axis.low > 0 || axis.high < 0)
                return false;
            continue;
        }
        const double p = axis.low / axis.direction, q = axis.high / axis.direction;
        from = std::max(from, std::min(p, q));
        to = std::min(to, std::max(p, q));
    }
    return from < to;
}

bool ZvHatchLines::Dash(int64_t line, double from, double to, size_t& budget,
                        const ZvTexture::SegmentSink& sink) const {
    if (!(m_period > 0)) {
        sink(ToWorld(from, line), ToWorld(to, line));
        return true;
    }
    const double phase = double(line) * m_shift;
    const double first = std::floor((from - phase) / m_period);
    const double periods = (to - phase) / m_period - first + 1;
    if (!(periods * double(m_dashes.size()) < double(budget)))
        return false;
    budget -= size_t(periods * double(m_dashes.size()));
    for (size_t i = 0; i < size_t(periods); ++i) {
        double start = phase + (first + double(i)) * m_period;
        bool draws = true;
        for (const double dash : m_dashes) {
            const double a = std::max(start, from), b = std::min(start + dash, to);
            if (draws && a <= b)
                sink(ToWorld(a, line), ToWorld(b, line));
            start += dash;
            draws = !draws;
        }
    }
    return true;
}

bool ZvHatchLines::Generate(std::span<const std::span<const Vec2d>> rings, const ZvBounds2D& window,
                            size_t maxLines, const ZvTexture::SegmentSink& sink) const {
    ZvBounds2D area;
    for (const std::span<const Vec2d> ring : rings)
        for (const Vec2d& vertex : ring)
            area.ExpandToFit(vertex);
    const ZvBounds2D visible(std::max(area.minX, window.minX), std::max(area.minY, window.minY),
                             std::min(area.maxX, window.maxX), std::min(area.maxY, window.maxY));
    if (visible.IsNull())
        return true;
    const Range lines = LinesOf(visible);
    if (!(lines.high - lines.low <= double(maxLines)) || !(std::abs(lines.low) < 1e15) ||
        !(std::abs(lines.high) < 1e15))
        return false;
    std::vector<Crossing> crossings;
    size_t budget = maxLines * kPiecesPerLine;
    if (!CollectCrossings(rings, lines, budget, crossings))
        return false;
    bool all = true;
    for (size_t i = 0; i + 1 < crossings.size(); i += 2) {
        double from = crossings[i].u, to = crossings[i + 1].u;
        if (ClipToWindow(visible, crossings[i].line, from, to))
            all = Dash(crossings[i].line, from, to, budget, sink) && all;
    }
    return all;
}
