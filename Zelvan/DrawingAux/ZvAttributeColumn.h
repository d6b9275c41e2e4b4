#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// One column of attribute values, all of a type, each set or NULL. Kept small: a bit a row says whether
/// there is a value; whole numbers take 4 bytes until one needs 8; texts and binaries take 4 bytes and lie,
/// equal neighbours once, in one run of bytes.
class ZV_API ZvAttributeColumn {
public:
    /// Numbers stand in files.
    enum class Type : uint8_t { Int64 = 1, Double = 2, String = 3, Bool = 4, Binary = 5, Date = 6 };
    /// std::monostate is NULL.
    using Value =
        std::variant<std::monostate, int64_t, double, XStringW, bool, std::vector<uint8_t>, DateTime>;

    explicit ZvAttributeColumn(Type type = Type::String) : m_type(type) {}
    Type GetType() const { return m_type; }
    /// Nothing for NULL.
    static std::optional<Type> TypeOf(const Value& value);
    size_t Size() const { return m_size; }
    /// New rows are NULL.
    void Resize(size_t rows);
    void Reserve(size_t rows);
    bool IsNull(size_t row) const { return !(m_set[row >> 6] >> (row & 63) & 1); }
    void SetNull(size_t row);

    // Typed access: the caller knows the type and, for the getters, that the row is not NULL.
    int64_t GetInt(size_t row) const { return m_isWide ? m_wide[row] : m_narrow[row]; }
    double GetDouble(size_t row) const { return m_doubles[row]; }
    bool GetBool(size_t row) const { return m_bits[row >> 6] >> (row & 63) & 1; }
    DateTime GetDate(size_t row) const { return DateTime{uint64_t(m_wide[row])}; }
    /// UTF-8 or the bytes; valid until the column is changed.
    std::string_view GetBytes(size_t row) const;
    void SetInt(size_t row, int64_t value);
    void SetDouble(size_t row, double value);
    void SetBool(size_t row, bool value);
    void SetDate(size_t row, DateTime value);
    /// False, unchanged, when the column's bytes would pass 4 GiB.
    bool SetBytes(size_t row, std::string_view bytes);

    Value Get(size_t row) const;
    /// Whether Set takes the value: NULL, one of the column's type, a whole number for doubles.
    bool Fits(const Value& value) const;
    bool Set(size_t row, const Value& value);
    /// From a column of the same type.
    void CopyValue(size_t row, const ZvAttributeColumn& from, size_t fromRow);
    /// Keeps the rows `kept` (ascending), in that order.
    void Select(const std::vector<uint32_t>& kept);
    size_t MemUsage() const;

private:
    static constexpr uint32_t kNone = 0xFFFFFFFF;
    void Mark(size_t row) { m_set[row >> 6] |= uint64_t(1) << (row & 63); }
    void Widen();
    std::string_view At(uint32_t offset) const;

    Type m_type;
    bool m_isWide = false; // Int64: values lie in m_wide
    size_t m_size = 0;
    std::vector<uint64_t> m_set;   // one bit a row
    std::vector<int32_t> m_narrow; // Int64 while all fit
    std::vector<int64_t> m_wide;   // Int64 otherwise, Date
    std::vector<double> m_doubles;
    std::vector<uint64_t> m_bits;    // Bool
    std::vector<uint32_t> m_offsets; // String, Binary: where in m_bytes
    std::string m_bytes; // each value: its length as a base-128 number, lowest part first, then its bytes
    std::vector<uint32_t>
        m_recent; // by hash of the bytes, an offset where they may lie: repeated values are kept once
};
