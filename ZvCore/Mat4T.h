#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"

/// What the matrices of both precisions share.
struct ZV_API Mat4Math {
    static double Determinant(const double (&m)[4][4]);
    static bool Inverse(const double (&m)[4][4], double (&out)[4][4]);
};

/// 4 x 4 matrix, rows in storage order, applied to column vectors: p' = M p. `A * B` applies B first.
template <class T>
struct Mat4T {
    T m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

    friend constexpr bool operator==(const Mat4T&, const Mat4T&) = default;
    static constexpr Mat4T Identity() { return {}; }
    static constexpr Mat4T Translation(const Vec3T<T>& t) {
        Mat4T r;
        r.m[0][3] = t.x, r.m[1][3] = t.y, r.m[2][3] = t.z;
        return r;
    }
    static constexpr Mat4T Scaling(const Vec3T<T>& s) {
        Mat4T r;
        r.m[0][0] = s.x, r.m[1][1] = s.y, r.m[2][2] = s.z;
        return r;
    }
    /// Right-handed rotations; angle in radians.
    static Mat4T RotationX(T a) {
        Mat4T r;
        r.m[1][1] = std::cos(a), r.m[1][2] = -std::sin(a), r.m[2][1] = std::sin(a), r.m[2][2] = std::cos(a);
        return r;
    }
    static Mat4T RotationY(T a) {
        Mat4T r;
        r.m[0][0] = std::cos(a), r.m[0][2] = std::sin(a), r.m[2][0] = -std::sin(a), r.m[2][2] = std::cos(a);
        return r;
    }
    static Mat4T RotationZ(T a) {
        Mat4T r;
        r.m[0][0] = std::cos(a), r.m[0][1] = -std::sin(a), r.m[1][0] = std::sin(a), r.m[1][1] = std::cos(a);
        return r;
    }

    constexpr Mat4T operator*(const Mat4T& o) const {
        Mat4T r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                r.m[i][j] =
                    m[i][0] * o.m[0][j] + m[i][1] * o.m[1][j] + m[i][2] * o.m[2][j] + m[i][3] * o.m[3][j];
        return r;
    }
    constexpr Vec4T<T> operator*(const Vec4T<T>& v) const {
        return {m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z + m[0][3] * v.w,
                m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z + m[1][3] * v.w,
                m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z + m[2][3] * v.w,
                m[3][0] * v.x + m[3][1] * v.y + m[3][2] * v.z + m[3][3] * v.w};
    }
    /// Affine part applied to a point (no division by w).
    constexpr Vec3T<T> TransformPoint(const Vec3T<T>& p) const {
        return (*this * Vec4T<T>{p.x, p.y, p.z, 1}).XYZ();
    }
    /// Both work in double precision, also for float.
    T Determinant() const { return T(Mat4Math::Determinant(As<double>().m)); }
    /// False (and `out` untouched) when the matrix is singular or not finite.
    bool Inverse(Mat4T& out) const {
        Mat4T<double> r;
        if (!Mat4Math::Inverse(As<double>().m, r.m))
            return false;
        out = r.template As<T>();
        return true;
    }

    template <class U>
    constexpr Mat4T<U> As() const {
        Mat4T<U> r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                r.m[i][j] = U(m[i][j]);
        return r;
    }
};

using Mat4d = Mat4T<double>;
using Mat4f = Mat4T<float>;
