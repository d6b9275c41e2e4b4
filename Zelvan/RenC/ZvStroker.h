#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <cstddef>
#include <vector>

class ZvCoverageFill;

/// Turns a polyline into pieces for a fill: a quad for each segment, a wedge at each joint, caps at open ends. All pieces turn the
/// same way, so that the non-zero rule unites them.
class ZV_API ZvStroker {
public:
    enum class Cap { Flat, Round, Square };
    /// width in pixels, above 0.
    ZvStroker(ZvCoverageFill& target, float width, Cap cap)
        : m_target(target), m_half(width / 2), m_cap(cap) {}
    void Polyline(const Vec2f* points, size_t count, bool closed);

private:
    void Piece(const Vec2f* points, size_t count);
    void Quad(Vec2f a, Vec2f b, Vec2f normal);
    void Joint(Vec2f at, Vec2f before, Vec2f after);
    void EndCap(Vec2f at, Vec2f outward);
    void Fan(Vec2f at, float fromAngle, float sweep);

    ZvCoverageFill& m_target;
    float m_half;
    Cap m_cap;
};

/// Cuts a polyline into dashes. `pattern` alternates dash and gap lengths in pixels, all above 0; `offset` is how far into the
/// pattern the line starts.
class ZV_API ZvDasher {
public:
    ZvDasher(const float* pattern, size_t count, float offset);
    /// Calls `emit(points, count)` for each dash.
    template <class Emit>
    void Polyline(const Vec2f* points, size_t count, bool closed, Emit&& emit);

private:
    std::vector<float> m_pattern;
    float m_total = 0;
    float m_offset;
    std::vector<Vec2f> m_dash;
};

template <class Emit>
void ZvDasher::Polyline(const Vec2f* points, size_t count, bool closed, Emit&& emit) {
    if (m_total <= 0) {
        emit(points, count);
        return;
    }
    size_t slot = 0;
    float left = m_pattern[0];
    for (float skip = m_offset; skip > 0;) {
        const float step = skip < left ? skip : left;
        skip -= step, left -= step;
        if (left <= 0)
            slot = (slot + 1) % m_pattern.size(), left = m_pattern[slot];
    }
    m_dash.clear();
    if (count && slot % 2 == 0)
        m_dash.push_back(points[0]);
    const size_t segments = closed ? count : count ? count - 1 : 0;
    for (size_t i = 0; i < segments; ++i) {
        Vec2f a = points[i];
        const Vec2f b = points[(i + 1) % count];
        float length = (b - a).Length();
        while (length > left) {
            a = a + (b - a) * (left / length);
            length -= left;
            if (slot % 2 == 0) {
                m_dash.push_back(a);
                emit(m_dash.data(), m_dash.size());
                m_dash.clear();
            } else {
                m_dash.assign(1, a);
            }
            slot = (slot + 1) % m_pattern.size();
            left = m_pattern[slot];
        }
        left -= length;
        if (slot % 2 == 0)
            m_dash.push_back(b);
    }
    if (m_dash.size() > 1)
        emit(m_dash.data(), m_dash.size());
}
