#pragma once
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/ZvBounds.h"
#include <string_view>

/// The layers of a drawing, their drawing order, their groups and presets of their visibility. Order, groups
/// and presets are kept in the data table (records "__LayerOrder__", "__LayerGroups__", "__LayerPresets__"),
/// so that they travel with it.
class ZV_API ZvLayerTable : public ZvTableOf<ZvLayer, ZvTableCode::Layer> {
public:
    using ZvTableOf::ZvTableOf;
    /// No layer and no group can have this name: lists show it above the layers that are in no group.
    static constexpr std::u16string_view kReservedGroup = u"__Ungrouped__";

    XStringW DefaultNameBase() const override;
    /// The internal layers (locked) and layer "0".
    void CreateDefaults() override;
    bool HasUsageCounts() const override { return true; }
    bool IsNewNameValid(const XStringW& name) const override;
    /// Internal layers stay.
    bool MayDelete(const ZvTableRecord& record) const override;

    // --- internal layers; null only when the table refuses to make them ------------------------------------
    ZvLayer* GetPaperLayer();
    ZvLayer* GetScratchLayer();
    ZvLayer* GetHotSnapLayer();
    ZvLayer* GetConstructionLayer();
    ZvLayer* GetGridLayer();
    ZvLayer* GetTempBitmapLayer();

    // --- drawing order, bottom first -----------------------------------------------------------------------
    /// All layers in the order in which they are drawn: by stratum, then by order.
    std::vector<ZvLayer*> GetDrawOrder();
    /// The order alone, strata not regarded.
    std::vector<ZvLayer*> GetLayerOrder();
    /// Layers that are not named keep their order above those that are.
    void SetLayerOrder(const std::vector<ZvLayer*>& bottomFirst);
    bool MoveLayerAbove(const ZvLayer* layer, const ZvLayer* reference);
    bool MoveLayerBeneath(const ZvLayer* layer, const ZvLayer* reference);
    bool MoveLayerToTop(const ZvLayer* layer);
    bool MoveLayerToBottom(const ZvLayer* layer);
    /// 0 is the bottom; positions past the end mean the top.
    bool MoveLayerToPos(const ZvLayer* layer, int position);
    /// Drops layers that are gone, puts new ones on top.
    void EnsureLayerOrder();

    // --- groups --------------------------------------------------------------------------------------------
    /// False for a name that cannot be a record's, that is reserved, or that a group or layer has.
    bool AddGroup(const XStringW& name);
    /// Its layers are in no group afterwards.
    bool DeleteGroup(const XStringW& name);
    bool AddToGroup(ZvLayer* layer, const XStringW& group);
    bool RemoveFromGroup(ZvLayer* layer);
    bool GroupRename(const XStringW& from, const XStringW& to);
    bool HasGroup(const XStringW& name) const;
    /// A free name made from `base` (empty: "Group") and a number.
    XStringW FindNewGroupName(const XStringW& base = {}) const;
    const std::vector<XStringW>& GetGroups() const { return m_groups; }
    std::vector<ZvLayer*> GetGroupLayers(const XStringW& group) const;

    // --- presets: the switches of all user layers under a name ---------------------------------------------
    /// Stores the present switches under the name, replacing a preset of that name. False for an empty name.
    bool PresetSet(const XStringW& name);
    /// Applies the preset; layers that it does not know stay as they are.
    bool PresetGet(const XStringW& name);
    bool PresetFind(const XStringW& name) const;
    bool PresetErase(const XStringW& name);
    std::vector<XStringW> GetPresets() const;

    /// Bounds of the entities of all layers that are not internal.
    ZvBounds3D WorldExtents() const;
    void NativeOutPreFix(ZvNativeDesc& desc) override;
    void NativeInPostFix(ZvNativeDesc& desc) override;

protected:
    void OnRecordInserted(ZvTableRecord& record) override;
    void OnRecordsDeleted() override;
    void OnPurged() override;

private:
    struct LayerState {
        Guid layer;
        uint32_t switches = 0;
    };
    struct Preset {
        XStringW name;
        std::vector<LayerState> states;
    };
    ZvLayer* Internal(size_t which);
    int FindPreset(const XStringW& name) const;
    int FindGroup(const XStringW& name) const;
    void GroupsChanged();
    void SaveOrder();
    void SaveGroups();
    void SavePresets();
    void LoadFromData();
    bool MoveTo(const ZvLayer* layer, const ZvLayer* reference, bool above);

    std::vector<uint32_t> m_order; // layer ids, bottom first
    std::vector<XStringW> m_groups;
    std::vector<Preset> m_presets;
};
