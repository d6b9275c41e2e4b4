#include "Zelvan/Verbs/ZvRecordState.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvTableTable.h"

ZvRecordKey ZvRecordKey::Of(const ZvTableRecord& record) {
    return {record.GetFullCode(), record.GetId()};
}

ZvTable* ZvRecordKey::Table(const ZvDrawing& drawing) const {
    return drawing.TableTable() ? drawing.TableTable()->GetByFullCode(tableCode) : nullptr;
}

ZvTableRecord* ZvRecordKey::Find(const ZvDrawing& drawing) const {
    const ZvTable* table = Table(drawing);
    return table && id ? table->GetById(id) : nullptr;
}

ZvLayer* ZvRecordKey::FindLayer(const ZvDrawing& drawing) const {
    return dynamic_cast<ZvLayer*>(Find(drawing));
}

ZvRecordState::ZvRecordState(const ZvTableRecord& record)
    : m_name(record.GetName()), m_flags(record.GetRecordFlags()), m_fields(record.FieldBytes()) {}

bool ZvRecordState::Restore(ZvTableRecord& record) const {
    const bool named = record.SetName(m_name);
    record.SetErased(m_flags & ZvTableRecord::kErased);
    record.SetInternal(m_flags & ZvTableRecord::kInternal);
    record.SetHidden(m_flags & ZvTableRecord::kHidden);
    record.ChangeXRef(m_flags & ZvTableRecord::kXRef);
    if (record.FieldBytes() != m_fields) {
        record.TakeFieldBytes(m_fields);
        record.NotifyVisState();
    }
    return named;
}
