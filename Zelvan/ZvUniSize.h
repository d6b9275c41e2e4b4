#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <cstdint>

class ZvNativeDesc;

/// Size of a symbol or of text as one encoded number: world units, device units (points, millimetres of the
/// view, pixels), or a reserved code. 4 bytes.
///   -1 null; -2 by block; -3 by layer; >= 0 world; [-110, -10] points; [-1111, -111] view millimetres;
///   [-3112, -1112] pixels.
class ZV_API ZvUniSize {
public:
    enum TypeFlags : uint32_t {
        kNone = 0, ///< null, or a number that means nothing
        kByBlock = 1,
        kByLayer = 2,
        kWorld = 4,
        kPoints = 8,
        kViewMM = 16,
        kPixels = 32,
    };
    static constexpr double MaxWorldSize = 3.4028235e38;
    static constexpr double MinPointSize = 0.1, MaxPointSize = 10000;
    static constexpr double MinViewMMSize = 0.01, MaxViewMMSize = 10000;
    static constexpr double MinPixelSize = 0.01, MaxPixelSize = 10000;

    /// Null.
    constexpr ZvUniSize() = default;
    static constexpr ZvUniSize FromRaw(float stored) {
        ZvUniSize s;
        s.m_value = stored;
        return s;
    }
    static constexpr ZvUniSize Null() { return {}; }
    static constexpr ZvUniSize ByBlock() { return FromRaw(-2); }
    static constexpr ZvUniSize ByLayer() { return FromRaw(-3); }
    /// All clamp to the range of their unit; not a number gives the least size.
    static ZvUniSize World(double size);
    static ZvUniSize Points(double pt);
    static ZvUniSize ViewMM(double mm);
    static ZvUniSize Pixels(double px);

    constexpr float Raw() const { return m_value; }
    constexpr void SetRaw(float stored) { m_value = stored; }
    constexpr TypeFlags Type() const {
        const float v = m_value;
        return v >= 0                     ? kWorld
               : v == -2                  ? kByBlock
               : v == -3                  ? kByLayer
               : v <= -10 && v >= -110    ? kPoints
               : v <= -111 && v >= -1111  ? kViewMM
               : v <= -1112 && v >= -3112 ? kPixels
                                          : kNone;
    }
    constexpr bool IsNull() const { return m_value == -1; }
    constexpr bool IsByBlock() const { return m_value == -2; }
    constexpr bool IsByLayer() const { return m_value == -3; }
    constexpr bool IsWorld() const { return m_value >= 0; }
    constexpr bool IsPoints() const { return Type() == kPoints; }
    constexpr bool IsViewMM() const { return Type() == kViewMM; }
    constexpr bool IsPixels() const { return Type() == kPixels; }

    void SetNull() { m_value = -1; }
    void SetByBlock() { m_value = -2; }
    void SetByLayer() { m_value = -3; }
    void SetWorld(double size) { *this = World(size); }
    void SetPoints(double pt) { *this = Points(pt); }
    void SetViewMM(double mm) { *this = ViewMM(mm); }
    void SetPixels(double px) { *this = Pixels(px); }

    /// The size in the unit that is stored; 0 for codes.
    double GetRealValue() const;
    /// Stores another size in the same unit; codes stay.
    void SetRealValue(double size);
    ZvUniSize& operator*=(double factor);

    friend constexpr bool operator==(const ZvUniSize& a, const ZvUniSize& b) {
        return a.m_value == b.m_value;
    }
    /// Order of the stored numbers.
    friend constexpr bool operator<(const ZvUniSize& a, const ZvUniSize& b) { return a.m_value < b.m_value; }

    /// "Null", "ByBlock", "ByLayer", "Wo:%.6g", "Po:%.1f", "MM:%.2f", "Pi:%.2f".
    XStringW ToString() const;
    /// Reads what ToString writes, in any case. False, and nothing changed, for other text.
    bool Parse(const XStringW& text);
    /// Null for text that does not parse.
    static ZvUniSize FromString(const XStringW& text);
    /// "By Block", "By Layer", "%.1f pt", "%.2f vmm", "%.2f px", "%.6g" (world units); empty for null.
    XStringW GetTextDesc() const;

    /// Both true on success; a failed read leaves the value as it was.
    bool NativeOut(ZvNativeDesc& desc) const;
    bool NativeIn(ZvNativeDesc& desc);

private:
    float m_value = -1;
};
