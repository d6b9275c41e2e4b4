#include "Zelvan/Tables/ZvDataTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>

// Groups of layers and presets of their switches, and how they and the drawing order are kept in the data
// table.

namespace {

const XStringW kOrderRecord = u"__LayerOrder__";
const XStringW kGroupsRecord = u"__LayerGroups__";
const XStringW kPresetsRecord = u"__LayerPresets__";

enum Switch : uint32_t {
    kVisible = 1,
    kLocked = 2,
    kPrintable = 4,
    kPrintingForcedOff = 8,
    kSnappable = 16,
    kEditable = 32,
};

uint32_t SwitchesOf(const ZvLayer& layer) {
    return (layer.IsVisible() ? kVisible : 0u) | (layer.IsLocked() ? kLocked : 0u) |
           (layer.IsPrintable() ? kPrintable : 0u) | (layer.IsPrintingForcedOff() ? kPrintingForcedOff : 0u) |
           (layer.IsSnappable() ? kSnappable : 0u) | (layer.IsEditable() ? kEditable : 0u);
}

void Apply(ZvLayer& layer, uint32_t switches) {
    layer.SetVisible(switches & kVisible);
    layer.SetLocked(switches & kLocked);
    layer.SetPrintable(switches & kPrintable);
    layer.SetPrintingForcedOff(switches & kPrintingForcedOff);
    layer.SetSnappable(switches & kSnappable);
    layer.SetEditable(switches & kEditable);
}

template <class Items, class Name>
int FindNamed(const Items& items, const XStringW& name, Name nameOf) {
    for (size_t i = 0; i < items.size(); ++i)
        if (nameOf(items[i]).EqualsNoCase(name))
            return int(i);
    return -1;
}

void Keep(ZvDataTable* data, const XStringW& record, ZvCore::BinXmlNode node) {
    if (!data)
        return;
    if (node.Children().empty())
        data->Remove(record);
    else
        data->GetOrMake(record).SetXml(std::move(node));
}

} // namespace

// --- groups ------------------------------------------------------------------------------------------------

int ZvLayerTable::FindGroup(const XStringW& name) const {
    return FindNamed(m_groups, name, [](const XStringW& group) -> const XStringW& { return group; });
}

bool ZvLayerTable::HasGroup(const XStringW& name) const {
    return FindGroup(name) >= 0;
}

bool ZvLayerTable::AddGroup(const XStringW& name) {
    if (!IsNewNameValid(name))
        return false;
    m_groups.push_back(name);
    GroupsChanged();
    return true;
}

bool ZvLayerTable::DeleteGroup(const XStringW& name) {
    const int index = FindGroup(name);
    if (index < 0)
        return false;
    for (ZvLayer* layer : GetGroupLayers(name))
        layer->SetGroup({});
    m_groups.erase(m_groups.begin() + index);
    GroupsChanged();
    return true;
}

bool ZvLayerTable::AddToGroup(ZvLayer* layer, const XStringW& group) {
    const int index = FindGroup(group);
    if (!IsRecordInTable(layer) || index < 0)
        return false;
    layer->SetGroup(m_groups[size_t(index)]);
    return true;
}

bool ZvLayerTable::RemoveFromGroup(ZvLayer* layer) {
    if (!IsRecordInTable(layer) || layer->GetGroup().IsEmpty())
        return false;
    layer->SetGroup({});
    return true;
}

bool ZvLayerTable::GroupRename(const XStringW& from, const XStringW& to) {
    const int index = FindGroup(from);
    const bool sameButCase = index >= 0 && m_groups[size_t(index)].EqualsNoCase(to);
    if (index < 0 || (!sameButCase && !IsNewNameValid(to)))
        return false;
    for (ZvLayer* layer : GetGroupLayers(from))
        layer->SetGroup(to);
    m_groups[size_t(index)] = to;
    GroupsChanged();
    return true;
}

XStringW ZvLayerTable::FindNewGroupName(const XStringW& base) const {
    const XStringW stem = base.IsEmpty() ? XStringW(u"Group") : ZvTableRecord::WithoutInvalid(base);
    if (!base.IsEmpty() && IsNewNameValid(stem))
        return stem;
    for (int number = 1;; ++number)
        if (XStringW name = stem + XStringW::Format("%d", number); IsNewNameValid(name))
            return name;
}

std::vector<ZvLayer*> ZvLayerTable::GetGroupLayers(const XStringW& group) const {
    std::vector<ZvLayer*> layers;
    for (int i = 0; i < Count() && !group.IsEmpty(); ++i)
        if (Get(i)->GetGroup().EqualsNoCase(group))
            layers.push_back(Get(i));
    return layers;
}

void ZvLayerTable::GroupsChanged() {
    IncModified();
    SaveGroups();
    TellWatchers(ZvTableEvent::Changed, -1);
}

// --- presets -----------------------------------------------------------------------------------------------

int ZvLayerTable::FindPreset(const XStringW& name) const {
    return FindNamed(m_presets, name, [](const Preset& preset) -> const XStringW& { return preset.name; });
}

bool ZvLayerTable::PresetFind(const XStringW& name) const {
    return FindPreset(name) >= 0;
}

bool ZvLayerTable::PresetSet(const XStringW& name) {
    if (name.IsEmpty())
        return false;
    Preset preset{name, {}};
    for (int i = 0; i < Count(); ++i)
        if (const ZvLayer* layer = Get(i); layer->IsVisibleToUser() && !layer->IsErased())
            preset.states.push_back({layer->GetGuid(), SwitchesOf(*layer)});
    const int index = FindPreset(name);
    if (index >= 0)
        m_presets[size_t(index)] = std::move(preset);
    else
        m_presets.push_back(std::move(preset));
    IncModified();
    SavePresets();
    return true;
}

bool ZvLayerTable::PresetGet(const XStringW& name) {
    const int index = FindPreset(name);
    if (index < 0)
        return false;
    for (const LayerState& state : m_presets[size_t(index)].states)
        if (ZvLayer* layer = GetByGuid(state.layer))
            Apply(*layer, state.switches);
    return true;
}

bool ZvLayerTable::PresetErase(const XStringW& name) {
    const int index = FindPreset(name);
    if (index < 0)
        return false;
    m_presets.erase(m_presets.begin() + index);
    IncModified();
    SavePresets();
    return true;
}

std::vector<XStringW> ZvLayerTable::GetPresets() const {
    std::vector<XStringW> names;
    for (const Preset& preset : m_presets)
        names.push_back(preset.name);
    return names;
}

// --- in the data table: layers by guid ---------------------------------------------------------------------

void ZvLayerTable::SaveOrder() {
    EnsureLayerOrder();
    ZvCore::BinXmlNode node("Order");
    const bool asInserted = std::is_sorted(m_order.begin(), m_order.end(), [this](uint32_t a, uint32_t b) {
        return GetById(a)->GetTableIndex() < GetById(b)->GetTableIndex();
    });
    for (const uint32_t id : m_order)
        if (!asInserted)
            node.AddChild("Layer").Set("Guid", GetById(id)->GetGuid().ToString());
    Keep(GetParent() ? GetParent()->DataTable() : nullptr, kOrderRecord, std::move(node));
}

void ZvLayerTable::SaveGroups() {
    ZvCore::BinXmlNode node("Groups");
    for (const XStringW& group : m_groups)
        node.AddChild("Group").Set("Name", group);
    Keep(GetParent() ? GetParent()->DataTable() : nullptr, kGroupsRecord, std::move(node));
}

void ZvLayerTable::SavePresets() {
    ZvCore::BinXmlNode node("Presets");
    for (const Preset& preset : m_presets) {
        ZvCore::BinXmlNode& child = node.AddChild("Preset");
        child.Set("Name", preset.name);
        for (const LayerState& state : preset.states) {
            ZvCore::BinXmlNode& layer = child.AddChild("Layer");
            layer.Set("Guid", state.layer.ToString());
            layer.Set("Switches", int64_t(state.switches));
        }
    }
    Keep(GetParent() ? GetParent()->DataTable() : nullptr, kPresetsRecord, std::move(node));
}

void ZvLayerTable::LoadFromData() {
    m_groups.clear();
    m_presets.clear();
    const ZvDataTable* data = GetParent() ? GetParent()->DataTable() : nullptr;
    if (!data)
        return;
    const auto guidOf = [](const ZvCore::BinXmlNode& node) {
        Guid guid;
        Guid::Parse(node.GetString("Guid", {}).View(), guid);
        return guid;
    };
    if (const ZvCore::BinXmlNode* order = data->GetXml(kOrderRecord)) {
        m_order.clear();
        for (const ZvCore::BinXmlNode& node : order->Children())
            if (const ZvLayer* layer = GetByGuid(guidOf(node)))
                m_order.push_back(layer->GetId());
    }
    if (const ZvCore::BinXmlNode* groups = data->GetXml(kGroupsRecord))
        for (const ZvCore::BinXmlNode& node : groups->Children())
            if (const XStringW name = node.GetString("Name", {}); !name.IsEmpty() && !HasGroup(name))
                m_groups.push_back(name);
    if (const ZvCore::BinXmlNode* presets = data->GetXml(kPresetsRecord))
        for (const ZvCore::BinXmlNode& node : presets->Children()) {
            Preset preset{node.GetString("Name", {}), {}};
            for (const ZvCore::BinXmlNode& layer : node.Children())
                preset.states.push_back({guidOf(layer), uint32_t(layer.GetInt("Switches", 0))});
            if (!preset.name.IsEmpty() && !PresetFind(preset.name))
                m_presets.push_back(std::move(preset));
        }
}
