// Brush, line type, line width, size.
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"
#include "Zelvan/ZvUniSize.h"
#include "ZvCore/MemFile.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>
#include <random>

namespace {

static_assert(sizeof(ZvBrush) == 8 && sizeof(ZvLineType) == 2 && sizeof(ZvLineWidth) == 4 &&
              sizeof(ZvUniSize) == 4);

TEST(ZvBrush, PacksIntoSixtyFourBits) {
    EXPECT_EQ(ZvBrush().GetColor(), ZvColor(7));
    EXPECT_TRUE(ZvBrush().IsEmpty());
    EXPECT_EQ(ZvBrush::ByLayer().ToInt64(), int64_t(0xFFFDFFFD00FFFFFFull));
    for (const ZvBrush& brush : {ZvBrush(), ZvBrush::ByBlock(), ZvBrush::Solid(ZvColor(1, 2, 3)),
                                 ZvBrush::Null(), ZvBrush::FromTexture(32767, ZvColor(-2, 0x80123456u))})
        EXPECT_EQ(ZvBrush::FromInt64(brush.ToInt64()).ToInt64(), brush.ToInt64());
}

TEST(ZvBrush, TextFormsAreExactAndReadBack) {
    const std::pair<ZvBrush, const char16_t*> cases[] = {
        {ZvBrush(), u"Empty"},
        {ZvBrush::ByBlock(), u"ByBlock"},
        {ZvBrush::ByLayer(), u"ByLayer"},
        {ZvBrush::Null(), u"Null"},
        {ZvBrush::CrossHatch(ZvColor(7)), u"CrossHatch"},
        {ZvBrush::Solid(ZvColor(255, 0, 0)), u"Solid:RGB:FF"},
        {ZvBrush::FromTexture(12, ZvColor::ByLayer()), u"Texture:12:ByLayer"},
    };
    for (const auto& [brush, text] : cases) {
        EXPECT_EQ(brush.ToString(), XStringW(text));
        EXPECT_EQ(ZvBrush::FromString(XStringW(text).ToLower()), brush) << XStringW(text).ToUtf8();
        EXPECT_EQ(brush.ToStringPortable(nullptr), XStringW(u"Null"));
    }
    EXPECT_EQ(ZvBrush::FromString(u"TEXTURE:3"), ZvBrush::FromTexture(3));
    ZvBrush kept = ZvBrush::Solid(ZvColor(4));
    for (const char16_t* bad :
         {u"", u"TEXTURE:", u"TEXTURE:-1", u"TEXTURE:40000", u"SOLID:NOCOLOUR", u"SOLIDX"})
        EXPECT_FALSE(kept.Parse(bad)) << XStringW(bad).ToUtf8();
    EXPECT_EQ(kept, ZvBrush::Solid(ZvColor(4)));
}

TEST(ZvBrush, FixedLayoutChangedItsOrderWithVersion1050) {
    const ZvBrush brush = ZvBrush::Solid(ZvColor(-2, 0x44332211));
    uint8_t bytes[ZvBrush_IO::kSize];
    const uint8_t modern[] = {0x11, 0x22, 0x33, 0x44, 0xFE, 0xFF, 0xFC, 0xFF};
    const uint8_t older[] = {0xFC, 0xFF, 0xFE, 0xFF, 0x11, 0x22, 0x33, 0x44};
    for (const auto& [version, expected] : {std::pair(1075, modern), std::pair(1013, older)}) {
        ZvBrush_IO::Encode(bytes, version, brush);
        EXPECT_EQ(std::memcmp(bytes, expected, sizeof bytes), 0) << version;
        EXPECT_EQ(ZvBrush_IO::Decode(bytes, version), brush) << version;
    }
}

TEST(ZvBrush, ATextureWithoutATableIsReported) {
    ZvErrorCapture errors;
    ZvUsageTable usage;
    ZvBrush::FromTexture(3).RecordUse(usage, nullptr);
    EXPECT_TRUE(errors.Has(14));
    EXPECT_TRUE(errors.HasText("ZvBrush.RecordUse"));
    EXPECT_FALSE(ZvBrush::FromTexture(3).CheckResolve(nullptr));
    EXPECT_TRUE(ZvBrush::Solid(ZvColor(1)).CheckResolve(nullptr));
}

TEST(ZvLineType, TextFormsAreExactAndReadBack) {
    const std::pair<ZvLineType, const char16_t*> cases[] = {{ZvLineType(), u"Continuous"},
                                                            {ZvLineType::ByLayer(), u"ByLayer"},
                                                            {ZvLineType::ByBlock(), u"ByBlock"},
                                                            {ZvLineType(3), u"I:3"}};
    for (const auto& [type, text] : cases) {
        EXPECT_EQ(type.ToString(), XStringW(text));
        EXPECT_EQ(ZvLineType::FromString(XStringW(text).ToUpper()), type);
    }
    EXPECT_EQ(ZvLineType::FromString(u"wavy"), ZvLineType::Continuous());
    EXPECT_EQ(ZvLineType::ByLayer().hardGet(), -2);
    EXPECT_EQ(ZvLineType::ByBlock().hardGet(), -3);
    EXPECT_EQ(ZvLineType(3).GetTextDesc(nullptr), XStringW(u"Unknown"));
}

TEST(ZvLineWidth, EncodesEachUnitInItsRange) {
    EXPECT_FLOAT_EQ(ZvLineWidth::Pixels(2000).Raw(), float(999.999 * 0.001 - 4));
    EXPECT_TRUE(ZvLineWidth::Pixels(2000).IsPixels());
    EXPECT_TRUE(ZvLineWidth::ViewportMM(1e9).IsViewportMM());
    EXPECT_FLOAT_EQ(ZvLineWidth::Points(0).Raw(), -9.1f);
    EXPECT_TRUE(ZvLineWidth::Points(1e9).IsPoints());
    EXPECT_TRUE(ZvLineWidth::World(-3).IsThin());
    EXPECT_TRUE(ZvLineWidth::World(NAN).IsThin());
    for (const double size : {0.5, 1.0, 2.5, 72.0, 999.0}) {
        EXPECT_NEAR(ZvLineWidth::Pixels(size).GetPixels(), size, 2e-4);
        EXPECT_NEAR(ZvLineWidth::ViewportMM(size).GetViewportMM(), size, 2e-4);
        EXPECT_NEAR(ZvLineWidth::Points(size).GetPoints(), size, 1e-4);
    }
}

TEST(ZvLineWidth, EveryStoredNumberIsOfOneKindAtMost) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> any(-10020, 10), small(-12, 1);
    for (int i = 0; i < 200000; ++i) {
        const ZvLineWidth w = ZvLineWidth::FromRaw(i % 2 ? any(random) : small(random));
        EXPECT_LE(w.IsThin() + w.IsWorld() + w.IsByLayer() + w.IsByBlock() + w.IsNull() + w.IsPixels() +
                      w.IsViewportMM() + w.IsPoints(),
                  1)
            << w.Raw();
    }
}

TEST(ZvLineWidth, ScaleAndBakeTouchWhatTheyShould) {
    ZvLineWidth world = ZvLineWidth::World(2), pixels = ZvLineWidth::Pixels(96),
                points = ZvLineWidth::Points(72);
    pixels.Scale(3);
    world.Scale(3);
    EXPECT_EQ(world, ZvLineWidth::World(6));
    EXPECT_EQ(pixels, ZvLineWidth::Pixels(96));
    for (ZvLineWidth* w : {&world, &pixels, &points})
        w->BakeWorld(1000);
    EXPECT_EQ(world, ZvLineWidth::World(6));
    EXPECT_NEAR(pixels.GetWorld(), 25.4, 1e-3);
    EXPECT_NEAR(points.GetWorld(), 25.4, 1e-3);
}

TEST(ZvLineWidth, TextFormsAreExactAndReadBack) {
    const std::pair<ZvLineWidth, const char16_t*> cases[] = {
        {ZvLineWidth(), u"World:0"},
        {ZvLineWidth::World(1.5), u"World:1.500000"},
        {ZvLineWidth::ByLayer(), u"ByLayer"},
        {ZvLineWidth::ByBlock(), u"ByBlock"},
        {ZvLineWidth::Points(2.5), u"Points:2.5"},
        {ZvLineWidth::ViewportMM(0.5), u"ViewMM:0.5"},
        {ZvLineWidth::Pixels(3), u"Pixels:3.0"},
    };
    for (const auto& [width, text] : cases) {
        EXPECT_EQ(width.ToString(), XStringW(text));
        EXPECT_EQ(ZvLineWidth::FromString(text), width) << XStringW(text).ToUtf8();
    }
    EXPECT_EQ(ZvLineWidth::FromRaw(-5).ToString(), XStringW(u"World:0"));
    EXPECT_EQ(ZvLineWidth::FromString(u"thin"), ZvLineWidth());
    // What stands behind the 63rd character does not count.
    EXPECT_EQ(ZvLineWidth::FromString(XStringW(u"World:1" + std::u16string(56, u' ') + u"garbage")),
              ZvLineWidth::World(1));
    EXPECT_EQ(ZvLineWidth::Points(2.5).GetTextDesc(), XStringW(u"2.5 pt"));
    EXPECT_EQ(ZvLineWidth::World(0.25).GetTextDesc(), XStringW(u"0.2500"));
}

TEST(ZvUniSize, DecodesTheWholeRangeOfEachUnit) {
    struct Case {
        float stored;
        ZvUniSize::TypeFlags type;
        double real;
    };
    const Case cases[] = {
        {-1, ZvUniSize::kNone, 0},           {-2, ZvUniSize::kByBlock, 0},
        {-3, ZvUniSize::kByLayer, 0},        {0, ZvUniSize::kWorld, 0},
        {12.5f, ZvUniSize::kWorld, 12.5},    {-10.005f, ZvUniSize::kPoints, 5},
        {-110, ZvUniSize::kPoints, 100000},  {-111.5f, ZvUniSize::kViewMM, 50},
        {-1111, ZvUniSize::kViewMM, 100000}, {-1113, ZvUniSize::kPixels, 50},
        {-3112, ZvUniSize::kPixels, 100000}, {-3113, ZvUniSize::kNone, 0},
        {-110.5f, ZvUniSize::kNone, 0},      {-5, ZvUniSize::kNone, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ZvUniSize::FromRaw(c.stored).Type(), c.type) << c.stored;
        EXPECT_NEAR(ZvUniSize::FromRaw(c.stored).GetRealValue(), c.real, 1e-2) << c.stored;
    }
    EXPECT_FLOAT_EQ(ZvUniSize::Points(5).Raw(), -10.005f);
    EXPECT_NEAR(ZvUniSize::Points(5).GetRealValue(), 5, 1e-3);
    EXPECT_TRUE(ZvUniSize::World(1e300).IsWorld());
    EXPECT_NEAR(ZvUniSize::Pixels(0).GetRealValue(), 0.01, 0.01);
}

TEST(ZvUniSize, ScalingKeepsTheUnitAndLeavesCodes) {
    for (ZvUniSize size :
         {ZvUniSize::World(4), ZvUniSize::Points(40), ZvUniSize::ViewMM(4), ZvUniSize::Pixels(40)}) {
        const auto type = size.Type();
        const double before = size.GetRealValue();
        size *= 2.5;
        EXPECT_EQ(size.Type(), type);
        EXPECT_NEAR(size.GetRealValue(), before * 2.5, 0.02);
    }
    for (ZvUniSize code : {ZvUniSize::Null(), ZvUniSize::ByBlock(), ZvUniSize::ByLayer()}) {
        const ZvUniSize before = code;
        code.SetRealValue(3);
        EXPECT_EQ(code, before);
    }
}

TEST(ZvUniSize, TextFormsAreExactAndReadBack) {
    const std::pair<ZvUniSize, const char16_t*> cases[] = {
        {ZvUniSize(), u"Null"},
        {ZvUniSize::ByBlock(), u"ByBlock"},
        {ZvUniSize::ByLayer(), u"ByLayer"},
        {ZvUniSize::World(2.5), u"Wo:2.5"},
        {ZvUniSize::Points(12), u"Po:12.0"},
        {ZvUniSize::ViewMM(3.5), u"MM:3.50"},
        {ZvUniSize::Pixels(20), u"Pi:20.00"},
    };
    for (const auto& [size, text] : cases) {
        EXPECT_EQ(size.ToString(), XStringW(text));
        EXPECT_EQ(ZvUniSize::FromString(text), size) << XStringW(text).ToUtf8();
    }
    EXPECT_EQ(ZvUniSize::ViewMM(3.5).GetTextDesc(), XStringW(u"3.50 vmm"));
}

TEST(ZvScaleSetup, TurnsDeviceSizesIntoWorldUnits) {
    const ZvScaleSetup scale{2000, 0.5};
    EXPECT_NEAR(scale.SizeToWorld(ZvUniSize::Points(72)), 0.0254 * 2000, 1e-2);
    EXPECT_NEAR(scale.SizeToWorld(ZvUniSize::ViewMM(10)), 20, 1e-2);
    EXPECT_NEAR(scale.SizeToWorld(ZvUniSize::Pixels(10)), 5, 1e-2);
    EXPECT_EQ(scale.SizeToWorld(ZvUniSize::World(3)), 3);
    EXPECT_EQ(scale.SizeToWorld(ZvUniSize::ByLayer()), 0);
    EXPECT_NEAR(scale.WidthToWorld(ZvLineWidth::Pixels(10)), 5, 1e-3);
    EXPECT_NEAR(scale.WidthToWorld(ZvLineWidth::Points(72)), 0.0254 * 2000, 1e-3);
    EXPECT_NEAR(scale.WidthToWorld(ZvLineWidth::ViewportMM(10)), 20, 1e-3);
    EXPECT_EQ(scale.WidthToWorld(ZvLineWidth()), 0);
}

} // namespace
