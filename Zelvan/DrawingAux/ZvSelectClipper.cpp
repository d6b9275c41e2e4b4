#include "Zelvan/DrawingAux/ZvSelectClipper.h"
#include "Zelvan/Entities/ZvEntity.h"
#include <algorithm>
#include <cmath>

namespace {

double Side(const Vec2d& a, const Vec2d& b, const Vec2d& p) {
    return (b - a).Cross(p - a);
}

/// Whether p, known to be in line with a and b, lies between them.
bool Between(const Vec2d& a, const Vec2d& b, const Vec2d& p) {
    return std::min(a.x, b.x) <= p.x && p.x <= std::max(a.x, b.x) && std::min(a.y, b.y) <= p.y &&
           p.y <= std::max(a.y, b.y);
}

bool SegmentsMeet(const Vec2d& a, const Vec2d& b, const Vec2d& c, const Vec2d& d) {
    const double abc = Side(a, b, c), abd = Side(a, b, d), cda = Side(c, d, a), cdb = Side(c, d, b);
    if (((abc > 0) != (abd > 0)) && ((cda > 0) != (cdb > 0)) && abc != 0 && abd != 0 && cda != 0 && cdb != 0)
        return true;
    return (abc == 0 && Between(a, b, c)) || (abd == 0 && Between(a, b, d)) ||
           (cda == 0 && Between(c, d, a)) || (cdb == 0 && Between(c, d, b));
}

} // namespace

ZvSelectClipper::ZvSelectClipper(std::vector<Vec2d> polygon) : m_polygon(std::move(polygon)) {
    m_valid = m_polygon.size() >= 3 && std::all_of(m_polygon.begin(), m_polygon.end(), [](const Vec2d& p) {
                  return std::isfinite(p.x) && std::isfinite(p.y);
              });
    for (const Vec2d& corner : m_polygon)
        m_bounds.ExpandToFit(corner);
}

bool ZvSelectClipper::Contains(const Vec2d& p) const {
    bool inside = false;
    for (size_t i = 0, j = m_polygon.size() - 1; i < m_polygon.size(); j = i++) {
        const Vec2d &a = m_polygon[i], &b = m_polygon[j];
        if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x)
            inside = !inside;
    }
    return inside;
}

bool ZvSelectClipper::CrossesSegment(const Vec2d& a, const Vec2d& b) const {
    for (size_t i = 0, j = m_polygon.size() - 1; i < m_polygon.size(); j = i++)
        if (SegmentsMeet(a, b, m_polygon[j], m_polygon[i]))
            return true;
    return false;
}

ZvClipResult ZvSelectClipper::Test(const ZvEntity& entity) const {
    const ZvBounds2D box = entity.Bounds2D();
    if (!m_valid || box.IsNull() || !m_bounds.PositiveUnion(box))
        return ZvClipResult::Outside;
    const ZvClipResult result =
        entity.IsMLVEntity() && entity.MLVGetVertexCount() > 0 ? TestParts(entity) : TestBox(box);
    if (result != ZvClipResult::Outside || !entity.AllowSingleClickSelectInside())
        return result;
    const Vec2d& corner = m_polygon.front();
    return entity.InteriorTest({{corner.x, corner.y, 0}, {0, 0, -1}}) == ZvOccupancy::Inside
               ? ZvClipResult::Crosses
               : result;
}

ZvClipResult ZvSelectClipper::TestParts(const ZvEntity& entity) const {
    bool anyIn = false, anyOut = false;
    dvect<Vec4d> vertices;
    for (int part = 0; part < entity.MLVGetPartCount(); ++part) {
        bool closed = false;
        vertices.clear();
        if (!entity.MLVGetPart(part, vertices, &closed))
            continue;
        for (size_t i = 0; i < vertices.size(); ++i) {
            (Contains(vertices[i].XY()) ? anyIn : anyOut) = true;
            const bool hasNext = i + 1 < vertices.size() || (closed && i > 0);
            const Vec2d next = vertices[i + 1 < vertices.size() ? i + 1 : 0].XY();
            if ((anyIn && anyOut) || (hasNext && CrossesSegment(vertices[i].XY(), next)))
                return ZvClipResult::Crosses;
        }
    }
    return anyIn ? ZvClipResult::Inside : ZvClipResult::Outside;
}

ZvClipResult ZvSelectClipper::TestBox(const ZvBounds2D& box) const {
    const Vec2d corners[] = {
        {box.minX, box.minY}, {box.maxX, box.minY}, {box.maxX, box.maxY}, {box.minX, box.maxY}};
    int inside = 0;
    bool crosses = false;
    for (int i = 0; i < 4; ++i) {
        inside += Contains(corners[i]);
        crosses = crosses || CrossesSegment(corners[i], corners[(i + 1) % 4]);
    }
    if (inside == 4 && !crosses)
        return ZvClipResult::Inside;
    return inside || crosses || box.IsInsideMe(m_polygon.front()) ? ZvClipResult::Crosses
                                                                  : ZvClipResult::Outside;
}
