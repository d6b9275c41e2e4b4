#pragma once
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/RenC/ZvSurfaceCut.h"
#include <QBrush>
#include <QPainterPath>
#include <QPen>
#include <QPointF>
#include <vector>

class QPainter;

/// A surface over a QPainter: pictures, PDF and SVG pages, windows. Pixels are the painter's logical units. The painter must stay
/// active as long as the surface is used. What reaches far out is cut near the surface's edges: neither Qt nor readers of PDF take
/// numbers of any size.
class ZvQtSurface : public IZvSurface {
public:
    ZvQtSurface(QPainter& painter, int width, int height);

    int Width() const override { return m_width; }
    int Height() const override { return m_height; }
    void SetPen(const ZvPen& pen) override;
    void SetFill(const ZvFill& fill) override;
    void Polyline(const Vec2f* points, size_t count, bool closed) override;
    void Polygon(const ZvSurfaceRing* rings, size_t count, bool outline) override;
    bool Text(const ZvTextRun& run) override;
    bool Image(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right, Vec2f down) override;
    void PushClip(const Rect2I& clip) override;
    void PopClip() override;

    /// Width at which thin pens and thinner ones are drawn, logical units; 0 is the device's hairline. Printers' hairlines are hard to see.
    void SetThinWidth(double width) { m_thinWidth = width; }

private:
    void DrawHatch(const QPainterPath& area);
    void DrawLine(const Vec2f* points, size_t count, bool closed);
    ZvSurfaceCut::Box Reach() const;

    QPainter& m_painter;
    int m_width, m_height;
    double m_thinWidth = 0;
    QPen m_pen;
    QBrush m_brush;
    ZvFill m_fill;
    std::vector<QPointF> m_points;
    std::vector<Vec2f> m_cut;
};
