#pragma once
#include "Zelvan/ZvNativeHeader.h"
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// What a search through a damaged file found, as bytes: entity records, table records, and which belong together.
namespace ZvSalvaged {

using Bytes = std::vector<uint8_t>;

/// Above it an index cannot be a record's.
inline constexpr int32_t kMostIndex = 1 << 24;

/// Records one behind the other.
struct Records {
    uint64_t count = 0;
    Bytes bytes;
    bool doubtful = false;
};

struct Section;

/// What a layer, a block or a layout owns.
struct Contents {
    int32_t index = -1;  ///< of its record in the file; -1 when that is lost
    uint64_t stated = 0; ///< objects by its head
    uint32_t blocks = 0; ///< with lists, by its head
    std::vector<Records> lists;
    std::vector<Bytes> attributes;    ///< contents of the attribute blocks, that of the fields first
    uint32_t attributeFrames = 0;     ///< by their head
    bool attributesTold = false;      ///< whether there are any is known
    std::unique_ptr<Section> section; ///< of a layout's drawing
    /// Lies between the contents of other records without a head of its own: it may be told whose it is.
    bool Headless() const { return index < 0 && !section; }
    std::string substitute; ///< the name given when its own is lost
};

struct Table {
    uint32_t code = 0;
    Bytes fields;             ///< the table's own
    uint32_t stated = 0;      ///< records by its frame; 0 when that is lost
    bool ownsNothing = false; ///< by its frame
    std::vector<Records> groups;
    std::vector<std::unique_ptr<Contents>> contents;
    Bytes unknownFrame; ///< of a table that the engine does not have: all of it
};

struct Section {
    std::vector<std::unique_ptr<Table>> tables;
    uint64_t stated = 0; ///< objects, layouts without; 0 when its head is lost
    uint32_t statedTables = 0;
    uint64_t highestName = 0; ///< of the objects that are surely its own
    Table& Get(uint32_t code);
    Table* Find(uint32_t code) const;
};

struct File {
    ZvNativeHeader header;
    Bytes settings, clients;
    uint64_t records =
        0; ///< of objects, those inside of others included, by the clients; 0 when these are lost
    Section section;
};

/// What stands in front of the fields of every record of a table.
struct RecordHead {
    int32_t index = -1;
    uint32_t id = 0;
    std::string name;
    size_t size = 0; ///< where the fields begin
};
/// False when the bytes cannot be a record's.
bool ParseRecord(const uint8_t* record, size_t length, RecordHead& head);
/// The number of records that stand one behind the other from the start on, and the bytes that they take.
Records RecordsOfGroup(const Bytes& bytes);
/// Behind those that chain from the start, the records that have exactly the fields of that table's.
void AddFurtherRecords(Records& group, const Bytes& bytes, uint32_t tableCode);
/// Whether the content of an attribute block names fields; else it holds rows.
bool IsAttributeFields(const Bytes& content);
/// Whether every record of the group has exactly the fields of that table's records.
bool BelongsTo(uint32_t tableCode, const Records& group);
/// Calls `each` with the bytes of every record of a group, or of a table.
template <class F>
void ForEachRecord(const Records& group, F&& each);
template <class F>
void ForEachRecord(const Table& table, F&& each);
/// Nothing of the tables counts as erased. Contents whose head is lost, or says what cannot be, get the record that the order of records leaves for them.
void AssignHeadless(Section& section);
/// A name that may be damaged gives way to the same name of an object that is sound.
void SettleNames(Section& section);
/// Records for contents whose record is lost, under names of their own.
void NameTheNameless(Section& section);
/// A sound file, stored, that holds what was found.
Bytes Assemble(const File& found);

template <class F>
void ForEachRecord(const Records& group, F&& each) {
    for (size_t at = 0; at + 8 <= group.bytes.size();) {
        uint64_t length = 0;
        for (int i = 0; i < 8; ++i)
            length |= uint64_t(group.bytes[at + size_t(i)]) << (8 * i);
        if (length < 8 || length > group.bytes.size() - at)
            break;
        each(group.bytes.data() + at, size_t(length));
        at += size_t(length);
    }
}

template <class F>
void ForEachRecord(const Table& table, F&& each) {
    for (const Records& group : table.groups)
        ForEachRecord(group, each);
}

} // namespace ZvSalvaged
