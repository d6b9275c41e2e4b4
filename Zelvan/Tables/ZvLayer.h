#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/ZvBNodeContainer.h"
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"
#include "Zelvan/ZvName.h"
#include "ZvCore/Status.h"
#include <functional>
#include <memory>

class ZvAttributeTable;
class ZvBlock;
class ZvBNode;
class ZvEntity;
class ZvTextStyle;

/// A layer: the entities that lie on it, in a spatial tree, the values that by-layer entities take from it,
/// and the switches that say what can be done with them.
class ZV_API ZvLayer : public ZvTableRecord, private IZvBNodeContainer {
public:
    /// The loader of a delayed layer brings the entities in (see SetDelayLoaded). False: they could not be
    /// read.
    using Loader = std::function<bool(ZvLayer&)>;
    static constexpr uint16_t kBlockNone = 65535; ///< no by-layer block

    ZvLayer();
    ~ZvLayer() override;

    uint16_t GetRecordCode() const override { return ZvTableCode::Layer; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    // --- entities ------------------------------------------------------------------------------------------
    /// The tree, without loading what is delayed.
    ZvBNode& Tree() { return *m_tree; }
    const ZvBNode& Tree() const { return *m_tree; }
    /// Takes a new entity: it enters the tree and gets its name from the drawing's name table. Returns the
    /// name, null when the layer belongs to no drawing (the entity is destroyed then).
    ZvName Adopt(std::unique_ptr<ZvEntity> entity);
    /// As Adopt, under the name that the entity carries (undo, loading); a taken or null name is replaced by
    /// a fresh one.
    ZvName AdoptNamed(std::unique_ptr<ZvEntity> entity);
    /// Loaded entities, erased ones included.
    size_t EntityCount() const;
    /// Takes all entities out of the name table and destroys them.
    void DeleteEntities();

    /// Entities still wait in a file.
    bool IsDelayLoaded() const { return bool(m_loader); }
    void SetDelayLoaded(Loader loader);
    /// Runs the loader once. True when all entities are in memory.
    bool EnsureEntireLayerLoaded();
    /// Raised with every change of an entity of the layer.
    uint64_t GetEntityModStamp() const { return m_entityModStamp; }
    void IncEntityModStamp() { ++m_entityModStamp; }

    /// Attribute rows of the layer's entities; made on first use.
    ZvAttributeTable& Attributes();
    /// Null when the layer has none.
    const ZvAttributeTable* AttributesOrNull() const { return m_attributes.get(); }
    /// The attribute row of an entity of another layer (of this drawing or another) becomes that of `name` here,
    /// too. Does nothing when there is none.
    void CopyAttributes(ZvName name, const ZvLayer& from, ZvName fromName);
    /// For an entity that came from that layer: its row comes after it.
    void MoveAttributes(ZvName name, ZvLayer& from);
    /// Drops the rows of names that are not wanted.
    void KeepAttributes(const std::function<bool(ZvName)>& wanted);

    // --- defaults of by-layer entities ---------------------------------------------------------------------
    ZvColor GetColor() const { return m_color; }
    void SetColor(const ZvColor& color);
    ZvLineType GetLineType() const { return m_lineType; }
    void SetLineType(ZvLineType type);
    ZvLineWidth GetLineWidth() const { return m_lineWidth; }
    void SetLineWidth(ZvLineWidth width);
    ZvBrush GetBrush() const { return m_brush; }
    void SetBrush(const ZvBrush& brush);
    /// Index of a text style record, -1: the table's default style.
    int GetTextStyle() const { return m_textStyle; }
    void SetTextStyle(int index);
    ZvTextStyle* GetTextStyleRecord() const;
    /// Index of the block that by-layer block references show, kBlockNone for none.
    uint16_t GetBlock() const { return uint16_t(m_block); }
    void SetBlock(uint16_t index);
    ZvBlock* GetBlockRecord() const;

    // --- switches ------------------------------------------------------------------------------------------
    bool IsVisible() const { return m_visible; }
    void SetVisible(bool on);
    bool IsLocked() const { return m_locked; }
    void SetLocked(bool on);
    bool IsPrintable() const { return m_printable; }
    void SetPrintable(bool on);
    bool IsPrintingForcedOff() const { return m_printingForcedOff; }
    void SetPrintingForcedOff(bool on);
    /// Printable and not forced off.
    bool WillPrint() const { return m_printable && !m_printingForcedOff; }
    bool IsSnappable() const { return m_snappable; }
    void SetSnappable(bool on);
    /// Users may change entities of the layer (when it is not locked, too).
    bool IsEditable() const { return m_editable; }
    void SetEditable(bool on);
    /// Name of the layer's group, empty for none. The group must exist (ZvLayerTable::AddToGroup checks).
    const XStringW& GetGroup() const { return m_group; }
    void SetGroup(const XStringW& group);
    /// Layers of a higher stratum are drawn above all of a lower one, whatever their order.
    int GetStrata() const { return m_strata; }
    void SetStrata(int strata);
    uint32_t GetVisFlags() const { return m_visFlags; }
    void SetVisFlags(uint32_t flags);
    uint32_t GetSysFlags() const { return m_sysFlags; }
    void SetSysFlags(uint32_t flags);
    /// World units per pixel between which the layer shows; 0: no limit on that side.
    double GetMinScale() const { return m_minScale; }
    double GetMaxScale() const { return m_maxScale; }
    void SetScaleRange(double minimum, double maximum);
    /// 0 opaque .. 1 fully transparent.
    double GetTransparency() const { return m_transparency; }
    void SetTransparency(double value);
    const XStringW& GetDescription() const { return m_description; }
    void SetDescription(const XStringW& text);

    /// The fields of the attributes; entities and rows are copied one by one.
    void CopyContents(const ZvTableRecord& from) override;
    void DrawUI(IZvSurface& surface, const Rect2I& box) const override;
    void TableUsage(ZvUsageTable& usage) const override;
    void TableUpdate(ZvNativeDesc& desc) override;
    void NotifyVisState() override;
    void OnInserted() override;
    void OnRemoving() override;
    bool HasContents() const override { return true; }
    bool ContentsOut(ZvNativeDesc& desc) const override;
    bool ContentsIn(ZvNativeDesc& desc, uint64_t end, ZvNameIntake& names) override;
    size_t MemUsage() const override;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    ZvDrawing* TreeDrawing() const override { return GetParentDrawing(); }
    ZvLayer* TreeLayer() const override { return const_cast<ZvLayer*>(this); }
    int TreeLayerIndex() const override { return GetTableIndex(); }
    void TreeTouched(ZvEntity* entity) override;
    template <class T>
    void Change(T& member, const T& value, bool visible);

    std::unique_ptr<ZvBNode> m_tree;
    std::unique_ptr<ZvAttributeTable> m_attributes;
    Loader m_loader;
    uint64_t m_entityModStamp = 0;

    ZvColor m_color{7};
    ZvBrush m_brush;
    ZvLineType m_lineType;
    ZvLineWidth m_lineWidth;
    int32_t m_textStyle = -1;
    int32_t m_block = kBlockNone;
    int32_t m_strata = 0;
    uint32_t m_visFlags = 0;
    uint32_t m_sysFlags = 0;
    bool m_visible = true;
    bool m_locked = false;
    bool m_printable = true;
    bool m_printingForcedOff = false;
    bool m_snappable = true;
    bool m_editable = true;
    double m_minScale = 0;
    double m_maxScale = 0;
    double m_transparency = 0;
    XStringW m_group;
    XStringW m_description;
};
