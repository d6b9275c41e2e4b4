#pragma once
#include "Zelvan/Tables/ZvTable.h"
#include "ZvCore/Api.h"
#include "ZvCore/Status.h"
#include "ZvCore/dvect.h"
#include <vector>

class ZvDrawing;
class ZvMergeProfile;
class ZvNativeDesc;
class ZvNativeFile;

/// The tables of one drawing in their order of registration, and the tables section of its file. Does not own the tables.
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
    void Clear() { m_tables.clear(); }
    /// Tables whose records have uses to count: all but data, programs, views and selection volumes.
    std::vector<ZvTable*> TablesWithUsageCount() const;

    /// Brings copies of the records that `usage` names from another drawing's tables into this one's, by the profile; what they
    /// refer to comes along. `desc` takes the index map (source index → this drawing's).
    Zv::Status CopyRecords(const ZvTableTable& from, const ZvUsageTable& usage, const ZvMergeProfile& profile,
                           ZvNativeDesc& desc);

    // --- the tables section: 1 on success -------------------------------------------------------------------------------------
    Zv::Status NativeOut(ZvNativeDesc& desc);
    /// Without a merge profile in the file's options, the drawing's own tables are emptied first and take the file's records
    /// as they are. A damaged record or block costs itself.
    Zv::Status NativeIn(ZvNativeDesc& desc);
    /// Whether the table goes into the save: it has records to write or fields of its own.
    bool MustWriteTable(const ZvTable& table, const ZvNativeDesc& desc) const;

    struct Entry {
        uint32_t fullCode = 0;
        uint32_t count = 0; ///< records in the file
        uint64_t start = 0; ///< position of the table's frame
        uint64_t end = 0;
        uint64_t contents = 0; ///< position of the contents of its records
    };
    /// Sorts so that tables come before those that refer to them, whatever their order in the file.
    static void ForceTableReadOrders(std::vector<Entry>& entries);
    /// Gives `child` (the descriptor of a layout's drawing) the index maps of the tables that the layout borrows.
    void CloneProxiedIndexMaps(const ZvNativeDesc& parent, ZvNativeDesc& child) const;

private:
    bool WriteTableTable(ZvNativeDesc& desc, const std::vector<ZvTable*>& tables) const;
    bool ReadTableTable(ZvNativeDesc& desc, uint32_t& count) const;
    bool ReadTable(ZvNativeDesc& desc, Entry& entry);
    bool ReadProxiedTable(ZvNativeDesc& desc, const Entry& entry);
    bool WriteContents(ZvNativeDesc& desc, const ZvTable& table) const;
    bool ReadContents(ZvNativeDesc& desc, const Entry& entry);
    Zv::Status CopyRecordsInternal(const ZvTable& from, ZvTable& to, const ZvUsageTable& usage,
                                   const ZvMergeProfile& profile, ZvNativeDesc& desc);

    struct Unknown {
        uint32_t fullCode;
        std::vector<uint8_t> bytes;
    };
    ZvDrawing& m_drawing;
    pvect<ZvTable*> m_tables;
    std::vector<Unknown> m_unknown; // tables of plug-ins that are not here, written back
};
