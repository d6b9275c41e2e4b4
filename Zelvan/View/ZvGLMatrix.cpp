#include "Zelvan/View/ZvGLMatrix.h"
#include <cmath>

namespace Zelvan {

namespace {

constexpr double kPi = 3.14159265358979323846;

} // namespace

Mat4d c_glFrustum(double left, double right, double bottom, double top, double zNear, double zFar) {
    Mat4d m;
    m.m[0][0] = 2 * zNear / (right - left), m.m[0][2] = (right + left) / (right - left);
    m.m[1][1] = 2 * zNear / (top - bottom), m.m[1][2] = (top + bottom) / (top - bottom);
    m.m[2][2] = -(zFar + zNear) / (zFar - zNear), m.m[2][3] = -2 * zFar * zNear / (zFar - zNear);
    m.m[3][2] = -1, m.m[3][3] = 0;
    return m;
}

Mat4d c_glOrtho(double left, double right, double bottom, double top, double zNear, double zFar) {
    Mat4d m;
    m.m[0][0] = 2 / (right - left), m.m[0][3] = -(right + left) / (right - left);
    m.m[1][1] = 2 / (top - bottom), m.m[1][3] = -(top + bottom) / (top - bottom);
    m.m[2][2] = -2 / (zFar - zNear), m.m[2][3] = -(zFar + zNear) / (zFar - zNear);
    return m;
}

Mat4d c_gluPerspective(double fovY, double aspect, double zNear, double zFar) {
    const double top = std::tan(fovY * kPi / 360) * zNear;
    return c_glFrustum(-top * aspect, top * aspect, -top, top, zNear, zFar);
}

Mat4d c_gluLookAt(const Vec3d& eye, const Vec3d& target, const Vec3d& up) {
    const Vec3d forward = (target - eye).Normalized();
    Vec3d side = forward.Cross(up);
    if (side.LengthSq() < 1e-18 * up.LengthSq())
        side = forward.Cross(std::abs(forward.y) < std::abs(forward.z) ? Vec3d{0, 1, 0} : Vec3d{0, 0, 1});
    side = side.Normalized();
    const Vec3d above = side.Cross(forward);
    Mat4d m;
    const Vec3d rows[3] = {side, above, -forward};
    for (int i = 0; i < 3; ++i) {
        m.m[i][0] = rows[i].x, m.m[i][1] = rows[i].y, m.m[i][2] = rows[i].z;
        m.m[i][3] = -rows[i].Dot(eye);
    }
    return m;
}

bool c_gluUnProject(const Vec3d& window, const Mat4d& modelView, const Mat4d& projection,
                    const ZvViewport& viewport, Vec3d& world) {
    Mat4d inverse;
    if (!(projection * modelView).Inverse(inverse))
        return false;
    const Vec4d ndc{(window.x - viewport.x) * 2 / viewport.width - 1,
                    (window.y - viewport.y) * 2 / viewport.height - 1, window.z * 2 - 1, 1};
    const Vec4d p = inverse * ndc;
    const Vec3d q = p.XYZ() * (1 / p.w);
    if (!std::isfinite(q.x) || !std::isfinite(q.y) || !std::isfinite(q.z))
        return false;
    world = q;
    return true;
}

} // namespace Zelvan
