#include "Zelvan/RenC/ZvStroker.h"
#include "Zelvan/RenC/ZvCoverageFill.h"
#include <algorithm>
#include <cmath>

namespace {
constexpr float kPi = 3.14159265f;
Vec2f Left(Vec2f d) {
    return {-d.y, d.x};
}
} // namespace

void ZvStroker::Polyline(const Vec2f* points, size_t count, bool closed) {
    std::vector<Vec2f> line;
    line.reserve(count);
    for (size_t i = 0; i < count; ++i)
        if (line.empty() || (points[i] - line.back()).LengthSq() > 1e-6f)
            line.push_back(points[i]);
    if (closed && line.size() > 1 && (line.front() - line.back()).LengthSq() <= 1e-6f)
        line.pop_back();
    if (line.size() < 2) {
        if (!line.empty() && m_cap != Cap::Flat)
            Fan(line[0], 0, 2 * kPi);
        return;
    }
    closed = closed && line.size() > 2;
    const size_t n = line.size(), segments = closed ? n : n - 1;
    std::vector<Vec2f> dirs(segments);
    for (size_t i = 0; i < segments; ++i) {
        const Vec2f d = line[(i + 1) % n] - line[i];
        dirs[i] = d * (1 / d.Length());
        Quad(line[i], line[(i + 1) % n], Left(dirs[i]) * m_half);
    }
    for (size_t i = 1; i < segments; ++i)
        Joint(line[i], dirs[i - 1], dirs[i]);
    if (closed) {
        Joint(line[0], dirs[n - 1], dirs[0]);
    } else {
        EndCap(line[0], -dirs[0]);
        EndCap(line[n - 1], dirs[segments - 1]);
    }
}

void ZvStroker::Piece(const Vec2f* points, size_t count) {
    float area = 0;
    for (size_t i = 0; i < count; ++i)
        area += points[i].Cross(points[(i + 1) % count]);
    for (size_t i = 0; i < count; ++i) {
        const Vec2f a = points[i], b = points[(i + 1) % count];
        area >= 0 ? m_target.Edge(a, b) : m_target.Edge(b, a);
    }
}

void ZvStroker::Quad(Vec2f a, Vec2f b, Vec2f normal) {
    const Vec2f corners[4] = {a + normal, b + normal, b - normal, a - normal};
    Piece(corners, 4);
}

// Mitred up to twice the half width, else rounded: the outer wedge only.
void ZvStroker::Joint(Vec2f at, Vec2f before, Vec2f after) {
    const float turn = before.Cross(after);
    if (std::fabs(turn) < 1e-4f && before.Dot(after) > 0)
        return;
    const float side = turn > 0 ? -1.0f : 1.0f;
    const Vec2f n0 = Left(before) * (m_half * side), n1 = Left(after) * (m_half * side);
    const Vec2f sum = n0 + n1;
    const float scale = 2 * m_half * m_half / std::max(sum.LengthSq(), 1e-12f);
    if (scale * sum.Length() <= 2 * m_half) {
        const Vec2f wedge[4] = {at, at + n0, at + sum * scale, at + n1};
        Piece(wedge, 4);
        return;
    }
    const float a0 = std::atan2(n0.y, n0.x);
    float sweep = std::atan2(n1.y, n1.x) - a0;
    if (sweep > kPi)
        sweep -= 2 * kPi;
    if (sweep < -kPi)
        sweep += 2 * kPi;
    Fan(at, a0, sweep);
}

void ZvStroker::EndCap(Vec2f at, Vec2f outward) {
    if (m_cap == Cap::Square)
        Quad(at, at + outward * m_half, Left(outward) * m_half);
    else if (m_cap == Cap::Round)
        Fan(at, std::atan2(outward.y, outward.x) - kPi / 2, kPi);
}

// Chords that leave the circle by at most a tenth of a pixel.
void ZvStroker::Fan(Vec2f at, float fromAngle, float sweep) {
    const float step = 2 * std::acos(std::max(0.0f, 1 - 0.1f / std::max(m_half, 0.2f)));
    const int chords = std::clamp(int(std::ceil(std::fabs(sweep) / std::max(step, 0.05f))), 1, 128);
    std::vector<Vec2f> fan{at};
    for (int i = 0; i <= chords; ++i) {
        const float a = fromAngle + sweep * float(i) / float(chords);
        fan.push_back({at.x + m_half * std::cos(a), at.y + m_half * std::sin(a)});
    }
    Piece(fan.data(), fan.size());
}

ZvDasher::ZvDasher(const float* pattern, size_t count, float offset) : m_pattern(pattern, pattern + count) {
    for (float& length : m_pattern) {
        length = std::max(length, 0.1f);
        m_total += length;
    }
    if (m_pattern.size() % 2) // an odd pattern repeats with dashes and gaps swapped
        m_pattern.insert(m_pattern.end(), m_pattern.begin(), m_pattern.end()), m_total *= 2;
    m_offset = m_total > 0 ? std::fmod(std::max(offset, 0.0f), m_total) : 0;
}
