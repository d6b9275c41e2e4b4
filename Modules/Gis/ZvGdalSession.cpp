#include "Modules/Gis/ZvGdalSession.h"
#include "Zelvan/Tables/ZvUcs.h"
#include <cpl_conv.h>
#include <cpl_error.h>
#include <gdal_priv.h>
#include <memory>
#include <mutex>
#include <ogr_spatialref.h>

namespace {

constexpr int kGdalMessage = 0;
constexpr double kMetersPerDegree = 111319.49079327358; // a degree along the equator of WGS 84

void CPL_STDCALL Forward(CPLErr severity, CPLErrorNum number, const char* text) {
    static_cast<ZvGdalMessages*>(CPLGetErrorHandlerUserData())->Take(int(severity), int(number), text);
}

} // namespace

ZvGdalMessages::ZvGdalMessages(IOErrorSet& errors) : m_errors(errors) {
    CPLPushErrorHandlerEx(&Forward, this);
}

ZvGdalMessages::~ZvGdalMessages() {
    CPLPopErrorHandler();
}

void ZvGdalMessages::Take(int severity, int, const char* text) {
    if (std::string_view(text).starts_with("PROJ: ")) { // the geometry is none the worse for it
        m_errors.Add(kGdalMessage,
                     std::string("a coordinate system is unknown, coordinates are kept as they are: ") + text,
                     IOErrorSet::Severity::Warning);
    } else if (severity == CE_Warning) {
        m_errors.Add(kGdalMessage, text, IOErrorSet::Severity::Warning);
    } else if (severity >= CE_Failure) {
        m_lastFailure = m_subject ? m_subject() + text : std::string(text);
        m_errors.Add(kGdalMessage, m_lastFailure, IOErrorSet::Severity::Error);
    }
}

void ZvGdalInit() {
    static std::once_flag once;
    std::call_once(once, [] {
        GDALAllRegister();
        CPLSetConfigOption("OGR_DXF_TRANSLATE_ESCAPE_SEQUENCES", "YES");
    });
}

ZvCoordSystem ZvGdalDescribe(const OGRSpatialReference* reference) {
    ZvCoordSystem system;
    if (!reference || reference->IsEmpty())
        return system;
    char* wkt = nullptr;
    const char* const options[] = {"FORMAT=WKT2_2018", nullptr};
    if (reference->exportToWkt(&wkt, options) == OGRERR_NONE && wkt)
        system.wkt = XStringW::FromUtf8(wkt);
    CPLFree(wkt);
    if (const char* name = reference->GetName())
        system.name = XStringW::FromUtf8(name);
    const char* authority = reference->GetAuthorityName(nullptr);
    const char* code = reference->GetAuthorityCode(nullptr);
    if (authority && code)
        system.authority = XStringW::FromUtf8(std::string(authority) + ":" + code);
    if (reference->IsGeographic()) {
        system.kind = ZvCoordSystem::Kind::Geographic;
        system.metersPerUnit = kMetersPerDegree * reference->GetAngularUnits(nullptr) / 0.017453292519943295;
    } else {
        system.kind = reference->IsProjected() ? ZvCoordSystem::Kind::Projected : ZvCoordSystem::Kind::Local;
        system.metersPerUnit = reference->GetLinearUnits(nullptr);
    }
    return system;
}

bool ZvGdalMakeReference(const ZvCoordSystem& system, OGRSpatialReference& reference) {
    if (!system.IsSet())
        return false;
    const std::string authority = system.authority.ToUtf8(), wkt = system.wkt.ToUtf8();
    const bool made = (!wkt.empty() && reference.importFromWkt(wkt.c_str()) == OGRERR_NONE) ||
                      (!authority.empty() && reference.SetFromUserInput(authority.c_str()) == OGRERR_NONE);
    reference.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    return made;
}
