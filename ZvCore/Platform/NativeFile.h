#pragma once
#include "ZvCore/Api.h"
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace ZvPlatform {

/// An open file of the system: unbuffered, addressed by 64-bit offsets, without a position of its own.
class ZV_API NativeFile {
public:
    enum class Access {
        Read,     ///< must exist and be a regular file
        Create,   ///< read and write, made or emptied
        CreateNew ///< read and write, must not exist
    };
    /// Null with the system's reason in words in `why`.
    static std::unique_ptr<NativeFile> Open(const std::filesystem::path& path, Access access,
                                            std::string& why);
    ~NativeFile();
    NativeFile(const NativeFile&) = delete;
    NativeFile& operator=(const NativeFile&) = delete;

    /// What the file has on disk now.
    uint64_t Length() const;
    /// Bytes moved. Fewer than asked for at the end of the file (`why` is left alone) and on a failure.
    size_t ReadAt(uint64_t offset, void* bytes, size_t count, std::string& why);
    /// Bytes moved; fewer than asked for only on a failure. Writing past the end fills the gap with zeros.
    size_t WriteAt(uint64_t offset, const void* bytes, size_t count, std::string& why);
    /// Waits until everything written is on the medium.
    bool Sync(std::string& why);
    /// The first `length` bytes (not 0) in memory, read-only, for as long as this object lives; read from
    /// front to back they come fastest. Null when the system cannot. One mapping an object.
    const uint8_t* Map(uint64_t length);

private:
    explicit NativeFile(intptr_t handle) : m_handle(handle) {}
    intptr_t m_handle; // descriptor or HANDLE
    void* m_map = nullptr;
    uint64_t m_mapLength = 0;
};

} // namespace ZvPlatform
