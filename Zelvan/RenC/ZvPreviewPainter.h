#pragma once
#include "ZvCore/Api.h"

class ZvDrawing;
struct ZvPreviewBitmap;

/// Draws the small picture of a drawing that files carry: all visible layers on white, whole and in the middle.
class ZV_API ZvPreviewPainter {
public:
    /// A save does not wait longer; what is drawn by then is the picture.
    static constexpr double kMostSeconds = 2;
    /// The bitmap's size is set; false when it has none.
    static bool Paint(const ZvDrawing& drawing, ZvPreviewBitmap& bitmap);
};
