// Where two linear entities meet.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tools/ZvLineCrossing.h"
#include "Zelvan/Tools/ZvLinearParts.h"
#include "Zelvan/Tools/ZvSegment2D.h"
#include "Zelvan/Tools/ZvSegmentSweep.h"
#include <algorithm>
#include <cmath>

namespace {

std::vector<ZvLinearSegment> SegmentsOf(const ZvEntity& entity) {
    std::vector<ZvLinearSegment> segments;
    ForEachLinearSegment(entity, [&](const ZvLinearSegment& s) { segments.push_back(s); });
    return segments;
}

std::vector<ZvBounds2D> BoxesOf(const std::vector<ZvLinearSegment>& segments) {
    std::vector<ZvBounds2D> boxes(segments.size());
    for (size_t i = 0; i < segments.size(); ++i) {
        boxes[i].ExpandToFit(segments[i].a.XY());
        boxes[i].ExpandToFit(segments[i].b.XY());
    }
    return boxes;
}

ZvSegment2D Flat(const ZvLinearSegment& s) {
    return {s.a.XY(), s.b.XY()};
}

void AddProper(const ZvLinearSegment& a, size_t number, const ZvLinearSegment& b,
               std::vector<ZvLineCrossing>& found) {
    Vec2d at[2];
    const ZvSegment2D flat = Flat(a);
    for (int i = 0, count = flat.Intersect(Flat(b), at); i < count; ++i) {
        const double t = flat.ClosestParam(at[i]);
        found.push_back({double(number) + t, {at[i].x, at[i].y, a.a.z + (a.b.z - a.a.z) * t}});
    }
}

/// Crossings of b with the line of `a` beyond its open ends. The height beyond an end is that of the end.
void AddExtended(const ZvLinearSegment& a, size_t number, const ZvLinearSegment& b,
                 std::vector<ZvLineCrossing>& found) {
    double s = 0, t = 0;
    if (!Flat(a).CrossLines(Flat(b), s, t) || t < 0 || t > 1)
        return;
    if ((s < 0 && a.first) || (s > 1 && a.last)) {
        const Vec2d at = Flat(b).At(t);
        found.push_back({double(number) + s, {at.x, at.y, s < 0 ? a.a.z : a.b.z}});
    }
}

double ExtentOf(const std::vector<ZvBounds2D>& boxes) {
    ZvBounds2D all;
    for (const ZvBounds2D& box : boxes)
        all.ExpandToFit(box);
    return all.IsNull() ? 0 : std::max(all.Width(), all.Height());
}

void Intersect(const ZvEntity& a, const ZvEntity& b, bool extend, std::vector<Vec3d>& points) {
    const std::vector<ZvLinearSegment> segmentsA = SegmentsOf(a), segmentsB = SegmentsOf(b);
    const std::vector<ZvBounds2D> boxesA = BoxesOf(segmentsA), boxesB = BoxesOf(segmentsB);
    std::vector<ZvLineCrossing> found;
    for (const auto& [i, j] : ZvSegmentSweep::MeetingPairs(boxesA, boxesB))
        AddProper(segmentsA[i], i, segmentsB[j], found);
    if (extend)
        for (size_t i = 0; i < segmentsA.size(); ++i)
            if (segmentsA[i].first || segmentsA[i].last)
                for (const ZvLinearSegment& other : segmentsB)
                    AddExtended(segmentsA[i], i, other, found);
    AppendCrossings(found, std::max(ExtentOf(boxesA), ExtentOf(boxesB)), points);
}

} // namespace

void ZvEntity::IntersectMLVEntities(const ZvEntity& a, const ZvEntity& b, std::vector<Vec3d>& points) {
    Intersect(a, b, false, points);
}

void ZvEntity::IntersectMLVExtension(const ZvEntity& a, const ZvEntity& b, std::vector<Vec3d>& points) {
    Intersect(a, b, true, points);
}

void ZvEntity::GetIntersectionPoints(const ZvEntity& other, std::vector<Vec3d>& points,
                                     uint32_t flags) const {
    if (flags & kIntersectExtendThis)
        IntersectMLVExtension(*this, other, points);
    else
        IntersectMLVEntities(*this, other, points);
}
