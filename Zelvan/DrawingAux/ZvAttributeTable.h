#pragma once
#include "Zelvan/DrawingAux/ZvAttributeColumn.h"
#include "Zelvan/ZvName.h"
#include "ZvCore/Api.h"
#include <functional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

class ZvNativeDesc;

/// Attribute values of a layer's features: named, typed columns, one row for an entity that has values. A
/// value that was never set is NULL, which differs from an empty text or a zero. The fields stay when there
/// are no rows.
///
/// Rows are found by entity name in constant time. Row numbers are positions in the columns: they stay valid
/// until rows are removed (removed rows leave a gap until Compact). Files hold them in the order of names.
class ZV_API ZvAttributeTable {
public:
    using Type = ZvAttributeColumn::Type;
    using Value = ZvAttributeColumn::Value;
    struct Field {
        XStringW name;
        Type type = Type::String;
        /// As the source states them (digits or characters, decimals); 0 when it does not. Values are not cut
        /// to them.
        int32_t width = 0;
        int32_t precision = 0;
        friend bool operator==(const Field&, const Field&) = default;
    };
    static constexpr size_t kMaxFields = 4096;

    // --- fields --------------------------------------------------------------------------------------------
    const std::vector<Field>& Fields() const { return m_fields; }
    int FieldCount() const { return int(m_fields.size()); }
    /// Without regard to case; -1 when there is none.
    int FindField(const XStringW& name) const;
    /// Index of the new field, NULL in every row; -1 for an empty or taken name and past kMaxFields.
    int AddField(const Field& field);
    /// The same, before the field that stands at the index now; at the end for an index past it.
    int InsertField(int index, const Field& field);
    bool RenameField(int index, const XStringW& name);
    bool RemoveField(int index);
    /// Whether a row has another value than NULL in the field.
    bool HasValues(int field) const;

    // --- rows by entity ------------------------------------------------------------------------------------
    size_t RowCount() const { return m_live; }
    bool HasRow(ZvName name) const { return FindRow(name) >= 0; }
    /// Makes the row when missing. Values in field order, missing ones NULL. False, nothing changed, when a
    /// value does not fit its field (whole numbers fit a double) or for the null name.
    bool SetRow(ZvName name, std::span<const Value> values);
    bool Set(ZvName name, int field, const Value& value);
    bool Set(ZvName name, const XStringW& field, const Value& value);
    /// NULL for a missing row or field.
    Value Get(ZvName name, int field) const;
    Value Get(ZvName name, const XStringW& field) const;
    bool RemoveRow(ZvName name);
    /// Copies the row from another table (fields are matched by name and type, missing ones added). False
    /// without such a row.
    bool CopyRow(ZvName name, const ZvAttributeTable& from, ZvName fromName);

    // --- rows by number, for loops and importers -----------------------------------------------------------
    /// -1 when the entity has no row.
    int FindRow(ZvName name) const;
    /// The entity's row, made when missing; -1 for the null name.
    int MakeRow(ZvName name);
    /// Row numbers end here; some rows before may be gone (null name).
    size_t RowEnd() const { return m_names.size(); }
    ZvName RowName(size_t row) const { return m_names[row]; }
    ZvAttributeColumn& Column(int field) { return m_columns[size_t(field)]; }
    const ZvAttributeColumn& Column(int field) const { return m_columns[size_t(field)]; }
    /// Rows in order of their numbers.
    void ForEachRow(const std::function<void(ZvName, size_t row)>& visit) const;

    // --- upkeep --------------------------------------------------------------------------------------------
    void Reserve(size_t rows);
    void Clear();
    /// Rows follow entities that got other names; names not in the map stay.
    void RenameRows(const std::unordered_map<uint32_t, uint32_t>& newNames);
    /// Removes rows whose entity is not wanted; returns how many.
    size_t KeepRows(const std::function<bool(ZvName)>& wanted);
    /// Closes the gaps that removed rows left.
    void Compact();
    /// Takes the rows (and missing fields) of another table over; rows of entities that have one are
    /// replaced.
    void Merge(const ZvAttributeTable& from);
    size_t MemUsage() const;
    bool IsEmpty() const { return m_fields.empty() && m_live == 0; }
    friend bool operator==(const ZvAttributeTable& a, const ZvAttributeTable& b) { return a.IsEqual(b); }

    // --- files: blocks of some MiB, each standing for itself; false on success, true on failure ------------
    /// `saved`: which rows go into the file.
    bool NativeOut(ZvNativeDesc& desc, const std::function<bool(ZvName)>& saved) const;
    /// Adds what the file holds. A block that cannot be read costs its rows.
    bool NativeIn(ZvNativeDesc& desc);

private:
    bool IsEqual(const ZvAttributeTable& other) const;
    void IndexInsert(uint32_t row);
    void Rehash(size_t rows);
    std::vector<int> MatchFields(const ZvAttributeTable& from);
    void CopyValues(size_t row, const ZvAttributeTable& from, size_t fromRow, const std::vector<int>& match);
    std::vector<uint8_t> FieldBytes() const;
    bool TakeFields(std::span<const uint8_t> bytes);
    bool TakeRows(std::span<const uint8_t> bytes);

    std::vector<Field> m_fields;
    std::vector<ZvAttributeColumn> m_columns;
    std::vector<ZvName> m_names;   // by row; null for a removed row
    std::vector<uint32_t> m_index; // open addressing by name: row + 1, 0 free
    size_t m_live = 0;
};
