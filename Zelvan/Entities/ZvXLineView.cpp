// Vertices as a view needs them: in pixels, without those that make no difference on the screen.
#include "Zelvan/Entities/ZvXLine.h"
#include <algorithm>
#include <cmath>

namespace {

/// One coordinate system of the block: quanta (int32) or world units (double).
template <class T>
struct Units {
    T minX, minY, maxX, maxY; ///< window
    double step;              ///< vertices within this of the last one on both axes are left out
};

/// Sides of the window beyond which the point lies, one bit each.
template <class T>
inline unsigned Beyond(const Units<T>& u, T x, T y) {
    return unsigned(x < u.minX) | unsigned(x > u.maxX) << 1 | unsigned(y < u.minY) << 2 |
           unsigned(y > u.maxY) << 3;
}

/// Calls put(x, y) for the vertices get(0..count-1) that are needed. A run of vertices that all lie beyond one side of the window is
/// represented by its ends: the straight line between them stays beyond that side, too, so that neither lines nor even-odd fills
/// inside the window change.
template <class T, class Wide, class Get, class Put>
inline void Needed(uint32_t count, const Units<T>& units, Get get, Put put) {
    T x, y;
    get(0, x, y);
    put(x, y);
    T lastX = x, lastY = y;
    unsigned run = Beyond(units, x, y);
    bool pending = false;
    const Wide step = Wide(units.step);
    for (uint32_t i = 1; i < count; ++i) {
        get(i, x, y);
        const Wide dx = Wide(x) - lastX, dy = Wide(y) - lastY;
        if (dx < step && -dx < step && dy < step && -dy < step && i + 1 < count)
            continue;
        const unsigned beyond = Beyond(units, x, y);
        if (run & beyond) {
            run &= beyond;
            pending = true;
        } else {
            if (pending)
                put(lastX, lastY);
            put(x, y);
            pending = false;
            run = beyond;
        }
        lastX = x, lastY = y;
    }
    if (pending)
        put(lastX, lastY);
}

int32_t ToQuanta(double steps) {
    return int32_t(std::clamp(steps, -2147483648.0, 2147483647.0));
}

} // namespace

uint32_t ZvXLine::ReadForView(uint32_t first, uint32_t count, const ViewCut& cut, Vec2f* out) const {
    if (count == 0)
        return 0;
    const Affine2& m = cut.map;
    const size_t dims = size_t(DimCount());
    const double stretch = std::max(std::abs(m.xx) + std::abs(m.xy), std::abs(m.yx) + std::abs(m.yy));
    const double step = stretch > 0 ? cut.step / stretch : 0;
    const ZvBounds2D& w = cut.window;
    Vec2f* at = out;
    if (Is64()) {
        const uint8_t* from = OriginPtr() + first * dims * 8;
        const auto get = [=](uint32_t i, double& x, double& y) {
            std::memcpy(&x, from + i * dims * 8, 8);
            std::memcpy(&y, from + i * dims * 8 + 8, 8);
        };
        Needed<double, double>(count, {w.minX, w.minY, w.maxX, w.maxY, step}, get, [&](double x, double y) {
            *at++ = {float(m.xx * x + m.xy * y + m.dx), float(m.yx * x + m.yy * y + m.dy)};
        });
        return uint32_t(at - out);
    }
    const FltData flt = GetFlt();
    const double scale = flt.scale[0], x0 = flt.origin[0], y0 = flt.origin[1];
    const Units<int32_t> units{
        ToQuanta(std::floor((w.minX - x0) / scale)), ToQuanta(std::floor((w.minY - y0) / scale)),
        ToQuanta(std::ceil((w.maxX - x0) / scale)), ToQuanta(std::ceil((w.maxY - y0) / scale)),
        std::min(step / scale, 8589934592.0)};
    const double dx = m.xx * x0 + m.xy * y0 + m.dx, dy = m.yx * x0 + m.yy * y0 + m.dy;
    const double xx = m.xx * scale, xy = m.xy * scale, yx = m.yx * scale, yy = m.yy * scale;
    // Vertex 0, the origin, is not among the packed ones.
    const int32_t* from = MVerts32() + (int64_t(first) - 1) * int64_t(dims);
    const bool hasOrigin = first == 0;
    const auto get = [=](uint32_t i, int32_t& x, int32_t& y) {
        if (i == 0 && hasOrigin) {
            x = y = 0;
            return;
        }
        x = from[i * dims];
        y = from[i * dims + 1];
    };
    Needed<int32_t, int64_t>(count, units, get, [&](int32_t x, int32_t y) {
        *at++ = {float(xx * x + xy * y + dx), float(yx * x + yy * y + dy)};
    });
    return uint32_t(at - out);
}
