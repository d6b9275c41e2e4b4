#pragma once
#include "Zelvan/ZvColor.h"

class ZvDrawing;
class ZvUsageTable;

/// How areas are filled: a colour and a style. Styles from 0 on are indices into the drawing's texture table.
/// 8 bytes.
class ZV_API ZvBrush {
public:
    enum Style : int16_t {
        kEmpty = -1,
        kByBlock = -2,
        kByLayer = -3,
        kSolid = -4,
        kCrossHatch = -5,
        kNull = -100,
    };

    /// Empty, colour index 7.
    constexpr ZvBrush() = default;
    constexpr ZvBrush(const ZvColor& color, int style) : m_style(int16_t(style)) { SetColor(color); }

    static constexpr ZvBrush Empty() { return {}; }
    static constexpr ZvBrush ByBlock() { return {ZvColor::ByBlock(), kByBlock}; }
    static constexpr ZvBrush ByLayer() { return {ZvColor::ByLayer(), kByLayer}; }
    static constexpr ZvBrush Solid(const ZvColor& color) { return {color, kSolid}; }
    static constexpr ZvBrush CrossHatch(const ZvColor& color) { return {color, kCrossHatch}; }
    static constexpr ZvBrush FromTexture(int index, const ZvColor& color = ZvColor::DefaultValue()) {
        return {color, index};
    }
    static constexpr ZvBrush Null() { return {ZvColor::Null(), kNull}; }

    constexpr ZvColor GetColor() const { return {m_index, m_value}; }
    constexpr void SetColor(const ZvColor& color) {
        m_value = color.NativeRGB();
        m_index = int16_t(color.GetIndex());
    }
    constexpr int GetStyle() const { return m_style; }
    constexpr void SetStyle(int style) { m_style = int16_t(style); }

    constexpr bool IsTexture() const { return m_style >= 0; }
    constexpr bool IsEmpty() const { return m_style == kEmpty; }
    constexpr bool IsByBlock() const { return m_style == kByBlock; }
    constexpr bool IsByLayer() const { return m_style == kByLayer; }
    constexpr bool IsSolid() const { return m_style == kSolid; }
    constexpr bool IsCrossHatch() const { return m_style == kCrossHatch; }
    constexpr bool IsNull() const { return m_style == kNull; }
    /// Texture index, -1 for other styles.
    constexpr int GetTexture() const { return IsTexture() ? m_style : -1; }

    /// Those without a colour keep the colour.
    constexpr void SetTexture(int index) { m_style = int16_t(index); }
    constexpr void SetEmpty() { m_style = kEmpty; }
    constexpr void SetSolid() { m_style = kSolid; }
    constexpr void SetSolid(const ZvColor& color) { *this = Solid(color); }
    constexpr void SetCrossHatch() { m_style = kCrossHatch; }
    constexpr void SetByBlock() { *this = ByBlock(); }
    constexpr void SetByLayer() { *this = ByLayer(); }
    constexpr void SetNull() { *this = Null(); }

    /// Style in bits 48-63, colour index in 32-47, colour value in 0-31.
    constexpr int64_t ToInt64() const {
        return int64_t(uint64_t(uint16_t(m_style)) << 48 | uint64_t(uint16_t(m_index)) << 32 | m_value);
    }
    static constexpr ZvBrush FromInt64(int64_t packed) {
        return {ZvColor(uint64_t(packed)), int16_t(uint64_t(packed) >> 48)};
    }

    friend constexpr bool operator==(const ZvBrush& a, const ZvBrush& b) {
        return a.m_style == b.m_style && a.GetColor() == b.GetColor();
    }

    /// What to fill with. A brush by layer becomes the brush of the entity's layer; false, `out` untouched,
    /// when there is no entity or layer. By block becomes solid in palette index 7. Of any other brush the
    /// colour is resolved.
    bool Resolve(const ZvEntity* entity, ZvBrush& out) const;

    /// "Empty", "ByBlock", "ByLayer", "Null", "CrossHatch", "Solid:<colour>", "Texture:<index>:<colour>".
    XStringW ToString() const;
    /// Reads what ToString writes, in any case; the colour after a style may be missing and then stays.
    /// False, and nothing changed, for other text.
    bool Parse(const XStringW& text);
    /// The default brush (empty) for text that does not parse.
    static ZvBrush FromString(const XStringW& text);
    /// As ToString, textures by their record's name: Texture:"<name>":<colour>. "Null" without a drawing and
    /// for an index that names no record.
    XStringW ToStringPortable(const ZvDrawing* drawing) const;
    /// Null for a texture name that the drawing does not have.
    static ZvBrush FromStringPortable(const XStringW& text, const ZvDrawing* drawing);

    /// Both true on success; a failed read leaves the value as it was.
    bool NativeOut(ZvNativeDesc& desc) const;
    /// `strict`: a texture index that the load's index map does not know becomes the empty style; else it is
    /// kept.
    bool NativeIn(ZvNativeDesc& desc, bool strict = false);

    /// Counts a use of the texture. An index outside the drawing's texture table is reported as error 14.
    void RecordUse(ZvUsageTable& usage, const ZvDrawing* drawing) const;
    /// True unless the style is a texture that the drawing does not have or that is not loaded.
    bool CheckResolve(const ZvDrawing* drawing) const;

    /// A swatch with its text, inside `area` (pixels).
    void DrawUI(IZvSurface& surface, const Rect2I& area, const ZvDrawing* drawing = nullptr) const;

private:
    uint32_t m_value = 0;
    int16_t m_index = ZvColor::kDefaultIndex;
    int16_t m_style = kEmpty;
};

/// A brush as fixed-layout records of files hold it. From version 1050 on: colour value, colour index, style;
/// before: style, colour index, colour value. Texture indices are the file's.
struct ZV_API ZvBrush_IO {
    static constexpr size_t kSize = 8;
    static bool Write(ZvCore::IFile& file, int version, const ZvBrush& brush);
    static bool Read(ZvCore::IFile& file, int version, ZvBrush& brush);
    /// The same from `kSize` bytes in memory.
    static ZvBrush Decode(const uint8_t* bytes, int version);
    static void Encode(uint8_t* bytes, int version, const ZvBrush& brush);
};
