#include "ZvCore/Platform/FileFacts.h"
#include "ZvCore/Platform/Platform.h"
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZvPlatform {

ZvCore::IFileSystem::Info FactsOf(const std::filesystem::path& path) {
    ZvCore::IFileSystem::Info facts;
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        facts.exists = facts.isSpecial = errno == ELOOP;
        return facts;
    }
    facts.exists = true;
    facts.isFolder = S_ISDIR(info.st_mode);
    facts.isSpecial = !facts.isFolder && !S_ISREG(info.st_mode);
    facts.isReadOnly = (info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
    if (S_ISREG(info.st_mode)) {
        facts.length = uint64_t(info.st_size);
        if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0)
            facts.isReadOnly = facts.isReadOnly || errno == EACCES;
    }
    facts.modified = FileModified(path);
    return facts;
}

} // namespace ZvPlatform
