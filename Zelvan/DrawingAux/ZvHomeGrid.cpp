#include "Zelvan/DrawingAux/ZvHomeGrid.h"
#include "ZvCore/BinXml.h"
#include <cmath>

void ZvHomeGrid::SetSpacing(double x, double y) {
    m_spacingX = std::isfinite(x) && x > 0 ? x : 1;
    m_spacingY = std::isfinite(y) && y > 0 ? y : 1;
}

Vec3d ZvHomeGrid::Snap(const Vec3d& point) const {
    const double c = std::cos(m_rotation), s = std::sin(m_rotation);
    const double dx = point.x - m_origin.x, dy = point.y - m_origin.y;
    const double stepX = m_spacingX / m_divisions, stepY = m_spacingY / m_divisions;
    const double u = std::round((c * dx + s * dy) / stepX) * stepX;
    const double v = std::round((c * dy - s * dx) / stepY) * stepY;
    return {m_origin.x + c * u - s * v, m_origin.y + s * u + c * v, point.z};
}

void ZvHomeGrid::Store(ZvCore::BinXmlNode& node) const {
    node.Set("X", m_origin.x);
    node.Set("Y", m_origin.y);
    node.Set("Z", m_origin.z);
    node.Set("SpacingX", m_spacingX);
    node.Set("SpacingY", m_spacingY);
    node.Set("Rotation", m_rotation);
    node.Set("Divisions", int64_t(m_divisions));
}

void ZvHomeGrid::Load(const ZvCore::BinXmlNode& node) {
    m_origin = {node.GetDouble("X", m_origin.x), node.GetDouble("Y", m_origin.y),
                node.GetDouble("Z", m_origin.z)};
    SetSpacing(node.GetDouble("SpacingX", m_spacingX), node.GetDouble("SpacingY", m_spacingY));
    m_rotation = node.GetDouble("Rotation", m_rotation);
    SetDivisions(int(node.GetInt("Divisions", m_divisions)));
}
