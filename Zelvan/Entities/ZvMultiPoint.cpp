#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvcDumbHeap.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

// --- storage -----------------------------------------------------------------------------------------------------------------

bool ZvMultiPoint::Allocate(uint32_t count, uint8_t bits, ZvcDumbHeap* heap) {
    const size_t stride = (bits & kHasM ? 4 : 3) * sizeof(double);
    const size_t bytes = count ? kBoundsBytes + count * stride : 0;
    uint8_t* block = nullptr;
    if (bytes) {
        block = static_cast<uint8_t*>(heap ? heap->Alloc(bytes) : std::malloc(bytes));
        if (!block)
            return false;
    }
    FreeBlock();
    m_block = block;
    m_count = count;
    m_bits = uint8_t((bits & (kHasZ | kHasM)) | (heap && block ? kDataIsSwapped : 0));
    return true;
}

void ZvMultiPoint::FreeBlock() {
    if (!DataIsSwapped())
        std::free(m_block);
    m_block = nullptr;
    m_count = 0;
    m_bits &= uint8_t(~kDataIsSwapped);
}

void ZvMultiPoint::DeserializeHard() {
    if (!DataIsSwapped())
        return;
    const size_t bytes = BlockBytes();
    auto* own = static_cast<uint8_t*>(std::malloc(bytes));
    if (!own)
        return;
    std::memcpy(own, m_block, bytes);
    m_block = own;
    m_bits &= uint8_t(~kDataIsSwapped);
}

void ZvMultiPoint::Unswap() {
    DeserializeHard();
    SetSwapped(false);
}

void ZvMultiPoint::Repack(bool ownBlock) {
    if (ownBlock)
        DeserializeHard();
}

void ZvMultiPoint::GC_Mark(ZvHeapMarks& marks) const {
    if (DataIsSwapped())
        marks.Mark(m_block, BlockBytes());
}

void ZvMultiPoint::Put(uint32_t index, const Vec4d& p) {
    std::memcpy(m_block + kBoundsBytes + index * Stride(), &p, Stride());
}

Vec4d ZvMultiPoint::GetLocation(uint32_t index) const {
    Vec4d p;
    std::memcpy(&p, m_block + kBoundsBytes + index * Stride(), Stride());
    return p;
}

void ZvMultiPoint::StoreBounds() {
    ZvBounds3D bounds;
    for (uint32_t i = 0; i < m_count; ++i)
        bounds.ExpandToFit(GetLocation(i).XYZ());
    static_assert(sizeof bounds == kBoundsBytes);
    if (m_count)
        std::memcpy(m_block, &bounds, kBoundsBytes);
}

// --- geometry ----------------------------------------------------------------------------------------------------------------

bool ZvMultiPoint::SetLocations(std::span<const Vec4d> locations, bool hasZ, bool hasM) {
    if (locations.size() > UINT32_MAX ||
        !Allocate(uint32_t(locations.size()), uint8_t((hasZ ? kHasZ : 0) | (hasM ? kHasM : 0)), nullptr))
        return false;
    for (uint32_t i = 0; i < m_count; ++i) {
        const Vec4d& p = locations[i];
        Put(i, {p.x, p.y, hasZ ? p.z : 0, hasM ? p.w : 0});
    }
    StoreBounds();
    RecalcBounds();
    return true;
}

bool ZvMultiPoint::SetLocations(std::span<const Vec3d> locations) {
    std::vector<Vec4d> all;
    all.reserve(locations.size());
    for (const Vec3d& p : locations)
        all.push_back({p.x, p.y, p.z, 0});
    return SetLocations(all, true, false);
}

std::vector<Vec4d> ZvMultiPoint::GetLocations() const {
    std::vector<Vec4d> all(m_count);
    for (uint32_t i = 0; i < m_count; ++i)
        all[i] = GetLocation(i);
    return all;
}

void ZvMultiPoint::SetType(uint16_t type) {
    m_type = type;
    Touch();
}

void ZvMultiPoint::TransformInternal(const Mat4d& xform) {
    DeserializeHard();
    for (uint32_t i = 0; i < m_count; ++i) {
        const Vec4d old = GetLocation(i);
        const Vec3d p = xform.TransformPoint(old.XYZ());
        Put(i, {p.x, p.y, p.z, old.w});
        m_bits |= p.z != 0 ? kHasZ : 0;
    }
    StoreBounds();
    RecalcBounds();
}

std::unique_ptr<ZvEntity> ZvMultiPoint::Clone() const {
    auto clone = std::make_unique<ZvMultiPoint>();
    clone->CloneFrom(*this);
    return clone;
}

void ZvMultiPoint::CloneFrom(const ZvEntity& other) {
    if (this == &other)
        return;
    ZvEntity::CloneFrom(other);
    if (!other.IsMultiPoint())
        return;
    const auto& points = static_cast<const ZvMultiPoint&>(other);
    if (!Allocate(points.m_count, points.m_bits, nullptr))
        return;
    if (m_block)
        std::memcpy(m_block, points.m_block, BlockBytes());
    m_type = points.m_type;
    RecalcBounds();
}

ZvBounds3D ZvMultiPoint::Bounds3D() const {
    ZvBounds3D bounds;
    if (m_block)
        std::memcpy(&bounds, m_block, kBoundsBytes);
    return bounds;
}

ZvBounds3D ZvMultiPoint::Bounds3D(const ZvScaleSetup& scale) const {
    ZvBounds3D bounds = Bounds3D();
    if (bounds.IsNull())
        return bounds;
    const double half = ZvPointMarker::kSize / 2 * scale.worldPerPixel;
    bounds.minX -= half, bounds.minY -= half, bounds.maxX += half, bounds.maxY += half;
    return bounds;
}

ZvEntityList ZvMultiPoint::Explode() const {
    ZvEntityList points;
    points.reserve(m_count);
    for (uint32_t i = 0; i < m_count; ++i) {
        const Vec4d p = GetLocation(i);
        auto point = std::make_unique<ZvPointEnt>(p.XYZ());
        point->CloneAppearanceFrom(*this);
        point->SetType(m_type);
        point->SetHasZ(HasZ());
        if (HasM())
            point->SetMeasure(p.w);
        points.push_back(std::move(point));
    }
    return points;
}

double ZvMultiPoint::DistanceToV(const Ray3d& ray, const ZvScaleSetup*) const {
    double best = 9e90;
    const Vec3d along = ray.direction.Normalized();
    for (uint32_t i = 0; i < m_count; ++i)
        best = std::min(best, (GetLocation(i).XYZ() - ray.origin).Cross(along).LengthSq());
    return best < 9e90 ? std::sqrt(best) : best;
}

bool ZvMultiPoint::ClosestPt(const Vec3d& point, const Vec3d& reference, ZvClosest& result) const {
    double best = 9e90, fromReference = 9e90;
    for (uint32_t i = 0; i < m_count; ++i) {
        const Vec3d p = GetLocation(i).XYZ();
        const double distance = (p.XY() - point.XY()).LengthSq(),
                     other = (p.XY() - reference.XY()).LengthSq();
        if (distance < best || (distance == best && other < fromReference)) {
            best = distance, fromReference = other;
            result = {p, std::sqrt(distance), -1, int(i)};
        }
    }
    return best < 9e90;
}

ZvClipResult ZvMultiPoint::ClipTest(const ZvBounds2D& window) const {
    uint32_t inside = 0;
    for (uint32_t i = 0; i < m_count; ++i)
        inside += window.IsInsideMe(GetLocation(i).XY());
    return inside == 0         ? ZvClipResult::Outside
           : inside == m_count ? ZvClipResult::Inside
                               : ZvClipResult::Crosses;
}

bool ZvMultiPoint::OkForInsertion(XStringW* reason) const {
    bool finite = true;
    for (uint32_t i = 0; i < m_count && finite; ++i) {
        const Vec4d p = GetLocation(i);
        finite = std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z) && std::isfinite(p.w);
    }
    if (m_count && finite)
        return true;
    if (reason)
        *reason = ZvStrings::GetW(m_count ? ZvStr::InvalidGeometry : ZvStr::MultiPointEmpty);
    return false;
}

bool ZvMultiPoint::IsGeometryEqual_Internal(const ZvEntity& other,
                                            const ZvGeometryCompare& parameters) const {
    const auto& points = static_cast<const ZvMultiPoint&>(other);
    if (m_count != points.m_count || HasM() != points.HasM() || m_type != points.m_type)
        return false;
    for (uint32_t i = 0; i < m_count; ++i) {
        const Vec4d d = GetLocation(i) - points.GetLocation(i);
        const double most = std::max({std::abs(d.x), std::abs(d.y), std::abs(d.z), std::abs(d.w)});
        if (!(most <= parameters.tolerance))
            return false;
    }
    return true;
}

// --- drawing -----------------------------------------------------------------------------------------------------------------

void ZvMultiPoint::DrawGeneric(ZvRenderContext& context) const {
    context.UseColor(*this);
    const ZvBounds2D& window = context.WorldWindow();
    for (uint32_t i = 0; i < m_count; ++i) {
        const Vec3d p = GetLocation(i).XYZ();
        if (window.IsInsideMe(p.XY()))
            ZvPointMarker::Draw(context, p, m_type, 0);
    }
}

void ZvMultiPoint::DrawHeatmap(ZvRenderContext& context) const {
    for (uint32_t i = 0; i < m_count; ++i)
        ZvPointMarker::AddHeat(context, GetLocation(i).XYZ());
}

// --- properties, snaps, grips ------------------------------------------------------------------------------------------------

void ZvMultiPoint::GetProperties(ZvPropertyGatherer& gatherer, bool all) const {
    ZvEntity::GetProperties(gatherer, all);
    gatherer.Add("Count", ZvStrings::GetW(ZvStr::PropertyPointCount), int64_t(m_count), false);
    gatherer.Add("PointType", ZvStrings::GetW(ZvStr::PropertyPointType), int64_t(m_type),
                 IsPropertyWritable());
}

void ZvMultiPoint::SetProperties(ZvPropertySetter& setter) {
    ZvEntity::SetProperties(setter);
    double type = 0;
    if (!setter.TakeNumber("PointType", type))
        return;
    if (type >= 0 && type <= 65535)
        SetType(uint16_t(type));
    else
        setter.Refuse("PointType", ZvStrings::Get(ZvStr::PropertyOutOfRange));
}

void ZvMultiPoint::GetSnapsVertices(const ZvBounds2D& window, ZvSnaps& snaps) const {
    for (uint32_t i = 0; i < m_count; ++i) {
        const Vec3d p = GetLocation(i).XYZ();
        if (window.IsInsideMe(p.XY()))
            snaps.push_back({ZvSnapKind::Vertex, p});
    }
}

void ZvMultiPoint::GetGrips(ZvGrips& grips) const {
    for (uint32_t i = 0; i < m_count; ++i)
        grips.push_back({int(i), GetLocation(i).XYZ()});
}

bool ZvMultiPoint::UpdateByGrip(int gripId, const Vec3d& to) {
    if (gripId < 0 || uint32_t(gripId) >= m_count)
        return false;
    DeserializeHard();
    Put(uint32_t(gripId), {to.x, to.y, to.z, GetLocation(uint32_t(gripId)).w});
    m_bits |= to.z != 0 ? kHasZ : 0;
    StoreBounds();
    RecalcBounds();
    return true;
}
