#pragma once
#include "Zelvan/RenC/ZvSurfaceCut.h"
#include "ZvCore/Api.h"
#include <cstddef>
#include <vector>

/// Cuts polylines into dashes. What lies outside the box is counted but not cut up, so that a line of any length is quick.
class ZV_API ZvDasher {
public:
    /// Lengths by turns: dash (0: a dot), gap, dash, gap ... in pixels; an odd last dash gets no gap. Patterns shorter than
    /// kShortest as a whole leave lines as they are.
    static constexpr float kShortest = 0.5f;
    void SetPattern(const std::vector<float>& pattern);
    bool IsContinuous() const { return m_pattern.empty(); }
    /// Calls `emit(points, count)` for each dash, one point for a dot. Every line starts with the first dash.
    template <class Emit>
    void Polyline(const ZvSurfaceCut::Box& box, const Vec2f* points, size_t count, bool closed, Emit&& emit);

private:
    bool IsDash() const { return m_slot % 2 == 0; }
    void NextSlot() {
        m_slot = (m_slot + 1) % m_pattern.size();
        m_left = m_pattern[m_slot];
    }
    void Skip(double length);
    template <class Flush>
    void Segment(const ZvSurfaceCut::Box& box, Vec2f a, Vec2f b, Flush&& flush);

    std::vector<double> m_pattern; // even number of lengths
    double m_total = 0;
    size_t m_slot = 0;
    double m_left = 0; // of the slot
    std::vector<Vec2f> m_dash;
};

template <class Emit>
void ZvDasher::Polyline(const ZvSurfaceCut::Box& box, const Vec2f* points, size_t count, bool closed,
                        Emit&& emit) {
    if (IsContinuous()) {
        emit(points, count);
        return;
    }
    m_slot = 0;
    m_left = m_pattern[0];
    m_dash.clear();
    auto flush = [&] {
        if (m_dash.size() > 1 || (m_dash.size() == 1 && m_pattern[m_slot] == 0))
            emit(static_cast<const Vec2f*>(m_dash.data()), m_dash.size());
        m_dash.clear();
    };
    const size_t segments = closed && count > 2 ? count : count ? count - 1 : 0;
    for (size_t i = 0; i < segments; ++i)
        Segment(box, points[i], points[i + 1 < count ? i + 1 : 0], flush);
    flush();
}

template <class Flush>
void ZvDasher::Segment(const ZvSurfaceCut::Box& box, Vec2f a, Vec2f b, Flush&& flush) {
    const double dx = double(b.x) - a.x, dy = double(b.y) - a.y;
    const double length = std::sqrt(dx * dx + dy * dy);
    if (length == 0)
        return;
    double from, to;
    if (!ZvSurfaceCut::Range(box, a, b, from, to)) {
        flush();
        if (std::isfinite(length))
            Skip(length);
        return;
    }
    if (from > 0) {
        flush();
        Skip(from * length);
    }
    // Only what lies in the box is measured from here on: far ends would swallow a dash's length.
    const Vec2f start = ZvSurfaceCut::At(box, a, b, from), end = ZvSurfaceCut::At(box, a, b, to);
    const double seen = std::sqrt((double(end.x) - start.x) * (double(end.x) - start.x) +
                                  (double(end.y) - start.y) * (double(end.y) - start.y));
    double at = 0;
    if (IsDash() && m_dash.empty())
        m_dash.push_back(start);
    while (at + m_left <= seen) {
        at += m_left;
        const Vec2f here = seen > 0 ? ZvSurfaceCut::At(box, start, end, at / seen) : start;
        if (IsDash()) {
            if (m_left > 0)
                m_dash.push_back(here);
            flush();
        }
        NextSlot();
        if (IsDash())
            m_dash.push_back(here);
    }
    m_left -= seen - at;
    if (IsDash() && seen > at)
        m_dash.push_back(end);
    if (to < 1) {
        flush();
        Skip((1 - to) * length);
    }
}
