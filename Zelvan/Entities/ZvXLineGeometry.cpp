// Measuring, picking and clipping: what a polyline answers about its geometry.
#include "Zelvan/Entities/ZvXLineScan.h"
#include "Zelvan/Tools/ZvPolygonArea.h"
#include <cmath>

namespace {
/// Answer of distances where there is no geometry.
constexpr double kNoDistance = 9e90;
} // namespace

Vec3d ZvXLine::PointOnSegment(uint32_t part, uint32_t vertex, double t, const Vec2d& xy) const {
    if (!HasZ())
        return {xy.x, xy.y, 0};
    const FltData flt = GetFlt();
    const double z0 = Unpack(flt, vertex).z, z1 = Unpack(flt, ZvXLineScan::SegmentEnd(*this, part, vertex)).z;
    return {xy.x, xy.y, z0 + (z1 - z0) * t};
}

// --- measures ------------------------------------------------------------------------------------------------------------

double ZvXLine::GetArea() const {
    if (m_numParts == 0)
        return 0;
    EnsureDepths();
    double area = 0;
    for (uint32_t part = 0; part < m_numParts; ++part) {
        Vec2d base, last;
        double twice = 0;
        ZvXLineScan::Vertices(*this, PStart(part), PEnd(part), [&](uint32_t i, const Vec2d& v) {
            if (i == PStart(part))
                base = v;
            twice += (last - base).Cross(v - base) * (i > PStart(part));
            last = v;
            return true;
        });
        const double ring = std::abs(twice) / 2;
        area += PDepth(part) % 2 ? -ring : ring;
    }
    return area;
}

double ZvXLine::GetCircumference() const {
    double length = 0;
    ZvXLineScan::Segments(*this, [&](uint32_t, uint32_t, const ZvSegment2D& s) {
        length += (s.b - s.a).Length();
        return true;
    });
    return length;
}

// --- nearest -------------------------------------------------------------------------------------------------------------

double ZvXLine::DistanceToV(const Ray3d& ray, const ZvScaleSetup* scale) const {
    if (m_numVerts == 0)
        return kNoDistance;
    const double half = scale ? scale->WidthToWorld(ResolvedLineWidth()) / 2 : 0;
    double best = kNoDistance;
    if (ray.direction.x == 0 && ray.direction.y == 0) {
        const Vec2d p = ray.origin.XY();
        double bestSq = kNoDistance;
        ZvXLineScan::Segments(*this, [&](uint32_t, uint32_t, const ZvSegment2D& s) {
            if (s.BoxDistanceSq(p) < bestSq)
                bestSq = std::min(bestSq, s.DistanceSq(p));
            return true;
        });
        best = std::sqrt(bestSq);
    } else {
        best = DistanceAlong(ray);
    }
    return std::max(0.0, best - half);
}

/// Seen along the ray the geometry is flat: the distance of its projection from the ray's foot.
double ZvXLine::DistanceAlong(const Ray3d& ray) const {
    const Vec3d d = ray.direction.Normalized();
    const Vec3d across = std::abs(d.z) < 0.9 ? Vec3d{0, 0, 1} : Vec3d{1, 0, 0};
    const Vec3d u = across.Cross(d).Normalized(), v = d.Cross(u);
    const FltData flt = GetFlt();
    const auto seen = [&](uint32_t i) {
        const Vec3d p = Unpack(flt, i).XYZ() - ray.origin;
        return Vec2d{u.Dot(p), v.Dot(p)};
    };
    double bestSq = kNoDistance;
    for (uint32_t part = 0; part < m_numParts; ++part) {
        if (PLen(part) == 0)
            continue;
        Vec2d last = seen(PIsRing(part) ? PEnd(part) - 1 : PStart(part));
        for (uint32_t i = PStart(part); i < PEnd(part); ++i) {
            const Vec2d next = seen(i);
            bestSq = std::min(bestSq, ZvSegment2D{last, next}.DistanceSq({}));
            last = next;
        }
    }
    return std::sqrt(bestSq);
}

bool ZvXLine::FindClosest(const Vec3d& point, const Vec3d* reference, ZvClosest& closest) const {
    double bestSq = kNoDistance, bestT = 0, bestReferenceSq = kNoDistance;
    const Vec2d p = point.XY();
    Vec2d best;
    closest.index = closest.part = -1;
    ZvXLineScan::Segments(*this, [&](uint32_t part, uint32_t vertex, const ZvSegment2D& s) {
        if (s.BoxDistanceSq(p) > bestSq)
            return true;
        const double t = s.ClosestParam(p);
        const Vec2d at = s.At(t);
        const double distanceSq = (p - at).LengthSq();
        if (distanceSq > bestSq)
            return true;
        const double referenceSq = reference ? (reference->XY() - at).LengthSq() : 0;
        if (distanceSq < bestSq || referenceSq < bestReferenceSq) {
            bestSq = distanceSq, bestReferenceSq = referenceSq, bestT = t, best = at;
            closest.part = int(part), closest.index = int(vertex);
        }
        return true;
    });
    if (closest.index < 0)
        return false;
    closest.distance = std::sqrt(bestSq);
    closest.point = PointOnSegment(uint32_t(closest.part), uint32_t(closest.index), bestT, best);
    return true;
}

bool ZvXLine::ClosestPt(const Vec3d& point, const Vec3d& reference, ZvClosest& result) const {
    return FindClosest(point, &reference, result);
}

bool ZvXLine::MLVGetClosestSegment(const Vec3d& point, ZvClosest& closest) const {
    return FindClosest(point, nullptr, closest);
}

bool ZvXLine::MLVGetClosestPart(const Vec3d& point, ZvClosest& closest) const {
    return FindClosest(point, nullptr, closest);
}

bool ZvXLine::MLVGetClosestVertex(const Vec3d& point, ZvClosest& closest) const {
    double bestSq = kNoDistance;
    closest.index = closest.part = -1;
    ZvXLineScan::Vertices(*this, 0, m_numVerts, [&](uint32_t i, const Vec2d& v) {
        const double distanceSq = (v - point.XY()).LengthSq();
        if (distanceSq < bestSq)
            bestSq = distanceSq, closest.index = int(i);
        return true;
    });
    if (closest.index < 0)
        return false;
    closest.part = int(PartOfVertex(uint32_t(closest.index)));
    closest.distance = std::sqrt(bestSq);
    closest.point = Unpack(GetFlt(), uint32_t(closest.index)).XYZ();
    return true;
}

bool ZvXLine::GetGeomDir(const Vec3d& at, Vec3d& direction) const {
    ZvClosest closest;
    if (!FindClosest(at, nullptr, closest))
        return false;
    const FltData flt = GetFlt();
    const uint32_t vertex = uint32_t(closest.index);
    const Vec2d d = Unpack(flt, ZvXLineScan::SegmentEnd(*this, uint32_t(closest.part), vertex)).XY() -
                    Unpack(flt, vertex).XY();
    const double length = d.Length();
    if (!(length > 0))
        return false;
    direction = {d.x / length, d.y / length, 0};
    return true;
}

// --- inside --------------------------------------------------------------------------------------------------------------

ZvOccupancy ZvXLine::InteriorTest(const Ray3d& ray) const {
    if (m_numVerts == 0)
        return ZvOccupancy::Outside;
    Vec2d p = ray.origin.XY();
    if (ray.direction.x != 0 || ray.direction.y != 0) {
        if (ray.direction.z == 0)
            return ZvOccupancy::Outside;
        const double along = (Origin().z - ray.origin.z) / ray.direction.z;
        p = p + ray.direction.XY() * along;
    }
    const ZvBounds2D box = IBounds2D();
    const double near = std::max(Scales().x * !Is64(), box.MaxDimension() * 1e-12);
    if (p.x < box.minX - near || p.x > box.maxX + near || p.y < box.minY - near || p.y > box.maxY + near)
        return ZvOccupancy::Outside;
    bool inside = false, on = false;
    ZvXLineScan::Segments(*this, [&](uint32_t part, uint32_t, const ZvSegment2D& s) {
        on = s.BoxDistanceSq(p) <= near * near && s.DistanceSq(p) <= near * near;
        if (PIsRing(part) && (s.a.y > p.y) != (s.b.y > p.y) &&
            p.x < (s.b.x - s.a.x) * ((p.y - s.a.y) / (s.b.y - s.a.y)) + s.a.x)
            inside = !inside;
        return !on;
    });
    return on ? ZvOccupancy::On : inside ? ZvOccupancy::Inside : ZvOccupancy::Outside;
}

bool ZvXLine::AllowSingleClickSelectInside() const {
    return IsPolygon() && !GetBrush().IsEmpty() && !GetBrush().IsNull();
}

ZvClipResult ZvXLine::ClipTest(const ZvBounds2D& window) const {
    const ZvBounds2D box = IBounds2D();
    if (box.IsNull() || !window.PositiveUnion(box))
        return ZvClipResult::Outside;
    if (window.IsInsideMe(box))
        return ZvClipResult::Inside;
    // Bounds are tight: some vertex lies outside. What is left is whether anything lies inside: a segment, or the window lies in the
    // area itself, which its corner tells when no segment comes in.
    const Vec2d corner{window.minX, window.minY};
    bool cornerInside = false;
    const bool missesAll = ZvXLineScan::Segments(*this, [&](uint32_t, uint32_t, const ZvSegment2D& s) {
        if ((s.a.y > corner.y) != (s.b.y > corner.y) &&
            corner.x < (s.b.x - s.a.x) * ((corner.y - s.a.y) / (s.b.y - s.a.y)) + s.a.x)
            cornerInside = !cornerInside;
        return !s.MeetsBox(window);
    });
    return !missesAll || (IsPolygon() && cornerInside) ? ZvClipResult::Crosses : ZvClipResult::Outside;
}
