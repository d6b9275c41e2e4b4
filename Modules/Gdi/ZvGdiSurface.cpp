#include "Modules/Gdi/ZvGdiSurface.h"
#include <algorithm>
#include <cmath>

namespace {

COLORREF ToRef(uint32_t argb) {
    return RGB(argb >> 16 & 255, argb >> 8 & 255, argb & 255);
}

constexpr float kReach = 8192; // pixels beyond the surface
constexpr size_t kMostDashes = 16;

// GDI's pixel n covers [n, n + 1): positions are rounded down.
POINT ToPoint(Vec2f p) {
    return {LONG(std::floor(p.x)), LONG(std::floor(p.y))};
}

} // namespace

ZvGdiSurface::ZvGdiSurface(HDC context, int width, int height)
    : m_context(context), m_width(width), m_height(height), m_saved(SaveDC(context)) {
    SetBkMode(context, TRANSPARENT);
    SetPolyFillMode(context, ALTERNATE);
    SetPen({});
    SetFill({});
}

ZvGdiSurface::~ZvGdiSurface() {
    RestoreDC(m_context, m_saved); // deselects what is ours
    DeleteObject(m_pen);
    DeleteObject(m_brush);
}

void ZvGdiSurface::SelectAndDelete(HGDIOBJ fresh, HGDIOBJ& held) {
    SelectObject(m_context, fresh);
    if (held)
        DeleteObject(held);
    held = fresh;
}

HPEN ZvGdiSurface::MakePen() const {
    LOGBRUSH ink{};
    ink.lbStyle = BS_SOLID;
    ink.lbColor = ToRef(m_penSpec.argb);
    if (m_penSpec.widthPx <= 1 && m_penSpec.dashes.empty())
        return CreatePen(PS_SOLID, 0, ink.lbColor);
    const DWORD cap = m_penSpec.cap == ZvPen::Cap::Round    ? PS_ENDCAP_ROUND
                      : m_penSpec.cap == ZvPen::Cap::Square ? PS_ENDCAP_SQUARE
                                                            : PS_ENDCAP_FLAT;
    DWORD pattern[kMostDashes];
    DWORD slots = 0;
    for (float length : m_penSpec.dashes)
        if (slots < kMostDashes)
            pattern[slots++] = DWORD(std::max(1L, std::lround(length)));
    const DWORD width = DWORD(std::max(1L, std::lround(m_penSpec.widthPx)));
    return ExtCreatePen(PS_GEOMETRIC | PS_JOIN_ROUND | cap | (slots ? PS_USERSTYLE : PS_SOLID), width, &ink,
                        slots, slots ? pattern : nullptr);
}

void ZvGdiSurface::SetPen(const ZvPen& pen) {
    m_penSpec = pen;
    SelectAndDelete(MakePen(), m_pen);
}

void ZvGdiSurface::SetFill(const ZvFill& fill) {
    HGDIOBJ brush = nullptr;
    if (fill.kind == ZvFill::Kind::Solid)
        brush = CreateSolidBrush(ToRef(fill.argb));
    else if (fill.kind == ZvFill::Kind::Hatch)
        brush = CreateHatchBrush(HS_BDIAGONAL, ToRef(fill.argb));
    else if (fill.kind == ZvFill::Kind::CrossHatch)
        brush = CreateHatchBrush(HS_DIAGCROSS, ToRef(fill.argb));
    SelectObject(m_context, brush ? brush : GetStockObject(NULL_BRUSH));
    if (m_brush)
        DeleteObject(m_brush);
    m_brush = brush;
    const POINT origin = ToPoint(fill.hatchOrigin);
    SetBrushOrgEx(m_context, origin.x, origin.y, nullptr);
}

ZvSurfaceCut::Box ZvGdiSurface::Reach() const {
    return ZvSurfaceCut::Around({0, 0, m_width, m_height}, kReach + m_penSpec.widthPx);
}

void ZvGdiSurface::Polyline(const Vec2f* points, size_t count, bool closed) {
    if (!ZvSurfaceCut::IsNeeded(Reach(), points, count))
        DrawLine(points, count, closed);
    else
        ZvSurfaceCut::Line(Reach(), points, count, closed, m_cut,
                           [this](const Vec2f* part, size_t n) { DrawLine(part, n, false); });
}

void ZvGdiSurface::DrawLine(const Vec2f* points, size_t count, bool closed) {
    if (count == 0)
        return;
    m_points.clear();
    for (size_t i = 0; i < count; ++i)
        m_points.push_back(ToPoint(points[i]));
    if (count == 1 && m_penSpec.widthPx > 1) {
        const LONG half = std::max(1L, std::lround(m_penSpec.widthPx / 2));
        const POINT at = m_points[0];
        const HGDIOBJ brush = CreateSolidBrush(ToRef(m_penSpec.argb));
        const HGDIOBJ former = SelectObject(m_context, brush);
        SelectObject(m_context, GetStockObject(NULL_PEN));
        Ellipse(m_context, at.x - half, at.y - half, at.x + half + 1, at.y + half + 1);
        SelectObject(m_context, former);
        SelectObject(m_context, m_pen);
        DeleteObject(brush);
        return;
    }
    closed = closed && count > 2;
    if (closed)
        m_points.push_back(m_points[0]);
    ::Polyline(m_context, m_points.data(), int(m_points.size()));
    if (!closed && m_penSpec.widthPx <= 1 && (count == 1 || m_penSpec.dashes.empty())) {
        const POINT end = m_points.back(); // GDI leaves the last pixel of a line out
        SetPixelV(m_context, end.x, end.y, ToRef(m_penSpec.argb));
    }
}

void ZvGdiSurface::Polygon(const ZvSurfaceRing* rings, size_t count, bool outline) {
    m_points.clear();
    m_counts.clear();
    for (size_t r = 0; r < count; ++r) {
        const auto corners = ZvSurfaceCut::RingWithin(Reach(), rings[r].points, rings[r].count, m_cut);
        if (corners.size() < 2)
            continue;
        m_counts.push_back(INT(corners.size()));
        for (const Vec2f& corner : corners)
            m_points.push_back(ToPoint(corner));
    }
    if (m_counts.empty())
        return;
    SelectObject(m_context, outline ? m_pen : GetStockObject(NULL_PEN));
    ::PolyPolygon(m_context, m_points.data(), m_counts.data(), int(m_counts.size()));
    SelectObject(m_context, m_pen);
}

bool ZvGdiSurface::Text(const ZvTextRun& run) {
    if (!(run.heightPx > 0) || !ZvSurfaceCut::IsInside(Reach(), run.baselineStart))
        return false;
    LOGFONTW spec{};
    spec.lfHeight = LONG(std::lround(run.heightPx)); // positive: cell height, ascent to descent
    spec.lfEscapement = spec.lfOrientation = LONG(std::lround(run.angle * 572.9577951308232));
    spec.lfCharSet = DEFAULT_CHARSET;
    const size_t length = std::min<size_t>(run.fontFamily.Length(), LF_FACESIZE - 1);
    std::copy_n(reinterpret_cast<const wchar_t*>(run.fontFamily.Ptr()), length, spec.lfFaceName);
    const HFONT font = CreateFontIndirectW(&spec);
    const HGDIOBJ former = SelectObject(m_context, font);
    SetTextColor(m_context, ToRef(run.argb));
    SetTextAlign(m_context, TA_BASELINE | TA_LEFT);
    const POINT at = ToPoint(run.baselineStart);
    const bool drawn = TextOutW(m_context, at.x, at.y, reinterpret_cast<const wchar_t*>(run.text.Ptr()),
                                int(run.text.Length()));
    SelectObject(m_context, former);
    DeleteObject(font);
    return drawn;
}

bool ZvGdiSurface::Image(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right,
                         Vec2f down) {
    if (!pixels || width <= 0 || height <= 0)
        return false;
    if (!ZvSurfaceCut::IsFinite(origin) || right.Cross(down) == 0)
        return false;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height; // rows from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    const int state = SaveDC(m_context);
    SetGraphicsMode(m_context, GM_ADVANCED);
    const XFORM place{right.x / float(width),
                      right.y / float(width),
                      down.x / float(height),
                      down.y / float(height),
                      origin.x,
                      origin.y};
    SetWorldTransform(m_context, &place);
    const int rows = StretchDIBits(m_context, 0, 0, width, height, 0, 0, width, height, pixels, &info,
                                   DIB_RGB_COLORS, SRCCOPY);
    RestoreDC(m_context, state);
    return rows > 0;
}

void ZvGdiSurface::PushClip(const Rect2I& clip) {
    SaveDC(m_context);
    IntersectClipRect(m_context, clip.left, clip.top, clip.right, clip.bottom);
}

// RestoreDC would bring back former pens as well: select ours again.
void ZvGdiSurface::PopClip() {
    RestoreDC(m_context, -1);
    SelectObject(m_context, m_pen);
    SelectObject(m_context, m_brush ? m_brush : GetStockObject(NULL_BRUSH));
}
