#pragma once
#include "Zelvan/Ports/IZvSurface.h"
#include <functional>
#include <vector>

/// What tests of surfaces paint, on squares of kSide pixels.
namespace SurfaceShapes {

inline constexpr int kSide = 120;
using Scene = std::function<void(IZvSurface&)>;

inline void Polyline(IZvSurface& surface, const std::vector<Vec2f>& points, bool closed = false) {
    surface.Polyline(points.data(), points.size(), closed);
}

inline void Polygon(IZvSurface& surface, const std::vector<std::vector<Vec2f>>& rings, bool outline = false) {
    std::vector<ZvSurfaceRing> list;
    for (const auto& ring : rings)
        list.push_back({ring.data(), ring.size()});
    surface.Polygon(list.data(), list.size(), outline);
}

inline const std::vector<Vec2f> kStar{{10, 60},  {60, 50}, {70, 10},  {80, 55},
                                      {110, 70}, {75, 80}, {60, 110}, {50, 75}};
inline const std::vector<Vec2f> kHole{{55, 60}, {70, 60}, {65, 72}};

} // namespace SurfaceShapes
