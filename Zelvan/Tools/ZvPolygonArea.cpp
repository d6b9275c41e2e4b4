#include "Zelvan/Tools/ZvPolygonArea.h"
#include <cmath>

double SignedPolygonArea2D(const Vec2d* ring, size_t count) {
    if (count < 3)
        return 0;
    const Vec2d base = ring[0];
    double twice = 0;
    Vec2d last = ring[1] - base;
    for (size_t i = 2; i < count; ++i) {
        const Vec2d next = ring[i] - base;
        twice += last.Cross(next);
        last = next;
    }
    return twice / 2;
}

double PolygonArea2D(const Vec2d* ring, size_t count) {
    return std::abs(SignedPolygonArea2D(ring, count));
}

bool PointInRing2D(const Vec2d* ring, size_t count, const Vec2d& point) {
    bool inside = false;
    for (size_t i = 0, j = count - 1; i < count; j = i++) {
        const Vec2d &a = ring[i], &b = ring[j];
        if ((a.y > point.y) != (b.y > point.y) &&
            point.x < (b.x - a.x) * ((point.y - a.y) / (b.y - a.y)) + a.x)
            inside = !inside;
    }
    return inside;
}

bool IsConvexRing2D(const Vec2d* ring, size_t count) {
    if (count < 3)
        return false;
    int sense = 0, xSignChanges = 0;
    double lastDx = 0;
    // A ring that turns one way may still go round several times; then its edges change their horizontal direction more than twice.
    for (size_t i = 0; i < count; ++i) {
        const Vec2d &a = ring[i], &b = ring[(i + 1) % count], &c = ring[(i + 2) % count];
        const double turn = Turn2D(a, b, c);
        const int s = turn > 0 ? 1 : turn < 0 ? -1 : 0;
        if (s == 0 && (b - a).Dot(c - b) < 0)
            return false;
        if (s && sense && s != sense)
            return false;
        sense = s ? s : sense;
        const double dx = b.x - a.x;
        if (dx != 0) {
            xSignChanges += lastDx != 0 && (dx > 0) != (lastDx > 0);
            lastDx = dx;
        }
    }
    const double firstDx = [&] {
        for (size_t i = 0; i < count; ++i)
            if (ring[(i + 1) % count].x != ring[i].x)
                return ring[(i + 1) % count].x - ring[i].x;
        return 0.0;
    }();
    xSignChanges += lastDx != 0 && (firstDx > 0) != (lastDx > 0);
    return sense != 0 && xSignChanges == 2;
}
