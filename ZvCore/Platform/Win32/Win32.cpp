#include "ZvCore/Platform/Win32/Win32.h"
#include "ZvCore/Platform/Reason.h"
#include "ZvCore/Unicode.h"

namespace ZvPlatform {

std::string SystemReason(DWORD error) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
        return Reason::kNoSuchFile;
    case ERROR_PATH_NOT_FOUND:
        return Reason::kNoSuchFolder;
    case ERROR_ACCESS_DENIED:
        return Reason::kDenied;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return Reason::kExists;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return Reason::kDiskFull;
    case ERROR_WRITE_PROTECT:
        return Reason::kReadOnlyDisk;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
        return Reason::kInUse;
    case ERROR_FILENAME_EXCED_RANGE:
        return Reason::kNameTooLong;
    case ERROR_INVALID_NAME:
        return Reason::kBadName;
    case ERROR_TOO_MANY_OPEN_FILES:
        return Reason::kTooManyOpen;
    case ERROR_NOT_SAME_DEVICE:
        return Reason::kOtherDisk;
    case ERROR_CRC:
    case ERROR_IO_DEVICE:
        return Reason::kDamagedDisk;
    default:
        break;
    }
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                                  0, text, DWORD(std::size(text)), nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.'))
        --length;
    return length > 0 ? ZvCore::Unicode::Utf16To8(AsUtf16({text, length}))
                      : "system error " + std::to_string(error);
}

std::string SystemReason(DWORD error, const std::filesystem::path& path) {
    std::error_code ignored;
    if (error == ERROR_ACCESS_DENIED && std::filesystem::is_directory(path, ignored))
        return Reason::kIsFolder;
    const std::filesystem::path folder = path.parent_path();
    if (error == ERROR_FILE_NOT_FOUND && !folder.empty() && !std::filesystem::is_directory(folder, ignored))
        return Reason::kNoSuchFolder;
    return SystemReason(error);
}

std::wstring SystemPath(const std::filesystem::path& path) {
    constexpr size_t mostPlain = 240; // MAX_PATH less what a temporary name adds
    std::error_code failed;
    const std::filesystem::path absolute =
        std::filesystem::absolute(path, failed).lexically_normal().make_preferred();
    const std::wstring& text = absolute.native();
    if (failed || text.size() < mostPlain || text.starts_with(L"\\\\?\\"))
        return path.native();
    if (text.starts_with(L"\\\\"))
        return L"\\\\?\\UNC" + text.substr(1);
    return L"\\\\?\\" + text;
}

} // namespace ZvPlatform
