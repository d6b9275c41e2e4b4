#include "Zelvan/RenC/ZvSurfaceCut.h"
#include "Zelvan/RenC/ZvCoverageFill.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

constexpr ZvSurfaceCut::Box kBox{0, 0, 100, 100};
using Lines = std::vector<std::vector<Vec2f>>;

Lines Cut(const std::vector<Vec2f>& line, bool closed = false) {
    Lines out;
    std::vector<Vec2f> scratch;
    ZvSurfaceCut::Line(kBox, line.data(), line.size(), closed, scratch,
                       [&](const Vec2f* p, size_t n) { out.emplace_back(p, p + n); });
    return out;
}

TEST(ZvSurfaceCut, LinesAreLeftInTheirVisibleStretches) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Cut({{10, 10}, {20, 10}, {20, 20}}), (Lines{{{10, 10}, {20, 10}, {20, 20}}}));
    EXPECT_EQ(Cut({{-10, 10}, {110, 10}, {110, 20}, {-10, 20}}),
              (Lines{{{0, 10}, {100, 10}}, {{100, 20}, {0, 20}}}));
    EXPECT_EQ(Cut({{50, 50}, {150, 50}, {50, 150}}, true),
              (Lines{{{50, 50}, {100, 50}}, {{100, 100}, {100, 100}}, {{50, 100}, {50, 50}}}));
    EXPECT_EQ(Cut({{10, 10}, {nan, 5}, {20, 10}, {30, 10}}), (Lines{{{20, 10}, {30, 10}}}));
    EXPECT_EQ(Cut({{-1e12f, 40}, {1e12f, 40}}), (Lines{{{0, 40}, {100, 40}}}));
    EXPECT_TRUE(Cut({{-5, 4}, {4, -6}}).empty());
    EXPECT_TRUE(Cut({}).empty());
}

TEST(ZvSurfaceCut, RingsKeepTheirVisibleArea) {
    std::mt19937 random(9);
    std::uniform_real_distribution<float> place(-300, 400);
    for (int i = 0; i < 200; ++i) {
        std::vector<Vec2f> ring, cut;
        for (int n = 3 + int(random() % 7); n > 0; --n)
            ring.push_back({place(random), place(random)});
        const size_t count = ZvSurfaceCut::Ring(kBox, ring.data(), ring.size(), cut);
        ASSERT_EQ(count, cut.size());
        EXPECT_FALSE(ZvSurfaceCut::IsNeeded({-0.01f, -0.01f, 100.01f, 100.01f}, cut.data(), count));
        std::vector<uint8_t> covered[2];
        for (const std::vector<Vec2f>* drawn : {&ring, &cut}) {
            std::vector<uint8_t>& to = covered[drawn == &cut];
            to.resize(10000);
            ZvCoverageFill fill;
            fill.Begin({0, 0, 100, 100});
            fill.Ring(drawn->data(), drawn->size());
            fill.Sweep(ZvCoverageFill::Rule::EvenOdd, [&](int y, int x, const uint8_t* c, int n) {
                std::copy(c, c + n, to.begin() + y * 100 + x);
            });
        }
        for (size_t p = 0; p < covered[0].size(); ++p)
            ASSERT_NEAR(covered[0][p], covered[1][p], 1) << i;
    }
}

} // namespace
