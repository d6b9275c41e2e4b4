#include "ZvCore/Mat4T.h"
#include "ZvCore/Quatf.h"

#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>

namespace {

void ExpectNear(const Vec3d& a, const Vec3d& b, double tolerance) {
    EXPECT_LE((a - b).Length(), tolerance) << a.x << ' ' << a.y << ' ' << a.z;
}

double DistanceFromIdentity(const Mat4d& m) {
    double most = 0;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            most = std::max(most, std::abs(m.m[i][j] - (i == j)));
    return most;
}

} // namespace

TEST(Mat4T, ProductAppliesTheRightFactorFirstAndRotationsAreRightHanded) {
    const double quarter = std::numbers::pi / 2;
    const Mat4d turnThenMove = Mat4d::Translation({10, 0, 0}) * Mat4d::RotationZ(quarter);
    ExpectNear(turnThenMove.TransformPoint({1, 0, 0}), {10, 1, 0}, 1e-15);
    ExpectNear(Mat4d::RotationX(quarter).TransformPoint({0, 1, 0}), {0, 0, 1}, 1e-15);
    ExpectNear(Mat4d::RotationY(quarter).TransformPoint({0, 0, 1}), {1, 0, 0}, 1e-15);
    EXPECT_EQ((Mat4d::Scaling({2, 3, 4})).Determinant(), 24);
}

TEST(Mat4T, InverseUndoesTheMatrixAlsoWhenScalesDifferWidely) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> number(-1, 1);
    for (int i = 0; i < 200; ++i) {
        Mat4d m;
        for (auto& row : m.m)
            for (double& v : row)
                v = number(random);
        Mat4d inverse;
        if (std::abs(m.Determinant()) < 1e-3)
            continue;
        ASSERT_TRUE(m.Inverse(inverse));
        EXPECT_LT(DistanceFromIdentity(m * inverse), 1e-11);
    }
    // From pixels to a national grid in metres, and a model in micrometres.
    Mat4d inverse;
    const Mat4d grid = Mat4d::Translation({4.5e6, 5.9e7, 0}) * Mat4d::Scaling({1e-6, 1e-6, 1e3});
    ASSERT_TRUE(grid.Inverse(inverse));
    ExpectNear(inverse.TransformPoint(grid.TransformPoint({300, -20, 7})), {300, -20, 7}, 20);
    Mat4f narrow;
    EXPECT_TRUE(grid.As<float>().Inverse(narrow));
}

TEST(Mat4T, SingularMatricesAreRefusedAndLeaveTheResultAlone) {
    Mat4d flat = Mat4d::Scaling({1, 1, 0}), dependent, notFinite, zero = Mat4d::Scaling({0, 0, 0});
    const double rows[3][3] = {{0.1, 0.2, 0.3}, {0.3, 0.6, 0.9}, {0.7, 0.1, 0.5}};
    for (int i = 0; i < 3; ++i)
        std::copy(rows[i], rows[i] + 3, dependent.m[i]);
    notFinite.m[1][2] = std::numeric_limits<double>::quiet_NaN();
    zero.m[3][3] = 0;
    for (const Mat4d* m : {&flat, &dependent, &notFinite, &zero}) {
        Mat4d out = Mat4d::Translation({1, 2, 3});
        EXPECT_FALSE(m->Inverse(out));
        EXPECT_EQ(out, Mat4d::Translation({1, 2, 3}));
    }
}

TEST(Quatf, TurnsAsTheMatrixOfTheSameAngleDoes) {
    const double angle = 0.7;
    const Mat4d viaQuaternion = Quatf::FromAxisAngle({0, 0, 5}, angle).ToMatrix();
    const Vec3d p{3, -2, 1};
    ExpectNear(viaQuaternion.TransformPoint(p), Mat4d::RotationZ(angle).TransformPoint(p), 1e-6);
    const Quatf a = Quatf::FromAxisAngle({1, 0, 0}, 1), b = Quatf::FromAxisAngle({0, 1, 1}, -2);
    ExpectNear((a * b).ToMatrix().TransformPoint(p), (a.ToMatrix() * b.ToMatrix()).TransformPoint(p), 1e-5);
    ExpectNear((a * a.Conjugate()).ToMatrix().TransformPoint(p), p, 1e-6);
    EXPECT_EQ((Quatf{0, 0, 0, 0}).Normalized(), Quatf());
    EXPECT_EQ((Quatf{0, 0, 0, 9}).Normalized(), Quatf());
}
