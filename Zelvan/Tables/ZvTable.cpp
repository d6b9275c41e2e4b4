#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <array>

ZvTable::~ZvTable() = default;

XStringW ZvTable::DefaultNameBase() const {
    return u"Record";
}

// --- inserting ---------------------------------------------------------------------------------------------

Zv::Status ZvTable::Insert(std::unique_ptr<ZvTableRecord>&& record) {
    if (RefuseInsert(record.get()))
        return Zv::Status::Failure;
    IncModified();
    SetModified(true);
    if (!NameForInsertion(*record) || !GuidForInsertion(*record))
        return Zv::Status::Failure;
    ZvTableRecord& inserted = *Register(std::move(record), ++m_nextId);
    m_lastInserted = &inserted;
    inserted.OnInserted();
    TellWatchers(ZvTableEvent::Inserted, inserted.GetTableIndex());
    OnRecordInserted(inserted);
    return Zv::Status::Success;
}

bool ZvTable::RefuseInsert(const ZvTableRecord* record) const {
    if (!record) {
        ZvErrors::Fatal("Null record to table.insert");
        return true;
    }
    if (record->GetFullCode() != GetFullCode())
        return true;
    if (record->GetId() != 0) {
        ZvErrors::Fatal("Record for insertion already has an Id");
        return true;
    }
    return false;
}

bool ZvTable::NameForInsertion(ZvTableRecord& record) {
    if (record.GetName().IsEmpty()) {
        if (m_autoName)
            return AssignDefaultName(record);
        ZvErrors::Fatal("Record has no name");
        return false;
    }
    if (IsFreeName(record.GetName()))
        return true;
    if (m_autoRename)
        return AssignDefaultName(record, record.GetName());
    ZvErrors::Fatal("Record with identical name already in table");
    return false;
}

bool ZvTable::GuidForInsertion(ZvTableRecord& record) {
    if (record.GetGuid().IsNull())
        record.SetGuidFinal(Guid::New());
    if (!m_byGuid.count(record.GetGuid()))
        return true;
    ZvErrors::Fatal("Record with identical GUID already in table");
    return false;
}

ZvTableRecord* ZvTable::Register(std::unique_ptr<ZvTableRecord> record, uint32_t id) {
    ZvTableRecord* raw = record.get();
    raw->SetTableId(id);
    raw->SetTable(this);
    raw->SetTableIndex(Count());
    m_byName[raw->GetNameUpCase()] = raw;
    m_byId[id] = raw;
    m_byGuid[raw->GetGuid()] = raw;
    m_records.push_back(std::move(record));
    return raw;
}

namespace {

/// Also when the record has changed its key behind the map's back, and then not the entry of another that has it.
template <class Map, class Key>
void Forget(Map& map, const Key& key, const ZvTableRecord* record) {
    const auto found = map.find(key);
    if (found != map.end() && found->second == record)
        map.erase(found);
    else
        std::erase_if(map, [record](const auto& entry) { return entry.second == record; });
}

} // namespace

void ZvTable::Unregister(ZvTableRecord& record) {
    Forget(m_byName, record.GetNameUpCase(), &record);
    Forget(m_byId, record.GetId(), &record);
    Forget(m_byGuid, record.GetGuid(), &record);
    if (m_lastInserted == &record)
        m_lastInserted = nullptr;
    record.SetTable(nullptr);
    record.SetTableIndex(-1);
    record.SetTableId(0);
}

ZvTableRecord* ZvTable::InsertNew(const XStringW& name) {
    if (!name.IsEmpty() && !ZvTableRecord::CheckRecordName(name)) {
        ZvErrors::Report(ZvErrorCode::BadRecordName, name.ToUtf8());
        return nullptr;
    }
    std::unique_ptr<ZvTableRecord> record = NewRecord();
    record->SetNameFinal(name);
    ZvTableRecord* raw = record.get();
    return Zv::Ok(Insert(std::move(record))) ? raw : nullptr;
}

ZvTableRecord* ZvTable::InsertDummy() {
    std::unique_ptr<ZvTableRecord> record = NewRecord();
    record->SetHidden(true);
    record->SetErased(true);
    ZvTableRecord* raw = record.get();
    return Zv::Ok(Insert(std::move(record))) ? raw : nullptr;
}

// --- finding -----------------------------------------------------------------------------------------------

bool ZvTable::CheckIndex(int index) const {
    if (IsValidIndex(index))
        return true;
    ZvErrors::Report(ZvErrorCode::TableIndex,
                     XStringA::Format("ZvTable.CheckIndex: index %d, %d records", index, Count()).View());
    return false;
}

ZvTableRecord* ZvTable::GetByName(const XStringW& name) const {
    const auto found = m_byName.find(name.ToUpper());
    return found == m_byName.end() ? nullptr : found->second;
}

ZvTableRecord* ZvTable::GetById(uint32_t id) const {
    const auto found = m_byId.find(id);
    return found == m_byId.end() ? nullptr : found->second;
}

ZvTableRecord* ZvTable::GetByGuid(const Guid& guid) const {
    const auto found = m_byGuid.find(guid);
    return found == m_byGuid.end() ? nullptr : found->second;
}

int ZvTable::IndexOf(const ZvTableRecord* record) const {
    return IsRecordInTable(record) ? record->GetTableIndex() : -1;
}

int ZvTable::IndexOf(const XStringW& name) const {
    return IndexOf(GetByName(name));
}

uint32_t ZvTable::IdOf(const XStringW& name) const {
    const ZvTableRecord* record = GetByName(name);
    return record ? record->GetId() : 0;
}

uint32_t ZvTable::IdOf(int index) const {
    const ZvTableRecord* record = Get(index);
    return record ? record->GetId() : 0;
}

Guid ZvTable::GuidOf(int index) const {
    const ZvTableRecord* record = Get(index);
    return record ? record->GetGuid() : Guid{};
}

bool ZvTable::IsRecordInTable(const ZvTableRecord* record) const {
    return record && record->GetTable() == this && Get(record->GetTableIndex()) == record;
}

// --- what users choose from --------------------------------------------------------------------------------

namespace {

bool IsOffered(const ZvTableRecord& record) {
    return record.IsVisibleToUser() && !record.IsErased();
}

} // namespace

int ZvTable::CountUserEnum() const {
    return int(
        std::count_if(m_records.begin(), m_records.end(), [](const auto& r) { return IsOffered(*r); }));
}

ZvTableRecord* ZvTable::GetUserEnum(int n) const {
    for (const auto& record : m_records)
        if (IsOffered(*record) && n-- == 0)
            return record.get();
    return nullptr;
}

std::vector<ZvTableRecord*> ZvTable::GetUserEnumList() const {
    std::vector<ZvTableRecord*> list;
    for (const auto& record : m_records)
        if (IsOffered(*record))
            list.push_back(record.get());
    std::sort(list.begin(), list.end(), NameCompareFunc);
    return list;
}

// --- current record ----------------------------------------------------------------------------------------

bool ZvTable::SetCurrent(ZvTableRecord* record) {
    if (record && !IsRecordInTable(record))
        return false;
    if (record == m_current)
        return true;
    m_current = record;
    IncModified();
    TellWatchers(ZvTableEvent::CurrentChanged, record ? record->GetTableIndex() : -1);
    return true;
}

ZvTableRecord* ZvTable::SetAnyCurrent() {
    if (!m_current || !IsOffered(*m_current))
        SetCurrent(FindNewCurrent(nullptr));
    return m_current;
}

ZvTableRecord* ZvTable::FindNewCurrent(const ZvTableRecord* leaving) const {
    for (const auto& record : m_records)
        if (record.get() != leaving && IsOffered(*record))
            return record.get();
    return nullptr;
}

// --- deleting ----------------------------------------------------------------------------------------------

bool ZvTable::DeleteRecord(int index) {
    return DeleteRecord(Get(index));
}

bool ZvTable::DeleteRecord(const XStringW& name) {
    return DeleteRecord(GetByName(name));
}

bool ZvTable::DeleteRecord(ZvTableRecord* record) {
    return DeleteRecords(std::span<ZvTableRecord* const>(&record, 1)) == 1;
}

bool ZvTable::MayDelete(const ZvTableRecord& record) const {
    return !record.IsInternal();
}

int ZvTable::DeleteRecords(std::span<ZvTableRecord* const> records) {
    std::set<int> doomedIndices;
    for (const ZvTableRecord* record : records)
        if (IsRecordInTable(record) && MayDelete(*record))
            doomedIndices.insert(record->GetTableIndex());
    if (doomedIndices.empty())
        return 0;

    std::vector<std::unique_ptr<ZvTableRecord>> doomed;
    for (const int index : doomedIndices) {
        m_records[size_t(index)]->OnRemoving();
        doomed.push_back(std::move(m_records[size_t(index)]));
        Unregister(*doomed.back());
    }
    m_records.erase(std::remove(m_records.begin(), m_records.end(), nullptr), m_records.end());
    std::unordered_map<int, int> newIndices = ReIndex();
    for (const int index : doomedIndices)
        newIndices[index] = -1;
    if (IsHeldByIndex())
        CorrectHolders(newIndices);

    IncModified();
    SetModified(true);
    for (const auto& record : doomed)
        if (record.get() == m_current)
            SetCurrent(FindNewCurrent(nullptr));
    for (const int index : doomedIndices)
        TellWatchers(ZvTableEvent::Deleted, index);
    OnRecordsDeleted();
    return int(doomed.size());
}

std::unordered_map<int, int> ZvTable::ReIndex() {
    std::unordered_map<int, int> moved;
    for (int i = 0; i < Count(); ++i) {
        ZvTableRecord& record = *m_records[size_t(i)];
        if (record.GetTableIndex() != i)
            moved[record.GetTableIndex()] = i;
        record.SetTableIndex(i);
    }
    if (!moved.empty())
        TellWatchers(ZvTableEvent::ReIndexed, -1);
    return moved;
}

void ZvTable::CorrectHolders(const std::unordered_map<int, int>& newIndices) {
    if (!m_parent || m_parent->Destroying())
        return;
    m_parent->Verbs()->PurgeUndo(); // verbs keep copies of entities with the former indices
    ZvNativeFile file;
    ZvNativeDesc desc(file, *m_parent);
    const uint32_t code = GetFullCode();
    const int former = Count() + int(newIndices.size()); // no index was higher
    for (int index = 0; index < former; ++index) {
        const auto found = newIndices.find(index);
        desc.SetTableIndex(code, index, found == newIndices.end() ? index : found->second);
    }
    m_parent->TableUpdate(desc);
}

int ZvTable::EraseUnused() {
    std::vector<ZvTableRecord*> unused;
    for (const auto& record : m_records)
        if (record->GetUsageCount() == 0 && record->IsVisibleToUser() && record.get() != m_current)
            unused.push_back(record.get());
    return DeleteRecords(unused);
}

int ZvTable::DeleteErased() {
    std::vector<ZvTableRecord*> erased;
    for (const auto& record : m_records)
        if (record->IsErased())
            erased.push_back(record.get());
    return DeleteRecords(erased);
}

void ZvTable::Purge() {
    m_byName.clear();
    m_byGuid.clear();
    m_byId.clear();
    m_lastInserted = nullptr;
    m_current = nullptr;
    for (const auto& record : m_records)
        record->OnRemoving();
    std::vector<std::unique_ptr<ZvTableRecord>> doomed = std::move(m_records);
    m_records.clear();
    doomed.clear();
    OnPurged();
    IncModified();
    SetModified(true);
    TellWatchers(ZvTableEvent::Purged, -1);
}

// --- undoing an insertion ----------------------------------------------------------------------------------

std::unique_ptr<ZvTableRecord> ZvTable::Withdraw(ZvTableRecord& record, const Counters& before) {
    if (!IsRecordInTable(&record) || record.GetTableIndex() != Count() - 1 || record.GetId() != m_nextId)
        return nullptr;
    const int index = record.GetTableIndex();
    if (m_current == &record)
        SetCurrent(FindNewCurrent(&record));
    std::unique_ptr<ZvTableRecord> taken = std::move(m_records.back());
    m_records.pop_back();
    Unregister(*taken);
    taken->SetTable(this);
    m_nextId = before.nextId;
    m_lastAutoNumber = before.lastAutoNumber;
    IncModified();
    SetModified(true);
    TellWatchers(ZvTableEvent::Deleted, index);
    OnRecordsDeleted();
    return taken;
}

bool ZvTable::Reinstate(std::unique_ptr<ZvTableRecord>& record, uint32_t id, const Counters& after) {
    if (!record || GetById(id) || m_byGuid.count(record->GetGuid()) || !IsFreeName(record->GetName()))
        return false;
    ZvTableRecord& back = *Register(std::move(record), id);
    m_nextId = std::max(m_nextId, after.nextId);
    m_lastAutoNumber = after.lastAutoNumber;
    IncModified();
    SetModified(true);
    TellWatchers(ZvTableEvent::Inserted, back.GetTableIndex());
    OnRecordInserted(back);
    return true;
}

// --- usage and references ----------------------------------------------------------------------------------

void ZvTable::ExternalTableUsage(ZvUsageTable& usage) const {
    for (const auto& record : m_records)
        if (!record->IsErased())
            record->TableUsage(usage);
}

void ZvTable::TakeUsage(const ZvUsageTable& usage) {
    for (const auto& record : m_records)
        record->SetUsageCount(usage.Count(GetFullCode(), record->GetTableIndex()));
}

void ZvTable::TableUpdate(ZvNativeDesc& desc) {
    for (const auto& record : m_records)
        record->TableUpdate(desc);
}

// --- modification and events -------------------------------------------------------------------------------

void ZvTable::ChildIncModStamp(const ZvTableRecord& record) {
    IncModified();
    SetModified(true);
    TellWatchers(ZvTableEvent::Changed, record.GetTableIndex());
}

void ZvTable::AddWatcher(IZvTableWatcher* watcher) {
    if (watcher && std::find(m_watchers.begin(), m_watchers.end(), watcher) == m_watchers.end())
        m_watchers.push_back(watcher);
}

void ZvTable::RemoveWatcher(IZvTableWatcher* watcher) {
    std::erase(m_watchers, watcher);
}

void ZvTable::TellWatchers(ZvTableEvent event, int index) {
    if (m_eventsSuspended > 0) {
        m_eventsMissed = true;
        return;
    }
    const std::vector<IZvTableWatcher*> watchers = m_watchers; // a watcher may remove itself or others
    for (IZvTableWatcher* watcher : watchers)
        if (std::find(m_watchers.begin(), m_watchers.end(), watcher) != m_watchers.end())
            watcher->OnTableEvent(*this, event, index);
}

void ZvTable::ResumeEventsOut() {
    if (m_eventsSuspended == 0 || --m_eventsSuspended > 0)
        return;
    if (std::exchange(m_eventsMissed, false))
        TellWatchers(ZvTableEvent::Changed, -1);
}

size_t ZvTable::MemUsage() const {
    size_t bytes = sizeof(*this);
    for (const auto& record : m_records)
        bytes += record->MemUsage() + 3 * 48; // three map entries
    return bytes;
}
