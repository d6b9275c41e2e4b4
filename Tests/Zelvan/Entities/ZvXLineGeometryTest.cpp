#include "TextGeometry.h"
#include "Zelvan/ZvSelection.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

Ray3d Down(double x, double y) {
    return {{x, y, 100}, {0, 0, -1}};
}

const char* kIslands =
    "0,0 100,0 100,100 0,100; 10,10 90,10 90,90 10,90; 40,40 60,40 60,60 40,60; 200,0 210,0 210,10 200,10";

double SegmentDistance(Vec2d a, Vec2d b, Vec2d p) {
    double best = 9e90;
    for (int i = 0; i <= 4000; ++i)
        best = std::min(best, (a + (b - a) * (i / 4000.0) - p).Length());
    return best;
}

} // namespace

TEST(XLineGeometry, AreasAndLengthsCountHolesIslandsAndClosingSegments) {
    struct {
        const char* text;
        bool polygon;
        double area, length;
    } cases[] = {
        {"0,0 3,0 3,4 0,4", true, 12, 14},
        {"0,0 3,0 3,4 0,4 close", false, 12, 14},
        {"0,0 3,0 3,4 0,4", false, 12, 10},
        {"0,0 3,4", false, 0, 5},
        {kIslands, true, 10000 - 6400 + 400 + 100, 400 + 320 + 80 + 40},
        {"", true, 0, 0},
    };
    for (const auto& c : cases)
        for (int mode : {-1, 1}) {
            ZvXLine line;
            SetFromText(line, c.text, c.polygon, mode);
            EXPECT_NEAR(line.GetArea(), c.area, 1e-4) << c.text;
            EXPECT_NEAR(line.GetCircumference(), c.length, 1e-6) << c.text;
        }
}

TEST(XLineGeometry, DepthsParentsAndOuterPartsDescribeTheNesting) {
    const auto line = PolygonFromText(kIslands);
    EXPECT_EQ(line->PDepth(2), 255);
    std::vector<uint32_t> outer;
    for (uint32_t i = line->GetOuterParts(0); i < line->NumParts(); i = line->GetOuterParts(i + 1))
        outer.push_back(i);
    EXPECT_EQ(outer, (std::vector<uint32_t>{0, 2, 3}));
    int depth = 0;
    EXPECT_EQ(line->MLVGetPartInfo(2, nullptr, &depth), 4);
    EXPECT_EQ(depth, 2);
    EXPECT_EQ(line->MLVGetPartParent(2), 1);
    EXPECT_EQ(line->MLVGetPartParent(0), -1);
    // In a line an open part encloses nothing.
    const auto open = LineFromText("0,0 9,0 9,9 0,9; 1,1 2,1 2,2 close");
    open->EnsureDepths();
    EXPECT_EQ(open->PDepth(1), 0);
    // Deeper than the table can say.
    ZvXLine deep;
    std::string text;
    for (int i = 0; i < 18; ++i) {
        const std::string lo = std::to_string(i), hi = std::to_string(100 - i);
        text += lo + "," + lo + " " + hi + "," + lo + " " + hi + "," + hi + " " + lo + "," + hi + ";";
    }
    text.pop_back();
    SetFromText(deep, text, true);
    deep.EnsureDepths();
    EXPECT_EQ(deep.PDepth(13), 13);
    EXPECT_EQ(deep.PDepth(17), 14);
}

TEST(XLineGeometry, DistancesAndClosestPointsAgreeWithBruteForce) {
    std::mt19937 random(21);
    std::uniform_real_distribution<double> u(-10, 10);
    for (int round = 0; round < 12; ++round) {
        std::vector<Vec2d> v(5);
        for (Vec2d& p : v)
            p = {u(random), u(random)};
        ZvXLine line;
        line.SetPoly(round % 2, false, v.size(), v.data(), round % 3 - 1);
        const Vec2d p{u(random), u(random)};
        double best = 9e90;
        for (size_t i = 0; i + (round % 2 ? 0 : 1) < v.size(); ++i)
            best = std::min(best, SegmentDistance(v[i], v[(i + 1) % v.size()], p));
        EXPECT_NEAR(line.DistanceToV(Down(p.x, p.y), nullptr), best, 1e-4);
        const Ray3d tilted{{p.x + 1e-9, p.y, 3}, {1e-12, 0, -1}};
        EXPECT_NEAR(line.DistanceToV(tilted, nullptr), best, 1e-4);
        ZvClosest closest;
        ASSERT_TRUE(line.ClosestPt({p.x, p.y, 0}, {}, closest));
        EXPECT_NEAR(closest.distance, best, 1e-4);
        EXPECT_NEAR((closest.point.XY() - p).Length(), best, 1e-4);
    }
    EXPECT_EQ(ZvXLine().DistanceToV(Down(0, 0), nullptr), 9e90);
    // Seen from the side, only height counts.
    const auto high = LineFromText("0,0,5 10,0,5");
    EXPECT_NEAR(high->DistanceToV({{5, -50, 2}, {0, 1, 0}}, nullptr), 3, 1e-9);
}

TEST(XLineGeometry, ClosestElementsNamePartAndVertex) {
    const auto line = LineFromText("0,0,0 10,0,10; 20,0,7 30,0,7 30,10,7 close");
    ZvClosest c;
    ASSERT_TRUE(line->MLVGetClosestSegment({4, 1, 0}, c));
    EXPECT_EQ(c.part, 0);
    EXPECT_NEAR(c.point.z, 4, 1e-6) << "heights go along the segment";
    ASSERT_TRUE(line->MLVGetClosestSegment({24, 6, 0}, c));
    EXPECT_EQ(c.index, 4) << "the closing segment begins at the last vertex";
    ASSERT_TRUE(line->MLVGetClosestVertex({29, 9, 0}, c));
    EXPECT_EQ(c.index, 4);
    EXPECT_EQ(c.part, 1);
    ASSERT_TRUE(line->ClosestPt({15, 0, 0}, {40, 0, 0}, c));
    EXPECT_EQ(c.part, 1) << "the reference decides between equals";
    Vec3d d;
    ASSERT_TRUE(line->GetGeomDir({31, 5, 0}, d));
    EXPECT_NEAR(d.y, 1, 1e-12);
    EXPECT_FALSE(LineFromText("1,1")->GetGeomDir({}, d));
}

TEST(XLineGeometry, InteriorFollowsTheEvenOddRule) {
    const auto polygon = PolygonFromText(kIslands);
    struct {
        double x, y;
        ZvOccupancy where;
    } cases[] = {{5, 5, ZvOccupancy::Inside},   {50, 20, ZvOccupancy::Outside},
                 {50, 50, ZvOccupancy::Inside}, {150, 5, ZvOccupancy::Outside},
                 {100, 50, ZvOccupancy::On},    {205, 5, ZvOccupancy::Inside},
                 {-1, 50, ZvOccupancy::Outside}};
    for (const auto& c : cases)
        EXPECT_EQ(polygon->InteriorTest(Down(c.x, c.y)), c.where) << c.x << "," << c.y;
    EXPECT_EQ(LineFromText("0,0 9,0 9,9")->InteriorTest(Down(6, 2)), ZvOccupancy::Outside);
    EXPECT_EQ(LineFromText("0,0 9,0 9,9 close")->InteriorTest(Down(6, 2)), ZvOccupancy::Inside);
    EXPECT_FALSE(polygon->AllowSingleClickSelectInside());
    polygon->SetBrush(ZvBrush::Solid(ZvColor(1)));
    EXPECT_TRUE(polygon->AllowSingleClickSelectInside());
}

TEST(XLineGeometry, ClipTestIsExact) {
    const auto line = LineFromText("0,0 10,10 20,0", 1), polygon = PolygonFromText(kIslands);
    struct {
        const ZvXLine& entity;
        ZvBounds2D window;
        ZvClipResult result;
    } cases[] = {
        {*line, {-1, -1, 21, 11}, ZvClipResult::Inside},
        {*line, {0, 0, 20, 10}, ZvClipResult::Inside},
        {*line, {4, 4, 6, 6}, ZvClipResult::Crosses},
        {*line, {8, 0, 12, 4}, ZvClipResult::Outside}, // within the bounds, below the line
        {*line, {30, 30, 40, 40}, ZvClipResult::Outside},
        {*polygon, {2, 2, 3, 3}, ZvClipResult::Crosses},     // in the area
        {*polygon, {20, 20, 30, 30}, ZvClipResult::Outside}, // in the hole
        {*polygon, {45, 45, 46, 46}, ZvClipResult::Crosses}, // in the island
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.entity.ClipTest(c.window), c.result) << c.window.minX;
}

TEST(XLineGeometry, IntersectionsAgreeWithEverySegmentPair) {
    std::mt19937 random(8);
    std::uniform_real_distribution<double> u(0, 50), step(-2, 2);
    for (int round = 0; round < 10; ++round) {
        std::vector<Vec2d> a{{u(random), u(random)}}, b{{u(random), u(random)}};
        for (int i = 0; i < 150; ++i) {
            a.push_back(a.back() + Vec2d{step(random), step(random)});
            b.push_back(b.back() + Vec2d{step(random), step(random)});
        }
        ZvXLine line, other;
        line.SetPoly(false, false, a.size(), a.data(), 1);
        other.SetPoly(false, false, b.size(), b.data(), 1);
        size_t expected = 0;
        for (size_t i = 0; i + 1 < a.size(); ++i)
            for (size_t k = 0; k + 1 < b.size(); ++k) {
                const Vec2d d = a[i + 1] - a[i], e = b[k + 1] - b[k], w = b[k] - a[i];
                const double s = w.Cross(e) / d.Cross(e), t = w.Cross(d) / d.Cross(e);
                expected += s >= 0 && s <= 1 && t >= 0 && t <= 1;
            }
        std::vector<Vec3d> points;
        line.GetIntersectionPoints(other, points, kIntersectPlain);
        EXPECT_EQ(points.size(), expected);
        for (const Vec3d& p : points)
            EXPECT_LT(line.DistanceToV(Down(p.x, p.y), nullptr) + other.DistanceToV(Down(p.x, p.y), nullptr),
                      1e-9);
    }
    // Through a common vertex: one point.
    std::vector<Vec3d> points;
    LineFromText("0,0 5,5 10,0")
        ->GetIntersectionPoints(*LineFromText("5,0 5,5 5,9"), points, kIntersectPlain);
    EXPECT_EQ(points.size(), 1u);
}

TEST(XLineGeometry, SnapsAreFoundInTheWindow) {
    const auto line = LineFromText("0,0,4 10,0,6 10,10,8 close", 1);
    ZvSnaps snaps;
    line->GetSnapsVertices({9, -1, 11, 1}, snaps);
    line->GetSnapsMidPoint({4, 4, 6, 6}, snaps);
    line->GetSnapsEdge({9, 3, 0}, 2, snaps);
    line->GetSnapsEdge({5, 30, 0}, 2, snaps);
    ASSERT_EQ(snaps.size(), 3u);
    EXPECT_EQ(snaps[0].point, (Vec3d{10, 0, 6}));
    EXPECT_NEAR(snaps[1].point.x, 5, 1e-6);
    EXPECT_NEAR(snaps[1].point.z, 6, 1e-6);
    EXPECT_EQ(snaps[2].kind, ZvSnapKind::Edge);
    EXPECT_NEAR(snaps[2].point.y, 3, 1e-6);
}

TEST(XLineGeometry, GripsMoveVerticesAndKeepHeights) {
    auto line = LineFromText("0,0,4 10,0,6 10,10,8; 20,20,1 30,30,1", 1);
    ZvGrips grips;
    line->GetGrips(grips);
    ASSERT_EQ(grips.size(), 5u);
    EXPECT_EQ(grips[4].point, (Vec3d{30, 30, 1}));
    const auto preview = line->PreviewGripChange(1, {11, 1, 0});
    ASSERT_NE(preview, nullptr);
    EXPECT_FALSE(preview->IsGeometryEqual(*line));
    EXPECT_TRUE(line->UpdateByGrip(1, {11, 1, 0}));
    EXPECT_TRUE(preview->IsGeometryEqual(*line));
    EXPECT_EQ(line->NumParts(), 2u);
    const Vec4d moved = line->Unpack(line->GetFlt(), 1);
    EXPECT_NEAR(moved.x, 11, 1e-6);
    EXPECT_NEAR(moved.z, 6, 1e-6);
    EXPECT_FALSE(line->UpdateByGrip(5, {}));
    EXPECT_EQ(line->PreviewGripChange(-1, {}), nullptr);
}

TEST(XLineGeometry, ExplodesIntoSimplerEntitiesOfTheSameLook) {
    struct {
        const char* text;
        bool polygon;
        std::vector<std::string> pieces;
    } cases[] = {
        {"0,0 1,0", false, {}},
        {"0,0 1,0 1,1", false, {"Line", "Line"}},
        {"0,0 1,0 1,1 close", false, {"Line", "Line", "Line"}},
        {"0,0 1,0 1,1; 5,5 6,6", false, {"Polyline", "Line"}},
        {"0,0 9,0 9,9; 5,1 6,1 6,2", true, {"Polyline", "Polyline"}},
        {kIslands, true, {"Multipart Polygon", "Polygon", "Polygon"}},
    };
    for (const auto& c : cases) {
        ZvXLine line;
        SetFromText(line, c.text, c.polygon);
        line.SetColor(ZvColor(5));
        std::vector<std::string> names;
        double length = 0;
        for (const auto& piece : line.Explode()) {
            names.push_back(piece->VerbalName().ToUtf8());
            length += piece->GetCircumference();
            EXPECT_EQ(piece->GetColor(), ZvColor(5));
        }
        EXPECT_EQ(names, c.pieces) << c.text;
        if (!names.empty()) {
            EXPECT_NEAR(length, line.GetCircumference(), 1e-6) << c.text;
        }
    }
}

TEST(XLineGeometry, TrianglesAreStoredInTheBlockOnlyWhereNeeded) {
    struct {
        const char* text;
        bool triangles, convex, separate;
    } cases[] = {
        {"0,0 9,0 9,9 0,9", false, true, false},
        {"0,0 9,0 9,9", false, false, false},
        {"0,0 9,0 9,9 4,2", true, false, false},
        {"0,0 9,0 9,9; 20,0 29,0 29,9", false, false, true},
        {"0,0 9,0 9,9 0,9; 2,2 5,2 5,5", true, false, false},
        {"0,0 9,0 9,9 0,9; 5,5 15,5 15,15 5,15", true, false, false},
    };
    for (const auto& c : cases)
        for (int mode : {-1, 1}) {
            ZvXLine line;
            SetFromText(line, c.text, true, mode);
            const size_t pure = line.BytesOfData();
            line.TriangulateIfNecessary();
            EXPECT_EQ(line.HasTriangles(), c.triangles) << c.text;
            EXPECT_EQ(line.IsConvex(), c.convex) << c.text;
            EXPECT_EQ(line.SeparateParts(), c.separate) << c.text;
            EXPECT_EQ(line.BytesOfPureData(), pure);
            EXPECT_EQ(line.BytesOfData() > pure, c.triangles);
            double area = 0;
            const auto flt = line.GetFlt();
            for (uint32_t i = 0; i < line.NumTri(); ++i) {
                uint32_t t[3];
                line.GetTriangle(i, t[0], t[1], t[2]);
                Vec2d v[3];
                for (int k = 0; k < 3; ++k) {
                    ASSERT_LT(t[k], line.NumVerts() + line.NumAux());
                    v[k] = line.TriangleCorner(flt, t[k]).XY();
                }
                area += (v[1] - v[0]).Cross(v[2] - v[0]) / 2;
            }
            // Overlapping squares: what they share is empty.
            const double shared = line.NumAux() ? 16 * 2 : 0;
            if (c.triangles) {
                EXPECT_NEAR(area, line.GetArea() - shared, 1e-6) << c.text;
            }
            EXPECT_EQ(line.Origin(), (Vec4d{0, 0, 0, 0}));
            line.Repack(true);
            EXPECT_EQ(line.BytesOfData(), pure);
        }
}

TEST(XLineGeometry, PropertiesShowAndSetWhatAUserMaySet) {
    auto line = LineFromText("0,0 3,0 3,4 0,4");
    ZvPropertyGatherer shown;
    line->GetProperties(shown, true);
    EXPECT_EQ(std::get<int64_t>(shown.Find("VertexCount")->value), 4);
    EXPECT_NEAR(std::get<double>(shown.Find("Length")->value), 10, 1e-6);
    EXPECT_EQ(shown.Find("Area"), nullptr);
    ZvPropertySetter set;
    set.Set("Polygon", true);
    line->SetProperties(set);
    EXPECT_TRUE(line->IsPolygon() && line->PClosed(0));
    ZvPropertySetter open;
    open.Set("Closed", false);
    line->SetProperties(open);
    EXPECT_TRUE(line->PClosed(0));
    EXPECT_EQ(open.Refusals().size(), 1u);
    ZvPropertySetter polygon;
    polygon.Set("Polygon", true);
    auto two = LineFromText("0,0 1,0");
    two->SetProperties(polygon);
    EXPECT_FALSE(two->IsPolygon());

    ZvMenu menu, none;
    line->GetContextMenu(menu);
    two->GetContextMenu(none);
    ASSERT_EQ(menu.size(), none.size() + 1);
    EXPECT_EQ(menu.back().text.ToUtf8(), "Polygon");
    EXPECT_TRUE(menu.back().checked);
    EXPECT_TRUE(line->OnContextMenuClick({}, menu.back().id, nullptr));
    EXPECT_FALSE(line->IsPolygon());
    ZvQueryResults results;
    line->Query(results);
    EXPECT_GE(results.lines.size(), 4u);
}
