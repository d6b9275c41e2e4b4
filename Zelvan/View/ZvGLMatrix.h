#pragma once
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"
#include "ZvCore/Mat4T.h"

namespace Zelvan {

// Matrices by the published definitions of OpenGL 1.x and GLU 1.3, in double precision; applied to column
// vectors. Distances in world units, angles in degrees where OpenGL has degrees.

ZV_API Mat4d c_glFrustum(double left, double right, double bottom, double top, double zNear, double zFar);
ZV_API Mat4d c_glOrtho(double left, double right, double bottom, double top, double zNear, double zFar);
/// `fovY`: degrees.
ZV_API Mat4d c_gluPerspective(double fovY, double aspect, double zNear, double zFar);
/// `up` along the line of sight is replaced by the axis that is farthest from it.
ZV_API Mat4d c_gluLookAt(const Vec3d& eye, const Vec3d& target, const Vec3d& up);

/// Where normalised coordinates land: pixel = origin + size * (ndc + 1) / 2. A negative height makes y grow
/// downwards.
struct ZvViewport {
    double x = 0, y = 0, width = 1, height = 1;
};
/// Inverse of projection and viewport. `window`: x and y in pixels, z the depth 0 (near) .. 1 (far). False
/// (`world` untouched) when the matrices cannot be inverted or the point lies at infinity.
ZV_API bool c_gluUnProject(const Vec3d& window, const Mat4d& modelView, const Mat4d& projection,
                           const ZvViewport& viewport, Vec3d& world);

} // namespace Zelvan
