#pragma once
#include "Zelvan/Tables/ZvTable.h"
#include "ZvCore/Api.h"
#include "ZvCore/Status.h"
#include "ZvCore/dvect.h"
#include <unordered_map>
#include <vector>

class ZvDrawing;
class ZvNameIntake;
class ZvNativeDesc;

/// The tables of one drawing in their order of registration, and the tables section of its file
/// (Docs/native-format.md). Does not own the tables.
class ZV_API ZvTableTable {
public:
    explicit ZvTableTable(ZvDrawing& drawing) : m_drawing(drawing) {}

    /// A null table or one whose full code is registered already is refused.
    Zv::Status Insert(ZvTable* table);
    int Count() const { return int(m_tables.size()); }
    ZvTable* Get(int index) const {
        return index >= 0 && index < Count() ? m_tables[size_t(index)] : nullptr;
    }
    /// A table of the built-in client.
    ZvTable* Get(ZvTableCode::Code code) const { return GetByFullCode(ZvTableCode::Full(code)); }
    /// Null for a table that is not registered here (a borrowed one is not).
    ZvTable* GetByFullCode(uint32_t fullCode) const;
    bool HasTable(uint32_t fullCode) const { return GetByFullCode(fullCode) != nullptr; }
    void Clear();
    /// Tables whose records have uses to count.
    std::vector<ZvTable*> TablesWithUsageCount() const;

    /// Brings copies of the records that `usage` names from another drawing's tables into this one's, by the
    /// profile; the records that those refer to come along. Blocks come with their entities, layouts with
    /// their drawings, layers without entities. `desc` takes the index maps (index there → index here).
    Zv::Status CopyRecords(const ZvTableTable& from, const ZvUsageTable& usage, const ZvMergeProfile& profile,
                           ZvNativeDesc& desc);

    // --- the tables section --------------------------------------------------------------------------------
    Zv::Status NativeOut(ZvNativeDesc& desc);
    /// Without a merge profile in the file's options the drawing is emptied first and takes the file's
    /// records as they are. What is damaged costs itself, is told in the file's errors, and the rest is read.
    Zv::Status NativeIn(ZvNativeDesc& desc);
    /// Whether the table goes into the save: it has or had records. A save of a selection takes tables whose
    /// records are used by entities, coordinate systems and data.
    bool MustWriteTable(const ZvTable& table, const ZvNativeDesc& desc) const;

    /// A table in the file.
    struct Entry {
        uint32_t fullCode = 0;
        uint32_t count = 0; ///< records, as stated
        uint64_t start = 0; ///< position of the frame
        uint64_t end = 0;
        uint64_t contents = 0; ///< position of the contents of its records; `end` when there are none
        ZvTable* table = nullptr;
        bool proxied = false;                        ///< the drawing borrows the table
        std::unordered_map<int, ZvMergeResult> read; ///< by index in the file
    };
    /// Sorts so that tables come before those that refer to them, whatever their order in the file.
    static void ForceTableReadOrders(std::vector<Entry>& entries);
    /// Gives `to` (the descriptor of a layout's drawing) the index maps of the tables that a layout borrows.
    static void CloneProxiedIndexMaps(const ZvNativeDesc& from, ZvNativeDesc& to);

private:
    Zv::Status CopyRecordsInternal(const ZvTable& from, ZvTable& to, const ZvUsageTable& usage,
                                   const ZvMergeProfile& profile, ZvNativeDesc& desc,
                                   std::vector<ZvTableRecord*>& made) const;
    ZvTable* TargetOf(uint32_t fullCode, bool& proxied) const;

    bool WriteTableTable(ZvNativeDesc& desc, size_t tables) const;
    bool WriteTable(ZvNativeDesc& desc, const ZvTable& table) const;
    bool WriteContents(ZvNativeDesc& desc, const ZvTable& table) const;

    bool ReadTableTable(ZvNativeDesc& desc, uint32_t& tables) const;
    void EmptyForLoading(uint64_t statedEntities) const;
    bool ReadFrame(ZvNativeDesc& desc, Entry& entry) const;
    bool ReadRecords(ZvNativeDesc& desc, Entry& entry, const ZvMergeProfile* profile);
    bool ReadProxiedTable(ZvNativeDesc& desc, Entry& entry) const;
    void KeepUnknown(ZvNativeDesc& desc, const Entry& entry);
    bool ReadContents(ZvNativeDesc& desc, Entry& entry, const ZvMergeProfile* profile,
                      ZvNameIntake& names) const;
    bool ReadOneContents(ZvNativeDesc& desc, Entry& entry, const ZvMergeProfile* profile,
                         ZvNameIntake& names) const;
    void FinishReading(ZvNativeDesc& desc, bool merging) const;

    struct Unknown {
        uint32_t fullCode;
        std::vector<uint8_t> frame;
    };
    ZvDrawing& m_drawing;
    pvect<ZvTable*> m_tables;
    std::vector<Unknown> m_unknown; // tables of plug-ins that are not here, written back
};
