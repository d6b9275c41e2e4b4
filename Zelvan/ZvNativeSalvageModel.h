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

/// Records one behind the other.
struct Records {
    uint64_t count = 0;
    Bytes bytes;
    bool doubtful = false;
};

struct Section;

/// What a layer, a block or a layout owns.
struct Contents {
    int32_t index = -1; ///< of its record in the file; -1 when that is lost
    uint64_t stated = 0;
    std::vector<Records> lists;
    std::vector<Bytes> attributes;    ///< contents of the attribute blocks, that of the fields first
    std::unique_ptr<Section> section; ///< of a layout's drawing
    std::string substitute;           ///< the name given when its own is lost
};

struct Table {
    uint32_t code = 0;
    Bytes fields; ///< the table's own
    std::vector<Records> groups;
    std::vector<std::unique_ptr<Contents>> contents;
    Bytes unknownFrame; ///< of a table that the engine does not have: all of it
};

struct Section {
    std::vector<std::unique_ptr<Table>> tables;
    Table& Get(uint32_t code);
    Table* Find(uint32_t code);
};

struct File {
    ZvNativeHeader header;
    Bytes settings, clients;
    Section section;
};

/// Index and name of a table's record; false when its head is no record's.
bool ParseRecord(const uint8_t* record, size_t length, int32_t& index, uint32_t& id, std::string& name);
/// Calls `each` with the bytes of every record of a table.
template <class F>
void ForEachRecord(const Table& table, F&& each);
/// Records for contents whose record is lost, under names of their own.
void NameTheNameless(Section& section);
/// A sound file, stored, that holds what was found.
Bytes Assemble(const File& found);

template <class F>
void ForEachRecord(const Table& table, F&& each) {
    for (const Records& group : table.groups)
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

} // namespace ZvSalvaged
