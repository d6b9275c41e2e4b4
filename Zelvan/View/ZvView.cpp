#include "Zelvan/View/ZvView.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/Tables/ZvNamedView.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>
#include <cmath>

using Zelvan::VFCResult;
using Zelvan::ZvViewXForm;

namespace {

constexpr double kLeastWidth = 1e-12, kMostWidth = 1e15;
constexpr int kInvalidateMargin = 2; // pixels: thin lines and antialiasing reach beyond the geometry
constexpr double kDegreesPerRadian = 57.29577951308232;

Rect2I Union(const Rect2I& a, const Rect2I& b) {
    if (a.IsEmpty() || b.IsEmpty())
        return a.IsEmpty() ? b : a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

Rect2I Intersection(const Rect2I& a, const Rect2I& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

} // namespace

ZvView::ZvView(ZvDrawing* drawing, int id) : m_drawing(drawing), m_id(id), m_xform(drawing) {}

void ZvView::SetDrawing(ZvDrawing* drawing) {
    m_drawing = drawing;
    m_xform.SetDrawing(drawing);
    InvalidateAll();
}

void ZvView::SetOptions(const ZvViewOptions* options) {
    m_xform.SetOptions(options);
    Rebuilt();
}

int ZvView::Width() const {
    return int(m_xform.WindowRect().Width());
}

int ZvView::Height() const {
    return int(m_xform.WindowRect().Height());
}

void ZvView::Resize(int width, int height) {
    width = std::max(width, 1);
    height = std::max(height, 1);
    m_xform.SetViewWidth(m_xform.ViewWidth() * width / std::max(1.0, m_xform.WindowRect().Width()));
    m_xform.SetWindowRect(Rect2I{0, 0, width, height}, false);
    Rebuilt();
}

// --- navigation --------------------------------------------------------------------------------------

void ZvView::Rebuilt() {
    m_xform.RebuildView();
    InvalidateAll();
}

bool ZvView::SetWidthChecked(double width) {
    if (!(width >= kLeastWidth && width <= kMostWidth))
        return false;
    const double factor = width / m_xform.ViewWidth();
    m_xform.SetViewWidth(width);
    m_xform.SetEye(m_xform.Target() + (m_xform.Eye() - m_xform.Target()) * factor);
    return true;
}

bool ZvView::ZoomMousePt(const Vec2d& pixel, double factor) {
    const Vec3d before = PixelToPlane(pixel);
    if (!(factor > 0) || !SetWidthChecked(m_xform.ViewWidth() * factor))
        return false;
    m_xform.RebuildView();
    const Vec3d shift = before - PixelToPlane(pixel);
    m_xform.SetTarget(m_xform.Target() + shift);
    m_xform.SetEye(m_xform.Eye() + shift);
    Rebuilt();
    return true;
}

bool ZvView::ZoomCenter(double factor) {
    const Vec2d middle = m_xform.WindowRect().Center();
    return ZoomMousePt(middle, factor);
}

bool ZvView::ZoomTo(const ZvBounds2D& world, double margin) {
    if (world.IsNull())
        return false;
    ZvViewXForm fitted = m_xform;
    ZvBounds2D grown = world;
    grown.Grow(world.Width() * margin, world.Height() * margin);
    fitted.FitPlan(grown);
    if (!(fitted.ViewWidth() >= kLeastWidth && fitted.ViewWidth() <= kMostWidth))
        return false;
    m_xform = fitted;
    InvalidateAll();
    return true;
}

bool ZvView::ZoomExtents(double margin) {
    return m_drawing && ZoomTo(m_drawing->Bounds(true).ToBounds2D(), margin);
}

void ZvView::PanPixels(const Vec2d& from, const Vec2d& to) {
    const Vec3d shift = PixelToPlane(from) - PixelToPlane(to);
    CenterOn(m_xform.Target() + shift);
}

void ZvView::CenterOn(const Vec3d& world) {
    m_xform.SetEye(m_xform.Eye() + (world - m_xform.Target()));
    m_xform.SetTarget(world);
    Rebuilt();
}

void ZvView::SetRotation(double radians) {
    m_xform.SetRotation(radians);
    Rebuilt();
}

Vec3d ZvView::PixelToPlane(const Vec2d& pixel) const {
    const Vec3d at = m_xform.ToWorld({pixel.x, pixel.y, 0});
    if (m_xform.IsPlan())
        return {at.x, at.y, 0};
    const Ray3d ray = m_xform.ToWorldRay(pixel);
    const double steps = -ray.origin.z / ray.direction.z;
    return std::isfinite(steps) && steps >= 0 ? ray.origin + ray.direction * steps : at;
}

// --- repainting --------------------------------------------------------------------------------------

void ZvView::Invalidate(const ZvBounds3D& world) {
    if (m_xform.CullResult(m_xform.IsPlan() ? ZvBounds3D(world.ToBounds2D()) : world) == VFCResult::Outside)
        return;
    const Rect2I window = m_xform.WindowRect().ToRect();
    ZvBounds2D pixels;
    for (int corner = 0; corner < 8; ++corner) {
        const Vec4d view =
            m_xform.ToView(Vec4d{corner & 1 ? world.maxX : world.minX, corner & 2 ? world.maxY : world.minY,
                                 corner & 4 ? world.maxZ : world.minZ, 1});
        const bool shows = view.w > 0 && std::isfinite(view.x) && std::isfinite(view.y);
        pixels.ExpandToFit(shows ? ZvBounds2D(view.x, view.y, view.x, view.y) : ZvBounds2D::SuperBounds());
    }
    pixels.Grow(kInvalidateMargin);
    const Rect2I dirty = Intersection(pixels.ToRect(), window);
    if (dirty.IsEmpty())
        return;
    m_dirty = Union(m_dirty, dirty);
    if (m_drawing && m_drawing->Host())
        m_drawing->Host()->InvalidateView(*this, dirty);
}

void ZvView::InvalidateAll() {
    Invalidate(ZvBounds3D::SuperBounds());
}

Rect2I ZvView::TakeDirty() {
    const Rect2I dirty = m_dirty;
    m_dirty = {};
    return dirty;
}

// --- saved state -------------------------------------------------------------------------------------

void ZvView::StoreTo(ZvNamedView& record) const {
    ZvNamedView::Values values = record.Get();
    const ZvBounds2D& window = m_xform.WindowRect();
    const double aspect = window.Height() > 0 ? window.Width() / window.Height() : 1;
    values.center = m_xform.Target();
    values.width = m_xform.ViewWidth();
    values.height = m_xform.ViewWidth() / aspect;
    values.rotation = m_xform.Rotation();
    values.tilt = m_xform.Tilt();
    values.perspective = !m_xform.IsOrthographic();
    values.fieldOfView = 2 * std::atan(std::tan(m_xform.FieldOfView() / kDegreesPerRadian / 2) * aspect);
    values.distance = values.perspective ? (m_xform.Eye() - m_xform.Target()).Length() : 0;
    record.Set(values);
}

void ZvView::RestoreFrom(const ZvNamedView& record) {
    const ZvNamedView::Values& values = record.Get();
    const ZvBounds2D& window = m_xform.WindowRect();
    const double aspect = window.Height() > 0 ? window.Width() / window.Height() : 1;
    // All of the stored extent shows, whatever the shape of this window.
    const double width = std::clamp(std::max(values.width, values.height * aspect), kLeastWidth, kMostWidth);
    m_xform.SetPlan(values.center, width, values.rotation);
    m_xform.SetTilt(values.tilt);
    if (values.perspective) {
        const double distance =
            values.distance > 0 ? values.distance : width / 2 / std::tan(values.fieldOfView / 2);
        m_xform.SetProjectionFlags(ZvViewXForm::kOrientAngles);
        m_xform.SetFieldOfView(2 * std::atan(std::tan(values.fieldOfView / 2) / aspect) * kDegreesPerRadian);
        m_xform.SetEye(values.center + Vec3d{0, 0, distance});
    }
    Rebuilt();
}
