#include "Zelvan/Verbs/ZvVRecordNew.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"

ZvVRecordNew::ZvVRecordNew(ZvTable& table, std::unique_ptr<ZvTableRecord> record)
    : ZvVerb(table.GetParent()), m_key{table.GetFullCode(), 0}, m_record(std::move(record)) {}

ZvVRecordNew::ZvVRecordNew(ZvTable& table, const XStringW& name) : ZvVRecordNew(table, table.NewRecord()) {
    m_record->SetNameFinal(name);
}

ZvVRecordNew::~ZvVRecordNew() = default;

ZvTableRecord* ZvVRecordNew::Record() const {
    return m_record ? m_record.get() : Drawing() ? m_key.Find(*Drawing()) : nullptr;
}

void ZvVRecordNew::Do() {
    ZvTable* table = m_key.Table(*Drawing());
    const XStringW name = m_record ? m_record->GetName() : XStringW();
    // A name that is taken gets a number; one that no record may have stays out.
    if (!table || !m_record || (!name.IsEmpty() && !table->GetByName(name) && !table->IsNewNameValid(name))) {
        if (m_record)
            ZvErrors::Report(ZvErrorCode::BadRecordName, name.ToUtf8());
        return Refuse(table && m_record
                          ? XStringW::Format(ZvStrings::Get(ZvStr::RefusedRecordName), name.ToUtf8().c_str())
                          : ZvStrings::GetW(ZvStr::RefusedRecord));
    }
    m_before = table->GetCounters();
    m_formerCurrent = table->GetCurrent() ? table->GetCurrent()->GetId() : 0;
    const ZvTableRecord* record = m_record.get();
    if (!Zv::Ok(table->Insert(std::move(m_record))))
        return Refuse(ZvStrings::GetW(ZvStr::RefusedRecord));
    m_key.id = record->GetId();
    AddLayerUsed(m_key.FindLayer(*Drawing()));
    m_after = table->GetCounters();
}

void ZvVRecordNew::Undo() {
    ZvTableRecord* record = m_key.Find(*Drawing());
    if (IsRefused() || !record)
        return;
    ZvTable& table = *record->GetTable();
    const bool wasCurrent = table.GetCurrent() == record;
    m_record = table.Withdraw(*record, m_before);
    m_flagged = !m_record;
    if (m_flagged)
        record->SetErased(true);
    if (wasCurrent)
        table.SetCurrent(m_formerCurrent ? table.GetById(m_formerCurrent) : table.FindNewCurrent(record));
}

bool ZvVRecordNew::Redo() {
    if (IsRefused())
        return true;
    ZvTable* table = m_key.Table(*Drawing());
    if (!m_flagged)
        return table && table->Reinstate(m_record, m_key.id, m_after);
    ZvTableRecord* record = m_key.Find(*Drawing());
    if (record)
        record->SetErased(false);
    return record != nullptr;
}

/// Entities of a layer that was undone may still have names: they are given back while the table is known.
void ZvVRecordNew::FlushNeverDone() {
    if (!m_record)
        return;
    m_record->DropContents();
    m_record->OnRemoving();
    m_record.reset();
}

XStringW ZvVRecordNew::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbRecordNew);
}

size_t ZvVRecordNew::MemUsage() const {
    return ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + (m_record ? m_record->MemUsage() : 0);
}
