// The file form, after the record head:
//   0 u16 header length (46), 2 3 x f64 position, 26 f64 angle, 34 f64 measure, 42 u16 point type,
//   44 u16 flags: bit 0 has Z, bit 1 has a measure
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvStrings.h"
#include <cmath>
#include <cstring>

namespace {

constexpr uint16_t kHeaderLength = 46;
enum FileFlag : uint16_t { kFileZ = 1, kFileM = 2 };

bool IsFinite(const Vec3d& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

} // namespace

void ZvPointEnt::SetPosition(const Vec3d& position) {
    m_position = position;
    m_hasZ = m_hasZ || position.z != 0;
    RecalcBounds();
}

void ZvPointEnt::SetAngle(double angle) {
    m_angle = angle;
    Touch();
}

void ZvPointEnt::SetType(uint16_t type) {
    m_type = type;
    Touch();
}

void ZvPointEnt::SetHasZ(bool on) {
    m_hasZ = on;
    if (!on)
        m_position.z = 0;
    RecalcBounds();
}

void ZvPointEnt::SetMeasure(double measure) {
    m_measure = measure;
    m_hasM = true;
    Touch();
}

void ZvPointEnt::ClearMeasure() {
    m_measure = 0;
    m_hasM = false;
    Touch();
}

void ZvPointEnt::TransformInternal(const Mat4d& xform) {
    const Vec3d ahead = m_position + Vec3d{std::cos(m_angle), std::sin(m_angle), 0};
    const Vec3d position = xform.TransformPoint(m_position);
    const Vec3d direction = xform.TransformPoint(ahead) - position;
    if (direction.x != 0 || direction.y != 0)
        m_angle = std::atan2(direction.y, direction.x);
    SetPosition(position);
}

std::unique_ptr<ZvEntity> ZvPointEnt::Clone() const {
    auto clone = std::make_unique<ZvPointEnt>();
    clone->CloneFrom(*this);
    return clone;
}

void ZvPointEnt::CloneFrom(const ZvEntity& other) {
    ZvEntity::CloneFrom(other);
    if (other.IsPointEnt())
        CopyGeometry(static_cast<const ZvPointEnt&>(other));
}

void ZvPointEnt::CopyGeometry(const ZvPointEnt& other) {
    m_position = other.m_position;
    m_angle = other.m_angle;
    m_measure = other.m_measure;
    m_type = other.m_type;
    m_hasZ = other.m_hasZ;
    m_hasM = other.m_hasM;
    RecalcBounds();
}

ZvBounds2D ZvPointEnt::Bounds2D() const {
    return {m_position.x, m_position.y, m_position.x, m_position.y};
}

ZvBounds3D ZvPointEnt::Bounds3D() const {
    ZvBounds3D bounds;
    bounds.Set(m_position);
    return bounds;
}

ZvBounds3D ZvPointEnt::Bounds3D(const ZvScaleSetup& scale) const {
    ZvBounds3D bounds = Bounds3D();
    const double half = ZvPointMarker::kSize / 2 * scale.worldPerPixel;
    bounds.minX -= half, bounds.minY -= half, bounds.maxX += half, bounds.maxY += half;
    return bounds;
}

// --- drawing -----------------------------------------------------------------------------------------------------------------

void ZvPointEnt::DrawGeneric(ZvRenderContext& context) const {
    context.UseColor(*this);
    ZvPointMarker::Draw(context, m_position, m_type, m_angle);
}

void ZvPointEnt::DrawHeatmap(ZvRenderContext& context) const {
    ZvPointMarker::AddHeat(context, m_position);
}

// --- properties, snaps, grips ------------------------------------------------------------------------------------------------

void ZvPointEnt::GetProperties(ZvPropertyGatherer& gatherer, bool all) const {
    ZvEntity::GetProperties(gatherer, all);
    const bool writable = IsPropertyWritable();
    gatherer.Add("X", ZvStrings::GetW(ZvStr::PropertyX), m_position.x, writable);
    gatherer.Add("Y", ZvStrings::GetW(ZvStr::PropertyY), m_position.y, writable);
    gatherer.Add("Z", ZvStrings::GetW(ZvStr::PropertyZ), m_position.z, writable);
    if (m_hasM || all)
        gatherer.Add("M", ZvStrings::GetW(ZvStr::PropertyM), m_measure, writable);
    gatherer.Add("Angle", ZvStrings::GetW(ZvStr::PropertyAngle), m_angle, writable);
    gatherer.Add("PointType", ZvStrings::GetW(ZvStr::PropertyPointType), int64_t(m_type), writable);
}

void ZvPointEnt::SetProperties(ZvPropertySetter& setter) {
    ZvEntity::SetProperties(setter);
    const auto take = [&](const char* id, double& target) {
        double number = 0;
        if (!setter.TakeNumber(id, number))
            return false;
        if (!std::isfinite(number))
            return setter.Refuse(id, ZvStrings::Get(ZvStr::PropertyOutOfRange)), false;
        target = number;
        return true;
    };
    Vec3d position = m_position;
    const bool x = take("X", position.x), y = take("Y", position.y), z = take("Z", position.z);
    if (x || y || z)
        SetPosition(position);
    double number = 0;
    if (take("M", number))
        SetMeasure(number);
    if (take("Angle", number))
        SetAngle(number);
    if (take("PointType", number)) {
        if (number >= 0 && number <= 65535)
            SetType(uint16_t(number));
        else
            setter.Refuse("PointType", ZvStrings::Get(ZvStr::PropertyOutOfRange));
    }
}

void ZvPointEnt::GetSnapsVertices(const ZvBounds2D& window, ZvSnaps& snaps) const {
    if (window.IsInsideMe(m_position.XY()))
        snaps.push_back({ZvSnapKind::Vertex, m_position});
}

void ZvPointEnt::GetSnapsInsertPoint(const ZvBounds2D& window, ZvSnaps& snaps) const {
    if (window.IsInsideMe(m_position.XY()))
        snaps.push_back({ZvSnapKind::InsertPoint, m_position});
}

bool ZvPointEnt::GetLogicalPoint(Vec4d& point) const {
    point = {m_position.x, m_position.y, m_position.z, m_measure};
    return true;
}

bool ZvPointEnt::SetLogicalPoint(const Vec4d& point) {
    if (m_hasM || point.w != 0) {
        m_measure = point.w;
        m_hasM = true;
    }
    SetPosition(point.XYZ());
    return true;
}

void ZvPointEnt::GetGrips(ZvGrips& grips) const {
    grips.push_back({0, m_position});
}

bool ZvPointEnt::UpdateByGrip(int gripId, const Vec3d& to) {
    if (gripId != 0)
        return false;
    SetPosition(to);
    return true;
}

bool ZvPointEnt::OkForInsertion(XStringW* reason) const {
    if (IsFinite(m_position) && std::isfinite(m_angle) && std::isfinite(m_measure))
        return true;
    if (reason)
        *reason = ZvStrings::GetW(ZvStr::InvalidGeometry);
    return false;
}

ZvClipResult ZvPointEnt::ClipTest(const ZvBounds2D& window) const {
    return window.IsInsideMe(m_position.XY()) ? ZvClipResult::Inside : ZvClipResult::Outside;
}

bool ZvPointEnt::IsGeometryEqual_Internal(const ZvEntity& other, const ZvGeometryCompare& parameters) const {
    const auto& point = static_cast<const ZvPointEnt&>(other);
    const auto equal = [&](double a, double b) { return std::abs(a - b) <= parameters.tolerance; };
    return equal(m_position.x, point.m_position.x) && equal(m_position.y, point.m_position.y) &&
           equal(m_position.z, point.m_position.z) && equal(m_angle, point.m_angle) &&
           equal(m_measure, point.m_measure) && m_hasM == point.m_hasM && m_type == point.m_type;
}

// --- file --------------------------------------------------------------------------------------------------------------------

bool ZvPointEnt::NativeOut(ZvNativeDesc& desc) const {
    const uint64_t start = desc.Native().StoreRecordStart();
    if (NativeOutBase(desc, 0))
        return true;
    uint8_t header[kHeaderLength];
    const uint16_t flags = uint16_t((m_hasZ ? kFileZ : 0) | (m_hasM ? kFileM : 0));
    const double numbers[] = {m_position.x, m_position.y, m_position.z, m_angle, m_measure};
    std::memcpy(header, &kHeaderLength, 2);
    std::memcpy(header + 2, numbers, sizeof numbers);
    std::memcpy(header + 42, &m_type, 2);
    std::memcpy(header + 44, &flags, 2);
    if (!desc.Write(header, sizeof header))
        return true;
    desc.Native().WriteRecordLength64(start);
    return false;
}

bool ZvPointEnt::NativeIn(ZvNativeDesc& desc) {
    uint16_t length = 0, flags = 0;
    uint8_t fields[kHeaderLength - 2];
    if (NativeInBase(desc) || !desc.ReadValue(length) || length < 2 ||
        !desc.ReadPad(fields, sizeof fields, length - 2u))
        return true;
    double numbers[5];
    std::memcpy(numbers, fields, sizeof numbers);
    std::memcpy(&m_type, fields + 40, 2);
    std::memcpy(&flags, fields + 42, 2);
    m_position = {numbers[0], numbers[1], numbers[2]};
    m_angle = numbers[3];
    m_measure = numbers[4];
    m_hasZ = flags & kFileZ;
    m_hasM = flags & kFileM;
    return !OkForInsertion(nullptr);
}
