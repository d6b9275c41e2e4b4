#include "ZvCore/Platform/Posix/SystemReason.h"
#include "ZvCore/Platform/Reason.h"
#include <cerrno>
#include <system_error>

namespace ZvPlatform {

std::string SystemReason(int error) {
    switch (error) {
    case ENOENT:
        return Reason::kNoSuchFile;
    case EACCES:
    case EPERM:
        return Reason::kDenied;
    case EISDIR:
        return Reason::kIsFolder;
    case EEXIST:
        return Reason::kExists;
    case ENOTDIR:
        return Reason::kNoSuchFolder;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return Reason::kDiskFull;
    case EROFS:
        return Reason::kReadOnlyDisk;
    case EBUSY:
    case ETXTBSY:
        return Reason::kInUse;
    case ENAMETOOLONG:
        return Reason::kNameTooLong;
    case EMFILE:
    case ENFILE:
        return Reason::kTooManyOpen;
    case EXDEV:
        return Reason::kOtherDisk;
    case EIO:
        return Reason::kDamagedDisk;
    default:
        return std::generic_category().message(error);
    }
}

std::string SystemReason(int error, const std::filesystem::path& path) {
    std::error_code ignored;
    const std::filesystem::path folder = path.parent_path();
    if (error == ENOENT && !folder.empty() && !std::filesystem::is_directory(folder, ignored))
        return Reason::kNoSuchFolder;
    return SystemReason(error);
}

} // namespace ZvPlatform
