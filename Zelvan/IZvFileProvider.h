#pragma once
#include "Zelvan/ZvFileFormat.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Progress.h"
#include "ZvCore/Settings.h"
#include "ZvCore/Status.h"
#include <filesystem>
#include <vector>

namespace ZvCore {
class IFileSystem;
}
class IZvHost;
class ZvDrawing;
class ZvLossReport;
class ZvSelection;

/// What a caller asks of one load or save. Providers ignore what their format has no use for.
struct ZvFileOptions {
    /// Options of the format by name, as the provider documents them ("Layer", "Encoding", "TargetCrs").
    ZvCore::Settings values;
    /// Save: only these entities; null saves all. A native load drops members that no longer exist from it.
    ZvSelection* selection = nullptr;
    /// Bit 16 of the flags of ZvDrawingIO::SaveFile.
    bool providerOption = false;
    /// Told what could not be carried over; may be null.
    ZvLossReport* losses = nullptr;
    /// Set: questions may be asked there.
    IZvHost* host = nullptr;
    /// Where the native provider reads and writes; null: the system's.
    ZvCore::IFileSystem* files = nullptr;
    /// Save: a file that is there is not written over by the native provider, which then answers NotStarted.
    bool mustBeNew = false;
    /// Save: set by the native provider to the number of entities that it left out because they could not be written, each told in
    /// the errors. May be null.
    uint64_t* unwritten = nullptr;
};

/// Reads and writes drawings in formats of its own. Never throws; a refusal adds a text (what, where, what to
/// do) to `errors`.
class ZV_API IZvFileProvider {
public:
    virtual ~IZvFileProvider() = default;
    /// Short name for messages ("Zelvan", "GDAL").
    virtual std::string ProviderName() const = 0;
    virtual std::vector<ZvFileFormat> Formats() const = 0;
    /// Adds the file's content to the drawing. Cancelled when `progress` asked to stop; the drawing then
    /// holds what was read.
    virtual Zv::Status Load(ZvDrawing& drawing, const std::filesystem::path& file, const ZvFileFormat& format,
                            const ZvFileOptions& options, IOErrorSet& errors,
                            ZvCore::IProgress& progress) = 0;
    /// Writes the drawing to `file`, which the caller puts in place of the user's file; after a failure what
    /// was written is deleted by the caller.
    virtual Zv::Status Save(ZvDrawing& drawing, const std::filesystem::path& file, const ZvFileFormat& format,
                            const ZvFileOptions& options, IOErrorSet& errors,
                            ZvCore::IProgress& progress) = 0;
};
