#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/RenC/ZvRasterSurface.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLineTypeRec.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>
#include <gtest/gtest.h>

namespace {

/// Keeps the last pen and fill.
struct PenKeeper : ZvRasterSurface {
    ZvPen pen;
    ZvFill fill;
    size_t points = 0;
    int pensSet = 0;
    PenKeeper() : ZvRasterSurface(200, 100) {}
    void SetPen(const ZvPen& p) override { pen = p, ++pensSet; }
    void SetFill(const ZvFill& f) override { fill = f; }
    void Polyline(const Vec2f*, size_t count, bool) override { points = count; }
};

/// 200 x 100 pixels, two pixels a world unit, around the origin.
struct View {
    PenKeeper surface;
    ZvViewOptions options;
    Zelvan::ZvViewXForm xform;
    std::unique_ptr<ZvRenderContext> context;

    explicit View(const ZvDrawing* drawing = nullptr, const ZvViewOptions& how = {}, double width = 100)
        : options(how) {
        xform.SetOptions(&options);
        xform.SetPlan({0, 0, 0}, width);
        xform.SetWindowRect(Rect2I{0, 0, 200, 100}, true);
        context = std::make_unique<ZvRenderContext>(ZvRenderMode::Raster, surface, xform, drawing);
    }
};

TEST(ZvRenderContext, ResolvesColoursByLayerByBlockAndAgainstTheBackground) {
    ZvDrawing drawing;
    ZvLayer* layer = drawing.LayerTable()->InsertNew(u"roads");
    layer->SetColor(ZvColor(10, 20, 30));
    layer->SetBrush(ZvBrush(ZvColor(40, 50, 60), ZvBrush::Solid(ZvColor()).GetStyle()));
    const uint32_t roads = 0xFF0A141E, fields = 0xFF28323C;
    struct Case {
        const char* name;
        ZvColor color;
        uint32_t light, dark;
    };
    for (const Case& c : {Case{"rgb", ZvColor(1, 2, 3), 0xFF010203, 0xFF010203},
                          Case{"rgba", ZvColor(1, 2, 3, 4), 0x04010203, 0x04010203},
                          Case{"palette 7", ZvColor(7), 0xFF000000, 0xFFFFFFFF},
                          Case{"by block", ZvColor::ByBlock(), 0xFF000000, 0xFFFFFFFF},
                          Case{"null", ZvColor(), 0xFF000000, 0xFFFFFFFF},
                          Case{"by layer", ZvColor::ByLayer(), roads, roads}})
        for (const bool dark : {false, true}) {
            ZvViewOptions options;
            options.background = dark ? 0xFF102030 : 0xFFFFFFF0;
            View view(&drawing, options);
            view.context->EnterLayer(layer);
            ZvXLine line;
            line.SetColor(c.color);
            line.SetBrush(ZvBrush::Solid(c.color));
            EXPECT_TRUE(view.context->UsePen(line));
            EXPECT_TRUE(view.context->UseFill(line));
            EXPECT_EQ(view.surface.pen.argb, dark ? c.dark : c.light) << c.name;
            EXPECT_EQ(view.surface.fill.argb, dark ? c.dark : c.light) << c.name;
        }
    View view(&drawing);
    view.context->EnterLayer(layer);
    ZvXLine area;
    area.SetBrush(ZvBrush::ByLayer());
    EXPECT_TRUE(view.context->UseFill(area));
    EXPECT_EQ(view.surface.fill.argb, fields);
    EXPECT_EQ(view.surface.fill.kind, ZvFill::Kind::Solid);
    area.SetBrush(ZvBrush());
    EXPECT_FALSE(view.context->UseFill(area));
    area.SetColor(ZvColor(1, 2, 3, 0));
    EXPECT_FALSE(view.context->UsePen(area)) << "nothing shows of a transparent line";
}

TEST(ZvRenderContext, WidthsComeOutInPixelsWhateverTheirUnit) {
    ZvViewOptions screen, doubled, paper, thin;
    doubled.pixelsPerInch = 192;
    paper.paperScale = 1000; // a millimetre of paper is a metre, which is two pixels here
    thin.lineWidths = false;
    struct Case {
        const char* name;
        ZvLineWidth width;
        float screen, doubled, paper;
    };
    for (const Case& c :
         {Case{"thin", ZvLineWidth::Thin(), 0, 0, 0}, Case{"world", ZvLineWidth::World(3), 6, 6, 6},
          Case{"pixels", ZvLineWidth::Pixels(5), 5, 10, 5},
          Case{"points", ZvLineWidth::Points(72), 96, 192, 50.8f},
          Case{"millimetres", ZvLineWidth::ViewportMM(25.4), 96, 192, 50.8f},
          Case{"by block", ZvLineWidth::ByBlock(), 0, 0, 0},
          Case{"by layer, without a layer", ZvLineWidth::ByLayer(), 0, 0, 0}}) {
        ZvXLine line;
        line.SetLineWidth(c.width);
        const auto drawn = [&](const ZvViewOptions& options) {
            View view(nullptr, options);
            view.context->UsePen(line);
            return view.surface.pen.widthPx;
        };
        EXPECT_NEAR(drawn(screen), c.screen, 0.02) << c.name;
        EXPECT_NEAR(drawn(doubled), c.doubled, 0.04) << c.name;
        EXPECT_NEAR(drawn(paper), c.paper, 0.02) << c.name;
        EXPECT_EQ(drawn(thin), 0) << c.name;
    }
    View view;
    ZvXLine line;
    line.SetLineWidth(ZvLineWidth::Points(72));
    view.context->SetDotsPerInch(300);
    view.context->UsePen(line);
    EXPECT_NEAR(view.surface.pen.widthPx, 300, 0.1);
    EXPECT_NEAR(view.context->WorldWindow().maxX - 50, 150 + 2, 0.1) << "what the pen reaches";
}

TEST(ZvRenderContext, LineTypesAndCapsOfLayersAndEntities) {
    ZvDrawing drawing;
    ZvLineTypeRec* type = drawing.LineTypeTable()->InsertNew(u"steps");
    ASSERT_TRUE(type->SetDashes({4, 2}));
    type->SetUnits(ZvLineTypeRec::Units::World);
    ZvLayer* layer = drawing.LayerTable()->InsertNew(u"paths");
    layer->SetLineType(ZvLineType(type->GetTableIndex()));
    layer->SetLineWidth(ZvLineWidth::Pixels(4));
    View near(&drawing), far(&drawing, {}, 10000);
    ZvXLine line;
    line.SetLineType(ZvLineType::ByLayer());
    line.SetLineWidth(ZvLineWidth::ByLayer());
    const auto pen = [&](View& view) {
        view.context->EnterLayer(layer);
        view.context->UsePen(line);
        return view.surface.pen;
    };
    EXPECT_EQ(pen(near).dashes, (std::vector<float>{8, 4}));
    EXPECT_NEAR(pen(near).widthPx, 4, 1e-3);
    EXPECT_EQ(pen(near).cap, ZvPen::Cap::Flat) << "round ends would close the gaps";
    EXPECT_TRUE(pen(far).dashes.empty()) << "a pattern of a tenth of a pixel";
    line.SetLineType(ZvLineType::Continuous());
    for (const auto& [cap, expected] :
         {std::pair{0, ZvPen::Cap::Round}, {1, ZvPen::Cap::Flat}, {2, ZvPen::Cap::Square}}) {
        line.SetLineCap(cap);
        EXPECT_EQ(pen(near).cap, expected);
    }
}

TEST(ZvRenderContext, EqualLinesShareOnePen) {
    View view;
    ZvXLine a, b, c;
    c.SetColor(ZvColor(1, 2, 3));
    for (const ZvXLine* line : {&a, &b, &a})
        view.context->UsePen(*line);
    EXPECT_EQ(view.surface.pensSet, 1);
    view.context->UsePen(c);
    view.context->UseColor(c); // a point's colour in between
    view.context->UsePen(c);
    EXPECT_EQ(view.surface.pensSet, 4);
}

TEST(ZvRenderContext, ThinningKeepsTheEndsAndWhatIsHalfAPixelAway) {
    View view;
    Vec2f points[101];
    for (int i = 0; i <= 100; ++i)
        points[i] = {float(i) * 0.1f, i == 50 ? 3.0f : 0.0f};
    view.context->Stroke(points, 101, false);
    EXPECT_GE(view.surface.points, 18u);
    EXPECT_LE(view.surface.points, 24u);
    EXPECT_EQ(points[0].x, 0);
    EXPECT_EQ(points[view.surface.points - 1].x, 10.0f);
    EXPECT_TRUE(std::any_of(points, points + view.surface.points, [](Vec2f p) { return p.y == 3; }));
}

TEST(ZvRenderContext, PlanMapAgreesWithTheExactConverterFarFromTheOrigin) {
    for (const double turn : {0.0, 0.7}) {
        View view;
        const Vec3d target{7.1e6, -3.4e6, 0};
        view.xform.SetPlan(target, 0.02, turn);
        view.xform.RebuildView();
        ZvRenderContext context(ZvRenderMode::Raster, view.surface, view.xform, nullptr);
        ASSERT_NE(context.PlanMap(), nullptr);
        for (const Vec2d offset : {Vec2d{0, 0}, {0.009, 0.004}, {-0.01, -0.005}}) {
            const Vec3d at{target.x + offset.x, target.y + offset.y, 0};
            const Vec3d exact = view.xform.ToView(at);
            const Vec2f mapped = context.MapPoint(at);
            EXPECT_NEAR(mapped.x, exact.x, 0.02);
            EXPECT_NEAR(mapped.y, exact.y, 0.02);
        }
    }
}

} // namespace
