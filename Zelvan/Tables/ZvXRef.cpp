#include "Zelvan/Tables/ZvXRef.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include <cmath>

std::unique_ptr<ZvTableRecord> ZvXRef::NewOfKind() const {
    return std::make_unique<ZvXRef>();
}

void ZvXRef::SetPath(const XStringW& path) {
    m_path = path;
    IncModified();
}

void ZvXRef::SetOrigin(const Vec3d& origin) {
    m_origin = origin;
    FieldsChanged();
    NotifyVisState();
}

void ZvXRef::SetScale(double scale) {
    m_scale = scale;
    FieldsChanged();
    NotifyVisState();
}

void ZvXRef::SetAngle(double radians) {
    m_angle = radians;
    FieldsChanged();
    NotifyVisState();
}

void ZvXRef::SetVisible(bool on) {
    m_visible = on;
    NotifyVisState();
}

void ZvXRef::SetAutoLoad(bool on) {
    m_autoLoad = on;
    IncModified();
}

void ZvXRef::SetPrefix(const XStringW& prefix) {
    m_prefix = prefix;
    IncModified();
}

void ZvXRef::SetSource(const Guid& drawing, int64_t fileTime) {
    m_drawingGuid = drawing;
    m_fileTime = fileTime;
    IncModified();
}

Mat4d ZvXRef::GetTransform() const {
    return Mat4d::Translation(m_origin) * Mat4d::RotationZ(m_angle) *
           Mat4d::Scaling({m_scale, m_scale, m_scale});
}

void ZvXRef::Fields(ZvRecordFields& visit) {
    visit.Field("Path", m_path);
    visit.Field("Origin", m_origin);
    visit.Field("Scale", m_scale);
    visit.Field("Angle", m_angle);
    visit.Field("Visible", m_visible);
    visit.Field("AutoLoad", m_autoLoad);
    visit.Field("Prefix", m_prefix);
    visit.Field("DrawingGuid", m_drawingGuid);
    visit.Field("FileTime", m_fileTime, ZvRecordFields::kHidden);
}

void ZvXRef::FieldsChanged() {
    if (!(m_scale != 0) || !std::isfinite(m_scale))
        m_scale = 1;
    if (!std::isfinite(m_angle))
        m_angle = 0;
    if (!std::isfinite(m_origin.x) || !std::isfinite(m_origin.y) || !std::isfinite(m_origin.z))
        m_origin = {};
}
