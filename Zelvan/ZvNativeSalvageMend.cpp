#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvNativeSalvageModel.h"
#include "ZvCore/Guid.h"
#include <algorithm>
#include <cstring>
#include <functional>
#include <set>
#include <utility>

// What is done to the pieces that were found before they become a file.

namespace ZvSalvaged {

namespace {

template <class T>
void Add(Bytes& to, T value) {
    const size_t at = to.size();
    to.resize(at + sizeof value);
    std::memcpy(to.data() + at, &value, sizeof value);
}

template <class T>
T Load(const Bytes& bytes, size_t at) {
    T value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

template <class T>
void Patch(Bytes& bytes, size_t at, T value) {
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

Bytes NewRecord(int32_t index, uint32_t id, const std::string& name) {
    Bytes record;
    Add(record, uint64_t(0));
    Add(record, index);
    Add(record, id);
    Add(record, uint16_t(0));
    const Guid guid = Guid::New();
    record.insert(record.end(), guid.bytes.begin(), guid.bytes.end());
    Add(record, uint8_t(0));
    Add(record, int32_t(name.size()));
    record.insert(record.end(), name.begin(), name.end());
    Patch(record, 0, uint64_t(record.size()));
    return record;
}

void NameContentsOf(Table& table) {
    std::set<int32_t> indices;
    std::set<std::string> names;
    int32_t nextIndex = 0;
    uint32_t nextId = 1;
    ForEachRecord(table, [&](const uint8_t* bytes, size_t length) {
        RecordHead head;
        if (!ParseRecord(bytes, length, head))
            return;
        indices.insert(head.index);
        names.insert(head.name);
        nextIndex = std::max(nextIndex, head.index < INT32_MAX ? head.index + 1 : head.index);
        nextId = std::max(nextId, head.id < UINT32_MAX ? head.id + 1 : head.id);
    });
    for (const auto& contents : table.contents)
        if (contents->index >= 0)
            nextIndex = std::max(nextIndex, contents->index < INT32_MAX ? contents->index + 1 : 0);
    for (int number = 1; const auto& contents : table.contents) {
        if (contents->index >= 0 && indices.count(contents->index))
            continue;
        if (contents->index < 0)
            contents->index = nextIndex++;
        do
            contents->substitute = "Recovered " + std::to_string(number++);
        while (!names.insert(contents->substitute).second);
        indices.insert(contents->index);
        table.groups.push_back({1, NewRecord(contents->index, nextId++, contents->substitute), true});
    }
}

/// Indices of the table's records in their order; empty when they are not all there.
std::vector<int32_t> AllIndices(const Table& table) {
    std::vector<int32_t> indices;
    ForEachRecord(table, [&](const uint8_t* bytes, size_t length) {
        RecordHead head;
        if (ParseRecord(bytes, length, head))
            indices.push_back(head.index);
    });
    if (indices.size() != table.stated ||
        std::adjacent_find(indices.begin(), indices.end(), std::greater_equal<>()) != indices.end())
        indices.clear();
    return indices;
}

void AssignHeadlessOf(Table& table) {
    const std::vector<int32_t> indices = AllIndices(table);
    auto& contents = table.contents;
    if (indices.empty() || contents.size() > indices.size())
        return;
    if (contents.size() == indices.size()) { // each has its record, whatever its head says
        for (size_t i = 0; i < contents.size(); ++i)
            contents[i]->index = indices[i];
        return;
    }
    for (size_t i = 0; i < contents.size();) {
        size_t end = i;
        while (end < contents.size() && contents[end]->index < 0)
            ++end;
        const auto from = i == 0 ? indices.begin()
                                 : std::upper_bound(indices.begin(), indices.end(), contents[i - 1]->index);
        const auto to = end == contents.size()
                            ? indices.end()
                            : std::lower_bound(indices.begin(), indices.end(), contents[end]->index);
        if (from <= to && size_t(to - from) == end - i)
            for (auto index = from; i < end; ++i, ++index)
                contents[i]->index = *index;
        i = end + 1;
    }
}

using Names = std::set<uint64_t>;

template <class F>
void ForEachName(Records& list, F&& each) {
    constexpr size_t kNameAt = 12;
    for (size_t at = 0; at + kNameAt + 8 <= list.bytes.size();) {
        const auto length = Load<uint64_t>(list.bytes, at);
        uint64_t name = Load<uint64_t>(list.bytes, at + kNameAt);
        each(name);
        Patch(list.bytes, at + kNameAt, name);
        if (length < kNameAt + 8 || length > list.bytes.size() - at)
            break;
        at += size_t(length);
    }
}

template <class F>
void ForEachList(Section& section, bool doubtful, F&& each) {
    for (const auto& table : section.tables)
        for (const auto& contents : table->contents)
            for (Records& list : contents->lists)
                if (list.doubtful == doubtful)
                    each(list);
}

/// Rows that name none of the objects beside them are those of another layer.
void DropForeignRows(Contents& contents) {
    if (contents.attributes.empty())
        return;
    Names names;
    for (Records& list : contents.lists)
        ForEachName(list, [&](uint64_t& name) { names.insert(name); });
    std::erase_if(contents.attributes, [&](const Bytes& rows) {
        if (&rows == &contents.attributes.front() || rows.size() < 4)
            return false;
        const size_t count = std::min<size_t>(Load<uint32_t>(rows, 0), rows.size() / 4 - 1);
        for (size_t i = 0; i < count; ++i)
            if (names.count(Load<uint32_t>(rows, 4 + 4 * i)))
                return false;
        return true;
    });
}

} // namespace

void AssignHeadless(Section& section) {
    for (const auto& table : section.tables) {
        AssignHeadlessOf(*table);
        for (const auto& contents : table->contents) {
            DropForeignRows(*contents);
            if (contents->section)
                AssignHeadless(*contents->section);
        }
    }
}

void SettleNames(Section& section) {
    Names sound;
    ForEachList(section, false,
                [&](Records& list) { ForEachName(list, [&](uint64_t& name) { sound.insert(name); }); });
    ForEachList(section, true, [&](Records& list) {
        ForEachName(list, [&](uint64_t& name) { name = sound.count(name) ? 0 : name; });
    });
    section.highestName = sound.empty() ? 0 : *sound.rbegin();
    for (const auto& table : section.tables)
        for (const auto& contents : table->contents)
            if (contents->section)
                SettleNames(*contents->section);
}

void NameTheNameless(Section& section) {
    for (const auto& table : section.tables) {
        NameContentsOf(*table);
        for (const auto& contents : table->contents)
            if (contents->section)
                NameTheNameless(*contents->section);
    }
}

} // namespace ZvSalvaged
