#include "Zelvan/Verbs/ZvEntitySnapshots.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvSelection.h"
#include "ZvCore/ZvErrors.h"

ZvEntitySnapshots::ZvEntitySnapshots() = default;
ZvEntitySnapshots::~ZvEntitySnapshots() = default;

uint32_t ZvEntitySnapshots::Name(size_t index) const {
    return m_copies[index].entity->Name32();
}

std::vector<uint32_t> ZvEntitySnapshots::Names() const {
    std::vector<uint32_t> names;
    for (const One& one : m_copies)
        names.push_back(one.entity->Name32());
    return names;
}

size_t ZvEntitySnapshots::BytesOf(const One& one) {
    size_t bytes = one.entity->MemUsage();
    if (!one.row)
        return bytes;
    bytes += sizeof(Row) + one.row->capacity() * sizeof(ZvAttributeColumn::Value);
    for (const ZvAttributeColumn::Value& value : *one.row)
        if (const auto* text = std::get_if<XStringW>(&value))
            bytes += text->Length() * sizeof(char16_t);
    return bytes;
}

void ZvEntitySnapshots::Take(const ZvEntity& entity) {
    Take(entity, entity.Clone());
}

void ZvEntitySnapshots::Take(const ZvEntity& target, std::unique_ptr<ZvEntity> state) {
    One one;
    one.entity = std::move(state);
    one.entity->SetName32(target.Name32());
    one.layer = target.GetLayer();
    const ZvAttributeTable* table = one.layer ? one.layer->AttributesOrNull() : nullptr;
    if (table && table->HasRow(target.Name())) {
        one.row = std::make_unique<Row>();
        for (int field = 0; field < table->FieldCount(); ++field)
            one.row->push_back(table->Get(target.Name(), field));
    }
    m_bytes += BytesOf(one);
    m_copies.push_back(std::move(one));
}

bool ZvEntitySnapshots::Restore(ZvDrawing& drawing, size_t index) const {
    const One& one = m_copies[index];
    ZvEntity* live = drawing.GetEntity(one.entity->Name());
    if (!live || live->GetFullCode() != one.entity->GetFullCode()) {
        ZvErrors::Report(ZvErrorCode::VerbEntityGone, "ZvEntitySnapshots.Restore");
        return false;
    }
    if (one.layer && live->GetLayer() != one.layer)
        (void)live->MoveToLayer(one.layer);
    const ZvBounds3D bounds = live->Bounds3D();
    live->CloneFrom(*one.entity);
    if (live->Bounds3D() != bounds)
        live->RecalcBounds();
    live->Touch();
    RestoreRow(one, live->Name32());
    return true;
}

void ZvEntitySnapshots::RestoreRow(const One& one, uint32_t number) {
    const ZvName name(number);
    if (!one.layer || !(one.row || one.layer->AttributesOrNull()))
        return;
    ZvAttributeTable& table = one.layer->Attributes();
    if (!one.row)
        table.RemoveRow(name);
    else if (!table.SetRow(name, *one.row))
        ZvErrors::Fatal("ZvEntitySnapshots.Restore: the layer's attribute fields have changed");
}

void ZvEntitySnapshots::Remove(const ZvSelection& leaving) {
    std::erase_if(m_copies, [&](const One& one) {
        const bool goes = leaving.Contains(one.entity->Name());
        m_bytes -= goes ? BytesOf(one) : 0;
        return goes;
    });
}

void ZvEntitySnapshots::AddLayers(std::vector<ZvLayer*>& layers) const {
    for (const One& one : m_copies)
        if (one.layer && (layers.empty() || layers.back() != one.layer))
            layers.push_back(one.layer);
}
