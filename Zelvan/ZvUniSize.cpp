#include "Zelvan/ZvUniSize.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvTextScan.h"
#include "ZvCore/IFile.h"
#include <algorithm>
#include <limits>

namespace {

/// Not a number gives the least.
double Clamped(double value, double least, double most) {
    return value > least ? std::min(value, most) : least;
}

} // namespace

ZvUniSize ZvUniSize::World(double size) {
    // MaxWorldSize lies a little above the largest float.
    return FromRaw(
        float(Clamped(size, 0, std::min(MaxWorldSize, double(std::numeric_limits<float>::max())))));
}

ZvUniSize ZvUniSize::Points(double pt) {
    return FromRaw(float(-10 - Clamped(pt, MinPointSize, MaxPointSize) / 1000));
}

ZvUniSize ZvUniSize::ViewMM(double mm) {
    return FromRaw(float(-111 - Clamped(mm, MinViewMMSize, MaxViewMMSize) / 100));
}

ZvUniSize ZvUniSize::Pixels(double px) {
    return FromRaw(float(-1112 - Clamped(px, MinPixelSize, MaxPixelSize) / 50));
}

double ZvUniSize::GetRealValue() const {
    const double stored = m_value;
    switch (Type()) {
    case kWorld:
        return stored;
    case kPoints:
        return (-10 - stored) * 1000;
    case kViewMM:
        return (-111 - stored) * 100;
    case kPixels:
        return (-1112 - stored) * 50;
    default:
        return 0;
    }
}

void ZvUniSize::SetRealValue(double size) {
    switch (Type()) {
    case kWorld:
        return SetWorld(size);
    case kPoints:
        return SetPoints(size);
    case kViewMM:
        return SetViewMM(size);
    case kPixels:
        return SetPixels(size);
    default:
        return;
    }
}

ZvUniSize& ZvUniSize::operator*=(double factor) {
    SetRealValue(GetRealValue() * factor);
    return *this;
}

XStringW ZvUniSize::ToString() const {
    switch (Type()) {
    case kByBlock:
        return u"ByBlock";
    case kByLayer:
        return u"ByLayer";
    case kWorld:
        return XStringW::Format("Wo:%.6g", GetRealValue());
    case kPoints:
        return XStringW::Format("Po:%.1f", GetRealValue());
    case kViewMM:
        return XStringW::Format("MM:%.2f", GetRealValue());
    case kPixels:
        return XStringW::Format("Pi:%.2f", GetRealValue());
    default:
        return u"Null";
    }
}

bool ZvUniSize::Parse(const XStringW& text) {
    struct Kind {
        const char* prefix;
        ZvUniSize (*make)(double);
    };
    static constexpr Kind kKinds[] = {{"WO:", World}, {"PO:", Points}, {"MM:", ViewMM}, {"PI:", Pixels}};
    auto scan = ZvTextScan::Upper(text);
    for (const Kind& kind : kKinds) {
        double size = 0;
        if (!scan.Literal(kind.prefix))
            continue;
        if (!scan.Number(size) || !scan.AtEnd())
            return false;
        *this = kind.make(size);
        return true;
    }
    if (scan.Whole("NULL"))
        SetNull();
    else if (scan.Whole("BYBLOCK"))
        SetByBlock();
    else if (scan.Whole("BYLAYER"))
        SetByLayer();
    else
        return false;
    return true;
}

ZvUniSize ZvUniSize::FromString(const XStringW& text) {
    ZvUniSize size;
    return size.Parse(text) ? size : Null();
}

XStringW ZvUniSize::GetTextDesc() const {
    switch (Type()) {
    case kByBlock:
        return ZvStrings::GetW(ZvStr::ByBlock);
    case kByLayer:
        return ZvStrings::GetW(ZvStr::ByLayer);
    case kWorld:
        return XStringW::Format("%.6g", GetRealValue());
    case kPoints:
        return XStringW::Format("%.1f pt", GetRealValue());
    case kViewMM:
        return XStringW::Format("%.2f vmm", GetRealValue());
    case kPixels:
        return XStringW::Format("%.2f px", GetRealValue());
    default:
        return {};
    }
}

bool ZvUniSize::NativeOut(ZvNativeDesc& desc) const {
    return desc.File().WriteValue(m_value);
}

bool ZvUniSize::NativeIn(ZvNativeDesc& desc) {
    return desc.File().ReadValue(m_value);
}

double ZvScaleSetup::SizeToWorld(const ZvUniSize& size) const {
    constexpr double kMetersPerPoint = 0.0254 / 72;
    const double real = size.GetRealValue();
    switch (size.Type()) {
    case ZvUniSize::kWorld:
        return real;
    case ZvUniSize::kPoints:
        return real * kMetersPerPoint * worldPerMeter;
    case ZvUniSize::kViewMM:
        return real / 1000 * worldPerMeter;
    case ZvUniSize::kPixels:
        return real * worldPerPixel;
    default:
        return 0;
    }
}
