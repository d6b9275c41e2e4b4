#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/ZvBNodeContainer.h"
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvName.h"
#include "ZvCore/Vec.h"

class ZvBNode;
class ZvEntity;

/// A block: entities in a tree of their own, around a base point, shown wherever a block reference places
/// them. The entities have names in the drawing, but lie on no layer.
class ZV_API ZvBlock : public ZvTableRecord, private IZvBNodeContainer {
public:
    ZvBlock();
    ~ZvBlock() override;

    uint16_t GetRecordCode() const override { return ZvTableCode::Block; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    ZvBNode& Tree() { return *m_tree; }
    const ZvBNode& Tree() const { return *m_tree; }
    /// As ZvLayer::Adopt; without a drawing the entity keeps its name and is taken all the same.
    ZvName Adopt(std::unique_ptr<ZvEntity> entity);
    size_t EntityCount() const;
    /// In block coordinates, erased entities not counted.
    ZvBounds3D Bounds() const;

    const Vec3d& GetBasePoint() const { return m_basePoint; }
    void SetBasePoint(const Vec3d& point);
    const XStringW& GetDescription() const { return m_description; }
    void SetDescription(const XStringW& text);
    /// Belongs to one compound or importer and is not offered to the user.
    bool IsAnonymous() const { return m_anonymous; }
    void SetAnonymous(bool on);
    bool IsExplodable() const { return m_explodable; }
    void SetExplodable(bool on);
    /// World units per block unit when the block is placed by a command; 1 by default.
    double GetUnitScale() const { return m_unitScale; }
    void SetUnitScale(double scale);
    /// True when the block shows `other`, itself or through any number of nested references.
    bool RefersTo(const ZvBlock& other) const;

    void CopyContents(const ZvTableRecord& from) override;
    void DropContents() override;
    void DrawUI(IZvSurface& surface, const Rect2I& box) const override;
    void TableUsage(ZvUsageTable& usage) const override;
    void TableUpdate(ZvNativeDesc& desc) override;
    void OnInserted() override;
    void OnRemoving() override;
    bool HasContents() const override { return true; }
    bool ContentsOut(ZvNativeDesc& desc) const override;
    bool ContentsIn(ZvNativeDesc& desc, uint64_t end, ZvNameIntake& names) override;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    ZvDrawing* TreeDrawing() const override { return GetParentDrawing(); }
    ZvLayer* TreeLayer() const override { return nullptr; }
    int TreeLayerIndex() const override { return -1; }
    void TreeTouched(ZvEntity* entity) override;

    std::unique_ptr<ZvBNode> m_tree;
    Vec3d m_basePoint;
    XStringW m_description;
    bool m_anonymous = false;
    bool m_explodable = true;
    double m_unitScale = 1;
};
