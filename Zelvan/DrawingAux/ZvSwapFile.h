#pragma once
#include "ZvCore/Api.h"
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ZvCore {
class DiskFile;
}

/// A temporary file for what was swapped out of memory; made on first use, deleted with the object.
class ZV_API ZvSwapFile {
public:
    struct Piece {
        uint64_t offset = 0;
        uint64_t length = 0;
    };
    ZvSwapFile();
    ~ZvSwapFile();
    ZvSwapFile(const ZvSwapFile&) = delete;
    ZvSwapFile& operator=(const ZvSwapFile&) = delete;

    /// False with `why` when the bytes could not be written; memory must be kept then.
    bool Store(std::span<const uint8_t> bytes, Piece& piece, std::string& why);
    bool Load(const Piece& piece, std::vector<uint8_t>& bytes, std::string& why);
    /// The piece is no longer needed. Space is used again when none is.
    void Release(const Piece& piece);
    uint64_t BytesHeld() const { return m_held; }
    const std::filesystem::path& Path() const { return m_path; }

private:
    bool Open(std::string& why);
    std::unique_ptr<ZvCore::DiskFile> m_file;
    std::filesystem::path m_path;
    uint64_t m_end = 0;
    uint64_t m_held = 0;
};
