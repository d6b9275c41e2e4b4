#include "Tests/Support/NativeFiles.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvNativeSalvage.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <sstream>

using namespace NativeFiles;

namespace {

struct Salvaged {
    std::unique_ptr<ZvDrawing> drawing = std::make_unique<ZvDrawing>();
    ZvNativeSalvage::Result result;
    bool Ok() const { return Zv::Ok(result.status); }
};

Salvaged Salvage(const Bytes& bytes) {
    Salvaged salvaged;
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    salvaged.result = ZvNativeSalvage::Run(*file, *salvaged.drawing);
    return salvaged;
}

/// Objects by their own line in the census without the layer, which can be lost.
std::multiset<std::string> Objects(ZvDrawing& drawing) {
    std::multiset<std::string> lines;
    std::istringstream all(Census(drawing));
    for (std::string line; std::getline(all, line);)
        lines.insert(line.substr(std::min(line.size(), line.find(' '))));
    return lines;
}

size_t Missing(ZvDrawing& before, ZvDrawing& after) {
    const auto had = Objects(before), has = Objects(after);
    std::vector<std::string> lost;
    std::set_difference(had.begin(), had.end(), has.begin(), has.end(), std::back_inserter(lost));
    return lost.size();
}

enum class Harm { Noise, Zeros, Cut, Insert, Truncate };

Bytes Damage(Bytes bytes, Harm harm, size_t at, size_t length, std::mt19937& random) {
    const auto begin = bytes.begin() + ptrdiff_t(at);
    const auto end = begin + ptrdiff_t(std::min(length, bytes.size() - at));
    switch (harm) {
    case Harm::Noise:
        std::generate(begin, end, [&] { return uint8_t(random()); });
        break;
    case Harm::Zeros:
        std::fill(begin, end, uint8_t(0));
        break;
    case Harm::Cut:
        bytes.erase(begin, end);
        break;
    case Harm::Insert: {
        Bytes noise(length);
        std::generate(noise.begin(), noise.end(), [&] { return uint8_t(random()); });
        bytes.insert(begin, noise.begin(), noise.end());
        break;
    }
    case Harm::Truncate:
        bytes.erase(begin, bytes.end());
        break;
    }
    return bytes;
}

std::unique_ptr<ZvDrawing> Map() {
    auto drawing = Sample();
    AddPolylines(*drawing, 400, 6);
    return drawing;
}

/// What a report says of a drawing must be what the drawing holds, and a save of it is sound.
void MustBeTrue(Salvaged& salvaged) {
    uint64_t saved = 0;
    for (const ZvNativeSalvage::Layer& layer : salvaged.result.layers) {
        const XStringW name = XStringW::FromUtf8(layer.name);
        const ZvLayout* sheet = salvaged.drawing->LayoutTable()->GetByName(XStringW::FromUtf8(layer.sheet));
        ASSERT_TRUE(layer.sheet.empty() || sheet) << layer.sheet;
        const ZvDrawing& drawing = layer.sheet.empty() ? *salvaged.drawing : *sheet->Drawing();
        const ZvLayer* there = drawing.LayerTable()->GetByName(name);
        const ZvBlock* block = drawing.BlockTable()->GetByName(name);
        ASSERT_TRUE(layer.isBlock ? block != nullptr : there != nullptr) << layer.name;
        EXPECT_EQ(layer.isBlock ? block->EntityCount() : there->EntityCount(), layer.saved);
        EXPECT_LE(layer.doubtful, layer.read);
        EXPECT_LE(layer.saved, layer.read) << layer.name;
        saved += layer.saved;
    }
    EXPECT_EQ(saved, salvaged.result.saved);
    const Bytes out = Save(*salvaged.drawing);
    const auto file = ZvCore::MemFile::OverView(out.data(), out.size());
    EXPECT_TRUE(ZvNativeCheck::Run(*file).IsSound());
}

} // namespace

TEST(NativeSalvage, ASoundFileGivesTheSameDrawingAndNothingIsSaidToBeWrong) {
    for (int level : {0, 3, 6}) {
        ZvNativeOptions options;
        options.compressionLevel = level;
        const auto drawing = Map();
        Salvaged salvaged = Salvage(Save(*drawing, options));
        EXPECT_TRUE(salvaged.Ok() && salvaged.result.wasSound);
        EXPECT_TRUE(Census(*salvaged.drawing) == Census(*drawing));
        EXPECT_TRUE(salvaged.result.damage.empty());
        EXPECT_EQ(salvaged.result.damagedBlocks, 0u);
        MustBeTrue(salvaged);
    }
}

TEST(NativeSalvage, AFileOfWhichOnlyTheDigestIsWrongIsReadWhole) {
    for (int level : {0, 3, 6}) {
        ZvNativeOptions options;
        options.compressionLevel = level;
        const auto drawing = Map();
        Bytes bytes = Save(*drawing, options);
        bytes[ZvNativeHeader::kDigestOffset] ^= 1;
        Salvaged salvaged = Salvage(bytes);
        EXPECT_TRUE(salvaged.Ok() && !salvaged.result.wasSound);
        EXPECT_TRUE(Save(*salvaged.drawing) == Save(*Load(Save(*drawing, options)).drawing)) << level;
        EXPECT_TRUE(salvaged.result.damage.empty()) << level;
        for (const ZvNativeSalvage::Layer& layer : salvaged.result.layers)
            EXPECT_EQ(layer.Lost() + layer.doubtful, 0u);
        MustBeTrue(salvaged);
    }
}

TEST(NativeSalvage, OneDamagedStretchOfAStoredFileCostsTheObjectsInItAlone) {
    const auto drawing = Map();
    ZvNativeOptions options;
    options.compressionLevel = 0;
    const Bytes sound = Save(*drawing, options);
    const Bytes first = [&] { // where the objects that were added begin
        Bytes mark;
        Append<uint16_t>(mark, 1), Append<uint16_t>(mark, 35);
        return mark;
    }();
    const size_t objects = Find(sound, first, sound.size() / 4);
    std::mt19937 random(7);
    for (int round = 0; round < 60; ++round) {
        const Harm harm = Harm(round % 4);
        const size_t length = 1 + random() % 900, at = objects + random() % (sound.size() * 3 / 4 - objects);
        Salvaged salvaged = Salvage(Damage(sound, harm, at, length, random));
        ASSERT_TRUE(salvaged.Ok()) << round;
        // The smallest record is that of a point, of 54 bytes.
        const size_t most = (harm == Harm::Insert ? 0 : length / 54) + 2;
        EXPECT_LE(Missing(*drawing, *salvaged.drawing), most)
            << round << " harm " << int(harm) << " at " << at << " length " << length;
        EXPECT_FALSE(salvaged.result.wasSound);
        MustBeTrue(salvaged);
    }
}

TEST(NativeSalvage, DamageAnywhereAtAnyLevelNeverHurtsMoreThanTheReportSays) {
    const auto drawing = Map();
    std::mt19937 random(11);
    for (int level : {0, 3, 6}) {
        ZvNativeOptions options;
        options.compressionLevel = level;
        const Bytes sound = Save(*drawing, options);
        for (int round = 0; round < 60; ++round) {
            const size_t at = random() % sound.size();
            Salvaged salvaged = Salvage(Damage(sound, Harm(round % 5), at, 1 + random() % 2000, random));
            if (salvaged.Ok())
                MustBeTrue(salvaged);
            else // nothing at all can be had of a body that does not begin
                EXPECT_TRUE(level == 6 || round % 5 == 4) << level << " " << round << " " << at;
        }
    }
}

TEST(NativeSalvage, ADamagedBlockOfACompressedFileCostsNoOther) {
    const auto drawing = Map();
    const Bytes sound = Save(*drawing);
    const std::vector<size_t> blocks = OuterBlocks(sound);
    std::mt19937 random(3);
    for (size_t block : blocks) {
        Salvaged salvaged = Salvage(Damage(sound, Harm::Noise, block + 60, 8, random));
        ASSERT_TRUE(salvaged.Ok()) << block;
        EXPECT_LE(salvaged.result.damagedBlocks, 1u) << block;
        MustBeTrue(salvaged);
    }
}

TEST(NativeSalvage, WithoutHeaderClientsOrNamesTheObjectsAreAllThere) {
    const auto drawing = Map();
    const Bytes sound = Save(*drawing);
    const auto header = [&] {
        ZvNativeHeader read;
        read.Parse(sound.data());
        return read;
    }();
    struct Case {
        const char* what;
        size_t at, length;
        bool ZvNativeSalvage::Result::*told;
    };
    const Case cases[] = {
        {"header", 0, 104, &ZvNativeSalvage::Result::headerLost},
        {"settings", 104, 50, &ZvNativeSalvage::Result::settingsLost},
        {"head of the tables", size_t(header.tablesOffset), 16, nullptr},
        {"clients", size_t(header.clientsOffset), 60, &ZvNativeSalvage::Result::clientsLost},
    };
    std::mt19937 random(5);
    for (const Case& c : cases) {
        Salvaged salvaged = Salvage(Damage(sound, Harm::Noise, c.at, c.length, random));
        ASSERT_TRUE(salvaged.Ok()) << c.what;
        EXPECT_EQ(Missing(*drawing, *salvaged.drawing), 0u) << c.what;
        EXPECT_TRUE(!c.told || salvaged.result.*c.told) << c.what;
        MustBeTrue(salvaged);
    }
    Bytes nothing(5000);
    std::generate(nothing.begin(), nothing.end(), [&] { return uint8_t(random()); });
    EXPECT_FALSE(Salvage(nothing).Ok());
    EXPECT_FALSE(Salvage({}).Ok());
}

TEST(NativeSalvage, WhicheverBitOfTheHeaderIsWrongTheDrawingIsWhole) {
    const auto drawing = Sample();
    const std::string before = Census(*drawing);
    std::mt19937 random(9);
    for (int level : {0, 3, 6}) {
        ZvNativeOptions options;
        options.compressionLevel = level;
        const Bytes sound = Save(*drawing, options);
        for (size_t at = 0; at < ZvNativeHeader::kSize; ++at) {
            Bytes bytes = sound;
            const int bit = int(random() % 8);
            bytes[at] ^= uint8_t(1 << bit);
            Salvaged salvaged = Salvage(bytes);
            ASSERT_TRUE(salvaged.Ok()) << level << " " << at << " " << bit;
            EXPECT_TRUE(Census(*salvaged.drawing) == before) << level << " " << at << " " << bit;
            for (const ZvNativeSalvage::Layer& layer : salvaged.result.layers)
                EXPECT_EQ(layer.Lost(), 0u) << level << " " << at << " " << bit << " " << layer.name;
        }
    }
}

TEST(NativeSalvage, ATransferAsTextIsUndoneAndWhatFollowsADrawingIsLeftOut) {
    const auto drawing = Map();
    const std::string before = Census(*drawing);
    for (int level : {0, 3, 6}) {
        ZvNativeOptions options;
        options.compressionLevel = level;
        const Bytes sound = Save(*drawing, options);
        Bytes text, two = sound, older = sound;
        for (uint8_t byte : sound) {
            if (byte == '\n')
                text.push_back('\r');
            text.push_back(byte);
        }
        two.insert(two.end(), sound.begin(), sound.end());
        older.insert(older.end(), sound.begin() + ptrdiff_t(sound.size() / 2), sound.end());
        for (const Bytes* bytes : {&text, &two, &older}) {
            Salvaged salvaged = Salvage(*bytes);
            ASSERT_TRUE(salvaged.Ok() && salvaged.result.isWhole && !salvaged.result.wasSound) << level;
            EXPECT_TRUE(Census(*salvaged.drawing) == before) << level;
            EXPECT_EQ(salvaged.result.wasText, bytes == &text) << level;
            EXPECT_EQ(salvaged.result.anotherBehind, bytes == &two) << level;
            EXPECT_EQ(salvaged.result.behind.length, bytes == &text ? 0 : bytes->size() - sound.size())
                << level;
            MustBeTrue(salvaged);
        }
        // Damage does not mix in what follows, and the drawing's clients tell where it ends.
        const size_t at = sound.size() / 2;
        two[at] ^= 0x55, older[at] ^= 0x55;
        for (const Bytes* bytes : {&two, &older}) {
            Salvaged salvaged = Salvage(*bytes);
            EXPECT_LE(salvaged.result.saved, salvaged.result.stated) << level;
            EXPECT_TRUE(level == 6 || salvaged.result.behind.offset == sound.size()) << level;
        }
    }
}

TEST(NativeSalvage, AFileThatIsCutOffNamesWhatIsLostBehindItsEnd) {
    auto drawing = Map();
    for (const char16_t* name : {u"Sheet", u"Annex"})
        AddPolylines(*drawing->LayoutTable()->InsertNew(name)->Drawing(), 9, 5);
    const Bytes sound = Save(*drawing);
    const std::vector<size_t> blocks = OuterBlocks(sound);
    size_t firstSheetEnds = 0, untold = 0;
    for (const size_t end : blocks) {
        Salvaged salvaged = Salvage(Bytes(sound.begin(), sound.begin() + ptrdiff_t(end)));
        if (!salvaged.Ok())
            continue;
        const ZvNativeSalvage::Result& result = salvaged.result;
        EXPECT_EQ(result.statedLength, sound.size());
        EXPECT_EQ(result.fileLength, end);
        bool told = result.tablesLost > 0 || !result.tables.empty() || !result.lostLayouts.empty() ||
                    result.saved < result.stated;
        for (const ZvNativeSalvage::Layer& layer : result.layers)
            told |= layer.Lost() > 0 || layer.contentsLost;
        untold += !told;
        if (result.lostLayouts == std::vector<std::string>{"Annex"})
            firstSheetEnds = end;
    }
    EXPECT_LE(untold, 1u); // where only the clients are missing
    EXPECT_GT(firstSheetEnds, 0u);
}
