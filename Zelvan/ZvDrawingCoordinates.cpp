#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Ports/IZvCoordSystems.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/View/ZvView.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>
#include <cmath>

// What world coordinates mean, and how fine they are kept.

namespace {

const char* const kLinearPrecision = "LinearPrecision";
constexpr double kEquatorMeters = 40075016.685578488; ///< circumference of the WGS 84 ellipsoid
constexpr double kTilePixels = 256;

const XStringW& Definition(const ZvCoordSystem& system) {
    return system.authority.IsEmpty() ? system.wkt : system.authority;
}

} // namespace

void ZvDrawing::SetCoordSystems(IZvCoordSystems* port) {
    m_coordSystems = port;
    RefreshGlobalData();
}

double ZvDrawing::MetersToWorld(double meters) const {
    return m_ucsTable ? m_ucsTable->MetersToWorld(meters) : meters;
}

double ZvDrawing::WorldToMeters(double world) const {
    return m_ucsTable ? m_ucsTable->WorldToMeters(world) : world;
}

void ZvDrawing::RefreshGlobalData() {
    double precision = m_settings.GetDouble(kLinearPrecision, 0);
    if (!(std::isfinite(precision) && precision > 0))
        precision = MetersToWorld(DefaultPrecisionMeters());
    m_linearPrecision = std::isfinite(precision) && precision > 0 ? precision : DefaultPrecisionMeters();
}

void ZvDrawing::SetLinearPrecision(double worldUnits) {
    if (worldUnits > 0)
        m_settings.Set(kLinearPrecision, worldUnits);
    else
        m_settings.Remove(kLinearPrecision);
    RefreshGlobalData();
}

bool ZvDrawing::RequireDoublePrecision(const ZvBounds3D& bounds) const {
    if (bounds.IsNull())
        return false;
    double largest = 0;
    for (double value : {bounds.minX, bounds.minY, bounds.minZ, bounds.maxX, bounds.maxY, bounds.maxZ})
        largest = std::max(largest, std::abs(value));
    constexpr double kFloatStep = 1.0 / (1 << 23);
    return largest * kFloatStep > m_linearPrecision;
}

bool ZvDrawing::PtWorldToLatLon(const Vec3d& world, double& latitude, double& longitude) const {
    const ZvCoordSystem& system = m_ucsTable->CoordinateSystem();
    return m_coordSystems && system.IsSet() &&
           m_coordSystems->ToLatLon(Definition(system), world, latitude, longitude);
}

bool ZvDrawing::LatLonToPtWorld(double latitude, double longitude, Vec3d& world) const {
    const ZvCoordSystem& system = m_ucsTable->CoordinateSystem();
    return m_coordSystems && system.IsSet() &&
           m_coordSystems->FromLatLon(Definition(system), latitude, longitude, world);
}

bool ZvDrawing::GetScreenCenterAndLevel(Vec3d& center, double& level) const {
    if (!m_currentView)
        return false;
    const double metersPerPixel = WorldToMeters(m_currentView->XForm().WorldPerPixel());
    if (!(metersPerPixel > 0))
        return false;
    center = m_currentView->XForm().Target();
    level = std::log2(kEquatorMeters / (kTilePixels * metersPerPixel));
    return true;
}

void ZvDrawing::NotifyCoordinateSystemChanged() {
    RefreshGlobalData();
    for (ZvName name = m_nameTable.Next({}); !name.IsNull(); name = m_nameTable.Next(name))
        m_nameTable.GetQuiet(name)->NotifyDrawingCoordinateSystemChanged();
    PostEvent(ZvDrawingEvent::CoordinatesChanged);
}
