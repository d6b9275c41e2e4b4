#include "AnsweringHost.h"
#include "Tests/Support/NativeFiles.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeHeader.h"
#include "ZvCore/FaultyFile.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>

using namespace NativeFiles;

namespace {

ZvNativeOptions Stored() {
    ZvNativeOptions options;
    options.compressionLevel = 0;
    return options;
}

ZvNativeOptions Unchecked() {
    ZvNativeOptions options;
    options.verifyChecksum = false;
    options.blockDigests = false;
    return options;
}

const Bytes& SampleBytes() {
    static const Bytes bytes = Save(*Sample(), Stored());
    return bytes;
}

ZvNativeHeader HeaderOf(const Bytes& bytes) {
    ZvNativeHeader header;
    header.Parse(bytes.data());
    return header;
}

ZvNativeCheck::Result Check(const Bytes& bytes) {
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    return ZvNativeCheck::Run(*file);
}

XStringW Reason(const Bytes& bytes) {
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    const uint64_t position = bytes.size() / 3;
    file->Seek(position);
    XStringW reason(u"-");
    EXPECT_FALSE(ZvNativeFile::IsValidFile(file.get(), true, reason));
    EXPECT_EQ(file->Position(), position);
    return reason;
}

/// Position of the record of the n-th polyline-like object in a stored file: the head with client 1, type 35.
size_t RecordAt(const Bytes& bytes, uint32_t name) {
    Bytes head;
    Append<uint16_t>(head, 1);
    Append<uint16_t>(head, 35);
    Append<uint64_t>(head, name);
    return Find(bytes, head, 104) - 8;
}

} // namespace

// --- header ------------------------------------------------------------------------------------------------------------------

TEST(NativeDamage, ValidityNamesItsReason) {
    Bytes bytes = SampleBytes();
    Put<uint64_t>(bytes, 0, 0x100001);
    EXPECT_EQ(Reason(bytes), XStringW());
    bytes = SampleBytes();
    bytes[9] ^= 1;
    EXPECT_EQ(Reason(bytes), XStringW(u"The file does not have the right signature"));
    EXPECT_EQ(Reason({}), XStringW(u"The file does not have the right signature"));
    EXPECT_EQ(Reason(Bytes(50, 0)), XStringW(u"The file does not have the right signature"));
    bytes = SampleBytes();
    bytes.back() ^= 1;
    EXPECT_EQ(Reason(bytes), XStringW(u"The checksum failed. The data is very likely corrupt."));
    for (uint64_t length : {uint64_t(0), uint64_t(103), uint64_t(SampleBytes().size() + 1), ~uint64_t(0)}) {
        bytes = SampleBytes();
        Put<uint64_t>(bytes, 20, length);
        EXPECT_EQ(Reason(bytes), XStringW(u"The checksum failed. The data is very likely corrupt."))
            << length;
    }
    const auto inner = ZvCore::MemFile::OverView(SampleBytes().data(), SampleBytes().size());
    ZvCore::FaultyFile faulty(*inner, 8);
    XStringW reason;
    EXPECT_FALSE(ZvNativeFile::IsValidFile(&faulty, true, reason));
    EXPECT_EQ(reason, XStringW(u"An IO error occurred while trying to read the file."));
}

TEST(NativeDamage, WithoutDigestOrInOldVersionsTheBodyIsNotLookedAt) {
    XStringW reason;
    for (const bool old : {false, true}) {
        Bytes bytes = SampleBytes();
        bytes.back() ^= 1;
        if (old)
            Put<int32_t>(bytes, 16, 1012);
        else
            std::fill_n(bytes.begin() + 60, 16, uint8_t(0));
        const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
        EXPECT_TRUE(ZvNativeFile::IsValidFile(file.get(), true, reason));
    }
}

TEST(NativeDamage, AHeaderOfAnotherSizeIsPaddedOrCut) {
    // Longer: the sections move, so the body of the file is shifted with it.
    Bytes longer = SampleBytes();
    longer.insert(longer.begin() + 104, 16, uint8_t(0xEE));
    Put<uint64_t>(longer, 0, 120);
    for (size_t field : {36, 44, 52})
        Put<uint64_t>(longer, field, Get<uint64_t>(longer, field) + 16);
    Seal(longer);
    EXPECT_TRUE(Load(longer).Ok()) << Load(longer).errors.ToString();
    // Shorter: without the length of 30 for record heads nothing can be read.
    Bytes shorter = SampleBytes();
    Put<uint64_t>(shorter, 0, 24);
    EXPECT_FALSE(Load(shorter).Ok());
}

TEST(NativeDamage, HeadersThatCannotBeTrueRefuseTheLoadAndLeaveTheDrawingAlone) {
    struct Case {
        const char* what;
        std::function<void(Bytes&)> damage;
    };
    const Case cases[] = {
        {"clients in the header", [](Bytes& b) { Put<uint64_t>(b, 36, 50); }},
        {"tables behind the end", [](Bytes& b) { Put<uint64_t>(b, 44, b.size()); }},
        {"settings far out", [](Bytes& b) { Put<uint64_t>(b, 52, ~uint64_t(0)); }},
        {"record head of 11", [](Bytes& b) { Put<uint32_t>(b, 28, 11); }},
        {"record head of 4097", [](Bytes& b) { Put<uint32_t>(b, 28, 4097); }},
        {"solid block in the header", [](Bytes& b) { Put<uint64_t>(b, 76, 1), Put<uint64_t>(b, 84, 20); }},
        {"solid block that is none", [](Bytes& b) { Put<uint64_t>(b, 76, 1), Put<uint64_t>(b, 84, 105); }},
    };
    for (const Case& c : cases) {
        Bytes bytes = SampleBytes();
        c.damage(bytes);
        Seal(bytes);
        const auto drawing = Sample();
        const std::string before = Census(*drawing);
        const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
        ZvNativeFile native;
        EXPECT_FALSE(Zv::Ok(native.ReadFile(drawing.get(), file.get()))) << c.what;
        IOErrorSet errors;
        native.GetErrors(errors);
        EXPECT_TRUE(errors.HasErrors()) << c.what;
        EXPECT_EQ(Census(*drawing), before) << c.what;
        EXPECT_FALSE(Check(bytes).IsSound()) << c.what;
    }
}

TEST(NativeDamage, AnInteractiveLoadAsksBeforeItGoesOnWithACorruptFile) {
    Bytes bytes = SampleBytes();
    bytes[96] ^= 1; // the date stamp: everything else is sound
    AnsweringHost no(ZvAnswer::No), yes(ZvAnswer::Yes);
    ZvNativeOptions options;
    options.host = &no;
    EXPECT_FALSE(Load(bytes, options).Ok());
    options.host = &yes;
    EXPECT_TRUE(Load(bytes, options).Ok());
    ASSERT_EQ(yes.texts.size(), 1u);
    EXPECT_EQ(yes.texts[0], "|The file appears to be corrupt. Do you want to continue trying to load it?\n\n"
                            "(The checksum failed. The data is very likely corrupt.)");
    options.verifyChecksum = false;
    EXPECT_TRUE(Load(bytes, options).Ok());
    EXPECT_EQ(yes.texts.size(), 1u);
    EXPECT_FALSE(Load(bytes).Ok());
}

TEST(NativeDamage, TruncatedAnywhereTheLoadFailsOrCountsWhatIsMissing) {
    const Bytes& whole = SampleBytes();
    const ZvNativeHeader header = HeaderOf(whole);
    std::vector<uint64_t> cuts = {0,
                                  8,
                                  60,
                                  103,
                                  104,
                                  120,
                                  header.tablesOffset,
                                  header.tablesOffset + 10,
                                  (header.tablesOffset + header.clientsOffset) / 2,
                                  header.clientsOffset,
                                  header.clientsOffset + 40,
                                  whole.size() - 1};
    for (uint64_t cut : cuts) {
        const Bytes bytes(whole.begin(), whole.begin() + ptrdiff_t(cut));
        EXPECT_FALSE(Load(bytes).Ok()) << cut;
        const Loaded unchecked = Load(bytes, Unchecked());
        EXPECT_TRUE(!unchecked.Ok() && unchecked.errors.HasErrors()) << cut;
        EXPECT_FALSE(Check(bytes).IsSound()) << cut;
    }
}

// --- blocks ------------------------------------------------------------------------------------------------------------------

TEST(NativeDamage, BlocksThatCannotBeTrueAreError2007AndEndTheLoad) {
    struct Case {
        const char* what;
        std::function<void(Bytes&, size_t)> damage;
    };
    const Case cases[] = {
        {"unknown method", [](Bytes& b, size_t at) { Put<uint32_t>(b, at, 2); }},
        {"zlib that is none", [](Bytes& b, size_t at) { Put<uint32_t>(b, at, 1); }},
        {"lengths differ",
         [](Bytes& b, size_t at) { Put<uint64_t>(b, at + 4, Get<uint64_t>(b, at + 4) - 1); }},
        {"stored past the end", [](Bytes& b, size_t at) { Put<uint64_t>(b, at + 12, b.size()); }},
        {"enormous",
         [](Bytes& b, size_t at) {
             Put<uint32_t>(b, at, 1);
             Put<uint64_t>(b, at + 4, uint64_t(1) << 60);
         }},
        {"enormous both ways",
         [](Bytes& b, size_t at) {
             Put<uint64_t>(b, at + 4, ~uint64_t(0)), Put<uint64_t>(b, at + 12, ~uint64_t(0));
         }},
    };
    const std::vector<size_t> blocks = OuterBlocks(SampleBytes());
    ASSERT_GT(blocks.size(), 5u);
    for (const Case& c : cases)
        for (size_t block : {blocks.front(), blocks[blocks.size() / 2], blocks.back()}) {
            Bytes bytes = SampleBytes();
            c.damage(bytes, block);
            Seal(bytes);
            const Loaded loaded = Load(bytes);
            EXPECT_FALSE(loaded.Ok()) << c.what << " at " << block;
            EXPECT_TRUE(loaded.errors.Has(2007)) << c.what << " at " << block;
            EXPECT_FALSE(Check(bytes).IsSound()) << c.what << " at " << block;
        }
}

TEST(NativeDamage, ABlockDigestThatDoesNotFitIsError2003FromVersion1015On) {
    const size_t block = OuterBlocks(SampleBytes())[0];
    Bytes bytes = SampleBytes();
    bytes[block + 20] ^= 1;
    Seal(bytes);
    const Loaded loaded = Load(bytes);
    EXPECT_FALSE(loaded.Ok());
    EXPECT_TRUE(loaded.errors.Has(2003));
    EXPECT_FALSE(Check(bytes).IsSound());
    EXPECT_TRUE(Load(bytes, Unchecked()).Ok());
    std::fill_n(bytes.begin() + ptrdiff_t(block) + 20, 16, uint8_t(0)); // no digest at all
    Seal(bytes);
    EXPECT_TRUE(Load(bytes).Ok());
}

TEST(NativeDamage, BlockStackUnderflowIsError2005) {
    ZvDrawing drawing;
    ZvCore::MemFile file;
    ZvNativeFile native;
    native.Attach(drawing, file);
    const ZvErrorCapture capture;
    EXPECT_FALSE(native.EndCompressBlock());
    native.EndDecompressBlock();
    EXPECT_TRUE(capture.HasText("EndCompressBlock stack underflow"));
    EXPECT_TRUE(capture.HasText("EndDecompressBlock stack underflow."));
    EXPECT_TRUE(capture.Has(2005));
}

TEST(NativeDamage, ASolidFileInASolidFileIsRefused) {
    ZvNativeOptions solid;
    solid.compressionLevel = 6;
    const Bytes inner = Save(*Sample(), solid);
    Bytes bytes(inner.begin(), inner.begin() + 104);
    const Bytes block = Block(inner);
    bytes.insert(bytes.end(), block.begin(), block.end());
    Seal(bytes);
    EXPECT_FALSE(Load(bytes).Ok());
    EXPECT_FALSE(Check(bytes).IsSound());
}

TEST(NativeDamage, TheInnerDigestOfASolidFileIsVerified) {
    ZvNativeOptions solid;
    solid.compressionLevel = 6;
    const Bytes outer = Save(*Sample(), solid);
    Bytes inner = SampleBytes();
    inner[96] ^= 1;
    Bytes bytes(outer.begin(), outer.begin() + 104);
    const Bytes block = Block(inner);
    bytes.insert(bytes.end(), block.begin(), block.end());
    Seal(bytes);
    EXPECT_FALSE(Load(bytes).Ok());
    EXPECT_TRUE(Load(bytes, Unchecked()).Ok());
    EXPECT_FALSE(Check(bytes).IsSound());
}

// --- files large enough to be read before they are known to be sound ---------------------------------------------------------

TEST(NativeDamage, ALargeFileThatTurnsOutCorruptIsRefusedAndLeavesTheDrawingAsItWas) {
    const auto large = Sample();
    AddPolylines(*large, 60000, 4);
    const Bytes sound = Save(*large, Stored());
    ASSERT_GT(sound.size(), size_t(5) << 20);
    const std::vector<size_t> blocks = OuterBlocks(sound);
    enum { FileDigest, BlockDigest };
    for (int what : {FileDigest, BlockDigest}) {
        Bytes bytes = sound;
        bytes[what == FileDigest ? bytes.size() / 2 : blocks[blocks.size() / 2] + 20] ^= 1;
        if (what == BlockDigest)
            Seal(bytes);
        ZvDrawing drawing;
        drawing.Settings().Set("WheelZoomFactor", 7.0);
        const std::string before = Census(drawing);
        const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
        ZvNativeFile native;
        EXPECT_FALSE(Zv::Ok(native.ReadFile(&drawing, file.get())));
        IOErrorSet errors;
        native.GetErrors(errors);
        EXPECT_EQ(errors.Items().size(), 1u) << errors.ToString();
        EXPECT_EQ(errors.Has(2003), what == BlockDigest);
        if (what == BlockDigest) // found on the way: what stood before it stays
            continue;
        EXPECT_EQ(drawing.NameTable().Count(), 0);
        EXPECT_EQ(drawing.Settings().GetDouble("WheelZoomFactor", 0), 7.0);
        AnsweringHost yes(ZvAnswer::Yes);
        ZvNativeOptions options;
        options.host = &yes;
        options.blockDigests = false;
        EXPECT_EQ(Load(bytes, options).drawing->NameTable().Count(), large->NameTable().Count());
        EXPECT_EQ(yes.texts.size(), 1u);
    }
    EXPECT_EQ(Save(*Load(sound).drawing), Save(*Load(sound, Unchecked()).drawing));
}

// --- records -----------------------------------------------------------------------------------------------------------------

TEST(NativeDamage, ADamagedPolylineFailsAloneAndIsCounted) {
    struct Case {
        const char* what;
        size_t at; ///< in the record
        std::function<void(Bytes&, size_t)> damage;
    };
    const Case cases[] = {
        {"header longer than the record", 30, [](Bytes& b, size_t at) { Put<uint16_t>(b, at, 60000); }},
        {"64-bit marks differ", 32, [](Bytes& b, size_t at) { b[at] ^= 0x80; }},
        {"more vertices", 50, [](Bytes& b, size_t at) { Put<uint32_t>(b, at, 1000); }},
        {"fewer vertices", 50, [](Bytes& b, size_t at) { Put<uint32_t>(b, at, 2); }},
        {"enormous", 50, [](Bytes& b, size_t at) { Put<uint32_t>(b, at, 0xFFFFFFFF); }},
        {"no parts", 56, [](Bytes& b, size_t at) { Put<uint32_t>(b, at, 0); }},
        {"part table does not begin at 0", 60, [](Bytes& b, size_t at) { Put<uint32_t>(b, at, 1); }},
        {"infinite origin", 64, [](Bytes& b, size_t at) { Put<double>(b, at, HUGE_VAL); }},
        {"name above 32 bits", 12, [](Bytes& b, size_t at) { Put<uint64_t>(b, at, uint64_t(1) << 40); }},
    };
    const int whole = Sample()->NameTable().Count();
    for (const Case& c : cases) {
        Bytes bytes = SampleBytes();
        const size_t record = RecordAt(bytes, 1);
        c.damage(bytes, record + c.at);
        Seal(bytes);
        ZvNativeOptions options;
        options.blockDigests = false;
        const Loaded loaded = Load(bytes, options);
        EXPECT_TRUE(loaded.Ok()) << c.what;
        EXPECT_EQ(loaded.drawing->NameTable().Count(), whole - 1) << c.what;
        EXPECT_NE(loaded.errors.ToString().find("1 records of kind ZvXLine are damaged"), std::string::npos)
            << c.what;
        EXPECT_FALSE(Check(bytes).IsSound()) << c.what;
    }
}

TEST(NativeDamage, ARecordLengthThatCannotBeTrueEndsItsListAndCountsTheRest) {
    for (uint64_t length : {uint64_t(0), uint64_t(29), ~uint64_t(0), uint64_t(1) << 40}) {
        Bytes bytes = SampleBytes();
        Put<uint64_t>(bytes, RecordAt(bytes, 2), length);
        Seal(bytes);
        ZvNativeOptions options;
        options.blockDigests = false;
        const Loaded loaded = Load(bytes, options);
        EXPECT_TRUE(loaded.Ok());
        EXPECT_TRUE(loaded.errors.Has(2007));
        EXPECT_NE(loaded.errors.ToString().find("breaks off"), std::string::npos);
        EXPECT_GT(loaded.drawing->NameTable().Count(), 0);
        EXPECT_LT(loaded.drawing->NameTable().Count(), Sample()->NameTable().Count());
        EXPECT_FALSE(Check(bytes).IsSound());
    }
}

TEST(NativeDamage, ListCountsAreBoundedByWhatThereIs) {
    ZvDrawing drawing;
    for (int64_t count : {int64_t(-1), int64_t(1), int64_t(0x7FFFFFFFFFFFFFFF)}) {
        ZvCore::MemFile file;
        file.WriteValue(count);
        file.Seek(0);
        ZvNativeFile native;
        native.Attach(drawing, file);
        ZvEntityList list;
        EXPECT_EQ(native.ReadEntityList(list), 0);
        EXPECT_LT(list.capacity(), 100u);
        IOErrorSet errors;
        native.GetErrors(errors);
        EXPECT_TRUE(errors.HasErrors());
    }
}

TEST(NativeDamage, AnyFlippedByteIsFoundByTheCheckAndNeverCrashesTheReader) {
    const Bytes& sound = SampleBytes();
    for (size_t at = 0; at < sound.size(); at += 7) {
        Bytes bytes = sound;
        bytes[at] ^= uint8_t(1 << (at % 8));
        EXPECT_FALSE(Check(bytes).IsSound()) << at;
        (void)Load(bytes, Unchecked());
    }
}

// --- failing streams ---------------------------------------------------------------------------------------------------------

TEST(NativeFaults, AStreamThatFailsAtAnyCallFailsTheLoadAndSaysSo) {
    const Bytes& bytes = SampleBytes();
    const auto inner = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    uint64_t calls = 0;
    {
        ZvCore::FaultyFile counting(*inner, 0);
        ZvDrawing drawing;
        ZvNativeFile native;
        ASSERT_TRUE(Zv::Ok(native.ReadFile(&drawing, &counting)));
        calls = counting.Calls();
    }
    for (uint64_t n = 1; n <= calls; ++n) {
        inner->Seek(0);
        ZvCore::FaultyFile faulty(*inner, n);
        ZvDrawing drawing;
        ZvNativeFile native;
        EXPECT_FALSE(Zv::Ok(native.ReadFile(&drawing, &faulty))) << n << " of " << calls;
        IOErrorSet errors;
        native.GetErrors(errors);
        EXPECT_TRUE(errors.HasErrors()) << n << " of " << calls;
    }
}

TEST(NativeFaults, AStreamThatFailsAtAnyCallFailsTheSave) {
    const auto drawing = Sample();
    for (int level : {0, 3, 6}) {
        ZvNativeOptions options;
        options.compressionLevel = level;
        uint64_t calls = 1;
        for (uint64_t n = 0; n <= calls; ++n) {
            ZvCore::MemFile target;
            ZvCore::FaultyFile faulty(target, n);
            ZvNativeFile native(options);
            const bool ok = Zv::Ok(native.WriteFile(drawing.get(), &faulty));
            IOErrorSet errors;
            native.GetErrors(errors);
            EXPECT_EQ(ok, n == 0) << n << " of " << calls << " at level " << level;
            EXPECT_EQ(errors.HasErrors(), n != 0) << n << " of " << calls << " at level " << level;
            if (n == 0)
                calls = faulty.Calls();
        }
    }
}
