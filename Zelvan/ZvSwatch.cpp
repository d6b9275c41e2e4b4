#include "Zelvan/ZvSwatch.h"
#include "Zelvan/Ports/ZvTableTextMeasure.h"
#include <algorithm>
#include <array>

namespace {

constexpr uint32_t kFrameColor = 0xFF808080;
constexpr uint32_t kTextColor = 0xFF000000;
constexpr const char16_t* kSmallFont = u"Small Fonts";
constexpr const char16_t* kLabelFont = u"Tahoma";

ZvPen Thin(uint32_t argb) {
    ZvPen pen;
    pen.argb = argb;
    return pen;
}

std::array<Vec2f, 4> Corners(const Rect2I& r) {
    const float left = float(r.left), top = float(r.top), right = float(r.right), bottom = float(r.bottom);
    return {{{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
}

} // namespace

ZvSwatch::ZvSwatch(IZvSurface& surface, const Rect2I& area) : m_surface(surface), m_area(area), m_box(area) {
    // Areas much wider than high have room for a label.
    if (area.Width() >= 3 * area.Height())
        m_box.right = area.left + 2 * area.Height();
    m_box = {m_box.left + 1, m_box.top + 1, m_box.right - 1, m_box.bottom - 1};
    m_inside = {m_box.left + 1, m_box.top + 1, m_box.right - 1, m_box.bottom - 1};
}

void ZvSwatch::Box(const ZvFill& fill) {
    m_surface.SetFill(fill);
    m_surface.SetPen(Thin(kFrameColor));
    const auto corners = Corners(m_box);
    const ZvSurfaceRing ring{corners.data(), corners.size()};
    if (fill.kind == ZvFill::Kind::None)
        m_surface.Polyline(corners.data(), corners.size(), true);
    else
        m_surface.Polygon(&ring, 1, true);
}

void ZvSwatch::CrossOut() {
    m_surface.SetPen(Thin(kFrameColor));
    const auto corners = Corners(m_inside);
    const Vec2f down[] = {corners[0], corners[2]}, up[] = {corners[3], corners[1]};
    m_surface.Polyline(down, 2, false);
    m_surface.Polyline(up, 2, false);
}

void ZvSwatch::Mark(const XStringW& text) {
    const float height = std::min(11.0f, float(m_inside.Height()));
    const double width = ZvTableTextMeasure::Default().Measure(text.View(), {kSmallFont}).width * height;
    Text(text, kSmallFont, float((m_inside.left + m_inside.right - width) / 2), height);
}

void ZvSwatch::Label(const XStringW& text) {
    if (m_box.right + 4 < m_area.right)
        Text(text, kLabelFont, float(m_box.right + 4), std::min(13.0f, float(m_area.Height())));
}

void ZvSwatch::Line(const ZvPen& pen) {
    m_surface.PushClip(m_inside);
    m_surface.SetPen(pen);
    const float y = float(m_inside.top + m_inside.bottom) / 2;
    const Vec2f line[] = {{float(m_inside.left), y}, {float(m_inside.right), y}};
    m_surface.Polyline(line, 2, false);
    m_surface.PopClip();
}

void ZvSwatch::Text(const XStringW& text, const char16_t* font, float left, float height) {
    if (text.IsEmpty() || height <= 0)
        return;
    ZvTextRun run;
    run.text = text;
    run.fontFamily = font;
    run.heightPx = height;
    run.argb = kTextColor;
    // The baseline lies a fifth of the height above the bottom of the run.
    run.baselineStart = {left, float(m_area.top + m_area.bottom) / 2 + height * 0.3f};
    m_surface.PushClip(m_area);
    (void)m_surface.Text(run); // a surface without fonts shows the box alone
    m_surface.PopClip();
}
