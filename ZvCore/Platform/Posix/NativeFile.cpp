#include "ZvCore/Platform/NativeFile.h"
#include "ZvCore/Platform/Posix/SystemReason.h"
#include "ZvCore/Platform/Reason.h"
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZvPlatform {

namespace {

int FlagsFor(NativeFile::Access access) {
    switch (access) {
    case NativeFile::Access::Read:
        return O_RDONLY | O_NONBLOCK; // a pipe without a writer is refused below and must not hang here
    case NativeFile::Access::Create:
        return O_RDWR | O_CREAT | O_TRUNC | O_NONBLOCK;
    default:
        return O_RDWR | O_CREAT | O_EXCL;
    }
}

/// Null when the opened thing can serve; devices can be written to ("/dev/null"), never read from.
const char* Objection(int descriptor, NativeFile::Access access) {
    struct stat info {};
    if (fstat(descriptor, &info) != 0)
        return Reason::kNotRegular;
    if (S_ISDIR(info.st_mode))
        return Reason::kIsFolder;
    if (S_ISREG(info.st_mode) || (S_ISCHR(info.st_mode) && access != NativeFile::Access::Read))
        return nullptr;
    return Reason::kNotRegular;
}

} // namespace

std::unique_ptr<NativeFile> NativeFile::Open(const std::filesystem::path& path, Access access,
                                             std::string& why) {
    const int descriptor = open(path.c_str(), FlagsFor(access) | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        why = SystemReason(errno, path);
        return nullptr;
    }
    if (const char* objection = Objection(descriptor, access)) {
        close(descriptor);
        why = objection;
        return nullptr;
    }
    return std::unique_ptr<NativeFile>(new NativeFile(descriptor));
}

NativeFile::~NativeFile() {
    if (m_map)
        munmap(m_map, m_mapLength);
    close(int(m_handle));
}

uint64_t NativeFile::Length() const {
    struct stat info {};
    return fstat(int(m_handle), &info) == 0 && info.st_size > 0 ? uint64_t(info.st_size) : 0;
}

size_t NativeFile::ReadAt(uint64_t offset, void* bytes, size_t count, std::string& why) {
    size_t moved = 0;
    while (moved < count) {
        const ssize_t n =
            pread(int(m_handle), static_cast<char*>(bytes) + moved, count - moved, off_t(offset + moved));
        if (n == 0)
            break;
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            why = SystemReason(errno);
            break;
        }
        moved += size_t(n);
    }
    return moved;
}

size_t NativeFile::WriteAt(uint64_t offset, const void* bytes, size_t count, std::string& why) {
    size_t moved = 0;
    while (moved < count) {
        const ssize_t n = pwrite(int(m_handle), static_cast<const char*>(bytes) + moved, count - moved,
                                 off_t(offset + moved));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            why = n < 0 ? SystemReason(errno) : Reason::kDiskFull;
            break;
        }
        moved += size_t(n);
    }
    return moved;
}

bool NativeFile::Sync(std::string& why) {
    if (fsync(int(m_handle)) == 0 || errno == EINVAL) // a device has nothing to wait for
        return true;
    why = SystemReason(errno);
    return false;
}

const uint8_t* NativeFile::Map(uint64_t length) {
    if (m_map || length == 0 || length > SIZE_MAX)
        return nullptr;
    void* map = mmap(nullptr, size_t(length), PROT_READ, MAP_PRIVATE, int(m_handle), 0);
    if (map == MAP_FAILED)
        return nullptr;
    madvise(map, size_t(length), MADV_SEQUENTIAL);
    m_map = map;
    m_mapLength = length;
    return static_cast<const uint8_t*>(map);
}

} // namespace ZvPlatform
