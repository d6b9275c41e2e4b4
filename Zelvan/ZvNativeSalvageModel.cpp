#include "Zelvan/ZvNativeSalvageModel.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeRecordKinds.h"
#include "Zelvan/ZvServer.h"
#include <algorithm>
#include <cstring>

namespace ZvSalvaged {

namespace {

constexpr int kClientsBlockVersion = 1028;         // before it the clients are no block
constexpr size_t kRecordHead = 8 + 4 + 4 + 2 + 16; // length, index, id, flags, guid

template <class T>
void Add(Bytes& to, T value) {
    const size_t at = to.size();
    to.resize(at + sizeof value);
    std::memcpy(to.data() + at, &value, sizeof value);
}

void Add(Bytes& to, const Bytes& bytes) {
    to.insert(to.end(), bytes.begin(), bytes.end());
}

template <class T>
void Patch(Bytes& bytes, size_t at, T value) {
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

void AddBlockHead(Bytes& to, uint64_t length) {
    ZvNativeBlockHead head;
    head.length = head.stored = length;
    uint8_t bytes[ZvNativeBlockHead::kSize];
    head.Store(bytes);
    to.insert(to.end(), bytes, bytes + sizeof bytes);
}

void AddBlock(Bytes& to, const Bytes& content) {
    AddBlockHead(to, content.size());
    Add(to, content);
}

void AddSection(Bytes& to, const Section& section);

void AddContents(Bytes& to, const Table& table, const Contents& contents) {
    const size_t start = to.size();
    Add(to, uint64_t(0));
    Add(to, contents.index);
    if (contents.section) {
        AddSection(to, *contents.section);
    } else if (table.code != ZvTableCode::Full(ZvTableCode::Layout)) {
        const size_t chain = to.size();
        uint64_t total = 0;
        for (const Records& list : contents.lists)
            total += list.count;
        Add(to, uint64_t(0));
        Add(to, total);
        Add(to, uint32_t(contents.lists.size()));
        for (const Records& list : contents.lists) {
            AddBlockHead(to, list.bytes.size() + 8);
            Add(to, int64_t(list.count));
            Add(to, list.bytes);
        }
        Patch(to, chain, uint64_t(to.size() - chain));
    }
    if (table.code == ZvTableCode::Full(ZvTableCode::Layer)) {
        Add(to, uint8_t(!contents.attributes.empty()));
        if (!contents.attributes.empty()) {
            const size_t all = to.size();
            Add(to, uint64_t(0));
            Add(to, uint32_t(contents.attributes.size()));
            for (const Bytes& frame : contents.attributes) {
                Add(to, uint64_t(8 + ZvNativeBlockHead::kSize + frame.size()));
                AddBlock(to, frame);
            }
            Patch(to, all, uint64_t(to.size() - all));
        }
    }
    Patch(to, start, uint64_t(to.size() - start));
}

void AddTable(Bytes& to, const Table& table) {
    if (!table.unknownFrame.empty()) {
        Add(to, table.unknownFrame);
        return;
    }
    const size_t start = to.size();
    uint64_t records = 0;
    for (const Records& group : table.groups)
        records += group.count;
    Add(to, uint64_t(0));
    Add(to, table.code);
    Add(to, uint32_t(records));
    Add(to, uint64_t(0));
    AddBlock(to, table.fields);
    for (const Records& group : table.groups) {
        Add(to, uint64_t(12 + ZvNativeBlockHead::kSize + group.bytes.size()));
        Add(to, uint32_t(group.count));
        AddBlock(to, group.bytes);
    }
    if (!table.contents.empty()) {
        Patch(to, start + 16, uint64_t(to.size() - start));
        for (const auto& contents : table.contents)
            AddContents(to, table, *contents);
    }
    Patch(to, start, uint64_t(to.size() - start));
}

uint64_t EntitiesOf(const Section& section) {
    uint64_t count = 0;
    for (const auto& table : section.tables)
        for (const auto& contents : table->contents)
            for (const Records& list : contents->lists)
                count += list.count;
    return count;
}

void AddSection(Bytes& to, const Section& section) {
    Add(to, uint32_t(16));
    Add(to, uint32_t(section.tables.size()));
    Add(to, std::max(EntitiesOf(section), section.highestName)); // readers take names as far as that
    for (const auto& table : section.tables)
        AddTable(to, *table);
}

Bytes BuiltInClient() {
    const auto& builtIn = ZvServer::BuiltInClient();
    ZvNativeClientRecord record;
    record.name = builtIn.name;
    record.id = builtIn.code;
    std::memcpy(record.guid, builtIn.guid.bytes.data(), sizeof record.guid);
    Bytes bytes(ZvNativeClientRecord::kSize);
    record.Store(bytes.data());
    return bytes;
}

/// A binary XML document with a bare root.
Bytes EmptySettings() {
    return {'Z', 'B', 'X', '1', 4, 0, 'r', 'o', 'o', 't', 0, 0, 0, 0, 0, 0, 0, 0};
}

} // namespace

Table* Section::Find(uint32_t code) const {
    for (const auto& table : tables)
        if (table->code == code)
            return table.get();
    return nullptr;
}

Table& Section::Get(uint32_t code) {
    if (Table* table = Find(code))
        return *table;
    tables.push_back(std::make_unique<Table>());
    tables.back()->code = code;
    return *tables.back();
}

bool ParseRecord(const uint8_t* record, size_t length, RecordHead& head) {
    uint8_t encoding = 0;
    int32_t characters = 0;
    if (length < kRecordHead + 5)
        return false;
    std::memcpy(&head.index, record + 8, 4);
    std::memcpy(&head.id, record + 12, 4);
    std::memcpy(&encoding, record + kRecordHead, 1);
    std::memcpy(&characters, record + kRecordHead + 1, 4);
    if (encoding > 1 || characters < 0 || uint64_t(characters) << encoding > length - kRecordHead - 5)
        return false;
    const uint8_t* text = record + kRecordHead + 5;
    head.size = kRecordHead + 5 + (size_t(characters) << encoding);
    if (encoding == 0) {
        head.name =
            ZvNativeFile::ReadCharString(reinterpret_cast<const char*>(text), size_t(characters)).ToUtf8();
        return true;
    }
    XStringW wide;
    wide.Str().resize(size_t(characters));
    if (characters > 0)
        std::memcpy(wide.Str().data(), text, size_t(characters) * sizeof(char16_t));
    head.name = wide.ToUtf8();
    return true;
}

Records RecordsOfGroup(const Bytes& bytes) {
    Records records;
    size_t used = 0;
    bool good = true;
    ForEachRecord(Records{0, bytes, true}, [&](const uint8_t* record, size_t length) {
        RecordHead head;
        good = good && ParseRecord(record, length, head) && head.index >= 0 && head.index < kMostIndex;
        if (good)
            used += length, ++records.count;
    });
    records.bytes.assign(bytes.begin(), bytes.begin() + ptrdiff_t(used));
    records.doubtful = used != bytes.size();
    return records;
}

void AddFurtherRecords(Records& group, const Bytes& bytes, uint32_t tableCode) {
    for (size_t at = group.bytes.size(); at + kRecordHead <= bytes.size();) {
        const uint8_t* record = bytes.data() + at;
        uint64_t length = 0;
        RecordHead head;
        std::memcpy(&length, record, sizeof length);
        if (length >= kRecordHead && length <= bytes.size() - at &&
            ParseRecord(record, size_t(length), head) && head.index >= 0 && head.index < kMostIndex &&
            ZvNativeRecordKinds::HasExactly(tableCode, {record + head.size, size_t(length) - head.size})) {
            group.bytes.insert(group.bytes.end(), record, record + length);
            ++group.count;
            at += size_t(length);
        } else {
            ++at;
        }
    }
}

bool IsAttributeFields(const Bytes& content) {
    const auto number = [&](size_t at) {
        uint64_t value = 0;
        std::memcpy(&value, content.data() + at, sizeof value);
        return value;
    };
    uint32_t fields = 0;
    if (content.size() < sizeof fields)
        return false;
    std::memcpy(&fields, content.data(), sizeof fields);
    size_t at = sizeof fields;
    for (; fields > 0 && at + 8 <= content.size() && number(at) <= content.size() - at - 8; --fields)
        at += 8 + size_t(number(at));
    return fields == 0 && at == content.size();
}

bool BelongsTo(uint32_t tableCode, const Records& group) {
    bool fits = group.count > 0;
    ForEachRecord(group, [&](const uint8_t* record, size_t length) {
        RecordHead head;
        fits = fits && ParseRecord(record, length, head) &&
               ZvNativeRecordKinds::HasExactly(tableCode, {record + head.size, length - head.size});
    });
    return fits;
}

Bytes Assemble(const File& found) {
    Bytes file(ZvNativeHeader::kSize);
    ZvNativeHeader header = found.header;
    header.size = ZvNativeHeader::kSize;
    header.flags = header.solidOffset = 0;
    header.digest = {};
    header.settingsOffset = file.size();
    AddBlock(file, found.settings.empty() ? EmptySettings() : found.settings);
    header.tablesOffset = file.size();
    AddSection(file, found.section);
    header.clientsOffset = file.size();
    const Bytes clients = found.clients.empty() ? BuiltInClient() : found.clients;
    if (header.version < kClientsBlockVersion)
        Add(file, clients);
    else
        AddBlock(file, clients);
    if (found.clients.empty())
        header.clientCount = 1;
    header.length = file.size();
    header.Store(file.data());
    return file;
}

} // namespace ZvSalvaged
