#include "Modules/Gis/ZvGdalGeometry.h"
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvLossReport.h"
#include <ogr_geometry.h>

namespace {

enum class Kind { Point, Line, Polygon, Collection, None };

Kind KindOf(const OGRGeometry& geometry) {
    switch (wkbFlatten(geometry.getGeometryType())) {
    case wkbPoint:
    case wkbMultiPoint:
        return Kind::Point;
    case wkbLineString:
    case wkbLinearRing:
    case wkbMultiLineString:
        return Kind::Line;
    case wkbPolygon:
    case wkbTriangle:
    case wkbMultiPolygon:
        return Kind::Polygon;
    case wkbPolyhedralSurface:
    case wkbTIN:
        return Kind::Polygon;
    case wkbGeometryCollection:
        return Kind::Collection;
    default:
        return Kind::None;
    }
}

bool IsFinite(const OGRGeometry& geometry) {
    OGREnvelope3D box;
    geometry.getEnvelope(&box);
    return std::isfinite(box.MinX) && std::isfinite(box.MaxX) && std::isfinite(box.MinY) &&
           std::isfinite(box.MaxY);
}

} // namespace

std::unique_ptr<ZvEntity> ZvGdalToEntity::Convert(const OGRGeometry& geometry, std::string& why) {
    if (geometry.IsEmpty()) {
        why = "empty geometry";
        return nullptr;
    }
    if (geometry.hasCurveGeometry(TRUE)) {
        m_losses.Add(ZvLossReport::Fate::Approximated, "curves drawn as straight segments of 4 degrees");
        const std::unique_ptr<OGRGeometry> straight(geometry.getLinearGeometry());
        return straight && !straight->hasCurveGeometry(TRUE) ? Convert(*straight, why) : nullptr;
    }
    if (!IsFinite(geometry)) {
        why = "coordinates that are not finite numbers";
        return nullptr;
    }
    m_hasZ = geometry.Is3D();
    m_hasM = geometry.IsMeasured();
    std::unique_ptr<ZvEntity> entity;
    switch (KindOf(geometry)) {
    case Kind::Point:
        entity = Points(geometry, why);
        break;
    case Kind::Line:
        entity = Lines(geometry, false, why);
        break;
    case Kind::Polygon:
        entity = Lines(geometry, true, why);
        break;
    case Kind::Collection:
        entity = Collection(geometry, why);
        break;
    case Kind::None:
        why = std::string("geometry of kind ") + geometry.getGeometryName();
        break;
    }
    XStringW reason;
    if (entity && !entity->OkForInsertion(&reason)) {
        why = reason.ToUtf8();
        return nullptr;
    }
    return entity;
}

std::unique_ptr<ZvEntity> ZvGdalToEntity::Points(const OGRGeometry& geometry, std::string&) {
    if (wkbFlatten(geometry.getGeometryType()) == wkbPoint) {
        const OGRPoint& p = *geometry.toPoint();
        auto entity = std::make_unique<ZvPointEnt>();
        entity->SetPosition({p.getX(), p.getY(), m_hasZ ? p.getZ() : 0});
        entity->SetHasZ(m_hasZ);
        if (m_hasM)
            entity->SetMeasure(p.getM());
        return entity;
    }
    std::vector<Vec4d> locations;
    for (const OGRPoint* p : *geometry.toMultiPoint())
        if (!p->IsEmpty())
            locations.push_back({p->getX(), p->getY(), m_hasZ ? p->getZ() : 0, m_hasM ? p->getM() : 0});
    auto entity = std::make_unique<ZvMultiPoint>();
    entity->SetLocations(locations, m_hasZ, m_hasM);
    return entity;
}

std::unique_ptr<ZvEntity> ZvGdalToEntity::Lines(const OGRGeometry& geometry, bool polygon, std::string& why) {
    m_vertices.clear();
    m_parts.clear();
    m_count = 0;
    AddLines(geometry);
    if (m_parts.empty()) {
        why = polygon ? "polygon without a ring of 3 vertices" : "line with fewer than 2 vertices";
        return nullptr;
    }
    auto entity = std::make_unique<ZvXLine>();
    if (!entity->Set(uint32_t(m_parts.size()), m_parts.data(), m_count, polygon, m_hasZ, m_hasM, m_hasZ,
                     m_hasM, m_vertices.data(), 0, &m_drawing, false)) {
        why = "not enough memory";
        return nullptr;
    }
    return entity;
}

void ZvGdalToEntity::AddLines(const OGRGeometry& geometry) {
    switch (wkbFlatten(geometry.getGeometryType())) {
    case wkbLineString:
    case wkbLinearRing:
        AddPart(*geometry.toSimpleCurve(), false, 0);
        break;
    case wkbPolygon:
    case wkbTriangle:
        AddPolygon(*static_cast<const OGRPolygon*>(&geometry));
        break;
    case wkbPolyhedralSurface:
    case wkbTIN:
        for (const OGRPolygon* face : *geometry.toPolyhedralSurface())
            AddPolygon(*face);
        break;
    default:
        for (const OGRGeometry* member : *static_cast<const OGRGeometryCollection*>(&geometry))
            AddLines(*member);
    }
}

// The nesting is known here: rings get it, so that nobody has to compute it again.
void ZvGdalToEntity::AddPolygon(const OGRPolygon& polygon) {
    bool outer = true;
    for (const OGRLinearRing* ring : polygon) {
        if (!AddPart(*ring, true, outer ? 1 : 2)) {
            m_losses.Add(ZvLossReport::Fate::Dropped, "rings with fewer than 3 vertices");
            if (outer)
                return;
        }
        outer = false;
    }
}

// A part that ends where it began is closed and does not repeat the vertex.
bool ZvGdalToEntity::AddPart(const OGRSimpleCurve& curve, bool ring, uint32_t depthRaw) {
    int n = curve.getNumPoints();
    if (n > 0 && m_count > ZvXLine::kMaxStart)
        return false;
    const bool sameEnds = n > 1 && curve.getX(0) == curve.getX(n - 1) && curve.getY(0) == curve.getY(n - 1) &&
                          (!m_hasZ || curve.getZ(0) == curve.getZ(n - 1)) &&
                          (!m_hasM || curve.getM(0) == curve.getM(n - 1));
    const bool closed = ring || (sameEnds && n > 3);
    if (closed && sameEnds)
        --n;
    if (n < (ring ? 3 : 2))
        return false;
    m_parts.push_back(m_count | (closed ? ZvXLine::kClosedBit : 0) | depthRaw << ZvXLine::kDepthShift);
    const size_t dims = size_t(2 + m_hasZ + m_hasM), at = m_vertices.size();
    m_vertices.resize(at + size_t(n) * dims);
    double* out = m_vertices.data() + at;
    for (int i = 0; i < n; ++i) {
        *out++ = curve.getX(i);
        *out++ = curve.getY(i);
        if (m_hasZ)
            *out++ = curve.getZ(i);
        if (m_hasM)
            *out++ = curve.getM(i);
    }
    m_count += uint32_t(n);
    return true;
}

std::unique_ptr<ZvEntity> ZvGdalToEntity::Collection(const OGRGeometry& geometry, std::string& why) {
    const OGRGeometryCollection& collection = *geometry.toGeometryCollection();
    Kind kind = Kind::None;
    bool mixed = false;
    for (const OGRGeometry* member : collection) {
        const Kind k = KindOf(*member);
        mixed = mixed || k == Kind::Collection || k == Kind::Point || (kind != Kind::None && k != kind);
        kind = k;
    }
    if (!mixed && (kind == Kind::Line || kind == Kind::Polygon))
        return Lines(geometry, kind == Kind::Polygon, why);
    if (collection.getNumGeometries() == 1)
        return Convert(*collection.getGeometryRef(0), why);
    auto compound = std::make_unique<ZvRawCompound>();
    for (const OGRGeometry* member : collection) {
        std::string memberWhy;
        if (auto child = Convert(*member, memberWhy))
            compound->InsertEntity(std::move(child));
        else
            m_losses.Add(ZvLossReport::Fate::Dropped, "members of collections: " + memberWhy);
    }
    if (!compound->GetEntityVect().empty())
        return compound;
    why = "collection without usable members";
    return nullptr;
}
