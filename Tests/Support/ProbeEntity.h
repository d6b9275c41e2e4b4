#pragma once
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBounds.h"
#include <functional>
#include <string>
#include <vector>

/// A box that tells what happens to it. It cannot be saved.
class ProbeEntity : public ZvEntity {
public:
    explicit ProbeEntity(const ZvBounds2D& box = {0, 0, 1, 1}) : m_box(box) {}
    ~ProbeEntity() override {
        if (onDestroyed)
            onDestroyed();
    }

    std::function<void()> onDestroyed;
    std::vector<std::pair<uint32_t, int>> notified; ///< who, what
    int associatesModified = 0;
    bool untouchable = false;
    bool okForInsertion = true;

    void TransformInternal(const Mat4d& xform) override {
        ZvBounds2D moved;
        for (const Vec2d corner : {Vec2d{m_box.minX, m_box.minY}, Vec2d{m_box.maxX, m_box.minY},
                                   Vec2d{m_box.maxX, m_box.maxY}, Vec2d{m_box.minX, m_box.maxY}})
            moved.ExpandToFit(xform.TransformPoint({corner.x, corner.y, 0}).XY());
        m_box = moved;
        RecalcBounds();
    }
    std::unique_ptr<ZvEntity> Clone() const override {
        auto copy = std::make_unique<ProbeEntity>(m_box);
        copy->CloneFrom(*this);
        return copy;
    }
    uint16_t GetEntityCode() const override { return ZvEntityCode::TestEntity; }
    uint16_t GetClientCode() const override { return ZvEntityCode::kBuiltInClient; }
    XStringW VerbalName() const override { return u"Probe"; }
    size_t SizeOf() const override { return sizeof *this; }
    using ZvEntity::Bounds2D;
    using ZvEntity::Bounds3D;
    ZvBounds2D Bounds2D() const override { return m_box; }
    ZvBounds3D Bounds3D() const override { return ZvBounds3D(m_box); }
    bool IsUntouchable() const override { return untouchable; }
    bool NativeOut(ZvNativeDesc&) const override { return true; }
    bool NativeIn(ZvNativeDesc&) override { return true; }
    void Notify(ZvName who, int what) override { notified.emplace_back(who.value, what); }
    void AssociatesModified() override { ++associatesModified; }
    bool OkForInsertion(XStringW* reason) const override {
        if (!okForInsertion && reason)
            *reason = u"probe refused";
        return okForInsertion;
    }
    bool IsGeometryEqual_Internal(const ZvEntity& other, const ZvGeometryCompare&) const override {
        return m_box == static_cast<const ProbeEntity&>(other).m_box;
    }

private:
    ZvBounds2D m_box;
};
