#include "Zelvan/ZvBounds.h"
#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(ZvBounds, AnEmptyBoxTakesTheShapeOfWhatItIsExpandedBy) {
    ZvBounds2D box;
    EXPECT_TRUE(box.IsNull());
    EXPECT_EQ(box.Area(), 0);
    box.ExpandToFit({3, 4});
    EXPECT_EQ(box, ZvBounds2D(3, 4, 3, 4));
    EXPECT_FALSE(box.IsNull());
    EXPECT_TRUE(box.ExpandToFitTest(ZvBounds2D(1, 4, 2, 5)));
    EXPECT_FALSE(box.ExpandToFitTest(ZvBounds2D()));
    EXPECT_FALSE(box.ExpandToFitTest({2, 4.5}));
    EXPECT_EQ(box, ZvBounds2D(1, 4, 3, 5));
    EXPECT_TRUE(ZvBounds3D().IsNull());
    EXPECT_TRUE(ZvBounds3D(ZvBounds2D()).IsNull());
    EXPECT_TRUE(ZvBounds3D(0, 0, 1, 1, 1, 0).IsNull());
    EXPECT_TRUE(ZvBounds3D(-1, -1, -1, 1, 1, 1).IsInsideOf(ZvBounds3D::SuperBounds()));
}

TEST(ZvBounds, TouchingBoxesMeetAndBordersBelong) {
    const ZvBounds2D box(0, 0, 10, 10);
    EXPECT_TRUE(box.PositiveUnion({10, 10, 20, 20}));
    EXPECT_FALSE(box.PositiveUnion({10.001, 0, 20, 20}));
    EXPECT_FALSE(box.PositiveUnion(ZvBounds2D()));
    EXPECT_TRUE(box.IsInsideMe(10, 0));
    EXPECT_TRUE(ZvBounds2D(0, 0, 10, 10).IsInsideOf(box));
    EXPECT_FALSE(ZvBounds2D(0, 0, 10, 10.1).IsInsideOf(box));
    const ZvBounds3D space(0, 0, 0, 10, 10, 10);
    const ZvBounds3D above(1, 1, 11, 2, 2, 12);
    EXPECT_FALSE(space.PositiveUnion(above));
    EXPECT_TRUE(space.PositiveUnion2D(above.ToBounds2D()));
    EXPECT_FALSE(above.IsInsideOf(space));
    EXPECT_TRUE(above.IsInsideOf2D(space));
    EXPECT_TRUE(space.IsInsideMe2D(above));
}

TEST(ZvBounds, MeasuresAndMoves) {
    ZvBounds3D box(0, 0, 0, 4, 2, 10);
    EXPECT_EQ(box.MaxDimension(), 10);
    EXPECT_EQ(box.MaxDimensionXY(), 4);
    EXPECT_EQ(box.Center(), (Vec3d{2, 1, 5}));
    EXPECT_EQ(ZvBounds3D(10, 0, 0, 0, 1, 1).MaxDimension(), 10);
    box += Vec3d{1, 1, 1};
    box.Grow(1, 2, 3);
    EXPECT_EQ(box, ZvBounds3D(0, -1, -2, 6, 5, 14));
    EXPECT_EQ(box.ToBounds2D(), ZvBounds2D(0, -1, 6, 5));
}

TEST(ZvBounds, IntegerRectanglesAreRoundedAndKeptInRange) {
    EXPECT_EQ(ZvBounds2D(0.4, 0.5, 1.5, -1.5).ToRect(), (Rect2I{0, 1, 2, -2}));
    using Limits = std::numeric_limits<int>;
    EXPECT_EQ(ZvBounds2D::SuperBounds().ToRect(),
              (Rect2I{Limits::min(), Limits::min(), Limits::max(), Limits::max()}));
}

} // namespace
