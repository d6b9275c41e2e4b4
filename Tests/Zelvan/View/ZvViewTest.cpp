#include "Zelvan/View/ZvView.h"
#include "Zelvan/Tables/ZvNamedView.h"
#include <gtest/gtest.h>

namespace {

void ExpectNear(const Vec3d& a, const Vec3d& b, double tolerance = 1e-6) {
    EXPECT_NEAR((a - b).Length(), 0, tolerance);
}

TEST(ZvView, ZoomingKeepsThePointUnderThePointer) {
    ZvView view;
    view.Resize(800, 600);
    ASSERT_TRUE(view.ZoomTo({5e6, 3e6, 5e6 + 100, 3e6 + 100}));
    view.SetRotation(0.4);
    const Vec2d pixel{700, 50};
    const Vec3d under = view.PixelToPlane(pixel);
    const double width = view.XForm().ViewWidth();
    ASSERT_TRUE(view.ZoomMousePt(pixel, 0.25));
    ExpectNear(view.PixelToPlane(pixel), under);
    EXPECT_NEAR(view.XForm().ViewWidth(), width / 4, 1e-9);
    for (const double bad : {0.0, -1.0, double(NAN), double(INFINITY), 1e-40, 1e40})
        EXPECT_FALSE(view.ZoomMousePt(pixel, bad));
    view.PanPixels(pixel, {100, 400});
    ExpectNear(view.PixelToPlane({100, 400}), under);
}

TEST(ZvView, ShowsAllOfABoxWhateverItsShape) {
    ZvView view;
    view.Resize(800, 200);
    for (const double rotation : {0.0, 0.7})
        for (const ZvBounds2D& box :
             {ZvBounds2D(0, 0, 10, 500), ZvBounds2D(0, 0, 5000, 1), ZvBounds2D(7, 7, 7, 7)}) {
            view.SetRotation(rotation);
            ASSERT_TRUE(view.ZoomTo(box));
            EXPECT_EQ(view.XForm().CullResult(box), Zelvan::VFCResult::Inside);
        }
    EXPECT_FALSE(view.ZoomTo(ZvBounds2D()));
    EXPECT_FALSE(view.ZoomExtents());
}

TEST(ZvView, RemembersWhatToRepaint) {
    ZvView view;
    view.Resize(100, 100);
    ASSERT_TRUE(view.ZoomTo({0, 0, 100, 100}, 0));
    EXPECT_EQ(view.TakeDirty(), (Rect2I{0, 0, 100, 100}));
    EXPECT_TRUE(view.TakeDirty().IsEmpty());
    view.Invalidate({200, 200, 0, 300, 300, 0});
    EXPECT_TRUE(view.TakeDirty().IsEmpty());
    view.Invalidate({10, 80, -9e90, 20, 90, 9e90});
    view.Invalidate({30, 80, 0, 40, 90, 0});
    EXPECT_EQ(view.TakeDirty(), (Rect2I{8, 8, 42, 22}));
}

TEST(ZvView, SavedStatesComeBack) {
    ZvView view;
    view.Resize(400, 300);
    view.ZoomTo({100, 100, 140, 130}, 0);
    view.SetRotation(0.25);
    ZvNamedView record;
    view.StoreTo(record);
    const Vec3d corner = view.PixelToPlane({0, 0});
    view.ZoomMousePt({1, 1}, 7);
    view.SetRotation(0);
    view.RestoreFrom(record);
    ExpectNear(view.PixelToPlane({0, 0}), corner);
}

} // namespace
