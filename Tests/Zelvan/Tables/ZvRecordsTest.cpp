#include "Tests/Support/BoxEntity.h"
#include "Zelvan/RenC/ZvRasterSurface.h"
#include "Zelvan/Tables/ZvBitmapTable.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvDataTable.h"
#include "Zelvan/Tables/ZvDimStyleTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Tables/ZvPaperTable.h"
#include "Zelvan/Tables/ZvProgramTable.h"
#include "Zelvan/Tables/ZvSelectionVolumeTable.h"
#include "Zelvan/Tables/ZvTextStyleTable.h"
#include "Zelvan/Tables/ZvTextureTable.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/Tables/ZvXRefTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvTableTable.h"
#include "ZvCore/ZvErrors.h"
#include <cmath>
#include <gtest/gtest.h>
#include <random>

TEST(DefaultRecords, EveryTableHasItsBaseNameAndDefaults) {
    ZvDrawing drawing;
    const struct {
        ZvTableCode::Code table;
        const char* base;
        std::vector<std::string> defaults;
    } cases[] = {
        {ZvTableCode::Bitmap, "Bitmap", {}},
        {ZvTableCode::LineType, "Linetype", {ZvStrings::Get(40000), ZvStrings::Get(40001)}},
        {ZvTableCode::Block, "Block", {}},
        {ZvTableCode::TextStyle, "Style", {"Standard"}},
        {ZvTableCode::Program, "Program", {}},
        {ZvTableCode::Texture, "Texture", {}},
        {ZvTableCode::DimStyle, "Dimension Style", {"Default"}},
        {ZvTableCode::Paper, "Paper", {"Paper1"}},
        {ZvTableCode::Ucs, "UCS", {ZvStrings::Get(45000)}},
        {ZvTableCode::XRef, "XRef", {}},
        {ZvTableCode::Data, "Data", {}},
        {ZvTableCode::Layout, "Layout", {}},
        {ZvTableCode::View, "View", {}},
        {ZvTableCode::SelectionVolume, "Selection Volume ", {}},
    };
    for (const auto& one : cases) {
        ZvTable* table = drawing.TableTable()->Get(one.table);
        ASSERT_TRUE(table) << one.base;
        EXPECT_EQ(table->DefaultNameBase().ToUtf8(), one.base);
        std::vector<std::string> names;
        for (int i = 0; i < table->Count(); ++i)
            names.push_back(table->Get(i)->GetName().ToUtf8());
        EXPECT_EQ(names, one.defaults) << one.base;
        table->CreateDefaults();
        EXPECT_EQ(table->Count(), int(one.defaults.size())) << one.base << " made twice";
    }
    const ZvLineTypeTable& types = *drawing.LineTypeTable();
    EXPECT_TRUE(types.Get(0)->IsInternal());
    EXPECT_EQ(types.Get(0)->Dashes(), (std::vector<double>{8, 8}));
    EXPECT_EQ(types.Get(1)->Dashes(), (std::vector<double>{2, 6}));
    EXPECT_EQ(drawing.UcsTable()->GetCurrent()->GetScale(), 1.0);
}

TEST(ZvPaperPage, DefaultPageLiesOverTheDrawing) {
    ZvDrawing drawing;
    drawing.Insert(std::make_unique<BoxEntity>(10, 20, 30, 40));
    drawing.PaperTable()->Purge();
    drawing.PaperTable()->CreateDefaults();
    const ZvPaperPage& page = *drawing.PaperTable()->Get(0);
    EXPECT_EQ(page.GetCenter(), (Vec3d{20, 30, 0}));
    EXPECT_FALSE(page.BelongsToLayout());
}

TEST(ZvPaperPage, SizesOrientationAndMarginsStayPossible) {
    ZvPaperPage page;
    EXPECT_FALSE(page.SetSize(0, 100) || page.SetSize(100, 1e9) || page.SetSize(NAN, 1));
    EXPECT_TRUE(page.SetSize(297, 210));
    EXPECT_TRUE(page.IsLandscape());
    EXPECT_EQ(page.GetWidth(), 297);
    page.SetMargins({300, -5, 300, NAN});
    EXPECT_LT(page.GetMargins().left + page.GetMargins().right, 297);
    EXPECT_EQ(page.GetMargins().top, 0);
    page.SetMargins({10, 10, 10, 10});
    page.SetCenter({1, 1, 0});
    page.SetAngle(std::acos(-1) / 2);
    const ZvBounds2D sheet = page.Sheet();
    EXPECT_NEAR(sheet.Width(), 0.210, 1e-12);
    EXPECT_NEAR(page.Printable().Height(), 0.277, 1e-12);
}

TEST(ZvUcs, AxesStaySquareAndPositionsComeBack) {
    ZvUcs ucs;
    EXPECT_FALSE(ucs.SetAxes({1, 0, 0}, {2, 0, 0}) || ucs.SetAxes({0, 0, 0}, {0, 1, 0}));
    EXPECT_TRUE(ucs.SetAxes({0, 2, 0}, {-1, 1, 0}));
    ucs.SetOrigin({100, 50, 0});
    ucs.SetScale(1000);
    const Vec3d user = ucs.WorldToUser({100, 53, 0});
    EXPECT_NEAR(user.x, 3000, 1e-9);
    EXPECT_NEAR(user.y, 0, 1e-9);
    EXPECT_NEAR((ucs.UserToWorld(user) - Vec3d{100, 53, 0}).Length(), 0, 1e-12);
    ucs.SetScale(-1);
    EXPECT_EQ(ucs.GetScale(), 1);
}

TEST(ZvUcsTable, CoordinateSystemOfTheDrawingScalesMetres) {
    ZvDrawing drawing;
    EXPECT_EQ(drawing.MetersToWorld(3), 3);
    ZvCoordSystem feet;
    feet.kind = ZvCoordSystem::Kind::Projected;
    feet.metersPerUnit = 0.5;
    drawing.UcsTable()->SetCoordinateSystem(feet);
    EXPECT_EQ(drawing.MetersToWorld(3), 6);
    EXPECT_EQ(drawing.WorldToMeters(6), 3);
    EXPECT_TRUE(drawing.UcsTable()->ApplyUnitPreset(4, 1000)) << "millimetres";
    EXPECT_EQ(drawing.UcsTable()->GetCurrent()->GetName().ToUtf8(), "millimeters");
    EXPECT_FALSE(drawing.UcsTable()->ApplyUnitPreset(99, 1));
}

TEST(ZvLineTypeRec, PatternsComeFromParametersOrDashes) {
    ZvLineTypeRec type;
    EXPECT_TRUE(type.SetDashes({3, 1, 0, 1, 2}));
    EXPECT_EQ(type.Dashes(), (std::vector<double>{3, 1, 0, 1, 2, 0})) << "the last dash gets an empty gap";
    EXPECT_EQ(type.PatternLength(), 7);
    EXPECT_FALSE(type.SetDashes({1, -1}) || type.SetDashes({INFINITY}) ||
                 type.SetDashes(std::vector<double>(2000, 1)));
    EXPECT_EQ(type.PatternLength(), 7) << "unchanged";
    type.SetPattern(0, 2, 3);
    EXPECT_EQ(type.Dashes(), (std::vector<double>{0, 6})) << "dots";
    type.SetPattern(5, 0, 1);
    EXPECT_TRUE(type.Dashes().empty()) << "without a gap it is continuous";
}

TEST(ZvTextStyle, MeasuresOneLine) {
    ZvDrawing drawing;
    ZvTextStyle& style = *drawing.TextStyleTable()->Get(0);
    const double plain = style.MeasureLength(u"Wall");
    EXPECT_GT(plain, 1);
    EXPECT_EQ(style.MeasureLength(u"Wa\r\nll"), plain) << "line breaks have no width";
    style.SetWidthFactor(2);
    EXPECT_NEAR(style.MeasureLength(u"Wall"), plain * 2, 1e-12);
    style.SetTracking(0.5);
    EXPECT_NEAR(style.MeasureLength(u"Wall"), plain * 2 + 1.5, 1e-12);
    EXPECT_GT(style.GetBaselineFraction(), 0.1);
    EXPECT_LT(style.GetBaselineFraction(), 0.4);
}

TEST(ZvDimStyle, ValuesReadAsTheStyleSays) {
    using S = ZvDimStyle;
    const struct {
        std::function<void(S::Values&)> set;
        int type;
        double value;
        const char* text;
    } cases[] = {
        {[](S::Values&) {}, 0, 12.345, "12.35"},
        {[](S::Values& v) { v.trailingZeros = false; }, 1, 12.5, "12.5"},
        {[](S::Values& v) { v.trailingZeros = v.leadingZero = false; }, 1, -0.5, "-.5"},
        {[](S::Values& v) { v.trailingZeros = v.leadingZero = false; }, 1, 0, "0"},
        {[](S::Values& v) { v.decimalSeparator = u","; }, 0, -0.001, "0,00"},
        {[](S::Values&) {}, 3, 2, "R2.00"},
        {[](S::Values&) {}, 4, 2, "\u00D82.00"},
        {[](S::Values& v) { v.prefix = u"<", v.suffix = u">"; }, 3, 2, "<2.00>"},
        {[](S::Values& v) { v.roundTo = 0.25; }, 0, 1.4, "1.50"},
        {[](S::Values& v) { v.lengthUnit = S::LengthUnit::Millimeters, v.showUnit = true; }, 0, 1.5,
         "1500.00 mm"},
        {[](S::Values& v) { v.lengthUnit = S::LengthUnit::FeetInch; }, 0, 0.3048 * 6 - 0.000001, "6' 0.00\""},
        {[](S::Values& v) { v.lengthUnit = S::LengthUnit::FeetInch; }, 0, -0.0254 * 13.5, "-1' 1.50\""},
        {[](S::Values& v) { v.tolerance = true, v.toleranceUpper = 0.1, v.toleranceLower = 0.2; }, 0, 1,
         "1.00 +0.10 -0.20"},
        {[](S::Values&) {}, 2, 1.5707963267948966, "90.00\u00B0"},
        {[](S::Values& v) { v.angleUnit = S::AngleUnit::DegreesMinutesSeconds, v.angleDecimals = 0; }, 5,
         0.5236 - 1e-7, "30\u00B000'00\""},
        {[](S::Values& v) { v.angleUnit = S::AngleUnit::Gradians, v.showUnit = true; }, 6, 1.5707963267948966,
         "100.00 gon"},
        {[](S::Values&) {}, 0, NAN, "-"},
    };
    for (const auto& one : cases) {
        ZvDimStyle style;
        ZvDimStyle::Values values = style.Get();
        one.set(values);
        style.Set(values);
        EXPECT_EQ(style.FormatValue(one.type, one.value).ToUtf8(), one.text);
    }
}

// --- textures ---------------------------------------------------------------------------------------------

namespace {

double HatchLength(const ZvTexture& texture, const std::vector<std::vector<Vec2d>>& rings,
                   const ZvBounds2D& window) {
    std::vector<std::span<const Vec2d>> spans(rings.begin(), rings.end());
    double length = 0;
    EXPECT_TRUE(texture.GenerateHatch(spans, window, 1, 100000, [&](const Vec2d& a, const Vec2d& b) {
        length += (b - a).Length();
        ZvBounds2D nearly = window;
        nearly.Grow(1e-9);
        EXPECT_TRUE(nearly.IsInsideMe(a) && nearly.IsInsideMe(b));
    }));
    return length;
}

} // namespace

TEST(ZvTexture, HatchLinesFillTheAreaBetweenRings) {
    ZvTexture texture;
    ASSERT_TRUE(texture.SetFamilies({{0, {0, 0.05}, 0.1, 0, {}}}));
    const std::vector<std::vector<Vec2d>> square{{{0, 0}, {10, 0}, {10, 10}, {0, 10}},
                                                 {{2, 2}, {8, 2}, {8, 8}, {2, 8}}};
    // The lines' length times their spacing is the area.
    EXPECT_NEAR(HatchLength(texture, square, ZvBounds2D::SuperBounds()) * 0.1, 64, 1e-6);
    EXPECT_NEAR(HatchLength(texture, square, {0, 0, 5, 10}) * 0.1, 32, 1e-6) << "clipped to the window";
    texture.SetAngle(0.7);
    EXPECT_NEAR(HatchLength(texture, square, ZvBounds2D::SuperBounds()) * 0.1, 64, 0.2);
    ASSERT_TRUE(texture.SetFamilies({{0.3, {0, 0}, 0.1, 0.02, {0.3, 0.1}}}));
    EXPECT_NEAR(HatchLength(texture, square, ZvBounds2D::SuperBounds()) * 0.1, 48, 0.5)
        << "three quarters drawn";
}

TEST(ZvTexture, RandomStarsAreHatchedByTheirArea) {
    std::mt19937 random(99);
    std::uniform_real_distribution<double> radius(1, 10);
    for (int n = 0; n < 20; ++n) {
        std::vector<Vec2d> star;
        for (int i = 0; i < 40; ++i) {
            const double angle = i * 6.283185307179586 / 40, r = radius(random);
            star.push_back({r * std::cos(angle), r * std::sin(angle)});
        }
        double area = 0;
        for (size_t i = 0; i < star.size(); ++i)
            area += star[i].Cross(star[(i + 1) % star.size()]) / 2;
        ZvTexture texture;
        ASSERT_TRUE(texture.SetFamilies({{n * 0.31, {0.01, 0.02}, 0.02, 0, {}}}));
        EXPECT_NEAR(HatchLength(texture, {star}, ZvBounds2D::SuperBounds()) * 0.02, area, area * 0.01);
    }
}

TEST(ZvTexture, EndlessPatternsAreRefused) {
    ZvTexture texture;
    EXPECT_FALSE(texture.SetFamilies({{0, {0, 0}, 0, 0, {}}}));
    EXPECT_FALSE(texture.SetFamilies({{0, {0, 0}, 1, 0, {0, 0}}}));
    EXPECT_FALSE(texture.SetFamilies(std::vector<ZvTexture::Family>(65)));
    ASSERT_TRUE(texture.SetFamilies({{0, {0, 0}, 1e-9, 0, {}}}));
    const std::vector<Vec2d> ring{{0, 0}, {1, 0}, {1, 1}};
    const std::span<const Vec2d> span(ring);
    EXPECT_FALSE(texture.GenerateHatch({&span, 1}, ZvBounds2D::SuperBounds(), 1, 1000, [](auto&, auto&) {}));
    ASSERT_TRUE(texture.SetFamilies({{0, {0, 0}, 0.1, 0, {1e-12, 1e-12}}}));
    EXPECT_FALSE(texture.GenerateHatch({&span, 1}, ZvBounds2D::SuperBounds(), 1, 1000, [](auto&, auto&) {}));
}

// --- the others -------------------------------------------------------------------------------------------

TEST(ZvBlockTable, BlocksThatContainThemselvesAreFound) {
    struct Reference : BoxEntity {
        int block;
        explicit Reference(int index) : BoxEntity(0, 0, 1, 1), block(index) {}
        void TableUsage(ZvUsageTable& usage) const override {
            usage.Use(ZvTableCode::Full(ZvTableCode::Block), block);
        }
    };
    ZvDrawing drawing;
    ZvBlockTable& blocks = *drawing.BlockTable();
    ZvBlock *a = blocks.InsertNew(u"a"), *b = blocks.InsertNew(u"b"), *c = blocks.InsertNew(u"c");
    a->Adopt(std::make_unique<Reference>(1));
    b->Adopt(std::make_unique<Reference>(2));
    EXPECT_FALSE(blocks.IsRecursive(*a));
    EXPECT_TRUE(a->RefersTo(*c));
    EXPECT_FALSE(c->RefersTo(*a));
    c->Adopt(std::make_unique<Reference>(0));
    EXPECT_TRUE(blocks.IsRecursive(*a) && blocks.IsRecursive(*c));
    EXPECT_EQ(drawing.NameTable().Count(), 3);
    EXPECT_EQ(&blocks.GetNoFail(65535), &blocks.DummyBlock());
    EXPECT_EQ(blocks.DummyBlock().EntityCount(), 2u);
    EXPECT_NEAR(blocks.DummyBlock().Bounds().Width(), 1, 1e-5);
    EXPECT_EQ(drawing.NameTable().Count(), 3) << "the dummy is not part of the drawing";
}

TEST(ZvLayout, HasADrawingThatBorrows) {
    ZvDrawing drawing;
    ZvLayout* layout = drawing.LayoutTable()->InsertNew();
    ASSERT_TRUE(layout && layout->Drawing());
    EXPECT_EQ(layout->GetName().ToUtf8(), "Layout1");
    EXPECT_EQ(layout->Drawing()->LineTypeTable(), drawing.LineTypeTable());
    EXPECT_NE(layout->Drawing()->LayerTable(), drawing.LayerTable());
    EXPECT_EQ(layout->Drawing()->ParentLayoutRecord(), layout);
    EXPECT_TRUE(layout->GetPage()->BelongsToLayout());
    layout->Drawing()->PaperTable()->InsertNew();
    layout->EnsureSinglePage();
    EXPECT_EQ(layout->Drawing()->PaperTable()->Count(), 1);
    EXPECT_EQ(drawing.LayoutTable()->FindByDrawing(layout->Drawing()), layout);
    EXPECT_TRUE(drawing.LayoutTable()->DeleteRecord(layout));
}

TEST(ZvDataTable, ValuesHaveAKind) {
    ZvDrawing drawing;
    ZvDataTable& data = *drawing.DataTable();
    data.GetOrMake(u"n").SetNumber(4.5);
    data.GetOrMake(u"__s").SetString(u"text");
    data.GetOrMake(u"b").SetBinary({1, 2});
    EXPECT_EQ(data.GetNumber(u"N"), 4.5);
    EXPECT_EQ(data.GetNumber(u"b", -1), -1) << "another kind";
    EXPECT_EQ(data.GetString(u"__s"), XStringW(u"text"));
    EXPECT_TRUE(data.GetByName(u"__s")->IsInternal());
    EXPECT_EQ(data.GetBinary(u"b")->size(), 2u);
    EXPECT_FALSE(data.GetXml(u"b"));
    data.GetOrMake(u"b").SetNumber(1);
    EXPECT_FALSE(data.GetBinary(u"b"));
    EXPECT_TRUE(data.Remove(u"__s"));
    EXPECT_FALSE(data.Remove(u"__s"));
}

TEST(ZvBitmapRec, TakesSizeFromTheHeadOfTheFile) {
    const struct {
        std::vector<uint8_t> bytes;
        ZvBitmapRec::Format format;
        int width, height;
    } cases[] = {
        {{0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13, 'I', 'H', 'D', 'R', 0, 0, 1, 2, 0, 0, 0, 3},
         ZvBitmapRec::Format::Png,
         258,
         3},
        {{0xFF, 0xD8, 0xFF, 0xE0, 0, 4, 0, 0, 0xFF, 0xC2, 0, 17, 8, 0, 5, 1, 0, 3},
         ZvBitmapRec::Format::Jpeg,
         256,
         5},
        {{'x', 'y'}, ZvBitmapRec::Format::Other, 7, 8},
        {{0xFF, 0xD8, 0xFF, 0xE0, 0xFF, 0xFF}, ZvBitmapRec::Format::Jpeg, 7, 8},
    };
    for (const auto& one : cases) {
        ZvBitmapRec record;
        ASSERT_TRUE(record.SetEncoded(one.bytes, 7, 8));
        EXPECT_EQ(record.GetFormat(), one.format);
        EXPECT_EQ(record.GetWidth(), one.width);
        EXPECT_EQ(record.GetHeight(), one.height);
        EXPECT_EQ(record.GetBytes(), one.bytes);
    }
    ZvBitmapRec record;
    EXPECT_FALSE(record.SetEncoded({}) || record.SetPixels(2, 2, std::vector<uint8_t>(15)));
    EXPECT_TRUE(record.SetPixels(2, 1, {0, 0, 255, 255, 0, 255, 0, 255}));
    EXPECT_TRUE(record.GetPixels());
}

TEST(ZvSelectionVolume, ContainsWhatLiesInThePrism) {
    ZvSelectionVolume volume;
    EXPECT_FALSE(volume.Contains({0, 0, 0}));
    EXPECT_FALSE(volume.SetOutline({{0, 0}, {1, 1}}));
    ASSERT_TRUE(volume.SetOutline({{0, 0}, {4, 0}, {4, 4}, {2, 1}, {0, 4}}));
    volume.SetZRange(5, -5);
    EXPECT_TRUE(volume.Contains({1, 1, 0}) && volume.Contains({4, 2, 5}) && volume.Contains({0, 0, 0}));
    EXPECT_FALSE(volume.Contains({2, 3, 0}) || volume.Contains({1, 1, 6}) || volume.Contains({5, 0, 0}));
}

TEST(Records, PropertiesAreShownAndSet) {
    ZvPaperTable table(nullptr);
    ZvPaperPage* page = table.InsertNew(u"Sheet");
    ZvPropertyGatherer gatherer;
    page->GetProperties(gatherer);
    ASSERT_TRUE(gatherer.Find("Name") && gatherer.Find("Center.X") && gatherer.Find("Landscape"));
    EXPECT_EQ(gatherer.Find("WorldPerMm")->label, XStringW(u"World units per mm"));
    EXPECT_FALSE(gatherer.Find("BelongsToLayout")->writable);
    ZvPropertySetter setter;
    setter.Set("Name", XStringW(u"A/B"));
    setter.Set("Center.Y", int64_t(5));
    setter.Set("Landscape", int64_t(1));
    setter.Set("Angle", NAN);
    setter.Set("Nothing", true);
    const uint64_t stamp = page->GetModifiedStamp();
    const ZvErrorCapture errors;
    page->SetProperties(setter);
    EXPECT_EQ(page->GetCenter(), (Vec3d{0, 5, 0}));
    EXPECT_EQ(page->GetName(), XStringW(u"Sheet"));
    EXPECT_FALSE(page->IsLandscape());
    EXPECT_EQ(setter.Refusals().size(), 3u);
    EXPECT_EQ(setter.Unused(), std::vector<std::string>{"Nothing"});
    EXPECT_EQ(page->GetModifiedStamp(), stamp + 1);
}

TEST(Records, AValueOutOfRangeIsRefusedAndTheFieldsStay) {
    ZvLineTypeRec dashed;
    dashed.SetPattern(4, 4, 2);
    ZvUcs ucs;
    ucs.SetScale(100);
    ZvPropertySetter setter;
    setter.Set("PatternA", -1.0);
    setter.Set("Scale", int64_t(0));
    dashed.SetProperties(setter);
    ucs.SetProperties(setter);
    EXPECT_EQ(dashed.Dashes(), (std::vector<double>{8, 8}));
    EXPECT_EQ(ucs.GetScale(), 100);
    EXPECT_EQ(setter.Refusals().size(), 2u);
    dashed.SetPattern(1e200, 1, 1e200);
    EXPECT_TRUE(dashed.Dashes().empty()) << "a pattern without end is continuous";
}

TEST(Records, CopiesHaveTheContentAndAnIdentityOfTheirOwn) {
    ZvTexture texture;
    texture.SetNameFinal(u"Bricks");
    ASSERT_TRUE(texture.SetFamilies({{0.1, {1, 2}, 3, 4, {5, 6}}, {0, {0, 0}, 1, 0, {}}}));
    const std::unique_ptr<ZvTableRecord> copy = texture.Clone();
    EXPECT_EQ(static_cast<ZvTexture&>(*copy).Families(), texture.Families());
    EXPECT_EQ(copy->GetName(), texture.GetName());
    EXPECT_NE(copy->GetGuid(), texture.GetGuid());
    EXPECT_FALSE(texture.Merge(ZvLineTypeRec())) << "another kind";
}

TEST(Records, SwatchesDrawSomething) {
    ZvDrawing drawing;
    auto texture = std::make_unique<ZvTexture>();
    ASSERT_TRUE(texture->SetFamilies({{0.5, {0, 0}, 1, 0, {}}}));
    auto bitmap = std::make_unique<ZvBitmapRec>();
    ASSERT_TRUE(bitmap->SetPixels(1, 1, {255, 0, 0, 255}));
    const ZvTableRecord* records[] = {drawing.LineTypeTable()->Get(0),
                                      drawing.DimStyleTable()->Get(0),
                                      drawing.PaperTable()->Get(0),
                                      &drawing.BlockTable()->DummyBlock(),
                                      texture.get(),
                                      bitmap.get()};
    for (const ZvTableRecord* record : records) {
        ZvRasterSurface surface(40, 20);
        record->DrawUI(surface, {0, 0, 40, 20});
        int drawn = 0;
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 40; ++x)
                drawn += surface.Picture().At(x, y) != 0xFFFFFFFF;
        EXPECT_GT(drawn, 10) << record->GetRecordCode();
    }
}
