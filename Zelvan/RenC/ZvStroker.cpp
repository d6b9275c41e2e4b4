#include "Zelvan/RenC/ZvStroker.h"
#include "Zelvan/RenC/ZvCoverageFill.h"
#include <algorithm>
#include <cmath>

namespace {

constexpr float kPi = 3.14159265f;
constexpr float kSamePoint = 1e-6f; // square of a distance in pixels
constexpr int kMostChords = 128;

Vec2f Left(Vec2f d) {
    return {-d.y, d.x};
}

Vec2f Direction(Vec2f a, Vec2f b) {
    const double dx = double(b.x) - a.x, dy = double(b.y) - a.y;
    const double length = std::sqrt(dx * dx + dy * dy);
    return {float(dx / length), float(dy / length)};
}

} // namespace

void ZvStroker::Polyline(const Vec2f* points, size_t count, bool closed) {
    m_box = ZvSurfaceCut::Around(m_target.Clip(), 2 * m_half + 2);
    m_line.clear();
    for (size_t i = 0; i < count; ++i) {
        if (!ZvSurfaceCut::IsFinite(points[i])) {
            Run(false);
            closed = false;
        } else if (m_line.empty() || !((points[i] - m_line.back()).LengthSq() <= kSamePoint)) {
            m_line.push_back(points[i]);
        }
    }
    Run(closed);
}

void ZvStroker::Run(bool closed) {
    if (closed && m_line.size() > 1 && (m_line.front() - m_line.back()).LengthSq() <= kSamePoint)
        m_line.pop_back();
    const size_t n = m_line.size();
    if (n < 2) {
        if (n)
            Dot(m_line[0]);
        m_line.clear();
        return;
    }
    closed = closed && n > 2;
    const size_t segments = closed ? n : n - 1;
    m_dirs.resize(segments);
    for (size_t i = 0; i < segments; ++i) {
        Vec2f a = m_line[i], b = m_line[(i + 1) % n];
        m_dirs[i] = Direction(a, b);
        if (ZvSurfaceCut::Segment(m_box, a, b))
            Quad(a, b, Left(m_dirs[i]) * m_half);
    }
    for (size_t i = 1; i < segments; ++i)
        Joint(m_line[i], m_dirs[i - 1], m_dirs[i]);
    if (closed) {
        Joint(m_line[0], m_dirs[n - 1], m_dirs[0]);
    } else {
        EndCap(m_line[0], -m_dirs[0]);
        EndCap(m_line[n - 1], m_dirs[segments - 1]);
    }
    m_line.clear();
}

void ZvStroker::Dot(Vec2f at) {
    if (!ZvSurfaceCut::IsInside(m_box, at))
        return;
    if (m_cap == Cap::Square)
        Quad({at.x - m_half, at.y}, {at.x + m_half, at.y}, {0, m_half});
    else
        Fan(at, 0, 2 * kPi);
}

void ZvStroker::Piece(std::span<const Vec2f> corners) {
    float area = 0;
    for (size_t i = 0; i < corners.size(); ++i)
        area += (corners[i] - corners[0]).Cross(corners[(i + 1) % corners.size()] - corners[0]);
    for (size_t i = 0; i < corners.size(); ++i) {
        const Vec2f a = corners[i], b = corners[(i + 1) % corners.size()];
        area >= 0 ? m_target.Edge(a, b) : m_target.Edge(b, a);
    }
}

void ZvStroker::Quad(Vec2f a, Vec2f b, Vec2f normal) {
    const Vec2f corners[4] = {a + normal, b + normal, b - normal, a - normal};
    Piece(corners);
}

// The outer wedge only: mitred up to twice the half width, else rounded.
void ZvStroker::Joint(Vec2f at, Vec2f before, Vec2f after) {
    const float turn = before.Cross(after), ahead = before.Dot(after);
    if ((std::fabs(turn) < 1e-4f && ahead > 0) || !ZvSurfaceCut::IsInside(m_box, at))
        return;
    const float side = turn > 0 ? -1.0f : 1.0f;
    const Vec2f n0 = Left(before) * (m_half * side), n1 = Left(after) * (m_half * side);
    if (ahead >= -0.5f) { // the mitre's tip lies at half / cos(turn / 2)
        const Vec2f sum = n0 + n1;
        const Vec2f wedge[4] = {at, at + n0, at + sum * (2 * m_half * m_half / sum.LengthSq()), at + n1};
        Piece(wedge);
        return;
    }
    const float from = std::atan2(n0.y, n0.x);
    float sweep = std::atan2(n1.y, n1.x) - from;
    if (sweep > kPi)
        sweep -= 2 * kPi;
    if (sweep < -kPi)
        sweep += 2 * kPi;
    Fan(at, from, sweep);
}

void ZvStroker::EndCap(Vec2f at, Vec2f outward) {
    if (!ZvSurfaceCut::IsInside(m_box, at))
        return;
    if (m_cap == Cap::Square)
        Quad(at, at + outward * m_half, Left(outward) * m_half);
    else if (m_cap == Cap::Round)
        Fan(at, std::atan2(outward.y, outward.x) - kPi / 2, kPi);
}

// Chords that leave the circle by at most 0.03 pixels.
void ZvStroker::Fan(Vec2f at, float fromAngle, float sweep) {
    const float step = 2 * std::acos(std::max(0.0f, 1 - 0.03f / std::max(m_half, 0.2f)));
    const int chords = std::clamp(int(std::ceil(std::fabs(sweep) / std::max(step, 0.05f))), 1, kMostChords);
    Vec2f fan[kMostChords + 2];
    fan[0] = at;
    for (int i = 0; i <= chords; ++i) {
        const float a = fromAngle + sweep * float(i) / float(chords);
        fan[i + 1] = {at.x + m_half * std::cos(a), at.y + m_half * std::sin(a)};
    }
    Piece({fan, size_t(chords) + 2});
}
