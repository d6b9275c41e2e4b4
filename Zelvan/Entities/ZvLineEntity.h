#pragma once
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"

/// Base of kinds with a line: width and type beside the base's colour. A new entity is thin (0) and continuous (-1).
class ZV_API ZvLineEntity : public ZvEntity {
public:
    ZvLineWidth GetLineWidth() const { return m_lineWidth; }
    void SetLineWidth(ZvLineWidth width);
    ZvLineType GetLineType() const { return m_lineType; }
    void SetLineType(ZvLineType type);
    /// By-layer values replaced by the layer's when the entity is in a drawing.
    ZvLineWidth ResolvedLineWidth() const;
    ZvLineType ResolvedLineType() const;

    void CloneFrom(const ZvEntity& other) override;
    bool IsAppearanceEqual(const ZvEntity& other) const override;
    void CloneAppearanceFrom(const ZvEntity& other) override;
    void GetProperties(ZvPropertyGatherer& gatherer, bool all) const override;
    void SetProperties(ZvPropertySetter& setter) override;
    void TableUsage(ZvUsageTable& usage) const override;
    void TableUpdate(ZvNativeDesc& desc) override;
    bool IsLineEntity() const override { return true; }
    ZvLineEntity* ToLineEntity() override { return this; }

protected:
    ZvLineWidth m_lineWidth;
    ZvLineType m_lineType;
};
