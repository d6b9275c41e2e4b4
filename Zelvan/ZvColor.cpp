#include "Zelvan/ZvColor.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvPalette.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvSwatch.h"
#include "Zelvan/ZvTextScan.h"
#include "ZvCore/IFile.h"
#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr uint32_t kOpaque = 0xFF000000;

uint8_t ToByte(float unit) {
    return uint8_t(std::lround((unit > 0 ? std::min(unit, 1.0f) : 0.0f) * 255)); // not a number gives 0
}

struct Hsv {
    float hue, saturation, value;
};

/// A. R. Smith, "Color Gamut Transform Pairs", SIGGRAPH 1978; hue 0..1.
Hsv ToHsv(uint32_t rgb) {
    const float r = float(rgb & 255) / 255, g = float(rgb >> 8 & 255) / 255, b = float(rgb >> 16 & 255) / 255;
    const float most = std::max({r, g, b}), span = most - std::min({r, g, b});
    if (span == 0)
        return {0, 0, most};
    float sextant = most == r ? (g - b) / span : most == g ? 2 + (b - r) / span : 4 + (r - g) / span;
    if (sextant < 0)
        sextant += 6;
    return {sextant / 6, span / most, most};
}

int ToStep(float unit) {
    return int(std::lround(unit * 255));
}

} // namespace

ZvColor::ZvColor(const Vec4f& rgba)
    : ZvColor(ToByte(rgba.x), ToByte(rgba.y), ToByte(rgba.z), ToByte(rgba.w)) {}

void ZvColor::SetAlpha(uint8_t alpha) {
    const uint32_t rgb = IsByLayer() || IsByBlock() ? 0 : GetRGB();
    *this = ZvColor(kRGBA, rgb | uint32_t(alpha) << 24);
}

uint32_t ZvColor::GetRGB() const {
    return IsIndexed() ? ZvPalette::GetRGB(m_index) : m_value & 0x00FFFFFF;
}

uint32_t ZvColor::GetRGBA() const {
    return IsIndexed() || IsRGB() ? GetRGB() | kOpaque : m_value;
}

uint32_t ZvColor::GetARGB() const {
    const uint32_t c = GetRGBA();
    return (c & 0xFF00FF00) | (c & 255) << 16 | (c >> 16 & 255);
}

ColorBGRA ZvColor::GetBGRA() const {
    const uint32_t c = GetRGBA();
    return {uint8_t(c >> 16), uint8_t(c >> 8), uint8_t(c), uint8_t(c >> 24)};
}

ColorBGRA ZvColor::GetPBGRA() const {
    const ColorBGRA c = GetBGRA();
    const auto times = [&](uint32_t channel) {
        const uint32_t t = channel * c.a + 128;
        return uint8_t((t + (t >> 8)) >> 8);
    };
    return {times(c.b), times(c.g), times(c.r), c.a};
}

Vec4f ZvColor::GetRGBAFloat() const {
    const uint32_t c = GetRGBA();
    return {float(c & 255) / 255, float(c >> 8 & 255) / 255, float(c >> 16 & 255) / 255,
            float(c >> 24) / 255};
}

int ZvColor::GetGrey() const {
    return (GetRed() + GetGreen() + GetBlue()) / 3;
}

int ZvColor::GetHue() const {
    return ToStep(ToHsv(GetRGB()).hue);
}

int ZvColor::GetSaturation() const {
    return ToStep(ToHsv(GetRGB()).saturation);
}

int ZvColor::GetBrightness() const {
    return ToStep(ToHsv(GetRGB()).value);
}

Vec4f ZvColor::GetHSBA() const {
    const Hsv hsv = ToHsv(GetRGB());
    return {hsv.hue, hsv.saturation, hsv.value, float(GetAlpha()) / 255};
}

ZvColor ZvColor::FromHSBA(const Vec4f& hsba) {
    const float sextant = std::isfinite(hsba.x) ? (hsba.x - std::floor(hsba.x)) * 6 : 0;
    const float saturation = std::clamp(hsba.y, 0.0f, 1.0f), value = std::clamp(hsba.z, 0.0f, 1.0f);
    const auto channel = [&](float shift) {
        const float k = std::fmod(shift + sextant, 6.0f);
        return value - value * saturation * std::clamp(std::min(k, 4 - k), 0.0f, 1.0f);
    };
    return ZvColor(Vec4f{channel(5), channel(3), channel(1), hsba.w});
}

bool ZvColor::Resolve(const ZvEntity* entity, ZvColor& out) const {
    if (IsByLayer()) {
        const ZvLayer* layer = entity ? entity->GetLayer() : nullptr;
        if (!layer)
            return false;
        out = layer->GetColor();
    } else {
        out = IsByBlock() ? DefaultValue() : *this;
    }
    return true;
}

XStringW ZvColor::ToString() const {
    if (IsIndexed())
        return XStringW::Format("I:%d", int(m_index));
    switch (m_index) {
    case kRGB:
        return XStringW::Format("RGB:%X", unsigned(m_value & 0x00FFFFFF));
    case kRGBA:
        return XStringW::Format("RGBA:%X", unsigned(m_value));
    case kByLayer:
        return u"ByLayer";
    case kByBlock:
        return u"ByBlock";
    default:
        return {};
    }
}

bool ZvColor::Parse(const XStringW& text) {
    auto scan = ZvTextScan::Upper(text);
    int index = 0;
    uint32_t value = 0;
    if (scan.AtEnd())
        SetNull();
    else if (scan.Whole("BYLAYER"))
        SetByLayer();
    else if (scan.Whole("BYBLOCK"))
        SetByBlock();
    else if (scan.Literal("I:")) {
        if (!scan.Int(index) || !scan.AtEnd() || index < 0 || index > INT16_MAX)
            return false;
        SetIndex(index);
    } else if (scan.Literal("RGB:")) {
        if (!scan.Hex(value) || !scan.AtEnd())
            return false;
        SetRGB(value);
    } else if (scan.Literal("RGBA:")) {
        if (!scan.Hex(value) || !scan.AtEnd())
            return false;
        SetRGBA(value);
    } else {
        index = ZvPalette::NameToIndex(text);
        if (index < 0)
            return false;
        SetIndex(index);
    }
    return true;
}

ZvColor ZvColor::FromString(const XStringW& text) {
    ZvColor color;
    return color.Parse(text) ? color : Null();
}

bool ZvColor::ParseHex(const XStringW& text) {
    std::string digits;
    for (const char c : text.Trimmed().ToUtf8()) {
        if (std::strchr("0123456789abcdefABCDEF", c) && c)
            digits += c;
        else if (c != '.' && c != ' ' && !(c == '#' && digits.empty()))
            return false;
    }
    if (digits.size() < 6)
        return false;
    const auto byteAt = [&](size_t at) { return uint8_t(std::stoi(digits.substr(at, 2), nullptr, 16)); };
    if (digits.size() < 8)
        SetRGB(byteAt(0), byteAt(2), byteAt(4));
    else
        SetRGBA(byteAt(0), byteAt(2), byteAt(4), byteAt(6));
    return true;
}

XStringW ZvColor::ToStringRGBAFloat() const {
    const Vec4f c = GetRGBAFloat();
    return XStringW::Format("%.3g %.3g %.3g %.3g", double(c.x), double(c.y), double(c.z), double(c.w));
}

ZvColor ZvColor::FromStringRGBAFloat(const XStringW& text) {
    ZvTextScan scan(text.ToUtf8());
    double c[4];
    for (double& channel : c)
        if (!scan.Number(channel))
            return Null();
    return ZvColor(Vec4f{float(c[0]), float(c[1]), float(c[2]), float(c[3])});
}

XStringW ZvColor::GetTextDesc(bool shortForm) const {
    if (IsByLayer())
        return ZvStrings::GetW(ZvStr::ByLayer);
    if (IsByBlock())
        return ZvStrings::GetW(ZvStr::ByBlock);
    if (!IsIndexed() && !IsRGB() && !IsRGBA())
        return {};
    const char* format = IsRGBA()
                             ? (shortForm ? "R:%u G:%u B:%u A:%u" : "Red:%u  Green:%u  Blue:%u  Alpha:%u")
                             : (shortForm ? "R:%u G:%u B:%u" : "Red: %u  Green: %u  Blue: %u");
    return XStringW::Format(format, unsigned(GetRed()), unsigned(GetGreen()), unsigned(GetBlue()),
                            unsigned(GetAlpha()));
}

XStringW ZvColor::GetTextDescHex() const {
    return XStringW::Format(IsRGBA() ? "%02X.%02X.%02X %02X" : "%02X.%02X.%02X", unsigned(GetRed()),
                            unsigned(GetGreen()), unsigned(GetBlue()), unsigned(GetAlpha()));
}

bool ZvColor::NativeOut(ZvNativeDesc& desc) const {
    return desc.File().WriteValue(m_value) && desc.File().WriteValue(m_index);
}

bool ZvColor::NativeIn(ZvNativeDesc& desc) {
    uint32_t value = 0;
    int16_t index = 0;
    if (!desc.File().ReadValue(value) || !desc.File().ReadValue(index))
        return false;
    *this = ZvColor(index, value);
    return true;
}

void ZvColor::DrawUI(IZvSurface& surface, const Rect2I& area, const ZvEntity* entity) const {
    ZvSwatch swatch(surface, area);
    ZvColor shown = *this;
    if (IsNull() || !Resolve(entity, shown) || shown.IsByLayer()) {
        swatch.Box({});
        if (IsNull())
            swatch.CrossOut();
    } else {
        swatch.Box(ZvSwatch::Solid(shown.IsByBlock() ? DefaultValue().GetARGB() : shown.GetARGB()));
    }
    if (IsIndexed() && m_index < 256)
        swatch.Mark(XStringW::Format("%d", int(m_index)));
    swatch.Label(IsIndexed() ? ZvPalette::GetName(m_index) : GetTextDesc(true));
}

bool ZvColor_IO::Write(ZvCore::IFile& file, int version, const ZvColor& color) {
    uint8_t bytes[kSize];
    Encode(bytes, version, color);
    return file.Write(bytes, kSize) == kSize;
}

bool ZvColor_IO::Read(ZvCore::IFile& file, int version, ZvColor& color) {
    uint8_t bytes[kSize];
    if (file.Read(bytes, kSize) != kSize)
        return false;
    color = Decode(bytes, version);
    return true;
}

ZvColor ZvColor_IO::Decode(const uint8_t* bytes, int version) {
    uint32_t value = 0;
    int16_t index = 0;
    std::memcpy(&value, bytes + (version >= 1050 ? 0 : 2), 4);
    std::memcpy(&index, bytes + (version >= 1050 ? 4 : 0), 2);
    return {index, value};
}

void ZvColor_IO::Encode(uint8_t* bytes, int version, const ZvColor& color) {
    const uint32_t value = color.NativeRGB();
    const int16_t index = int16_t(color.GetIndex());
    std::memcpy(bytes + (version >= 1050 ? 0 : 2), &value, 4);
    std::memcpy(bytes + (version >= 1050 ? 4 : 0), &index, 2);
}
