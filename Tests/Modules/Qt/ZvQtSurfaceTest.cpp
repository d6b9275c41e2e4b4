#include "Modules/Qt/ZvQtDocument.h"
#include "SurfaceShapes.h"
#include "Zelvan/RenC/ZvRasterSurface.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace SurfaceShapes;

ZvPixelBuffer ByQt(const Scene& scene) {
    ZvPixelBuffer picture(kSide, kSide);
    picture.Clear(0xFFFFFFFF);
    std::string why;
    const auto document = ZvQtDocument::Over(picture);
    scene(document->Surface());
    EXPECT_TRUE(document->Finish(why)) << why;
    return picture;
}

ZvPixelBuffer ByUs(const Scene& scene) {
    ZvRasterSurface surface(kSide, kSide);
    scene(surface);
    return surface.Picture();
}

double Ink(const ZvPixelBuffer& picture, int left = 0, int top = 0, int right = kSide, int bottom = kSide) {
    double ink = 0;
    for (int y = std::max(top, 0); y < std::min(bottom, kSide); ++y)
        for (int x = std::max(left, 0); x < std::min(right, kSide); ++x)
            ink += (255 - (picture.At(x, y) >> 8 & 255)) / 255.0;
    return ink;
}

ZvPen Pen(float width, ZvPen::Cap cap = ZvPen::Cap::Flat, std::vector<float> dashes = {}) {
    ZvPen pen;
    pen.widthPx = width;
    pen.cap = cap;
    pen.dashes = std::move(dashes);
    return pen;
}

ZvFill Fill(ZvFill::Kind kind) {
    ZvFill fill;
    fill.kind = kind;
    fill.hatchOrigin = {3, 2};
    return fill;
}

TEST(ZvQtSurface, PaintsWhatTheRasterSurfacePaints) {
    const float far = 3e6f, inf = std::numeric_limits<float>::infinity();
    struct Case {
        const char* name;
        Scene scene;
        double blocks; ///< most difference of ink in a block of 12 x 12 pixels
    };
    const Case cases[] = {
        {"thin lines", [](IZvSurface& s) { s.SetPen({}), Polyline(s, kStar, true); }, 4},
        {"wide line",
         [](IZvSurface& s) {
             s.SetPen(Pen(7, ZvPen::Cap::Round)), Polyline(s, {{20, 30}, {90, 40}, {30, 90}});
         },
         4},
        {"square ends",
         [](IZvSurface& s) {
             s.SetPen(Pen(9, ZvPen::Cap::Square)), Polyline(s, {{30, 30}, {90, 90}});
         },
         4},
        {"thin dashes",
         [](IZvSurface& s) {
             s.SetPen(Pen(0, ZvPen::Cap::Flat, {9, 5})), Polyline(s, {{10.5f, 10.5f}, {100.5f, 10.5f}});
         },
         3},
        {"wide dashes",
         [](IZvSurface& s) {
             s.SetPen(Pen(4, ZvPen::Cap::Flat, {10, 4, 3, 4})), Polyline(s, {{10, 60}, {110, 60}});
         },
         3},
        {"odd dashes",
         [](IZvSurface& s) {
             s.SetPen(Pen(4, ZvPen::Cap::Flat, {6, 8, 6})), Polyline(s, {{10, 60}, {110, 60}});
         },
         3},
        {"dots",
         [](IZvSurface& s) {
             s.SetPen(Pen(0)), Polyline(s, {{20.5f, 20.5f}}), s.SetPen(Pen(8)), Polyline(s, {{60, 60}});
         },
         3},
        {"fill with a hole",
         [](IZvSurface& s) {
             s.SetFill(Fill(ZvFill::Kind::Solid)), Polygon(s, {kStar, kHole});
         },
         2},
        {"fill and outline",
         [](IZvSurface& s) {
             s.SetFill(Fill(ZvFill::Kind::None)), s.SetPen(Pen(3)), Polygon(s, {kStar, kHole}, true);
         },
         6},
        {"hatch",
         [](IZvSurface& s) {
             s.SetFill(Fill(ZvFill::Kind::Hatch)), Polygon(s, {kStar, kHole});
         },
         4},
        {"cross hatch", [](IZvSurface& s) { s.SetFill(Fill(ZvFill::Kind::CrossHatch)), Polygon(s, {kStar}); },
         7},
        {"far line",
         [=](IZvSurface& s) {
             s.SetPen(Pen(5)), Polyline(s, {{-far, 60 - far / 2}, {far, 60 + far / 2}});
         },
         4},
        {"far polygon",
         [=](IZvSurface& s) {
             s.SetFill(Fill(ZvFill::Kind::Solid)), Polygon(s, {{{60, 20}, {far, far}, {-far, far}}});
         },
         3},
        {"far hatch",
         [=](IZvSurface& s) {
             s.SetFill(Fill(ZvFill::Kind::Hatch)), Polygon(s, {{{60, 20}, {far, far}, {-far, far}}});
         },
         4},
        {"not finite",
         [=](IZvSurface& s) {
             s.SetPen(Pen(3)), Polyline(s, {{10, 20}, {50, 20}, {inf, 0}, {60, 90}, {100, 90}});
         },
         3},
        {"clips",
         [](IZvSurface& s) {
             s.PushClip({20, 20, 90, 90}), s.PushClip({40, 0, 120, 70}), s.SetFill(Fill(ZvFill::Kind::Solid)),
                 Polygon(s, {kStar}), s.PopClip(), s.PopClip(), Polygon(s, {kHole});
         },
         3},
    };
    for (const Case& c : cases) {
        const ZvPixelBuffer qt = ByQt(c.scene), ours = ByUs(c.scene);
        EXPECT_NEAR(Ink(qt), Ink(ours), Ink(ours) / 10 + 3) << c.name;
        EXPECT_GT(Ink(ours), 5) << c.name;
        for (int y = 0; y < kSide; y += 12)
            for (int x = 0; x < kSide; x += 12)
                EXPECT_NEAR(Ink(qt, x, y, x + 12, y + 12), Ink(ours, x, y, x + 12, y + 12), c.blocks)
                    << c.name << " at " << x << ',' << y;
    }
}

TEST(ZvQtSurface, ImagesLieWhereTheRasterSurfaceLaysThem) {
    const uint32_t four[4] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFF000000};
    const Scene scene = [&](IZvSurface& s) {
        s.Image(four, 2, 2, {20, 20}, {40, 0}, {0, 30});
        s.Image(four, 2, 2, {110, 70}, {-10, 30}, {-30, -10});
    };
    const ZvPixelBuffer qt = ByQt(scene), ours = ByUs(scene);
    int different = 0;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            different += qt.At(x, y) != ours.At(x, y);
    EXPECT_LT(different, 220) << "the edges of the turned one";
}

TEST(ZvQtSurface, TextStandsOnItsBaselineAndTurnsCounterClockwise) {
    ZvTextRun run;
    run.text = u"HHHH";
    run.heightPx = 20;
    run.baselineStart = {30, 70};
    const ZvPixelBuffer flat = ByQt([&](IZvSurface& s) { EXPECT_TRUE(s.Text(run)); });
    EXPECT_GT(Ink(flat, 30, 50, kSide, 70), 30);
    EXPECT_NEAR(Ink(flat), Ink(flat, 30, 50, kSide, 71), 1) << "nothing below the baseline";
    run.angle = 1.5707963f;
    const ZvPixelBuffer up = ByQt([&](IZvSurface& s) { s.Text(run); });
    EXPECT_NEAR(Ink(up), Ink(up, 9, 0, 31, 70), 1) << "upwards, letters to the left of the line";
    run.heightPx = 0;
    ByQt([&](IZvSurface& s) { EXPECT_FALSE(s.Text(run)); });
}

} // namespace
