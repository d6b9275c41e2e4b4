#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"

namespace ZvCore {
class BinXmlNode;
}

/// The drawing's own grid of reference: where it begins, how wide its cells are, how it is turned.
class ZV_API ZvHomeGrid {
public:
    /// `spacing` in world units; it must be positive and finite, else 1 is taken.
    explicit ZvHomeGrid(double spacing) { SetSpacing(spacing, spacing); }

    const Vec3d& Origin() const { return m_origin; }
    void SetOrigin(const Vec3d& origin) { m_origin = origin; }
    double SpacingX() const { return m_spacingX; }
    double SpacingY() const { return m_spacingY; }
    void SetSpacing(double x, double y);
    /// Radians, counter-clockwise.
    double Rotation() const { return m_rotation; }
    void SetRotation(double radians) { m_rotation = radians; }
    /// Lines between two main lines.
    int Divisions() const { return m_divisions; }
    void SetDivisions(int count) { m_divisions = count < 1 ? 1 : count; }

    /// The nearest crossing of (divided) grid lines; Z stays.
    Vec3d Snap(const Vec3d& point) const;

    void Store(ZvCore::BinXmlNode& node) const;
    void Load(const ZvCore::BinXmlNode& node);

private:
    Vec3d m_origin;
    double m_spacingX = 1, m_spacingY = 1;
    double m_rotation = 0;
    int m_divisions = 1;
};
