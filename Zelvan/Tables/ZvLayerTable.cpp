#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvDataTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvStrings.h"
#include <algorithm>
#include <array>

namespace {

constexpr std::array<std::u16string_view, 6> kInternalLayers = {
    u"__Paper__", u"__Scratch__", u"__HotSnap__", u"__Construction__", u"__Grid__", u"__TempBitmap__"};
constexpr std::u16string_view kDefaultLayer = u"0";

} // namespace

XStringW ZvLayerTable::DefaultNameBase() const {
    return u"Layer";
}

void ZvLayerTable::CreateDefaults() {
    for (const std::u16string_view name : kInternalLayers) {
        if (GetByName(XStringW(name)))
            continue;
        auto layer = std::make_unique<ZvLayer>();
        layer->SetNameFinal(XStringW(name));
        layer->SetLocked(true);
        layer->SetInternal(true);
        (void)Insert(std::move(layer)); // the name is free and the record new: it cannot be refused
    }
    if (!GetByName(XStringW(kDefaultLayer)))
        InsertNew(XStringW(kDefaultLayer));
    SetAnyCurrent();
}

bool ZvLayerTable::IsNewNameValid(const XStringW& name) const {
    return ZvTable::IsNewNameValid(name) && !HasGroup(name) && !name.EqualsNoCase(XStringW(kReservedGroup));
}

bool ZvLayerTable::MayDelete(const ZvTableRecord& record) const {
    return !record.IsInternal();
}

// --- internal layers ---------------------------------------------------------------------------------------

ZvLayer* ZvLayerTable::Internal(size_t which) {
    const XStringW name(kInternalLayers[which]);
    if (ZvLayer* layer = GetByName(name))
        return layer;
    CreateDefaults();
    return GetByName(name);
}

ZvLayer* ZvLayerTable::GetPaperLayer() {
    return Internal(0);
}

ZvLayer* ZvLayerTable::GetScratchLayer() {
    return Internal(1);
}

ZvLayer* ZvLayerTable::GetHotSnapLayer() {
    return Internal(2);
}

ZvLayer* ZvLayerTable::GetConstructionLayer() {
    return Internal(3);
}

ZvLayer* ZvLayerTable::GetGridLayer() {
    return Internal(4);
}

ZvLayer* ZvLayerTable::GetTempBitmapLayer() {
    return Internal(5);
}

ZvBounds3D ZvLayerTable::WorldExtents() const {
    ZvBounds3D all;
    for (int i = 0; i < Count(); ++i)
        if (const ZvLayer* layer = Get(i); !layer->IsInternal() && !layer->IsErased())
            all.ExpandToFit(layer->Tree().Bounds());
    return all;
}

// --- drawing order -----------------------------------------------------------------------------------------

void ZvLayerTable::OnRecordInserted(ZvTableRecord& record) {
    m_order.push_back(record.GetId());
}

void ZvLayerTable::OnRecordsDeleted() {
    EnsureLayerOrder();
}

void ZvLayerTable::OnPurged() {
    m_order.clear();
    m_groups.clear();
    m_presets.clear();
}

void ZvLayerTable::EnsureLayerOrder() {
    std::set<uint32_t> seen;
    std::erase_if(m_order, [&](uint32_t id) { return !GetById(id) || !seen.insert(id).second; });
    for (int i = 0; i < Count(); ++i)
        if (!seen.count(Get(i)->GetId()))
            m_order.push_back(Get(i)->GetId());
}

std::vector<ZvLayer*> ZvLayerTable::GetLayerOrder() {
    if (int(m_order.size()) != Count())
        EnsureLayerOrder();
    std::vector<ZvLayer*> layers;
    layers.reserve(m_order.size());
    for (const uint32_t id : m_order)
        if (ZvLayer* layer = GetById(id))
            layers.push_back(layer);
    return layers;
}

std::vector<ZvLayer*> ZvLayerTable::GetDrawOrder() {
    std::vector<ZvLayer*> layers = GetLayerOrder();
    std::stable_sort(layers.begin(), layers.end(),
                     [](const ZvLayer* a, const ZvLayer* b) { return a->GetStrata() < b->GetStrata(); });
    return layers;
}

void ZvLayerTable::SetLayerOrder(const std::vector<ZvLayer*>& bottomFirst) {
    std::vector<uint32_t> order;
    for (const ZvLayer* layer : bottomFirst)
        if (IsRecordInTable(layer))
            order.push_back(layer->GetId());
    order.insert(order.end(), m_order.begin(),
                 m_order.end()); // those not named follow; repeated ids drop out
    m_order = std::move(order);
    EnsureLayerOrder();
    IncModified();
    TellWatchers(ZvTableEvent::Changed, -1);
}

bool ZvLayerTable::MoveTo(const ZvLayer* layer, const ZvLayer* reference, bool above) {
    if (!IsRecordInTable(layer) || !IsRecordInTable(reference) || layer == reference)
        return false;
    std::vector<ZvLayer*> order = GetLayerOrder();
    ZvLayer* moved = GetById(layer->GetId());
    std::erase(order, moved);
    const auto at = std::find(order.begin(), order.end(), reference);
    order.insert(above ? at + 1 : at, moved);
    SetLayerOrder(order);
    return true;
}

bool ZvLayerTable::MoveLayerAbove(const ZvLayer* layer, const ZvLayer* reference) {
    return MoveTo(layer, reference, true);
}

bool ZvLayerTable::MoveLayerBeneath(const ZvLayer* layer, const ZvLayer* reference) {
    return MoveTo(layer, reference, false);
}

bool ZvLayerTable::MoveLayerToTop(const ZvLayer* layer) {
    return MoveLayerToPos(layer, Count());
}

bool ZvLayerTable::MoveLayerToBottom(const ZvLayer* layer) {
    return MoveLayerToPos(layer, 0);
}

bool ZvLayerTable::MoveLayerToPos(const ZvLayer* layer, int position) {
    if (!IsRecordInTable(layer))
        return false;
    std::vector<ZvLayer*> order = GetLayerOrder();
    ZvLayer* moved = GetById(layer->GetId());
    std::erase(order, moved);
    order.insert(order.begin() + std::clamp(position, 0, int(order.size())), moved);
    SetLayerOrder(order);
    return true;
}

// --- files -------------------------------------------------------------------------------------------------

void ZvLayerTable::NativeOutPreFix(ZvNativeDesc& desc) {
    for (int i = 0; i < Count(); ++i) {
        if (Get(i)->EnsureEntireLayerLoaded())
            continue;
        desc.Native().AddError(
            0, XStringA::Format(ZvStrings::Get(ZvStr::LayerNotLoaded), Get(i)->GetName().ToUtf8().c_str())
                   .Str());
        desc.Native().Abort();
    }
    SaveOrder();
}

void ZvLayerTable::NativeInPostFix(ZvNativeDesc& desc) {
    if (!desc.Native().Options().merge)
        LoadFromData();
    EnsureLayerOrder();
    for (int i = 0; i < Count(); ++i) // layers of another drawing bring their groups
        if (const XStringW& group = Get(i)->GetGroup(); !group.IsEmpty() && !HasGroup(group))
            m_groups.push_back(group);
}
