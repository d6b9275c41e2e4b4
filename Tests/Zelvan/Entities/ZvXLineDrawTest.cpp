#include "TextGeometry.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/Tools/ZvPolygonArea.h"
#include "Zelvan/Tools/ZvSegment2D.h"
#include "Zelvan/View/ZvViewXForm.h"
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace {

/// Keeps what is drawn.
struct Recorder : IZvSurface {
    struct Line {
        std::vector<Vec2f> points;
        bool closed;
    };
    std::vector<Line> lines;
    std::vector<std::vector<std::vector<Vec2f>>> polygons;
    std::vector<bool> outlined;
    std::vector<ZvPen> pens;

    int Width() const override { return 200; }
    int Height() const override { return 100; }
    void SetPen(const ZvPen& pen) override { pens.push_back(pen); }
    void SetFill(const ZvFill&) override {}
    void Polyline(const Vec2f* points, size_t count, bool closed) override {
        lines.push_back({{points, points + count}, closed});
    }
    void Polygon(const ZvSurfaceRing* rings, size_t count, bool outline) override {
        polygons.emplace_back();
        for (size_t i = 0; i < count; ++i)
            polygons.back().emplace_back(rings[i].points, rings[i].points + rings[i].count);
        outlined.push_back(outline);
    }
    bool Text(const ZvTextRun&) override { return false; }
    bool Image(const uint32_t*, int, int, Vec2f, Vec2f, Vec2f) override { return false; }
    void PushClip(const Rect2I&) override {}
    void PopClip() override {}
};

/// A plan view of x -100..100, y -50..50, one pixel a unit.
struct Frame {
    Recorder surface;
    Zelvan::ZvViewXForm view;
    std::unique_ptr<ZvRenderContext> context;

    explicit Frame(double width = 200) {
        view.SetWindowRect(Rect2I{0, 0, 200, 100}, false);
        view.SetViewWidth(width);
        view.RebuildView();
        context = std::make_unique<ZvRenderContext>(ZvRenderMode::Raster, surface, view, nullptr);
    }
    const Recorder& Draw(const ZvEntity& entity) {
        entity.Draw(*context);
        context->Flush();
        return surface;
    }
};

} // namespace

TEST(XLineView, LeavingOutWhatIsNotSeenChangesNothingInTheWindow) {
    std::mt19937 random(31);
    std::uniform_real_distribution<double> step(-3, 3), in(-10, 10);
    for (int round = 0; round < 40; ++round) {
        std::vector<Vec2d> ring{{0, 0}};
        for (int i = 0; i < 400; ++i)
            ring.push_back(ring.back() + Vec2d{step(random), step(random)});
        ZvXLine line;
        line.SetPoly(true, true, ring.size(), ring.data(), round % 2 ? 1 : -1);
        ZvXLine::ViewCut cut;
        cut.window = {-10, -10, 10, 10};
        std::vector<Vec2f> out(ring.size());
        out.resize(line.ReadForView(0, line.NumVerts(), cut, out.data()));
        EXPECT_LT(out.size(), ring.size());
        std::vector<Vec2d> seen;
        for (const Vec2f& v : out)
            seen.push_back({v.x, v.y});
        const auto nearest = [](const std::vector<Vec2d>& r, const Vec2d& p) {
            double best = 9e90;
            for (size_t i = 0; i < r.size(); ++i)
                best = std::min(best, ZvSegment2D{r[i], r[(i + 1) % r.size()]}.DistanceSq(p));
            return std::sqrt(best);
        };
        for (int k = 0; k < 100; ++k) {
            const Vec2d p{in(random), in(random)};
            const double distance = nearest(ring, p);
            if (distance > 1e-3) {
                EXPECT_EQ(PointInRing2D(seen.data(), seen.size(), p),
                          PointInRing2D(ring.data(), ring.size(), p));
            }
            if (distance < 10 - std::max(std::abs(p.x), std::abs(p.y))) {
                EXPECT_NEAR(nearest(seen, p), distance, 1e-3) << "the nearest line is in the window";
            }
        }
    }
}

TEST(XLineView, ThinningKeepsEndsAndStaysWithinAStep) {
    std::vector<Vec2d> v;
    for (int i = 0; i <= 1000; ++i)
        v.push_back({i * 0.1, std::sin(i * 0.05) * 5});
    for (int mode : {-1, 1}) {
        ZvXLine line;
        line.SetPoly(false, false, v.size(), v.data(), mode);
        ZvXLine::ViewCut cut;
        cut.map = {2, 0, 10, 0, -2, 20};
        cut.step = 1;
        Vec2f out[1001];
        const uint32_t count = line.ReadForView(0, 1001, cut, out);
        EXPECT_LT(count, 300u);
        EXPECT_NEAR(out[0].x, 10, 1e-4);
        EXPECT_NEAR(out[count - 1].x, 210, 1e-4);
        for (uint32_t i = 0; i + 2 < count; ++i)
            EXPECT_GE(std::max(std::abs(out[i + 1].x - out[i].x), std::abs(out[i + 1].y - out[i].y)), 0.999);
        EXPECT_EQ(line.ReadForView(500, 1, cut, out), 1u);
    }
}

TEST(XLineDraw, LinesAreStrokedPolygonsFilledAndSpecksDotted) {
    Frame frame;
    const auto open = LineFromText("0,0 10,0 10,10; 20,20 30,20 30,30 close");
    const Recorder& seen = frame.Draw(*open);
    ASSERT_EQ(seen.lines.size(), 2u);
    EXPECT_FALSE(seen.lines[0].closed);
    EXPECT_TRUE(seen.lines[1].closed);
    EXPECT_NEAR(seen.lines[0].points[1].x, 110, 1e-3);
    EXPECT_NEAR(seen.lines[0].points[2].y, 40, 1e-3);

    auto polygon = PolygonFromText("0,0 30,0 30,30 0,30; 10,10 20,10 20,20");
    frame.Draw(*polygon);
    EXPECT_EQ(seen.polygons.size(), 0u) << "an empty brush leaves the outline";
    EXPECT_EQ(seen.lines.size(), 4u);
    polygon->SetBrush(ZvBrush::Solid(ZvColor(2)));
    frame.Draw(*polygon);
    ASSERT_EQ(seen.polygons.size(), 1u);
    EXPECT_EQ(seen.polygons[0].size(), 2u);
    EXPECT_EQ(seen.polygons[0][1].size(), 3u);
    EXPECT_TRUE(seen.outlined[0]);

    Frame far(200000);
    EXPECT_EQ(far.Draw(*open).lines.at(0).points.size(), 1u) << "smaller than a pixel";
}

TEST(XLineDraw, LongLinesOutsideTheWindowCostFewPoints) {
    std::vector<Vec2d> v;
    for (int i = 0; i < 5000; ++i)
        v.push_back({1000 + 900 * std::cos(i * 0.00125), 900 * std::sin(i * 0.00125)});
    ZvXLine line;
    line.SetPolyline(v);
    Frame frame;
    EXPECT_LT(frame.Draw(line).lines.at(0).points.size(), 200u);
    // The phase of dashes depends on all that lies before: nothing is left out.
    ZvXLine dashed;
    dashed.SetPolyline(v);
    dashed.SetLineType(ZvLineType(0));
    Frame other;
    EXPECT_GT(other.Draw(dashed).lines.at(0).points.size(), 3000u);
}

TEST(XLineDraw, HeatIsTheLengthInsideTheGrid) {
    Frame frame;
    frame.context->EnableHeat(200, 100);
    LineFromText("-500,0.5 500,0.5", 1)->DrawHeatmap(*frame.context);
    LineFromText("0,0 0,40 30,40 close", 1)->DrawHeatmap(*frame.context);
    const std::vector<float>& heat = *frame.context->Heat();
    EXPECT_NEAR(std::accumulate(heat.begin(), heat.end(), 0.0), 200 + 40 + 30 + 50, 0.1);
    EXPECT_NEAR(heat[49 * 200 + 3], 1, 1e-3);
}
