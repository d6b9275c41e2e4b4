#include "TextGeometry.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"
#include "ZvCore/MemFile.h"
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

struct Stream {
    ZvDrawing drawing;
    ZvCore::MemFile bytes;
    ZvNativeFile file;

    Stream() { file.Attach(drawing, bytes); }
    ZvNativeDesc& Desc() { return file.Desc(); }
};

std::vector<uint8_t> Record(const ZvXLine& line) {
    Stream s;
    EXPECT_FALSE(line.NativeOut(s.Desc()));
    return {s.bytes.Data(), s.bytes.Data() + s.bytes.Length()};
}

/// Reads the record; true on success. Something else follows it in the stream.
bool Read(std::vector<uint8_t> record, ZvXLine& line, bool fitLength = false) {
    Stream s;
    const uint64_t length = record.size();
    if (fitLength)
        std::memcpy(record.data(), &length, 8);
    if (fitLength)
        record.resize(record.size() + 100, 0x55);
    s.bytes.Write(record.data(), record.size());
    s.bytes.Seek(0);
    const bool failed = line.NativeIn(s.Desc());
    line.DeserializeHard();
    return !failed;
}

template <class T>
T At(const std::vector<uint8_t>& bytes, size_t at) {
    T value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

template <class T>
void Put(std::vector<uint8_t>& bytes, size_t at, T value) {
    if (bytes.size() < at + sizeof value)
        bytes.resize(at + sizeof value);
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

const char* kSixteen =
    "0,0,1 1,1,2 2,0,3 3,1,4 4,0,5 5,1,6 6,0,7 7,1,8; 8,0,9 9,1,8 10,0,7 11,1,6 12,0,5 13,1,4 "
    "14,0,3 15,1,2 close";

/// A record of an older kind: head, header, then whatever follows.
struct OldRecord {
    std::vector<uint8_t> bytes;
    size_t header;

    OldRecord(uint16_t code, uint16_t headerLength, float width, int16_t type) {
        ZvNativeRecordHead head;
        head.client = 1, head.type = code, head.name = 77, head.colorIndex = 4;
        bytes.resize(ZvNativeRecordHead::kSize);
        head.Store(bytes.data());
        header = bytes.size();
        bytes.resize(header + headerLength);
        Put(bytes, header, headerLength);
        Put(bytes, header + 2, type);
        Put(bytes, header + 4, width);
    }
    void Counted(uint32_t flags, uint32_t parts, uint32_t verts) {
        Put(bytes, header + 8, flags);
        Put(bytes, header + 12, 0x112233u);
        Put(bytes, header + 16, int16_t(-1));
        Put(bytes, header + 18, int16_t(-4));
        Put(bytes, header + 20, parts);
        Put(bytes, header + 24, verts);
    }
    template <class T>
    OldRecord& operator<<(T value) {
        Put(bytes, bytes.size(), value);
        return *this;
    }
};

std::unique_ptr<ZvXLine> ReadOld(const OldRecord& record, uint16_t code) {
    for (const ZvXLine::OldKind& kind : ZvXLine::OldKinds())
        if (kind.entityCode == code) {
            std::unique_ptr<ZvEntity> entity = kind.make();
            if (!Read(record.bytes, *entity->ToXLine(), true))
                return nullptr;
            return std::unique_ptr<ZvXLine>(static_cast<ZvXLine*>(entity.release()));
        }
    return nullptr;
}

} // namespace

TEST(XLineNative, RecordHasTheStatedFieldsAndTheBlockAsItLies) {
    auto line = PolygonFromText("0,0 9,0 9,9 4,2");
    line->SetLineWidth(ZvLineWidth::World(2.5));
    line->SetLineType(ZvLineType(3));
    line->SetBrush(ZvBrush::Solid(ZvColor(1, 2, 3)));
    line->TriangulateIfNecessary();
    const std::vector<uint8_t> r = Record(*line);
    ASSERT_EQ(r.size(), 30 + 30 + line->BytesOfPureData());
    EXPECT_EQ(At<uint64_t>(r, 0), r.size());
    EXPECT_EQ(At<uint16_t>(r, 10), 35);
    EXPECT_EQ(At<uint16_t>(r, 30), 30);
    EXPECT_EQ(r[32], 1);
    EXPECT_EQ(At<int8_t>(r, 33), 4);
    EXPECT_EQ(At<int16_t>(r, 36), 3);
    EXPECT_EQ(At<float>(r, 38), 2.5f);
    EXPECT_EQ(At<uint32_t>(r, 42), 0x030201u);
    EXPECT_EQ(At<int16_t>(r, 46), -1);
    EXPECT_EQ(At<int16_t>(r, 48), -4);
    EXPECT_EQ(At<uint32_t>(r, 50), 4u);
    EXPECT_EQ(At<int8_t>(r, 54), line->MicroBoundsLo());
    EXPECT_EQ(At<uint32_t>(r, 56), 1u);
    EXPECT_EQ(std::memcmp(&r[60], line->PureData(), line->BytesOfPureData()), 0);
    EXPECT_EQ(Record(*LineFromText("0,0 1,0", 1))[32], 0x90) << "both bits of the 64-bit mode";
    std::vector<uint8_t> flat(line->SerializeHardSize());
    EXPECT_FALSE(line->SerializeHard(flat.data(), flat.size() - 1));
    ASSERT_TRUE(line->SerializeHard(flat.data(), flat.size()));
    EXPECT_EQ(flat, r);
}

TEST(XLineNative, RoundTripGivesTheSameBytes) {
    for (int mode : {-1, 1})
        for (const char* text : {"", "0,0 1,0", "1,2,3,4 5,6,7,8 9,9,9,9 close", kSixteen})
            for (bool polygon : {false, true}) {
                ZvXLine line, back;
                SetFromText(line, text, polygon, mode);
                line.EnsureDepths();
                const std::vector<uint8_t> record = Record(line);
                ASSERT_TRUE(Read(record, back)) << text;
                EXPECT_EQ(Record(back), record) << text;
                EXPECT_TRUE(back.IsGeometryEqual(line));
                EXPECT_EQ(back.IBounds3D(), line.IBounds3D());
            }
}

TEST(XLineNative, LongerHeadersAreSkippedAndShorterOnesPadded) {
    std::vector<uint8_t> longer = Record(*LineFromText("0,0 1,0 2,5"));
    longer.insert(longer.begin() + 60, {1, 2, 3, 4, 5});
    Put(longer, 30, uint16_t(35));
    ZvXLine line;
    ASSERT_TRUE(Read(longer, line, true));
    EXPECT_EQ(line.NumVerts(), 3u);
    std::vector<uint8_t> shorter = Record(ZvXLine());
    shorter.erase(shorter.begin() + 30 + 20, shorter.end());
    Put(shorter, 30, uint16_t(20));
    EXPECT_TRUE(Read(shorter, line, true));
    EXPECT_EQ(line.NumVerts(), 0u);
}

TEST(XLineNative, ContradictingRecordsFail) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* what;
        int mode;
        std::function<void(std::vector<uint8_t>&)> damage;
    } cases[] = {
        {"header length 0", -1, [](auto& r) { Put(r, 30, uint16_t(0)); }},
        {"header length past the end", -1, [](auto& r) { Put(r, 30, uint16_t(60000)); }},
        {"64-bit flag once", -1, [](auto& r) { r[32] |= 0x10; }},
        {"64-bit flags taken away", 1, [](auto& r) { r[32] &= 0x6F; }},
        {"dimension added", -1, [](auto& r) { r[32] |= 4; }},
        {"more vertices than bytes", -1, [](auto& r) { Put(r, 50, 17u); }},
        {"fewer vertices than bytes", -1, [](auto& r) { Put(r, 50, 15u); }},
        {"huge vertex count", -1, [](auto& r) { Put(r, 50, 0xFFFFFFFFu); }},
        {"huge part count", -1, [](auto& r) { Put(r, 56, 0xFFFFFFFFu); }},
        {"no parts", -1, [](auto& r) { Put(r, 56, 0u); }},
        {"first part not at 0", -1, [](auto& r) { Put(r, 60, 2u); }},
        {"part past the vertices", -1, [](auto& r) { Put(r, 64, 16u); }},
        {"part at vertex 1", -1, [](auto& r) { Put(r, 64, 1u); }},
        {"unused bit in a part", -1, [](auto& r) { Put(r, 64, 0x40000008u); }},
        {"origin not a number", -1, [nan](auto& r) { Put(r, 68, nan); }},
        {"64-bit vertex not a number", 1, [nan](auto& r) { Put(r, r.size() - 8, nan); }},
        {"64-bit bounds infinite", 1, [](auto& r) { Put(r, 68, INFINITY * 1.0); }},
        {"cut", -1, [](auto& r) { r.pop_back(); }},
        {"cut in the header", -1, [](auto& r) { r.resize(45); }},
        {"cut in the head", -1, [](auto& r) { r.resize(12); }},
    };
    for (const auto& c : cases) {
        std::vector<uint8_t> record = Record(*LineFromText(kSixteen, c.mode));
        c.damage(record);
        ZvXLine line;
        EXPECT_FALSE(Read(record, line)) << c.what;
        EXPECT_FALSE(Read(record, line, true)) << c.what;
        EXPECT_EQ(line.BytesOfData(), 0u) << c.what;
    }
    std::vector<uint8_t> harmless = Record(*LineFromText(kSixteen));
    harmless[32] |= 0x40;
    Put(harmless, 38, float(NAN));
    ZvXLine line;
    EXPECT_TRUE(Read(harmless, line)) << "bit 6 is ignored";
    EXPECT_EQ(line.GetLineWidth(), ZvLineWidth::Thin());
}

TEST(XLineNative, RandomDamageNeverBreaksTheReader) {
    std::mt19937 random(99);
    for (int round = 0; round < 4000; ++round) {
        std::vector<uint8_t> record = Record(*LineFromText(kSixteen, round % 2 ? 1 : -1));
        for (int k = 1 + int(random() % 4); k > 0; --k)
            record[30 + random() % (round % 3 ? 46 : record.size() - 30)] = uint8_t(random());
        if (round % 5 == 0)
            record.resize(30 + random() % (record.size() - 30));
        ZvXLine line;
        if (!Read(record, line, true))
            continue;
        // What was accepted can be used.
        line.GetArea();
        line.ClipTest({1, 1, 2, 2});
        line.DistanceToV({{1, 1, 1}, {0, 0, -1}}, nullptr);
        line.OkForInsertion(nullptr);
    }
}

TEST(XLineNative, OldKindsBecomePolylines) {
    OldRecord segment(1, 56, 1.5f, 2);
    for (int i = 0; i < 6; ++i)
        Put(segment.bytes, segment.header + 8 + size_t(i) * 8, i + 1.0);
    auto line = ReadOld(segment, 1);
    ASSERT_NE(line, nullptr);
    EXPECT_TRUE(line->IsLine() && line->HasZ());
    EXPECT_EQ(line->Name32(), 77u);
    EXPECT_EQ(line->GetColor(), ZvColor(4));
    EXPECT_EQ(line->GetLineWidth().Raw(), 1.5f);
    EXPECT_EQ(line->GetLineType(), ZvLineType(2));

    OldRecord ring(4, 28, 0, -1);
    ring.Counted(1 | 4, 0, 3);
    for (int i = 0; i < 9; ++i)
        ring << double(i * i);
    line = ReadOld(ring, 4);
    ASSERT_NE(line, nullptr);
    EXPECT_TRUE(line->PClosed(0) && line->HasM() && !line->HasZ() && !line->IsPolygon());
    EXPECT_NEAR(line->Unpack(line->GetFlt(), 2).w, 64, 1e-6);

    for (const uint16_t code : {uint16_t(6), uint16_t(7), uint16_t(13), uint16_t(15)}) {
        const bool table = code != 6, polygon = code != 13;
        OldRecord many(code, 28, 0, -1);
        many.Counted(0, 2, 6);
        if (table)
            many << uint32_t(0) << uint32_t(0x80000003u);
        for (int i = 0; i < 6; ++i)
            many << double(i % 3) << double(i % 3 == 1);
        line = ReadOld(many, code);
        ASSERT_NE(line, nullptr) << code;
        EXPECT_EQ(line->IsPolygon(), polygon);
        EXPECT_EQ(line->NumParts(), table ? 2u : 1u);
        EXPECT_EQ(line->PClosed(0), polygon);
        EXPECT_TRUE(polygon || line->PClosed(1));
        EXPECT_EQ(line->GetBrush(), ZvBrush::Solid(ZvColor(0x33, 0x22, 0x11)));
        many.bytes.pop_back();
        EXPECT_EQ(ReadOld(many, code), nullptr) << "cut short";
        many << uint8_t(0);
        Put(many.bytes, many.header + 28, table ? 7u : 0x7FF80000u);
        if (table) {
            EXPECT_EQ(ReadOld(many, code), nullptr) << "first part not at 0";
        }
    }
}
