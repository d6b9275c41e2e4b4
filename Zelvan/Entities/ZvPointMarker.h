#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <cstdint>

class ZvRenderContext;

/// How points look. The numbers stand in files; others draw as dots.
enum class ZvPointType : uint16_t {
    Dot = 0,
    Plus = 1,
    Cross = 2,
    Square = 3,
    Circle = 4,
    Diamond = 5,
    Triangle = 6
};

/// Draws the marker of points. The context's pen is set by the caller.
struct ZV_API ZvPointMarker {
    static constexpr float kSize = 7;    ///< screen pixels across
    static constexpr float kDotSize = 3; ///< screen pixels across, of dots
    /// `angle` turns the marker counter-clockwise, radians.
    static void Draw(ZvRenderContext& context, const Vec3d& at, uint16_t type, double angle);
    /// Counts the point in the cell of the context's heat map, where it has one.
    static void AddHeat(ZvRenderContext& context, const Vec3d& at);
};
