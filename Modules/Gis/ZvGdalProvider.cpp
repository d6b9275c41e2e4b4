#include "Modules/Gis/ZvGdalProvider.h"
#include "Modules/Gis/ZvGdalReader.h"
#include "Modules/Gis/ZvGdalSession.h"
#include "Modules/Gis/ZvGdalWriter.h"
#include <algorithm>
#include <cstring>
#include <gdal_priv.h>
#include <set>
#include <sstream>

namespace {

/// Formats that people ask for by name; they come first and own their extensions.
struct KnownFormat {
    const char* driver;
    const char* id;
    const char16_t* name;
    const char* extensions;
};
constexpr KnownFormat kKnown[] = {
    {"GPKG", "gpkg", u"GeoPackage", "gpkg"},
    {"FlatGeobuf", "fgb", u"FlatGeobuf", "fgb"},
    {"GeoJSON", "geojson", u"GeoJSON", "geojson json"},
    {"ESRI Shapefile", "shp", u"Shapefile", "shp"},
    {"DXF", "dxf", u"DXF", "dxf"},
    {"LIBKML", "kml", u"KML", "kml kmz"},
    {"GML", "gml", u"GML", "gml"},
    {"GPX", "gpx", u"GPX", "gpx"},
    {"MapInfo File", "mif", u"MapInfo", "mif tab"},
};

bool Can(GDALDriver& driver, const char* what) {
    const char* value = driver.GetMetadataItem(what);
    return value && std::strcmp(value, "YES") == 0;
}

std::vector<std::string> Words(const char* text) {
    std::istringstream stream(text ? text : "");
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        std::transform(word.begin(), word.end(), word.begin(),
                       [](unsigned char c) { return char(std::tolower(c)); });
        words.push_back(word);
    }
    return words;
}

XStringW LongName(GDALDriver& driver) {
    const char* name = driver.GetMetadataItem(GDAL_DMD_LONGNAME);
    return XStringW::FromUtf8(name ? name : driver.GetDescription());
}

std::string LowerId(std::string text) {
    for (char& c : text)
        c = c == ' ' ? '-' : char(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

const char* DriverOf(const std::string& formatId) {
    for (const KnownFormat& known : kKnown)
        if (formatId == known.id)
            return known.driver;
    for (int i = 0; i < GetGDALDriverManager()->GetDriverCount(); ++i)
        if (GDALDriver* driver = GetGDALDriverManager()->GetDriver(i);
            LowerId(driver->GetDescription()) == formatId)
            return driver->GetDescription();
    return "";
}

} // namespace

ZvGdalProvider::ZvGdalProvider() {
    ZvGdalInit();
}

std::vector<ZvFileFormat> ZvGdalProvider::Formats() const {
    std::vector<ZvFileFormat> formats;
    std::set<std::string> taken;
    auto add = [&](GDALDriver& driver, std::string id, XStringW name, std::vector<std::string> extensions) {
        ZvFileFormat format;
        format.id = std::move(id);
        format.name = std::move(name);
        format.extensions = std::move(extensions);
        format.canLoad = Can(driver, GDAL_DCAP_OPEN);
        format.canSave = Can(driver, GDAL_DCAP_CREATE);
        format.replacesTarget = true;
        if (taken.insert(driver.GetDescription()).second && (format.canLoad || format.canSave))
            formats.push_back(std::move(format));
    };
    GDALDriverManager& drivers = *GetGDALDriverManager();
    for (const KnownFormat& known : kKnown)
        if (GDALDriver* driver = drivers.GetDriverByName(known.driver))
            add(*driver, known.id, known.name, Words(known.extensions));
    for (int i = 0; i < drivers.GetDriverCount(); ++i) {
        GDALDriver& driver = *drivers.GetDriver(i);
        const std::vector<std::string> extensions = Words(driver.GetMetadataItem(GDAL_DMD_EXTENSIONS));
        if (Can(driver, GDAL_DCAP_VECTOR) && !extensions.empty())
            add(driver, LowerId(driver.GetDescription()), LongName(driver), extensions);
    }
    return formats;
}

Zv::Status ZvGdalProvider::Load(ZvDrawing& drawing, const std::filesystem::path& file,
                                const ZvFileFormat& format, const ZvFileOptions& options, IOErrorSet& errors,
                                ZvCore::IProgress& progress) {
    return ZvGdalReader(drawing, options, errors, progress).Read(file, {DriverOf(format.id)});
}

Zv::Status ZvGdalProvider::Save(ZvDrawing& drawing, const std::filesystem::path& file,
                                const ZvFileFormat& format, const ZvFileOptions& options, IOErrorSet& errors,
                                ZvCore::IProgress& progress) {
    return ZvGdalWriter(drawing, options, errors, progress).Write(file, DriverOf(format.id));
}
