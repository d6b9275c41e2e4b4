#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvPalette.h"
#include "ZvCore/MemFile.h"
#include <gtest/gtest.h>
#include <set>

namespace {

constexpr uint32_t kSample = 0x80402010; // alpha 0x80, blue 0x40, green 0x20, red 0x10

TEST(ZvColor, StatesKeepTheirReservedNumbers) {
    EXPECT_TRUE(ZvColor().IsNull());
    EXPECT_EQ(ZvColor().To64(), 0x0000FFFB00FFFFFFull);
    EXPECT_EQ(ZvColor::DefaultValue(), ZvColor(7));
    EXPECT_EQ(ZvColor::ByLayer().GetIndex(), -3);
    EXPECT_EQ(ZvColor::ByBlock().GetIndex(), -4);
    for (const ZvColor& c :
         {ZvColor(), ZvColor(200), ZvColor(1, 2, 3), ZvColor(-2, kSample), ZvColor::ByLayer()}) {
        EXPECT_EQ(ZvColor(c.To64()).GetIndex(), c.GetIndex());
        EXPECT_EQ(ZvColor(c.To64()).NativeRGB(), c.NativeRGB());
    }
}

TEST(ZvColor, ReadOutReordersBytes) {
    const ZvColor rgba(ZvColor::kRGBA, kSample), rgb(ZvColor::kRGB, kSample), index(1, 0x1234);
    EXPECT_EQ(rgba.GetRGBA(), kSample);
    EXPECT_EQ(rgba.GetARGB(), 0x80102040u);
    EXPECT_EQ(rgba.GetBGRA(), (ColorBGRA{0x40, 0x20, 0x10, 0x80}));
    EXPECT_EQ(rgba.GetPBGRA(), (ColorBGRA{0x20, 0x10, 0x08, 0x80}));
    EXPECT_EQ(ZvColor(rgba.GetBGRA()), rgba);
    EXPECT_EQ(rgb.GetRGB(), 0x00402010u);
    EXPECT_EQ(rgb.GetARGB(), 0xFF102040u);
    EXPECT_EQ(index.GetRGBA(), 0xFF0000FFu);
    EXPECT_EQ(rgb.GetGrey(), (0x40 + 0x20 + 0x10) / 3);
    EXPECT_EQ(ZvColor(Vec4f{2, -1, 0.5f, NAN}), ZvColor(255, 0, 128, 0));
}

TEST(ZvColor, EqualityLooksAtTheValueInTrueColoursOnly) {
    EXPECT_EQ(ZvColor(-3, 1), ZvColor(-3, 2));
    EXPECT_EQ(ZvColor(7, 1), ZvColor(7, 2));
    EXPECT_NE(ZvColor(-1, 1), ZvColor(-1, 2));
    EXPECT_NE(ZvColor(-2, 1), ZvColor(-1, 1));
}

TEST(ZvColor, AlphaTurnsAnyColourIntoRGBA) {
    ZvColor byLayer = ZvColor::ByLayer(), index(3);
    byLayer.SetAlpha(0x80);
    index.SetAlpha(0x10);
    EXPECT_EQ(byLayer, ZvColor(-2, 0x80000000u));
    EXPECT_EQ(index, ZvColor(-2, 0x1000FF00u));
}

TEST(ZvColor, HueSaturationBrightnessGoThereAndBack) {
    EXPECT_EQ(ZvColor(0, 0, 255).GetHue(), 170); // two thirds of 255
    EXPECT_EQ(ZvColor(128, 64, 64).GetSaturation(), 128);
    EXPECT_EQ(ZvColor(128, 64, 64).GetBrightness(), 128);
    for (uint32_t rgb = 0; rgb < 0x1000000; rgb += 0x010B17) {
        const ZvColor color(-2, rgb | 0x33000000);
        EXPECT_EQ(ZvColor::FromHSBA(color.GetHSBA()), color) << std::hex << rgb;
    }
}

TEST(ZvColor, TextFormsAreExactAndReadBack) {
    const std::pair<ZvColor, const char16_t*> cases[] = {
        {ZvColor::ByLayer(), u"ByLayer"},
        {ZvColor::ByBlock(), u"ByBlock"},
        {ZvColor(7), u"I:7"},
        {ZvColor(255, 0, 0), u"RGB:FF"},
        {ZvColor(-2, 0x800000FFu), u"RGBA:800000FF"},
        {ZvColor::Null(), u""},
    };
    for (const auto& [color, text] : cases) {
        EXPECT_EQ(color.ToString(), XStringW(text));
        EXPECT_EQ(ZvColor::FromString(text), color);
        EXPECT_EQ(ZvColor::FromString(XStringW(text).ToLower()), color);
    }
    EXPECT_EQ(ZvColor::FromString(u"magenta"), ZvColor(6));
    EXPECT_EQ(ZvColor::FromString(u"light gray"), ZvColor(9));
    ZvColor kept(5);
    for (const char16_t* bad :
         {u"I:-1", u"I:70000", u"I:x", u"RGB:", u"RGB:12345678A", u"mauve-ish", u"ByLayer2"})
        EXPECT_FALSE(kept.Parse(bad)) << XStringW(bad).ToUtf8();
    EXPECT_EQ(kept, ZvColor(5));
}

TEST(ZvColor, HexAndFloatFormsRead) {
    ZvColor color(5);
    EXPECT_FALSE(color.ParseHex(u"12345"));
    EXPECT_FALSE(color.ParseHex(u"12345G"));
    EXPECT_EQ(color, ZvColor(5));
    EXPECT_TRUE(color.ParseHex(u"#1f00fF"));
    EXPECT_EQ(color, ZvColor(0x1F, 0, 0xFF));
    EXPECT_EQ(color.GetTextDescHex(), XStringW(u"1F.00.FF"));
    const ZvColor alpha(0x1F, 0, 0xFF, 0x80);
    EXPECT_TRUE(color.ParseHex(alpha.GetTextDescHex()));
    EXPECT_EQ(color, alpha);
    EXPECT_EQ(ZvColor(255, 0, 51, 255).ToStringRGBAFloat(), XStringW(u"1 0 0.2 1"));
    EXPECT_EQ(ZvColor::FromStringRGBAFloat(u" 1 0 0.2 1"), ZvColor(255, 0, 51, 255));
    EXPECT_EQ(ZvColor::FromStringRGBAFloat(u"1 0 0.2").To64(), ZvColor().To64());
}

TEST(ZvColor, DescriptionsAreExact) {
    EXPECT_EQ(ZvColor(1, 2, 3).GetTextDesc(), XStringW(u"Red: 1  Green: 2  Blue: 3"));
    EXPECT_EQ(ZvColor(1, 2, 3, 4).GetTextDesc(), XStringW(u"Red:1  Green:2  Blue:3  Alpha:4"));
    EXPECT_EQ(ZvColor(1, 2, 3, 4).GetTextDesc(true), XStringW(u"R:1 G:2 B:3 A:4"));
    EXPECT_EQ(ZvColor::ByBlock().GetTextDesc(), XStringW(u"By Block"));
}

TEST(ZvColor, FixedLayoutChangedItsOrderWithVersion1050) {
    ZvCore::MemFile file;
    ASSERT_TRUE(ZvColor_IO::Write(file, 1050, ZvColor(-2, kSample)));
    ASSERT_TRUE(ZvColor_IO::Write(file, 1049, ZvColor(-2, kSample)));
    const uint8_t expected[] = {0x10, 0x20, 0x40, 0x80, 0xFE, 0xFF, 0xFE, 0xFF, 0x10, 0x20, 0x40, 0x80};
    ASSERT_EQ(file.Length(), sizeof expected);
    EXPECT_EQ(std::memcmp(file.View(0, sizeof expected), expected, sizeof expected), 0);
    ASSERT_TRUE(file.Seek(0));
    for (const int version : {1050, 1049}) {
        ZvColor read;
        ASSERT_TRUE(ZvColor_IO::Read(file, version, read));
        EXPECT_EQ(read, ZvColor(-2, kSample));
    }
}

TEST(ZvPalette, EveryEntryIsFoundByItsName) {
    std::set<XStringW> seen;
    for (int i = 0; i < ZvPalette::kSize; ++i) {
        EXPECT_EQ(ZvPalette::NameToIndex(ZvPalette::GetName(i)), i);
        EXPECT_TRUE(seen.insert(ZvPalette::GetName(i)).second) << i;
        EXPECT_EQ(ZvPalette::GetRGB(ZvPalette::Nearest(ZvPalette::GetRGB(i))), ZvPalette::GetRGB(i));
    }
    EXPECT_EQ(ZvPalette::GetRGB(10), 0x0000FFu); // pure red
    EXPECT_EQ(ZvPalette::GetRGB(11), 0x8080FFu); // half the way to white
    EXPECT_EQ(ZvPalette::GetRGB(92), 0x00A600u); // green at 65 percent
    EXPECT_EQ(ZvPalette::GetRGB(255), 0xFFFFFFu);
    EXPECT_EQ(ZvPalette::GetRGB(300), ZvPalette::GetRGB(7));
    EXPECT_EQ(ZvPalette::NameToIndex(u"azure"), 150);
}

} // namespace
