#include "Zelvan/Tables/ZvUcs.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include <cmath>

namespace {

bool IsScale(double value) {
    return value > 0 && std::isfinite(value);
}

bool IsFinite(const Vec3d& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

} // namespace

void ZvCoordSystem::Visit(ZvRecordFields& visit, const char* id) {
    const std::string base = id;
    visit.Enum((base + ".Kind").c_str(), kind, Kind::Geographic, ZvRecordFields::kReadOnly);
    visit.Field((base + ".Name").c_str(), name, ZvRecordFields::kReadOnly);
    visit.Field((base + ".Authority").c_str(), authority, ZvRecordFields::kReadOnly);
    visit.Field((base + ".Wkt").c_str(), wkt, ZvRecordFields::kHidden);
    visit.Field((base + ".MetersPerUnit").c_str(), metersPerUnit, ZvRecordFields::kReadOnly);
    if (!IsScale(metersPerUnit))
        metersPerUnit = 1;
}

std::unique_ptr<ZvTableRecord> ZvUcs::NewOfKind() const {
    return std::make_unique<ZvUcs>();
}

void ZvUcs::SetScale(double unitsPerMeter) {
    m_scale = unitsPerMeter;
    FieldsChanged();
    IncModified();
}

void ZvUcs::SetOrigin(const Vec3d& origin) {
    m_origin = origin;
    FieldsChanged();
    IncModified();
}

bool ZvUcs::SetAxes(const Vec3d& x, const Vec3d& y) {
    if (!IsFinite(x) || !IsFinite(y))
        return false;
    const Vec3d unitX = x.Normalized();
    const Vec3d normal = unitX.Cross(y.Normalized());
    if (normal.Length() < 1e-9)
        return false;
    m_xAxis = unitX;
    m_yAxis = normal.Normalized().Cross(unitX);
    IncModified();
    return true;
}

void ZvUcs::SetCoordSystem(const ZvCoordSystem& system) {
    m_coordSystem = system;
    IncModified();
}

void ZvUcs::SetUnitNames(const XStringW& name, const XStringW& abbreviation) {
    m_unitName = name;
    m_unitAbbr = abbreviation;
    IncModified();
}

Vec3d ZvUcs::WorldToUser(const Vec3d& world) const {
    const Vec3d from = world - m_origin;
    return Vec3d{from.Dot(m_xAxis), from.Dot(m_yAxis), from.Dot(GetZAxis())} * m_scale;
}

Vec3d ZvUcs::UserToWorld(const Vec3d& user) const {
    const Vec3d scaled = user * (1 / m_scale);
    return m_origin + m_xAxis * scaled.x + m_yAxis * scaled.y + GetZAxis() * scaled.z;
}

void ZvUcs::Fields(ZvRecordFields& visit) {
    visit.Field("Scale", m_scale);
    visit.Field("Origin", m_origin);
    visit.Field("XAxis", m_xAxis, ZvRecordFields::kReadOnly);
    visit.Field("YAxis", m_yAxis, ZvRecordFields::kReadOnly);
    m_coordSystem.Visit(visit, "CoordSystem");
    visit.Field("UnitName", m_unitName);
    visit.Field("UnitAbbr", m_unitAbbr);
}

void ZvUcs::FieldsChanged() {
    if (!IsScale(m_scale))
        m_scale = 1;
    if (!IsFinite(m_origin))
        m_origin = {};
    const Vec3d normal = m_xAxis.Cross(m_yAxis);
    const bool square = IsFinite(m_xAxis) && IsFinite(m_yAxis) && std::abs(normal.Length() - 1) < 1e-6 &&
                        std::abs(m_xAxis.Length() - 1) < 1e-6 && std::abs(m_yAxis.Length() - 1) < 1e-6;
    if (!square)
        m_xAxis = {1, 0, 0}, m_yAxis = {0, 1, 0};
}
