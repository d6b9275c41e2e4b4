#include "Zelvan/RenC/ZvStroker.h"
#include "Zelvan/RenC/ZvCoverageFill.h"
#include "Zelvan/RenC/ZvDasher.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using Cap = ZvStroker::Cap;
constexpr double kPi = 3.14159265358979;

ZvPixelBuffer Stroked(const std::vector<Vec2f>& line, float width, Cap cap, bool closed = false) {
    ZvPixelBuffer picture(100, 100);
    ZvCoverageFill fill;
    fill.Begin({0, 0, 100, 100});
    ZvStroker stroker(fill);
    stroker.SetPen(width, cap);
    stroker.Polyline(line.data(), line.size(), closed);
    fill.Paint(picture, ZvCoverageFill::Rule::NonZero, 0xFF000000);
    return picture;
}

double Area(const ZvPixelBuffer& picture) {
    double area = 0;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            area += (picture.At(x, y) >> 24) / 255.0;
    return area;
}

TEST(ZvStroker, CoversTheAreaOfSegmentsCapsAndJoints) {
    const double rightAngle =
        2 * 30 * 8 - 16 + 16; // two segments share a quarter of the joint's square, the mitre adds the other
    struct Case {
        const char* name;
        std::vector<Vec2f> line;
        bool closed;
        Cap cap;
        double area;
    };
    const Case cases[] = {
        {"flat", {{20, 50}, {80, 50}}, false, Cap::Flat, 60 * 8},
        {"square", {{20, 50}, {80, 50}}, false, Cap::Square, 68 * 8},
        {"round", {{20, 50}, {80, 50}}, false, Cap::Round, 60 * 8 + kPi * 16},
        {"slanted", {{20, 20}, {56, 68}}, false, Cap::Flat, 60 * 8},
        {"repeated points", {{20, 50}, {20, 50}, {80, 50}, {80, 50}}, false, Cap::Flat, 60 * 8},
        {"right angle", {{20, 20}, {50, 20}, {50, 50}}, false, Cap::Flat, rightAngle},
        {"there and back", {{20, 50}, {80, 50}, {20, 50}}, false, Cap::Flat, 60 * 8 + kPi * 8},
        {"square ring", {{20, 20}, {60, 20}, {60, 60}, {20, 60}}, true, Cap::Flat, 48 * 48 - 32 * 32},
        {"ring with its start repeated",
         {{20, 20}, {60, 20}, {60, 60}, {20, 60}, {20, 20}},
         true,
         Cap::Flat,
         48 * 48 - 32 * 32},
        {"dot", {{50, 50}}, false, Cap::Flat, kPi * 16},
        {"dot of a ring", {{50, 50}, {50, 50}, {50, 50}}, true, Cap::Round, kPi * 16},
        {"square dot", {{50, 50}}, false, Cap::Square, 64},
    };
    for (const Case& c : cases)
        EXPECT_NEAR(Area(Stroked(c.line, 8, c.cap, c.closed)), c.area, c.area / 70) << c.name;
}

TEST(ZvStroker, FarEndsLeaveTheVisiblePartUnchanged) {
    const ZvPixelBuffer expected = Stroked({{-50, 30}, {150, 70}}, 10, Cap::Flat);
    for (float far : {1e3f, 1e6f}) {
        const ZvPixelBuffer picture =
            Stroked({{50 - 5 * far, 50 - far}, {50 + 5 * far, 50 + far}}, 10, Cap::Round);
        for (int y = 0; y < 100; ++y)
            for (int x = 0; x < 100; ++x)
                ASSERT_NEAR(double(picture.At(x, y) >> 24), double(expected.At(x, y) >> 24), 12) << far;
    }
    EXPECT_NEAR(Area(Stroked({{-1e12f, 50}, {1e12f, 50}}, 10, Cap::Flat)), 1000, 10);
    EXPECT_EQ(Area(Stroked({{-1e30f, -1e20f}, {1e30f, -1e20f}}, 10, Cap::Flat)), 0);
}

TEST(ZvStroker, PointsThatAreNotFiniteBreakTheLine) {
    const float inf = std::numeric_limits<float>::infinity();
    const ZvPixelBuffer picture =
        Stroked({{20, 20}, {40, 20}, {inf, 0}, {20, 60}, {40, 60}}, 8, Cap::Flat, true);
    EXPECT_NEAR(Area(picture), 2 * 20 * 8, 2);
}

using Lines = std::vector<std::vector<Vec2f>>;

Lines Dashed(const std::vector<float>& pattern, const std::vector<Vec2f>& line, bool closed = false,
             const ZvSurfaceCut::Box& box = {-10, -10, 110, 110}) {
    Lines dashes;
    ZvDasher dasher;
    dasher.SetPattern(pattern);
    dasher.Polyline(box, line.data(), line.size(), closed,
                    [&](const Vec2f* points, size_t count) { dashes.emplace_back(points, points + count); });
    return dashes;
}

TEST(ZvDasher, CutsLinesIntoDashesThatGoAroundCorners) {
    EXPECT_EQ(Dashed({4, 2}, {{0, 0}, {15, 0}}),
              (Lines{{{0, 0}, {4, 0}}, {{6, 0}, {10, 0}}, {{12, 0}, {15, 0}}}));
    EXPECT_EQ(Dashed({4, 2}, {{0, 0}, {8, 0}, {8, 8}}),
              (Lines{{{0, 0}, {4, 0}}, {{6, 0}, {8, 0}, {8, 2}}, {{8, 4}, {8, 8}}}));
    EXPECT_EQ(Dashed({6, 2}, {{0, 0}, {4, 0}, {4, 4}, {0, 4}}, true),
              (Lines{{{0, 0}, {4, 0}, {4, 2}}, {{4, 4}, {0, 4}, {0, 2}}}));
    EXPECT_EQ(Dashed({0, 3, 2, 1}, {{0, 0}, {7, 0}}), (Lines{{{0, 0}}, {{3, 0}, {5, 0}}, {{6, 0}}}));
    EXPECT_EQ(Dashed({2, 1, 2}, {{0, 0}, {10, 0}}),
              (Lines{{{0, 0}, {2, 0}}, {{3, 0}, {5, 0}}, {{5, 0}, {7, 0}}, {{8, 0}, {10, 0}}}));
    for (const std::vector<float>& pattern : {std::vector<float>{}, {0, 0}, {0.1f, 0.1f}, {-1, -2}})
        EXPECT_EQ(Dashed(pattern, {{0, 0}, {10, 0}}), (Lines{{{0, 0}, {10, 0}}})) << pattern.size();
}

TEST(ZvDasher, WhatIsOutsideCountsForThePatternButIsNotCutUp) {
    const Lines seen = Dashed({3, 2}, {{-1e6f, 50}, {1e6f, 50}});
    ASSERT_GE(seen.size(), 20u);
    ASSERT_LE(seen.size(), 30u);
    for (size_t i = 1; i + 1 < seen.size(); ++i) {
        EXPECT_NEAR(seen[i].back().x - seen[i].front().x, 3, 1e-3);
        EXPECT_NEAR(seen[i].front().x - seen[i - 1].front().x, i > 1 ? 5 : seen[1][0].x - seen[0][0].x, 1e-3);
        EXPECT_NEAR(std::fmod(seen[i].front().x + 1e6, 5), 0, 1e-3) << "the phase is that of the whole line";
    }
    EXPECT_LE(Dashed({3, 2}, {{-3e38f, 50}, {3e38f, 50}, {0, 50}}).size(), 60u);
    EXPECT_TRUE(Dashed({3, 2}, {{-1e9f, -50}, {1e9f, -50}}).empty());
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Dashed({100, 1}, {{0, 0}, {4, 0}, {nan, 0}, {8, 0}, {9, 0}}),
              (Lines{{{0, 0}, {4, 0}}, {{8, 0}, {9, 0}}}));
}

} // namespace
