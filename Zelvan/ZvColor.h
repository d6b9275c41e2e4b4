#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <cstdint>

class IZvSurface;
class ZvEntity;
class ZvNativeDesc;
namespace ZvCore {
class IFile;
}

/// One pixel as bytes in memory order blue, green, red, alpha (32-bit images).
struct ColorBGRA {
    uint8_t b = 0, g = 0, r = 0, a = 0;
    friend constexpr bool operator==(const ColorBGRA&, const ColorBGRA&) = default;
};

/// A colour: palette index, true colour with or without alpha, or one of the reserved meanings by layer, by
/// block, null (unset). The number keeps red in bits 0-7, green in 8-15, blue in 16-23, alpha in 24-31.
class ZV_API ZvColor {
public:
    /// Values of the index field below 0.
    enum Mode : int16_t { kRGB = -1, kRGBA = -2, kByLayer = -3, kByBlock = -4, kNull = -5 };
    static constexpr uint32_t kUnsetValue = 0x00FFFFFF;
    static constexpr int kDefaultIndex = 7;

    /// Null.
    constexpr ZvColor() = default;
    constexpr ZvColor(uint8_t r, uint8_t g, uint8_t b) : m_value(Pack(r, g, b, 0)), m_index(kRGB) {}
    constexpr ZvColor(uint8_t r, uint8_t g, uint8_t b, uint8_t a)
        : m_value(Pack(r, g, b, a)), m_index(kRGBA) {}
    /// The value is 0.
    constexpr explicit ZvColor(int index) : m_value(0), m_index(int16_t(index)) {}
    constexpr ZvColor(int index, uint32_t value) : m_value(value), m_index(int16_t(index)) {}
    /// Inverse of To64.
    constexpr explicit ZvColor(uint64_t packed) : m_value(uint32_t(packed)), m_index(int16_t(packed >> 32)) {}
    /// r, g, b, a in 0..1 (clamped; not a number counts as 0), rounded to the nearest of 256 steps.
    explicit ZvColor(const Vec4f& rgba);
    constexpr explicit ZvColor(ColorBGRA c) : ZvColor(c.r, c.g, c.b, c.a) {}

    static constexpr ZvColor ByLayer() { return {kByLayer, kUnsetValue}; }
    static constexpr ZvColor ByBlock() { return {kByBlock, kUnsetValue}; }
    static constexpr ZvColor Null() { return {}; }
    /// RGBA with every byte 0.
    static constexpr ZvColor Transparent() { return {kRGBA, 0}; }
    /// Alpha and reserved bits of the argument are dropped.
    static constexpr ZvColor FromCOLORREF(uint32_t rgb) { return {kRGB, rgb & 0x00FFFFFF}; }
    static constexpr ZvColor DefaultValue() { return ZvColor(kDefaultIndex); }

    constexpr int GetIndex() const { return m_index; }
    /// The stored number as it is, whatever the mode.
    constexpr uint32_t NativeRGB() const { return m_value; }
    constexpr uint64_t To64() const { return uint64_t(uint16_t(m_index)) << 32 | m_value; }

    constexpr bool IsIndexed() const { return m_index >= 0; }
    constexpr bool IsRGB() const { return m_index == kRGB; }
    constexpr bool IsRGBA() const { return m_index == kRGBA; }
    constexpr bool IsByLayer() const { return m_index == kByLayer; }
    constexpr bool IsByBlock() const { return m_index == kByBlock; }
    constexpr bool IsNull() const { return m_index == kNull; }

    constexpr void SetIndex(int index) { *this = ZvColor(index); }
    constexpr void SetRGB(uint8_t r, uint8_t g, uint8_t b) { *this = ZvColor(r, g, b); }
    /// Bits 24-31 are dropped.
    constexpr void SetRGB(uint32_t rgb) { *this = FromCOLORREF(rgb); }
    constexpr void SetRGBA(uint8_t r, uint8_t g, uint8_t b, uint8_t a) { *this = ZvColor(r, g, b, a); }
    constexpr void SetRGBA(uint32_t rgba) { *this = ZvColor(kRGBA, rgba); }
    constexpr void SetByLayer() { *this = ByLayer(); }
    constexpr void SetByBlock() { *this = ByBlock(); }
    constexpr void SetNull() { *this = Null(); }
    /// By layer and by block become black with that alpha; anything else keeps its red, green and blue.
    void SetAlpha(uint8_t alpha);

    /// Red, green and blue; bits 24-31 are 0. An index gives its palette entry. By layer, by block and null
    /// give the stored bits: resolve first.
    uint32_t GetRGB() const;
    /// As GetRGB with alpha: 255 for an index and for RGB, the stored one otherwise.
    uint32_t GetRGBA() const;
    uint8_t GetRed() const { return uint8_t(GetRGB()); }
    uint8_t GetGreen() const { return uint8_t(GetRGB() >> 8); }
    uint8_t GetBlue() const { return uint8_t(GetRGB() >> 16); }
    uint8_t GetAlpha() const { return uint8_t(GetRGBA() >> 24); }
    /// Number with blue in bits 0-7, green 8-15, red 16-23, alpha 24-31 (surfaces and images take this).
    uint32_t GetARGB() const;
    ColorBGRA GetBGRA() const;
    /// Premultiplied by alpha.
    ColorBGRA GetPBGRA() const;
    /// r, g, b, a in 0..1.
    Vec4f GetRGBAFloat() const;
    int GetGrey() const;
    /// Hue, saturation and brightness of the HSV model, 0..255 each.
    int GetHue() const;
    int GetSaturation() const;
    int GetBrightness() const;
    /// Hue, saturation, brightness and alpha, 0..1 each.
    Vec4f GetHSBA() const;
    /// RGBA; the hue wraps round, the others are clamped.
    static ZvColor FromHSBA(const Vec4f& hsba);
    /// Sets the low three bits of red, green and blue.
    constexpr void Reduce() { m_value |= 0x07070707; }

    /// What to draw with. By layer: the colour of the entity's layer; false, `out` untouched, when there is
    /// no entity or layer. By block: palette index 7. Anything else: itself.
    bool Resolve(const ZvEntity* entity, ZvColor& out) const;

    /// The value counts in RGB and RGBA only.
    friend constexpr bool operator==(const ZvColor& a, const ZvColor& b) {
        return a.m_index == b.m_index && (a.m_value == b.m_value || !(a.IsRGB() || a.IsRGBA()));
    }

    /// "ByLayer", "ByBlock", "I:7", "RGB:FF", "RGBA:800000FF" (hexadecimal of the number); null is the empty
    /// text.
    XStringW ToString() const;
    /// Reads what ToString writes and the palette's colour names, in any case. False, and nothing changed,
    /// for other text.
    bool Parse(const XStringW& text);
    /// Null for text that does not parse.
    static ZvColor FromString(const XStringW& text);
    /// "RRGGBB" (RGB) or "RRGGBBAA" (RGBA), either case, an optional "#" in front, points and blanks between
    /// digits skipped; digits beyond are ignored. False, and nothing changed, with fewer than 6 digits or
    /// another character.
    bool ParseHex(const XStringW& text);
    /// "%.3g %.3g %.3g %.3g": r, g, b, a in 0..1.
    XStringW ToStringRGBAFloat() const;
    /// Null when the text does not begin with four numbers.
    static ZvColor FromStringRGBAFloat(const XStringW& text);
    /// For lists and tool tips; empty for null.
    XStringW GetTextDesc(bool shortForm = false) const;
    /// "1F.00.FF", with alpha "1F.00.FF 80".
    XStringW GetTextDescHex() const;

    /// Both true on success; a failed read leaves the value as it was.
    bool NativeOut(ZvNativeDesc& desc) const;
    bool NativeIn(ZvNativeDesc& desc);

    /// A swatch with its text, inside `area` (pixels). By layer shows the colour of `entity`'s layer where
    /// there is one.
    void DrawUI(IZvSurface& surface, const Rect2I& area, const ZvEntity* entity = nullptr) const;

private:
    static constexpr uint32_t Pack(uint8_t r, uint8_t g, uint8_t b, uint8_t a) {
        return uint32_t(r) | uint32_t(g) << 8 | uint32_t(b) << 16 | uint32_t(a) << 24;
    }

    uint32_t m_value = kUnsetValue;
    int16_t m_index = kNull;
};

/// A colour as fixed-layout records of files hold it. From version 1050 on: value, index; before: index,
/// value.
struct ZV_API ZvColor_IO {
    static constexpr size_t kSize = 6;
    static bool Write(ZvCore::IFile& file, int version, const ZvColor& color);
    static bool Read(ZvCore::IFile& file, int version, ZvColor& color);
    /// The same from `kSize` bytes in memory.
    static ZvColor Decode(const uint8_t* bytes, int version);
    static void Encode(uint8_t* bytes, int version, const ZvColor& color);
};
