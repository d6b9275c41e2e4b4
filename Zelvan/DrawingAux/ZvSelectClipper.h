#pragma once
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <vector>

class ZvEntity;

/// A polygon drawn around things in XY (closed by itself, even-odd inside), and how entities lie to it.
class ZV_API ZvSelectClipper {
public:
    explicit ZvSelectClipper(std::vector<Vec2d> polygon);
    /// False for fewer than three corners or ones that are not finite: nothing is inside then.
    bool IsValid() const { return m_valid; }
    const ZvBounds2D& Bounds() const { return m_bounds; }
    bool Contains(const Vec2d& point) const;
    /// By the entity's vertices and segments; entities without any by the corners of their bounds. An area
    /// around the polygon counts as crossing when its interior can be selected.
    ZvClipResult Test(const ZvEntity& entity) const;

private:
    bool CrossesSegment(const Vec2d& a, const Vec2d& b) const;
    ZvClipResult TestParts(const ZvEntity& entity) const;
    ZvClipResult TestBox(const ZvBounds2D& box) const;

    std::vector<Vec2d> m_polygon;
    ZvBounds2D m_bounds;
    bool m_valid = false;
};
