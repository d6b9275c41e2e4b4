// Converters between world and pixels, and culling.
#include "Zelvan/View/ZvViewXForm.h"
#include <cmath>

namespace Zelvan {

// --- one point ---------------------------------------------------------------------------------------

Vec4d ZvViewXForm::ToViewPlain(const ZvViewXForm& x, const Vec4d& world) {
    const Vec4d clip =
        x.m_combined * Vec4d{world.x + x.m_offset.x, world.y + x.m_offset.y, world.z + x.m_offset.z, 1};
    const ZvViewport& v = x.m_viewport;
    return {(clip.x / clip.w + 1) * v.width / 2 + v.x, (clip.y / clip.w + 1) * v.height / 2 + v.y,
            clip.z / clip.w, clip.w};
}

Vec4d ZvViewXForm::ToViewPre(const ZvViewXForm& x, const Vec4d& world) {
    const Vec3d outer = x.m_pre.back().toWorld.TransformPoint(world.XYZ());
    return ToViewPlain(x, {outer.x, outer.y, outer.z, world.w});
}

namespace {

struct ViewportLQ {
    float halfWidth, halfHeight, originX, originY;
};

Vec4f ProjectLQ(const Mat4f& combined, const ViewportLQ& v, Vec3f p) {
    const Vec4f clip = combined * Vec4f{p.x, p.y, p.z, 1};
    return {v.halfWidth * (clip.x / clip.w) + v.originX, v.halfHeight * (clip.y / clip.w) + v.originY,
            clip.z / clip.w, clip.w};
}

Vec3f ToFloat(const Vec3d& p) {
    return {float(p.x), float(p.y), float(p.z)};
}

} // namespace

Vec4f ZvViewXForm::ToViewLQPlain(const ZvViewXForm& x, const Vec4d& world) {
    return ProjectLQ(x.m_combinedLQ, {x.m_halfWidth, x.m_halfHeight, x.m_originX, x.m_originY},
                     ToFloat(world.XYZ() + x.m_offset));
}

Vec4f ZvViewXForm::ToViewLQPre(const ZvViewXForm& x, const Vec4d& world) {
    return ProjectLQ(x.m_combinedLQ, {x.m_halfWidth, x.m_halfHeight, x.m_originX, x.m_originY},
                     ToFloat(x.m_pre.back().toOffset.TransformPoint(world.XYZ())));
}

// --- many points -------------------------------------------------------------------------------------

namespace {

Vec3d Point(const Vec4d& p, double) {
    return p.XYZ();
}

Vec3d Point(const Vec2d& p, double z) {
    return {p.x, p.y, z};
}

void Put(Vec4f& out, float x, float y, float z, float w) {
    out = {x, y, z, w};
}

void Put(Vec2f& out, float x, float y, float, float) {
    out = {x, y};
}

} // namespace

/// Affine views come down to one multiplication by a matrix that holds the viewport, too.
template <class In, class Out>
void ZvViewXForm::MapBatch(const In* world, size_t count, Out* out, double z) const {
    const ViewportLQ v{m_halfWidth, m_halfHeight, m_originX, m_originY};
    const Mat4f c = m_combinedLQ;
    const float xx = v.halfWidth * c.m[0][0], xy = v.halfWidth * c.m[0][1], xz = v.halfWidth * c.m[0][2],
                x0 = v.halfWidth * c.m[0][3] + v.originX;
    const float yx = v.halfHeight * c.m[1][0], yy = v.halfHeight * c.m[1][1], yz = v.halfHeight * c.m[1][2],
                y0 = v.halfHeight * c.m[1][3] + v.originY;
    const auto affine = [&](size_t i, Vec3f p) {
        Put(out[i], xx * p.x + xy * p.y + xz * p.z + x0, yx * p.x + yy * p.y + yz * p.z + y0,
            c.m[2][0] * p.x + c.m[2][1] * p.y + c.m[2][2] * p.z + c.m[2][3], 1);
    };
    const auto perspective = [&](size_t i, Vec3f p) {
        const Vec4f view = ProjectLQ(c, v, p);
        Put(out[i], view.x, view.y, view.z, view.w);
    };
    const auto run = [&](const auto& toOffset) {
        if (m_isAffine)
            for (size_t i = 0; i < count; ++i)
                affine(i, toOffset(Point(world[i], z)));
        else
            for (size_t i = 0; i < count; ++i)
                perspective(i, toOffset(Point(world[i], z)));
    };
    const Vec3d offset = m_offset;
    if (m_pre.empty()) {
        run([offset](const Vec3d& p) { return ToFloat(p + offset); });
    } else {
        const Mat4d pre = m_pre.back().toOffset;
        run([&pre](const Vec3d& p) { return ToFloat(pre.TransformPoint(p)); });
    }
}

void ZvViewXForm::ToViewLQ(const Vec4d* world, size_t count, Vec4f* out) const {
    MapBatch(world, count, out, 0);
}

void ZvViewXForm::ToViewLQ(const Vec4d* world, size_t count, Vec2f* out) const {
    MapBatch(world, count, out, 0);
}

void ZvViewXForm::ToViewLQ(const Vec2d* world, size_t count, Vec2f* out, double z) const {
    MapBatch(world, count, out, z);
}

Vec3f ZvViewXForm::ToViewGL3f(const Vec3d& world) const {
    return ToFloat(world + m_offset);
}

Vec4f ZvViewXForm::ToViewGL4f(const Vec4d& world) const {
    const Vec3f p = ToFloat(world.XYZ() + m_offset);
    return {p.x, p.y, p.z, float(world.w)};
}

void ZvViewXForm::ToViewGL3fa(const Vec4d* world, size_t count, Vec3f* out) const {
    for (size_t i = 0; i < count; ++i)
        out[i] = ToFloat(world[i].XYZ() + m_offset);
}

// --- pixels to world ---------------------------------------------------------------------------------

Vec3d ZvViewXForm::ToWorld(const Vec3d& view) const {
    Vec3d point;
    if (!c_gluUnProject({view.x, view.y, (view.z + 1) / 2}, m_modelView, m_projection, m_viewport, point))
        return m_target;
    return point - m_offset;
}

Vec3f ZvViewXForm::ToWorldf(const Vec3f& view) const {
    return ToFloat(ToWorld({view.x, view.y, view.z}));
}

Ray3d ZvViewXForm::ToWorldRay(const Vec2d& pixel) const {
    const Vec3d from = ToWorld({pixel.x, pixel.y, -1}), to = ToWorld({pixel.x, pixel.y, 1});
    return {from, (to - from).Normalized()};
}

bool ZvViewXForm::Transform(bool toView, Vec3d& point) const {
    if (toView) {
        const Vec4d view = ToView(Vec4d{point.x, point.y, point.z, 1});
        if (!(view.w > 0) || !std::isfinite(view.x) || !std::isfinite(view.y))
            return false;
        point = view.XYZ();
        return true;
    }
    Vec3d world;
    if (!c_gluUnProject({point.x, point.y, (point.z + 1) / 2}, m_modelView, m_projection, m_viewport, world))
        return false;
    point = world - m_offset;
    return true;
}

ZvBounds2D ZvViewXForm::VisibleWorld() const {
    ZvBounds2D bounds;
    for (const double x : {m_viewport.x, m_viewport.x + m_viewport.width})
        for (const double y : {m_viewport.y, m_viewport.y + m_viewport.height}) {
            const Ray3d ray = ToWorldRay({x, y});
            const double steps = (m_target.z - ray.origin.z) / ray.direction.z;
            if (!std::isfinite(steps) || (steps < 0 && !IsOrthographic()))
                return ZvBounds2D::SuperBounds();
            bounds.ExpandToFit(ray.origin.x + ray.direction.x * steps,
                               ray.origin.y + ray.direction.y * steps);
        }
    return bounds;
}

// --- culling -----------------------------------------------------------------------------------------

/// Planes of the view volume, inner side positive (G. Gribb, K. Hartmann, "Fast Extraction of Viewing Frustum
/// Planes", 2001).
void ZvViewXForm::ExtractPlanes() {
    const auto& m = m_combined.m;
    m_planeCount = IsOrthographic() ? 4 : 6;
    for (int i = 0; i < m_planeCount; ++i) {
        const double* row = m[i / 2];
        const double sign = i % 2 ? -1 : 1;
        m_planes[i] = {m[3][0] + sign * row[0], m[3][1] + sign * row[1], m[3][2] + sign * row[2],
                       m[3][3] + sign * row[3]};
    }
}

VFCResult ZvViewXForm::CullResult(const ZvBounds3D& world) const {
    if (world.IsNull())
        return VFCResult::Outside;
    const double low[3] = {world.minX + m_offset.x, world.minY + m_offset.y, world.minZ + m_offset.z};
    const double high[3] = {world.maxX + m_offset.x, world.maxY + m_offset.y, world.maxZ + m_offset.z};
    bool inside = true;
    for (int i = 0; i < m_planeCount; ++i) {
        const Plane& p = m_planes[i];
        const double normal[3] = {p.x, p.y, p.z};
        double farthest = p.w, nearest = p.w;
        for (int axis = 0; axis < 3; ++axis) {
            if (normal[axis] == 0)
                continue; // an unbounded box does not make this axis count
            farthest += normal[axis] * (normal[axis] > 0 ? high[axis] : low[axis]);
            nearest += normal[axis] * (normal[axis] > 0 ? low[axis] : high[axis]);
        }
        if (farthest < 0)
            return VFCResult::Outside;
        inside &= nearest >= 0;
    }
    return inside ? VFCResult::Inside : VFCResult::Partial;
}

VFCResult ZvViewXForm::CullResult(const ZvBounds2D& world) const {
    return CullResult(ZvBounds3D(world));
}

} // namespace Zelvan
