#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Tables/ZvFieldIO.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include <algorithm>

// Attributes in the file: u64 length of all, u32 frames, then the frames. A frame is its length (u64) and a
// block. The first block holds the fields, each of the others some rows: their number, their names, then
// column after column.

namespace {

constexpr uint64_t kHead = 12;
constexpr uint64_t kFrameHead = 8;
constexpr size_t kBlockBytes = size_t(2) << 20;
/// Guess of the bytes of a value, to choose how many rows a block gets.
constexpr size_t kValueBytes = 12;

using Column = ZvAttributeColumn;

bool WriteFrame(ZvNativeDesc& desc, const std::vector<uint8_t>& content) {
    const uint64_t start = desc.Native().StoreRecordStart();
    if (!desc.WriteValue(uint64_t(0)))
        return false;
    desc.Native().StartCompressBlock();
    desc.Write(content.data(), content.size());
    if (!desc.Native().EndCompressBlock())
        return false;
    desc.Native().WriteRecordLength64(start);
    return true;
}

/// A column of a block: its bytes (u64), a bit a row for "set", then the values that are set.
void WriteColumn(ZvFieldWriter& out, const Column& column, std::span<const uint32_t> rows) {
    std::vector<uint8_t> bytes((rows.size() + 7) / 8);
    ZvFieldWriter values(bytes);
    for (size_t i = 0; i < rows.size(); ++i) {
        const size_t row = rows[i];
        if (column.IsNull(row))
            continue;
        bytes[i / 8] = uint8_t(bytes[i / 8] | 1 << i % 8);
        switch (column.GetType()) {
        case Column::Type::Int64:
            values.Value(column.GetInt(row));
            break;
        case Column::Type::Double:
            values.Value(column.GetDouble(row));
            break;
        case Column::Type::Bool:
            values.Value(uint8_t(column.GetBool(row)));
            break;
        case Column::Type::Date:
            values.Value(column.GetDate(row).ticks);
            break;
        case Column::Type::String:
        case Column::Type::Binary: {
            const std::string_view text = column.GetBytes(row);
            values.Value(uint32_t(text.size()));
            values.Bytes(text.data(), text.size());
            break;
        }
        }
    }
    out.Value(uint64_t(bytes.size()));
    out.Bytes(bytes.data(), bytes.size());
}

bool ReadBytes(ZvFieldReader& in, Column& column, size_t row) {
    uint32_t size = 0;
    if (!in.Value(size) || size > in.Remaining())
        return false;
    std::string text(size, '\0');
    return in.Bytes(text.data(), size) && column.SetBytes(row, text);
}

bool ReadValue(ZvFieldReader& in, Column& column, size_t row) {
    int64_t whole = 0;
    double number = 0;
    uint8_t flag = 0;
    DateTime date;
    switch (column.GetType()) {
    case Column::Type::Int64:
        return in.Value(whole) && (column.SetInt(row, whole), true);
    case Column::Type::Double:
        return in.Value(number) && (column.SetDouble(row, number), true);
    case Column::Type::Bool:
        return in.Value(flag) && (column.SetBool(row, flag != 0), true);
    case Column::Type::Date:
        return in.Value(date.ticks) && (column.SetDate(row, date), true);
    case Column::Type::String:
    case Column::Type::Binary:
        return ReadBytes(in, column, row);
    }
    return false;
}

bool ReadColumn(ZvFieldReader& in, Column& column, const std::vector<int>& rows) {
    std::vector<uint8_t> bytes;
    in.Field("", bytes, ZvRecordFields::kStored);
    const size_t bits = (rows.size() + 7) / 8;
    if (in.IsShort() || bytes.size() < bits)
        return false;
    ZvFieldReader values(std::span<const uint8_t>(bytes).subspan(bits));
    for (size_t i = 0; i < rows.size(); ++i)
        if (bytes[i / 8] >> i % 8 & 1 && !ReadValue(values, column, size_t(rows[i])))
            return false;
    return true;
}

} // namespace

// --- writing -----------------------------------------------------------------------------------------------

std::vector<uint8_t> ZvAttributeTable::FieldBytes() const {
    std::vector<uint8_t> bytes;
    ZvFieldWriter out(bytes);
    out.Value(uint32_t(m_fields.size()));
    for (const Field& field : m_fields) {
        std::vector<uint8_t> one;
        ZvFieldWriter record(one);
        record.Text(field.name);
        record.Value(uint8_t(field.type));
        record.Value(field.width);
        record.Value(field.precision);
        out.Value(uint64_t(one.size()));
        out.Bytes(one.data(), one.size());
    }
    return bytes;
}

bool ZvAttributeTable::NativeOut(ZvNativeDesc& desc, const std::function<bool(ZvName)>& saved) const {
    std::vector<uint32_t> rows;
    for (size_t row = 0; row < m_names.size(); ++row)
        if (!m_names[row].IsNull() && saved(m_names[row]))
            rows.push_back(uint32_t(row));
    // By name, so that rows which left and came back leave no trace.
    const auto byName = [this](uint32_t a, uint32_t b) { return m_names[a] < m_names[b]; };
    if (!std::is_sorted(rows.begin(), rows.end(), byName))
        std::sort(rows.begin(), rows.end(), byName);
    const size_t perBlock =
        std::clamp<size_t>(kBlockBytes / (m_columns.size() * kValueBytes + 4), 256, 65536);
    const auto blocks = uint32_t((rows.size() + perBlock - 1) / perBlock);

    const uint64_t start = desc.Native().StoreRecordStart();
    bool ok = desc.WriteValue(uint64_t(0)) && desc.WriteValue(uint32_t(1 + blocks)) &&
              WriteFrame(desc, FieldBytes());
    for (size_t at = 0; ok && at < rows.size(); at += perBlock) {
        const std::span<const uint32_t> part(rows.data() + at, std::min(perBlock, rows.size() - at));
        std::vector<uint8_t> bytes;
        ZvFieldWriter out(bytes);
        out.Value(uint32_t(part.size()));
        for (const uint32_t row : part)
            out.Value(m_names[row].value);
        for (const ZvAttributeColumn& column : m_columns)
            WriteColumn(out, column, part);
        ok = WriteFrame(desc, bytes);
    }
    if (ok)
        desc.Native().WriteRecordLength64(start);
    return !ok;
}

// --- reading -----------------------------------------------------------------------------------------------

bool ZvAttributeTable::TakeFields(std::span<const uint8_t> bytes) {
    ZvFieldReader in(bytes);
    uint32_t count = 0;
    if (!in.Value(count) || count > kMaxFields)
        return false;
    for (uint32_t i = 0; i < count; ++i) {
        std::vector<uint8_t> one;
        in.Field("", one, ZvRecordFields::kStored);
        ZvFieldReader record(one);
        Field field;
        uint8_t type = 0;
        if (in.IsShort() || !record.Text(field.name) || !record.Value(type) || type < uint8_t(Type::Int64) ||
            type > uint8_t(Type::Date))
            return false;
        field.type = Type(type);
        record.Value(field.width);
        record.Value(field.precision);
        if (AddField(field) < 0)
            return false;
    }
    return true;
}

bool ZvAttributeTable::TakeRows(std::span<const uint8_t> bytes) {
    ZvFieldReader in(bytes);
    uint32_t count = 0;
    if (!in.Value(count) || count > in.Remaining() / sizeof(uint32_t))
        return false;
    std::vector<int> rows(count);
    bool ok = true;
    for (int& row : rows) {
        uint32_t name = 0;
        in.Value(name);
        row = MakeRow(name);
        ok = ok && row >= 0;
    }
    if (!ok)
        return false;
    for (ZvAttributeColumn& column : m_columns)
        if (!ReadColumn(in, column, rows))
            return false;
    return true;
}

bool ZvAttributeTable::NativeIn(ZvNativeDesc& desc) {
    const uint64_t start = desc.Position();
    uint64_t length = 0;
    uint32_t frames = 0;
    const bool hasHead = desc.ReadValue(length) && desc.ReadValue(frames) && length >= kHead;
    const ZvNativeDesc::RecordScope all(desc, start, hasHead ? length : ~uint64_t(0));
    if (!all.Fits())
        return true;
    bool failed = false;
    bool hasFields = false;
    for (uint32_t i = 0; i < frames && desc.RecordRemaining() >= kFrameHead; ++i) {
        const uint64_t at = desc.Position();
        uint64_t size = 0;
        desc.ReadValue(size);
        const ZvNativeDesc::RecordScope frame(desc, at, std::max(size, kFrameHead));
        if (!frame.Fits() || !desc.Native().StartDecompressBlock()) {
            failed = true;
            continue;
        }
        std::vector<uint8_t> content(size_t(desc.RecordRemaining()));
        desc.Read(content.data(), content.size());
        desc.Native().EndDecompressBlock();
        if (i == 0)
            hasFields = TakeFields(content);
        failed = !(i == 0 ? hasFields : hasFields && TakeRows(content)) || failed;
    }
    return failed;
}
