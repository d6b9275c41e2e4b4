// What a user does with a polyline by hand: snaps, grips, intersections, transforms, exploding.
#include "Zelvan/Entities/ZvXLineScan.h"
#include "Zelvan/Tools/ZvLineCrossing.h"
#include "Zelvan/Tools/ZvSegmentSweep.h"
#include <algorithm>
#include <cmath>

// --- snaps ---------------------------------------------------------------------------------------------------------------

void ZvXLine::GetSnapsVertices(const ZvBounds2D& window, ZvSnaps& snaps) const {
    if (!window.PositiveUnion(IBounds2D()))
        return;
    const FltData flt = GetFlt();
    ZvXLineScan::Vertices(*this, 0, m_numVerts, [&](uint32_t i, const Vec2d& v) {
        if (window.IsInsideMe(v))
            snaps.push_back({ZvSnapKind::Vertex, Unpack(flt, i).XYZ()});
        return true;
    });
}

void ZvXLine::GetSnapsMidPoint(const ZvBounds2D& window, ZvSnaps& snaps) const {
    if (!window.PositiveUnion(IBounds2D()))
        return;
    ZvXLineScan::Segments(*this, [&](uint32_t part, uint32_t vertex, const ZvSegment2D& s) {
        const Vec2d mid = s.At(0.5);
        if (window.IsInsideMe(mid))
            snaps.push_back({ZvSnapKind::MidPoint, PointOnSegment(part, vertex, 0.5, mid)});
        return true;
    });
}

void ZvXLine::GetSnapsEdge(const Vec3d& nearPoint, double radius, ZvSnaps& snaps) const {
    ZvBounds2D reach = IBounds2D();
    reach.Grow(radius);
    ZvClosest closest;
    if (reach.IsInsideMe(nearPoint.XY()) && FindClosest(nearPoint, nullptr, closest) &&
        closest.distance <= radius)
        snaps.push_back({ZvSnapKind::Edge, closest.point});
}

// --- intersections -------------------------------------------------------------------------------------------------------

namespace {

struct Piece {
    ZvSegment2D segment;
    uint32_t part, vertex;
};

/// The segments that come into the box, with boxes of their own.
void PiecesIn(const ZvXLine& line, const ZvBounds2D& box, std::vector<Piece>& pieces,
              std::vector<ZvBounds2D>& boxes) {
    ZvXLineScan::Segments(line, [&](uint32_t part, uint32_t vertex, const ZvSegment2D& s) {
        if (s.MeetsBox(box)) {
            pieces.push_back({s, part, vertex});
            boxes.emplace_back(std::min(s.a.x, s.b.x), std::min(s.a.y, s.b.y), std::max(s.a.x, s.b.x),
                               std::max(s.a.y, s.b.y));
        }
        return true;
    });
}

} // namespace

// As the base does it, but only segments where the bounds of both overlap are taken out of the blocks.
void ZvXLine::GetIntersectionPoints(const ZvEntity& other, std::vector<Vec3d>& points, uint32_t flags) const {
    if (!other.IsXLine() || flags != kIntersectPlain) {
        ZvFilledEntity::GetIntersectionPoints(other, points, flags);
        return;
    }
    const auto& line = static_cast<const ZvXLine&>(other);
    const ZvBounds2D mine = IBounds2D(), its = line.IBounds2D();
    const double extent = std::max(mine.MaxDimension(), its.MaxDimension());
    ZvBounds2D common{std::max(mine.minX, its.minX), std::max(mine.minY, its.minY),
                      std::min(mine.maxX, its.maxX), std::min(mine.maxY, its.maxY)};
    common.Grow(extent * kSameCrossing);
    if (mine.IsNull() || its.IsNull() || common.IsNull())
        return;
    std::vector<Piece> pieces, others;
    std::vector<ZvBounds2D> boxes, otherBoxes;
    PiecesIn(*this, common, pieces, boxes);
    PiecesIn(line, common, others, otherBoxes);
    std::vector<ZvLineCrossing> found;
    for (const auto& [i, k] : ZvSegmentSweep::MeetingPairs(boxes, otherBoxes)) {
        Vec2d at[2];
        const Piece& piece = pieces[i];
        for (int n = 0, count = piece.segment.Intersect(others[k].segment, at); n < count; ++n) {
            const double t = piece.segment.ClosestParam(at[n]);
            found.push_back({piece.vertex + t, PointOnSegment(piece.part, piece.vertex, t, at[n])});
        }
    }
    AppendCrossings(found, extent, points);
}

// --- grips ---------------------------------------------------------------------------------------------------------------

void ZvXLine::GetGrips(ZvGrips& grips) const {
    const FltData flt = GetFlt();
    grips.reserve(grips.size() + m_numVerts);
    for (uint32_t i = 0; i < m_numVerts; ++i)
        grips.push_back({int(i), Unpack(flt, i).XYZ()});
}

bool ZvXLine::UpdateByGrip(int gripId, const Vec3d& to) {
    if (gripId < 0 || uint32_t(gripId) >= m_numVerts)
        return false;
    dvect<Vec4d> vertices;
    GetAllVertices(vertices);
    Vec4d& v = vertices[size_t(gripId)];
    // Points that come from a plan view have no height of their own: 0 keeps the vertex's.
    v = {to.x, to.y, to.z != 0 ? to.z : v.z, v.w};
    return ReplaceKeepingParts(vertices);
}

std::unique_ptr<ZvEntity> ZvXLine::PreviewGripChange(int gripId, const Vec3d& to) const {
    std::unique_ptr<ZvEntity> changed = Clone();
    return changed->UpdateByGrip(gripId, to) ? std::move(changed) : nullptr;
}

// --- transforms ----------------------------------------------------------------------------------------------------------

void ZvXLine::TransformInternal(const Mat4d& xform) {
    if (m_numVerts == 0)
        return;
    const auto& m = xform.m;
    const bool onlyMoves = m[0][0] == 1 && m[0][1] == 0 && m[0][2] == 0 && m[1][0] == 0 && m[1][1] == 1 &&
                           m[1][2] == 0 && m[2][0] == 0 && m[2][1] == 0 && m[2][2] == 1;
    const Vec4d origin = Origin();
    if (onlyMoves && (HasZ() || m[2][3] == 0)) {
        // Nothing is rounded but the origin.
        SetOrigin({origin.x + m[0][3], origin.y + m[1][3], origin.z + m[2][3] * HasZ(), origin.w});
        return;
    }
    dvect<Vec4d> vertices;
    GetAllVertices(vertices);
    bool rises = HasZ();
    for (Vec4d& v : vertices) {
        const Vec3d p = xform.TransformPoint(v.XYZ());
        v = {p.x, p.y, p.z, v.w};
        rises = rises || p.z != 0;
    }
    const double area = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    // Rings nest as before unless the plane was folded or tilted.
    const bool keepsNesting = area != 0 && m[0][2] == 0 && m[1][2] == 0;
    if (!keepsNesting)
        ClearDepths();
    Set(m_numParts, MParts(), vertices, IsPolygon(), rises, HasM(), Is64() ? 1 : 0);
    const double scale = std::sqrt(std::abs(area));
    if (scale > 0 && std::abs(scale - 1) > 1e-9)
        m_lineWidth.Scale(scale);
}

// --- exploding -----------------------------------------------------------------------------------------------------------

std::unique_ptr<ZvXLine> ZvXLine::Extract(std::span<const uint32_t> parts, bool isPolygon, bool close) const {
    std::vector<uint32_t> table;
    dvect<Vec4d> vertices;
    for (const uint32_t part : parts) {
        const size_t start = vertices.size();
        table.push_back(MakePartEntry(uint32_t(start), close || PClosed(part)));
        vertices.resize(start + PLen(part));
        ReadXYZM(PStart(part), PLen(part), vertices.data() + start);
    }
    auto piece = std::make_unique<ZvXLine>();
    piece->ZvFilledEntity::CloneFrom(*this);
    piece->Set(uint32_t(table.size()), table.data(), vertices, isPolygon, HasZ(), HasM(), Is64() ? 1 : -1);
    return piece;
}

std::unique_ptr<ZvXLine> ZvXLine::ExtractSegment(uint32_t from, uint32_t to) const {
    const FltData flt = GetFlt();
    const Vec4d ends[] = {Unpack(flt, from), Unpack(flt, to)};
    const uint32_t open = 0;
    auto piece = std::make_unique<ZvXLine>();
    piece->ZvFilledEntity::CloneFrom(*this);
    piece->Set(1, &open, ends, false, HasZ(), HasM(), Is64() ? 1 : 0);
    return piece;
}

ZvEntityList ZvXLine::ExplodePolygon() const {
    std::vector<int32_t> parents;
    GetPartParents(parents);
    EnsureDepths();
    std::vector<std::vector<uint32_t>> groups(m_numParts);
    uint32_t outers = 0;
    for (uint32_t part = 0; part < m_numParts; ++part)
        if (PDepth(part) % 2 == 0 || parents[part] < 0)
            groups[part].push_back(part), ++outers;
    for (uint32_t part = 0; part < m_numParts; ++part)
        if (groups[part].empty())
            groups[size_t(parents[part])].push_back(part);
    ZvEntityList pieces;
    for (uint32_t part = 0; part < m_numParts; ++part)
        if (outers == 1)
            pieces.push_back(Extract(std::span(&part, 1), false, true));
        else if (!groups[part].empty() && groups[part][0] == part)
            pieces.push_back(Extract(groups[part], true, true));
    return pieces;
}

ZvEntityList ZvXLine::Explode() const {
    ZvEntityList pieces;
    if (IsPolygon())
        return m_numVerts ? ExplodePolygon() : std::move(pieces);
    if (m_numParts > 1) {
        for (uint32_t part = 0; part < m_numParts; ++part)
            pieces.push_back(Extract(std::span(&part, 1), false, false));
        return pieces;
    }
    if (m_numVerts < 3)
        return pieces;
    for (uint32_t i = 0; i + 1 < m_numVerts; ++i)
        pieces.push_back(ExtractSegment(i, i + 1));
    if (PClosed(0))
        pieces.push_back(ExtractSegment(m_numVerts - 1, 0));
    return pieces;
}
