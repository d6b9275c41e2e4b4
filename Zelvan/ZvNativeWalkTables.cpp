#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvNativeWalk.h"
#include "ZvCore/Guid.h"
#include <algorithm>

// The tables section as ZvTableTable writes it: a head, then a frame for each table with the table's own fields, its records in
// groups, and the contents of its records.

namespace {

constexpr uint32_t kSectionHead = 16;
constexpr uint32_t kLargestSectionHead = 4096;
constexpr uint64_t kFrameHead = 24;
constexpr uint64_t kGroupHead = 12;
constexpr uint64_t kContentsHead = 12;
constexpr uint64_t kRecordHead = 8;
constexpr uint64_t kAttributesHead = 12;
constexpr int kDeepestSection = 4; // layouts have drawings of their own, which have none

struct TableName {
    uint16_t code;
    const char* name;
};
constexpr TableName kTables[] = {
    {ZvTableCode::Bitmap, "bitmaps"},
    {ZvTableCode::LineType, "line types"},
    {ZvTableCode::Block, "blocks"},
    {ZvTableCode::TextStyle, "text styles"},
    {ZvTableCode::Program, "programs"},
    {ZvTableCode::Texture, "textures"},
    {ZvTableCode::DimStyle, "dim styles"},
    {ZvTableCode::Layer, "layers"},
    {ZvTableCode::Paper, "paper"},
    {ZvTableCode::Ucs, "UCS"},
    {ZvTableCode::XRef, "xrefs"},
    {ZvTableCode::Data, "data"},
    {ZvTableCode::Layout, "layouts"},
    {ZvTableCode::View, "views"},
    {ZvTableCode::SelectionVolume, "selection volumes"},
};

std::string NameOf(uint32_t fullCode) {
    for (const TableName& table : kTables)
        if (ZvTableCode::Full(table.code) == fullCode)
            return table.name;
    return "table " + std::to_string(fullCode >> 16) + ":" + std::to_string(fullCode & 0xFFFF);
}

bool IsKnown(uint32_t fullCode) {
    return std::any_of(std::begin(kTables), std::end(kTables),
                       [&](const TableName& table) { return ZvTableCode::Full(table.code) == fullCode; });
}

} // namespace

void ZvNativeWalk::Tables(ZvNativeCursor cursor) {
    const Level level(*this, "tables");
    TablesSection(cursor);
}

void ZvNativeWalk::TablesSection(ZvNativeCursor& cursor) {
    const ZvNativeCursor start = cursor;
    uint32_t size = 0, tables = 0;
    uint64_t entities = 0;
    if (!Number(cursor, "head size", size) || !Number(cursor, "tables", tables) ||
        !Number(cursor, "objects in the drawing", entities) || size < kSectionHead ||
        size > kLargestSectionHead || size > start.Left()) {
        Problem(start, "the head of the tables section is damaged", "all tables and objects");
        return;
    }
    cursor = start;
    cursor.Skip(size);
    ++m_sectionDepth;
    for (uint32_t i = 0; i < tables && !m_cancelled && !m_visitor.Stopped(); ++i)
        if (!Frame(cursor, i, tables))
            break;
    --m_sectionDepth;
}

bool ZvNativeWalk::Frame(ZvNativeCursor& cursor, uint32_t number, uint32_t tables) {
    const ZvNativeCursor start = cursor;
    uint64_t length = 0, contents = 0;
    uint32_t code = 0, records = 0;
    ZvNativeCursor head = cursor;
    if (!head.Read(length) || !head.Read(code) || !head.Read(records) || !head.Read(contents) ||
        length < kFrameHead || length > start.Left()) {
        Problem(start, "the frame of table " + std::to_string(number) + " is damaged",
                std::to_string(tables - number) + " tables and their objects");
        return false;
    }
    cursor.Skip(length);
    const Level level(*this, NameOf(code));
    Tell(start, length, "table",
         std::to_string(records) + " records, contents at " + std::to_string(contents) + " of the frame");
    if (!IsKnown(code)) {
        Tell(start, length, "unknown table", "kept as it is");
        return true;
    }
    const ZvNativeCursor whole = start.Part(length);
    if (contents && (contents < kFrameHead || contents > length)) {
        Problem(start.Stream(), start.At() + 16, "the contents are said to begin outside of the frame",
                "the objects of this table");
        contents = 0;
    }
    ZvNativeCursor fields = contents ? start.Part(contents) : whole;
    fields.Skip(kFrameHead);
    if (OpenBlock(fields, "table fields", "the table's own fields"))
        CloseBlock();
    uint32_t seen = 0;
    while (fields.Left() && Group(fields, code, seen) && !m_cancelled)
        ;
    if (seen != records)
        Problem(start.Stream(), start.At() + 12,
                std::to_string(records) + " records are stated, " + std::to_string(seen) + " were found",
                "records that are missing");
    if (contents) {
        ZvNativeCursor held = whole;
        held.Skip(contents);
        while (held.Left() && Contents(held, code) && !m_cancelled && !m_visitor.Stopped())
            ;
    }
    return true;
}

bool ZvNativeWalk::Group(ZvNativeCursor& cursor, uint32_t code, uint32_t& seen) {
    const ZvNativeCursor start = cursor;
    uint64_t length = 0;
    uint32_t count = 0;
    if (!Number(cursor, "group length", length) || !Number(cursor, "group records", count) ||
        length < kGroupHead || length > start.Left()) {
        Problem(start, "the head of a group of records is damaged", "the records from here on");
        return false;
    }
    ZvNativeCursor part = start.Part(length);
    part.Skip(kGroupHead);
    cursor = start;
    cursor.Skip(length);
    const ZvNativeStream* stream = OpenBlock(part, "records block", "the records of this block");
    if (!stream)
        return true;
    ZvNativeCursor content(*stream, 0, stream->size);
    for (uint32_t i = 0; i < count && TableRecord(content, code, i); ++i)
        ++seen;
    CloseBlock();
    return true;
}

bool ZvNativeWalk::TableRecord(ZvNativeCursor& cursor, uint32_t code, uint32_t number) {
    const ZvNativeCursor start = cursor;
    uint64_t length = 0;
    ZvNativeCursor head = cursor;
    const Level level(*this, "record " + std::to_string(number));
    if (!head.Read(length) || length < kRecordHead || length > start.Left()) {
        Problem(start, "the length of the record cannot be true",
                "this record and those behind it in the group");
        return false;
    }
    cursor.Skip(length);
    m_visitor.TableRecord();
    ZvNativeCursor body = start.Part(length);
    body.Skip(kRecordHead);
    Tell(start, length, "record", std::to_string(length) + " bytes");
    int32_t index = 0;
    uint32_t id = 0;
    uint16_t flags = 0;
    Guid guid;
    if (!Number(body, "index", index) || !Number(body, "id", id) || !Number(body, "flags", flags) ||
        body.Left() < sizeof guid.bytes) {
        Problem(body, "the record ends in its head", "this record");
        return true;
    }
    std::memcpy(guid.bytes.data(), body.Here(), sizeof guid.bytes);
    Tell(body, sizeof guid.bytes, "guid", guid.ToString().ToUtf8());
    body.Skip(sizeof guid.bytes);
    if (!String(body, "name")) {
        Problem(body, "the name does not fit the record", "this record");
        return true;
    }
    if (WantsFields())
        RecordFields(body, code);
    return true;
}

bool ZvNativeWalk::Contents(ZvNativeCursor& cursor, uint32_t code) {
    const ZvNativeCursor start = cursor;
    uint64_t length = 0;
    int32_t index = 0;
    ZvNativeCursor head = cursor;
    if (!head.Read(length) || !head.Read(index) || length < kContentsHead || length > start.Left()) {
        Problem(start, "the frame of a record's contents is damaged", "the contents from here on");
        return false;
    }
    cursor.Skip(length);
    const Level level(*this, "contents of " + std::to_string(index));
    Tell(start, length, "contents", std::to_string(length) + " bytes");
    ZvNativeCursor held = start.Part(length);
    held.Skip(kContentsHead);
    if (code == ZvTableCode::Full(ZvTableCode::Layout)) {
        if (m_sectionDepth < kDeepestSection)
            TablesSection(held);
        else
            Problem(held, "drawings of layouts nest too deep", "this layout");
    } else {
        EntityChunks(held);
    }
    if (code == ZvTableCode::Full(ZvTableCode::Layer))
        Attributes(held);
    return true;
}

/// What ZvAttributeTable writes: a length, a number of frames, and in each frame a block; the first one names the fields.
void ZvNativeWalk::Attributes(ZvNativeCursor& cursor) {
    const Level level(*this, "attributes");
    const ZvNativeCursor mark = cursor;
    const char* loss = "the attributes of this layer's objects";
    uint8_t has = 0;
    if (!Number(cursor, "has attributes", has)) {
        Problem(mark, "the contents end before the mark for attributes", loss);
        return;
    }
    if (!has)
        return;
    const ZvNativeCursor start = cursor;
    uint64_t length = 0;
    uint32_t frames = 0;
    if (!Number(cursor, "attributes length", length) || !Number(cursor, "frames", frames) ||
        length < kAttributesHead || length > start.Left()) {
        Problem(start, "the head of the attributes is damaged", loss);
        return;
    }
    ZvNativeCursor all = start.Part(length);
    all.Skip(kAttributesHead);
    for (uint32_t i = 0; i < frames; ++i) {
        const ZvNativeCursor frame = all;
        uint64_t size = 0;
        if (!Number(all, "frame length", size) || size < sizeof size || size > frame.Left()) {
            Problem(frame, "the length of a frame cannot be true", "the attributes from here on");
            return;
        }
        ZvNativeCursor content = frame.Part(size);
        content.Skip(sizeof size);
        all = frame;
        all.Skip(size);
        if (OpenBlock(content, i ? "rows block" : "fields block", i ? "the rows of this block" : loss))
            CloseBlock();
    }
}
