#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/Tables/ZvPaperPage.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvUniSize.h"
#include "Zelvan/ZvUnits.h"
#include <algorithm>
#include <cmath>
#include <limits>

namespace Zelvan {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kLeastExtent = std::numeric_limits<float>::min();
constexpr double kPointsPerInch = 72;
constexpr double kMillimetersPerInch = 25.4;

bool g_manageCenters = true;

bool IsFinite(const Vec3d& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

} // namespace

ZvViewXForm::ZvViewXForm(ZvDrawing* drawing) : m_drawing(drawing) {
    RebuildView();
}

ZvViewXForm::~ZvViewXForm() = default;

ZvViewXForm* ZvViewXForm::New(ZvDrawing* drawing) {
    return new ZvViewXForm(drawing);
}

const ZvViewOptions& ZvViewXForm::Options() const {
    static const ZvViewOptions defaults;
    return m_options ? *m_options : defaults;
}

// --- setup -------------------------------------------------------------------------------------------

void ZvViewXForm::SetWindowRect(const Rect2I& window, bool rebuild) {
    SetWindowRect(ZvBounds2D(window.left, window.top, window.right, window.bottom), rebuild);
}

void ZvViewXForm::SetWindowRect(const ZvBounds2D& window, bool rebuild) {
    m_window = window;
    if (rebuild)
        RebuildView();
}

void ZvViewXForm::SetFrameBufferRect(const Rect2I& area) {
    m_frameBuffer = area;
    SetupViewport(m_window);
}

void ZvViewXForm::RenC_SetFrameBufferOffset(const Vec2d& offset) {
    m_frameBufferOffset = offset;
    SetupViewport(m_window);
}

void ZvViewXForm::SetPlan(const Vec3d& target, double width, double rotation) {
    m_flags = kOrthographic | kOrientAngles;
    m_target = target;
    m_viewWidth = width;
    m_tilt = 0;
    m_rotation = rotation;
}

void ZvViewXForm::FitPlan(const ZvBounds2D& world, double margin) {
    const double c = std::abs(std::cos(m_rotation)), s = std::abs(std::sin(m_rotation));
    const double across = world.Width() * c + world.Height() * s,
                 down = world.Width() * s + world.Height() * c;
    const auto usable = [&](double pixels) {
        return std::max(1.0, pixels > 2 * margin ? pixels - 2 * margin : pixels);
    };
    double perPixel = std::max(across / usable(m_window.Width()), down / usable(m_window.Height()));
    if (!(perPixel > 0) || !std::isfinite(perPixel))
        perPixel = 1 / std::max(1.0, m_window.Width());
    const Vec2d middle = world.Center();
    SetPlan({middle.x, middle.y, 0}, perPixel * std::max(1.0, m_window.Width()), m_rotation);
    RebuildView();
}

double ZvViewXForm::WorldUnitsPerMeter() const {
    if (!m_drawing)
        return 1;
    const double perMeter = m_drawing->MetersToWorld(1);
    return perMeter == 1 && m_drawing->Units() ? m_drawing->Units()->WorldUnitsPerMeter() : perMeter;
}

void ZvViewXForm::SetupPointsToWorld(const ZvPaperPage* page, float scale, bool keep) {
    m_keepPointsToWorld = keep;
    m_pointsToWorld = double(scale) * (page ? page->GetWorldPerMm() * kMillimetersPerInch / kPointsPerInch
                                            : ZvUnits::kMetersPerPoint * WorldUnitsPerMeter());
}

void ZvViewXForm::AutoSetupPointsToWorld() {
    if (m_keepPointsToWorld)
        return;
    const ZvViewOptions& options = Options();
    m_pointsToWorld = options.paperScale > 0
                          ? ZvUnits::kMetersPerPoint * WorldUnitsPerMeter() * options.paperScale
                          : m_worldPerPixel * options.pixelsPerInch / kPointsPerInch;
}

// --- rebuild -----------------------------------------------------------------------------------------

void ZvViewXForm::RebuildView() {
    RebuildViewInternal(nullptr);
}

void ZvViewXForm::RebuildViewCropped(const ZvBounds2D& crop) {
    RebuildViewInternal(crop.Width() > 0 && crop.Height() > 0 ? &crop : nullptr);
}

double ZvViewXForm::AspectRatio() const {
    return m_window.Height() > 0 && m_window.Width() > 0 ? m_window.Width() / m_window.Height() : 1;
}

double ZvViewXForm::EyeDistance() const {
    return (m_target - m_eye).Length();
}

void ZvViewXForm::RebuildViewInternal(const ZvBounds2D* crop) {
    SetupViewport(crop ? *crop : m_window);
    CheckWorldCenter(false);
    BuildProjection(AspectRatio());
    if (crop)
        AdjustProjection(*crop);
    BuildModelView();
    MatricesChanged();
    AutoSetupWorldScale();
    AutoSetupPointsToWorld();
    SetupFunctionPointers();
}

void ZvViewXForm::SetupViewport(const ZvBounds2D& area) {
    const double left = area.minX - m_frameBuffer.left - m_frameBufferOffset.x;
    const double top = area.minY - m_frameBuffer.top - m_frameBufferOffset.y;
    const double width = area.Width(), height = area.Height();
    m_viewport =
        m_yUp ? ZvViewport{left, top, width, height} : ZvViewport{left, top + height, width, -height};
    m_halfWidth = float(width / 2);
    m_halfHeight = float(m_viewport.height / 2);
    m_originX = float(left + width / 2);
    m_originY = float(top + height / 2);
}

void ZvViewXForm::BuildProjection(double aspect) {
    if (!IsOrthographic()) {
        const double top = std::tan(m_fieldOfView * kPi / 360) * kNearPlane;
        const double far = std::max(1e7, 1000 * EyeDistance());
        m_projection = c_glFrustum(-top * aspect, top * aspect, -top, top, kNearPlane, far);
        return;
    }
    double halfWidth = m_viewWidth / 2, halfHeight = m_viewWidth / aspect / 2;
    if (halfWidth == 0)
        halfWidth = kLeastExtent;
    if (halfHeight == 0)
        halfHeight = kLeastExtent;
    // Depth 0 is the target's plane; the depth covered is far more than what shows.
    const double middle = m_flags & kOrientLookAt ? EyeDistance() : 0;
    const double depth = std::max(1e6, 1000 * std::max(halfWidth, halfHeight));
    m_projection = c_glOrtho(-halfWidth, halfWidth, -halfHeight, halfHeight, middle - depth, middle + depth);
}

void ZvViewXForm::AdjustProjection(const ZvBounds2D& crop) {
    const double sx = m_window.Width() / crop.Width(), sy = m_window.Height() / crop.Height();
    const Vec2d shift = crop.Center() - m_window.Center();
    Mat4d zoom;
    zoom.m[0][0] = sx, zoom.m[0][3] = -2 * shift.x / crop.Width();
    zoom.m[1][1] = sy, zoom.m[1][3] = (m_yUp ? -2 : 2) * shift.y / crop.Height();
    m_projection = zoom * m_projection;
}

void ZvViewXForm::BuildModelView() {
    const Vec3d target = m_target + m_offset;
    if (m_flags & kOrientLookAt) {
        m_modelView = c_gluLookAt(m_eye + m_offset, target, {0, 0, 1});
        return;
    }
    Mat4d turn;
    if (m_flags & kOrientAngles)
        turn = Mat4d::RotationX(m_flags & kTiltBack ? m_tilt : -m_tilt) *
               Mat4d::RotationZ(m_flags & kRotateClockwise ? -m_rotation : m_rotation);
    const Vec3d back{0, 0, IsOrthographic() ? 0 : -EyeDistance()};
    m_modelView = Mat4d::Translation(back) * turn * Mat4d::Translation(-target);
}

/// What follows from the matrices.
void ZvViewXForm::MatricesChanged() {
    m_combined = m_projection * m_modelView;
    m_combinedLQ = m_combined.As<float>();
    const auto& m = m_combined.m;
    m_isAffine = m[3][0] == 0 && m[3][1] == 0 && m[3][2] == 0 && m[3][3] == 1;
    const double size = std::abs(m[0][0]) + std::abs(m[0][1]) + std::abs(m[1][0]) + std::abs(m[1][1]);
    m_isPlan = m_isAffine && std::abs(m[0][2]) + std::abs(m[1][2]) <= 1e-12 * size;
    ExtractPlanes();
    RefreshPre();
}

void ZvViewXForm::AutoSetupWorldScale() {
    const double across = IsOrthographic()
                              ? std::max(m_viewWidth, 2 * kLeastExtent)
                              : 2 * std::tan(m_fieldOfView * kPi / 360) * EyeDistance() * AspectRatio();
    m_worldPerPixel = std::max(across, kLeastExtent) / std::max(1.0, m_window.Width());
}

void ZvViewXForm::SetupFunctionPointers() {
    m_toView = m_pre.empty() ? &ToViewPlain : &ToViewPre;
    m_toViewLQ = m_pre.empty() ? &ToViewLQPlain : &ToViewLQPre;
}

// --- world centre ------------------------------------------------------------------------------------

void ZvViewXForm::EnableWorldCenterManagementGlobally(bool on) {
    g_manageCenters = on;
}

void ZvViewXForm::SetWorldCenter(const Vec3d& center) {
    m_offset = -center;
    BuildModelView();
    MatricesChanged();
}

double ZvViewXForm::PixelsPerWorld() const {
    return m_window.Width() / std::max(m_viewWidth, 2 * kLeastExtent);
}

bool ZvViewXForm::WorldCenterOk(const Vec3d& point) const {
    return m_tolerance > (point - WorldCenter()).Length() * PixelsPerWorld();
}

void ZvViewXForm::CheckWorldCenter(bool force) {
    const Vec3d candidate = m_target;
    if (!g_manageCenters || !m_manageCenter || !IsFinite(candidate))
        return;
    if (force || m_tolerance == 0) {
        m_offset = -candidate;
        return;
    }
    const double k = PixelsPerWorld();
    auto nearest = m_recent.end();
    double least = 0;
    for (auto it = m_recent.begin(); it != m_recent.end(); ++it) {
        const double distance = (Vec3d{it->x, it->y, it->z} - candidate).Length();
        if (m_tolerance > distance * k && (nearest == m_recent.end() || distance < least))
            nearest = it, least = distance;
    }
    if (nearest != m_recent.end()) {
        ++nearest->useCount;
        std::rotate(nearest, nearest + 1, m_recent.end());
        m_offset = {-m_recent.back().x, -m_recent.back().y, -m_recent.back().z};
    } else if (!WorldCenterOk(candidate)) {
        m_offset = -candidate;
        m_recent.push_back({candidate.x, candidate.y, candidate.z, 1});
        TrimRecentWorldCenters();
    }
}

void ZvViewXForm::TrimRecentWorldCenters() {
    if (m_recent.size() > kMaxRecentCenters)
        m_recent.erase(m_recent.begin(), m_recent.end() - kMaxRecentCenters);
}

// --- stacks ------------------------------------------------------------------------------------------

void ZvViewXForm::PushPreTransform(const Mat4d& toOuter) {
    m_pre.push_back({m_pre.empty() ? toOuter : m_pre.back().toWorld * toOuter, {}});
    RefreshPre();
    SetupFunctionPointers();
}

void ZvViewXForm::PopPreTransform() {
    if (!m_pre.empty())
        m_pre.pop_back();
    SetupFunctionPointers();
}

void ZvViewXForm::RefreshPre() {
    for (PreTransform& pre : m_pre)
        pre.toOffset = Mat4d::Translation(m_offset) * pre.toWorld;
}

void ZvViewXForm::PushMatrixSet() {
    m_sets.push_back({m_projection, m_modelView, m_offset});
}

void ZvViewXForm::PopMatrixSet() {
    if (m_sets.empty())
        return;
    m_projection = m_sets.back().projection;
    m_modelView = m_sets.back().modelView;
    m_offset = m_sets.back().offset;
    m_sets.pop_back();
    MatricesChanged();
}

void ZvViewXForm::TempTranslate(const Vec3d& by) {
    TempModelViewMul(Mat4d::Translation(by));
}

void ZvViewXForm::TempModelViewMul(const Mat4d& matrix) {
    m_translates.push_back(m_modelView);
    m_modelView = m_modelView * Mat4d::Translation(m_offset) * matrix * Mat4d::Translation(-m_offset);
    MatricesChanged();
}

void ZvViewXForm::PopTranslate() {
    if (m_translates.empty())
        return;
    m_modelView = m_translates.back();
    m_translates.pop_back();
    MatricesChanged();
}

// --- sizes and angles --------------------------------------------------------------------------------

ZvScaleSetup ZvViewXForm::Scale() const {
    return {m_pointsToWorld * ZvUnits::kPointsPerMeter, m_worldPerPixel};
}

float ZvViewXForm::SizeToWorld(const ZvUniSize& size) const {
    return float(Scale().SizeToWorld(size));
}

float ZvViewXForm::SizeToView(const ZvUniSize& size) const {
    return float(Scale().SizeToWorld(size) / m_worldPerPixel);
}

double ZvViewXForm::AngleToView(double angle) const {
    const Vec4d turned = m_modelView * Vec4d{std::cos(angle), std::sin(angle), 0, 0};
    return std::atan2(turned.y, turned.x);
}

Rect2I ZvViewXForm::InvertRect(const Rect2I& rect) const {
    const Rect2I window = m_window.ToRect();
    return {rect.left, window.top + window.bottom - rect.bottom, rect.right,
            window.top + window.bottom - rect.top};
}

ZvBounds2D ZvViewXForm::InvertRect(const ZvBounds2D& rect) const {
    return {rect.minX, m_window.minY + m_window.maxY - rect.maxY, rect.maxX,
            m_window.minY + m_window.maxY - rect.minY};
}

} // namespace Zelvan
