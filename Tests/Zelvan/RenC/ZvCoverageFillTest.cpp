#include "Zelvan/RenC/ZvCoverageFill.h"
#include "ZvCore/Vec.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

using Ring = std::vector<Vec2f>;
using Rule = ZvCoverageFill::Rule;

// Covered area in pixels, and each pixel's coverage.
struct Covered {
    double area = 0;
    std::vector<std::vector<uint8_t>> rows;
};
Covered Fill(ZvCoverageFill& fill, const std::vector<Ring>& rings, Rule rule, const Rect2I& clip) {
    Covered result;
    result.rows.assign(size_t(clip.bottom), std::vector<uint8_t>(size_t(clip.right)));
    fill.Begin(clip);
    for (const Ring& ring : rings)
        fill.Ring(ring.data(), ring.size());
    fill.Sweep(rule, [&](int y, int x, const uint8_t* coverage, int count) {
        ASSERT_TRUE(y >= clip.top && y < clip.bottom && x >= clip.left && x + count <= clip.right);
        for (int i = 0; i < count; ++i) {
            result.rows[size_t(y)][size_t(x + i)] = coverage[i];
            result.area += coverage[i] / 255.0;
        }
    });
    return result;
}
Covered Fill(const std::vector<Ring>& rings, Rule rule, const Rect2I& clip = {0, 0, 100, 100}) {
    ZvCoverageFill fill;
    return Fill(fill, rings, rule, clip);
}

Ring Star(std::mt19937& random, Vec2f centre, float radius, int corners) {
    Ring ring;
    for (int i = 0; i < corners; ++i) {
        const float angle = 6.2831853f * float(i) / float(corners);
        const float r = radius * (0.3f + 0.7f * float(random() % 1000) / 1000);
        ring.push_back({centre.x + r * std::cos(angle), centre.y + r * std::sin(angle)});
    }
    return ring;
}

double Area(const Ring& ring) {
    double twice = 0;
    for (size_t i = 0; i < ring.size(); ++i) {
        const Vec2f a = ring[i], b = ring[(i + 1) % ring.size()];
        twice += double(a.x) * b.y - double(a.y) * b.x;
    }
    return std::fabs(twice) / 2;
}

TEST(ZvCoverageFill, CoversTheAreaOfPolygonsWithHoles) {
    std::mt19937 random(11);
    for (int i = 0; i < 300; ++i) {
        const Ring outer = Star(random, {50, 50}, 45, 3 + int(random() % 40));
        Ring hole = Star(random, {50, 50}, 12, 3 + int(random() % 9));
        if (i % 2)
            std::reverse(hole.begin(), hole.end()); // the even-odd rule does not mind which way a ring turns
        const double tolerance = double(outer.size()) * 0.1;
        EXPECT_NEAR(Fill({outer}, Rule::EvenOdd).area, Area(outer), tolerance);
        EXPECT_NEAR(Fill({outer}, Rule::NonZero).area, Area(outer), tolerance);
        if (outer.size() > 8) {
            EXPECT_NEAR(Fill({outer, hole}, Rule::EvenOdd).area, Area(outer) - Area(hole), tolerance);
        }
    }
}

TEST(ZvCoverageFill, OverlapsFollowTheRule) {
    const Ring left{{10, 10}, {30, 10}, {30, 30}, {10, 30}}, right{{20, 10}, {40, 10}, {40, 30}, {20, 30}};
    EXPECT_NEAR(Fill({left, right}, Rule::EvenOdd).area, 400, 0.1);
    EXPECT_NEAR(Fill({left, right}, Rule::NonZero).area, 600, 0.1);
    EXPECT_NEAR(Fill({left, left}, Rule::EvenOdd).area, 0, 0.1);
    EXPECT_NEAR(Fill({left, left, left}, Rule::EvenOdd).area, 400, 0.1);
}

TEST(ZvCoverageFill, ClippedPolygonsCoverTheSamePixelsInTheClip) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> place(0, 220);
    ZvCoverageFill kept; // memory of former clips must leave no trace
    for (int i = 0; i < 300; ++i) {
        Ring ring;
        for (int n = 3 + int(random() % 6); n > 0; --n)
            ring.push_back({place(random), place(random)});
        const Covered whole = Fill({ring}, Rule::EvenOdd, {0, 0, 220, 220});
        const int left = 60 + int(random() % 50), top = 60 + int(random() % 50);
        const Rect2I clip{left, top, left + 1 + int(random() % 50), top + 1 + int(random() % 50)};
        const Covered cut = Fill(kept, {ring}, Rule::EvenOdd, clip);
        for (int y = clip.top; y < clip.bottom; ++y)
            for (int x = clip.left; x < clip.right; ++x)
                ASSERT_NEAR(cut.rows[size_t(y)][size_t(x)], whole.rows[size_t(y)][size_t(x)], 1)
                    << "polygon " << i << " at " << x << ',' << y;
    }
}

TEST(ZvCoverageFill, TakesFarPointsAndLeavesOutThoseThatAreNotFinite) {
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    for (float far : {1e6f, 1e12f, 3e38f}) {
        EXPECT_NEAR(Fill({{{-far, -far}, {far, -far}, {far, far}, {-far, far}}}, Rule::EvenOdd).area, 1e4, 1);
        if (far <
            1e13f) { // beyond, double precision does not tell on which side of the pixels the slant passes
            EXPECT_NEAR(Fill({{{-far, -far}, {far, -far}, {far, far}}}, Rule::EvenOdd).area, 5e3, 60) << far;
        }
        EXPECT_EQ(Fill({{{far, 0}, {far, 100}, {far / 2, 100}}}, Rule::EvenOdd).area, 0);
    }
    const Ring square{{nan, 5}, {10, 10}, {30, 10}, {inf, inf}, {30, 30}, {10, 30}, {0, -inf}};
    EXPECT_NEAR(Fill({square}, Rule::EvenOdd).area, 400, 0.1);
    EXPECT_EQ(Fill({{{nan, nan}, {inf, 0}}}, Rule::EvenOdd).area, 0);
}

TEST(ZvCoverageFill, WithoutSmoothingPixelsAreCoveredWholeOrNot) {
    ZvCoverageFill fill;
    fill.SetSmooth(false);
    std::mt19937 random(2);
    const Ring ring = Star(random, {50, 50}, 45, 17);
    const Covered covered = Fill(fill, {ring}, Rule::EvenOdd, {0, 0, 100, 100});
    for (const auto& row : covered.rows)
        for (uint8_t c : row)
            ASSERT_TRUE(c == 0 || c == 255);
    EXPECT_NEAR(covered.area, Area(ring), Area(ring) / 50);
}

} // namespace
