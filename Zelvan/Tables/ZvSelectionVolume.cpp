#include "Zelvan/Tables/ZvSelectionVolume.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include <algorithm>
#include <cmath>

namespace {

bool AllFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

bool IsOnSegment(const Vec2d& p, const Vec2d& a, const Vec2d& b) {
    const Vec2d along = b - a, from = p - a;
    return along.Cross(from) == 0 && from.Dot(along) >= 0 && from.Dot(along) <= along.LengthSq();
}

} // namespace

std::unique_ptr<ZvTableRecord> ZvSelectionVolume::NewOfKind() const {
    return std::make_unique<ZvSelectionVolume>();
}

bool ZvSelectionVolume::SetOutline(const std::vector<Vec2d>& points) {
    std::vector<double> outline;
    for (const Vec2d& point : points)
        outline.insert(outline.end(), {point.x, point.y});
    if (points.size() < 3 || !AllFinite(outline))
        return false;
    m_outline = std::move(outline);
    IncModified();
    return true;
}

std::vector<Vec2d> ZvSelectionVolume::GetOutline() const {
    std::vector<Vec2d> points;
    for (size_t i = 0; i + 1 < m_outline.size(); i += 2)
        points.push_back({m_outline[i], m_outline[i + 1]});
    return points;
}

void ZvSelectionVolume::SetZRange(double minimum, double maximum) {
    m_minZ = minimum;
    m_maxZ = maximum;
    FieldsChanged();
    IncModified();
}

void ZvSelectionVolume::SetMode(Mode mode) {
    m_mode = mode;
    IncModified();
}

void ZvSelectionVolume::SetActive(bool on) {
    m_active = on;
    IncModified();
}

ZvBounds3D ZvSelectionVolume::Bounds() const {
    ZvBounds3D bounds;
    for (const Vec2d& point : GetOutline()) {
        bounds.ExpandToFit(point.x, point.y, m_minZ);
        bounds.ExpandToFit(point.x, point.y, m_maxZ);
    }
    return bounds;
}

/// Even-odd count of the outline's edges to the right of the point.
bool ZvSelectionVolume::Contains(const Vec3d& point) const {
    const std::vector<Vec2d> ring = GetOutline();
    if (ring.empty() || point.z < m_minZ || point.z > m_maxZ)
        return false;
    const Vec2d p = point.XY();
    bool inside = false;
    Vec2d a = ring.back();
    for (const Vec2d& b : ring) {
        if (IsOnSegment(p, a, b))
            return true;
        if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x))
            inside = !inside;
        a = b;
    }
    return inside;
}

void ZvSelectionVolume::Fields(ZvRecordFields& visit) {
    visit.Field("Outline", m_outline);
    visit.Field("MinZ", m_minZ);
    visit.Field("MaxZ", m_maxZ);
    visit.Enum("Mode", m_mode, Mode::Outside);
    visit.Field("Active", m_active);
}

void ZvSelectionVolume::FieldsChanged() {
    if (m_outline.size() < 6 || m_outline.size() % 2 || !AllFinite(m_outline))
        m_outline.clear();
    if (!std::isfinite(m_minZ))
        m_minZ = -kZvBoundsLimit;
    if (!std::isfinite(m_maxZ))
        m_maxZ = kZvBoundsLimit;
    if (m_minZ > m_maxZ)
        std::swap(m_minZ, m_maxZ);
}
