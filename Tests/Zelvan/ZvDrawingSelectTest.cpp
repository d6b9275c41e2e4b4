#include "Tests/Support/ProbeEntity.h"
#include "Zelvan/DrawingAux/ZvSelectClipper.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/View/ZvView.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvSelFilter.h"
#include "ZvCore/BinXml.h"
#include <gtest/gtest.h>
#include <random>

namespace {

class ZvDrawingSelectTest : public ::testing::Test {
protected:
    ZvDrawing drawing;
    uint32_t Line(Vec2d a, Vec2d b, const XStringW& layer = {}) {
        return drawing.Insert(std::make_unique<ZvXLine>(Vec3d{a.x, a.y, 0}, Vec3d{b.x, b.y, 0}), layer).value;
    }
    std::vector<uint32_t> Rect(const ZvBounds2D& box, bool crossing) {
        ZvSelection selection(&drawing);
        drawing.SelectRect(box, crossing, selection);
        return selection.Names();
    }
};

using List = std::vector<uint32_t>;

} // namespace

TEST_F(ZvDrawingSelectTest, RectangleTestsTheGeometryAndWhatCanBePicked) {
    const uint32_t inside = Line({1, 1}, {9, 9});
    const uint32_t crossing = Line({5, 5}, {20, 5});
    const uint32_t aroundTheCorner = Line({9, 20}, {20, 9}); // its bounds meet the box, it does not
    const uint32_t hidden = Line({2, 2}, {3, 3});
    const uint32_t erased = Line({2, 2}, {3, 3});
    const uint32_t fixed = Line({2, 2}, {3, 3});
    const uint32_t onHiddenLayer = Line({2, 2}, {3, 3}, u"hidden");
    drawing.GetEntity(hidden)->SetVisible(false);
    drawing.GetEntity(erased)->SetErased(true);
    drawing.GetEntity(fixed)->SetSelectable(false);
    drawing.LayerTable()->GetByName(u"hidden")->SetVisible(false);
    const ZvBounds2D box{0, 0, 10, 10};
    EXPECT_EQ(Rect(box, false), List{inside});
    EXPECT_EQ(Rect(box, true), (List{inside, crossing}));
    ZvSelection all(&drawing);
    EXPECT_EQ(drawing.SelectAll(all), 3);
    EXPECT_TRUE(all.Contains(ZvName(aroundTheCorner)));
    EXPECT_FALSE(drawing.Select(drawing.GetEntity(onHiddenLayer), all));
    EXPECT_FALSE(drawing.Select(drawing.GetEntity(fixed), all));

    std::vector<ZvEntity*> found;
    ZvDrawing::Find everything;
    everything.invisible = true;
    drawing.FindEntities(box, found, everything);
    EXPECT_EQ(found.size(), 5u) << "erased entities are never found";
    found.clear();
    drawing.FindEntitiesOnLayers({drawing.LayerTable()->GetByName(u"hidden")}, box, found, everything);
    EXPECT_EQ(found, std::vector<ZvEntity*>{drawing.GetEntity(onHiddenLayer)});
}

TEST_F(ZvDrawingSelectTest, ClosestIsTheOneOnTopAmongEquals) {
    Line({0, 0}, {10, 0}, u"bottom");
    const uint32_t top = Line({0, 0}, {10, 0}, u"top");
    Line({0, 3}, {10, 3}, u"bottom");
    double distance = 0;
    EXPECT_EQ(drawing.FindClosest({5, 1, 0}, 2, &distance), drawing.GetEntity(top));
    EXPECT_NEAR(distance, 1, 1e-9);
    EXPECT_EQ(drawing.FindClosest({5, 1, 0}, 0.5), nullptr);
}

TEST_F(ZvDrawingSelectTest, CylinderAroundThePickRayTakesTheNearestFirst) {
    const uint32_t far = Line({0, 2}, {10, 2});
    const uint32_t near = Line({0, 1}, {10, 1});
    Line({0, 9}, {10, 9});
    ZvSelection selection(&drawing);
    EXPECT_EQ(drawing.SelectCylinder({{5, 0, 10}, {0, 0, -1}}, 30, selection), 0) << "no view, no pixels";
    ZvView* view = drawing.AddView(std::make_unique<ZvView>());
    view->Resize(100, 100);
    ASSERT_TRUE(view->ZoomTo({0, 0, 10, 10}, 0));
    EXPECT_EQ(drawing.SelectCylinder({{5, 0, 10}, {0, 0, -1}}, 30, selection), 2);
    EXPECT_EQ(selection.Names(), (List{near, far}));
    ZvSelection shown(&drawing);
    EXPECT_EQ(drawing.SelectInCurrentView(shown), 3);
    drawing.ChangeSelection(ZvSelection::Single(drawing.GetEntity(near)));
    EXPECT_TRUE(drawing.AutoZoomCurrentSelection());
    EXPECT_NEAR(view->XForm().Target().y, 1, 1e-9);
}

TEST_F(ZvDrawingSelectTest, PolygonAgreesWithASampledTest) {
    // A star with deep notches; segments are compared with points taken along them.
    std::vector<Vec2d> star;
    for (int i = 0; i < 10; ++i) {
        const double r = i % 2 ? 3 : 10, a = i * 0.6283185307179586;
        star.push_back({r * std::cos(a), r * std::sin(a)});
    }
    const ZvSelectClipper clipper(star);
    std::mt19937 random(3);
    std::uniform_real_distribution<double> at(-12, 12);
    for (int i = 0; i < 300; ++i) {
        const Vec2d a{at(random), at(random)}, b{at(random), at(random)};
        Line(a, b);
        int in = 0, out = 0;
        for (int k = 0; k <= 2000; ++k)
            (clipper.Contains(a + (b - a) * (k / 2000.0)) ? in : out)++;
        const ZvClipResult expected = !in   ? ZvClipResult::Outside
                                      : out ? ZvClipResult::Crosses
                                            : ZvClipResult::Inside;
        const ZvClipResult result = clipper.Test(*drawing.GetEntity(ZvName(uint32_t(i + 1))));
        // The samples may miss a very short piece.
        EXPECT_TRUE(result == expected || (result == ZvClipResult::Crosses && (in < 3 || out < 3))) << i;
    }
    ZvSelection enclosed(&drawing), crossing(&drawing);
    drawing.SelectClipper(star, false, enclosed);
    drawing.SelectClipper(star, true, crossing);
    EXPECT_GT(enclosed.Count(), 0);
    EXPECT_GT(crossing.Count(), enclosed.Count());
    for (uint32_t name : enclosed.Names())
        EXPECT_TRUE(crossing.Contains(ZvName(name)));
    EXPECT_EQ(drawing.SelectClipper({{0, 0}, {1, 1}}, true, crossing), 0) << "two corners enclose nothing";
}

TEST_F(ZvDrawingSelectTest, FilterNarrowsSelectionsAndStacks) {
    const uint32_t line = Line({0, 0}, {1, 1}, u"Walls");
    const uint32_t other = Line({0, 0}, {1, 1}, u"doors");
    drawing.GetEntity(other)->SetColor(ZvColor(5));
    const uint32_t point = drawing.Insert(std::make_unique<ZvPointEnt>(Vec3d{0, 0, 0}), u"WALLS").value;
    ZvSelFilter& filter = *drawing.SelectionFilter();
    const ZvBounds2D box{-1, -1, 2, 2};
    EXPECT_FALSE(filter.PopState());
    filter.PushState();
    ZvSelFilterState state;
    state.enabled = true;
    state.layers = {u"WALLS"};
    filter.SetState(state);
    EXPECT_EQ(Rect(box, true), (List{line, point}));
    filter.PushState();
    state.types = {drawing.GetEntity(point)->GetFullCode()};
    filter.SetState(state);
    EXPECT_EQ(Rect(box, true), List{point});
    EXPECT_TRUE(filter.PopState());
    state = {};
    state.enabled = true;
    state.colors = {ZvColor(5).To64()};
    filter.SetState(state);
    ZvSelection selection(&drawing);
    for (uint32_t name : {line, other, point})
        selection.Insert(ZvName(name));
    filter.Filter(&selection);
    EXPECT_EQ(selection.Names(), List{other});
    ZvCore::BinXmlNode node;
    filter.SaveXml(node);
    ZvSelFilter copy(nullptr, false);
    copy.LoadXml(node);
    EXPECT_EQ(copy.GetState(), state);
    EXPECT_TRUE(filter.PopState());
    EXPECT_EQ(Rect(box, true).size(), 3u);
    filter.SetState(state);
    drawing.Reset();
    EXPECT_FALSE(filter.IsEnabled());
}
