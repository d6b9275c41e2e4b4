#include "Zelvan/ZvBrush.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/Tables/ZvTextureTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvSwatch.h"
#include "Zelvan/ZvTextScan.h"
#include "ZvCore/IFile.h"
#include "ZvCore/ZvErrors.h"
#include <cstring>

namespace {

constexpr uint32_t kTextureTable = ZvTableCode::Full(ZvTableCode::Texture);

ZvTexture* TextureOf(const ZvDrawing* drawing, int index) {
    const ZvTextureTable* table = drawing ? drawing->TextureTable() : nullptr;
    return table ? table->Get(index) : nullptr;
}

/// The colour text behind a style, after its colon. False for text that is no colour; no text leaves the
/// colour.
bool ParseColorPart(ZvTextScan& scan, ZvColor& color) {
    if (scan.AtEnd())
        return true;
    return scan.Literal(":") && color.Parse(XStringW::FromUtf8(scan.Rest()));
}

} // namespace

bool ZvBrush::Resolve(const ZvEntity* entity, ZvBrush& out) const {
    ZvBrush brush = *this;
    if (IsByLayer()) {
        const ZvLayer* layer = entity ? entity->GetLayer() : nullptr;
        if (!layer)
            return false;
        brush = layer->GetBrush();
    } else if (IsByBlock()) {
        brush = Solid(ZvColor::DefaultValue());
    }
    ZvColor color = brush.GetColor();
    if (!color.Resolve(entity, color))
        return false;
    brush.SetColor(color);
    out = brush;
    return true;
}

XStringW ZvBrush::ToString() const {
    if (IsTexture())
        return XStringW::Format("Texture:%d:", int(m_style)) + GetColor().ToString();
    switch (m_style) {
    case kEmpty:
        return u"Empty";
    case kByBlock:
        return u"ByBlock";
    case kByLayer:
        return u"ByLayer";
    case kSolid:
        return XStringW(u"Solid:") + GetColor().ToString();
    case kCrossHatch:
        return u"CrossHatch";
    default:
        return u"Null";
    }
}

bool ZvBrush::Parse(const XStringW& text) {
    auto scan = ZvTextScan::Upper(text);
    ZvColor color = GetColor();
    int style = 0;
    if (scan.Whole("EMPTY"))
        SetEmpty();
    else if (scan.Whole("BYBLOCK"))
        SetByBlock();
    else if (scan.Whole("BYLAYER"))
        SetByLayer();
    else if (scan.Whole("NULL"))
        SetNull();
    else if (scan.Literal("TEXTURE:")) {
        if (!scan.Int(style) || style < 0 || style > INT16_MAX || !ParseColorPart(scan, color))
            return false;
        *this = {color, style};
    } else if (scan.Literal("SOLID") || scan.Literal("CROSSHATCH")) {
        const bool solid = text.Trimmed().ToUpper().StartsWith(u"SOLID");
        if (!ParseColorPart(scan, color))
            return false;
        *this = {color, solid ? kSolid : kCrossHatch};
    } else
        return false;
    return true;
}

ZvBrush ZvBrush::FromString(const XStringW& text) {
    ZvBrush brush;
    return brush.Parse(text) ? brush : ZvBrush();
}

XStringW ZvBrush::ToStringPortable(const ZvDrawing* drawing) const {
    if (!drawing)
        return u"Null";
    if (!IsTexture())
        return ToString();
    const ZvTexture* texture = TextureOf(drawing, m_style);
    if (!texture)
        return u"Null";
    return XStringW(u"Texture:\"") + texture->GetName() + u"\":" + GetColor().ToString();
}

ZvBrush ZvBrush::FromStringPortable(const XStringW& text, const ZvDrawing* drawing) {
    const XStringW trimmed = text.Trimmed();
    constexpr std::u16string_view kHead = u"TEXTURE:\"";
    ZvBrush brush;
    if (!trimmed.ToUpper().StartsWith(kHead)) {
        // An index means nothing in another drawing.
        return brush.Parse(trimmed) && !brush.IsTexture() ? brush : Null();
    }
    const size_t end = trimmed.View().find(u'"', kHead.size());
    const ZvTextureTable* table = drawing ? drawing->TextureTable() : nullptr;
    if (end == std::u16string_view::npos || !table)
        return Null();
    const ZvTexture* texture = table->GetByName(trimmed.View().substr(kHead.size(), end - kHead.size()));
    ZvTextScan rest(XStringW(trimmed.View().substr(end + 1)).ToUtf8());
    ZvColor color = ZvColor::DefaultValue();
    if (!texture || !ParseColorPart(rest, color))
        return Null();
    return FromTexture(texture->GetTableIndex(), color);
}

bool ZvBrush::NativeOut(ZvNativeDesc& desc) const {
    return desc.File().WriteValue(m_style) && GetColor().NativeOut(desc);
}

bool ZvBrush::NativeIn(ZvNativeDesc& desc, bool strict) {
    int16_t style = 0;
    ZvColor color;
    if (!desc.File().ReadValue(style) || !color.NativeIn(desc))
        return false;
    if (style >= 0)
        style = int16_t(desc.TranslateIndex(kTextureTable, style, strict)); // -1, unknown, is the empty style
    *this = {color, style};
    return true;
}

void ZvBrush::RecordUse(ZvUsageTable& usage, const ZvDrawing* drawing) const {
    if (!IsTexture())
        return;
    const ZvTextureTable* table = drawing ? drawing->TextureTable() : nullptr;
    if (!table || !table->IsValidIndex(m_style))
        ZvErrors::Report(ZvErrorCode::BrushIndex, "ZvBrush.RecordUse");
    else
        usage.Use(kTextureTable, m_style);
}

bool ZvBrush::CheckResolve(const ZvDrawing* drawing) const {
    if (!IsTexture())
        return true;
    const ZvTexture* texture = TextureOf(drawing, m_style);
    if (!texture || texture->IsErased())
        return false;
    return texture->GetKind() != ZvTexture::Kind::Bitmap || texture->GetBitmapRecord();
}

void ZvBrush::DrawUI(IZvSurface& surface, const Rect2I& area, const ZvDrawing* drawing) const {
    ZvSwatch swatch(surface, area);
    const uint32_t argb = (GetColor().IsIndexed() || GetColor().IsRGB() || GetColor().IsRGBA())
                              ? GetColor().GetARGB()
                              : ZvColor::DefaultValue().GetARGB();
    const ZvTexture* texture = TextureOf(drawing, m_style);
    swatch.Box(IsSolid()        ? ZvSwatch::Solid(argb)
               : IsCrossHatch() ? ZvFill{ZvFill::Kind::CrossHatch, argb}
                                : ZvFill{});
    if (texture)
        texture->DrawUI(surface, swatch.Inside());
    else if (IsTexture() || IsNull())
        swatch.CrossOut();
    swatch.Label(IsByLayer()      ? ZvStrings::GetW(ZvStr::ByLayer)
                 : IsByBlock()    ? ZvStrings::GetW(ZvStr::ByBlock)
                 : texture        ? texture->GetName()
                 : IsTexture()    ? ZvStrings::GetW(ZvStr::Unknown)
                 : IsSolid()      ? ZvStrings::GetW(ZvStr::BrushSolid)
                 : IsCrossHatch() ? ZvStrings::GetW(ZvStr::BrushCrossHatch)
                 : IsEmpty()      ? ZvStrings::GetW(ZvStr::BrushEmpty)
                                  : XStringW());
}

bool ZvBrush_IO::Write(ZvCore::IFile& file, int version, const ZvBrush& brush) {
    uint8_t bytes[kSize];
    Encode(bytes, version, brush);
    return file.Write(bytes, kSize) == kSize;
}

bool ZvBrush_IO::Read(ZvCore::IFile& file, int version, ZvBrush& brush) {
    uint8_t bytes[kSize];
    if (file.Read(bytes, kSize) != kSize)
        return false;
    brush = Decode(bytes, version);
    return true;
}

ZvBrush ZvBrush_IO::Decode(const uint8_t* bytes, int version) {
    const bool modern = version >= 1050;
    int16_t style = 0;
    std::memcpy(&style, bytes + (modern ? ZvColor_IO::kSize : 0), 2);
    return {ZvColor_IO::Decode(bytes + (modern ? 0 : 2), version), style};
}

void ZvBrush_IO::Encode(uint8_t* bytes, int version, const ZvBrush& brush) {
    const bool modern = version >= 1050;
    const int16_t style = int16_t(brush.GetStyle());
    ZvColor_IO::Encode(bytes + (modern ? 0 : 2), version, brush.GetColor());
    std::memcpy(bytes + (modern ? ZvColor_IO::kSize : 0), &style, 2);
}
