#pragma once
#include "Zelvan/Tables/ZvTableCodes.h"
#include "ZvCore/Api.h"
#include <cstdint>
#include <map>

class ZvTable;
class ZvTableRecord;

/// What becomes of a record that comes from another drawing.
enum class ZvMergeFate {
    Insert,      ///< becomes a record of the table; the normal fate of one that clashes with nothing
    Rename,      ///< becomes a record under a name (and guid) made for it
    UseExisting, ///< is dropped; what refers to it refers to the existing one
    Replace,     ///< the existing record takes over its content
    Skip,        ///< is dropped; what refers to it refers to nothing
};

/// What became of one record: the drawing's record that stands for it (null: none), and whether it was made
/// or filled by this.
struct ZvMergeResult {
    ZvTableRecord* record = nullptr;
    ZvMergeFate fate = ZvMergeFate::Skip;
    bool TakesContents() const {
        return record && fate != ZvMergeFate::UseExisting && fate != ZvMergeFate::Skip;
    }
};

/// How a merge treats clashes: for all tables, and differently for single ones.
class ZV_API ZvMergeProfile {
public:
    struct Rule {
        ZvMergeFate guidConflict = ZvMergeFate::UseExisting;
        ZvMergeFate nameConflict = ZvMergeFate::UseExisting;
        /// false: no record of the table is merged.
        bool takeTable = true;
    };
    Rule general;
    /// By full table code.
    std::map<uint32_t, Rule> perTable;
    const Rule& For(uint32_t fullCode) const {
        const auto found = perTable.find(fullCode);
        return found == perTable.end() ? general : found->second;
    }
    /// Also take the entities of layers and layouts (block contents come with their blocks).
    bool takeEntities = true;
};

/// Decides single records of a merge before the profile does, and is told of each record that was read.
class ZV_API IZvMergeHandler {
public:
    virtual ~IZvMergeHandler() = default;
    /// `existing`: the record in conflict, or null. `fate` comes in as the profile's; true when changed.
    virtual bool DecideFate(ZvTable& table, const ZvTableRecord& incoming, const ZvTableRecord* existing,
                            ZvMergeFate& fate) = 0;
    /// `result`: the drawing's record that stands for the one read, or null when it was skipped.
    virtual void OnRecordRead(ZvTable& table, int fileIndex, ZvTableRecord* result) = 0;
};
