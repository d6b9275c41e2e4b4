#include "Zelvan/Verbs/ZvVMoveToLayer.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"

ZvVMoveToLayer::ZvVMoveToLayer(ZvLayer& to, const ZvSelection& entities)
    : ZvVerb(to.GetParentDrawing()), m_layerId(to.GetId()) {
    if (!entities.IsEmpty())
        Entities() = entities; // of another drawing than the layer's: the stack refuses the verb
}

ZvLayer* ZvVMoveToLayer::FindLayer(uint32_t id) const {
    return Drawing() && Drawing()->LayerTable() ? Drawing()->LayerTable()->GetById(id) : nullptr;
}

bool ZvVMoveToLayer::IsNullOp() const {
    return IsRefused() || (m_former.empty() && !HasMembersElsewhere());
}

/// Whether entities are not on the layer.
bool ZvVMoveToLayer::HasMembersElsewhere() const {
    for (int i = 0; i < Entities().Count(); ++i)
        if (const ZvEntity* entity = Entities().GetEntityQuiet(i))
            if (const ZvLayer* layer = entity->GetLayer(); !layer || layer->GetId() != m_layerId)
                return true;
    return false;
}

ZvLayer* ZvVMoveToLayer::Target(const char* context) const {
    ZvLayer* to = FindLayer(m_layerId);
    if (!to)
        ZvErrors::Report(ZvErrorCode::VerbLayerGone, context);
    return to;
}

void ZvVMoveToLayer::Do() {
    LeaveOutGone("ZvVMoveToLayer.Do");
    ZvLayer* to = Target("ZvVMoveToLayer.Do");
    if (!to)
        return Refuse(ZvStrings::GetW(ZvStr::RefusedNoLayer));
    const int fields = ZvFieldGain::FieldCount(*to);
    MoveAll(*to);
    m_fields.Note(*to, fields);
    if (HasMembersElsewhere())
        Refuse(XStringW::Format(ZvStrings::Get(ZvStr::RefusedMove), to->GetName().ToUtf8().c_str()),
               m_former.empty());
}

/// The layer gains the fields that it gained then. Others that a former layer has got since come only with values.
bool ZvVMoveToLayer::Redo() {
    ZvLayer* to = Target("ZvVMoveToLayer.Redo");
    if (!to)
        return false;
    m_fields.BringBack(*to);
    const int fields = ZvFieldGain::FieldCount(*to);
    MoveAll(*to);
    ZvFieldGain others;
    others.Note(*to, fields);
    others.TakeAway(*to);
    m_fields.Note(*to, fields);
    return true;
}

void ZvVMoveToLayer::MoveAll(ZvLayer& to) {
    m_former.clear();
    m_rows.clear();
    for (int i = 0; i < Entities().Count(); ++i) {
        if (ZvEntity* entity = Entities().GetEntityQuiet(i))
            MoveOne(*entity, to);
        else
            ZvErrors::Report(ZvErrorCode::VerbEntityGone, "ZvVMoveToLayer.Do");
    }
    UpdateLayersUsed();
}

void ZvVMoveToLayer::MoveOne(ZvEntity& entity, ZvLayer& to) {
    const ZvLayer* from = entity.GetLayer();
    if (!from || from == &to)
        return;
    const Former former{entity.Name32(), from->GetId(), ZvDrawPlace(entity)};
    const ZvAttributeTable* rows = from->AttributesOrNull();
    if (rows && rows->HasRow(entity.Name()))
        m_rows[former.layerId].CopyRow(entity.Name(), *rows, entity.Name());
    if (entity.MoveToLayer(&to))
        m_former.push_back(former);
}

void ZvVMoveToLayer::Undo() {
    ZvLayer* to = FindLayer(m_layerId);
    for (auto former = m_former.rbegin(); former != m_former.rend(); ++former)
        BringBack(*former, to);
    if (to)
        m_fields.TakeAway(*to);
}

void ZvVMoveToLayer::BringBack(const Former& former, ZvLayer* from) {
    ZvEntity* entity = Drawing()->GetEntity(ZvName(former.name));
    ZvLayer* home = FindLayer(former.layerId);
    if (!entity)
        return ZvErrors::Report(ZvErrorCode::VerbEntityGone, "ZvVMoveToLayer.Undo");
    if (!home)
        return ZvErrors::Report(ZvErrorCode::VerbLayerGone, "ZvVMoveToLayer.Undo");
    // The row as it was comes from the verb's own copy; the one here holds this layer's fields, too.
    const auto rows = m_rows.find(former.layerId);
    const bool hadRow = rows != m_rows.end() && rows->second.HasRow(former.name);
    if (hadRow && from && from->AttributesOrNull())
        from->Attributes().RemoveRow(former.name);
    entity->MoveToLayer(home);
    if (hadRow)
        home->Attributes().CopyRow(former.name, rows->second, former.name);
    former.place.Restore(*entity);
}

void ZvVMoveToLayer::UpdateLayersUsed() {
    ZvVerb::UpdateLayersUsed();
    if (ZvLayer* to = FindLayer(m_layerId))
        AddLayerUsed(to);
    for (const Former& former : m_former)
        if (ZvLayer* layer = FindLayer(former.layerId))
            AddLayerUsed(layer);
}

void ZvVMoveToLayer::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    std::erase_if(m_former, [&](const Former& former) { return leaving.Contains(ZvName(former.name)); });
    for (auto& [id, rows] : m_rows)
        rows.KeepRows([&](ZvName name) { return !leaving.Contains(name); });
}

XStringW ZvVMoveToLayer::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbMoveToLayer);
}

size_t ZvVMoveToLayer::MemUsage() const {
    size_t bytes = ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) - sizeof(m_fields) +
                   m_fields.MemUsage() + m_former.capacity() * sizeof(Former);
    for (const auto& [id, rows] : m_rows)
        bytes += rows.MemUsage();
    return bytes;
}
