#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Verbs/ZvFieldGain.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <map>
#include <unordered_map>

namespace {

constexpr size_t kHeapBlock = 16; ///< what the heap takes beside each of many small blocks

template <class Item>
size_t BlockOf(const std::vector<Item>& items) {
    return items.capacity() ? items.capacity() * sizeof(Item) + kHeapBlock : 0;
}

} // namespace

/// What became of what, and what GiveMeta gave, in order.
struct ZvVerb::Lineage {
    struct GivenRow {
        uint32_t layerId; ///< a layer may be deleted without a verb
        uint32_t name;
    };
    /// What was taken back, newest first, for the next time: whoever gave it may be gone for good by then.
    struct Taken {
        std::vector<GivenRow> rows;
        std::map<uint32_t, ZvAttributeTable> values; ///< by layer id
        std::vector<Pair> partners;

        void Forget(const ZvSelection& leaving);
        size_t MemUsage() const;
    };
    std::vector<Pair> pairs, metaPairs;
    std::vector<GivenRow> rows;
    std::vector<Pair> partners;
    std::map<uint32_t, ZvFieldGain> fields; ///< that layers (by id) got with the rows, now or the last time
    std::unique_ptr<Taken> taken;

    static bool Leaves(const Pair& pair, const ZvSelection& leaving) {
        return leaving.Contains(ZvName(pair.from)) || leaving.Contains(ZvName(pair.to));
    }
    void Forget(const ZvSelection& leaving);
    void Give(ZvLayer& to, ZvName heir, const ZvAttributeTable& from, ZvName source);
    size_t MemUsage() const;
};

size_t ZvVerb::Lineage::Taken::MemUsage() const {
    size_t bytes = sizeof(*this) + rows.capacity() * sizeof(GivenRow) + partners.capacity() * sizeof(Pair);
    for (const auto& [layer, table] : values)
        bytes += table.MemUsage();
    return bytes;
}

void ZvVerb::Lineage::Taken::Forget(const ZvSelection& leaving) {
    std::erase_if(partners, [&](const Pair& pair) { return Leaves(pair, leaving); });
    std::erase_if(rows, [&](const GivenRow& row) {
        return leaving.Contains(ZvName(row.name)) && values[row.layerId].RemoveRow(ZvName(row.name));
    });
}

void ZvVerb::Lineage::Forget(const ZvSelection& leaving) {
    const auto leaves = [&](const Pair& pair) { return Leaves(pair, leaving); };
    std::erase_if(pairs, leaves);
    std::erase_if(metaPairs, leaves);
    std::erase_if(partners, leaves);
    std::erase_if(rows, [&](const GivenRow& row) { return leaving.Contains(ZvName(row.name)); });
    if (taken)
        taken->Forget(leaving);
}

void ZvVerb::Lineage::Give(ZvLayer& to, ZvName heir, const ZvAttributeTable& from, ZvName source) {
    const int before = ZvFieldGain::FieldCount(to);
    if (!to.Attributes().CopyRow(heir, from, source))
        return;
    rows.push_back({to.GetId(), heir.value});
    if (ZvFieldGain::FieldCount(to) > before)
        fields[to.GetId()].Note(to, before);
}

size_t ZvVerb::Lineage::MemUsage() const {
    size_t bytes = sizeof(*this) + kHeapBlock + BlockOf(pairs) + BlockOf(metaPairs) + BlockOf(partners) +
                   BlockOf(rows) + (taken ? taken->MemUsage() : 0);
    for (const auto& [id, gain] : fields)
        bytes += gain.MemUsage();
    return bytes;
}

ZvVerb::ZvVerb(ZvDrawing* drawing) : m_drawing(drawing), m_entities(drawing) {}

ZvVerb::~ZvVerb() = default;

ZvBounds3D ZvVerb::GetBounds(const ZvScaleSetup* scale) const {
    return m_entities.GetBounds(scale);
}

size_t ZvVerb::MemUsage() const {
    return sizeof(*this) - sizeof(m_entities) + m_entities.MemUsage() +
           m_layers.capacity() * sizeof(ZvLayer*) + (m_lineage ? m_lineage->MemUsage() : 0) +
           (m_formerSelection ? m_formerSelection->capacity() * sizeof(uint32_t) : 0);
}

bool ZvVerb::IsUndoable(bool* quiet) const {
    if (quiet)
        *quiet = false;
    return true;
}

bool ZvVerb::Redo() {
    Do();
    return true;
}

void ZvVerb::RemoveFromSet(const ZvSelection& leaving) {
    m_entities.Remove(leaving);
    if (m_lineage)
        m_lineage->Forget(leaving);
}

void ZvVerb::ReplaceSet(const ZvSelection& entities) {
    m_entities = entities;
}

bool ZvVerb::UsesEntities(const std::set<uint32_t>& names) const {
    std::set<uint32_t> used;
    CollectEntities(used);
    return std::any_of(used.begin(), used.end(), [&](uint32_t name) { return names.count(name) != 0; });
}

void ZvVerb::CollectEntities(std::set<uint32_t>& names) const {
    names.insert(m_entities.Names().begin(), m_entities.Names().end());
}

void ZvVerb::SetParent(ZvDrawing* drawing) {
    m_drawing = drawing;
    m_entities.SetParentDrawing(drawing);
}

// --- layers -----------------------------------------------------------------------------------------------

void ZvVerb::UpdateLayersUsed() {
    AddLayersOf(m_entities);
}

void ZvVerb::AddLayersOf(const ZvSelection& entities) {
    ZvLayer* last = nullptr;
    for (int i = 0; i < entities.Count(); ++i)
        if (const ZvEntity* entity = entities.GetEntityQuietNoCheck(i))
            if (ZvLayer* layer = entity->GetLayer(); layer != last)
                AddLayerUsed(last = layer);
}

void ZvVerb::AddLayerUsed(ZvLayer* layer) {
    const auto place = std::lower_bound(m_layers.begin(), m_layers.end(), layer);
    if (layer && (place == m_layers.end() || *place != layer))
        m_layers.insert(place, layer);
}

bool ZvVerb::UsesLayers(const std::set<ZvLayer*>& layers) const {
    return std::any_of(m_layers.begin(), m_layers.end(),
                       [&](ZvLayer* layer) { return layers.count(layer) != 0; });
}

// --- what became of what ----------------------------------------------------------------------------------

ZvVerb::Lineage& ZvVerb::NeedLineage() {
    if (!m_lineage)
        m_lineage = std::make_unique<Lineage>();
    return *m_lineage;
}

void ZvVerb::MakePair(ZvName from, ZvName to) {
    NeedLineage().pairs.push_back({from.value, to.value});
}

void ZvVerb::MakePairsNTo1(const ZvSelection& from, ZvName to) {
    for (uint32_t name : from.Names())
        MakePair(ZvName(name), to);
}

void ZvVerb::MakePairs1ToN(ZvName from, const ZvSelection& to) {
    for (uint32_t name : to.Names())
        MakePair(from, ZvName(name));
}

void ZvVerb::AddMetaPair(ZvName from, ZvName to) {
    if (!from.IsNull() && !to.IsNull() && from.value != to.value)
        NeedLineage().metaPairs.push_back({from.value, to.value});
}

void ZvVerb::AddMetaPairs(const std::vector<Pair>& pairs) {
    for (const Pair& pair : pairs)
        AddMetaPair(ZvName(pair.from), ZvName(pair.to));
}

const std::vector<ZvVerb::Pair>& ZvVerb::Pairs() const {
    static const std::vector<Pair> none;
    return m_lineage ? m_lineage->pairs : none;
}

const std::vector<ZvVerb::Pair>& ZvVerb::MetaPairs() const {
    static const std::vector<Pair> none;
    return m_lineage ? m_lineage->metaPairs : none;
}

void ZvVerb::GiveMeta() {
    if (!m_lineage || !m_drawing)
        return;
    for (const auto& [id, gain] : m_lineage->fields)
        if (ZvLayer* layer = m_drawing->LayerTable()->GetById(id))
            gain.BringBack(*layer);
    if (m_lineage->taken)
        return GiveMetaAgain();
    ZvEntityAssociator& associator = *m_drawing->EntityAssociator();
    for (const Pair& pair : m_lineage->metaPairs) {
        const ZvName from(pair.from), to(pair.to);
        const ZvEntity *source = m_drawing->GetEntity(from), *heir = m_drawing->GetEntity(to);
        ZvLayer* former = source ? source->GetLayer() : nullptr;
        ZvLayer* layer = heir ? heir->GetLayer() : nullptr;
        if (former && layer && former->AttributesOrNull() && former->AttributesOrNull()->HasRow(from)) {
            const ZvAttributeTable* own = layer->AttributesOrNull();
            if (!own || !own->HasRow(to))
                m_lineage->Give(*layer, to, *former->AttributesOrNull(), from);
        }
        for (ZvName partner : associator.GetAssociates(from))
            if (associator.Associate(to, partner))
                m_lineage->partners.push_back({pair.to, partner.value});
    }
}

/// What was taken back, from the verb's own copy.
void ZvVerb::GiveMetaAgain() {
    const std::unique_ptr<Lineage::Taken> taken = std::move(m_lineage->taken);
    for (auto row = taken->rows.rbegin(); row != taken->rows.rend(); ++row)
        if (ZvLayer* layer = m_drawing->LayerTable()->GetById(row->layerId))
            m_lineage->Give(*layer, ZvName(row->name), taken->values[row->layerId], ZvName(row->name));
    for (auto pair = taken->partners.rbegin(); pair != taken->partners.rend(); ++pair)
        if (m_drawing->EntityAssociator()->Associate(ZvName(pair->from), ZvName(pair->to)))
            m_lineage->partners.push_back(*pair);
}

void ZvVerb::TakeBackMeta() {
    if (!m_lineage || !m_drawing)
        return;
    auto taken = std::make_unique<Lineage::Taken>();
    for (; !m_lineage->partners.empty(); m_lineage->partners.pop_back()) {
        const Pair& pair = m_lineage->partners.back();
        (void)m_drawing->EntityAssociator()->Dissociate(ZvName(pair.from), ZvName(pair.to));
        taken->partners.push_back(pair);
    }
    for (; !m_lineage->rows.empty(); m_lineage->rows.pop_back()) {
        const Lineage::GivenRow& given = m_lineage->rows.back();
        ZvLayer* layer = m_drawing->LayerTable()->GetById(given.layerId);
        if (!layer)
            continue;
        ZvAttributeTable& table = layer->Attributes();
        if (taken->values[given.layerId].CopyRow(ZvName(given.name), table, ZvName(given.name)))
            taken->rows.push_back(given);
        table.RemoveRow(ZvName(given.name));
    }
    for (const auto& [id, gain] : m_lineage->fields)
        if (ZvLayer* layer = m_drawing->LayerTable()->GetById(id))
            gain.TakeAway(*layer);
    if (!taken->rows.empty() || !taken->partners.empty())
        m_lineage->taken = std::move(taken);
}

// --- the current selection --------------------------------------------------------------------------------

namespace {

/// Looks for a common member from the shorter side.
bool Meet(const ZvSelection& a, const ZvSelection& b) {
    return a.Count() <= b.Count() ? a.PositiveUnion(b) : b.PositiveUnion(a);
}

/// The verb repaints what it touches: single entities need not.
void ChangeQuietly(ZvDrawing& drawing, const ZvSelection& selection) {
    ZvEntity::SuppressSelectionNotifications(true);
    (void)drawing.ChangeSelection(selection);
    ZvEntity::SuppressSelectionNotifications(false);
}

} // namespace

void ZvVerb::LeaveSelection(const ZvSelection& leaving, bool note) {
    const ZvSelection& current = m_drawing->CurrentSelection();
    if (current.IsEmpty() || !Meet(current, leaving))
        return;
    if (note)
        m_formerSelection = std::make_unique<std::vector<uint32_t>>(current.Names());
    ZvSelection rest(current);
    rest.Remove(leaving);
    ChangeQuietly(*m_drawing, rest);
}

void ZvVerb::SwapInSelection(const std::vector<uint32_t>& from, const std::vector<uint32_t>& to) {
    const ZvSelection& current = m_drawing->CurrentSelection();
    if (current.IsEmpty())
        return;
    std::unordered_map<uint32_t, uint32_t> heirs;
    for (size_t i = 0; i < from.size() && i < to.size(); ++i)
        heirs.emplace(from[i], to[i]);
    ZvSelection next(m_drawing);
    for (uint32_t name : current.Names()) {
        const auto heir = heirs.find(name);
        if (const ZvName now(heir == heirs.end() ? name : heir->second); !now.IsNull())
            next.Insert(now);
    }
    ChangeQuietly(*m_drawing, next);
}

void ZvVerb::RestoreSelection() {
    if (!m_formerSelection || !m_drawing)
        return;
    ZvSelection former(m_drawing);
    former.BeginUniqueInsertion();
    for (uint32_t name : *m_formerSelection)
        if (const ZvEntity* entity = m_drawing->GetEntity(ZvName(name)); entity && !entity->IsErased())
            former.Insert(ZvName(name));
    former.FinishUniqueInsertion();
    m_formerSelection.reset();
    ChangeQuietly(*m_drawing, former);
}

// --- entities ---------------------------------------------------------------------------------------------

bool ZvVerb::MayWorkIn(const ZvDrawing* drawing) const {
    const ZvDrawing* ofEntities = m_entities.ParentDrawing();
    return (!m_drawing || m_drawing == drawing) && (!ofEntities || ofEntities == drawing);
}

bool ZvVerb::AcceptsEntity(const ZvEntity* entity) {
    ZvDrawing* drawing = entity ? entity->ParentDrawing() : nullptr;
    if (drawing && !m_drawing)
        SetParent(drawing);
    if (drawing && drawing != m_drawing)
        ZvErrors::Fatal("ZvVerb.AcceptsEntity: an entity of another drawing");
    return drawing && drawing == m_drawing;
}

void ZvVerb::LeaveOutGone(const char* context) {
    ZvSelection leaving(m_drawing);
    for (int i = 0; i < m_entities.Count(); ++i) {
        const ZvEntity* entity = m_entities.GetEntityQuietNoCheck(i);
        if (!entity)
            ZvErrors::Report(ZvErrorCode::VerbEntityGone, context);
        if (!entity || entity->IsErased())
            leaving.Insert(m_entities.GetName(i));
    }
    if (!leaving.IsEmpty())
        RemoveFromSet(leaving);
}

bool ZvVerb::AllExist(const std::vector<uint32_t>& names, const char* context) const {
    if (m_drawing && std::all_of(names.begin(), names.end(),
                                 [&](uint32_t name) { return m_drawing->NameTable().Exists(ZvName(name)); }))
        return true;
    ZvErrors::Report(ZvErrorCode::VerbEntityGone, context);
    return false;
}

size_t ZvVerb::SetErased(const std::vector<uint32_t>& names, bool erased, const char* context) const {
    size_t bytes = 0;
    for (uint32_t name : names)
        if (ZvEntity* entity = m_drawing->GetEntity(ZvName(name))) {
            entity->SetErased(erased);
            bytes += entity->MemUsage();
        } else if (name) {
            ZvErrors::Report(ZvErrorCode::VerbEntityGone, context);
        }
    return bytes;
}

size_t ZvVerb::MemUsageOf(const ZvSelection& entities) {
    size_t bytes = 0;
    for (int i = 0; i < entities.Count(); ++i)
        if (const ZvEntity* entity = entities.GetEntityQuietNoCheck(i))
            bytes += entity->MemUsage();
    return bytes;
}

void ZvVerb::ManageEntityDeletion(const std::vector<uint32_t>& names) {
    if (!m_drawing || m_drawing->Destroying())
        return;
    const ZvVerbStack& stack = *m_drawing->Verbs();
    for (uint32_t number : names) {
        const ZvName name(number);
        ZvEntity* entity = m_drawing->GetEntity(name);
        if (!entity || !entity->IsErased() || stack.IsHeldByKeptVerb(number))
            continue;
        if (ZvLayer* layer = entity->GetLayer(); layer && layer->AttributesOrNull())
            layer->Attributes().RemoveRow(name);
        entity->RemoveAndDelete();
    }
}
