// Distances, closest points and clipping for every kind that shows its vertices.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tools/ZvLinearParts.h"
#include "Zelvan/Tools/ZvSegment2D.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>
#include <cmath>

namespace {

constexpr double kNoDistance = 9e90;
constexpr double kTolerance = 1e-6; // of entities that are in no drawing

Vec3d Lerp(const Vec4d& a, const Vec4d& b, double t) {
    return (a + (b - a) * t).XYZ();
}

/// The plane across a ray, with the ray at its origin: distances from the ray are distances from the origin there.
struct RayPlane {
    Vec3d origin, u, v;

    explicit RayPlane(const Ray3d& ray) : origin(ray.origin) {
        const Vec3d d = ray.direction.LengthSq() > 0 ? ray.direction.Normalized() : Vec3d{0, 0, -1};
        const Vec3d across = std::abs(d.x) < 0.9 ? Vec3d{1, 0, 0} : Vec3d{0, 1, 0};
        u = d.Cross(across).Normalized();
        v = d.Cross(u);
    }
    Vec2d operator()(const Vec3d& p) const { return {(p - origin).Dot(u), (p - origin).Dot(v)}; }
};

/// Distance of the origin from the parallelogram at a with sides `along` and `up`.
double ParallelogramDistanceSq(const Vec2d& a, const Vec2d& along, const Vec2d& up) {
    const double area = along.Cross(up);
    if (area != 0) {
        const Vec2d p = -a;
        const double s = p.Cross(up) / area, t = along.Cross(p) / area;
        if (s >= 0 && s <= 1 && t >= 0 && t <= 1)
            return 0;
    }
    const Vec2d corners[] = {a, a + along, a + along + up, a + up};
    double best = kNoDistance;
    for (int i = 0; i < 4; ++i)
        best = std::min(best, ZvSegment2D{corners[i], corners[(i + 1) & 3]}.DistanceSq({}));
    return best;
}

double SegmentDistanceSq(const ZvSegment2D& a, const ZvSegment2D& b) {
    Vec2d crossing[2];
    if (a.Intersect(b, crossing) > 0)
        return 0;
    return std::min({a.DistanceSq(b.a), a.DistanceSq(b.b), b.DistanceSq(a.a), b.DistanceSq(a.b)});
}

double Root(double distanceSq) {
    return distanceSq >= kNoDistance ? kNoDistance : std::sqrt(distanceSq);
}

} // namespace

double ZvEntity::DistanceToV(const Ray3d& ray, const ZvScaleSetup*) const {
    const RayPlane plane(ray);
    double best = kNoDistance;
    ForEachLinearSegment(*this, [&](const ZvLinearSegment& s) {
        best = std::min(best, ZvSegment2D{plane(s.a.XYZ()), plane(s.b.XYZ())}.DistanceSq({}));
    });
    Vec4d point;
    if (best >= kNoDistance && GetLogicalPoint(point))
        best = plane(point.XYZ()).LengthSq();
    return Root(best);
}

double ZvEntity::DistanceToV_Extrude(const Ray3d& ray, double height) const {
    const RayPlane plane(ray);
    const Vec2d up{plane.u.z * height, plane.v.z * height};
    double best = kNoDistance;
    ForEachLinearSegment(*this, [&](const ZvLinearSegment& s) {
        const Vec2d a = plane(s.a.XYZ());
        best = std::min(best, ParallelogramDistanceSq(a, plane(s.b.XYZ()) - a, up));
    });
    Vec4d point;
    if (best >= kNoDistance && GetLogicalPoint(point)) {
        const Vec2d a = plane(point.XYZ());
        best = ZvSegment2D{a, a + up}.DistanceSq({});
    }
    return Root(best);
}

double ZvEntity::DistanceToG(const Vec3d& point) const {
    ZvClosest closest;
    return ClosestPt(point, point, closest) ? closest.distance : kNoDistance;
}

double ZvEntity::DistanceToV2(const Vec3d& a, const Vec3d& b) const {
    const ZvSegment2D probe{a.XY(), b.XY()};
    double best = kNoDistance;
    ForEachLinearSegment(*this, [&](const ZvLinearSegment& s) {
        best = std::min(best, SegmentDistanceSq(probe, {s.a.XY(), s.b.XY()}));
    });
    Vec4d point;
    if (best >= kNoDistance && GetLogicalPoint(point))
        best = probe.DistanceSq(point.XY());
    return Root(best);
}

bool ZvEntity::IntersectWithPlane(const Ray3d& ray, Vec3d& point) const {
    const Vec4d plane = ObjectPlane();
    const double slope = plane.XYZ().Dot(ray.direction);
    if (slope == 0)
        return false;
    const double t = -(plane.XYZ().Dot(ray.origin) + plane.w) / slope;
    if (!std::isfinite(t))
        return false;
    point = ray.origin + ray.direction * t;
    return true;
}

ZvOccupancy ZvEntity::InteriorTest(const Ray3d& ray) const {
    Vec3d hit;
    if (!IntersectWithPlane(ray, hit))
        return ZvOccupancy::Outside;
    const double tolerance = ParentDrawing() ? ParentDrawing()->Tolerance() : kTolerance;
    bool inside = false;
    double best = kNoDistance;
    ForEachLinearSegment(*this, [&](const ZvLinearSegment& s) {
        const Vec2d a = s.a.XY(), b = s.b.XY(), p = hit.XY();
        best = std::min(best, ZvSegment2D{a, b}.DistanceSq(p));
        if (s.ring && (a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x))
            inside = !inside;
    });
    return best <= tolerance * tolerance ? ZvOccupancy::On
           : inside                      ? ZvOccupancy::Inside
                                         : ZvOccupancy::Outside;
}

// --- closest elements --------------------------------------------------------------------------------------------------------

bool ZvEntity::MLVGetClosestSegment(const Vec3d& point, ZvClosest& closest) const {
    double best = kNoDistance;
    ForEachLinearSegment(*this, [&](const ZvLinearSegment& s) {
        const ZvSegment2D flat{s.a.XY(), s.b.XY()};
        const double t = flat.ClosestParam(point.XY());
        const double distance = (point.XY() - flat.At(t)).LengthSq();
        if (distance < best) {
            best = distance;
            closest = {Lerp(s.a, s.b, t), std::sqrt(distance), s.part, s.index};
        }
    });
    return best < kNoDistance;
}

bool ZvEntity::MLVGetClosestVertex(const Vec3d& point, ZvClosest& closest) const {
    double best = kNoDistance;
    int base = 0;
    ForEachLinearPart(*this, [&](const dvect<Vec4d>& vertices, bool, int part) {
        for (size_t i = 0; i < vertices.size(); ++i) {
            const double distance = (point.XY() - vertices[i].XY()).LengthSq();
            if (distance < best) {
                best = distance;
                closest = {vertices[i].XYZ(), std::sqrt(distance), part, base + int(i)};
            }
        }
        base += int(vertices.size());
    });
    return best < kNoDistance;
}

bool ZvEntity::MLVGetClosestPart(const Vec3d& point, ZvClosest& closest) const {
    return MLVGetClosestSegment(point, closest);
}

bool ZvEntity::ClosestPt(const Vec3d& point, const Vec3d& reference, ZvClosest& result) const {
    double best = kNoDistance, bestFromReference = kNoDistance;
    ForEachLinearSegment(*this, [&](const ZvLinearSegment& s) {
        const ZvSegment2D flat{s.a.XY(), s.b.XY()};
        const double t = flat.ClosestParam(point.XY());
        const Vec2d at = flat.At(t);
        const double distance = (point.XY() - at).LengthSq(),
                     fromReference = (reference.XY() - at).LengthSq();
        if (distance < best || (distance == best && fromReference < bestFromReference)) {
            best = distance, bestFromReference = fromReference;
            result = {Lerp(s.a, s.b, t), std::sqrt(distance), s.part, s.index};
        }
    });
    Vec4d at;
    if (best >= kNoDistance && GetLogicalPoint(at)) {
        best = (point.XY() - at.XY()).LengthSq();
        result = {at.XYZ(), std::sqrt(best), -1, -1};
    }
    return best < kNoDistance;
}

bool ZvEntity::GetGeomDir(const Vec3d& at, Vec3d& direction) const {
    double best = kNoDistance;
    ForEachLinearSegment(*this, [&](const ZvLinearSegment& s) {
        const ZvSegment2D flat{s.a.XY(), s.b.XY()};
        const double distance = flat.DistanceSq(at.XY());
        const Vec2d along = flat.b - flat.a;
        if (distance < best && along.LengthSq() > 0) {
            best = distance;
            direction = Vec3d{along.x, along.y, 0}.Normalized();
        }
    });
    return best < kNoDistance;
}

ZvClipResult ZvEntity::ClipTest(const ZvBounds2D& window) const {
    const ZvBounds2D bounds = Bounds2D();
    if (bounds.IsNull() || !window.PositiveUnion(bounds))
        return ZvClipResult::Outside;
    if (window.IsInsideMe(bounds))
        return ZvClipResult::Inside;
    bool linear = false, meets = false;
    ForEachLinearSegment(*this, [&](const ZvLinearSegment& s) {
        linear = true;
        meets = meets || ZvSegment2D{s.a.XY(), s.b.XY()}.MeetsBox(window);
    });
    return meets || !linear ? ZvClipResult::Crosses : ZvClipResult::Outside;
}

// --- linear dimensions: a parameter is a segment's number plus the share of its length ------------------------------------

namespace {

/// The segment of a parameter; false outside of [0, number of segments].
bool SegmentAt(const ZvEntity& entity, double param, ZvLinearSegment& segment, double& share) {
    int number = 0;
    bool found = false;
    ForEachLinearSegment(entity, [&](const ZvLinearSegment& s) {
        if (param >= number && param <= number + 1 && !(found && param <= number)) {
            segment = s, share = param - number, found = true;
        }
        ++number;
    });
    return found;
}

int EndIndex(const ZvEntity& entity, const ZvLinearSegment& segment) {
    int base = 0, end = segment.index;
    ForEachLinearPart(entity, [&](const dvect<Vec4d>& vertices, bool, int part) {
        if (part == segment.part)
            end = segment.index + 1 < base + int(vertices.size()) ? segment.index + 1 : base;
        base += int(vertices.size());
    });
    return end;
}

} // namespace

int ZvEntity::GetLinearDimIndices(const Vec3d& nearPoint, int& first, int& second) const {
    ZvLinearSegment nearest;
    double best = kNoDistance;
    ForEachLinearSegment(*this, [&](const ZvLinearSegment& s) {
        const double distance = ZvSegment2D{s.a.XY(), s.b.XY()}.DistanceSq(nearPoint.XY());
        if (distance < best)
            best = distance, nearest = s;
    });
    if (best >= kNoDistance)
        return 0;
    first = nearest.index;
    second = EndIndex(*this, nearest);
    return 2;
}

int ZvEntity::GetLinearDimIndices(double param, int& first, int& second) const {
    ZvLinearSegment segment;
    double share = 0;
    if (!SegmentAt(*this, param, segment, share))
        return 0;
    first = segment.index;
    second = EndIndex(*this, segment);
    return 2;
}

bool ZvEntity::GetLinearDimPoint(int index, Vec3d& point) const {
    bool found = false;
    int base = 0;
    ForEachLinearPart(*this, [&](const dvect<Vec4d>& vertices, bool, int) {
        if (index >= base && index < base + int(vertices.size())) {
            point = vertices[size_t(index - base)].XYZ();
            found = true;
        }
        base += int(vertices.size());
    });
    return found;
}

bool ZvEntity::GetLinearDimPoint(double param, Vec3d& point) const {
    ZvLinearSegment segment;
    double share = 0;
    if (!SegmentAt(*this, param, segment, share))
        return false;
    point = Lerp(segment.a, segment.b, share);
    return true;
}

bool ZvEntity::GetLinearDimPoint_SegmentA(double param, Vec3d& point) const {
    ZvLinearSegment segment;
    double share = 0;
    const bool found = SegmentAt(*this, param, segment, share);
    if (found)
        point = segment.a.XYZ();
    return found;
}

bool ZvEntity::GetLinearDimPoint_SegmentB(double param, Vec3d& point) const {
    ZvLinearSegment segment;
    double share = 0;
    const bool found = SegmentAt(*this, param, segment, share);
    if (found)
        point = segment.b.XYZ();
    return found;
}
