#pragma once
#include "Zelvan/Tables/ZvTableMerge.h"
#include "Zelvan/Tables/ZvTableRecord.h"
#include "ZvCore/Api.h"
#include "ZvCore/Status.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <unordered_map>
#include <vector>

class ZvNativeDesc;
class ZvTable;

/// What watchers of a table hear. The index is that of the record concerned, -1 when the event concerns the
/// whole table.
enum class ZvTableEvent : int {
    Inserted = 1,
    Deleted = 2, ///< after the removal, with the index that the record had
    Renamed = 3,
    Purged = 4,
    Changed = 5,        ///< content or flags; with index -1: something happened while events were suspended
    CurrentChanged = 6, ///< index of the new current record, -1 for none
    ReIndexed = 7,      ///< records moved to other indices
};

class ZV_API IZvTableWatcher {
public:
    virtual ~IZvTableWatcher() = default;
    virtual void OnTableEvent(ZvTable& table, ZvTableEvent event, int index) = 0;
};

/// A table of records of one kind. Records keep the order of insertion; the index of a record is its
/// position. Names are unique without regard to case, ids and guids are unique, ids are never used again.
///
/// Entities refer to records by index. Deleting a record therefore moves the later ones up and hands the old
/// → new map to the drawing, which corrects every entity and record that holds an index (see DeleteRecord).
class ZV_API ZvTable {
public:
    explicit ZvTable(ZvDrawing* parent) : m_parent(parent) {}
    virtual ~ZvTable();
    ZvTable(const ZvTable&) = delete;
    ZvTable& operator=(const ZvTable&) = delete;

    virtual uint16_t GetClientCode() const { return ZvTableCode::kBuiltInClient; }
    virtual uint16_t GetTableCode() const = 0;
    uint32_t GetFullCode() const { return ZvTableCode::Full(GetTableCode(), GetClientCode()); }
    /// "Record" for the generic table.
    virtual XStringW DefaultNameBase() const;
    /// An empty record of the table's kind, not inserted.
    virtual std::unique_ptr<ZvTableRecord> NewRecord() const = 0;
    /// Makes the records that every drawing has where they are missing. Does nothing when all are there.
    virtual void CreateDefaults() {}

    ZvDrawing* GetParent() const { return m_parent; }
    void SetParent(ZvDrawing* parent) { m_parent = parent; }

    // --- inserting -----------------------------------------------------------------------------------------
    /// Takes the record only on success; a refused one stays with the caller (when it is held by its base's
    /// pointer).
    Zv::Status Insert(std::unique_ptr<ZvTableRecord>&& record);
    /// A new record under that name, or under an automatic one; null when it was refused.
    ZvTableRecord* InsertNew(const XStringW& name = {});
    /// A hidden, erased record that only keeps an index occupied.
    ZvTableRecord* InsertDummy();
    void SetAutoNaming(bool allow) { m_autoName = allow; }
    void SetAutoRenaming(bool allow) { m_autoRename = allow; }
    bool IsAutoNaming() const { return m_autoName; }
    bool IsAutoRenaming() const { return m_autoRename; }

    // --- finding: null or -1 when there is none ------------------------------------------------------------
    int Count() const { return int(m_records.size()); }
    bool IsValidIndex(int index) const { return index >= 0 && index < Count(); }
    /// As IsValidIndex, and reports an invalid index.
    bool CheckIndex(int index) const;
    ZvTableRecord* Get(int index) const {
        return IsValidIndex(index) ? m_records[size_t(index)].get() : nullptr;
    }
    ZvTableRecord* GetByIndex(int index) const { return Get(index); }
    ZvTableRecord* GetByName(const XStringW& name) const;
    ZvTableRecord* GetById(uint32_t id) const;
    ZvTableRecord* GetByGuid(const Guid& guid) const;
    int IndexOf(const ZvTableRecord* record) const;
    int IndexOf(const XStringW& name) const;
    /// 0 for none.
    uint32_t IdOf(const XStringW& name) const;
    uint32_t IdOf(int index) const;
    /// The zero guid for none.
    Guid GuidOf(int index) const;
    bool IsRecordInTable(const ZvTableRecord* record) const;
    ZvTableRecord* LastInserted() const { return m_lastInserted; }

    // --- names ---------------------------------------------------------------------------------------------
    /// A name that a user may give to a new record of this table.
    virtual bool IsNewNameValid(const XStringW& name) const;
    /// Makes a name that is free in the table; `record` and `useGuid` as in the contract of automatic names:
    /// with useGuid the record's guid text when that guid is free, else `base` (empty: DefaultNameBase and
    /// "1") with a number as needed.
    bool GetDefaultName(XStringW& out, const XStringW& base, const ZvTableRecord* record = nullptr,
                        bool useGuid = false);
    /// Gives the record a default name from its own; false when none could be found.
    bool AssignDefaultName(ZvTableRecord& record, const XStringW& base = {}, bool useGuid = false);
    /// Order of records in lists: names without regard to case, runs of digits by value.
    static bool NameCompareFunc(const ZvTableRecord* a, const ZvTableRecord* b);
    /// Names or ids that the table does not know are left out.
    void NameSetToIdSet(const std::set<XStringW>& names, std::set<uint32_t>& ids) const;
    void IdSetToNameSet(const std::set<uint32_t>& ids, std::set<XStringW>& names) const;
    void RegenNameMap();
    bool ChildChangeName(ZvTableRecord& record, const XStringW& name);
    bool ChildChangeGuid(ZvTableRecord& record, const Guid& guid);

    // --- what users choose from: neither internal, hidden nor erased ---------------------------------------
    int CountUserEnum() const;
    /// The n-th in table order, null past the end.
    ZvTableRecord* GetUserEnum(int n) const;
    /// Sorted by NameCompareFunc.
    std::vector<ZvTableRecord*> GetUserEnumList() const;

    // --- current record ------------------------------------------------------------------------------------
    ZvTableRecord* GetCurrent() const { return m_current; }
    /// A record of another table is refused; null clears.
    bool SetCurrent(ZvTableRecord* record);
    /// Keeps a current record that users can choose, else makes the first such record current. Null when
    /// there is none.
    ZvTableRecord* SetAnyCurrent();
    /// The record to make current when `leaving` goes.
    virtual ZvTableRecord* FindNewCurrent(const ZvTableRecord* leaving) const;

    // --- deleting ------------------------------------------------------------------------------------------
    /// Destroys the record; later records move up one index and the drawing corrects all who hold indices:
    /// references to the deleted record become "none" of their kind (continuous line, empty brush, default
    /// style, no block). Where indices are held, undo information goes, since verbs keep copies with the former
    /// ones. False when there is no such record or when the table cannot do without it.
    bool DeleteRecord(int index);
    bool DeleteRecord(const XStringW& name);
    bool DeleteRecord(ZvTableRecord* record);
    /// All at once, with one correction of indices. Returns how many were deleted.
    int DeleteRecords(std::span<ZvTableRecord* const> records);
    virtual bool MayDelete(const ZvTableRecord& record) const;
    /// Deletes the records that the last usage pass found without use (never internal, hidden or current
    /// ones).
    int EraseUnused();
    int DeleteErased();
    /// Destroys all records.
    void Purge();
    /// Gives every record its position as its index; returns the map old → new when any moved.
    std::unordered_map<int, int> ReIndex();
    /// Whether entities or records of other tables hold indices into this one.
    virtual bool IsHeldByIndex() const { return false; }
    /// Whether uses of the records are counted, so that those without any can be purged.
    virtual bool HasUsageCounts() const { return IsHeldByIndex(); }

    // --- undoing an insertion -------------------------------------------------------------------------------
    /// What insertions count up.
    struct Counters {
        uint32_t nextId = 0;
        int64_t lastAutoNumber = 0;
    };
    Counters GetCounters() const { return {m_nextId, m_lastAutoNumber}; }
    /// Takes the last record out as if it had never been inserted; `before`: the counters at that time. The record stays
    /// lent to the table, so that what it owns keeps its drawing. Null when other records came after it.
    std::unique_ptr<ZvTableRecord> Withdraw(ZvTableRecord& record, const Counters& before);
    /// Puts a withdrawn record back under its id; `after`: the counters after its insertion. False, and the record stays
    /// with the caller, when its name, id or guid has been taken.
    bool Reinstate(std::unique_ptr<ZvTableRecord>& record, uint32_t id, const Counters& after);

    // --- usage and references ------------------------------------------------------------------------------
    /// References to records of other tables, from this table's records.
    virtual void ExternalTableUsage(ZvUsageTable& usage) const;
    /// Takes the counts of this table's records from a pass over the drawing.
    void TakeUsage(const ZvUsageTable& usage);
    /// Has all records translate their indices.
    virtual void TableUpdate(ZvNativeDesc& desc);

    // --- modification and events ---------------------------------------------------------------------------
    uint64_t GetAccumModStamp() const { return m_modStamp; }
    void IncModified() { ++m_modStamp; }
    void ChildIncModStamp(const ZvTableRecord& record);
    bool IsModified() const { return m_modified; }
    void SetModified(bool on) { m_modified = on; }
    void AddWatcher(IZvTableWatcher* watcher);
    void RemoveWatcher(IZvTableWatcher* watcher);
    void TellWatchers(ZvTableEvent event, int index);
    void SuspendEventsOut() { ++m_eventsSuspended; }
    /// At the last resume, one Changed with index -1 stands for all that was not told.
    void ResumeEventsOut();

    // --- merging -------------------------------------------------------------------------------------------
    /// Brings a record of another drawing in, by its fate.
    ZvMergeResult Merge(std::unique_ptr<ZvTableRecord> incoming, const ZvMergeProfile& profile);
    /// Fate before any conflict is looked at: Skip for tables that the profile leaves out, else Insert.
    virtual ZvMergeFate DecidePreFate(const ZvTableRecord& incoming, const ZvMergeProfile& profile) const;
    virtual ZvMergeFate DecideGuidConflictFate(const ZvTableRecord& incoming, const ZvTableRecord& existing,
                                               const ZvMergeProfile& profile) const;
    virtual ZvMergeFate DecideNameConflictFate(const ZvTableRecord& incoming, const ZvTableRecord& existing,
                                               const ZvMergeProfile& profile) const;
    void AddCustomMergeHandler(IZvMergeHandler* handler);
    void ClearMergeHandlers() { m_mergeHandlers.clear(); }
    void NotifyMergeHandlersOfRead(int fileIndex, ZvTableRecord* result);

    // --- files: false on success, true on failure ----------------------------------------------------------
    /// Table head and records (not their contents, see ZvTableTable).
    bool NativeOut(ZvNativeDesc& desc) const;
    /// Before the first record is written: brings stored data up to date.
    virtual void NativeOutPreFix(ZvNativeDesc& desc);
    /// `end`: position where the records end. `profile` null: the table was emptied and takes the file's
    /// records as they are. A record or block that cannot be read costs itself; `read` tells what became of
    /// each record.
    struct Read {
        int fileIndex = -1;
        ZvMergeResult result;
    };
    bool NativeIn(ZvNativeDesc& desc, uint64_t end, const ZvMergeProfile* profile, std::vector<Read>& read);
    /// After all tables of the drawing were read.
    virtual void NativeInPostFix(ZvNativeDesc& desc);
    /// Whether `record` goes into the save that `desc` describes.
    virtual bool MustWriteRecord(const ZvTableRecord& record, const ZvNativeDesc& desc) const;
    std::vector<const ZvTableRecord*> SavedRecords(const ZvNativeDesc& desc) const;
    /// Ids were given to records, or the table has fields that are not the default.
    virtual bool HasHistory() const { return m_nextId != 0; }
    /// Merges the records of this table's kind from a native file. Errors are reported with the file's name.
    Zv::Status LoadFromFile(const std::string& path, const ZvMergeProfile& profile = {});
    /// Whether preparing for a save changes records (undo information of drawings is then purged first).
    virtual bool SavingChanges() const { return false; }
    /// `folder` (UTF-8): where relative paths begin, that of the drawing's file.
    virtual void PrepareSave(const std::string& folder = {}) { (void)folder; }
    virtual size_t MemUsage() const;

protected:
    /// Fields of the table itself, after those of ZvTable.
    virtual void TableFields(ZvRecordFields&) {}
    /// Post-insert hook.
    virtual void OnRecordInserted(ZvTableRecord&) {}
    virtual void OnRecordsDeleted() {}
    /// All records are gone; what the table itself holds must go, too.
    virtual void OnPurged() {}
    const std::vector<std::unique_ptr<ZvTableRecord>>& Records() const { return m_records; }

private:
    friend class ZvTableRecord;
    bool RefuseInsert(const ZvTableRecord* record) const;
    bool NameForInsertion(ZvTableRecord& record);
    bool GuidForInsertion(ZvTableRecord& record);
    ZvTableRecord* Register(std::unique_ptr<ZvTableRecord> record, uint32_t id);
    void Unregister(ZvTableRecord& record);
    bool IsFreeName(const XStringW& name) const;
    bool FindFreeName(XStringW& out, const XStringW& base);
    void CorrectHolders(const std::unordered_map<int, int>& newIndices);
    ZvMergeFate DecideFate(const ZvTableRecord& incoming, ZvTableRecord*& existing,
                           const ZvMergeProfile& profile);
    std::vector<uint8_t> HeadBytes() const;
    void TakeHead(std::span<const uint8_t> bytes, bool merging);
    ZvMergeResult TakeStored(std::unique_ptr<ZvTableRecord> record);
    bool ReadGroup(ZvNativeDesc& desc, const ZvMergeProfile* profile, std::vector<Read>& read);

    ZvDrawing* m_parent;
    std::vector<std::unique_ptr<ZvTableRecord>> m_records;
    std::unordered_map<XStringW, ZvTableRecord*> m_byName;
    std::unordered_map<uint32_t, ZvTableRecord*> m_byId;
    std::unordered_map<Guid, ZvTableRecord*> m_byGuid;
    std::vector<IZvTableWatcher*> m_watchers;
    std::vector<IZvMergeHandler*> m_mergeHandlers;
    ZvTableRecord* m_lastInserted = nullptr;
    ZvTableRecord* m_current = nullptr;
    uint64_t m_modStamp = 0;
    uint64_t m_random = 0x9E3779B97F4A7C15;
    int64_t m_lastAutoNumber = 0;
    uint32_t m_currentId = 0; // of the file, until its record was read
    uint32_t m_nextId = 0;
    int m_eventsSuspended = 0;
    bool m_eventsMissed = false;
    bool m_modified = false;
    bool m_autoName = true;
    bool m_autoRename = true;
    std::vector<uint8_t> m_unknownTail;
};

/// A table whose records are all of class Rec: the finders answer that class.
template <class Rec, ZvTableCode::Code tableCode>
class ZvTableOf : public ZvTable {
public:
    static constexpr ZvTableCode::Code kCode = tableCode;
    using Record = Rec;
    using ZvTable::ZvTable;

    uint16_t GetTableCode() const override { return tableCode; }
    std::unique_ptr<ZvTableRecord> NewRecord() const override { return std::make_unique<Rec>(); }

    Rec* Get(int index) const { return static_cast<Rec*>(ZvTable::Get(index)); }
    Rec* GetByIndex(int index) const { return Get(index); }
    Rec* GetByName(const XStringW& name) const { return static_cast<Rec*>(ZvTable::GetByName(name)); }
    Rec* GetById(uint32_t id) const { return static_cast<Rec*>(ZvTable::GetById(id)); }
    Rec* GetByGuid(const Guid& guid) const { return static_cast<Rec*>(ZvTable::GetByGuid(guid)); }
    Rec* GetCurrent() const { return static_cast<Rec*>(ZvTable::GetCurrent()); }
    Rec* GetUserEnum(int n) const { return static_cast<Rec*>(ZvTable::GetUserEnum(n)); }
    Rec* LastInserted() const { return static_cast<Rec*>(ZvTable::LastInserted()); }
    Rec* InsertNew(const XStringW& name = {}) { return static_cast<Rec*>(ZvTable::InsertNew(name)); }
};
