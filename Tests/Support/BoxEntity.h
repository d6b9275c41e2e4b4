#pragma once
#include "Zelvan/Entities/ZvEntity.h"

/// The smallest entity: a box with settable bounds and an ordinary flag word.
class BoxEntity : public ZvEntity {
public:
    static constexpr uint16_t kCode = 20;

    BoxEntity() = default;
    explicit BoxEntity(const ZvBounds3D& box) : m_box(box) {}
    BoxEntity(double x0, double y0, double x1, double y1) : m_box(x0, y0, 0, x1, y1, 0) {}

    void SetBox(const ZvBounds3D& box) {
        m_box = box;
        RecalcBounds();
    }

    void TransformInternal(const Mat4d& xform) override {
        const Vec3d a = xform.TransformPoint({m_box.minX, m_box.minY, m_box.minZ});
        const Vec3d b = xform.TransformPoint({m_box.maxX, m_box.maxY, m_box.maxZ});
        ZvBounds3D box;
        box.ExpandToFit(a);
        box.ExpandToFit(b);
        SetBox(box);
    }
    std::unique_ptr<ZvEntity> Clone() const override {
        auto clone = std::make_unique<BoxEntity>(m_box);
        clone->CloneFrom(*this);
        return clone;
    }
    uint16_t GetEntityCode() const override { return kCode; }
    uint16_t GetClientCode() const override { return ZvEntityCode::kBuiltInClient; }
    XStringW VerbalName() const override { return u"Box"; }
    size_t SizeOf() const override { return sizeof(*this); }
    using ZvEntity::Bounds2D;
    using ZvEntity::Bounds3D;
    ZvBounds2D Bounds2D() const override { return m_box.ToBounds2D(); }
    ZvBounds3D Bounds3D() const override { return m_box; }
    bool NativeOut(ZvNativeDesc&) const override { return true; }
    bool NativeIn(ZvNativeDesc&) override { return true; }
    bool IsGeometryEqual_Internal(const ZvEntity& other, const ZvGeometryCompare&) const override {
        return m_box == static_cast<const BoxEntity&>(other).m_box;
    }

private:
    ZvBounds3D m_box;
};
