#pragma once
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Entities/ZvPointMarker.h"

/// A point symbol: a position, a marker that keeps its size on the screen, and its angle. The marker's size is in pixels, so bounds
/// without a scale are those of the position.
class ZV_API ZvPointEnt : public ZvEntity {
public:
    ZvPointEnt() = default;
    explicit ZvPointEnt(const Vec3d& position) : m_position(position), m_hasZ(position.z != 0) {}

    const Vec3d& GetPosition() const { return m_position; }
    void SetPosition(const Vec3d& position);
    /// Radians, counter-clockwise from +X.
    double GetAngle() const { return m_angle; }
    void SetAngle(double angle);
    /// One of ZvPointType, or a number of a later version.
    uint16_t GetType() const { return m_type; }
    void SetType(uint16_t type);
    /// Whether Z and the measure mean something; exporters to other formats ask.
    bool HasZ() const { return m_hasZ; }
    bool HasM() const { return m_hasM; }
    void SetHasZ(bool on);
    double GetMeasure() const { return m_measure; }
    /// The point has a measure afterwards.
    void SetMeasure(double measure);
    void ClearMeasure();

    void TransformInternal(const Mat4d& xform) override;
    std::unique_ptr<ZvEntity> Clone() const override;
    uint16_t GetEntityCode() const override { return ZvEntityCode::PointEnt; }
    uint16_t GetClientCode() const override { return ZvEntityCode::kBuiltInClient; }
    XStringW VerbalName() const override { return u"Point"; }
    size_t SizeOf() const override { return sizeof(*this); }
    ZvBounds2D Bounds2D() const override;
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
    bool NativeOut(ZvNativeDesc& desc) const override;
    bool NativeIn(ZvNativeDesc& desc) override;
    void GetSnapsVertices(const ZvBounds2D& window, ZvSnaps& snaps) const override;
    void GetSnapsInsertPoint(const ZvBounds2D& window, ZvSnaps& snaps) const override;
    bool IsPointEnt() const override { return true; }
    ZvPointEnt* ToPointEnt() override { return this; }
    bool IsLogicalPoint() const override { return true; }
    bool GetLogicalPoint(Vec4d& point) const override;
    bool SetLogicalPoint(const Vec4d& point) override;
    void GetGrips(ZvGrips& grips) const override;
    bool UpdateByGrip(int gripId, const Vec3d& to) override;
    bool OkForInsertion(XStringW* reason) const override;
    ZvClipResult ClipTest(const ZvBounds2D& window) const override;
    bool IsGeometryEqual_Internal(const ZvEntity& other, const ZvGeometryCompare& parameters) const override;

private:
    void DrawGeneric(ZvRenderContext& context) const;
    void CopyGeometry(const ZvPointEnt& other);

    Vec3d m_position;
    double m_angle = 0;
    double m_measure = 0;
    uint16_t m_type = uint16_t(ZvPointType::Dot);
    bool m_hasZ = false;
    bool m_hasM = false;
};
