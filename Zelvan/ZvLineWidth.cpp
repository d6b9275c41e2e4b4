#include "Zelvan/ZvLineWidth.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvSwatch.h"
#include "Zelvan/ZvTextScan.h"
#include "ZvCore/IFile.h"
#include <algorithm>

namespace {

constexpr double kMetersPerInch = 0.0254;
constexpr double kPixelsPerInch = 96;
constexpr double kPointsPerInch = 72;
constexpr double kLargestFloat = 3.4028234663852886e38;

/// Not a number gives the least.
double Clamped(double value, double least, double most) {
    return value > least ? std::min(value, most) : least;
}

} // namespace

ZvLineWidth ZvLineWidth::World(double width) {
    return FromRaw(float(Clamped(width, 0, kLargestFloat)));
}

ZvLineWidth ZvLineWidth::Pixels(double px) {
    return FromRaw(PixelsToInternal(px));
}

ZvLineWidth ZvLineWidth::ViewportMM(double mm) {
    return FromRaw(ViewportMMToInternal(mm));
}

ZvLineWidth ZvLineWidth::Points(double pt) {
    return FromRaw(PointsToInternal(pt));
}

float ZvLineWidth::PixelsToInternal(double px) {
    return float(Clamped(px, 0, MaxPixelSize) * 0.001 - 4);
}

float ZvLineWidth::ViewportMMToInternal(double mm) {
    return float(Clamped(mm, 0, MaxPixelSize) * 0.001 - 3);
}

float ZvLineWidth::PointsToInternal(double pt) {
    return float(-9 - Clamped(pt, MinPointSize, MaxPointSize));
}

void ZvLineWidth::Scale(double factor) {
    if (IsWorld())
        SetWorld(double(m_value) * factor);
}

void ZvLineWidth::BakeWorld(double factor) {
    const double meters = IsPixels()       ? GetPixels() / kPixelsPerInch * kMetersPerInch
                          : IsPoints()     ? GetPoints() / kPointsPerInch * kMetersPerInch
                          : IsViewportMM() ? GetViewportMM() / 1000
                                           : -1;
    if (meters >= 0)
        SetWorld(meters * factor);
}

bool ZvLineWidth::Resolve(const ZvEntity* entity, ZvLineWidth& out) const {
    if (IsByLayer()) {
        const ZvLayer* layer = entity ? entity->GetLayer() : nullptr;
        if (!layer)
            return false;
        out = layer->GetLineWidth();
    } else {
        out = IsByBlock() ? Thin() : *this;
    }
    return true;
}

XStringW ZvLineWidth::ToString() const {
    if (IsByBlock())
        return u"ByBlock";
    if (IsByLayer())
        return u"ByLayer";
    if (IsWorld())
        return XStringW::Format("World:%f", double(m_value));
    if (IsPoints())
        return XStringW::Format("Points:%.1f", GetPoints());
    if (IsViewportMM())
        return XStringW::Format("ViewMM:%.1f", GetViewportMM());
    if (IsPixels())
        return XStringW::Format("Pixels:%.1f", GetPixels());
    return u"World:0";
}

bool ZvLineWidth::Parse(const XStringW& text) {
    struct Kind {
        const char* prefix;
        ZvLineWidth (*make)(double);
    };
    static constexpr Kind kKinds[] = {
        {"WORLD:", World}, {"POINTS:", Points}, {"PIXELS:", Pixels}, {"VIEWMM:", ViewportMM}};
    auto scan = ZvTextScan::Upper(text.View().substr(0, 63));
    for (const Kind& kind : kKinds) {
        double size = 0;
        if (!scan.Literal(kind.prefix))
            continue;
        if (!scan.Number(size) || !scan.AtEnd())
            return false;
        *this = kind.make(size);
        return true;
    }
    if (scan.Whole("BYBLOCK"))
        SetByBlock();
    else if (scan.Whole("BYLAYER"))
        SetByLayer();
    else if (scan.Whole("THIN"))
        SetThin();
    else
        return false;
    return true;
}

ZvLineWidth ZvLineWidth::FromString(const XStringW& text) {
    ZvLineWidth width;
    (void)width.Parse(text); // thin stays when it fails
    return width;
}

XStringW ZvLineWidth::GetTextDesc() const {
    if (IsByBlock())
        return ZvStrings::GetW(ZvStr::ByBlock);
    if (IsByLayer())
        return ZvStrings::GetW(ZvStr::ByLayer);
    if (IsPoints())
        return XStringW::Format("%.1f pt", GetPoints());
    if (IsViewportMM())
        return XStringW::Format("%.1f mm", GetViewportMM());
    if (IsPixels())
        return XStringW::Format("%.1f pixels", GetPixels());
    return IsNull() ? XStringW() : XStringW::Format("%.4f", GetWorld());
}

bool ZvLineWidth::NativeOut(ZvNativeDesc& desc) const {
    return desc.File().WriteValue(m_value);
}

bool ZvLineWidth::NativeIn(ZvNativeDesc& desc) {
    return desc.File().ReadValue(m_value);
}

void ZvLineWidth::DrawUI(IZvSurface& surface, const Rect2I& area) const {
    ZvSwatch swatch(surface, area);
    swatch.Box({});
    ZvPen pen;
    // On screens: world widths have no size in a list and show as two pixels.
    pen.widthPx = float(IsWorld()        ? 2
                        : IsPixels()     ? GetPixels()
                        : IsPoints()     ? GetPoints() / kPointsPerInch * kPixelsPerInch
                        : IsViewportMM() ? GetViewportMM() / 1000 / kMetersPerInch * kPixelsPerInch
                                         : 0);
    if (IsNull())
        swatch.CrossOut();
    else if (!IsByLayer())
        swatch.Line(pen);
    swatch.Label(GetTextDesc());
}

double ZvScaleSetup::WidthToWorld(const ZvLineWidth& width) const {
    return width.IsPixels()       ? width.GetPixels() * worldPerPixel
           : width.IsPoints()     ? width.GetPoints() / kPointsPerInch * kMetersPerInch * worldPerMeter
           : width.IsViewportMM() ? width.GetViewportMM() / 1000 * worldPerMeter
                                  : width.GetWorld();
}
