#include "Zelvan/DrawingAux/ZvAttributeColumn.h"
#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr size_t kRecent = 256; // power of two

size_t Words(size_t rows) {
    return (rows + 63) / 64;
}

/// FNV-1a.
size_t Hash(std::string_view bytes) {
    uint32_t hash = 2166136261u;
    for (const char c : bytes)
        hash = (hash ^ uint8_t(c)) * 16777619u;
    return hash & (kRecent - 1);
}

} // namespace

void ZvAttributeColumn::Reserve(size_t rows) {
    m_set.reserve(Words(rows));
    switch (m_type) {
    case Type::Int64:
        if (m_wide.empty())
            m_narrow.reserve(rows);
        else
            m_wide.reserve(rows);
        break;
    case Type::Date:
        m_wide.reserve(rows);
        break;
    case Type::Double:
        m_doubles.reserve(rows);
        break;
    case Type::Bool:
        m_bits.reserve(Words(rows));
        break;
    case Type::String:
    case Type::Binary:
        m_offsets.reserve(rows);
        break;
    }
}

void ZvAttributeColumn::Resize(size_t rows) {
    for (size_t row = rows; row < m_size; ++row) // bits of rows that may come back must be clear
        SetNull(row);
    m_size = rows;
    m_set.resize(Words(rows));
    switch (m_type) {
    case Type::Int64:
        if (m_isWide)
            m_wide.resize(rows);
        else
            m_narrow.resize(rows);
        break;
    case Type::Date:
        m_wide.resize(rows);
        break;
    case Type::Double:
        m_doubles.resize(rows);
        break;
    case Type::Bool:
        m_bits.resize(Words(rows));
        break;
    case Type::String:
    case Type::Binary:
        m_offsets.resize(rows);
        break;
    }
}

void ZvAttributeColumn::SetNull(size_t row) {
    m_set[row >> 6] &= ~(uint64_t(1) << (row & 63));
}

// --- typed access ------------------------------------------------------------------------------------------

void ZvAttributeColumn::Widen() {
    m_wide.assign(m_narrow.begin(), m_narrow.end());
    m_narrow = {};
    m_isWide = true;
}

void ZvAttributeColumn::SetInt(size_t row, int64_t value) {
    if (!m_isWide && value != int32_t(value))
        Widen();
    if (m_isWide)
        m_wide[row] = value;
    else
        m_narrow[row] = int32_t(value);
    Mark(row);
}

void ZvAttributeColumn::SetDouble(size_t row, double value) {
    m_doubles[row] = value;
    Mark(row);
}

void ZvAttributeColumn::SetBool(size_t row, bool value) {
    const uint64_t bit = uint64_t(1) << (row & 63);
    m_bits[row >> 6] = value ? m_bits[row >> 6] | bit : m_bits[row >> 6] & ~bit;
    Mark(row);
}

void ZvAttributeColumn::SetDate(size_t row, DateTime value) {
    m_wide[row] = int64_t(value.ticks);
    Mark(row);
}

std::string_view ZvAttributeColumn::At(uint32_t offset) const {
    const char* at = m_bytes.data() + offset;
    size_t length = 0;
    for (int shift = 0;; shift += 7) {
        const auto part = uint8_t(*at++);
        length |= size_t(part & 127) << shift;
        if (!(part & 128))
            return {at, length};
    }
}

std::string_view ZvAttributeColumn::GetBytes(size_t row) const {
    return At(m_offsets[row]);
}

bool ZvAttributeColumn::SetBytes(size_t row, std::string_view bytes) {
    if (m_recent.empty())
        m_recent.assign(kRecent, kNone);
    uint32_t& recent = m_recent[Hash(bytes)];
    if (recent == kNone || At(recent) != bytes) {
        constexpr size_t kLongestHead = 10;
        if (m_bytes.size() + bytes.size() + kLongestHead > std::numeric_limits<uint32_t>::max())
            return false;
        recent = uint32_t(m_bytes.size());
        size_t length = bytes.size();
        for (; length >= 128; length >>= 7)
            m_bytes.push_back(char(length | 128));
        m_bytes.push_back(char(length));
        m_bytes.append(bytes);
    }
    m_offsets[row] = recent;
    Mark(row);
    return true;
}

// --- any value ---------------------------------------------------------------------------------------------

ZvAttributeColumn::Value ZvAttributeColumn::Get(size_t row) const {
    if (IsNull(row))
        return {};
    switch (m_type) {
    case Type::Int64:
        return GetInt(row);
    case Type::Double:
        return GetDouble(row);
    case Type::Bool:
        return GetBool(row);
    case Type::Date:
        return GetDate(row);
    case Type::String:
        return XStringW::FromUtf8(GetBytes(row));
    case Type::Binary: {
        const std::string_view bytes = GetBytes(row);
        return std::vector<uint8_t>(bytes.begin(), bytes.end());
    }
    }
    return {};
}

/// The alternatives of Value stand in the order of the types' numbers.
std::optional<ZvAttributeColumn::Type> ZvAttributeColumn::TypeOf(const Value& value) {
    return value.index() ? std::optional(Type(value.index())) : std::nullopt;
}

bool ZvAttributeColumn::Fits(const Value& value) const {
    switch (m_type) {
    case Type::Int64:
        return std::holds_alternative<int64_t>(value) || value.index() == 0;
    case Type::Double:
        return std::holds_alternative<double>(value) || std::holds_alternative<int64_t>(value) ||
               value.index() == 0;
    case Type::Bool:
        return std::holds_alternative<bool>(value) || value.index() == 0;
    case Type::Date:
        return std::holds_alternative<DateTime>(value) || value.index() == 0;
    case Type::String:
        return std::holds_alternative<XStringW>(value) || value.index() == 0;
    case Type::Binary:
        return std::holds_alternative<std::vector<uint8_t>>(value) || value.index() == 0;
    }
    return false;
}

bool ZvAttributeColumn::Set(size_t row, const Value& value) {
    if (!Fits(value))
        return false;
    if (const auto* whole = std::get_if<int64_t>(&value))
        m_type == Type::Int64 ? SetInt(row, *whole) : SetDouble(row, double(*whole));
    else if (const auto* number = std::get_if<double>(&value))
        SetDouble(row, *number);
    else if (const auto* text = std::get_if<XStringW>(&value))
        return SetBytes(row, text->ToUtf8());
    else if (const auto* flag = std::get_if<bool>(&value))
        SetBool(row, *flag);
    else if (const auto* bytes = std::get_if<std::vector<uint8_t>>(&value))
        return SetBytes(row, {reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    else if (const auto* date = std::get_if<DateTime>(&value))
        SetDate(row, *date);
    else
        SetNull(row);
    return true;
}

void ZvAttributeColumn::CopyValue(size_t row, const ZvAttributeColumn& from, size_t fromRow) {
    if (from.IsNull(fromRow))
        SetNull(row);
    else if (m_type == Type::Int64)
        SetInt(row, from.GetInt(fromRow));
    else if (m_type == Type::Double)
        SetDouble(row, from.GetDouble(fromRow));
    else if (m_type == Type::Bool)
        SetBool(row, from.GetBool(fromRow));
    else if (m_type == Type::Date)
        SetDate(row, from.GetDate(fromRow));
    else
        SetBytes(row, from.GetBytes(fromRow));
}

void ZvAttributeColumn::Select(const std::vector<uint32_t>& kept) {
    ZvAttributeColumn selected(m_type);
    selected.Resize(kept.size());
    for (size_t row = 0; row < kept.size(); ++row)
        selected.CopyValue(row, *this, kept[row]);
    *this = std::move(selected);
}

size_t ZvAttributeColumn::MemUsage() const {
    return sizeof(*this) + m_set.capacity() * 8 + m_narrow.capacity() * 4 + m_wide.capacity() * 8 +
           m_doubles.capacity() * 8 + m_bits.capacity() * 8 + m_offsets.capacity() * 4 + m_bytes.capacity() +
           m_recent.capacity() * 4;
}
