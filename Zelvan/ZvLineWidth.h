#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"

class IZvSurface;
class ZvEntity;
class ZvNativeDesc;

/// Width of a line as one encoded number: thin (one device pixel), world units, device units (pixels, points,
/// millimetres of the viewport), by layer, by block, null. 4 bytes.
///   0 thin; > 0 world; -1 by layer; -2 by block; -7 null;
///   [-4, -3) pixels; [-3, -2) viewport millimetres; [-10009, -9] points.
/// Anything else means nothing and draws thin.
class ZV_API ZvLineWidth {
public:
    static constexpr float kByLayer = -1.0f, kByBlock = -2.0f, kNull = -7.0f;
    /// Pixels and viewport millimetres.
    static constexpr double MaxPixelSize = 999.999;
    static constexpr double MinPointSize = 0.1, MaxPointSize = 10000.0;
    static constexpr double PointStart = -9.0, PointEnd = -10008.9;

    /// Thin.
    constexpr ZvLineWidth() = default;
    static constexpr ZvLineWidth FromRaw(float stored) {
        ZvLineWidth w;
        w.m_value = stored;
        return w;
    }
    static constexpr ZvLineWidth Thin() { return {}; }
    static constexpr ZvLineWidth ByLayer() { return FromRaw(kByLayer); }
    static constexpr ZvLineWidth ByBlock() { return FromRaw(kByBlock); }
    static constexpr ZvLineWidth Null() { return FromRaw(kNull); }
    /// World units; negative gives thin.
    static ZvLineWidth World(double width);
    /// The device units clamp to their range.
    static ZvLineWidth Pixels(double px);
    static ZvLineWidth ViewportMM(double mm);
    static ZvLineWidth Points(double pt);

    constexpr float Raw() const { return m_value; }
    constexpr void SetRaw(float stored) { m_value = stored; }
    constexpr bool IsThin() const { return m_value == 0; }
    constexpr bool IsWorld() const { return m_value > 0; }
    constexpr bool IsByLayer() const { return m_value == kByLayer; }
    constexpr bool IsByBlock() const { return m_value == kByBlock; }
    constexpr bool IsNull() const { return m_value == kNull; }
    constexpr bool IsPixels() const { return m_value >= -4.0f && m_value < -3.0f; }
    constexpr bool IsViewportMM() const { return m_value >= -3.0f && m_value < -2.0f; }
    /// The widest point width, 10000, lies a little beyond PointEnd and counts.
    constexpr bool IsPoints() const { return m_value <= -9.0f && m_value >= -10009.0f; }

    void SetThin() { m_value = 0; }
    void SetByLayer() { m_value = kByLayer; }
    void SetByBlock() { m_value = kByBlock; }
    void SetNull() { m_value = kNull; }
    void SetWorld(double width) { *this = World(width); }
    void SetPixels(double px) { *this = Pixels(px); }
    void SetViewportMM(double mm) { *this = ViewportMM(mm); }
    void SetPoints(double pt) { *this = Points(pt); }

    /// 0 when the width is of another kind.
    double GetWorld() const { return IsWorld() ? m_value : 0; }
    double GetPixels() const { return IsPixels() ? InternalToPixels(m_value) : 0; }
    double GetViewportMM() const { return IsViewportMM() ? InternalToViewportMM(m_value) : 0; }
    double GetPoints() const { return IsPoints() ? InternalToPoints(m_value) : 0; }

    static float PixelsToInternal(double px);
    static constexpr double InternalToPixels(double stored) { return (stored + 4) * 1000; }
    static float ViewportMMToInternal(double mm);
    static constexpr double InternalToViewportMM(double stored) { return (stored + 3) * 1000; }
    static float PointsToInternal(double pt);
    static constexpr double InternalToPoints(double stored) { return -9 - stored; }

    /// Only world widths change.
    void Scale(double factor);
    /// Turns pixels (96 to the inch), points (72 to the inch) and viewport millimetres into world units;
    /// `factor` is world units per metre. Other kinds stay.
    void BakeWorld(double factor);
    /// What to draw with. By layer: the layer's; false, `out` untouched, without an entity or layer. By
    /// block: thin.
    bool Resolve(const ZvEntity* entity, ZvLineWidth& out) const;

    friend constexpr bool operator==(const ZvLineWidth& a, const ZvLineWidth& b) {
        return a.m_value == b.m_value;
    }

    /// "ByBlock", "ByLayer", "World:0" (thin and codes that mean nothing), "World:%f", "Points:%.1f",
    /// "ViewMM:%.1f", "Pixels:%.1f".
    XStringW ToString() const;
    /// Reads what ToString writes and "Thin", in any case; only the first 63 characters count. False, and
    /// nothing changed, for other text.
    bool Parse(const XStringW& text);
    /// Thin for text that does not parse.
    static ZvLineWidth FromString(const XStringW& text);
    /// "By Block", "By Layer", "%.1f pt", "%.1f mm", "%.1f pixels", "%.4f" (world units; thin is 0); empty
    /// for null.
    XStringW GetTextDesc() const;

    /// Both true on success; a failed read leaves the value as it was.
    bool NativeOut(ZvNativeDesc& desc) const;
    bool NativeIn(ZvNativeDesc& desc);

    /// A piece of line in this width with its text, inside `area` (pixels).
    void DrawUI(IZvSurface& surface, const Rect2I& area) const;

private:
    float m_value = 0;
};
