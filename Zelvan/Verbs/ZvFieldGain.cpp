#include "Zelvan/Verbs/ZvFieldGain.h"
#include "Zelvan/Tables/ZvLayer.h"
#include <algorithm>

int ZvFieldGain::FieldCount(const ZvLayer& layer) {
    return layer.AttributesOrNull() ? layer.AttributesOrNull()->FieldCount() : 0;
}

void ZvFieldGain::Note(const ZvLayer& layer, int before) {
    for (int i = before; i < FieldCount(layer); ++i) {
        const ZvAttributeTable::Field& field = layer.AttributesOrNull()->Fields()[size_t(i)];
        if (std::none_of(m_fields.begin(), m_fields.end(),
                         [&](const Gained& gained) { return gained.field == field; }))
            m_fields.push_back({field, i});
    }
}

void ZvFieldGain::BringBack(ZvLayer& layer) const {
    for (const Gained& gained : m_fields)
        layer.Attributes().InsertField(gained.index,
                                       gained.field); // one that is there already stays as it is
}

void ZvFieldGain::TakeAway(ZvLayer& layer) const {
    if (!layer.AttributesOrNull())
        return;
    ZvAttributeTable& table = layer.Attributes();
    for (auto gained = m_fields.rbegin(); gained != m_fields.rend(); ++gained)
        if (const int index = table.FindField(gained->field.name); index >= 0 && !table.HasValues(index))
            table.RemoveField(index);
}

size_t ZvFieldGain::MemUsage() const {
    size_t bytes = sizeof(*this) + m_fields.capacity() * sizeof(Gained);
    for (const Gained& gained : m_fields)
        bytes += gained.field.name.Length() * 2;
    return bytes;
}
