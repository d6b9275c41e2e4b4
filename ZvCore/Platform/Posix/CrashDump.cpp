#include "ZvCore/Platform/CrashDump.h"
#include <execinfo.h>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>

bool ZvPlatform::WriteCrashDump(std::string_view path) {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error)
        return false;
    const std::string name(path.substr(path.find_last_of("\\/") + 1));
    const int file =
        ::open((folder / name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0)
        return false;
    constexpr int kFrames = 64;
    void* frames[kFrames];
    ::backtrace_symbols_fd(frames, ::backtrace(frames, kFrames), file);
    return ::close(file) == 0;
}
