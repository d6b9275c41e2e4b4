#include "Zelvan/Verbs/ZvVTextChange.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

namespace {

template <class Holder>
bool HasText(const Holder& holder, const std::string& property) {
    ZvPropertyGatherer gatherer;
    holder.GetProperties(gatherer);
    const ZvProperty* found = gatherer.Find(property);
    return found && found->writable && std::holds_alternative<XStringW>(found->value);
}

/// False, with the reason, when the holder does not take the text.
template <class Holder>
bool SetText(Holder& holder, const std::string& property, const XStringW& text, XStringW& why) {
    ZvPropertySetter setter;
    setter.Set(property, text);
    holder.SetProperties(setter);
    if (setter.Refusals().empty() && setter.Unused().empty())
        return true;
    why = setter.Refusals().empty() ? ZvStrings::GetW(ZvStr::RefusedText)
                                    : XStringW::FromUtf8(setter.Refusals().front());
    return false;
}

ZvLayer* LayerOf(const ZvDrawing& drawing, uint32_t name, const char* context) {
    const ZvEntity* entity = drawing.GetEntity(ZvName(name));
    ZvLayer* layer = entity ? entity->GetLayer() : nullptr;
    if (!layer)
        ZvErrors::Report(ZvErrorCode::VerbEntityGone, context);
    return layer;
}

} // namespace

bool ZvVTextChange::AddEntity(const ZvEntity& entity, const XStringW& text) {
    if (!AcceptsEntity(&entity))
        return false;
    ZvPropertyGatherer gatherer;
    entity.GetProperties(gatherer, true);
    const ZvProperty* found = gatherer.Find("Text");
    if (!found || !std::holds_alternative<XStringW>(found->value))
        return false;
    Entities().Insert(&entity);
    m_changes.push_back({OfEntity{entity.Name32()}, text});
    return true;
}

bool ZvVTextChange::AddAttribute(const ZvEntity& entity, const XStringW& field, const XStringW& text) {
    const ZvLayer* layer = AcceptsEntity(&entity) ? entity.GetLayer() : nullptr;
    const ZvAttributeTable* table = layer ? layer->AttributesOrNull() : nullptr;
    const int index = table ? table->FindField(field) : -1;
    if (index < 0 || table->Fields()[size_t(index)].type != ZvAttributeColumn::Type::String)
        return false;
    Entities().Insert(&entity);
    m_changes.push_back({OfAttribute{entity.Name32(), field, false, {}}, text});
    return true;
}

bool ZvVTextChange::AddRecord(const ZvTableRecord& record, const std::string& property,
                              const XStringW& text) {
    if (!record.IsInTable() || !HasText(record, property))
        return false;
    m_changes.push_back({OfRecord{ZvRecordKey::Of(record), property, {}}, text});
    return true;
}

void ZvVTextChange::Do() {
    LeaveOutGone("ZvVTextChange.Do");
    m_originals.Clear();
    XStringW why;
    bool changed = false;
    for (m_made = 0; m_made < m_changes.size(); ++m_made) {
        Change& change = m_changes[m_made];
        changed =
            std::visit([&](auto& where) { return Make(where, change.text, why); }, change.where) || changed;
    }
    Refuse(why, !changed);
}

bool ZvVTextChange::Make(const OfEntity& where, const XStringW& text, XStringW& why) {
    ZvEntity& entity = *Drawing()->GetEntity(ZvName(where.name));
    m_originals.Keep(entity);
    return SetText(entity, "Text", text, why);
}

bool ZvVTextChange::Make(OfAttribute& where, const XStringW& text, XStringW& why) {
    ZvLayer* layer = LayerOf(*Drawing(), where.name, "ZvVTextChange.Do");
    const ZvAttributeTable* table = layer ? layer->AttributesOrNull() : nullptr;
    if (!table || table->FindField(where.field) < 0) {
        why = ZvStrings::GetW(ZvStr::RefusedText);
        return false;
    }
    where.hadRow = table->HasRow(where.name);
    where.before = table->Get(where.name, where.field);
    return layer->Attributes().Set(where.name, where.field, text) &&
           !(where.hadRow && where.before == ZvAttributeColumn::Value(text));
}

bool ZvVTextChange::Make(OfRecord& where, const XStringW& text, XStringW& why) {
    ZvTableRecord* record = where.key.Find(*Drawing());
    if (!record) {
        ZvErrors::Report(ZvErrorCode::VerbRecordGone, "ZvVTextChange.Do");
        why = ZvStrings::GetW(ZvStr::RefusedNoRecord);
        return false;
    }
    where.before = ZvRecordState(*record);
    return SetText(*record, where.property, text, why) && !(where.before == ZvRecordState(*record));
}

void ZvVTextChange::Undo() {
    for (; m_made > 0; --m_made)
        std::visit([&](const auto& where) { TakeBack(where); }, m_changes[m_made - 1].where);
    m_originals.Restore(*Drawing(), "ZvVTextChange.Undo");
}

void ZvVTextChange::TakeBack(const OfAttribute& where) {
    ZvLayer* layer = LayerOf(*Drawing(), where.name, "ZvVTextChange.Undo");
    if (!layer)
        return;
    if (where.hadRow)
        layer->Attributes().Set(where.name, where.field, where.before);
    else
        layer->Attributes().RemoveRow(where.name);
}

void ZvVTextChange::TakeBack(const OfRecord& where) {
    if (ZvTableRecord* record = where.key.Find(*Drawing()))
        (void)where.before.Restore(*record);
    else
        ZvErrors::Report(ZvErrorCode::VerbRecordGone, "ZvVTextChange.Undo");
}

void ZvVTextChange::UpdateLayersUsed() {
    ZvVerb::UpdateLayersUsed();
    for (const Change& change : m_changes)
        if (const auto* record = std::get_if<OfRecord>(&change.where))
            AddLayerUsed(record->key.FindLayer(*Drawing()));
}

void ZvVTextChange::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    m_originals.Remove(leaving);
    std::erase_if(m_changes, [&](const Change& change) {
        const auto* entity = std::get_if<OfEntity>(&change.where);
        const auto* attribute = std::get_if<OfAttribute>(&change.where);
        return (entity && leaving.Contains(ZvName(entity->name))) ||
               (attribute && leaving.Contains(ZvName(attribute->name)));
    });
    m_made = std::min(m_made, m_changes.size()); // between operations all are made or none
}

XStringW ZvVTextChange::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbTextChange);
}

size_t ZvVTextChange::MemUsage() const {
    size_t bytes = ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_originals.MemUsage() +
                   m_changes.capacity() * sizeof(Change);
    for (const Change& change : m_changes) {
        bytes += change.text.Length() * 2;
        if (const auto* record = std::get_if<OfRecord>(&change.where))
            bytes += record->before.MemUsage();
        else if (const auto* attribute = std::get_if<OfAttribute>(&change.where))
            if (const auto* before = std::get_if<XStringW>(&attribute->before))
                bytes += before->Length() * 2;
    }
    return bytes;
}
