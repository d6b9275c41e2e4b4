#pragma once
#include "Zelvan/Ports/IZvCoordSystems.h"
#include <map>
#include <memory>
#include <string>
#include <utility>

class OGRCoordinateTransformation;
class OGRSpatialReference;

/// Coordinate systems through PROJ. Definitions and transformations are kept once made. One thread.
class ZvGdalCoordSystems : public IZvCoordSystems {
public:
    ZvGdalCoordSystems();
    ~ZvGdalCoordSystems() override;
    bool Check(const XStringW& definition, std::string& why) override;
    XStringW Name(const XStringW& definition) override;
    XStringW WellKnownText(const XStringW& definition) override;
    double MetersPerUnit(const XStringW& definition) override;
    bool ToLatLon(const XStringW& definition, const Vec3d& world, double& latitude,
                  double& longitude) override;
    bool FromLatLon(const XStringW& definition, double latitude, double longitude, Vec3d& world) override;
    bool Reproject(const XStringW& from, const XStringW& to, Vec3d* points, size_t count,
                   std::string& why) override;

private:
    OGRSpatialReference* Find(const XStringW& definition);
    OGRCoordinateTransformation* Between(const XStringW& from, const XStringW& to);

    std::map<XStringW, std::unique_ptr<OGRSpatialReference>> m_references; // null: cannot be understood
    std::map<std::pair<XStringW, XStringW>, std::unique_ptr<OGRCoordinateTransformation>> m_transformations;
};
