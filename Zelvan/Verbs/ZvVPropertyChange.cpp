#include "Zelvan/Verbs/ZvVPropertyChange.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/DrawingAux/ZvAttributeText.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace {

constexpr std::array<std::string_view, 7> kStateProperties = {"Color",   "LineWidth",  "LineType", "Brush",
                                                              "Visible", "Selectable", "LineCap"};

size_t ValueBytes(const ZvAttributeColumn::Value& value) {
    if (const XStringW* text = std::get_if<XStringW>(&value))
        return text->Length() * 2;
    const auto* bytes = std::get_if<std::vector<uint8_t>>(&value);
    return bytes ? bytes->size() : 0;
}

} // namespace

ZvVPropertyChange::ZvVPropertyChange(const ZvSelection& entities) : ZvVerb(entities.ParentDrawing()) {
    Entities() = entities;
}

bool ZvVPropertyChange::Set(const std::string& id, ZvProperty::Value value) {
    if (id == "Layer")
        return false;
    m_values.emplace_back(id, std::move(value));
    return true;
}

void ZvVPropertyChange::SetAttribute(const XStringW& field, ZvAttributeColumn::Value value, bool addMissing) {
    m_attributes.push_back({field, std::move(value), addMissing});
}

bool ZvVPropertyChange::IsNullOp() const {
    return IsRefused() || Entities().IsEmpty() || (m_values.empty() && m_attributes.empty());
}

bool ZvVPropertyChange::TouchesStateOnly() const {
    return std::all_of(m_values.begin(), m_values.end(), [](const auto& value) {
        return std::find(kStateProperties.begin(), kStateProperties.end(), value.first) !=
               kStateProperties.end();
    });
}

void ZvVPropertyChange::Do() {
    LeaveOutGone("ZvVPropertyChange.Do");
    ApplyToAll();
    m_formerValues.clear();
    for (int i = 0; i < Entities().Count(); ++i)
        if (ZvEntity* entity = Entities().GetEntityQuietNoCheck(i))
            for (size_t attribute = 0; attribute < m_attributes.size(); ++attribute)
                ApplyAttribute(*entity, attribute);
    std::string why;
    for (const std::string& refusal : m_refusals)
        why += (why.empty() ? "" : "; ") + refusal;
    Refuse(XStringW::FromUtf8(why), !m_changedAny);
}

/// Sets the attributes that Do set: a layer that had refused one may have the field by now.
bool ZvVPropertyChange::Redo() {
    for (const auto& [id, gain] : m_fields)
        if (ZvLayer* layer = Drawing()->LayerTable()->GetById(id))
            gain.BringBack(*layer);
    ApplyToAll();
    for (const FormerValue& former : std::exchange(m_formerValues, {}))
        if (ZvEntity* entity = Drawing()->GetEntity(ZvName(former.name)))
            ApplyAttribute(*entity, former.attribute);
    return true;
}

/// The properties; attributes are left alone.
void ZvVPropertyChange::ApplyToAll() {
    m_states.clear();
    m_originals.Clear();
    m_refusals.clear();
    m_changedAny = false;
    const bool stateOnly = TouchesStateOnly();
    for (int i = 0; i < Entities().Count(); ++i) {
        ZvEntity* entity = Entities().GetEntityQuiet(i);
        if (!entity) {
            ZvErrors::Report(ZvErrorCode::VerbEntityGone, "ZvVPropertyChange.Do");
            continue;
        }
        if (m_values.empty())
            continue;
        if (!stateOnly) {
            m_originals.Keep(*entity);
            m_changedAny = ApplyProperties(*entity) || m_changedAny;
            continue;
        }
        m_states.push_back({entity->Name32(), ZvEntityState::Of(*entity)});
        ApplyProperties(*entity);
        m_changedAny = m_changedAny || ZvEntityState::Of(*entity) != m_states.back().state;
    }
}

/// Whether the entity took any of the values.
bool ZvVPropertyChange::ApplyProperties(ZvEntity& entity) {
    ZvPropertySetter setter;
    for (const auto& [id, value] : m_values)
        setter.Set(id, value);
    entity.SetProperties(setter);
    ApplyFlags(entity, setter);
    m_refusals.insert(setter.Refusals().begin(), setter.Refusals().end());
    const std::vector<std::string> unused = setter.Unused();
    for (const std::string& id : unused)
        m_refusals.insert(entity.VerbalName().ToUtf8() + " has no property \"" + id + "\"");
    return std::any_of(m_values.begin(), m_values.end(), [&](const auto& value) {
        return !setter.IsRefused(value.first) &&
               std::find(unused.begin(), unused.end(), value.first) == unused.end();
    });
}

void ZvVPropertyChange::ApplyFlags(ZvEntity& entity, ZvPropertySetter& setter) {
    const auto take = [&](const char* id) -> const bool* {
        const ZvProperty::Value* value = setter.Take(id);
        const bool* on = value ? std::get_if<bool>(value) : nullptr;
        if (value && !on)
            setter.Refuse(id, "it is either true or false");
        return on;
    };
    if (const bool* on = take("Visible"))
        entity.SetVisible(*on);
    if (const bool* on = take("Selectable"))
        entity.SetSelectable(*on);
    double cap = 0;
    if (!setter.TakeNumber("LineCap", cap))
        return;
    if (cap == 0 || cap == 1 || cap == 2)
        entity.SetLineCap(int(cap));
    else
        setter.Refuse("LineCap", "it is 0, 1 or 2");
}

/// -1 when the layer has no such field and cannot get it.
int ZvVPropertyChange::FieldFor(ZvLayer& layer, const Attribute& attribute) {
    const int index = layer.AttributesOrNull() ? layer.AttributesOrNull()->FindField(attribute.field) : -1;
    const std::optional<ZvAttributeColumn::Type> type = ZvAttributeColumn::TypeOf(attribute.value);
    if (index >= 0 || !attribute.addMissing || !type)
        return index;
    const int added = layer.Attributes().AddField({attribute.field, *type});
    if (added >= 0)
        m_fields[layer.GetId()].Note(layer, added);
    return added;
}

void ZvVPropertyChange::ApplyAttribute(ZvEntity& entity, size_t attribute) {
    const auto& [field, value, addMissing] = m_attributes[attribute];
    ZvLayer* layer = entity.GetLayer();
    const int index = layer ? FieldFor(*layer, m_attributes[attribute]) : -1;
    if (index < 0) {
        m_refusals.insert("the layer \"" + entity.GetLayerName().ToUtf8() + "\" has no attribute \"" +
                          field.ToUtf8() + "\"");
        return;
    }
    ZvAttributeTable& table = layer->Attributes();
    FormerValue former{entity.Name32(), attribute, table.HasRow(entity.Name()),
                       table.Get(entity.Name(), index)};
    const auto* text = std::get_if<XStringW>(&value);
    const auto type = table.Fields()[size_t(index)].type;
    const auto fitting = text ? ZvAttributeText::Parse(type, *text) : std::optional(value);
    if (!fitting || !table.Set(entity.Name(), index, *fitting)) {
        m_refusals.insert("the attribute \"" + field.ToUtf8() + "\" takes " +
                          ZvAttributeText::TypeName(type) +
                          (text ? ", not '" + text->ToUtf8() + "'" : ", not a value of another type"));
        return;
    }
    m_changedAny = m_changedAny || !former.hadRow || table.Get(entity.Name(), index) != former.value;
    m_formerValues.push_back(std::move(former));
}

void ZvVPropertyChange::Undo() {
    for (auto former = m_formerValues.rbegin(); former != m_formerValues.rend(); ++former)
        UndoAttribute(*former);
    for (const auto& [id, gain] : m_fields)
        if (ZvLayer* layer = Drawing()->LayerTable()->GetById(id))
            gain.TakeAway(*layer);
    m_originals.Restore(*Drawing(), "ZvVPropertyChange.Undo");
    for (auto former = m_states.rbegin(); former != m_states.rend(); ++former) {
        if (ZvEntity* entity = Drawing()->GetEntity(ZvName(former->name)))
            former->state.ApplyTo(*entity);
        else
            ZvErrors::Report(ZvErrorCode::VerbEntityGone, "ZvVPropertyChange.Undo");
    }
}

void ZvVPropertyChange::UndoAttribute(const FormerValue& former) {
    const ZvEntity* entity = Drawing()->GetEntity(ZvName(former.name));
    ZvLayer* layer = entity ? entity->GetLayer() : nullptr;
    if (!layer)
        return ZvErrors::Report(ZvErrorCode::VerbEntityGone, "ZvVPropertyChange.Undo");
    if (former.hadRow)
        layer->Attributes().Set(ZvName(former.name), m_attributes[former.attribute].field, former.value);
    else
        layer->Attributes().RemoveRow(ZvName(former.name));
}

void ZvVPropertyChange::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    const auto leaves = [&](const auto& former) { return leaving.Contains(ZvName(former.name)); };
    std::erase_if(m_states, leaves);
    std::erase_if(m_formerValues, leaves);
    m_originals.Remove(leaving);
}

XStringW ZvVPropertyChange::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbPropertyChange);
}

size_t ZvVPropertyChange::MemUsage() const {
    size_t bytes = ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_originals.MemUsage() +
                   m_states.capacity() * sizeof(FormerState) +
                   m_formerValues.capacity() * sizeof(FormerValue);
    for (const FormerValue& former : m_formerValues)
        bytes += ValueBytes(former.value);
    for (const auto& [id, value] : m_values)
        bytes += sizeof(id) + sizeof(value) + id.capacity();
    for (const Attribute& attribute : m_attributes)
        bytes += sizeof(attribute) + attribute.field.Length() * 2 + ValueBytes(attribute.value);
    for (const auto& [id, gain] : m_fields)
        bytes += sizeof(id) + gain.MemUsage();
    return bytes;
}
