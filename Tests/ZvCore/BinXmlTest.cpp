#include "ZvCore/BinXml.h"
#include "ZvCore/FaultyFile.h"
#include "ZvCore/IFile.h"
#include "ZvCore/Settings.h"

#include <gtest/gtest.h>

using namespace ZvCore;

namespace {

BinXmlDocument Sample() {
    BinXmlDocument document;
    document.root.Set("on", true);
    document.root.Set("count", int64_t(-5'000'000'000));
    document.root.Set("ratio", 0.1);
    document.root.Set("name", XStringW(std::u16string(u"é\0😀", 5)));
    document.root.Set("bytes", std::vector<uint8_t>{0, 255, 7});
    document.root.Set("", XStringW());
    BinXmlNode& layers = document.root.AddChild("layers");
    for (int i = 0; i < 3; ++i)
        layers.AddChild("layer").Set("index", int64_t(i));
    document.root.AddChild("empty");
    return document;
}

std::vector<uint8_t> BytesOf(const BinXmlDocument& document) {
    MemFile file;
    EXPECT_TRUE(document.Write(file));
    return file.Take();
}

/// Depth 1 is a root alone.
BinXmlDocument Nested(int depth) {
    BinXmlDocument document;
    BinXmlNode* node = &document.root;
    for (int i = 1; i < depth; ++i)
        node = &node->AddChild("n");
    return document;
}

} // namespace

TEST(BinXml, EveryValueComesBackAsItWas) {
    const BinXmlDocument written = Sample();
    MemFile file(BytesOf(written));
    BinXmlDocument read;
    std::string why;
    ASSERT_TRUE(read.Read(file, why)) << why;
    EXPECT_EQ(read, written);
    EXPECT_EQ(file.Remaining(), 0u);
}

TEST(BinXml, GettersConvertOnlyWholeNumbersToDoubles) {
    const BinXmlNode root = Sample().root;
    EXPECT_EQ(root.GetDouble("count", 0), -5e9);
    EXPECT_EQ(root.GetInt("ratio", 3), 3);
    EXPECT_EQ(root.GetBool("count", true), true);
    EXPECT_EQ(root.GetString("missing", u"none"), XStringW(u"none"));
    ASSERT_NE(root.Child("layers"), nullptr);
    EXPECT_EQ(root.Child("layers")->Children()[2].GetInt("index", -1), 2);
}

TEST(BinXml, TruncatedAndDamagedDocumentsAreRefusedWithAReason) {
    const std::vector<uint8_t> whole = BytesOf(Sample());
    for (size_t cut = 0; cut < whole.size(); ++cut) {
        MemFile file(std::vector<uint8_t>(whole.begin(), whole.begin() + std::ptrdiff_t(cut)));
        BinXmlDocument read;
        read.root.Set("kept", true);
        std::string why;
        EXPECT_FALSE(read.Read(file, why)) << cut;
        EXPECT_FALSE(why.empty());
        EXPECT_TRUE(read.root.GetBool("kept", false)) << "a failed read changes nothing";
    }
    for (size_t at = 0; at < whole.size(); ++at)
        for (uint8_t value : {0x00, 0x7F, 0xFF}) { // lengths, counts and types among them
            std::vector<uint8_t> damaged = whole;
            damaged[at] = value;
            MemFile file(std::move(damaged));
            BinXmlDocument read;
            std::string why;
            const bool ok = read.Read(file, why);
            EXPECT_EQ(ok, why.empty()) << at;
        }
}

TEST(BinXml, NestingIsLimitedOnBothSides) {
    MemFile file;
    EXPECT_TRUE(Nested(64).Write(file));
    EXPECT_FALSE(Nested(65).Write(file));
    MemFile deep;
    deep.Write("ZBX1", 4);
    for (int i = 0; i < 1000; ++i)
        deep.Write("\0\0\0\0\0\0\1\0\0\0", 10); // no name, no attributes, one child
    BinXmlDocument read;
    std::string why;
    EXPECT_TRUE(deep.Seek(0));
    EXPECT_FALSE(read.Read(deep, why));
    EXPECT_NE(why.find("too deep"), std::string::npos);
    BinXmlDocument longName;
    longName.root.Set(std::string(65536, 'x'), true);
    EXPECT_FALSE(longName.Write(file));
}

TEST(BinXml, EveryFailingCallIsNoticed) {
    const BinXmlDocument document = Sample();
    MemFile inner;
    FaultyFile counting(inner, 0);
    ASSERT_TRUE(document.Write(counting));
    for (uint64_t n = 1; n <= counting.Calls(); ++n) {
        MemFile target;
        FaultyFile writing(target, n);
        EXPECT_FALSE(document.Write(writing));
        MemFile source(BytesOf(document));
        FaultyFile reading(source, n);
        BinXmlDocument read;
        std::string why;
        const bool ok = read.Read(reading, why);
        EXPECT_EQ(ok, !reading.Error()) << n;
    }
}

TEST(Settings, TravelThroughANodeInKeyOrder) {
    Settings settings;
    settings.Set("WheelZoomFactor", int64_t(2));
    settings.Set("CursorNudgeDistance", 0.5);
    settings.Set("UserName", XStringW(u"Zoë"));
    settings.Set("Gone", true);
    settings.Remove("Gone");
    BinXmlNode node("settings");
    settings.Store(node);
    EXPECT_EQ(node.Attributes().front().name, "CursorNudgeDistance");
    Settings loaded;
    loaded.Set("Former", true);
    loaded.Load(node);
    EXPECT_EQ(loaded, settings);
    EXPECT_EQ(loaded.GetDouble("WheelZoomFactor", 0), 2.0);
    EXPECT_EQ(loaded.GetInt("CursorNudgeDistance", 7), 7) << "another type is as good as none";
    EXPECT_EQ(loaded.GetString("UserName", {}), XStringW(u"Zoë"));
    EXPECT_FALSE(loaded.Has("Gone"));
}
