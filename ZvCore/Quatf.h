#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Mat4T.h"

/// Unit rotation quaternion in single precision, stored x, y, z, w; identity is (0, 0, 0, 1).
struct ZV_API Quatf {
    float x = 0, y = 0, z = 0, w = 1;

    friend constexpr bool operator==(const Quatf&, const Quatf&) = default;
    /// Angle in radians about `axis` (any length but zero), right-handed.
    static Quatf FromAxisAngle(const Vec3d& axis, double angle);
    Quatf operator*(const Quatf& o) const;
    Quatf Conjugate() const { return {-x, -y, -z, w}; }
    Quatf Normalized() const;
    Mat4d ToMatrix() const;
};
