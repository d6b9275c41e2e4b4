#include "Zelvan/ZvPalette.h"
#include "Zelvan/ZvStrings.h"
#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>

namespace {

constexpr uint32_t kBasicRGB[10] = {0x000000, 0x0000FF, 0x00FFFF, 0x00FF00, 0xFFFF00,
                                    0xFF0000, 0xFF00FF, 0xFFFFFF, 0x808080, 0xC0C0C0};
constexpr int kShades[5] = {100, 65, 50, 30, 15};
constexpr int kFirstHue = 10, kFirstGrey = 250;

/// A channel of the pure hue, 0..60: trapezoid over the circle of 24 steps of 15 degrees, shifted by `offset`
/// degrees.
int PureChannel(int hue, int offset) {
    const int degrees = (hue * 15 + offset) % 360;
    return std::clamp(120 - std::abs(degrees - 180), 0, 60);
}

uint32_t HueEntry(int index) {
    const int hue = index / 10 - 1, shade = index % 10 / 2;
    const bool pale = index % 2 != 0;
    uint32_t rgb = 0;
    for (const int channel : {0, 1, 2}) {
        constexpr int kOffsets[3] = {180, 60, 300};
        int level = PureChannel(hue, kOffsets[channel]); // 0..60
        if (pale)
            level = (level + 60) / 2; // between the pure hue and the white of the same brightness
        const int value = (level * 255 * kShades[shade] + 3000) / 6000;
        rgb |= uint32_t(value) << (8 * channel);
    }
    return rgb;
}

constexpr uint32_t GreyEntry(int index) {
    return uint32_t((51 * 5 + (index - kFirstGrey) * 204 + 2) / 5) * 0x010101u;
}

const std::array<uint32_t, ZvPalette::kSize>& Entries() {
    static const auto entries = [] {
        std::array<uint32_t, ZvPalette::kSize> all{};
        for (int i = 0; i < ZvPalette::kSize; ++i)
            all[size_t(i)] = i < kFirstHue ? kBasicRGB[i] : i < kFirstGrey ? HueEntry(i) : GreyEntry(i);
        return all;
    }();
    return entries;
}

/// Lower case without blanks, American spelling taken for ours.
std::string Folded(const XStringW& name) {
    std::string folded;
    for (const char c : name.ToUtf8())
        if (c != ' ' && c != '\t')
            folded += char(std::tolower(static_cast<unsigned char>(c)));
    for (size_t at = folded.find("gray"); at != std::string::npos; at = folded.find("gray", at))
        folded[at + 2] = 'e';
    return folded;
}

} // namespace

uint32_t ZvPalette::GetRGB(int index) {
    return Entries()[size_t(index >= 0 && index < kSize ? index : 7)];
}

XStringW ZvPalette::GetName(int index) {
    if (index < 0 || index >= kSize)
        index = 7;
    if (index < kFirstHue)
        return ZvStrings::GetW(ZvStr::ColorBlack + index);
    if (index >= kFirstGrey)
        return XStringW::Format(ZvStrings::Get(ZvStr::ColorGrey), index - kFirstGrey + 1);
    return XStringW::Format(ZvStrings::Get(index % 2 ? ZvStr::ColorHuePale : ZvStr::ColorHue),
                            ZvStrings::Get(ZvStr::HueRed + index / 10 - 1), index % 10 / 2 + 1);
}

int ZvPalette::NameToIndex(const XStringW& name) {
    const std::string wanted = Folded(name);
    if (wanted.empty())
        return -1;
    for (int i = 0; i < kSize; ++i) {
        const std::string entry = Folded(GetName(i));
        // A hue by itself is its brightest shade.
        if (entry == wanted || (i >= kFirstHue && i < kFirstGrey && i % 10 == 0 && entry == wanted + "1"))
            return i;
    }
    return -1;
}

int ZvPalette::Nearest(uint32_t rgb) {
    int best = 0;
    int least = 4 * 255 * 255;
    for (int i = 0; i < kSize; ++i) {
        int distance = 0;
        for (const int shift : {0, 8, 16}) {
            const int d = int(rgb >> shift & 255) - int(Entries()[size_t(i)] >> shift & 255);
            distance += d * d;
        }
        if (distance < least)
            least = distance, best = i;
    }
    return best;
}
