#include "Modules/Gis/ZvGdalStyle.h"
#include "Zelvan/Entities/ZvFilledEntity.h"
#include <cstdio>
#include <memory>
#include <ogr_feature.h>
#include <ogr_featurestyle.h>

namespace {

// "#RRGGBB" or "#RRGGBBAA".
bool ParseColor(const char* text, ZvColor& color) {
    return text && color.ParseHex(XStringW::FromUtf8(text));
}

ZvLineWidth PenWidth(OGRStylePen& pen) {
    GBool isDefault = FALSE;
    const OGRSTUnitId unit = pen.GetUnit();
    const double width = pen.Width(isDefault);
    if (isDefault || width <= 0)
        return ZvLineWidth::Thin();
    switch (unit) {
    case OGRSTUGround:
        return ZvLineWidth::World(width);
    case OGRSTUPixel:
        return ZvLineWidth::Pixels(width);
    case OGRSTUPoints:
        return ZvLineWidth::Points(width);
    case OGRSTUCM:
        return ZvLineWidth::ViewportMM(width * 10);
    case OGRSTUInches:
        return ZvLineWidth::ViewportMM(width * 25.4);
    default:
        return ZvLineWidth::ViewportMM(width);
    }
}

void ApplyPen(OGRStylePen& pen, ZvEntity& entity) {
    GBool isDefault = FALSE;
    ZvColor color;
    const char* text = pen.Color(isDefault);
    if (!isDefault && ParseColor(text, color))
        entity.SetColor(color);
    if (ZvLineEntity* line = entity.ToLineEntity())
        line->SetLineWidth(PenWidth(pen));
}

void ApplyBrush(OGRStyleBrush& brush, ZvEntity& entity) {
    GBool isDefault = FALSE;
    ZvColor color;
    const char* text = brush.ForeColor(isDefault);
    if (ZvFilledEntity* filled = entity.ToFilledEntity(); filled && !isDefault && ParseColor(text, color))
        filled->SetBrush(ZvBrush::Solid(color));
}

std::string Hex(const ZvColor& color) {
    char text[16];
    const ColorBGRA c = color.GetBGRA();
    std::snprintf(text, sizeof text, color.IsRGBA() ? "#%02X%02X%02X%02X" : "#%02X%02X%02X", c.r, c.g, c.b,
                  c.a);
    return text;
}

bool IsOwn(const ZvColor& color) {
    return !color.IsByLayer() && !color.IsByBlock() && !color.IsNull();
}

std::string Width(const ZvLineWidth& width) {
    char text[32] = "";
    if (width.IsWorld())
        std::snprintf(text, sizeof text, ",w:%.9gg", width.GetWorld());
    else if (width.IsPixels())
        std::snprintf(text, sizeof text, ",w:%.9gpx", width.GetPixels());
    else if (width.IsPoints())
        std::snprintf(text, sizeof text, ",w:%.9gpt", width.GetPoints());
    else if (width.IsViewportMM())
        std::snprintf(text, sizeof text, ",w:%.9gmm", width.GetViewportMM());
    return text;
}

} // namespace

void ZvGdalStyle::Apply(OGRFeature& feature, ZvEntity& entity) {
    if (ZvLineEntity* line = entity.ToLineEntity()) {
        line->SetLineWidth(ZvLineWidth::ByLayer());
        line->SetLineType(ZvLineType::ByLayer());
    }
    if (ZvFilledEntity* filled = entity.ToFilledEntity())
        filled->SetBrush(ZvBrush::ByLayer());
    if (!feature.GetStyleString())
        return;
    OGRStyleMgr manager;
    manager.InitFromFeature(&feature);
    GBool isDefault = FALSE;
    for (int i = 0; i < manager.GetPartCount(); ++i) {
        const std::unique_ptr<OGRStyleTool> tool(manager.GetPart(i));
        if (!tool)
            continue;
        ZvColor color;
        if (tool->GetType() == OGRSTCPen)
            ApplyPen(static_cast<OGRStylePen&>(*tool), entity);
        else if (tool->GetType() == OGRSTCBrush)
            ApplyBrush(static_cast<OGRStyleBrush&>(*tool), entity);
        else if (tool->GetType() == OGRSTCSymbol &&
                 ParseColor(static_cast<OGRStyleSymbol&>(*tool).Color(isDefault), color))
            entity.SetColor(color);
        else if (tool->GetType() == OGRSTCLabel &&
                 ParseColor(static_cast<OGRStyleLabel&>(*tool).ForeColor(isDefault), color))
            entity.SetColor(color);
    }
}

std::string ZvGdalStyle::Describe(ZvEntity& entity) {
    std::string style;
    if (const ZvFilledEntity* filled = entity.ToFilledEntity())
        if (const ZvBrush brush = filled->GetBrush(); brush.IsSolid() && IsOwn(brush.GetColor()))
            style = "BRUSH(fc:" + Hex(brush.GetColor()) + ")";
    if (!IsOwn(entity.GetColor()))
        return style;
    const ZvLineEntity* line = entity.ToLineEntity();
    const std::string pen = line ? "PEN(c:" + Hex(entity.GetColor()) + Width(line->GetLineWidth()) + ")"
                                 : "SYMBOL(c:" + Hex(entity.GetColor()) + ")";
    return style.empty() ? pen : style + ";" + pen;
}
