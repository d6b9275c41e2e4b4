#include "Zelvan/RenC/ZvSurfaceCut.h"
#include <algorithm>

// Liang and Barsky, "A New Concept and Method for Line Clipping", 1984.
bool ZvSurfaceCut::Range(const Box& box, Vec2f a, Vec2f b, double& from, double& to) {
    from = 0, to = 1;
    if (IsInside(box, a) && IsInside(box, b))
        return true;
    const double dx = double(b.x) - a.x, dy = double(b.y) - a.y;
    if (!std::isfinite(dx) || !std::isfinite(dy))
        return false;
    auto cut = [&](double p, double q) {
        if (p == 0)
            return q >= 0;
        const double t = q / p;
        if (p < 0)
            from = std::max(from, t);
        else
            to = std::min(to, t);
        return from <= to;
    };
    return cut(-dx, a.x - double(box.minX)) && cut(dx, double(box.maxX) - a.x) &&
           cut(-dy, a.y - double(box.minY)) && cut(dy, double(box.maxY) - a.y);
}

Vec2f ZvSurfaceCut::At(const Box& box, Vec2f a, Vec2f b, double share) {
    if (share <= 0 || share >= 1)
        return share <= 0 ? a : b;
    // From far away the share is not exact enough to end at the border.
    return {std::clamp(float(a.x + share * (double(b.x) - a.x)), box.minX, box.maxX),
            std::clamp(float(a.y + share * (double(b.y) - a.y)), box.minY, box.maxY)};
}

bool ZvSurfaceCut::Segment(const Box& box, Vec2f& a, Vec2f& b) {
    double from, to;
    if (!Range(box, a, b, from, to))
        return false;
    const Vec2f start = a, end = b;
    a = At(box, start, end, from);
    b = At(box, start, end, to);
    return true;
}

bool ZvSurfaceCut::IsNeeded(const Box& box, const Vec2f* points, size_t count) {
    return !std::all_of(points, points + count, [&](Vec2f p) { return IsInside(box, p); });
}

// I. Sutherland and G. Hodgman, "Reentrant Polygon Clipping", 1974: one side of the box after the other.
size_t ZvSurfaceCut::Ring(const Box& box, const Vec2f* points, size_t count, std::vector<Vec2f>& out) {
    std::vector<Vec2f> ring, cut;
    std::copy_if(points, points + count, std::back_inserter(ring), IsFinite);
    for (int side = 0; side < 4; ++side) {
        const bool isX = side < 2, isLow = side % 2 == 0;
        const double border = isX ? (isLow ? box.minX : box.maxX) : (isLow ? box.minY : box.maxY);
        auto beyond = [&](Vec2f p) {
            return (isX ? p.x : p.y) * (isLow ? -1.0 : 1.0) - border * (isLow ? -1.0 : 1.0);
        };
        cut.clear();
        for (size_t i = 0; i < ring.size(); ++i) {
            const Vec2f a = ring[i], b = ring[i + 1 < ring.size() ? i + 1 : 0];
            const double da = beyond(a), db = beyond(b);
            if (da <= 0)
                cut.push_back(a);
            if ((da < 0 && db > 0) || (da > 0 && db < 0)) {
                const double share = da / (da - db);
                const float along =
                    isX ? float(a.y + share * (double(b.y) - a.y)) : float(a.x + share * (double(b.x) - a.x));
                cut.push_back(isX ? Vec2f{float(border), along} : Vec2f{along, float(border)});
            }
        }
        ring.swap(cut);
    }
    out.insert(out.end(), ring.begin(), ring.end());
    return ring.size();
}

std::span<const Vec2f> ZvSurfaceCut::RingWithin(const Box& box, const Vec2f* points, size_t count,
                                                std::vector<Vec2f>& scratch) {
    if (!IsNeeded(box, points, count))
        return {points, count};
    scratch.clear();
    Ring(box, points, count, scratch);
    return scratch;
}
