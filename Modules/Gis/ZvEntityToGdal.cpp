#include "Modules/Gis/ZvGdalGeometry.h"
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvLossReport.h"
#include <ogr_geometry.h>

namespace {

OGRPoint MakePoint(const Vec4d& p, bool z, bool m) {
    OGRPoint point(p.x, p.y);
    if (z)
        point.setZ(p.z);
    if (m)
        point.setM(p.w);
    return point;
}

} // namespace

std::unique_ptr<OGRGeometry> ZvEntityToGdal::Convert(ZvEntity& entity, std::string& why) {
    if (const ZvXLine* line = entity.ToXLine())
        return line->IsPolygon() ? Polygon(*line) : Line(*line);
    if (const ZvPointEnt* point = entity.ToPointEnt()) {
        const Vec3d& p = point->GetPosition();
        return std::make_unique<OGRPoint>(
            MakePoint({p.x, p.y, p.z, point->GetMeasure()}, point->HasZ(), point->HasM()));
    }
    if (const ZvMultiPoint* points = entity.ToMultiPoint()) {
        auto multi = std::make_unique<OGRMultiPoint>();
        for (const Vec4d& p : points->GetLocations())
            multi->addGeometryDirectly(new OGRPoint(MakePoint(p, points->HasZ(), points->HasM())));
        return multi;
    }
    return Exploded(entity, why);
}

// Kinds that the target has no word for go as what they explode into.
std::unique_ptr<OGRGeometry> ZvEntityToGdal::Exploded(ZvEntity& entity, std::string& why) {
    auto collection = std::make_unique<OGRGeometryCollection>();
    for (const std::unique_ptr<ZvEntity>& piece : entity.Explode())
        if (auto geometry = Convert(*piece, why))
            collection->addGeometryDirectly(geometry.release());
    if (collection->getNumGeometries() > 0)
        return collection;
    why = "no form for entities of kind " + entity.VerbalName().ToUtf8();
    return nullptr;
}

void ZvEntityToGdal::FillCurve(const ZvXLine& line, uint32_t part, bool close, OGRSimpleCurve& curve) {
    const uint32_t n = line.PLen(part);
    m_buffer.resize(n + 1);
    line.ReadXYZM(line.PStart(part), n, m_buffer.data());
    m_buffer[n] = m_buffer[0];
    const int count = int(n) + (close ? 1 : 0);
    curve.setNumPoints(count, FALSE);
    for (int i = 0; i < count; ++i) {
        const Vec4d& p = m_buffer[size_t(i)];
        if (line.HasZ() && line.HasM())
            curve.setPoint(i, p.x, p.y, p.z, p.w);
        else if (line.HasZ())
            curve.setPoint(i, p.x, p.y, p.z);
        else if (line.HasM())
            curve.setPointM(i, p.x, p.y, p.w);
        else
            curve.setPoint(i, p.x, p.y);
    }
}

std::unique_ptr<OGRGeometry> ZvEntityToGdal::Line(const ZvXLine& line) {
    std::unique_ptr<OGRMultiLineString> multi;
    if (line.NumParts() != 1)
        multi = std::make_unique<OGRMultiLineString>();
    for (uint32_t part = 0; part < line.NumParts(); ++part) {
        auto curve = std::make_unique<OGRLineString>();
        FillCurve(line, part, line.PClosed(part), *curve);
        if (!multi)
            return curve;
        multi->addGeometryDirectly(curve.release());
    }
    return multi;
}

// Holes go to the outer ring that encloses them; one that lies in none (rings that cross) to the outer ring before it.
std::unique_ptr<OGRGeometry> ZvEntityToGdal::Polygon(const ZvXLine& polygon) {
    polygon.EnsureDepths();
    std::vector<int32_t> parents;
    const uint32_t first = polygon.GetOuterParts(0);
    if (polygon.GetOuterParts(first + 1) < polygon.NumParts())
        polygon.GetPartParents(parents);
    std::vector<std::unique_ptr<OGRPolygon>> outers(polygon.NumParts());
    for (uint32_t part = first; part < polygon.NumParts(); part = polygon.GetOuterParts(part + 1))
        outers[part] = std::make_unique<OGRPolygon>();
    using Placed = std::pair<uint32_t, std::unique_ptr<OGRLinearRing>>;
    std::vector<Placed> shells, holes;
    uint32_t before = first;
    for (uint32_t part = 0; part < polygon.NumParts(); ++part) {
        uint32_t to = part;
        if (outers[part]) {
            before = part;
        } else {
            const int32_t parent = parents.empty() ? int32_t(first) : parents[part];
            to = parent >= 0 && outers[uint32_t(parent)] ? uint32_t(parent) : before;
        }
        auto ring = std::make_unique<OGRLinearRing>();
        FillCurve(polygon, part, true, *ring);
        if (to < outers.size())
            (to == part ? shells : holes).emplace_back(to, std::move(ring));
    }
    for (std::vector<Placed>* rings : {&shells, &holes}) // a polygon's outer ring comes first
        for (Placed& ring : *rings)
            outers[ring.first]->addRingDirectly(ring.second.release());
    auto multi = std::make_unique<OGRMultiPolygon>();
    for (std::unique_ptr<OGRPolygon>& outer : outers)
        if (outer)
            multi->addGeometryDirectly(outer.release());
    if (multi->getNumGeometries() != 1)
        return multi;
    OGRGeometry* only = multi->getGeometryRef(0);
    multi->removeGeometry(0, FALSE);
    return std::unique_ptr<OGRGeometry>(only);
}
