#include "Zelvan/ZvUnits.h"
#include "ZvCore/BinXml.h"
#include <gtest/gtest.h>

namespace {

using Preset = ZvUnits::Preset;

TEST(ZvUnits, PresetsConvertThroughMetres) {
    EXPECT_DOUBLE_EQ(ZvUnits::ConvertDistance(Preset::Kilometers, Preset::Millimeters, 1), 1000000);
    EXPECT_DOUBLE_EQ(ZvUnits::ConvertDistance(Preset::Inch, Preset::Point, 1), 72);
    EXPECT_EQ(ZvUnits::GetPresetScale(Preset(17)), 1.0);
    XStringW name, abbreviation;
    double scale = 0;
    for (const bool filled : {false, true}) { // the application's list says the same as the built-in names
        if (filled)
            ZvUnits::PopulatePresetList();
        EXPECT_TRUE(ZvUnits::GetPresetParms(Preset::Inch, name, abbreviation, scale));
        EXPECT_EQ(name, XStringW(u"inch"));
        EXPECT_EQ(abbreviation, XStringW(u"in"));
        EXPECT_EQ(scale, 39.37007874015748);
    }
    EXPECT_EQ(ZvUnits::GetPresetNameList().size(), 6u);
    EXPECT_FALSE(ZvUnits::GetPresetParms(Preset(6), name, abbreviation, scale));
    EXPECT_EQ(ZvUnits::GetPresetAnglesList().size(), 24u);
}

TEST(ZvUnits, NewUnitsAreMetresWithTheirTexts) {
    ZvUnits units;
    EXPECT_EQ(units.WorldUnitAbbr(), XStringW(u"m"));
    EXPECT_EQ(units.AngleUnitAbbr(), XStringW(u"\u00EF\u00BF\u00BD"));
    EXPECT_EQ(units.PaperUnitAbbr(), XStringW(u"pt"));
    EXPECT_EQ(units.UU2World(), 1.0);
    EXPECT_TRUE(units.IsMetric());
    units.SetPreset(Preset::Inch, 5.0);
    EXPECT_EQ(units.Scale(), 1.0);
    EXPECT_EQ(units.WorldUnitName(), XStringW(u"inch"));
    EXPECT_FALSE(units.IsMetric());
    EXPECT_FALSE(units.SetCustomWorld(u"rod", u"rd", 0));
    EXPECT_TRUE(units.SetCustomWorld(u"rod", u"rd", 1 / 5.0292));
    EXPECT_DOUBLE_EQ(units.WorldUnitsPerMeter(), 1 / 5.0292);
}

TEST(ZvUnits, DistancesReadNumbersWithUnits) {
    ZvUnits units;
    const std::pair<const char16_t*, double> good[] = {
        {u"12.5", 12.5},        {u" -3 ", -3},          {u"+.5", 0.5},         {u"1e3", 1000},
        {u"25 mm", 0.025},      {u"2KM", 2000},         {u"1 inch", 0.0254},   {u"3 meter", 3},
        {u"72 points", 0.0254}, {u"2.cm", 0.02},        {u"-10'6\"", -3.2004}, {u"10 ft 6 in", 3.2004},
        {u"1km 250 m", 1250},   {u"2 miles", 3218.688},
    };
    for (const auto& [text, expected] : good) {
        double d = -1;
        EXPECT_TRUE(units.ParseDistance(text, d)) << XStringW(text).ToUtf8();
        EXPECT_NEAR(d, expected, 1e-12) << XStringW(text).ToUtf8();
    }
    double kept = 7;
    for (const char16_t* bad :
         {u"", u"m", u"12 parsec", u"1,5", u"--1", u"1e400", u"nan", u".", u"1 m 2", u"1 m -2 m", u"1 2 m"})
        EXPECT_FALSE(units.ParseDistance(bad, kept)) << XStringW(bad).ToUtf8();
    EXPECT_EQ(kept, 7);
    double area = 0;
    EXPECT_TRUE(units.ParseAreaFromUCS(u"10000 cm\u00B2", area));
    EXPECT_NEAR(area, 1, 1e-12);
    EXPECT_TRUE(units.ParseAreaFromUCS(u"4 km^2", area));
    EXPECT_NEAR(area, 4e6, 1e-6);
    EXPECT_FALSE(units.ParseAreaFromUCS(u"4 km", area));
}

TEST(ZvUnits, CoordinatesReadWithTheSeparatorsInForce) {
    ZvUnits units;
    Vec3d p;
    for (const char16_t* text :
         {u"3.5, 5, 0.25", u" 3.5,5,0.25 ", u"3.5 5 0.25", u"3.5;5;0.25", u"3.5 , 5 ,0.25"}) {
        p = {};
        EXPECT_TRUE(units.ParseCoord(text, p)) << XStringW(text).ToUtf8();
        EXPECT_EQ(p, (Vec3d{3.5, 5, 0.25}));
    }
    EXPECT_FALSE(units.SetSeparators(u",", u", "));
    ASSERT_TRUE(units.SetSeparators(u",", u"; "));
    EXPECT_TRUE(units.ParseCoord(u"3,5; -5", p));
    EXPECT_EQ(p, (Vec3d{3.5, -5, 0}));
    EXPECT_EQ(units.FormatCoord(p), XStringW(u"3,500; -5,000; 0,000"));
    EXPECT_EQ(units.GetFormattedCoordExample(), XStringW(u"1,000; 2,500"));
    Vec2d q;
    for (const char16_t* bad : {u"", u"1", u"1;", u"1;2;3;4", u"1;;2", u"1x2", u"1;2;3"})
        EXPECT_FALSE(units.ParseCoord(bad, q)) << XStringW(bad).ToUtf8();
}

TEST(ZvUnits, FormattedLengthsNeverShowZeroForWhatIsNotZero) {
    ZvUnits units;
    EXPECT_EQ(units.FormatDistance(-0.0), XStringW(u"0.000"));
    EXPECT_EQ(units.FormatDistance(1234.5678, true), XStringW(u"1234.568 m"));
    EXPECT_EQ(units.FormatDistance(-0.0004), XStringW(u"-4.00000e-04"));
    units.SetPrecision(0);
    EXPECT_EQ(units.FormatDistance(0.5), XStringW(u"5.00000e-01"));
    units.SetPrecision(3);
    EXPECT_EQ(units.FormatDistance(2e15), XStringW(u"2.00000e+15"));
    EXPECT_EQ(units.FormatDistance(NAN), XStringW(u"-"));
    EXPECT_EQ(units.FormatAreaToUCS(2, true), XStringW(u"2.000 m\u00B2"));
    for (const double d : {0.0, 1.0, -17.125, 4e-9, 3e17}) {
        double back = -1;
        ASSERT_TRUE(units.ParseDistance(units.FormatDistance(d, true), back));
        EXPECT_NEAR(back, d, std::abs(d) * 1e-5);
    }
}

TEST(ZvUnits, AnglesFormatWithinOneTurn) {
    ZvUnits units;
    const std::pair<double, const char16_t*> cases[] = {
        {0, u"0.00"},
        {-0.0000001, u"0.00"},
        {ZvUnits::kTurn, u"0.00"},
        {3 * ZvUnits::kTurn, u"0.00"},
        {-ZvUnits::kTurn / 4, u"270.00"},
        {ZvUnits::kTurn * 1.125, u"45.00"},
        {1, u"57.30"},
        {30.0004 * ZvUnits::kRadiansPerDegree, u"30.00"},
    };
    for (const auto& [radians, text] : cases)
        EXPECT_EQ(units.FormatAngle(radians), XStringW(text)) << radians;
    EXPECT_EQ(units.ParseAngle(u""), 0);
    EXPECT_DOUBLE_EQ(units.ParseAngle(u" 180 "), 180 * 0.017453292519943295);
    EXPECT_EQ(units.ParseAngle(u"east"), 0);
}

TEST(ZvUnits, FieldsSurviveBeingStored) {
    ZvUnits units;
    units.SetCustomWorld(u"rod", u"rd", 0.2);
    units.SetSeparators(u",", u" | ");
    units.SetPrecision(99);
    ZvCore::BinXmlNode node("Units");
    units.Store(node);
    ZvUnits read;
    read.Load(node);
    EXPECT_EQ(read.WorldUnitsPerMeter(), 0.2);
    EXPECT_EQ(read.CoordinateSeparator(), XStringW(u" | "));
    EXPECT_EQ(read.Precision(), 15);
    read.Load(ZvCore::BinXmlNode("Units"));
    EXPECT_FALSE(read.IsCustomWorld());
}

} // namespace
