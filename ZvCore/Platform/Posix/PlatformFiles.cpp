#include "ZvCore/Platform/NativeFile.h"
#include "ZvCore/Platform/Platform.h"
#include "ZvCore/Platform/Posix/SystemReason.h"
#include "ZvCore/Platform/Reason.h"
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZvPlatform {

namespace fs = std::filesystem;

namespace {

constexpr size_t kProbeBytes = 65536;

/// A name beside `path` that nobody else uses.
fs::path TemporaryBeside(const fs::path& path) {
    uint64_t random = 0;
    RandomBytes(&random, sizeof random);
    return path.parent_path() / ("zvd" + std::to_string(random) + ".tmp");
}

std::string CopyAndSync(const fs::path& from, const fs::path& to) {
    std::string why;
    const auto source = NativeFile::Open(from, NativeFile::Access::Read, why);
    const auto target = source ? NativeFile::Open(to, NativeFile::Access::CreateNew, why) : nullptr;
    if (!target)
        return why;
    std::string buffer(size_t(1) << 20, '\0');
    for (uint64_t offset = 0;;) {
        const size_t n = source->ReadAt(offset, buffer.data(), buffer.size(), why);
        if (n == 0 || !why.empty() || target->WriteAt(offset, buffer.data(), n, why) != n)
            break;
        offset += n;
    }
    struct stat info {};
    if (why.empty() && stat(from.c_str(), &info) == 0 && chmod(to.c_str(), info.st_mode & 07777) != 0)
        why = SystemReason(errno);
    if (why.empty())
        target->Sync(why);
    return why;
}

} // namespace

std::string RenameReplace(const fs::path& from, const fs::path& to) {
    return std::rename(from.c_str(), to.c_str()) == 0 ? std::string() : SystemReason(errno, to);
}

std::string HardLinkOrCopy(const fs::path& from, const fs::path& to) {
    const fs::path temporary = TemporaryBeside(to);
    std::string why;
    if (link(from.c_str(), temporary.c_str()) != 0) {
        if (errno == ENOENT || errno == EACCES || errno == ENOSPC || errno == EROFS)
            return SystemReason(errno, errno == ENOENT && fs::exists(from) ? to : from);
        why = CopyAndSync(from, temporary);
    }
    if (why.empty())
        why = RenameReplace(temporary, to);
    // Also after success: renaming one of two names of the same file onto the other leaves both.
    unlink(temporary.c_str());
    return why;
}

std::string HardLink(const fs::path& from, const fs::path& to) {
    return link(from.c_str(), to.c_str()) == 0 ? std::string() : SystemReason(errno, from);
}

const bool kReplacesWithBackup = false;

std::string ReplaceWithBackup(const fs::path&, const fs::path&, const fs::path&) {
    return SystemReason(ENOSYS);
}

DateTime FileModified(const fs::path& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0)
        return {};
    constexpr uint64_t unitNanoseconds = 100;
    DateTime time = DateTime::FromUnixSeconds(double(info.st_mtim.tv_sec));
    time.ticks += uint64_t(info.st_mtim.tv_nsec) / unitNanoseconds;
    return time;
}

std::string DeleteFileIfThere(const fs::path& path) {
    return unlink(path.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR ? std::string()
                                                                            : SystemReason(errno);
}

std::string SyncFolder(const fs::path& folder) {
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return SystemReason(errno);
    std::string why;
    if (fsync(descriptor) != 0 && errno != EINVAL) // EINVAL: the file system has no such operation
        why = SystemReason(errno);
    close(descriptor);
    return why;
}

std::string SyncAndProbeGrowth(const fs::path& path) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0)
        return SystemReason(errno, path);
    std::string why;
    const off_t length = lseek(descriptor, 0, SEEK_END);
    const std::string more(kProbeBytes, '\0');
    const ssize_t written = pwrite(descriptor, more.data(), more.size(), length);
    if (written < 0)
        why = SystemReason(errno);
    else if (size_t(written) < more.size())
        why = Reason::kDiskFull;
    if (ftruncate(descriptor, length) != 0 || fsync(descriptor) != 0)
        why = why.empty() ? SystemReason(errno) : why;
    close(descriptor);
    return why;
}

bool IsFolderWritable(const fs::path& folder) {
    std::error_code ignored;
    const fs::path asked = folder.empty() ? fs::path(".") : folder;
    return fs::is_directory(asked, ignored) && access(asked.c_str(), W_OK | X_OK) == 0;
}

fs::path PathFromUtf8(std::string_view text) {
    return fs::path(text);
}

std::string PathToUtf8(const fs::path& path) {
    return path.native();
}

} // namespace ZvPlatform
