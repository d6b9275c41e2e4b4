#include "ZvCore/Quatf.h"

Quatf Quatf::FromAxisAngle(const Vec3d& axis, double angle) {
    const Vec3d v = axis.Normalized() * std::sin(angle / 2);
    return {float(v.x), float(v.y), float(v.z), float(std::cos(angle / 2))};
}

Quatf Quatf::operator*(const Quatf& o) const {
    return {w * o.x + x * o.w + y * o.z - z * o.y, w * o.y - x * o.z + y * o.w + z * o.x,
            w * o.z + x * o.y - y * o.x + z * o.w, w * o.w - x * o.x - y * o.y - z * o.z};
}

Quatf Quatf::Normalized() const {
    const float lengthSq = x * x + y * y + z * z + w * w;
    if (!(lengthSq > 0) || !std::isfinite(lengthSq))
        return {};
    const float s = 1 / std::sqrt(lengthSq);
    return {x * s, y * s, z * s, w * s};
}

Mat4d Quatf::ToMatrix() const {
    const double qx = x, qy = y, qz = z, qw = w;
    Mat4d r;
    r.m[0][0] = 1 - 2 * (qy * qy + qz * qz);
    r.m[0][1] = 2 * (qx * qy - qw * qz);
    r.m[0][2] = 2 * (qx * qz + qw * qy);
    r.m[1][0] = 2 * (qx * qy + qw * qz);
    r.m[1][1] = 1 - 2 * (qx * qx + qz * qz);
    r.m[1][2] = 2 * (qy * qz - qw * qx);
    r.m[2][0] = 2 * (qx * qz - qw * qy);
    r.m[2][1] = 2 * (qy * qz + qw * qx);
    r.m[2][2] = 1 - 2 * (qx * qx + qy * qy);
    return r;
}
