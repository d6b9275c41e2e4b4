#include "Zelvan/RenC/ZvFrameRenderer.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/RenC/ZvRasterSurface.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/ZvDrawing.h"
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace {

constexpr int kWidth = 320, kHeight = 200;

/// 2000 lines, areas and points on three layers, world 0..1000, lines and areas 2 to 30 units across.
struct Scene {
    ZvDrawing drawing;
    std::vector<ZvLayer*> layers;

    Scene() {
        std::mt19937 random(17);
        std::uniform_real_distribution<double> place(0, 1000), step(-8, 8);
        for (const char16_t* name : {u"ground", u"lines", u"top"})
            layers.push_back(drawing.LayerTable()->InsertNew(name));
        for (int i = 0; i < 2000; ++i) {
            std::vector<Vec2d> v{{place(random), place(random)}};
            while (v.size() < 8)
                v.push_back(v.back() + Vec2d{step(random), step(random)});
            ZvLayer& layer = *layers[size_t(i) % 3];
            auto line = std::make_unique<ZvXLine>();
            line->SetPoly(i % 5 == 0, i % 5 == 0, v.size(), v.data(), 0, &drawing);
            line->SetColor(ZvColor(int(random() % 200), int(random() % 200), int(random() % 200)));
            if (i % 5 == 0)
                line->SetBrush(ZvBrush::Solid(ZvColor(int(random() % 256), 200, 100, i % 2 ? 128 : 255)));
            if (i % 7 == 0)
                line->SetLineWidth(i % 2 ? ZvLineWidth::World(6) : ZvLineWidth::Pixels(5));
            line->SetVisible(i % 50 != 0);
            layer.Adopt(std::move(line));
        }
    }
};

struct Shot {
    ZvRasterSurface surface{kWidth, kHeight};
    Zelvan::ZvViewXForm view;
    std::unique_ptr<ZvRenderContext> context;
    Shot(Scene& scene, const Vec2d& at, double worldPerPixel, double turn = 0,
         ZvRenderMode mode = ZvRenderMode::Raster)
        : view(&scene.drawing) {
        view.SetPlan({at.x, at.y, 0}, worldPerPixel * kWidth, turn);
        view.SetWindowRect(Rect2I{0, 0, kWidth, kHeight}, true);
        context = std::make_unique<ZvRenderContext>(mode, surface, view, &scene.drawing);
    }
    ZvFrameRenderer::State Draw(Scene& scene, ZvFrameRenderer::Options options = {}) {
        return ZvFrameRenderer(scene.drawing, *context, options).Draw();
    }
    /// Every entity by itself, without a look at where it lies.
    void DrawAll(Scene& scene) {
        for (const ZvLayer* layer : scene.drawing.LayerTable()->GetDrawOrder()) {
            context->EnterLayer(layer);
            layer->Tree().ForEach([&](ZvEntity* entity) {
                if (entity->IsVisible() && !entity->IsErased())
                    entity->DrawRast(*context);
            });
        }
    }
    bool HasInk(int x, int y, int around) const {
        for (int v = std::max(0, y - around); v <= std::min(kHeight - 1, y + around); ++v)
            for (int u = std::max(0, x - around); u <= std::min(kWidth - 1, x + around); ++u)
                if (surface.Picture().At(u, v) != 0xFFFFFFFF)
                    return true;
        return false;
    }
};

TEST(ZvFrameRenderer, LeavesOutOnlyWhatDoesNotShow) {
    Scene scene;
    for (const double scale : {0.05, 0.3, 0.9})
        for (const double turn : {0.0, 0.6})
            for (const Vec2d at : {Vec2d{500, 500}, {120, 900}, {1010, 20}}) {
                Shot frame(scene, at, scale, turn), all(scene, at, scale, turn);
                EXPECT_EQ(frame.Draw(scene), ZvFrameRenderer::State::Finished);
                all.DrawAll(scene);
                EXPECT_EQ(frame.surface.Picture(), all.surface.Picture())
                    << scale << " at " << at.x << ',' << at.y;
                EXPECT_LT(frame.context->stats.entitiesDrawn, 1600u);
                EXPECT_GT(frame.context->stats.nodesCulled, 0u);
            }
}

TEST(ZvFrameRenderer, FromFarAwayEverySpeckShowsWithinAPixel) {
    Scene scene;
    for (const double scale : {20.0, 60.0, 400.0, 5000.0}) {
        Shot frame(scene, {500, 500}, scale), all(scene, {500, 500}, scale);
        frame.Draw(scene);
        all.DrawAll(scene);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                ASSERT_TRUE(!frame.HasInk(x, y, 0) || all.HasInk(x, y, 1)) << scale << ": " << x << ',' << y;
                ASSERT_TRUE(!all.HasInk(x, y, 0) || frame.HasInk(x, y, 4)) << scale << ": " << x << ',' << y;
            }
        if (scale >= 400) {
            EXPECT_GT(frame.context->stats.nodesBelowPixel, 0u) << scale;
            EXPECT_LT(frame.context->stats.entitiesDrawn, 400u) << scale;
        }
    }
}

TEST(ZvFrameRenderer, AWideLineBesideTheWindowReachesIn) {
    Scene scene;
    const std::vector<Vec2d> v{{5000, 0}, {5000, 1000}};
    auto line = std::make_unique<ZvXLine>();
    line->SetPolyline(v, false, &scene.drawing);
    ZvXLine& kept = *line;
    scene.layers[0]->Adopt(std::move(line));
    Shot before(scene, {4900, 500}, 0.5);
    before.Draw(scene);
    EXPECT_FALSE(before.HasInk(kWidth - 1, 100, 0));
    kept.SetLineWidth(ZvLineWidth::World(60)); // the window ends 20 units before the line's middle
    Shot after(scene, {4900, 500}, 0.5);
    after.Draw(scene);
    EXPECT_TRUE(after.HasInk(kWidth - 1, 100, 0));
}

TEST(ZvFrameRenderer, PointsKeepTheirMarkersHoweverCloseTheyLie) {
    Scene scene;
    for (int i = 0; i < 300; ++i)
        scene.layers[2]->Adopt(std::make_unique<ZvPointEnt>(Vec3d{20000 + i * 1e-3, 20000, 0}));
    Shot frame(scene, {20000, 20000}, 5);
    frame.Draw(scene);
    for (int y = kHeight / 2 - 1; y <= kHeight / 2; ++y)
        for (int x = kWidth / 2 - 1; x <= kWidth / 2; ++x)
            EXPECT_TRUE(frame.HasInk(x, y, 0)) << "three pixels across";
}

/// A second passes between two looks.
struct TickingClock : IZvClock {
    mutable double seconds = 0;
    DateTime Now() const override { return {}; }
    double MonotonicSeconds() const override { return seconds += 1; }
};
struct StopAt : ZvCore::IProgress {
    uint64_t left = 0;
    bool Step(std::string_view, uint64_t, uint64_t) override { return left-- > 0; }
};

TEST(ZvFrameRenderer, AFrameThatStopsAtItsDeadlineGoesOnToTheSamePicture) {
    Scene scene;
    for (const double scale : {2.0, 30.0, 300.0}) {
        Shot whole(scene, {500, 500}, scale), parts(scene, {500, 500}, scale);
        whole.Draw(scene);
        TickingClock clock;
        ZvFrameRenderer::Options options;
        options.clock = &clock;
        options.budgetSeconds = 0.5;
        ZvFrameRenderer frame(scene.drawing, *parts.context, options);
        int calls = 1;
        while (frame.Draw() == ZvFrameRenderer::State::OutOfTime)
            ++calls;
        EXPECT_GT(calls, 2) << scale;
        EXPECT_EQ(parts.surface.Picture(), whole.surface.Picture()) << scale;
        EXPECT_EQ(parts.context->stats.entitiesDrawn, whole.context->stats.entitiesDrawn);
    }
}

TEST(ZvFrameRenderer, AFrameCanBeCancelledAndTakenUpAgain) {
    Scene scene;
    for (ZvLayer* layer : scene.layers) { // many small pieces of work
        layer->Tree().SetMaxEntitiesPerNode(2);
        layer->Tree().Restructure({0, 0, 0, 1000, 1000, 0});
    }
    StopAt progress;
    ZvFrameRenderer::Options options;
    options.progress = &progress;
    Shot whole(scene, {500, 500}, 3), parts(scene, {500, 500}, 3);
    whole.Draw(scene);
    ZvFrameRenderer frame(scene.drawing, *parts.context, options);
    ASSERT_EQ(frame.Draw(), ZvFrameRenderer::State::Cancelled);
    EXPECT_LT(parts.context->stats.entitiesDrawn, whole.context->stats.entitiesDrawn);
    progress.left = ~0ull;
    EXPECT_EQ(frame.Draw(), ZvFrameRenderer::State::Finished);
    EXPECT_EQ(parts.context->stats.entitiesDrawn, whole.context->stats.entitiesDrawn);
}

TEST(ZvFrameRenderer, LayersAreDrawnInTheirOrderAsFarAsTheyShow) {
    ZvDrawing drawing;
    const Vec2d square[] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    std::vector<ZvLayer*> layers;
    for (int i = 0; i < 3; ++i) {
        layers.push_back(drawing.LayerTable()->InsertNew(XStringW::Format("l%d", i)));
        auto area = std::make_unique<ZvXLine>();
        area->SetPoly(true, true, 4, square);
        area->SetBrush(ZvBrush::Solid(ZvColor(i == 0 ? 255 : 0, i == 1 ? 255 : 0, i == 2 ? 255 : 0)));
        layers.back()->Adopt(std::move(area));
    }
    const auto seen = [&](ZvRenderMode mode = ZvRenderMode::Raster, ZvFrameRenderer::Options options = {}) {
        ZvRasterSurface surface(100, 100);
        Zelvan::ZvViewXForm view(&drawing);
        view.SetPlan({5, 5, 0}, 20); // 0.2 units a pixel
        view.SetWindowRect(Rect2I{0, 0, 100, 100}, true);
        ZvRenderContext context(mode, surface, view, &drawing);
        ZvFrameRenderer(drawing, context, std::move(options)).Draw();
        return surface.Picture().At(50, 50) & 0xFFFFFF;
    };
    const uint32_t red = 0xFF0000, green = 0x00FF00, blue = 0x0000FF, white = 0xFFFFFF;
    EXPECT_EQ(seen(), blue);
    drawing.LayerTable()->SetLayerOrder({layers[2], layers[0], layers[1]});
    EXPECT_EQ(seen(), green);
    layers[0]->SetStrata(1);
    EXPECT_EQ(seen(), red);
    layers[0]->SetVisible(false);
    EXPECT_EQ(seen(), green);
    layers[1]->SetPrintable(false);
    EXPECT_EQ(seen(), green);
    EXPECT_EQ(seen(ZvRenderMode::Pdf), blue);
    layers[1]->SetScaleRange(0.3, 0);
    EXPECT_EQ(seen(), blue);
    layers[1]->SetScaleRange(0.1, 0.3);
    EXPECT_EQ(seen(), green);
    ZvFrameRenderer::Options options;
    options.layerFilter = [&](const ZvLayer& layer) { return &layer == layers[0]; };
    EXPECT_EQ(seen(ZvRenderMode::Raster, options), red) << "a filter decides alone";
    EXPECT_EQ(seen(ZvRenderMode::None), white);
}

TEST(ZvFrameRenderer, HeatMapsCountEveryLineAtAnyScale) {
    Scene scene;
    double lengths[2];
    for (const int i : {0, 1}) {
        const double scale = i ? 100 : 10;
        Shot frame(scene, {500, 500}, scale);
        frame.context->EnableHeat(kWidth, kHeight);
        frame.Draw(scene);
        const std::vector<float>& heat = *frame.context->Heat();
        lengths[i] = std::accumulate(heat.begin(), heat.end(), 0.0) * scale;
        EXPECT_FALSE(frame.HasInk(kWidth / 2, kHeight / 2, 20)) << "nothing is painted";
    }
    EXPECT_GT(lengths[0], 10000);
    EXPECT_NEAR(lengths[0], lengths[1], lengths[0] / 1000);
}

} // namespace
