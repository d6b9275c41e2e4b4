#pragma once
#include "Zelvan/Entities/ZvLineEntity.h"
#include "Zelvan/ZvBrush.h"

/// Base of kinds that can be filled. The brush is kept as its three numbers (colour index, colour value, style) so that the
/// object stays small; a new entity has the empty brush.
class ZV_API ZvFilledEntity : public ZvLineEntity {
public:
    ZvBrush GetBrush() const;
    void SetBrush(const ZvBrush& brush);
    /// By-layer parts replaced by the layer's when the entity is in a drawing.
    ZvBrush ResolvedBrush() const;

    void CloneFrom(const ZvEntity& other) override;
    bool IsAppearanceEqual(const ZvEntity& other) const override;
    void CloneAppearanceFrom(const ZvEntity& other) override;
    void GetProperties(ZvPropertyGatherer& gatherer, bool all) const override;
    void SetProperties(ZvPropertySetter& setter) override;
    void TableUsage(ZvUsageTable& usage) const override;
    void TableUpdate(ZvNativeDesc& desc) override;
    bool IsFilledEntity() const override { return true; }
    ZvFilledEntity* ToFilledEntity() override { return this; }

protected:
    int16_t m_brushIndex = 7;
    uint32_t m_brushValue = 0;
    int16_t m_brushStyle = -1;
};
