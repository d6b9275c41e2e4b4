#pragma once
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Entities/ZvPointMarker.h"
#include <span>
#include <vector>

class ZvcDumbHeap;

/// A set of locations in one entity, each shown by the same marker. All lie in one block: six doubles of bounds (minimum x, y, z,
/// maximum x, y, z), then three doubles a location, or four where they have measures. The block belongs to the entity, or lies in
/// an arena that frees it (DataIsSwapped); it is aligned to 4 bytes only.
class ZV_API ZvMultiPoint : public ZvEntity {
public:
    ZvMultiPoint() = default;
    ~ZvMultiPoint() override { FreeBlock(); }

    /// Z and measures are stored as 0 unless kept. False (and the entity as before) when memory runs out.
    bool SetLocations(std::span<const Vec4d> locations, bool hasZ, bool hasM);
    bool SetLocations(std::span<const Vec3d> locations);
    std::vector<Vec4d> GetLocations() const;
    uint32_t GetCount() const { return m_count; }
    /// `index` below GetCount().
    Vec4d GetLocation(uint32_t index) const;
    bool HasZ() const { return m_bits & kHasZ; }
    bool HasM() const { return m_bits & kHasM; }
    /// One of ZvPointType, or a number of a later version.
    uint16_t GetType() const { return m_type; }
    void SetType(uint16_t type);
    /// The block lies in an arena.
    bool DataIsSwapped() const { return m_bits & kDataIsSwapped; }
    /// Brings a swapped-out entity back: its block is its own afterwards.
    void Unswap();

    void TransformInternal(const Mat4d& xform) override;
    std::unique_ptr<ZvEntity> Clone() const override;
    uint16_t GetEntityCode() const override { return ZvEntityCode::MultiPoint; }
    uint16_t GetClientCode() const override { return ZvEntityCode::kBuiltInClient; }
    XStringW VerbalName() const override { return u"MultiPoint"; }
    size_t SizeOf() const override { return sizeof(*this); }
    void Repack(bool ownBlock) override;
    void GC_Mark(ZvHeapMarks& marks) const override;
    void DeserializeHard() override;
    ZvBounds2D Bounds2D() const override { return Bounds3D().ToBounds2D(); }
    ZvBounds3D Bounds3D() const override;
    using ZvEntity::Bounds2D;
    ZvBounds3D Bounds3D(const ZvScaleSetup& scale) const override;
    bool IsViewScaleDependent() const override { return true; }
    void CloneFrom(const ZvEntity& other) override;
    void DrawGDI(ZvRenderContext& context) const override { DrawGeneric(context); }
    using ZvEntity::DrawRast;
    void DrawRast(ZvRenderContext& context) const override { DrawGeneric(context); }
    void DrawPdf(ZvRenderContext& context) const override { DrawGeneric(context); }
    void DrawHeatmap(ZvRenderContext& context) const override;
    void GetProperties(ZvPropertyGatherer& gatherer, bool all) const override;
    void SetProperties(ZvPropertySetter& setter) override;
    /// A point entity for each location.
    ZvEntityList Explode() const override;
    size_t MemUsage() const override { return sizeof(*this) + BlockBytes(); }
    bool NativeOut(ZvNativeDesc& desc) const override;
    bool NativeIn(ZvNativeDesc& desc) override;
    void GetSnapsVertices(const ZvBounds2D& window, ZvSnaps& snaps) const override;
    bool IsMultiPoint() const override { return true; }
    ZvMultiPoint* ToMultiPoint() override { return this; }
    /// The grip's id is the location's index.
    void GetGrips(ZvGrips& grips) const override;
    bool UpdateByGrip(int gripId, const Vec3d& to) override;
    double DistanceToV(const Ray3d& ray, const ZvScaleSetup* scale) const override;
    bool ClosestPt(const Vec3d& point, const Vec3d& reference, ZvClosest& result) const override;
    bool OkForInsertion(XStringW* reason) const override;
    ZvClipResult ClipTest(const ZvBounds2D& window) const override;
    bool IsGeometryEqual_Internal(const ZvEntity& other, const ZvGeometryCompare& parameters) const override;

private:
    enum Bit : uint8_t { kHasZ = 1, kHasM = 2, kDataIsSwapped = 4 };
    static constexpr size_t kBoundsBytes = 6 * sizeof(double);

    size_t Stride() const { return (HasM() ? 4 : 3) * sizeof(double); }
    size_t BlockBytes() const { return m_count ? kBoundsBytes + m_count * Stride() : 0; }
    /// New room for `count` locations, bounds and locations not set; the old block goes.
    bool Allocate(uint32_t count, uint8_t bits, ZvcDumbHeap* heap);
    void FreeBlock();
    void Put(uint32_t index, const Vec4d& location);
    void StoreBounds();
    void DrawGeneric(ZvRenderContext& context) const;

    uint8_t* m_block = nullptr;
    uint32_t m_count = 0;
    uint16_t m_type = uint16_t(ZvPointType::Dot);
    uint8_t m_bits = 0;
};
