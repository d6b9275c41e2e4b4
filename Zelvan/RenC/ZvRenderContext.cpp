#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/Entities/ZvFilledEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLineTypeRec.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvUniSize.h"
#include <algorithm>
#include <cmath>

namespace {
constexpr size_t kBatchSize = 256;
constexpr float kThinStep = 0.5f; // pixels
constexpr double kScreenDpi = 96;
constexpr double kMetersPerInch = 0.0254;
constexpr double kMargin = 4;       // pixels around the surface in which geometry still counts
constexpr double kMarkerReach = 16; // screen pixels by which markers may reach out of their bounds
} // namespace

ZvRenderContext::ZvRenderContext(ZvRenderMode mode, IZvSurface& surface, const Zelvan::ZvViewXForm& xform,
                                 const ZvDrawing* drawing)
    : m_mode(mode), m_surface(surface), m_xform(xform), m_drawing(drawing), m_scale(xform.Scale()),
      m_pixelScale(xform.Options().pixelsPerInch / kScreenDpi), m_background(xform.Options().background) {
    SetUpView();
    m_scale.worldPerPixel = m_worldPerPixel;
}

ZvRenderContext::~ZvRenderContext() {
    Flush();
}

// The plan map is read off the exact converter at three points, so that it agrees with it whatever builds the view.
void ZvRenderContext::SetUpView() {
    const Vec3d at = m_xform.Target();
    const double step = m_xform.ViewWidth() > 0 ? m_xform.ViewWidth() / 2 : 1;
    const Vec4d o = m_xform.ToView({at.x, at.y, at.z, 1});
    const Vec4d px = m_xform.ToView({at.x + step, at.y, at.z, 1});
    const Vec4d py = m_xform.ToView({at.x, at.y + step, at.z, 1});
    m_planMap.xx = (px.x - o.x) / step;
    m_planMap.yx = (px.y - o.y) / step;
    m_planMap.xy = (py.x - o.x) / step;
    m_planMap.yy = (py.y - o.y) / step;
    m_planMap.x0 = o.x - m_planMap.xx * at.x - m_planMap.xy * at.y;
    m_planMap.y0 = o.y - m_planMap.yx * at.x - m_planMap.yy * at.y;
    m_isPlan = m_xform.IsPlan();
    const double det = m_planMap.xx * m_planMap.yy - m_planMap.xy * m_planMap.yx;
    m_worldPerPixel = std::abs(det) > 0 ? 1 / std::sqrt(std::abs(det)) : 1;
    m_surfaceWindow = ZvBounds2D::SuperBounds();
    if (m_isPlan && det != 0) {
        m_surfaceWindow.Reset();
        for (double x : {-kMargin, m_surface.Width() + kMargin})
            for (double y : {-kMargin, m_surface.Height() + kMargin}) {
                const double dx = x - o.x, dy = y - o.y;
                m_surfaceWindow.ExpandToFit(Vec2d{at.x + (m_planMap.yy * dx - m_planMap.xy * dy) / det,
                                                  at.y + (m_planMap.xx * dy - m_planMap.yx * dx) / det});
            }
    }
    m_worldWindow = m_cullWindow = m_surfaceWindow;
}

void ZvRenderContext::SetDotsPerInch(double dpi) {
    if (!(m_xform.Options().paperScale > 0))
        m_scale.worldPerMeter = m_worldPerPixel * dpi / kMetersPerInch;
    m_pixelScale = dpi / kScreenDpi;
}

void ZvRenderContext::EnterLayer(const ZvLayer* layer) {
    Flush();
    m_layer = layer;
    m_penValid = m_fillValid = false;
    double reach = kMarkerReach * m_pixelScale;
    if (layer) {
        const double wide = WidthInPixels(layer->GetLineWidth());
        reach = std::max(reach, std::max(wide, layer->Tree().WidestLine(m_scale) / m_worldPerPixel) / 2);
    }
    m_cullWindow = m_surfaceWindow;
    m_cullWindow.Grow(reach * m_worldPerPixel, reach * m_worldPerPixel);
}

// On a light background the palette's white (index 7) draws black.
uint32_t ZvRenderContext::ResolveColor(const ZvColor& color) const {
    ZvColor resolved = color.IsByLayer() && m_layer ? m_layer->GetColor() : color;
    if (resolved.IsByBlock() || resolved.IsByLayer() || resolved.IsNull())
        resolved = ZvColor::DefaultValue();
    if (resolved.IsIndexed() && resolved.GetIndex() == ZvColor::kDefaultIndex) {
        const ZvColor back(-1,
                           (m_background >> 16 & 255) | (m_background & 0xFF00) | (m_background & 255) << 16);
        return back.GetGrey() > 127 ? 0xFF000000u : 0xFFFFFFFFu;
    }
    return resolved.GetARGB();
}

bool ZvRenderContext::UsePen(const ZvLineEntity& entity) {
    const ZvColor color = entity.GetColor();
    const ZvLineWidth width = entity.GetLineWidth();
    const PenKey key{color.NativeRGB(), int16_t(color.GetIndex()), entity.GetLineType().hardGet(),
                     width.Raw(), entity.GetLineCap()};
    if (m_penValid && key == m_penKey)
        return m_penDraws;
    m_penKey = key;
    m_penValid = true;
    ZvLineType type = entity.GetLineType();
    ZvLineWidth resolved = width;
    if (width.IsByLayer())
        resolved = m_layer ? m_layer->GetLineWidth() : ZvLineWidth::Thin();
    if (type.IsByLayer())
        type = m_layer ? m_layer->GetLineType() : ZvLineType::Continuous();
    ApplyPen(ResolveColor(color), resolved, type, key.lineCap);
    return m_penDraws;
}

void ZvRenderContext::UseColor(const ZvEntity& entity) {
    m_penValid = false;
    ApplyPen(ResolveColor(entity.GetColor()), ZvLineWidth::Thin(), ZvLineType::Continuous(), 0);
}

double ZvRenderContext::WidthInPixels(const ZvLineWidth& width) const {
    if (width.IsThin() || !m_xform.Options().lineWidths)
        return 0;
    return width.IsPixels() ? width.GetPixels() * m_pixelScale
                            : m_scale.WidthToWorld(width) / m_worldPerPixel;
}

void ZvRenderContext::ApplyPen(uint32_t argb, const ZvLineWidth& width, const ZvLineType& type, int lineCap) {
    m_penColor = argb;
    m_penDraws = argb >> 24 != 0;
    ZvPen pen;
    pen.argb = argb;
    pen.widthPx = float(WidthInPixels(width));
    if (type.IsIndexed() && m_drawing && m_drawing->LineTypeTable())
        if (const ZvLineTypeRec* record = m_drawing->LineTypeTable()->Get(type.GetIndex()))
            pen.dashes = DashesInPixels(*record);
    if (pen.widthPx > 2 && pen.dashes.empty())
        pen.cap = lineCap == 1 ? ZvPen::Cap::Flat : lineCap == 2 ? ZvPen::Cap::Square : ZvPen::Cap::Round;
    m_worldWindow = m_surfaceWindow;
    const double reach = pen.widthPx * m_worldPerPixel; // square ends and mitres reach beyond half the width
    m_worldWindow.Grow(reach, reach);
    m_surface.SetPen(pen);
}

// A pattern that repeats within two pixels would only look grey: it is drawn continuous.
std::vector<float> ZvRenderContext::DashesInPixels(const ZvLineTypeRec& type) const {
    const double unit = (type.GetUnits() == ZvLineTypeRec::Units::World
                             ? 1 / m_worldPerPixel
                             : m_scale.worldPerMeter * (kMetersPerInch / 72) / m_worldPerPixel) *
                        m_xform.Options().lineTypeScale;
    std::vector<float> dashes;
    if (!(type.PatternLength() * unit >= 2))
        return dashes;
    for (double length : type.Dashes())
        dashes.push_back(float(length * unit));
    return dashes;
}

// A brush by layer is the layer's, in its colour unless the entity's has one of its own.
bool ZvRenderContext::UseFill(const ZvFilledEntity& entity) {
    ZvBrush brush = entity.GetBrush();
    ZvColor color = brush.GetColor();
    const FillKey key{color.NativeRGB(), int16_t(color.GetIndex()), int16_t(brush.GetStyle())};
    if (m_fillValid && key == m_fillKey)
        return m_fillDraws;
    m_fillKey = key;
    m_fillValid = true;
    if (brush.IsByLayer() && m_layer) {
        brush = m_layer->GetBrush();
        if (color.IsByLayer())
            color = brush.GetColor();
    }
    ZvFill fill;
    fill.argb = ResolveColor(color);
    fill.hatchSpacingPx *= float(m_pixelScale);
    fill.hatchOrigin = HatchOrigin(fill);
    if (brush.IsSolid())
        fill.kind = ZvFill::Kind::Solid;
    else if (brush.IsCrossHatch())
        fill.kind = ZvFill::Kind::CrossHatch;
    else if (brush.IsTexture())
        fill.kind = ZvFill::Kind::Hatch;
    m_fillDraws = fill.kind != ZvFill::Kind::None && fill.argb >> 24 != 0;
    m_surface.SetFill(fill);
    return m_fillDraws;
}

// Hatches stay with the drawing when the view moves: a line goes through the world's origin. The pixel nearest to the surface's
// corner that stands for it keeps its precision.
Vec2f ZvRenderContext::HatchOrigin(const ZvFill& fill) const {
    const double nx = std::sin(double(fill.hatchAngle)), ny = std::cos(double(fill.hatchAngle));
    const double across = std::fmod(m_planMap.x0 * nx + m_planMap.y0 * ny, double(fill.hatchSpacingPx));
    const double along = std::fmod(m_planMap.x0 * ny - m_planMap.y0 * nx, double(fill.hatchSpacingPx));
    return {float(nx * across + ny * along), float(ny * across - nx * along)};
}

Vec2f* ZvRenderContext::Points(size_t count) {
    if (m_points.size() < count)
        m_points.resize(std::max(count, m_points.size() * 2));
    return m_points.data();
}

// In place. The last point is always kept, so that ends meet what they touch.
size_t ZvRenderContext::Thin(Vec2f* points, size_t count) const {
    if (count < 3)
        return count;
    size_t kept = 1;
    Vec2f last = points[0];
    for (size_t i = 1; i + 1 < count; ++i) {
        const Vec2f p = points[i];
        if (std::fabs(p.x - last.x) < kThinStep && std::fabs(p.y - last.y) < kThinStep)
            continue;
        points[kept++] = last = p;
    }
    points[kept++] = points[count - 1];
    return kept;
}

void ZvRenderContext::Stroke(Vec2f* points, size_t count, bool closed) {
    const size_t kept = Thin(points, count);
    stats.verticesPainted += kept;
    m_surface.Polyline(points, kept, closed);
}

void ZvRenderContext::Fill(Vec2f* points, const uint32_t* ends, size_t ringCount, bool outline) {
    m_rings.clear();
    uint32_t start = 0;
    for (size_t i = 0; i < ringCount; ++i) {
        const size_t kept = Thin(points + start, ends[i] - start);
        stats.verticesPainted += kept;
        if (kept)
            m_rings.push_back({points + start, kept});
        start = ends[i];
    }
    m_surface.Polygon(m_rings.data(), m_rings.size(), outline);
}

void ZvRenderContext::Dot(Vec2f at) {
    ++stats.entitiesBelowPixel;
    m_surface.Polyline(&at, 1, false);
}

void ZvRenderContext::Marker(Vec2f at, float size) {
    constexpr int kCorners = 12;
    Vec2f* ring = Points(kCorners);
    for (int i = 0; i < kCorners; ++i) {
        const float a = float(i) * 6.2831853f / kCorners;
        ring[i] = {at.x + size / 2 * std::cos(a), at.y + size / 2 * std::sin(a)};
    }
    ZvFill fill;
    fill.kind = ZvFill::Kind::Solid;
    fill.argb = m_penColor;
    m_fillValid = false;
    m_surface.SetFill(fill);
    const ZvSurfaceRing rings{ring, kCorners};
    m_surface.Polygon(&rings, 1, false);
}

Vec2f ZvRenderContext::MapPoint(const Vec3d& world) const {
    if (m_isPlan)
        return m_planMap(world.x, world.y);
    const Vec4d v = m_xform.ToView({world.x, world.y, world.z, 1});
    return {float(v.x), float(v.y)};
}

void ZvRenderContext::EnableHeat(int width, int height) {
    m_heatWidth = width;
    m_heat = std::make_unique<std::vector<float>>(size_t(width) * size_t(height));
}

void ZvRenderContext::Batch(const ZvEntity* entity) {
    const uint32_t code = entity->GetFullCode();
    if (!m_batch.empty() && (code != m_batchCode || m_batch.size() >= kBatchSize))
        Flush();
    m_batchCode = code;
    m_batch.push_back(entity);
}

void ZvRenderContext::Flush() {
    if (m_batch.empty() || !m_batchInWork.empty())
        return;
    m_batchInWork.swap(m_batch);
    m_batchInWork.front()->DrawRast(*this, m_batchInWork.data(), m_batchInWork.size());
    m_batchInWork.clear();
    Flush(); // what drawing these put off in turn
}
