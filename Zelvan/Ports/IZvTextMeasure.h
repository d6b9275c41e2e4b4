#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <string_view>

/// A font as drawings name it.
struct ZvFont {
    XStringW family; ///< empty: the default of whoever measures or draws
    bool bold = false;
    bool italic = false;
    friend bool operator==(const ZvFont&, const ZvFont&) = default;
};

/// Measures of a run set in a font of height 1 (ascent + descent = 1): multiply by the height.
struct ZvTextExtent {
    double width = 0;
    double ascent = 0.8;
    double descent = 0.2;
};

/// Asked how long a run of text is.
class ZV_API IZvTextMeasure {
public:
    virtual ~IZvTextMeasure() = default;
    /// `run` has no line breaks.
    virtual ZvTextExtent Measure(std::u16string_view run, const ZvFont& font) = 0;
};
