#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include <algorithm>
#include <bit>

namespace {

constexpr size_t kSmallestIndex = 16;

size_t Slot(uint32_t name, size_t mask) {
    return size_t(name * 2654435761u) & mask;
}

} // namespace

// --- fields ------------------------------------------------------------------------------------------------

int ZvAttributeTable::FindField(const XStringW& name) const {
    for (size_t i = 0; i < m_fields.size(); ++i)
        if (m_fields[i].name == name || m_fields[i].name.EqualsNoCase(name))
            return int(i);
    return -1;
}

int ZvAttributeTable::AddField(const Field& field) {
    return InsertField(FieldCount(), field);
}

int ZvAttributeTable::InsertField(int index, const Field& field) {
    if (index < 0 || field.name.IsEmpty() || FindField(field.name) >= 0 || m_fields.size() >= kMaxFields)
        return -1;
    index = std::min(index, FieldCount());
    m_fields.insert(m_fields.begin() + index, field);
    const auto column = m_columns.emplace(m_columns.begin() + index, field.type);
    column->Resize(m_names.size());
    return index;
}

bool ZvAttributeTable::RenameField(int index, const XStringW& name) {
    const int holder = FindField(name);
    if (index < 0 || index >= FieldCount() || name.IsEmpty() || (holder >= 0 && holder != index))
        return false;
    m_fields[size_t(index)].name = name;
    return true;
}

bool ZvAttributeTable::RemoveField(int index) {
    if (index < 0 || index >= FieldCount())
        return false;
    m_fields.erase(m_fields.begin() + index);
    m_columns.erase(m_columns.begin() + index);
    return true;
}

bool ZvAttributeTable::HasValues(int field) const {
    for (size_t row = 0; row < m_names.size(); ++row)
        if (!m_names[row].IsNull() && !Column(field).IsNull(row))
            return true;
    return false;
}

// --- rows by number ----------------------------------------------------------------------------------------

int ZvAttributeTable::FindRow(ZvName name) const {
    if (name.IsNull() || m_index.empty())
        return -1;
    const size_t mask = m_index.size() - 1;
    for (size_t slot = Slot(name.value, mask); m_index[slot]; slot = (slot + 1) & mask)
        if (m_names[m_index[slot] - 1] == name)
            return int(m_index[slot] - 1);
    return -1;
}

int ZvAttributeTable::MakeRow(ZvName name) {
    if (name.IsNull())
        return -1;
    if (const int row = FindRow(name); row >= 0)
        return row;
    if ((m_names.size() + 1) * 2 > m_index.size())
        Rehash(m_names.size() + 1);
    m_names.push_back(name);
    ++m_live;
    for (ZvAttributeColumn& column : m_columns)
        column.Resize(m_names.size());
    IndexInsert(uint32_t(m_names.size() - 1));
    return int(m_names.size() - 1);
}

void ZvAttributeTable::IndexInsert(uint32_t row) {
    const size_t mask = m_index.size() - 1;
    size_t slot = Slot(m_names[row].value, mask);
    while (m_index[slot])
        slot = (slot + 1) & mask;
    m_index[slot] = row + 1;
}

/// At most half of the index is ever taken, so searches end soon.
void ZvAttributeTable::Rehash(size_t rows) {
    m_index.assign(std::bit_ceil(std::max(rows * 2, kSmallestIndex)), 0);
    for (size_t row = 0; row < m_names.size(); ++row)
        if (!m_names[row].IsNull())
            IndexInsert(uint32_t(row));
}

void ZvAttributeTable::ForEachRow(const std::function<void(ZvName, size_t)>& visit) const {
    for (size_t row = 0; row < m_names.size(); ++row)
        if (!m_names[row].IsNull())
            visit(m_names[row], row);
}

// --- rows by entity ----------------------------------------------------------------------------------------

bool ZvAttributeTable::SetRow(ZvName name, std::span<const Value> values) {
    if (name.IsNull() || values.size() > m_columns.size())
        return false;
    for (size_t i = 0; i < values.size(); ++i)
        if (!m_columns[i].Fits(values[i]))
            return false;
    const auto row = size_t(MakeRow(name));
    bool ok = true;
    for (size_t i = 0; i < m_columns.size(); ++i)
        ok = m_columns[i].Set(row, i < values.size() ? values[i] : Value()) && ok;
    return ok;
}

bool ZvAttributeTable::Set(ZvName name, int field, const Value& value) {
    if (field < 0 || field >= FieldCount() || name.IsNull() || !Column(field).Fits(value))
        return false;
    return Column(field).Set(size_t(MakeRow(name)), value);
}

bool ZvAttributeTable::Set(ZvName name, const XStringW& field, const Value& value) {
    return Set(name, FindField(field), value);
}

ZvAttributeTable::Value ZvAttributeTable::Get(ZvName name, int field) const {
    const int row = FindRow(name);
    return row >= 0 && field >= 0 && field < FieldCount() ? Column(field).Get(size_t(row)) : Value();
}

ZvAttributeTable::Value ZvAttributeTable::Get(ZvName name, const XStringW& field) const {
    return Get(name, FindField(field));
}

bool ZvAttributeTable::RemoveRow(ZvName name) {
    const int row = FindRow(name);
    if (row < 0)
        return false;
    m_names[size_t(row)] = {};
    --m_live;
    if (m_names.size() > 64 && m_live < m_names.size() / 2)
        Compact();
    return true;
}

/// Fields of the other table here, made when missing; -1 where a field of the name has another type.
std::vector<int> ZvAttributeTable::MatchFields(const ZvAttributeTable& from) {
    std::vector<int> match;
    for (const Field& field : from.m_fields) {
        int here = FindField(field.name);
        if (here < 0)
            here = AddField(field);
        match.push_back(here >= 0 && m_fields[size_t(here)].type == field.type ? here : -1);
    }
    return match;
}

void ZvAttributeTable::CopyValues(size_t row, const ZvAttributeTable& from, size_t fromRow,
                                  const std::vector<int>& match) {
    for (size_t i = 0; i < match.size(); ++i)
        if (match[i] >= 0)
            Column(match[i]).CopyValue(row, from.m_columns[i], fromRow);
}

bool ZvAttributeTable::CopyRow(ZvName name, const ZvAttributeTable& from, ZvName fromName) {
    const int fromRow = from.FindRow(fromName);
    if (fromRow < 0 || name.IsNull())
        return false;
    const std::vector<int> match = MatchFields(from);
    CopyValues(size_t(MakeRow(name)), from, size_t(fromRow), match);
    return true;
}

void ZvAttributeTable::Merge(const ZvAttributeTable& from) {
    const std::vector<int> match = MatchFields(from);
    from.ForEachRow(
        [&](ZvName name, size_t fromRow) { CopyValues(size_t(MakeRow(name)), from, fromRow, match); });
}

// --- upkeep ------------------------------------------------------------------------------------------------

void ZvAttributeTable::Reserve(size_t rows) {
    m_names.reserve(rows);
    for (ZvAttributeColumn& column : m_columns)
        column.Reserve(rows);
    if (rows * 2 > m_index.size())
        Rehash(rows);
}

void ZvAttributeTable::Clear() {
    *this = ZvAttributeTable();
}

void ZvAttributeTable::RenameRows(const std::unordered_map<uint32_t, uint32_t>& newNames) {
    if (newNames.empty())
        return;
    std::vector<ZvName> renamed = std::move(m_names);
    for (ZvName& name : renamed)
        if (const auto found = newNames.find(name.value); found != newNames.end() && !name.IsNull())
            name = found->second;
    m_names.assign(renamed.size(), {});
    m_live = 0;
    m_index.assign(std::bit_ceil(std::max(renamed.size() * 2, kSmallestIndex)), 0);
    for (size_t row = 0; row < renamed.size(); ++row) {
        if (renamed[row].IsNull() || FindRow(renamed[row]) >= 0) // the first row of a name stays
            continue;
        m_names[row] = renamed[row];
        ++m_live;
        IndexInsert(uint32_t(row));
    }
}

size_t ZvAttributeTable::KeepRows(const std::function<bool(ZvName)>& wanted) {
    size_t removed = 0;
    for (ZvName& name : m_names)
        if (!name.IsNull() && !wanted(name)) {
            name = {};
            ++removed;
        }
    m_live -= removed;
    if (removed)
        Compact();
    return removed;
}

void ZvAttributeTable::Compact() {
    if (m_live == m_names.size())
        return;
    std::vector<uint32_t> kept;
    kept.reserve(m_live);
    for (size_t row = 0; row < m_names.size(); ++row)
        if (!m_names[row].IsNull())
            kept.push_back(uint32_t(row));
    for (ZvAttributeColumn& column : m_columns)
        column.Select(kept);
    std::erase(m_names, ZvName());
    Rehash(m_names.size());
}

size_t ZvAttributeTable::MemUsage() const {
    size_t bytes = sizeof(*this) + m_names.capacity() * sizeof(ZvName) + m_index.capacity() * 4;
    for (const ZvAttributeColumn& column : m_columns)
        bytes += column.MemUsage();
    return bytes;
}

bool ZvAttributeTable::IsEqual(const ZvAttributeTable& other) const {
    if (m_fields != other.m_fields || m_live != other.m_live)
        return false;
    for (size_t row = 0; row < m_names.size(); ++row) {
        if (m_names[row].IsNull())
            continue;
        const int theirs = other.FindRow(m_names[row]);
        if (theirs < 0)
            return false;
        for (size_t i = 0; i < m_columns.size(); ++i)
            if (m_columns[i].Get(row) != other.m_columns[i].Get(size_t(theirs)))
                return false;
    }
    return true;
}
