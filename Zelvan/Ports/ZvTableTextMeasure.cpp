#include "Zelvan/Ports/ZvTableTextMeasure.h"
#include <cstdint>
#include <iterator>

namespace {

// Advance widths of U+0020..U+007E in thousandths of the em: Adobe's font metrics of Helvetica (core 14 AFM
// files, 1997).
constexpr uint16_t kAscii[] = {
    278, 278, 355, 556, 556, 889, 667, 191, 333, 333, 389, 584, 278, 333,  278, 278, 556, 556, 556,
    556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556, 1015, 667, 667, 722, 722, 667,
    611, 778, 722, 278, 500, 667, 556, 833, 722, 778, 667, 778, 722, 667,  611, 722, 667, 944, 667,
    667, 611, 278, 278, 278, 469, 556, 333, 556, 556, 500, 556, 556, 278,  556, 556, 222, 222, 500,
    222, 833, 556, 556, 556, 556, 333, 500, 278, 556, 500, 722, 500, 500,  500, 334, 260, 334, 584};
static_assert(std::size(kAscii) == 0x7F - 0x20);

constexpr double kAscent = 0.905, kDescent = 0.212; // of the em, as common faces of this design have
constexpr double kBoldFactor = 1.06;

struct Range {
    char32_t first, last;
    uint16_t width;
};
// What lies outside of these is as wide as a digit.
constexpr Range kRanges[] = {
    {0x0300, 0x036F, 0},    // combining marks
    {0x1100, 0x11FF, 1000}, // Hangul syllables' parts
    {0x200B, 0x200F, 0},    // joiners and direction marks
    {0x2E80, 0x303E, 1000}, // radicals, punctuation of East Asia
    {0x3041, 0x33FF, 1000}, // Kana, Bopomofo, squared forms
    {0x3400, 0x4DBF, 1000}, // Han, extension A
    {0x4E00, 0x9FFF, 1000}, // Han
    {0xA000, 0xA4CF, 1000}, // Yi
    {0xAC00, 0xD7A3, 1000}, // Hangul
    {0xF900, 0xFAFF, 1000}, // Han, compatibility forms
    {0xFE00, 0xFE0F, 0},    // variation selectors
    {0xFE20, 0xFE2F, 0},    // combining half marks
    {0xFF00, 0xFF60, 1000}, // full-width forms
    {0x1F300, 0x1FAFF, 1000}, {0x20000, 0x3FFFD, 1000},
};

int WidthOf(char32_t c) {
    if (c < 0x20 || c == 0x7F)
        return 0;
    if (c < 0x7F)
        return kAscii[c - 0x20];
    for (const Range& range : kRanges)
        if (c >= range.first && c <= range.last)
            return range.width;
    return 556;
}

} // namespace

ZvTextExtent ZvTableTextMeasure::Measure(std::u16string_view run, const ZvFont& font) {
    int64_t total = 0;
    for (size_t i = 0; i < run.size(); ++i) {
        char32_t c = run[i];
        const bool pair =
            c >= 0xD800 && c < 0xDC00 && i + 1 < run.size() && run[i + 1] >= 0xDC00 && run[i + 1] < 0xE000;
        if (pair)
            c = 0x10000 + ((c - 0xD800) << 10) + (run[++i] - 0xDC00);
        total += WidthOf(c);
    }
    constexpr double kHeight = kAscent + kDescent;
    return {double(total) / 1000 / kHeight * (font.bold ? kBoldFactor : 1), kAscent / kHeight,
            kDescent / kHeight};
}

ZvTableTextMeasure& ZvTableTextMeasure::Default() {
    static ZvTableTextMeasure measure;
    return measure;
}
