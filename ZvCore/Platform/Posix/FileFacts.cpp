#include "ZvCore/Platform/FileFacts.h"
#include "ZvCore/Platform/Platform.h"
#include <sys/stat.h>

namespace ZvPlatform {

ZvCore::IFileSystem::Info FactsOf(const std::filesystem::path& path) {
    ZvCore::IFileSystem::Info facts;
    struct stat info {};
    if (stat(path.c_str(), &info) != 0)
        return facts;
    facts.exists = true;
    facts.isFolder = S_ISDIR(info.st_mode);
    facts.isReadOnly = (info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
    if (S_ISREG(info.st_mode))
        facts.length = uint64_t(info.st_size);
    facts.modified = FileModified(path);
    return facts;
}

} // namespace ZvPlatform
