#include "Zelvan/RenC/ZvRasterSurface.h"
#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr uint32_t kWhite = 0xFFFFFFFF, kBlack = 0xFF000000;

double Ink(const ZvPixelBuffer& picture, const Rect2I& area) {
    double ink = 0;
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x)
            ink += (255 - (picture.At(x, y) & 255)) / 255.0;
    return ink;
}

void FillRect(ZvRasterSurface& surface, float left, float top, float right, float bottom) {
    const Vec2f ring[4] = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
    const ZvSurfaceRing rings{ring, 4};
    surface.Polygon(&rings, 1, false);
}

ZvFill Solid(uint32_t argb) {
    ZvFill fill;
    fill.kind = ZvFill::Kind::Solid;
    fill.argb = argb;
    return fill;
}

TEST(ZvRasterSurface, ClipsCutEachOtherAndEndWithTheirPop) {
    ZvRasterSurface surface(60, 60);
    surface.SetFill(Solid(kBlack));
    surface.PushClip({10, 10, 40, 40});
    surface.PushClip({20, 0, 80, 30});
    FillRect(surface, 0, 0, 60, 60);
    const Vec2f line[2] = {{0, 5.5f}, {60, 5.5f}};
    surface.Polyline(line, 2, false);
    EXPECT_EQ(Ink(surface.Picture(), {0, 0, 60, 60}), 20 * 20);
    EXPECT_EQ(Ink(surface.Picture(), {20, 10, 40, 30}), 20 * 20);
    surface.PushClip({50, 50, 60, 60}); // nothing in common
    FillRect(surface, 0, 0, 60, 60);
    surface.PopClip();
    surface.PopClip();
    FillRect(surface, 0, 0, 60, 60);
    EXPECT_EQ(Ink(surface.Picture(), {0, 0, 60, 60}), 30 * 30);
    surface.PopClip();
    surface.PopClip(); // one too many
    FillRect(surface, 0, 0, 60, 60);
    EXPECT_EQ(Ink(surface.Picture(), {0, 0, 60, 60}), 60 * 60);
}

TEST(ZvRasterSurface, TranslucentColoursBlend) {
    ZvRasterSurface surface(10, 10, 0xFF0000FF);
    surface.SetFill(Solid(0x80FF0000));
    FillRect(surface, 0, 0, 10, 10);
    EXPECT_EQ(surface.Picture().At(5, 5), 0xFF80007Fu);
    ZvRasterSurface clear(10, 10, 0);
    clear.SetFill(Solid(0x80FF0000));
    FillRect(clear, 0, 0, 10, 10);
    EXPECT_EQ(clear.Picture().At(5, 5), 0x80800000u) << "premultiplied";
}

TEST(ZvRasterSurface, HatchesCoverTheirShareAndFollowTheirOrigin) {
    for (const float angle : {0.0f, 0.785398f, 2.0f}) {
        ZvFill fill;
        fill.kind = ZvFill::Kind::Hatch;
        fill.hatchAngle = angle;
        ZvRasterSurface plain(164, 164), moved(164, 164), cross(164, 164);
        plain.SetFill(fill);
        FillRect(plain, 2, 2, 162, 162);
        EXPECT_NEAR(Ink(plain.Picture(), {0, 0, 164, 164}), 160 * 160 / 8.0, 160 * 160 / 80.0) << angle;
        fill.hatchOrigin = {3, 5};
        moved.SetFill(fill);
        FillRect(moved, 2, 2, 162, 162);
        for (int y = 10; y < 150; ++y)
            for (int x = 10; x < 150; ++x)
                ASSERT_NEAR(double(moved.Picture().At(x + 3, y + 5) & 255),
                            double(plain.Picture().At(x, y) & 255), 1);
        fill.kind = ZvFill::Kind::CrossHatch;
        cross.SetFill(fill);
        FillRect(cross, 2, 2, 162, 162);
        EXPECT_NEAR(Ink(cross.Picture(), {0, 0, 164, 164}), 160 * 160 * (1 - 49 / 64.0), 160 * 160 / 40.0);
    }
}

TEST(ZvRasterSurface, EveryPenDrawsDots) {
    for (const float width : {0.0f, 1.5f, 6.0f})
        for (const ZvPen::Cap cap : {ZvPen::Cap::Flat, ZvPen::Cap::Round, ZvPen::Cap::Square})
            for (const bool dashed : {false, true}) {
                ZvRasterSurface surface(20, 20);
                ZvPen pen;
                pen.widthPx = width;
                pen.cap = cap;
                if (dashed)
                    pen.dashes = {5, 3};
                surface.SetPen(pen);
                const Vec2f at{10.5f, 10.5f};
                surface.Polyline(&at, 1, false);
                const double area = width <= 1 ? 1 : width * width * (cap == ZvPen::Cap::Square ? 1 : 0.785);
                EXPECT_NEAR(Ink(surface.Picture(), {0, 0, 20, 20}), area, area / 10)
                    << width << ' ' << int(cap);
            }
}

TEST(ZvRasterSurface, ThinAndWideLinesTakeTheSameDashes) {
    ZvPen pen;
    pen.dashes = {10, 6};
    for (const float width : {0.0f, 8.0f}) {
        ZvRasterSurface surface(100, 20);
        pen.widthPx = width;
        surface.SetPen(pen);
        const Vec2f line[2] = {{-16 * 100 + 2, 10.5f}, {98, 10.5f}};
        surface.Polyline(line, 2, false);
        for (int x = 2; x < 96; ++x)
            EXPECT_EQ(surface.Picture().At(x, 10), (x - 2) % 16 < 10 ? kBlack : kWhite) << width << ' ' << x;
    }
}

// Red, green over blue, white.
constexpr uint32_t kFour[4] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFFFF};

TEST(ZvRasterSurface, ImagesAreStretchedTurnedAndMirrored) {
    struct Case {
        Vec2f origin, right, down;
        uint32_t topLeft, topRight, bottomLeft;
    };
    for (const Case& c : {Case{{10, 10}, {20, 0}, {0, 20}, kFour[0], kFour[1], kFour[2]},
                          Case{{30, 10}, {-20, 0}, {0, 20}, kFour[1], kFour[0], kFour[3]},
                          Case{{30, 10}, {0, 20}, {-20, 0}, kFour[2], kFour[0], kFour[3]}}) {
        ZvRasterSurface surface(40, 40);
        ASSERT_TRUE(surface.Image(kFour, 2, 2, c.origin, c.right, c.down));
        EXPECT_EQ(surface.Picture().At(12, 12), c.topLeft);
        EXPECT_EQ(surface.Picture().At(28, 12), c.topRight);
        EXPECT_EQ(surface.Picture().At(12, 28), c.bottomLeft);
        EXPECT_EQ(surface.Picture().At(9, 12), kWhite);
        EXPECT_EQ(surface.Picture().At(31, 28), kWhite);
    }
    ZvRasterSurface surface(40, 40);
    EXPECT_FALSE(surface.Image(kFour, 2, 2, {0, 0}, {10, 0}, {20, 0})) << "no area";
    EXPECT_FALSE(surface.Image(nullptr, 2, 2, {0, 0}, {10, 0}, {0, 10}));
    EXPECT_FALSE(surface.Image(kFour, 2, 2, {std::nanf(""), 0}, {10, 0}, {0, 10}));
}

TEST(ZvRasterSurface, SmallImagesAreMeansOfTheirPixels) {
    std::vector<uint32_t> stripes(101 * 90);
    for (size_t i = 0; i < stripes.size(); ++i)
        stripes[i] = i % 101 % 2 ? kBlack : kWhite;
    ZvRasterSurface surface(40, 40);
    ASSERT_TRUE(surface.Image(stripes.data(), 101, 90, {5, 5}, {20, 0}, {0, 20}));
    for (int y = 6; y < 24; ++y)
        for (int x = 6; x < 24; ++x)
            EXPECT_NEAR(double(surface.Picture().At(x, y) & 255), 127.5, 27);
}

} // namespace
