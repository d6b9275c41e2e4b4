#pragma once
#include "Zelvan/Ports/IZvSurface.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <string_view>

/// Layout and drawing of the swatches by which lists show values: a box at the left, a label at its right.
class ZvSwatch {
public:
    ZvSwatch(IZvSurface& surface, const Rect2I& area);
    /// The box without its frame, in pixels.
    const Rect2I& Inside() const { return m_inside; }
    /// The frame, filled with a colour (0xAARRGGBB) or a hatch.
    void Box(const ZvFill& fill);
    /// A cross over the box: nothing is set.
    void CrossOut();
    /// A text of up to three characters in the middle of the box, in small print.
    void Mark(const XStringW& text);
    /// At the right of the box.
    void Label(const XStringW& text);
    /// A line through the middle of the box.
    void Line(const ZvPen& pen);
    static ZvFill Solid(uint32_t argb) { return {ZvFill::Kind::Solid, argb}; }

private:
    void Text(const XStringW& text, const char16_t* font, float left, float height);
    IZvSurface& m_surface;
    Rect2I m_area, m_box, m_inside;
};
