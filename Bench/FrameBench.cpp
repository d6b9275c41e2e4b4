#include "Maps.h"
#include "Report.h"
#include "Zelvan/RenC/ZvFrameRenderer.h"
#include "Zelvan/RenC/ZvRasterSurface.h"
#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/ZvDrawing.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

/// Takes everything and paints nothing: what is left is culling, reading and thinning.
class NullSurface : public IZvSurface {
public:
    int Width() const override { return kWidth; }
    int Height() const override { return kHeight; }
    void SetPen(const ZvPen&) override {}
    void SetFill(const ZvFill&) override {}
    void Polyline(const Vec2f*, size_t, bool) override {}
    void Polygon(const ZvSurfaceRing*, size_t, bool) override {}
    bool Text(const ZvTextRun&) override { return true; }
    bool Image(const uint32_t*, int, int, Vec2f, Vec2f, Vec2f) override { return true; }
    void PushClip(const Rect2I&) override {}
    void PopClip() override {}
};

ZvRenderStats Draw(ZvDrawing& drawing, IZvSurface& surface, double zoom,
                   ZvRenderMode mode = ZvRenderMode::Raster) {
    const ZvBounds3D box = drawing.Bounds(true);
    Zelvan::ZvViewXForm* view = Zelvan::ZvViewXForm::New(&drawing);
    const double width = std::max(box.maxX - box.minX, (box.maxY - box.minY) * kWidth / kHeight) / zoom;
    view->SetPlan(box.Center(), width);
    view->SetWindowRect(Rect2I{0, 0, kWidth, kHeight}, true);
    ZvRenderStats stats;
    {
        ZvRenderContext context(mode, surface, *view, &drawing);
        ZvFrameRenderer(drawing, context, {}).Draw();
        context.Flush();
        stats = context.stats;
    }
    view->Delete();
    return stats;
}

void BenchOne(Report& report, BenchMap& map) {
    const std::string& n = map.name;
    ZvRasterSurface smooth(kWidth, kHeight), hard(kWidth, kHeight);
    hard.SetAntialias(false);
    NullSurface nothing;
    ZvRenderStats stats;
    report.Time(
        n + ": frame, antialiased", [&] { stats = Draw(*map.drawing, smooth, 1); }, 5);
    report.Time(
        n + ": frame, hard pixels", [&] { Draw(*map.drawing, hard, 1); }, 5);
    report.Time(
        n + ": frame, without painting", [&] { Draw(*map.drawing, nothing, 1); }, 5);
    report.Time(
        n + ": frame, culling alone", [&] { Draw(*map.drawing, nothing, 1, ZvRenderMode::None); }, 5);
    report.Time(
        n + ": frame, 1/16 of the width", [&] { Draw(*map.drawing, smooth, 16); }, 5);
    const double full = report.Get(n + ": frame, antialiased"),
                 read = report.Get(n + ": frame, without painting"),
                 cull = report.Get(n + ": frame, culling alone");
    report.Line(
        "%-6s whole map %.0f ms antialiased, %.0f ms hard pixels; 1/16 of the width %.1f ms (aim 150 ms: %s)",
        n.c_str(), full * 1000, report.Get(n + ": frame, hard pixels") * 1000,
        report.Get(n + ": frame, 1/16 of the width") * 1000, full < 0.15 ? "reached" : "MISSED");
    report.Line("       culling %.0f %%, reading and thinning %.0f %%, painting %.0f %%; %llu nodes, %llu "
                "below a pixel; "
                "%llu entities drawn, %llu as a dot; %llu vertices read, %llu painted",
                cull / full * 100, (read - cull) / full * 100, (full - read) / full * 100,
                static_cast<unsigned long long>(stats.nodesVisited),
                static_cast<unsigned long long>(stats.nodesBelowPixel),
                static_cast<unsigned long long>(stats.entitiesDrawn),
                static_cast<unsigned long long>(stats.entitiesBelowPixel),
                static_cast<unsigned long long>(stats.verticesRead),
                static_cast<unsigned long long>(stats.verticesPainted));
}

} // namespace

void BenchFrame(Report& report) {
    report.Line("\nFirst frame at %d x %d on one core", kWidth, kHeight);
    for (BenchMap* map : BenchMaps::Get().All())
        BenchOne(report, *map);
}
