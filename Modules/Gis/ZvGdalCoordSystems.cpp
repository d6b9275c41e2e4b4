#include "Modules/Gis/ZvGdalCoordSystems.h"
#include "Modules/Gis/ZvGdalSession.h"
#include "Zelvan/Tables/ZvUcs.h"
#include <cmath>
#include <ogr_spatialref.h>
#include <vector>

namespace {
const XStringW kLatLon = u"EPSG:4326";
}

ZvGdalCoordSystems::ZvGdalCoordSystems() {
    ZvGdalInit();
}
ZvGdalCoordSystems::~ZvGdalCoordSystems() = default;

OGRSpatialReference* ZvGdalCoordSystems::Find(const XStringW& definition) {
    const auto found = m_references.find(definition);
    if (found != m_references.end())
        return found->second.get();
    IOErrorSet ignored;
    ZvGdalMessages quiet(ignored);
    auto reference = std::make_unique<OGRSpatialReference>();
    static const char* const kNoFiles[] = {"ALLOW_NETWORK_ACCESS=NO", "ALLOW_FILE_ACCESS=NO", nullptr};
    if (definition.IsEmpty() ||
        reference->SetFromUserInput(definition.ToUtf8().c_str(), kNoFiles) != OGRERR_NONE)
        reference.reset();
    else
        reference->SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    return (m_references[definition] = std::move(reference)).get();
}

OGRCoordinateTransformation* ZvGdalCoordSystems::Between(const XStringW& from, const XStringW& to) {
    OGRSpatialReference *source = Find(from), *target = Find(to);
    if (!source || !target)
        return nullptr;
    auto& transformation = m_transformations[{from, to}];
    if (!transformation)
        transformation.reset(OGRCreateCoordinateTransformation(source, target));
    return transformation.get();
}

bool ZvGdalCoordSystems::Check(const XStringW& definition, std::string& why) {
    if (Find(definition))
        return true;
    why = "'" + definition.ToUtf8() +
          "' is no coordinate system; give a code such as EPSG:25832 or a well-known text";
    return false;
}

XStringW ZvGdalCoordSystems::Name(const XStringW& definition) {
    const OGRSpatialReference* reference = Find(definition);
    return reference && reference->GetName() ? XStringW::FromUtf8(reference->GetName()) : XStringW();
}

XStringW ZvGdalCoordSystems::WellKnownText(const XStringW& definition) {
    return ZvGdalDescribe(Find(definition)).wkt;
}

double ZvGdalCoordSystems::MetersPerUnit(const XStringW& definition) {
    const OGRSpatialReference* reference = Find(definition);
    return reference ? ZvGdalDescribe(reference).metersPerUnit : 0;
}

bool ZvGdalCoordSystems::ToLatLon(const XStringW& definition, const Vec3d& world, double& latitude,
                                  double& longitude) {
    Vec3d point = world;
    std::string why;
    if (!Reproject(definition, kLatLon, &point, 1, why))
        return false;
    latitude = point.y;
    longitude = point.x;
    return true;
}

bool ZvGdalCoordSystems::FromLatLon(const XStringW& definition, double latitude, double longitude,
                                    Vec3d& world) {
    Vec3d point{longitude, latitude, 0};
    std::string why;
    if (!Reproject(kLatLon, definition, &point, 1, why))
        return false;
    world = point;
    return true;
}

bool ZvGdalCoordSystems::Reproject(const XStringW& from, const XStringW& to, Vec3d* points, size_t count,
                                   std::string& why) {
    if (!Check(from, why) || !Check(to, why))
        return false;
    IOErrorSet messages;
    ZvGdalMessages quiet(messages);
    OGRCoordinateTransformation* transformation = Between(from, to);
    std::vector<double> x(count), y(count), z(count);
    for (size_t i = 0; i < count; ++i)
        x[i] = points[i].x, y[i] = points[i].y, z[i] = points[i].z;
    bool good = transformation && transformation->Transform(int(count), x.data(), y.data(), z.data());
    for (size_t i = 0; good && i < count; ++i)
        good = std::isfinite(x[i]) && std::isfinite(y[i]);
    if (!good) {
        why = "a point lies outside of what '" + Name(to).ToUtf8() + "' covers";
        return false;
    }
    for (size_t i = 0; i < count; ++i)
        points[i] = {x[i], y[i], z[i]};
    return true;
}
