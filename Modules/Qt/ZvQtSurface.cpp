#include "Modules/Qt/ZvQtSurface.h"
#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QTransform>
#include <algorithm>
#include <cmath>

namespace {

constexpr float kReach = 8192; // pixels beyond the surface

QString ToQt(const XStringW& text) {
    return QString::fromUtf16(text.Ptr(), qsizetype(text.Length()));
}
QPointF ToQt(Vec2f p) {
    return {p.x, p.y};
}

// Qt's patterns start with a dash, have an even number of lengths and count in widths of the pen.
QList<qreal> DashPattern(const ZvPen& pen, double width) {
    const double unit = width > 0 ? width : 1;
    QList<qreal> pattern;
    for (float length : pen.dashes)
        pattern.push_back(std::max(length, 0.1f) / unit);
    if (pattern.size() % 2)
        pattern.push_back(0.001 / unit);
    return pattern;
}

} // namespace

ZvQtSurface::ZvQtSurface(QPainter& painter, int width, int height)
    : m_painter(painter), m_width(width), m_height(height) {
    m_painter.setRenderHint(QPainter::Antialiasing);
}

void ZvQtSurface::SetPen(const ZvPen& pen) {
    m_pen = QPen(QColor::fromRgba(pen.argb));
    const double least = m_thinWidth > 0 ? m_thinWidth : 1;
    m_pen.setWidthF(pen.widthPx > least ? pen.widthPx : m_thinWidth);
    m_pen.setCapStyle(pen.cap == ZvPen::Cap::Round    ? Qt::RoundCap
                      : pen.cap == ZvPen::Cap::Square ? Qt::SquareCap
                                                      : Qt::FlatCap);
    m_pen.setJoinStyle(Qt::RoundJoin);
    if (!pen.dashes.empty()) {
        m_pen.setDashPattern(DashPattern(pen, m_pen.widthF()));
        if (std::find(pen.dashes.begin(), pen.dashes.end(), 0.0f) != pen.dashes.end())
            m_pen.setCapStyle(Qt::RoundCap); // dots
    }
}

void ZvQtSurface::SetFill(const ZvFill& fill) {
    m_fill = fill;
    m_brush = fill.kind == ZvFill::Kind::Solid ? QBrush(QColor::fromRgba(fill.argb)) : QBrush(Qt::NoBrush);
}

ZvSurfaceCut::Box ZvQtSurface::Reach() const {
    return ZvSurfaceCut::Around({0, 0, m_width, m_height}, kReach + float(m_pen.widthF()));
}

void ZvQtSurface::Polyline(const Vec2f* points, size_t count, bool closed) {
    if (count == 0)
        return;
    if (ZvSurfaceCut::IsNeeded(Reach(), points, count)) {
        ZvSurfaceCut::Line(Reach(), points, count, closed, m_cut,
                           [this](const Vec2f* part, size_t n) { DrawLine(part, n, false); });
        return;
    }
    DrawLine(points, count, closed);
}

void ZvQtSurface::DrawLine(const Vec2f* points, size_t count, bool closed) {
    m_painter.setBrush(Qt::NoBrush);
    if (count == 1) { // flat ends would leave nothing of it, and so would dashes
        QPen dot(m_pen.color(), m_pen.widthF(), Qt::SolidLine,
                 m_pen.capStyle() == Qt::SquareCap ? Qt::SquareCap : Qt::RoundCap);
        m_painter.setPen(dot);
        m_painter.drawPoint(ToQt(points[0]));
        return;
    }
    m_painter.setPen(m_pen);
    m_points.resize(count);
    for (size_t i = 0; i < count; ++i)
        m_points[i] = ToQt(points[i]);
    if (closed && count > 2)
        m_painter.drawPolygon(m_points.data(), int(count));
    else
        m_painter.drawPolyline(m_points.data(), int(count));
}

void ZvQtSurface::Polygon(const ZvSurfaceRing* rings, size_t count, bool outline) {
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    for (size_t r = 0; r < count; ++r) {
        const auto corners = ZvSurfaceCut::RingWithin(Reach(), rings[r].points, rings[r].count, m_cut);
        for (size_t i = 0; i < corners.size(); ++i)
            i ? path.lineTo(ToQt(corners[i])) : path.moveTo(ToQt(corners[i]));
        if (!corners.empty())
            path.closeSubpath();
    }
    if (m_fill.kind == ZvFill::Kind::Hatch || m_fill.kind == ZvFill::Kind::CrossHatch)
        DrawHatch(path);
    m_painter.setPen(outline ? m_pen : QPen(Qt::NoPen));
    m_painter.setBrush(m_brush);
    m_painter.drawPath(path);
}

// Hatch lines as real lines cut to the area, so that PDF and SVG keep them sharp. Qt paints slanted lines of one pixel
// with less than a pixel across them; those that are just wider it paints exactly.
void ZvQtSurface::DrawHatch(const QPainterPath& area) {
    const QRectF box = area.boundingRect() & QRectF(0, 0, m_width, m_height);
    if (box.isEmpty())
        return;
    const double radius = std::hypot(box.width(), box.height()) / 2;
    const double spacing = std::max(m_fill.hatchSpacingPx, ZvFill::kLeastSpacing);
    m_painter.save();
    m_painter.setClipPath(area, Qt::IntersectClip);
    m_painter.setPen(QPen(QColor::fromRgba(m_fill.argb), (m_thinWidth > 0 ? m_thinWidth : 1) * 1.01));
    for (int pass = 0; pass < (m_fill.kind == ZvFill::Kind::CrossHatch ? 2 : 1); ++pass) {
        const double angle = m_fill.hatchAngle + pass * 1.5707963267948966;
        const QPointF along(std::cos(angle), -std::sin(angle)), across(std::sin(angle), std::cos(angle));
        const double at = QPointF::dotProduct(box.center() - ToQt(m_fill.hatchOrigin), across);
        for (double d = std::ceil((at - radius) / spacing) * spacing; d <= at + radius; d += spacing) {
            const QPointF middle = box.center() + across * (d - at);
            m_painter.drawLine(middle - along * radius, middle + along * radius);
        }
    }
    m_painter.restore();
}

bool ZvQtSurface::Text(const ZvTextRun& run) {
    QFont font;
    if (!run.fontFamily.IsEmpty())
        font.setFamily(ToQt(run.fontFamily));
    constexpr int kBase = 64; // glyphs are laid out at this size and scaled: the same widths on every device
    font.setPixelSize(kBase);
    const double height = QFontMetricsF(font).height();
    if (!(run.heightPx > 0) || height <= 0)
        return false;
    m_painter.save();
    m_painter.translate(ToQt(run.baselineStart));
    m_painter.rotate(-run.angle * 57.29577951308232);
    m_painter.scale(run.heightPx / height, run.heightPx / height);
    m_painter.setFont(font);
    m_painter.setPen(QColor::fromRgba(run.argb));
    m_painter.drawText(QPointF(0, 0), ToQt(run.text));
    m_painter.restore();
    return true;
}

bool ZvQtSurface::Image(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right,
                        Vec2f down) {
    if (!pixels || width <= 0 || height <= 0)
        return false;
    const QImage image(reinterpret_cast<const uchar*>(pixels), width, height, width * 4,
                       QImage::Format_ARGB32_Premultiplied);
    m_painter.save();
    m_painter.setTransform(
        QTransform(right.x / width, right.y / width, down.x / height, down.y / height, origin.x, origin.y),
        true);
    m_painter.drawImage(0, 0, image);
    m_painter.restore();
    return true;
}

void ZvQtSurface::PushClip(const Rect2I& clip) {
    m_painter.save();
    m_painter.setClipRect(QRect(clip.left, clip.top, clip.Width(), clip.Height()), Qt::IntersectClip);
}

void ZvQtSurface::PopClip() {
    m_painter.restore();
}
