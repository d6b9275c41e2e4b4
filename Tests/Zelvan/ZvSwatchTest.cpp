// The swatches by which lists show values.
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"
#include <gtest/gtest.h>

namespace {

/// Keeps what was drawn and checks that it stays within the area and leaves no clip behind.
class RecordingSurface : public IZvSurface {
public:
    explicit RecordingSurface(const Rect2I& area) : m_area(area) {}
    ~RecordingSurface() override { EXPECT_EQ(m_clips, 0); }
    int Width() const override { return 1000; }
    int Height() const override { return 1000; }
    void SetPen(const ZvPen& pen) override { m_pen = pen; }
    void SetFill(const ZvFill& fill) override { m_fill = fill; }
    void Polyline(const Vec2f* points, size_t count, bool) override {
        Check(points, count);
        pens.push_back(m_pen);
    }
    void Polygon(const ZvSurfaceRing* rings, size_t count, bool) override {
        for (size_t i = 0; i < count; ++i)
            Check(rings[i].points, rings[i].count);
        fills.push_back(m_fill);
    }
    bool Text(const ZvTextRun& run) override {
        texts.push_back(run);
        return true;
    }
    bool Image(const uint32_t*, int, int, Vec2f, Vec2f, Vec2f) override { return true; }
    void PushClip(const Rect2I&) override { ++m_clips; }
    void PopClip() override { --m_clips; }

    XStringW TextIn(const XStringW& font) const {
        for (const ZvTextRun& run : texts)
            if (run.fontFamily == font)
                return run.text;
        return {};
    }
    std::vector<ZvPen> pens;
    std::vector<ZvFill> fills;
    std::vector<ZvTextRun> texts;

private:
    void Check(const Vec2f* points, size_t count) const {
        for (size_t i = 0; i < count; ++i) {
            EXPECT_TRUE(points[i].x >= float(m_area.left) && points[i].x <= float(m_area.right));
            EXPECT_TRUE(points[i].y >= float(m_area.top) && points[i].y <= float(m_area.bottom));
        }
    }
    Rect2I m_area;
    ZvPen m_pen;
    ZvFill m_fill;
    int m_clips = 0;
};

constexpr Rect2I kArea{100, 200, 260, 216};

TEST(ZvSwatch, ColoursShowTheirColourNumberAndName) {
    RecordingSurface surface(kArea);
    ZvColor(3).DrawUI(surface, kArea);
    ASSERT_EQ(surface.fills.size(), 1u);
    EXPECT_EQ(surface.fills[0].argb, 0xFF00FF00u);
    EXPECT_EQ(surface.TextIn(u"Small Fonts"), XStringW(u"3"));
    EXPECT_EQ(surface.TextIn(u"Tahoma"), XStringW(u"Green"));
    for (const ZvTextRun& run : surface.texts) {
        EXPECT_GT(run.baselineStart.y - run.heightPx, kArea.top - 2);
        EXPECT_LT(run.baselineStart.y, kArea.bottom);
    }
    RecordingSurface byLayer(kArea), null(kArea);
    ZvColor::ByLayer().DrawUI(byLayer, kArea);
    EXPECT_TRUE(byLayer.fills.empty());
    EXPECT_EQ(byLayer.TextIn(u"Tahoma"), XStringW(u"By Layer"));
    ZvColor::Null().DrawUI(null, kArea);
    EXPECT_GT(null.pens.size(), byLayer.pens.size()); // crossed out
}

TEST(ZvSwatch, SmallAreasHaveNoLabel) {
    constexpr Rect2I kSquare{0, 0, 16, 16};
    RecordingSurface surface(kSquare);
    ZvColor(255, 0, 0).DrawUI(surface, kSquare);
    EXPECT_TRUE(surface.texts.empty());
    EXPECT_EQ(surface.fills.size(), 1u);
}

TEST(ZvSwatch, BrushesLinesAndWidthsShowThemselves) {
    RecordingSurface hatch(kArea), width(kArea), type(kArea), missing(kArea);
    ZvBrush::CrossHatch(ZvColor(1)).DrawUI(hatch, kArea);
    ASSERT_EQ(hatch.fills.size(), 1u);
    EXPECT_EQ(hatch.fills[0].kind, ZvFill::Kind::CrossHatch);
    EXPECT_EQ(hatch.fills[0].argb, 0xFFFF0000u);
    ZvLineWidth::Points(72).DrawUI(width, kArea);
    EXPECT_NEAR(width.pens.back().widthPx, 96, 1e-3);
    EXPECT_EQ(width.TextIn(u"Tahoma"), XStringW(u"72.0 pt"));
    ZvLineType().DrawUI(type, kArea);
    EXPECT_EQ(type.TextIn(u"Tahoma"), XStringW(u"Continuous"));
    ZvLineType(5).DrawUI(missing, kArea);
    EXPECT_EQ(missing.TextIn(u"Tahoma"), XStringW(u"Unknown"));
}

} // namespace
