#include "Zelvan/Verbs/ZvEntitySnapshots.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
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
    const ZvLayer* layer = target.GetLayer();
    one.layer = layer ? layer->GetId() : 0;
    const ZvAttributeTable* table = layer ? layer->AttributesOrNull() : nullptr;
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
    ZvLayer* layer = live->GetLayer();
    if (one.layer && !(layer && layer->GetId() == one.layer)) {
        layer = LayerOf(drawing, one);
        if (layer)
            (void)live->MoveToLayer(layer);
        else
            ZvErrors::Report(ZvErrorCode::VerbLayerGone, "ZvEntitySnapshots.Restore");
    }
    const ZvBounds3D bounds = live->Bounds3D();
    live->CloneFrom(*one.entity);
    if (live->Bounds3D() != bounds)
        live->RecalcBounds();
    live->Touch();
    RestoreRow(one, layer, live->Name32());
    return true;
}

ZvLayer* ZvEntitySnapshots::LayerOf(const ZvDrawing& drawing, const One& one) {
    return drawing.LayerTable() ? drawing.LayerTable()->GetById(one.layer) : nullptr;
}

void ZvEntitySnapshots::RestoreRow(const One& one, ZvLayer* layer, uint32_t number) {
    const ZvName name(number);
    if (!layer || !(one.row || layer->AttributesOrNull()))
        return;
    ZvAttributeTable& table = layer->Attributes();
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

void ZvEntitySnapshots::AddLayers(const ZvDrawing& drawing, std::vector<ZvLayer*>& layers) const {
    uint32_t last = 0;
    for (const One& one : m_copies)
        if (one.layer && one.layer != last) {
            last = one.layer;
            if (ZvLayer* layer = LayerOf(drawing, one))
                layers.push_back(layer);
        }
}
