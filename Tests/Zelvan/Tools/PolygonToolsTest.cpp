#include "TextGeometry.h"
#include "Zelvan/Tools/ZvPolygonArea.h"
#include "Zelvan/Tools/ZvRingNesting.h"
#include "Zelvan/Tools/ZvSegment2D.h"
#include "Zelvan/Tools/ZvTriangulator.h"
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace {

struct Rings {
    std::vector<Vec2d> xy;
    std::vector<ZvRingNesting::Ring> rings;

    void Add(const std::vector<Vec2d>& ring) {
        rings.push_back({uint32_t(xy.size()), uint32_t(ring.size())});
        xy.insert(xy.end(), ring.begin(), ring.end());
    }
    explicit Rings(const char* text = nullptr) {
        if (!text)
            return;
        for (const auto& part : TextGeometry(text).parts) {
            std::vector<Vec2d> ring;
            for (const Vec4d& v : part)
                ring.push_back(v.XY());
            Add(ring);
        }
    }
    bool Covers(const Vec2d& p) const {
        bool inside = false;
        for (const auto& r : rings)
            inside ^= PointInRing2D(&xy[r.start], r.count, p);
        return inside;
    }
};

/// A star-shaped ring with a radius that jumps about.
std::vector<Vec2d> Star(std::mt19937& random, Vec2d centre, double radius, int count,
                        double roughness = 0.6) {
    std::uniform_real_distribution<double> jump(1 - roughness, 1);
    std::vector<Vec2d> ring;
    for (int i = 0; i < count; ++i) {
        const double a = 2 * std::numbers::pi * i / count, r = radius * jump(random);
        ring.push_back({centre.x + r * std::cos(a), centre.y + r * std::sin(a)});
    }
    return ring;
}

Vec2d Corner(const Rings& r, const ZvTriangulation& t, uint32_t i) {
    if (i < r.xy.size())
        return r.xy[i];
    const ZvEdgePoint& p = t.newPoints[i - r.xy.size()];
    return r.xy[p.edge.from] + (r.xy[p.edge.to] - r.xy[p.edge.from]) * p.t;
}

/// Area of all triangles; counts random points that the triangles and the even-odd rule do not agree on.
double CheckCover(const Rings& r, const ZvTriangulation& t, std::mt19937& random, int* disagreements) {
    double area = 0;
    ZvBounds2D box;
    for (const Vec2d& v : r.xy)
        box.ExpandToFit(v);
    for (size_t i = 0; i < t.triangles.size(); i += 3) {
        const double turn = Turn2D(Corner(r, t, t.triangles[i]), Corner(r, t, t.triangles[i + 1]),
                                   Corner(r, t, t.triangles[i + 2]));
        EXPECT_GE(turn, -1e-6 * box.Area()) << "triangle " << i / 3 << " is clockwise";
        area += turn / 2;
    }
    std::uniform_real_distribution<double> x(box.minX, box.maxX), y(box.minY, box.maxY);
    *disagreements = 0;
    for (int k = 0; k < 300; ++k) {
        const Vec2d p{x(random), y(random)};
        int over = 0;
        for (size_t i = 0; i < t.triangles.size(); i += 3) {
            const Vec2d ring[] = {Corner(r, t, t.triangles[i]), Corner(r, t, t.triangles[i + 1]),
                                  Corner(r, t, t.triangles[i + 2])};
            over += PointInRing2D(ring, 3, p);
        }
        *disagreements += over != int(r.Covers(p));
    }
    return area;
}

ZvTriangulation Triangulate(const Rings& r) {
    return ZvTriangulation(r.xy, r.rings, ZvRingNesting(r.xy, r.rings));
}

} // namespace

TEST(PolygonArea, IsNeverNegativeAndKeepsDigitsFarFromTheOrigin) {
    for (const Vec2d at : {Vec2d{0, 0}, Vec2d{5e8, -7e9}}) {
        std::vector<Vec2d> ring = {at, at + Vec2d{4, 0}, at + Vec2d{4, 3}, at + Vec2d{0, 3}};
        EXPECT_DOUBLE_EQ(PolygonArea2D(ring.data(), 4), 12);
        EXPECT_DOUBLE_EQ(SignedPolygonArea2D(ring.data(), 4), 12);
        std::reverse(ring.begin(), ring.end());
        EXPECT_DOUBLE_EQ(PolygonArea2D(ring.data(), 4), 12);
        EXPECT_DOUBLE_EQ(SignedPolygonArea2D(ring.data(), 4), -12);
    }
    EXPECT_EQ(PolygonArea2D(nullptr, 0), 0);
}

TEST(PolygonArea, TellsConvexRingsFromOthers) {
    struct {
        const char* ring;
        bool convex;
    } cases[] = {
        {"0,0 4,0 4,4 0,4", true},
        {"0,0 0,4 4,4 4,0", true},
        {"0,0 2,0 4,0 4,4", true},
        {"0,0 4,0 1,1 0,4", false},
        {"0,0 4,0", false},
        {"0,0 4,0 2,0 1,0", false},
        {"0,3 2,-3 -3,1 3,1 -2,-3", false}, // goes round twice
        {"0,0 4,0 4,4 0,4 0,0 4,0 4,4 0,4", false},
    };
    for (const auto& c : cases) {
        const Rings r(c.ring);
        EXPECT_EQ(IsConvexRing2D(r.xy.data(), r.xy.size()), c.convex) << c.ring;
    }
}

TEST(Segment2D, MeetsOthersAndBoxes) {
    struct {
        ZvSegment2D s, t;
        int count;
        Vec2d at;
    } cases[] = {
        {{{0, 0}, {4, 4}}, {{0, 4}, {4, 0}}, 1, {2, 2}}, {{{0, 0}, {4, 0}}, {{4, 0}, {4, 4}}, 1, {4, 0}},
        {{{0, 0}, {4, 0}}, {{2, 0}, {6, 0}}, 2, {2, 0}}, {{{0, 0}, {4, 0}}, {{5, 0}, {6, 0}}, 0, {}},
        {{{0, 0}, {4, 0}}, {{0, 1}, {4, 1}}, 0, {}},     {{{0, 0}, {4, 0}}, {{1, 1}, {1, 5}}, 0, {}},
        {{{2, 0}, {2, 0}}, {{0, 0}, {4, 0}}, 1, {2, 0}},
    };
    for (const auto& c : cases) {
        Vec2d points[2];
        ASSERT_EQ(c.s.Intersect(c.t, points), c.count);
        if (c.count) {
            EXPECT_EQ(points[0], c.at);
        }
    }
    const ZvBounds2D box(0, 0, 2, 1);
    EXPECT_TRUE((ZvSegment2D{{-1, -1}, {3, 2}}).MeetsBox(box));
    EXPECT_TRUE((ZvSegment2D{{0.5, 0.5}, {0.6, 0.5}}).MeetsBox(box));
    EXPECT_TRUE((ZvSegment2D{{2, 1}, {5, 5}}).MeetsBox(box));
    EXPECT_FALSE((ZvSegment2D{{-1, 0.5}, {0.5, 3}}).MeetsBox(box)) << "passes a corner outside";
}

TEST(RingNesting, FollowsHolesIslandsAndTouchingRings) {
    // Outer, island in the hole, hole, a ring beside; the hole touches the outer ring at a vertex and along an edge.
    const Rings r("0,0 100,0 100,100 0,100; 40,40 60,40 60,60 40,60; 0,50 30,10 100,10 100,90 30,90; 200,0 "
                  "210,0 210,9");
    const ZvRingNesting n(r.xy, r.rings);
    EXPECT_EQ(n.depths, (std::vector<uint32_t>{0, 2, 1, 0}));
    EXPECT_EQ(n.parents, (std::vector<int32_t>{-1, 2, 0, -1}));
    // Equal rings: the later lies in the earlier. A diamond touches with all its vertices.
    const Rings same("0,0 4,0 4,4 0,4; 0,0 4,0 4,4 0,4; 2,0 4,2 2,4 0,2; 5,5 6,6");
    EXPECT_EQ(ZvRingNesting(same.xy, same.rings).depths, (std::vector<uint32_t>{0, 1, 2, 0}));
}

TEST(RingNesting, AgreesWithBruteForceOnManyRandomRings) {
    std::mt19937 random(7);
    Rings r;
    std::uniform_real_distribution<double> at(0, 1000), size(0.2, 0.6);
    // Families of rings inside each other, in a scrambled order.
    std::vector<std::vector<Vec2d>> all;
    for (int family = 0; family < 300; ++family) {
        const Vec2d centre{at(random) * 100, at(random) * 100};
        double radius = 20;
        for (int k = int(random() % 5); k >= 0; --k, radius *= 0.35)
            all.push_back(Star(random, centre, radius, 8 + int(random() % 60)));
    }
    std::shuffle(all.begin(), all.end(), random);
    for (const auto& ring : all)
        r.Add(ring);
    const ZvRingNesting nesting(r.xy, r.rings);
    for (size_t i = 0; i < r.rings.size(); ++i) {
        const Vec2d centre = r.xy[r.rings[i].start]; // on ring i: inside exactly those around it
        uint32_t depth = 0;
        for (size_t k = 0; k < r.rings.size(); ++k)
            depth += k != i && PointInRing2D(&r.xy[r.rings[k].start], r.rings[k].count, centre);
        ASSERT_EQ(nesting.depths[i], depth) << "ring " << i;
    }
}

TEST(Triangulation, UsesOnlyVerticesOfSimplePolygons) {
    const char* cases[] = {
        "0,0 10,0 10,10 0,10",
        "0,0 10,0 5,5 10,10 0,10 5,6",
        "0,0 10,0 10,10 0,10; 2,2 4,2 4,4 2,4; 6,2 8,2 8,4 6,4; 2,6 8,6 8,8 2,8",
        "0,0 10,0 10,10 0,10; 2,2 2,4 4,4 4,2",                  // hole in the other sense
        "0,0 10,0 10,10 0,10; 0,5 3,3 3,7",                      // hole touches an edge
        "0,0 10,0 10,10 0,10; 0,0 5,2 2,5",                      // hole touches a vertex
        "0,0 10,0 10,10 0,10; 2,2 5,2 5,5 2,5; 5,5 8,5 8,8 5,8", // holes touch each other
        "0,0 10,0 10,10 0,10; 1,1 9,1 9,9 1,9; 2,2 8,2 8,8 2,8", // island in a hole
        "0,0 5,0 5,5 10,5 10,10 5,10 5,5 0,5",                   // two squares joined at a point
        "0,0 2,0 4,0 4,0 4,4 4,8 4,4 0,4",                       // repeated vertex, spike
        "0,0 10,0 10,10 0,10; 2,4 8,4 8,6 2,6; 20,0 30,0 30,10 20,10; 22,2 28,2 25,8",
    };
    std::mt19937 random(1);
    for (const char* text : cases) {
        const Rings r(text);
        const ZvRingNesting nesting(r.xy, r.rings);
        double expected = 0;
        for (size_t i = 0; i < r.rings.size(); ++i)
            expected +=
                PolygonArea2D(&r.xy[r.rings[i].start], r.rings[i].count) * (nesting.depths[i] % 2 ? -1 : 1);
        const ZvTriangulation t = Triangulate(r);
        EXPECT_TRUE(t.newPoints.empty()) << text;
        int disagreements = 0;
        EXPECT_NEAR(CheckCover(r, t, random, &disagreements), expected, 1e-9) << text;
        EXPECT_EQ(disagreements, 0) << text;
    }
}

TEST(Triangulation, CoversCrossingRingsByTheEvenOddRule) {
    const char* cases[] = {
        "0,0 10,10 10,0 0,10",                      // bow tie
        "0,3 2,-3 -3,1 3,1 -2,-3",                  // pentagram: its middle is empty
        "0,0 10,0 10,10 0,10; 5,5 15,5 15,15 5,15", // overlapping squares
        "0,0 10,0 10,10 0,10; 8,4 12,4 12,6 8,6",   // hole that sticks out
        "0,0 10,0 10,6 0,6; 4,-2 6,-2 6,8 4,8",     // cross
    };
    std::mt19937 random(2);
    for (const char* text : cases) {
        const Rings r(text);
        const ZvTriangulation t = Triangulate(r);
        int disagreements = 0;
        CheckCover(r, t, random, &disagreements);
        EXPECT_FALSE(t.newPoints.empty()) << text;
        EXPECT_EQ(disagreements, 0) << text;
    }
}

TEST(Triangulation, CoversRandomPolygonsWithManyHoles) {
    std::mt19937 random(3);
    for (int round = 0; round < 40; ++round) {
        Rings r;
        r.Add(Star(random, {0, 0}, 1000, 5 + int(random() % 400), round % 2 ? 0.3 : 0.02));
        double expected = PolygonArea2D(r.xy.data(), r.xy.size());
        const int side = 1 + round % 9;
        for (int i = 0; i < side * side; ++i) {
            const double cell = 800.0 / side;
            const Vec2d centre{-400 + cell * (i % side + 0.5), -400 + cell * (i / side + 0.5)};
            r.Add(Star(random, centre, cell * 0.45, 3 + int(random() % 20)));
            expected -= PolygonArea2D(&r.xy[r.rings.back().start], r.rings.back().count);
        }
        const ZvTriangulation t = Triangulate(r);
        int disagreements = 0;
        const double area = CheckCover(r, t, random, &disagreements);
        EXPECT_NEAR(area, expected, 1e-6 * expected) << "round " << round;
        EXPECT_EQ(disagreements, 0) << "round " << round;
        if (round % 2 == 0) {
            EXPECT_TRUE(t.newPoints.empty()) << "round " << round;
        }
    }
}
