#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <cstdint>

class IZvSurface;
class ZvDrawing;
class ZvEntity;
class ZvNativeDesc;
class ZvUsageTable;

/// Dash pattern of a line: an index into the drawing's line type table, or a reserved code. The codes are
/// this class's own: by layer and by block differ from those of ZvColor. 2 bytes.
class ZV_API ZvLineType {
public:
    enum Code : int16_t { kContinuous = -1, kByLayer = -2, kByBlock = -3, kNull = -10 };

    /// Continuous.
    constexpr ZvLineType() = default;
    /// An index or a code.
    constexpr explicit ZvLineType(int code) : m_code(int16_t(code)) {}

    static constexpr ZvLineType Continuous() { return ZvLineType(kContinuous); }
    static constexpr ZvLineType ByLayer() { return ZvLineType(kByLayer); }
    static constexpr ZvLineType ByBlock() { return ZvLineType(kByBlock); }
    static constexpr ZvLineType Null() { return ZvLineType(kNull); }

    constexpr bool IsIndexed() const { return m_code >= 0; }
    constexpr bool IsContinuous() const { return m_code == kContinuous; }
    constexpr bool IsByLayer() const { return m_code == kByLayer; }
    constexpr bool IsByBlock() const { return m_code == kByBlock; }
    constexpr bool IsNull() const { return m_code == kNull; }
    /// Table index, -1 when there is none.
    constexpr int GetIndex() const { return IsIndexed() ? m_code : -1; }

    constexpr void SetIndex(int index) { m_code = int16_t(index); }
    constexpr void SetContinuous() { m_code = kContinuous; }
    constexpr void SetByLayer() { m_code = kByLayer; }
    constexpr void SetByBlock() { m_code = kByBlock; }
    constexpr void SetNull() { m_code = kNull; }
    /// The raw code.
    constexpr int16_t hardGet() const { return m_code; }
    constexpr void hardSet(int16_t code) { m_code = code; }

    friend constexpr bool operator==(const ZvLineType&, const ZvLineType&) = default;

    /// What to draw with. By layer: the layer's; false, `out` untouched, without an entity or layer. By
    /// block: continuous.
    bool Resolve(const ZvEntity* entity, ZvLineType& out) const;

    /// "ByLayer", "ByBlock", "Continuous", "I:3"; "Null" for null.
    XStringW ToString() const;
    /// Reads what ToString writes, in any case. False, and nothing changed, for other text.
    bool Parse(const XStringW& text);
    /// Continuous for text that does not parse.
    static ZvLineType FromString(const XStringW& text);
    /// As ToString, records by their name. "Null" without a drawing; an index that names no record is
    /// reported and gives "Null".
    XStringW ToStringPortable(const ZvDrawing* drawing) const;
    /// Null for a name that the drawing does not have.
    static ZvLineType FromStringPortable(const XStringW& text, const ZvDrawing* drawing);
    /// "By Layer", "By Block", "Continuous", the record's name, or "Unknown".
    XStringW GetTextDesc(const ZvDrawing* drawing) const;

    /// Both true on success; a failed read leaves the value as it was.
    bool NativeOut(ZvNativeDesc& desc) const;
    /// `strict`: an index that the load's index map does not know becomes continuous; else it is kept.
    bool NativeIn(ZvNativeDesc& desc, bool strict = false);
    /// Counts a use of the table index; nothing for codes.
    void RecordUse(ZvUsageTable& usage) const;

    /// A piece of line in this type with its text, inside `area` (pixels).
    void DrawUI(IZvSurface& surface, const Rect2I& area, const ZvDrawing* drawing = nullptr) const;

private:
    int16_t m_code = kContinuous;
};
