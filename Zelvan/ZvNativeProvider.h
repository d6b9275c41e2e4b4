#pragma once
#include "Zelvan/IZvFileProvider.h"
#include "ZvCore/Api.h"

/// The native drawing files as one provider among the others. Options by name: "CompressionLevel",
/// "PurgeUnused", "SelectionOnly", "Preview", "BlockDigests", "SkipChecksum", "Merge" (load into what the
/// drawing holds).
class ZV_API ZvNativeProvider final : public IZvFileProvider {
public:
    static constexpr const char* kFormatId = "zvd";
    static constexpr const char* kBackupFormatId = "bak"; ///< backups, which are loaded alone
    std::string ProviderName() const override { return "Zelvan"; }
    std::vector<ZvFileFormat> Formats() const override;
    Zv::Status Load(ZvDrawing& drawing, const std::filesystem::path& file, const ZvFileFormat& format,
                    const ZvFileOptions& options, IOErrorSet& errors, ZvCore::IProgress& progress) override;
    Zv::Status Save(ZvDrawing& drawing, const std::filesystem::path& file, const ZvFileFormat& format,
                    const ZvFileOptions& options, IOErrorSet& errors, ZvCore::IProgress& progress) override;
};
