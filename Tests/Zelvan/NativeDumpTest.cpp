#include "Tests/Support/NativeFiles.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeDump.h"
#include "ZvCore/FaultyFile.h"
#include <gtest/gtest.h>
#include <map>

using namespace NativeFiles;

namespace {

std::unique_ptr<ZvDrawing> WithEverything() {
    auto drawing = Sample();
    auto point = std::make_unique<ZvPointEnt>();
    point->SetPosition({1, 2, 3});
    drawing->Insert(std::move(point));
    auto points = std::make_unique<ZvMultiPoint>();
    points->SetLocations(std::vector<Vec3d>{{1, 2, 3}, {4, 5, 6}});
    const ZvName name = drawing->Insert(std::move(points));
    ZvAttributeTable& rows = drawing->GetEntity(name)->GetLayer()->Attributes();
    rows.AddField({XStringW(u"owner"), ZvAttributeColumn::Type::String});
    rows.MakeRow(name);
    return drawing;
}

std::vector<ZvNativeDumpItem> Dump(const Bytes& bytes, uint64_t most = 100) {
    std::vector<ZvNativeDumpItem> items;
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    EXPECT_TRUE(ZvNativeDump::Run(*file, {most}, [&](const ZvNativeDumpItem& item) {
        items.push_back(item);
        return true;
    }));
    return items;
}

const ZvNativeDumpItem* Find(const std::vector<ZvNativeDumpItem>& items, std::string_view label,
                             std::string_view value = {}) {
    for (const ZvNativeDumpItem& item : items)
        if (item.label == label && item.value.find(value) != std::string::npos)
            return &item;
    return nullptr;
}

} // namespace

TEST(NativeDump, TellsFieldsOfEveryPartWithTheirPlaces) {
    for (int level : {0, 3, 6}) {
        ZvNativeOptions options;
        options.compressionLevel = level;
        const auto items = Dump(Save(*WithEverything(), options));
        for (const ZvNativeDumpItem& item : items)
            EXPECT_FALSE(item.isProblem) << item.label << " " << item.value;
        ASSERT_TRUE(Find(items, "format version", "1075"));
        EXPECT_EQ(Find(items, "format version")->offset, 16u);
        EXPECT_TRUE(Find(items, "WheelZoomFactor", "2"));
        EXPECT_TRUE(Find(items, "name", "\"Roads\""));
        EXPECT_TRUE(Find(items, "object", "ZvXLine"));
        EXPECT_TRUE(Find(items, "vertices", "5"));
        EXPECT_TRUE(Find(items, "object", "ZvRawCompound"));
        EXPECT_TRUE(Find(items, "object", "ZvMultiPoint"));
        EXPECT_TRUE(Find(items, "angle"));
        EXPECT_TRUE(Find(items, "fields block"));
        EXPECT_TRUE(Find(items, "client record", "\"Zelvan\""));
        EXPECT_TRUE(Find(items, "object type", "ZvPointEnt"));
        EXPECT_FALSE(Find(items, "further fields")) << "a record's fields are not all told";
    }
}

TEST(NativeDump, BytesOfAStoredFileAreAllAccountedFor) {
    ZvNativeOptions options;
    options.compressionLevel = 0;
    const Bytes bytes = Save(*WithEverything(), options);
    std::vector<bool> told(bytes.size());
    for (const ZvNativeDumpItem& item : Dump(bytes))
        if (item.stream == 0)
            for (uint64_t at = item.offset; at < item.offset + item.length; ++at)
                told[size_t(at)] = true;
    EXPECT_EQ(std::find(told.begin() + 104, told.end(), false) - told.begin(), ptrdiff_t(told.size()));
}

TEST(NativeDump, StopsWhenToldAndLimitsLists) {
    ZvDrawing drawing;
    AddPolylines(drawing, 500, 3);
    const Bytes bytes = Save(drawing);
    size_t few = 0, all = 0;
    for (const ZvNativeDumpItem& item : Dump(bytes, 10))
        few += item.label == "object";
    for (const ZvNativeDumpItem& item : Dump(bytes, 1000))
        all += item.label == "object";
    EXPECT_EQ(few, 10u);
    EXPECT_EQ(all, 500u);
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    int heard = 0;
    ZvNativeDump::Run(*file, {}, [&](const ZvNativeDumpItem&) { return ++heard < 3; });
    EXPECT_EQ(heard, 3);
}

TEST(NativeDump, WhatIsNoDrawingFileIsSaidSo) {
    const Bytes bytes(200, 'x');
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    std::vector<ZvNativeDumpItem> items;
    EXPECT_FALSE(ZvNativeDump::Run(*file, {}, [&](const ZvNativeDumpItem& item) {
        items.push_back(item);
        return true;
    }));
    ASSERT_EQ(items.size(), 1u);
    EXPECT_TRUE(items[0].isProblem);
}

TEST(NativeCheck, CountsWhatItFindsAndReadsStreamsThatShowNoBytes) {
    const auto drawing = WithEverything();
    const Bytes bytes = Save(*drawing);
    const auto inner = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    ZvCore::FaultyFile file(*inner, 0);
    file.Seek(11);
    const ZvNativeCheck::Result result = ZvNativeCheck::Run(file);
    EXPECT_TRUE(result.IsSound());
    EXPECT_EQ(file.Position(), 11u);
    EXPECT_EQ(result.entities, uint64_t(drawing->NameTable().Count()) + 2)
        << "the compound's children count, too";
    EXPECT_EQ(result.unknownEntities, 0u);
    EXPECT_EQ(result.version, 1075);
    EXPECT_TRUE(result.hasDigest);
    EXPECT_GT(result.records, 10u);
    EXPECT_GT(result.blocks, 10u);
}

TEST(NativeCheck, SaysWhereWhatAndWhatWouldBeLost) {
    ZvNativeOptions options;
    options.compressionLevel = 0;
    Bytes bytes = Save(*Sample(), options);
    const std::vector<size_t> blocks = OuterBlocks(bytes);
    const size_t layers = blocks[blocks.size() - 3];
    bytes[layers + 36] ^= 0xFF;
    Seal(bytes);
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    const ZvNativeCheck::Result result = ZvNativeCheck::Run(*file);
    ASSERT_FALSE(result.findings.empty());
    EXPECT_EQ(result.findings[0].offset, layers);
    EXPECT_TRUE(result.findings[0].where.starts_with("tables/")) << result.findings[0].where;
    EXPECT_FALSE(result.findings[0].loss.empty());
    const ZvNativeCheck::Result one = ZvNativeCheck::Run(*file, {true, 1, nullptr});
    EXPECT_EQ(one.findings.size(), 1u);
    const ZvNativeCheck::Result quick = ZvNativeCheck::Run(*file, {false, 1000, nullptr});
    EXPECT_LT(quick.findings.size(), result.findings.size());
}
