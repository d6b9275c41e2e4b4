#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// How lines are stroked.
struct ZvPen {
    enum class Cap : uint8_t { Flat, Round, Square };
    uint32_t argb = 0xFF000000; ///< straight (not premultiplied) alpha, 0xAARRGGBB
    float widthPx = 0;          ///< 0: thin, one device pixel whatever the surface's resolution
    Cap cap = Cap::Flat;
    /// Dash (0: a dot), gap, dash, gap ... in pixels; an odd last dash gets no gap. Empty: continuous.
    std::vector<float> dashes;
    friend bool operator==(const ZvPen&, const ZvPen&) = default;
};

/// How areas are filled.
struct ZvFill {
    enum class Kind : uint8_t { None, Solid, Hatch, CrossHatch };
    Kind kind = Kind::None;
    uint32_t argb = 0xFF000000;   ///< as in ZvPen
    float hatchSpacingPx = 8;     ///< distance of hatch lines
    float hatchAngle = 0.785398f; ///< radians, counter-clockwise; the cross hatch adds the perpendicular
    Vec2f hatchOrigin;            ///< a pixel position through which a line of the hatch goes
    static constexpr float kLeastSpacing = 2;
    friend bool operator==(const ZvFill&, const ZvFill&) = default;
};

/// One ring of a polygon: not closed by a repeated point.
struct ZvSurfaceRing {
    const Vec2f* points = nullptr;
    size_t count = 0;
};

/// One line of text in one font.
struct ZvTextRun {
    XStringW text;
    XStringW fontFamily; ///< empty: the surface's default
    Vec2f baselineStart; ///< pixels
    float heightPx = 12; ///< font size: ascent to descent
    float angle = 0;     ///< radians, counter-clockwise on the screen
    uint32_t argb = 0xFF000000;
};

/// What drawing is done on: a picture in memory, a window, a PDF or SVG page. Coordinates are pixels of the surface, x to the right,
/// y down, pixel centres at .5. Calls that need more than a surface can do say so by their result and draw nothing.
class ZV_API IZvSurface {
public:
    virtual ~IZvSurface() = default;

    virtual int Width() const = 0;
    virtual int Height() const = 0;
    virtual void SetPen(const ZvPen& pen) = 0;
    virtual void SetFill(const ZvFill& fill) = 0;
    /// Strokes with the current pen. A single point is a dot.
    virtual void Polyline(const Vec2f* points, size_t count, bool closed) = 0;
    /// Fills by the even-odd rule with the current fill and, when `outline`, strokes each ring with the current pen.
    virtual void Polygon(const ZvSurfaceRing* rings, size_t count, bool outline) = 0;
    virtual bool Text(const ZvTextRun& run) = 0;
    /// Premultiplied ARGB pixels, rows from top to bottom, stretched to the parallelogram at `origin` (the picture's top left corner)
    /// along `right` and `down`.
    virtual bool Image(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right,
                       Vec2f down) = 0;
    /// Cuts everything until the matching pop to `clip` and all clips around it.
    virtual void PushClip(const Rect2I& clip) = 0;
    virtual void PopClip() = 0;
    /// Names what is drawn until the matching end (a layer). Only structured formats keep it.
    virtual void BeginGroup(std::string_view) {}
    virtual void EndGroup() {}
};
