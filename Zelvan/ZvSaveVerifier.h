#pragma once
#include "Zelvan/ZvSaveStamp.h"
#include "ZvCore/Api.h"
#include "ZvCore/FileSystem.h"
#include "ZvCore/Guid.h"
#include "ZvCore/Progress.h"
#include <cstdint>
#include <optional>
#include <string>

class ZvDrawing;

/// Tells whether a native file on disk is whole: digest, framing of every record, and how many entities it holds.
class ZV_API ZvSaveVerifier {
public:
    explicit ZvSaveVerifier(ZvCore::IFileSystem& files) : m_files(files) {}

    /// Empty when the file is whole, else why not. A file without a digest is not. `entities`: how many those of layers and blocks
    /// must be.
    std::string Check(const std::filesystem::path& file, std::optional<uint64_t> entities = {},
                      ZvCore::IProgress* progress = nullptr) const;
    /// Entities that a save of the whole drawing writes: those of its layers and blocks and of its layouts'.
    static uint64_t Census(ZvDrawing& drawing);
    /// Where the file comes from; nulls for what cannot be read.
    ZvSaveStamp StampOf(const std::filesystem::path& file) const;
    /// Which drawing the file was saved from; null when that cannot be read.
    Guid DrawingOf(const std::filesystem::path& file) const { return StampOf(file).drawing; }
    /// By which the file is known; null when it has none. Cheap.
    Guid DigestOf(const std::filesystem::path& file) const;

private:
    ZvCore::IFileSystem& m_files;
};
