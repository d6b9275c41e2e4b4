#include "Zelvan/ZvWidestLine.h"
#include "Zelvan/Entities/ZvLineEntity.h"
#include <algorithm>

void ZvWidestLine::Add(const ZvEntity& entity) {
    if (!entity.IsLineEntity())
        return;
    const ZvLineWidth width = static_cast<const ZvLineEntity&>(entity).GetLineWidth();
    if (width.IsThin())
        return;
    m_world = std::max(m_world, float(width.GetWorld()));
    m_pixels = std::max(m_pixels, float(width.GetPixels()));
    m_millimeters = std::max(m_millimeters, float(width.GetViewportMM()));
    m_points = std::max(m_points, float(width.GetPoints()));
}

double ZvWidestLine::ToWorld(const ZvScaleSetup& scale) const {
    double widest = m_world;
    if (m_pixels > 0)
        widest = std::max(widest, scale.WidthToWorld(ZvLineWidth::Pixels(double(m_pixels))));
    if (m_millimeters > 0)
        widest = std::max(widest, scale.WidthToWorld(ZvLineWidth::ViewportMM(double(m_millimeters))));
    if (m_points > 0)
        widest = std::max(widest, scale.WidthToWorld(ZvLineWidth::Points(double(m_points))));
    return widest;
}
