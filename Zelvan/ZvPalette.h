#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <cstdint>

/// The application's palette: 256 entries, each a colour (red in bits 0-7, green 8-15, blue 16-23) and a
/// name.
///   0        black, the same on every background
///   1..9     red, yellow, green, cyan, blue, magenta, white (drawn black on light backgrounds), dark grey,
///            light grey
///   10..249  index = 10 * (1 + hue) + 2 * shade + pale: 24 hues from red in steps of 15 degrees; five shades
///            with 100, 65, 50, 30 and 15 percent brightness; pale entries go half the way to the grey of the
///            same brightness
///   250..255 greys from dark to white
class ZV_API ZvPalette {
public:
    static constexpr int kSize = 256;
    /// Indices outside of the palette give the entry of index 7.
    static uint32_t GetRGB(int index);
    /// English; entries 10..249 are told by hue, shade 1..5 and "Pale" ("Orange 1", "Orange 2 Pale").
    static XStringW GetName(int index);
    /// -1 for a name that no entry has; case and blanks do not count, "Gray" is taken for "Grey", and a hue
    /// without a number for its brightest shade.
    static int NameToIndex(const XStringW& name);
    /// The entry whose colour is nearest (sum of squared channel differences; the lowest index of equals).
    static int Nearest(uint32_t rgb);
};
