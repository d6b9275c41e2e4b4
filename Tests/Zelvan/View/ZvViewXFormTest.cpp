#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/ZvUniSize.h"
#include <gtest/gtest.h>
#include <random>

using Zelvan::VFCResult;
using Zelvan::ZvViewXForm;

namespace {

constexpr double kPi = 3.14159265358979323846;

struct Random {
    std::mt19937 engine{20240611};
    double In(double from, double to) { return std::uniform_real_distribution<double>(from, to)(engine); }
    Vec3d Around(const Vec3d& p, double r) { return {p.x + In(-r, r), p.y + In(-r, r), p.z + In(-r, r)}; }
};

enum class Kind { Plan, RotatedPlan, Tilted, LookAt, Perspective, PerspectiveAngles };
constexpr Kind kKinds[] = {Kind::Plan,   Kind::RotatedPlan, Kind::Tilted,
                           Kind::LookAt, Kind::Perspective, Kind::PerspectiveAngles};

ZvViewXForm MakeView(Kind kind, const Vec3d& target, double width, Random& random) {
    ZvViewXForm x;
    x.SetWindowRect(Rect2I{0, 0, 1280, 720}, false);
    x.SetPlan(target, width, kind == Kind::Plan ? 0 : random.In(-3, 3));
    if (kind != Kind::Plan && kind != Kind::RotatedPlan)
        x.SetTilt(random.In(0.1, 1.2));
    const Vec3d toEye{random.In(-1, 1), random.In(-1, 1), random.In(0.5, 1)};
    x.SetEye(target + toEye * (width / toEye.Length()));
    if (kind == Kind::LookAt)
        x.SetProjectionFlags(ZvViewXForm::kOrthographic | ZvViewXForm::kOrientLookAt);
    if (kind == Kind::Perspective)
        x.SetProjectionFlags(ZvViewXForm::kOrientLookAt);
    if (kind == Kind::PerspectiveAngles)
        x.SetProjectionFlags(ZvViewXForm::kOrientAngles);
    x.RebuildView();
    return x;
}

TEST(ZvViewXForm, PlanViewCentresTheTargetAndCountsPixelsDownwards) {
    ZvViewXForm x;
    x.SetPlan({1000, 2000, 0}, 400);
    x.SetWindowRect(Rect2I{10, 20, 810, 620}, true); // two pixels a unit
    const auto at = [&](double wx, double wy) { return x.ToView(Vec3d{wx, wy, 77}).XY(); };
    EXPECT_NEAR(at(1000, 2000).x, 410, 1e-9);
    EXPECT_NEAR(at(1000, 2000).y, 320, 1e-9);
    EXPECT_NEAR(at(1010, 2020).x, 430, 1e-9);
    EXPECT_NEAR(at(1010, 2020).y, 280, 1e-9);
    EXPECT_TRUE(x.IsPlan());
    EXPECT_DOUBLE_EQ(x.WorldPerPixel(), 0.5);
    const ZvBounds2D shown = x.VisibleWorld();
    EXPECT_NEAR(shown.minX, 800, 1e-6);
    EXPECT_NEAR(shown.maxY, 2150, 1e-6);
    // Pixels of a tile are counted from its corner.
    x.SetFrameBufferRect({400, 300, 500, 400});
    EXPECT_NEAR(at(1000, 2000).x, 10, 1e-9);
    x.SetFrameBufferRect({});
    x.SetYAxisUp(true);
    x.RebuildView();
    EXPECT_NEAR(at(1010, 2020).y, 360, 1e-9);
}

TEST(ZvViewXForm, DegenerateWindowsAndWidthsStayFinite) {
    ZvViewXForm x;
    x.SetPlan({5, 5, 0}, 0);
    x.SetWindowRect(Rect2I{0, 0, 100, 50}, true);
    EXPECT_NEAR(x.Projection().m[0][0], 1 / 1.1754943508222875e-38, 1e24);
    EXPECT_NEAR(x.Projection().m[1][1], 1 / 1.1754943508222875e-38, 1e24);
    EXPECT_NEAR(x.ToView(Vec3d{5, 5, 0}).x, 50, 1e-9);
    x.SetPlan({5, 5, 0}, 10);
    x.SetWindowRect(Rect2I{0, 0, 100, 0}, true);
    EXPECT_EQ(x.Projection().m[0][0], x.Projection().m[1][1]); // an aspect ratio of 1
    EXPECT_EQ(x.ToWorld({0, 0, 0}), x.Target());
}

TEST(ZvViewXForm, AllConvertersAgreeFarFromTheOrigin) {
    Random random;
    for (const Kind kind : kKinds)
        for (int round = 0; round < 40; ++round) {
            const double width = std::pow(10.0, random.In(0.7, 4));
            const ZvViewXForm x =
                MakeView(kind, random.Around({}, std::pow(10.0, random.In(0, 9))), width, random);
            const double depth = x.ToView(x.Target()).z;
            std::vector<Vec4d> world(50);
            for (Vec4d& p : world) {
                const Vec3d q = x.ToWorld({random.In(0, 1280), random.In(0, 720), depth});
                p = {q.x, q.y, q.z, random.In(-1e9, 1e9)}; // w is a measure and does not count
            }
            std::vector<Vec4f> batch(world.size());
            std::vector<Vec2f> pixels(world.size());
            std::vector<Vec3f> card(world.size());
            x.ToViewLQ(world.data(), world.size(), batch.data());
            x.ToViewLQ(world.data(), world.size(), pixels.data());
            x.ToViewGL3fa(world.data(), world.size(), card.data());
            for (size_t i = 0; i < world.size(); ++i) {
                const Vec4d high = x.ToView(world[i]);
                const Vec4f low = x.ToViewLQ(world[i]);
                const Vec4d viaCard = x.Combined() * Vec4d{card[i].x, card[i].y, card[i].z, 1};
                const double tolerance = 0.05;
                EXPECT_NEAR(low.x, high.x, tolerance);
                EXPECT_NEAR(low.y, high.y, tolerance);
                EXPECT_NEAR(batch[i].x, high.x, tolerance);
                EXPECT_NEAR(pixels[i].y, high.y, tolerance);
                EXPECT_NEAR((viaCard.x / viaCard.w + 1) * 640, high.x, tolerance);
            }
        }
}

TEST(ZvViewXForm, WithoutAWorldCentreSinglePrecisionFallsApart) {
    ZvViewXForm x;
    x.EnableWorldCenterManagement(false);
    x.SetWindowRect(Rect2I{0, 0, 1000, 1000}, false);
    x.SetPlan({5.4e6, 3.5e6, 0}, 10);
    x.RebuildView();
    const Vec4d p{5.4e6 + 1.234, 3.5e6 - 2.345, 0, 1};
    EXPECT_GT(std::abs(x.ToViewLQ(p).x - x.ToView(p).x), 1);
    x.EnableWorldCenterManagement(true);
    x.RebuildView();
    EXPECT_NEAR(x.ToViewLQ(p).x, x.ToView(p).x, 0.01);
}

TEST(ZvViewXForm, PixelsComeBackFromTheWorld) {
    Random random;
    for (const Kind kind : kKinds)
        for (int round = 0; round < 200; ++round) {
            const ZvViewXForm x =
                MakeView(kind, random.Around({}, 5e6), std::pow(10.0, random.In(1, 5)), random);
            const Vec3d pixel{random.In(-200, 1500), random.In(-200, 900), random.In(-0.9, 0.9)};
            const Vec3d back = x.ToView(x.ToWorld(pixel));
            EXPECT_NEAR(back.x, pixel.x, 1e-3);
            EXPECT_NEAR(back.y, pixel.y, 1e-3);
            const Ray3d ray = x.ToWorldRay({pixel.x, pixel.y});
            const Vec3d along = x.ToView(ray.origin + ray.direction * (x.ViewWidth() / 3));
            EXPECT_NEAR(along.x, pixel.x, 0.05);
            Vec3d there = x.ToWorld(pixel);
            EXPECT_TRUE(x.Transform(true, there));
            EXPECT_NEAR(there.x, pixel.x, 1e-3);
        }
    Vec3d behind = MakeView(Kind::Perspective, {}, 100, random).Eye() * 2;
    const Vec3d before = behind;
    EXPECT_FALSE(MakeView(Kind::Perspective, {}, 100, random).Transform(true, behind) && behind == before);
}

TEST(ZvViewXForm, TiltShowsTheNorthFartherAndRotationTurnsTheScene) {
    ZvViewXForm x;
    x.SetWindowRect(Rect2I{0, 0, 100, 100}, false);
    x.SetPlan({}, 100, kPi / 2);
    x.RebuildView();
    EXPECT_NEAR(x.ToView(Vec3d{10, 0, 0}).y, 40, 1e-9); // east points up
    EXPECT_NEAR(x.AngleToView(0), kPi / 2, 1e-12);
    x.SetPlan({}, 100);
    x.SetTilt(kPi / 3);
    x.RebuildView();
    const Vec4d north = x.ToView(Vec4d{0, 20, 0, 1});
    EXPECT_NEAR(north.y, 40, 1e-9); // half as high
    EXPECT_GT(north.z, x.ToView(Vec4d{0, -20, 0, 1}).z);
    x.SetProjectionFlags(x.ProjectionFlags() | ZvViewXForm::kTiltBack);
    x.RebuildView();
    EXPECT_LT(x.ToView(Vec4d{0, 20, 0, 1}).z, x.ToView(Vec4d{0, -20, 0, 1}).z);
}

TEST(ZvViewXForm, TheWorldCentreMovesOnlyBeyondTheTolerance) {
    ZvViewXForm x;
    x.SetWindowRect(Rect2I{0, 0, 1000, 1000}, false);
    const auto look = [&](double px) { // ten pixels a unit
        x.SetPlan({px / 10, 0, 0}, 100);
        x.RebuildView();
        return x.WorldCenter().x * 10;
    };
    EXPECT_EQ(look(99999), 0);
    EXPECT_TRUE(x.RecentWorldCenters().empty());
    EXPECT_EQ(look(100000), 100000);
    EXPECT_EQ(look(199999), 100000);
    EXPECT_EQ(look(300000), 300000);
    EXPECT_EQ(look(150000), 100000); // the earlier centre is used again
    EXPECT_EQ(x.RecentWorldCenters().back().x, 10000);
    EXPECT_EQ(x.RecentWorldCenters().back().useCount, 3);
    EXPECT_FALSE(x.WorldCenterOk({30000, 0, 0}));
    for (const double px : {5e5, 7e5, 9e5, 11e5})
        EXPECT_EQ(look(px), px);
    ASSERT_EQ(x.RecentWorldCenters().size(), 5u);
    EXPECT_EQ(x.RecentWorldCenters().front().x, 10000); // 300000, the oldest, went
    EXPECT_EQ(look(300000), 300000);
    x.SetTarget({1, 2, 3});
    x.CheckWorldCenter(true);
    EXPECT_EQ(x.WorldCenter(), (Vec3d{1, 2, 3}));
    ZvViewXForm::EnableWorldCenterManagementGlobally(false);
    x.SetTarget({9e9, 2, 3});
    x.CheckWorldCenter(true);
    EXPECT_EQ(x.WorldCenter(), (Vec3d{1, 2, 3}));
    ZvViewXForm::EnableWorldCenterManagementGlobally(true);
}

/// Whether the point shows; orthographic views have no depth limits.
bool Shows(const ZvViewXForm& x, const Vec3d& p) {
    const Vec4d clip = x.Combined() * Vec4d{p.x + x.WorldCenterOffset().x, p.y + x.WorldCenterOffset().y,
                                            p.z + x.WorldCenterOffset().z, 1};
    return std::abs(clip.x) <= clip.w && std::abs(clip.y) <= clip.w &&
           (x.IsOrthographic() || std::abs(clip.z) <= clip.w);
}

TEST(ZvViewXForm, CullingNeverHidesWhatShows) {
    Random random;
    int counts[3] = {};
    for (const Kind kind : kKinds)
        for (int round = 0; round < 400; ++round) {
            const double width = std::pow(10.0, random.In(1, 4));
            const ZvViewXForm x = MakeView(kind, random.Around({}, 1e6), width, random);
            const Vec3d a = random.Around(x.Target(), width),
                        size{random.In(0, width / 2), random.In(0, width / 2), random.In(0, width / 2)};
            const ZvBounds3D box(a.x, a.y, a.z, a.x + size.x, a.y + size.y, a.z + size.z);
            const VFCResult result = x.CullResult(box);
            ++counts[int(result)];
            for (int i = 0; i < 200; ++i) {
                const Vec3d p{random.In(box.minX, box.maxX), random.In(box.minY, box.maxY),
                              random.In(box.minZ, box.maxZ)};
                if (Shows(x, p))
                    ASSERT_NE(result, VFCResult::Outside);
                else
                    ASSERT_NE(result, VFCResult::Inside);
            }
        }
    for (const int count : counts)
        EXPECT_GT(count, 100);
}

TEST(ZvViewXForm, CullingIsExactInPlanViews) {
    ZvViewXForm x;
    x.SetPlan({50, 50, 0}, 100);
    x.SetWindowRect(Rect2I{0, 0, 500, 500}, true);
    EXPECT_EQ(x.CullResult(ZvBounds2D(100.01, 0, 120, 20)), VFCResult::Outside);
    EXPECT_EQ(x.CullResult(ZvBounds2D(99.99, 0, 120, 20)), VFCResult::Partial);
    EXPECT_EQ(x.CullResult(ZvBounds2D(1, 1, 99, 99)), VFCResult::Inside);
    EXPECT_EQ(x.CullResult(ZvBounds3D(1, 1, -9e90, 99, 99, 9e90)), VFCResult::Inside);
    EXPECT_EQ(x.CullResult(ZvBounds2D()), VFCResult::Outside);
    EXPECT_EQ(x.CullResult(ZvBounds2D::SuperBounds()), VFCResult::Partial);
    // A crop narrows what counts and leaves pixels alone.
    const Vec3d before = x.ToView(Vec3d{30, 60, 0});
    x.RebuildViewCropped({0, 0, 250, 500});
    EXPECT_NEAR(x.ToView(Vec3d{30, 60, 0}).x, before.x, 1e-9);
    EXPECT_NEAR(x.ToView(Vec3d{30, 60, 0}).y, before.y, 1e-9);
    EXPECT_EQ(x.CullResult(ZvBounds2D(51, 0, 60, 20)), VFCResult::Outside);
}

TEST(ZvViewXForm, PreTransformsNestAndStayExact) {
    ZvViewXForm x;
    const Vec3d site{5.4e6, 3.5e6, 0};
    x.SetPlan(site, 20);
    x.SetWindowRect(Rect2I{0, 0, 1000, 1000}, true);
    const Mat4d place = Mat4d::Translation(site) * Mat4d::RotationZ(0.3) * Mat4d::Scaling({2, 2, 2});
    const Mat4d inner = Mat4d::Translation({1, 2, 0});
    x.PushPreTransform(place);
    x.PushPreTransform(inner);
    const Vec4d local{0.25, -0.75, 0, 0};
    const Vec3d world = (place * inner).TransformPoint(local.XYZ());
    const Vec4d nested = x.ToView(local);
    const Vec4f nestedLQ = x.ToViewLQ(local);
    Vec2f batch;
    x.ToViewLQ(&local, 1, &batch);
    x.PopPreTransform();
    x.PopPreTransform();
    EXPECT_NEAR(nested.x, x.ToView(world).x, 1e-6);
    EXPECT_NEAR(nestedLQ.y, nested.y, 0.01);
    EXPECT_NEAR(batch.x, nested.x, 0.01);

    const Vec3d plain = x.ToView(site);
    x.PushMatrixSet();
    x.TempTranslate({1, 0, 0});
    EXPECT_NEAR(x.ToView(site).x, plain.x + 50, 1e-6);
    x.PopTranslate();
    EXPECT_NEAR(x.ToView(site).x, plain.x, 1e-9);
    x.TempModelViewMul(Mat4d::Translation({0, 1, 0}));
    x.PopMatrixSet();
    EXPECT_NEAR(x.ToView(site).y, plain.y, 1e-9);
}

TEST(ZvViewXForm, SizesFollowScreenOrPaper) {
    ZvViewXForm x;
    ZvViewOptions options;
    x.SetOptions(&options);
    x.SetPlan({}, 500);
    x.SetWindowRect(Rect2I{0, 0, 1000, 1000}, true);
    EXPECT_NEAR(x.SizeToView(ZvUniSize::Points(72)), 96, 0.1);
    EXPECT_NEAR(x.SizeToWorld(ZvUniSize::Pixels(10)), 5, 0.01);
    EXPECT_NEAR(x.SizeToView(ZvUniSize::World(10)), 20, 1e-4);
    options.paperScale = 1000;
    x.RebuildView();
    EXPECT_NEAR(x.SizeToWorld(ZvUniSize::ViewMM(10)), 10, 0.01);
    EXPECT_NEAR(x.SizeToWorld(ZvUniSize::Points(72)), 25.4, 0.01);
    x.SetupPointsToWorld(nullptr, 500, true);
    x.RebuildView();
    EXPECT_NEAR(x.SizeToWorld(ZvUniSize::Points(72)), 12.7, 0.01);
    EXPECT_EQ(x.InvertRect(Rect2I{0, 100, 10, 300}), (Rect2I{0, 700, 10, 900}));
}

TEST(ZvGLMatrix, BuildersFollowTheirDefinitions) {
    using namespace Zelvan;
    const Vec3d eye{3, -4, 5}, target{1, 1, 1};
    const Mat4d look = c_gluLookAt(eye, target, {0, 0, 1});
    EXPECT_NEAR(look.TransformPoint(eye).Length(), 0, 1e-12);
    EXPECT_NEAR(look.TransformPoint(target).z, -(target - eye).Length(), 1e-12);
    EXPECT_NEAR(look.TransformPoint(target + Vec3d{0, 0, 1}).x, 0, 1e-12);
    EXPECT_NEAR(c_gluLookAt({0, 0, 9}, {}, {0, 0, 1}).Determinant(), 1,
                1e-12); // straight down, up along the sight
    const Mat4d perspective = c_gluPerspective(90, 2, 3, 100);
    const Vec4d corner = perspective * Vec4d{20, 10, -10, 1}; // on the right top edge of the volume
    EXPECT_NEAR(corner.x / corner.w, 1, 1e-12);
    EXPECT_NEAR(corner.y / corner.w, 1, 1e-12);
    const Mat4d ortho = c_glOrtho(10, 30, -5, 5, 1, 9);
    EXPECT_NEAR(ortho.TransformPoint({30, -5, -9}).x, 1, 1e-12);
    EXPECT_NEAR(ortho.TransformPoint({30, -5, -9}).y, -1, 1e-12);
    EXPECT_NEAR(ortho.TransformPoint({30, -5, -9}).z, 1, 1e-12);
    Vec3d world{7, 7, 7};
    EXPECT_FALSE(c_gluUnProject({}, Mat4d::Scaling({1, 0, 1}), ortho, {}, world));
    EXPECT_EQ(world, (Vec3d{7, 7, 7}));
}

} // namespace
