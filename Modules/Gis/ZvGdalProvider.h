#pragma once
#include "Zelvan/IZvFileProvider.h"

/// File formats through GDAL/OGR: every vector format that the installed library reads or writes. Ids and extensions of the formats
/// are those of the drivers, in lower case; well-known ones have plain names ("DXF", "GeoPackage").
class ZvGdalProvider : public IZvFileProvider {
public:
    ZvGdalProvider();
    std::string ProviderName() const override { return "GDAL"; }
    std::vector<ZvFileFormat> Formats() const override;
    Zv::Status Load(ZvDrawing& drawing, const std::filesystem::path& file, const ZvFileFormat& format,
                    const ZvFileOptions& options, IOErrorSet& errors, ZvCore::IProgress& progress) override;
    Zv::Status Save(ZvDrawing& drawing, const std::filesystem::path& file, const ZvFileFormat& format,
                    const ZvFileOptions& options, IOErrorSet& errors, ZvCore::IProgress& progress) override;
};
