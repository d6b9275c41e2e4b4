#include "Tests/Support/NativeFiles.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvDataTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvPreviewBitmap.h"
#include "Zelvan/ZvSelection.h"
#include "ZvCore/Version.h"
#include <gtest/gtest.h>

using namespace NativeFiles;

namespace {

ZvNativeOptions Level(int level, bool digests = true) {
    ZvNativeOptions options;
    options.compressionLevel = level;
    options.blockDigests = digests;
    return options;
}

std::string Findings(const Bytes& bytes) {
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    std::string text;
    for (const ZvNativeFinding& finding : ZvNativeCheck::Run(*file).findings)
        text += std::to_string(finding.offset) + "+" + std::to_string(finding.inner) + " " + finding.where +
                ": " + finding.what + "\n";
    return text;
}

} // namespace

class NativeRoundTrip : public testing::TestWithParam<std::tuple<int, bool, bool>> {};

TEST_P(NativeRoundTrip, NothingIsLostAndTheFileIsSound) {
    const auto [level, digests, threads] = GetParam();
    const auto drawing = Sample();
    ZvNativeOptions options = Level(level, digests);
    options.threads = threads;
    const Bytes bytes = Save(*drawing, options);
    ASSERT_FALSE(bytes.empty());
    EXPECT_EQ(Findings(bytes), "");
    const Loaded loaded = Load(bytes, options);
    EXPECT_TRUE(loaded.Ok());
    EXPECT_EQ(loaded.errors.ToString(), "");
    EXPECT_EQ(Census(*loaded.drawing), Census(*drawing));
    EXPECT_EQ(loaded.drawing->Settings().GetDouble("WheelZoomFactor", 0), 2.0);
    EXPECT_EQ(loaded.drawing->DataTable()->GetString(XStringW(u"Note")), XStringW(u"surveyed in spring"));
    EXPECT_EQ(Save(*drawing, options), bytes) << "same drawing, same options, other bytes";
}

INSTANTIATE_TEST_SUITE_P(Modes, NativeRoundTrip,
                         testing::Combine(testing::Range(0, 10), testing::Bool(), testing::Bool()));

TEST(NativeFile, ThreadsDoNotChangeTheBytes) {
    const auto drawing = Sample();
    AddPolylines(*drawing, 60000, 4); // some blocks
    for (int level : {0, 3}) {
        ZvNativeOptions with = Level(level), without = Level(level);
        without.threads = false;
        const Bytes bytes = Save(*drawing, with);
        EXPECT_GT(OuterBlocks(bytes).size(), 8u);
        EXPECT_EQ(bytes, Save(*drawing, without));
        EXPECT_EQ(Save(*Load(bytes, with).drawing), Save(*Load(bytes, without).drawing));
        EXPECT_EQ(Findings(bytes), "");
    }
}

TEST(NativeFile, HeaderSaysWhatWasWritten) {
    const auto drawing = Sample();
    ZvNativeOptions options = Level(0);
    options.optionBit1 = true;
    const Bytes bytes = Save(*drawing, options);
    ZvNativeHeader header;
    header.Parse(bytes.data());
    EXPECT_EQ(header.version, 1075);
    EXPECT_EQ(header.minimumReader, 1070);
    EXPECT_EQ(header.length, bytes.size());
    EXPECT_EQ(header.entityHeadSize, 30u);
    EXPECT_EQ(header.settingsOffset, 104u);
    EXPECT_EQ(header.flags, 2u);
    EXPECT_EQ(header.buildStamp, ZvCore::Version::BuildStamp());
    EXPECT_EQ(Load(bytes).drawing->FileDate().ticks, ZvCore::Version::BuildStamp());
}

TEST(NativeFile, SolidOuterHeaderHasFlagsOneEvenWhenBitOneWasAsked) {
    ZvNativeOptions options = Level(6);
    options.optionBit1 = true;
    const Bytes bytes = Save(*Sample(), options);
    ZvNativeHeader header;
    header.Parse(bytes.data());
    EXPECT_EQ(header.flags, 1u);
    EXPECT_EQ(header.solidOffset, 104u);
    EXPECT_EQ(header.length, bytes.size());
    ASSERT_TRUE(header.HasDigest());
    ZvNativeBlockHead body;
    body.Parse(bytes.data() + 104);
    EXPECT_TRUE(body.HasDigest());
    EXPECT_EQ(body.method, uint32_t(ZvNativeBlockHead::Zlib));
    EXPECT_EQ(OuterBlocks(bytes).size(), 1u);
}

TEST(NativeFile, BlocksOfFewerThan31BytesAreStored) {
    ZvDrawing drawing;
    ZvCore::MemFile file;
    for (size_t count : {30u, 31u}) {
        file.Seek(0);
        ZvNativeFile native(Level(3));
        native.Attach(drawing, file);
        native.StartCompressBlock();
        native.Desc().Write(std::string(count, 'a').data(), count);
        EXPECT_TRUE(native.EndCompressBlock());
        ZvNativeBlockHead head;
        head.Parse(file.Data());
        EXPECT_EQ(head.method, count < 31 ? 0u : 1u);
        EXPECT_EQ(head.length, count);
    }
}

TEST(NativeFile, OnlyTheOutermostBlockIsCompressedAndDigested) {
    ZvDrawing drawing;
    ZvCore::MemFile file;
    ZvNativeFile native(Level(0));
    native.Attach(drawing, file);
    native.StartCompressBlock();
    native.StartCompressBlock();
    native.WriteString(std::string(100, 'x').c_str());
    EXPECT_TRUE(native.EndCompressBlock(true));
    EXPECT_TRUE(native.EndCompressBlock(false));
    ZvNativeBlockHead outer, inner;
    outer.Parse(file.Data());
    inner.Parse(file.Data() + 36);
    EXPECT_TRUE(outer.HasDigest());
    EXPECT_FALSE(inner.HasDigest());
    file.Seek(0);
    ASSERT_TRUE(native.StartDecompressBlock());
    ASSERT_TRUE(native.SkipCompressedBlock());
    EXPECT_EQ(native.Desc().Position(), 36u + 105u);
    native.EndDecompressBlock();
    EXPECT_EQ(native.Desc().Position(), file.Length());
}

TEST(NativeFile, ErasedEntitiesAreNotSaved) {
    const auto drawing = Sample();
    ZvEntity* entity = drawing->NameTable().NextNonErased(nullptr);
    const std::string before = Census(*Load(Save(*drawing)).drawing);
    entity->SetErased(true);
    const Loaded loaded = Load(Save(*drawing));
    EXPECT_TRUE(loaded.Ok());
    EXPECT_EQ(loaded.drawing->GetEntity(entity->Name32()), nullptr);
    EXPECT_NE(Census(*loaded.drawing), before);
}

TEST(NativeFile, ASavedSelectionHoldsItsEntitiesAndWhatTheyUse) {
    const auto drawing = Sample();
    ZvSelection selection(drawing.get());
    const ZvLayer* roads = drawing->LayerTable()->GetByName(XStringW(u"Roads"));
    roads->Tree().ForEach([&](ZvEntity* entity) { selection.Insert(entity); });
    ASSERT_GT(selection.Count(), 0);
    ZvNativeOptions options;
    options.selectionOnly = true;
    options.selection = &selection;
    const Bytes bytes = Save(*drawing, options);
    EXPECT_EQ(Findings(bytes), "");
    const Loaded loaded = Load(bytes);
    EXPECT_TRUE(loaded.Ok());
    EXPECT_EQ(loaded.drawing->NameTable().Count(), selection.Count());
    EXPECT_NE(loaded.drawing->LayerTable()->GetByName(XStringW(u"Roads")), nullptr);
    EXPECT_EQ(loaded.drawing->LayerTable()->GetByName(XStringW(u"Gew\u00E4sser")), nullptr);
    for (uint32_t name : selection.Names())
        EXPECT_TRUE(loaded.drawing->NameTable().Exists(name));
}

TEST(NativeFile, LayoutsKeepTheirDrawings) {
    const auto drawing = Sample();
    ZvLayout* layout = drawing->LayoutTable()->InsertNew(XStringW(u"Sheet 1"));
    ASSERT_TRUE(layout && layout->Drawing());
    auto line = std::make_unique<ZvXLine>(Vec3d{0, 0, 0}, Vec3d{3, 4, 0});
    layout->Drawing()->Insert(std::move(line));
    for (int level : {0, 3, 6}) {
        const Bytes bytes = Save(*drawing, Level(level));
        EXPECT_EQ(Findings(bytes), "");
        const Loaded loaded = Load(bytes);
        EXPECT_TRUE(loaded.Ok()) << loaded.errors.ToString();
        ZvLayout* back = loaded.drawing->LayoutTable()->GetByName(XStringW(u"Sheet 1"));
        ASSERT_TRUE(back && back->Drawing());
        EXPECT_EQ(back->Drawing()->NameTable().Count(), 1);
        EXPECT_NE(back->GetPage(), nullptr);
    }
}

TEST(NativeFile, AMergeAddsWithoutTakingNames) {
    const Bytes bytes = Save(*Sample());
    const auto drawing = Sample();
    const int before = drawing->NameTable().Count();
    ZvMergeProfile profile;
    ZvNativeOptions options;
    options.merge = &profile;
    ZvNativeFile native(options);
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    const ZvEntity* first = drawing->NameTable().NextNonErased(nullptr);
    EXPECT_TRUE(Zv::Ok(native.ReadFile(drawing.get(), file.get())));
    // Entities of layers join; those of the block stay with the block that is there already.
    EXPECT_EQ(drawing->NameTable().Count(), 2 * before - 1);
    EXPECT_EQ(drawing->NameTable().NextNonErased(nullptr), first);
}

TEST(NativeFile, ThePreviewComesBackWithTheDescription) {
    const auto drawing = Sample();
    ZvNativeOptions options;
    options.preview = true;
    options.previewRenderer = [](ZvDrawing&, ZvPreviewBitmap& bitmap) {
        bitmap.pixels[5] = 0x123456;
        return true;
    };
    const Bytes bytes = Save(*drawing, options);
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    ZvPreviewBitmap bitmap;
    XStringW text;
    ASSERT_TRUE(ZvNativeFile::GetPreviewBitmap(file.get(), &text, bitmap));
    EXPECT_EQ(bitmap.width, int(ZvPreviewBitmap::kSide));
    EXPECT_EQ(bitmap.pixels[5], 0x123456u);
    EXPECT_TRUE(text.StartsWith(u"Author: A. Surveyor\r\nCreated:\r\n  2020-02-29")) << text.ToUtf8();
    EXPECT_TRUE(text.EndsWith(u"Version: 1075\r\n")) << text.ToUtf8();
}

TEST(NativeFile, ACancelledLoadLeavesAnEmptyDrawing) {
    struct StopAt final : ZvCore::IProgress {
        bool Step(std::string_view what, uint64_t, uint64_t) override {
            return what != "Loading" || --left > 0;
        }
        int left = 2;
    } progress;
    ZvDrawing drawing;
    AddPolylines(drawing, 60000, 4);
    const Bytes bytes = Save(drawing);
    ZvNativeOptions options;
    options.progress = &progress;
    const Loaded loaded = Load(bytes, options);
    EXPECT_EQ(loaded.status, Zv::Status::Cancelled);
    EXPECT_EQ(loaded.drawing->NameTable().Count(), 0);
    EXPECT_NE(loaded.drawing->LayerTable()->GetByName(XStringW(u"0")), nullptr);
}
