#pragma once
#include "ZvCore/Api.h"
#include <cstdint>

/// How a view shows its drawing. Shared by the views of a drawing.
class ZV_API ZvViewOptions {
public:
    /// Pixels per inch of the target: sizes in points and millimetres come out in it where no paper scale is
    /// set. > 0.
    double pixelsPerInch = 96;
    /// Metres of the world per metre of paper (1000 for 1:1000): points and millimetres then keep their size
    /// on paper and grow with the zoom. 0: they keep their size on the screen.
    double paperScale = 0;
    uint32_t background = 0xFFFFFFFF; ///< 0xAARRGGBB; palette index 7 is drawn so that it shows on it
    bool lineWidths = true;           ///< false: every line is thin
    double lineTypeScale = 1;         ///< dashes and gaps are this many times as long

    void Reset() { *this = {}; }
};
