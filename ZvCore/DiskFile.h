#pragma once
#include "ZvCore/FileSystem.h"
#include <filesystem>
#include <memory>

namespace ZvCore {

/// A file on disk, 64-bit offsets, its own write buffer. Opening for reading maps the file when the system
/// can, so that `View` answers without a copy; a mapped file that shrinks under the reader is caught at open
/// and by the length checks of its reader, not afterwards.
class ZV_API DiskFile : public IStoredFile {
public:
    enum class Mode {
        Read,     ///< the file must exist and be a regular file
        Create,   ///< makes or truncates, read and write
        CreateNew ///< fails when the name exists
    };
    enum class Access {
        Mapped,  ///< through the system's mapping where it can, else buffered
        Buffered ///< for files that others may shorten meanwhile: that is then a failure of the read
    };
    /// Null with `why` set ("cannot open 'x': no such file") when it cannot be opened.
    static std::unique_ptr<DiskFile> Open(const std::filesystem::path& path, Mode mode, std::string& why,
                                          Access access = Access::Mapped);
    ~DiskFile() override;

    bool Error() const override;
    std::string ErrorText() const override;
    size_t Write(const void* bytes, size_t count) override;
    size_t Read(void* bytes, size_t count) override;
    uint64_t Position() const override;
    uint64_t Length() const override;
    bool Seek(uint64_t position) override;
    bool SeekRelative(int64_t distance) override;
    const uint8_t* View(uint64_t position, size_t count) const override;
    void ClearError() override;
    using IFile::Write;

    const std::filesystem::path& Path() const;
    /// Hands buffered bytes to the system. False after any failure since opening (a full disk shows here).
    bool Flush();
    bool SyncToDisk() override;

private:
    DiskFile();
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace ZvCore
