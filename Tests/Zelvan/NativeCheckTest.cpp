#include "Tests/Support/NativeFiles.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvSelection.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace NativeFiles;

namespace {

ZvNativeOptions Level(int level) {
    ZvNativeOptions options;
    options.compressionLevel = level;
    return options;
}

ZvNativeCheck::Result Check(const Bytes& bytes) {
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    return ZvNativeCheck::Run(*file);
}

std::string Text(const ZvNativeCheck::Result& result) {
    std::string text;
    for (const ZvNativeFinding& f : result.findings)
        text +=
            std::to_string(f.offset) + "+" + std::to_string(f.inner) + " " + f.where + ": " + f.what + "\n";
    return text;
}

Bytes HeadOfLine(uint32_t name) {
    Bytes head;
    Append<uint16_t>(head, 1);
    Append<uint16_t>(head, ZvEntityCode::XLine);
    Append<uint64_t>(head, name);
    return head;
}

/// The sample with a kind that the program does not have, which it keeps as a proxy.
std::unique_ptr<ZvDrawing> WithProxy() {
    ZvNativeOptions plain = Level(0);
    plain.blockDigests = false;
    Bytes bytes = Save(*Sample(), plain);
    Put<uint16_t>(bytes, Find(bytes, HeadOfLine(1)) + 2, uint16_t(999));
    Seal(bytes);
    Loaded loaded = Load(bytes);
    EXPECT_TRUE(dynamic_cast<ZvRawCompound*>(loaded.drawing->GetEntity(1)));
    return std::move(loaded.drawing);
}

/// The sample with everything that a save can hold beside it.
std::unique_ptr<ZvDrawing> WithMore() {
    auto drawing = Sample();
    drawing->Settings().Set("WheelZoomFactor", 3.0);
    drawing->SetCurrentColor(ZvColor(1, 2, 3));
    ZvLayout* layout = drawing->LayoutTable()->InsertNew(XStringW(u"Sheet"));
    layout->Drawing()->Insert(std::make_unique<ZvXLine>(Vec3d{0, 0, 0}, Vec3d{1, 2, 3}));
    ZvAttributeTable& rows = drawing->GetEntity(1)->GetLayer()->Attributes();
    const int column = rows.AddField({u"name", ZvAttributeTable::Type::String});
    rows.Column(column).SetBytes(size_t(rows.MakeRow(1)), "text");
    AddPolylines(*drawing, 4000, 70); // more than one block
    return drawing;
}

} // namespace

TEST(NativeCheck, AcceptsWhateverTheProgramWrites) {
    ZvDrawingSetup bare;
    bare.createDefaults = false;
    const std::unique_ptr<ZvDrawing> drawings[] = {
        std::make_unique<ZvDrawing>(), std::make_unique<ZvDrawing>(bare), Sample(), WithProxy(), WithMore()};
    for (size_t i = 0; i < std::size(drawings); ++i)
        for (int level = 0; level <= 9; ++level)
            for (int mode = 0; mode < 4; ++mode) {
                if (i == 4 && (level % 3 || mode == 2))
                    continue; // large
                ZvNativeOptions options = Level(level);
                ZvSelection some(drawings[i].get());
                for (uint32_t name = 1; name <= 3; ++name)
                    if (const ZvEntity* entity = drawings[i]->GetEntity(name))
                        some.Insert(entity);
                options.preview = options.optionBit1 = mode == 1;
                options.blockDigests = mode != 2;
                options.selectionOnly = mode == 3;
                options.selection = mode == 3 ? &some : nullptr;
                const Bytes bytes = Save(*drawings[i], options);
                const ZvNativeCheck::Result result = Check(bytes);
                EXPECT_TRUE(result.IsSound())
                    << "drawing " << i << ", level " << level << ", mode " << mode << "\n"
                    << Text(result);
                EXPECT_EQ(result.isSolid, level >= 6);
                EXPECT_EQ(result.unknownEntities, i == 3 ? 1u : 0u);
            }
}

TEST(NativeCheck, TellsWhereAHeaderIsDamaged) {
    const struct {
        const char* what;
        size_t field;
        uint64_t value;
    } cases[] = {{"size", 0, 0x100001},  {"signature", 8, 0},  {"length", 20, 1 << 20},
                 {"record head", 28, 0}, {"clients", 36, 103}, {"tables", 44, ~uint64_t(0)},
                 {"settings", 52, 12},   {"digest", 60, 1},    {"solid", 84, uint64_t(1) << 40}};
    const Bytes sound = Save(*Sample(), Level(0));
    for (const auto& c : cases) {
        Bytes bytes = sound;
        Put<uint64_t>(bytes, c.field, c.value);
        if (c.field == 84)
            Put<uint64_t>(bytes, 76, ZvNativeHeader::kFlagSolid);
        if (c.field > 28 && c.field != 60)
            Seal(bytes);
        const ZvNativeCheck::Result result = Check(bytes);
        EXPECT_TRUE(std::any_of(
            result.findings.begin(), result.findings.end(),
            [&](const ZvNativeFinding& f) { return f.offset == c.field && f.inner == 0 && !f.what.empty(); }))
            << c.what << "\n"
            << Text(result);
    }
    for (const size_t cut : {size_t(0), size_t(7), size_t(15), size_t(16), size_t(103)}) {
        const ZvNativeCheck::Result result = Check(Bytes(sound.begin(), sound.begin() + ptrdiff_t(cut)));
        ASSERT_EQ(result.findings.size(), 1u) << cut;
        EXPECT_EQ(result.findings[0].offset, cut < 15 ? 8u : cut) << Text(result);
    }
}

TEST(NativeCheck, TellsWhereBlocksAndRecordsAreDamaged) {
    const struct {
        const char* what;
        size_t at; ///< in the record, its block from 1000 on
        std::function<void(Bytes&, size_t)> damage;
    } cases[] = {
        {"length 0", 0, [](Bytes& b, size_t at) { Put<uint64_t>(b, at, 0); }},
        {"huge length", 0, [](Bytes& b, size_t at) { Put<uint64_t>(b, at, uint64_t(1) << 50); }},
        {"client", 8, [](Bytes& b, size_t at) { Put<uint16_t>(b, at, 77); }},
        {"name", 12, [](Bytes& b, size_t at) { Put<uint64_t>(b, at, uint64_t(1) << 33); }},
        {"header length", 30, [](Bytes& b, size_t at) { Put<uint16_t>(b, at, 65000); }},
        {"marks", 30, [](Bytes& b, size_t at) { b[at + 2] ^= 0x10; }},
        {"vertices", 30, [](Bytes& b, size_t at) { Put<uint32_t>(b, at + 20, 0x7FFFFFFF); }},
        {"parts", 60, [](Bytes& b, size_t at) { Put<uint32_t>(b, at, 5); }},
        {"origin", 64, [](Bytes& b, size_t at) { Put<double>(b, at, std::nan("")); }},
        {"method", 1000, [](Bytes& b, size_t at) { Put<uint32_t>(b, at, 9); }},
        {"lengths", 1004, [](Bytes& b, size_t at) { b[at] ^= 1; }},
        {"block digest", 1020, [](Bytes& b, size_t at) { b[at] ^= 1; }},
    };
    const Bytes sound = Save(*Sample(), Level(0));
    const size_t record = Find(sound, HeadOfLine(1), 104) - 8;
    const std::vector<size_t> blocks = OuterBlocks(sound);
    const size_t block = *(std::upper_bound(blocks.begin(), blocks.end(), record) - 1);
    const uint64_t length = Get<uint64_t>(sound, record);
    for (const auto& c : cases) {
        Bytes bytes = sound;
        const bool inHead = c.at >= 1000;
        c.damage(bytes, inHead ? block + c.at - 1000 : record + c.at);
        if (!inHead)
            SealBlock(bytes, block);
        Seal(bytes);
        const ZvNativeCheck::Result result = Check(bytes);
        const uint64_t inner = inHead ? 0 : record - block - 36;
        EXPECT_TRUE(std::any_of(result.findings.begin(), result.findings.end(),
                                [&](const ZvNativeFinding& f) {
                                    return f.offset == block &&
                                           (inHead ? f.inner == 0
                                                   : f.inner >= inner && f.inner < inner + length);
                                }))
            << c.what << "\n"
            << Text(result);
        EXPECT_FALSE(result.findings.empty() || result.findings[0].loss.empty()) << c.what;
    }
}
