#include "Zelvan/Tables/ZvPaperPage.h"
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include <algorithm>
#include <cmath>

namespace {

constexpr double kLargestSide = 100000;

bool IsSide(double mm) {
    return mm >= 1 && mm <= kLargestSide;
}

} // namespace

std::unique_ptr<ZvTableRecord> ZvPaperPage::NewOfKind() const {
    return std::make_unique<ZvPaperPage>();
}

bool ZvPaperPage::SetSize(double widthMm, double heightMm) {
    if (!IsSide(widthMm) || !IsSide(heightMm))
        return false;
    m_shortSide = std::min(widthMm, heightMm);
    m_longSide = std::max(widthMm, heightMm);
    m_landscape = widthMm > heightMm;
    FieldsChanged();
    IncModified();
    return true;
}

void ZvPaperPage::SetLandscape(bool on) {
    m_landscape = on;
    FieldsChanged();
    IncModified();
}

void ZvPaperPage::SetMargins(const Margins& margins) {
    m_margins = margins;
    FieldsChanged();
    IncModified();
}

void ZvPaperPage::SetCenter(const Vec3d& center) {
    m_center = center;
    FieldsChanged();
    IncModified();
}

void ZvPaperPage::SetWorldPerMm(double value) {
    m_worldPerMm = value;
    FieldsChanged();
    IncModified();
}

void ZvPaperPage::SetAngle(double radians) {
    m_angle = radians;
    FieldsChanged();
    IncModified();
}

void ZvPaperPage::SetBelongsToLayout(bool on) {
    m_belongsToLayout = on;
    IncModified();
}

void ZvPaperPage::SetPaperName(const XStringW& name) {
    m_paperName = name;
    IncModified();
}

void ZvPaperPage::SetPrinter(const XStringW& name) {
    m_printer = name;
    IncModified();
}

void ZvPaperPage::SetOrder(int order) {
    m_order = order;
    IncModified();
}

void ZvPaperPage::SetPrinted(bool on) {
    m_printed = on;
    IncModified();
}

void ZvPaperPage::Fields(ZvRecordFields& visit) {
    visit.Field("ShortSide", m_shortSide);
    visit.Field("LongSide", m_longSide);
    visit.Field("Landscape", m_landscape);
    visit.Field("MarginLeft", m_margins.left);
    visit.Field("MarginTop", m_margins.top);
    visit.Field("MarginRight", m_margins.right);
    visit.Field("MarginBottom", m_margins.bottom);
    visit.Field("Center", m_center);
    visit.Field("WorldPerMm", m_worldPerMm);
    visit.Field("Angle", m_angle);
    visit.Field("BelongsToLayout", m_belongsToLayout, ZvRecordFields::kReadOnly);
    visit.Field("Printed", m_printed);
    visit.Field("Order", m_order);
    visit.Field("PaperName", m_paperName);
    visit.Field("Printer", m_printer);
}

void ZvPaperPage::FieldsChanged() {
    if (!IsSide(m_shortSide) || !IsSide(m_longSide))
        m_shortSide = 210, m_longSide = 297;
    if (m_shortSide > m_longSide)
        std::swap(m_shortSide, m_longSide);
    if (!(m_worldPerMm > 0) || !std::isfinite(m_worldPerMm))
        m_worldPerMm = 0.001;
    if (!std::isfinite(m_angle))
        m_angle = 0;
    if (!std::isfinite(m_center.x) || !std::isfinite(m_center.y) || !std::isfinite(m_center.z))
        m_center = {};
    const auto fit = [](double& low, double& high, double side) {
        low = std::isfinite(low) ? std::clamp(low, 0.0, side) : 0;
        high = std::isfinite(high) ? std::clamp(high, 0.0, side) : 0;
        if (low + high >= side * 0.99) {
            const double scale = side * 0.9 / (low + high);
            low *= scale, high *= scale;
        }
    };
    fit(m_margins.left, m_margins.right, GetWidth());
    fit(m_margins.bottom, m_margins.top, GetHeight());
}

// --- geometry ----------------------------------------------------------------------------------------------

/// Bounds of a rectangle given in mm from the sheet's centre, as it lies over the drawing.
ZvBounds2D ZvPaperPage::Turned(double left, double bottom, double right, double top) const {
    const double c = std::cos(m_angle) * m_worldPerMm, s = std::sin(m_angle) * m_worldPerMm;
    ZvBounds2D bounds;
    for (const double x : {left, right})
        for (const double y : {bottom, top})
            bounds.ExpandToFit(m_center.x + x * c - y * s, m_center.y + x * s + y * c);
    return bounds;
}

ZvBounds2D ZvPaperPage::Sheet() const {
    const double x = GetWidth() / 2, y = GetHeight() / 2;
    return Turned(-x, -y, x, y);
}

ZvBounds2D ZvPaperPage::Printable() const {
    const double x = GetWidth() / 2, y = GetHeight() / 2;
    return Turned(-x + m_margins.left, -y + m_margins.bottom, x - m_margins.right, y - m_margins.top);
}

void ZvPaperPage::DrawUI(IZvSurface& surface, const Rect2I& box) const {
    const double scale = std::min((box.Width() - 2) / GetWidth(), (box.Height() - 2) / GetHeight());
    const double cx = (box.left + box.right) / 2.0, cy = (box.top + box.bottom) / 2.0;
    const auto frame = [&](double left, double top, double right, double bottom) {
        const Vec2f corners[] = {{float(cx + left * scale), float(cy + top * scale)},
                                 {float(cx + right * scale), float(cy + top * scale)},
                                 {float(cx + right * scale), float(cy + bottom * scale)},
                                 {float(cx + left * scale), float(cy + bottom * scale)}};
        surface.Polyline(corners, 4, true);
    };
    const double x = GetWidth() / 2, y = GetHeight() / 2;
    surface.SetPen({});
    frame(-x, -y, x, y);
    ZvPen margin;
    margin.dashes = {2, 2};
    surface.SetPen(margin);
    frame(-x + m_margins.left, -y + m_margins.top, x - m_margins.right, y - m_margins.bottom);
}
