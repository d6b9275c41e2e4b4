#include "Zelvan/RenC/ZvLineRaster.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

constexpr uint32_t kBlack = 0xFF000000;
constexpr Rect2I kClip{20, 10, 75, 50};
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

ZvPixelBuffer Drawn(const std::vector<Vec2f>& points, uint32_t color, bool antialias, bool closed = false,
                    const Rect2I& clip = kClip) {
    ZvPixelBuffer picture(100, 60);
    ZvLineRaster(picture, clip, color, antialias).Polyline(points.data(), points.size(), closed);
    return picture;
}

// What the line through a and b should cover of a column (row, when steep): the mean of the covered pixels' centres across, and
// their sum in 255ths.
struct Across {
    double sum = 0, mean = 0;
};
Across Measure(const ZvPixelBuffer& picture, bool steep, int major) {
    Across m;
    for (int i = 0; i < (steep ? picture.Width() : picture.Height()); ++i) {
        const uint32_t alpha = (steep ? picture.At(i, major) : picture.At(major, i)) >> 24;
        m.sum += alpha;
        m.mean += alpha * (i + 0.5);
    }
    m.mean /= m.sum > 0 ? m.sum : 1;
    return m;
}

TEST(ZvLineRaster, EveryStepCoversTheLineWherePixelsOfTheClipLie) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> far(-3000, 3000), near(-40, 140);
    int measured = 0;
    for (int i = 0; i < 3000; ++i) {
        const Vec2f a{near(random), near(random)};
        const Vec2f b = i % 2 ? Vec2f{near(random), near(random)} : Vec2f{far(random), far(random)};
        const bool steep = std::fabs(b.y - a.y) > std::fabs(b.x - a.x), antialias = i % 3 != 0;
        const ZvPixelBuffer picture = Drawn({a, b}, kBlack, antialias);
        for (int m = 0; m < (steep ? picture.Height() : picture.Width()); ++m) {
            const double centre = m + 0.5;
            const double start = steep ? a.y : a.x, end = steep ? b.y : b.x;
            const double share = (centre - start) / (end - start);
            const double at = steep ? a.x + share * (double(b.x) - a.x) : a.y + share * (double(b.y) - a.y);
            const Across got = Measure(picture, steep, m);
            const int lowMajor = steep ? kClip.top : kClip.left,
                      highMajor = steep ? kClip.bottom : kClip.right;
            const int lowMinor = steep ? kClip.left : kClip.top,
                      highMinor = steep ? kClip.right : kClip.bottom;
            const bool passes = centre > std::min(start, end) + 1 && centre < std::max(start, end) - 1;
            if (m < lowMajor || m >= highMajor || at < lowMinor - 1 || at > highMinor + 1) {
                EXPECT_EQ(got.sum, 0) << "outside the clip, line " << i << " step " << m;
            } else if (passes && at > lowMinor + 1 && at < highMinor - 1) {
                ++measured;
                EXPECT_NEAR(got.sum, 255, 1);
                EXPECT_NEAR(got.mean, at, antialias ? 0.01 : 0.501) << "line " << i << " step " << m;
            }
        }
    }
    EXPECT_GT(measured, 20000);
}

TEST(ZvLineRaster, PolylineBlendsNoPixelTwice) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> step(0.05f, 9), height(15, 45);
    const uint32_t color = ZvPixelBuffer::Premultiply(0x40FF0000);
    for (int i = 0; i < 200; ++i) {
        std::vector<Vec2f>
            line; // runs to the right and is never steep, so that each column belongs to one segment
        for (float x = 22, y = height(random); x < 72; x += step(random)) {
            if (!line.empty())
                y = std::clamp(y + (x - line.back().x) * (float(random() % 1000) / 500 - 1), 12.0f, 48.0f);
            line.push_back({x, y});
        }
        if (i % 2)
            std::reverse(line.begin(), line.end());
        const ZvPixelBuffer picture = Drawn(line, color, false);
        for (int y = 0; y < 60; ++y)
            for (int x = 0; x < 100; ++x)
                ASSERT_TRUE(picture.At(x, y) == 0 || picture.At(x, y) == color) << i << ": " << x << ',' << y;
        for (int x = 23; x < int(std::max(line.back().x, line.front().x)); ++x)
            EXPECT_GT(Measure(picture, false, x).sum, 0) << i << ": column " << x;
    }
}

TEST(ZvLineRaster, TakesPointsAtAnyDistanceAndBreaksAtThoseThatAreNotFinite) {
    for (bool antialias : {false, true}) {
        for (float far : {1e5f, 1e9f, 1e12f}) {
            const ZvPixelBuffer row = Drawn({{-far, 30.5f}, {far, 30.5f}}, kBlack, antialias);
            for (int x = kClip.left; x < kClip.right; ++x)
                ASSERT_EQ(row.At(x, 30), kBlack) << far;
            const ZvPixelBuffer slant = Drawn({{-far, -far}, {far, far}}, kBlack, antialias);
            for (int x = kClip.left; x < kClip.bottom; ++x)
                ASSERT_NEAR(double(slant.At(x, x) >> 24), 255, 40) << far;
        }
        Drawn({{-3e38f, -3e38f}, {3e38f, 1e38f}, {3e38f, -3e38f}}, kBlack, antialias, true);
        for (float bad : {kInf, -kInf, kNaN}) {
            const ZvPixelBuffer picture =
                Drawn({{22, 20.5f}, {30, 20.5f}, {bad, 4}, {40, 40.5f}, {50, 40.5f}}, kBlack, antialias);
            EXPECT_EQ(picture.At(25, 20), kBlack);
            EXPECT_EQ(picture.At(45, 40), kBlack);
            EXPECT_EQ(Measure(picture, false, 35).sum, 0);
        }
    }
}

TEST(ZvLineRaster, LinesWithinOnePixelAreOnePixelWhole) {
    const std::vector<std::vector<Vec2f>> lines{
        {{30.5f, 30.5f}}, {{30.5f, 30.5f}, {30.5f, 30.5f}}, {{30.2f, 30.5f}, {30.8f, 30.5f}}};
    for (const auto& line : lines)
        for (bool closed : {false, true}) {
            ZvPixelBuffer expected(100, 60);
            expected.Row(30)[30] = kBlack;
            EXPECT_EQ(Drawn(line, kBlack, true, closed), expected);
        }
    EXPECT_EQ(Drawn({{19.9f, 30}}, kBlack, true), ZvPixelBuffer(100, 60)) << "outside the clip";
    EXPECT_EQ(Drawn({{30, 30}, {40, 40}}, kBlack, true, false, {-5, -5, -1, -1}), ZvPixelBuffer(100, 60));
}

} // namespace
