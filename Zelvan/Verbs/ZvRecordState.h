#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <cstddef>
#include <cstdint>
#include <vector>

class ZvDrawing;
class ZvLayer;
class ZvTable;
class ZvTableRecord;

/// Which record of which table: both by number, so that neither need be there.
struct ZV_API ZvRecordKey {
    uint32_t tableCode = 0; ///< full code
    uint32_t id = 0;

    static ZvRecordKey Of(const ZvTableRecord& record);
    /// Null when there is no such table or record.
    ZvTable* Table(const ZvDrawing& drawing) const;
    ZvTableRecord* Find(const ZvDrawing& drawing) const;
    /// Null for records of other tables.
    ZvLayer* FindLayer(const ZvDrawing& drawing) const;
};

/// Name, flags and fields of a record as they were, the fields in the form of files. What the record owns (entities, a
/// drawing) is not part of it.
class ZV_API ZvRecordState {
public:
    ZvRecordState() = default;
    explicit ZvRecordState(const ZvTableRecord& record);
    /// A name that another record has taken meanwhile stays away: false, the rest is restored.
    bool Restore(ZvTableRecord& record) const;
    size_t MemUsage() const { return m_fields.capacity() + m_name.Length() * 2; }
    friend bool operator==(const ZvRecordState&, const ZvRecordState&) = default;

private:
    XStringW m_name;
    uint16_t m_flags = 0;
    std::vector<uint8_t> m_fields;
};
