#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <cstddef>
#include <string>

/// Knows coordinate systems by their definition: an authority's code ("EPSG:2193") or a well-known text.
/// World coordinates are in the system's own unit, x to the east and y to the north (geographic systems: x
/// longitude, y latitude, degrees). Angles of latitude and longitude are degrees on WGS 84. A false answer
/// leaves the results untouched.
class ZV_API IZvCoordSystems {
public:
    virtual ~IZvCoordSystems() = default;
    /// False with `why` for a definition that cannot be understood.
    virtual bool Check(const XStringW& definition, std::string& why) = 0;
    /// Name for users; empty for an unknown definition.
    virtual XStringW Name(const XStringW& definition) = 0;
    /// Well-known text, as files carry it; empty for an unknown definition.
    virtual XStringW WellKnownText(const XStringW& definition) = 0;
    /// Metres in one world unit (for geographic systems: of a degree along the equator); 0 for an unknown
    /// definition.
    virtual double MetersPerUnit(const XStringW& definition) = 0;
    virtual bool ToLatLon(const XStringW& definition, const Vec3d& world, double& latitude,
                          double& longitude) = 0;
    virtual bool FromLatLon(const XStringW& definition, double latitude, double longitude, Vec3d& world) = 0;
    /// In place. False with `why` when a point lies outside of what either system covers; all points then
    /// stay as they were.
    virtual bool Reproject(const XStringW& from, const XStringW& to, Vec3d* points, size_t count,
                           std::string& why) = 0;
};
