#include "ZvCore/Platform/Platform.h"
#include "ZvCore/Platform/Win32/Win32.h"
#include "ZvCore/Unicode.h"

namespace ZvPlatform {

namespace fs = std::filesystem;

namespace {

constexpr size_t kProbeBytes = 65536;

fs::path TemporaryBeside(const fs::path& path) {
    uint64_t random = 0;
    RandomBytes(&random, sizeof random);
    return path.parent_path() / (L"zvd" + std::to_wstring(random) + L".tmp");
}

} // namespace

std::string RenameReplace(const fs::path& from, const fs::path& to) {
    // Virus scanners and indexers open new files for a moment.
    constexpr int mostTries = 6;
    constexpr DWORD pauseMilliseconds = 20;
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(SystemPath(from).c_str(), SystemPath(to).c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return {};
        const DWORD error = GetLastError();
        std::error_code ignored;
        const bool mayPass = error == ERROR_SHARING_VIOLATION ||
                             (error == ERROR_ACCESS_DENIED && !fs::is_directory(to, ignored));
        if (!mayPass || attempt == mostTries)
            return SystemReason(error, to);
        Sleep(pauseMilliseconds);
    }
}

std::string HardLinkOrCopy(const fs::path& from, const fs::path& to) {
    std::error_code failed;
    if (!fs::exists(from, failed))
        return SystemReason(ERROR_FILE_NOT_FOUND, from);
    if (fs::equivalent(from, to, failed) && !failed)
        return {}; // two names of one file already
    const fs::path temporary = TemporaryBeside(to);
    const std::wstring name = SystemPath(temporary);
    if (!CreateHardLinkW(name.c_str(), SystemPath(from).c_str(), nullptr) &&
        !CopyFileW(SystemPath(from).c_str(), name.c_str(), TRUE))
        return SystemReason(GetLastError(), to);
    const std::string why = RenameReplace(temporary, to);
    if (!why.empty())
        DeleteFileW(name.c_str());
    return why;
}

std::string HardLink(const fs::path& from, const fs::path& to) {
    return CreateHardLinkW(SystemPath(to).c_str(), SystemPath(from).c_str(), nullptr)
               ? std::string()
               : SystemReason(GetLastError(), from);
}

const bool kReplacesWithBackup = true;

std::string ReplaceWithBackup(const fs::path& from, const fs::path& to, const fs::path& backup) {
    if (ReplaceFileW(SystemPath(to).c_str(), SystemPath(from).c_str(), SystemPath(backup).c_str(),
                     REPLACEFILE_IGNORE_MERGE_ERRORS | REPLACEFILE_IGNORE_ACL_ERRORS, nullptr, nullptr))
        return {};
    const DWORD error = GetLastError();
    // The old file has its backup's name already: give the name a file again.
    if (error == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2)
        return RenameReplace(from, to);
    if (error == ERROR_UNABLE_TO_REMOVE_REPLACED || error == ERROR_UNABLE_TO_MOVE_REPLACEMENT ||
        error == ERROR_CALL_NOT_IMPLEMENTED || error == ERROR_NOT_SUPPORTED ||
        error == ERROR_INVALID_FUNCTION) { // file systems that cannot do it in one step
        const std::string why = HardLinkOrCopy(to, backup);
        return why.empty() ? RenameReplace(from, to) : why;
    }
    return SystemReason(error, to);
}

DateTime FileModified(const fs::path& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(SystemPath(path).c_str(), GetFileExInfoStandard, &data))
        return {};
    const FILETIME& time = data.ftLastWriteTime;
    return DateTime{uint64_t(time.dwHighDateTime) << 32 | time.dwLowDateTime};
}

std::string DeleteFileIfThere(const fs::path& path) {
    if (DeleteFileW(SystemPath(path).c_str()))
        return {};
    const DWORD error = GetLastError();
    const bool isGone = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    return isGone ? std::string() : SystemReason(error, path);
}

std::string SyncFolder(const fs::path&) {
    return {};
}

std::string SyncAndProbeGrowth(const fs::path& path) {
    const HANDLE handle = CreateFileW(SystemPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return SystemReason(GetLastError(), path);
    LARGE_INTEGER length{};
    const LARGE_INTEGER none{};
    const std::string more(kProbeBytes, '\0');
    DWORD written = 0, error = 0;
    if (!SetFilePointerEx(handle, none, &length, FILE_END) ||
        !WriteFile(handle, more.data(), DWORD(more.size()), &written, nullptr))
        error = GetLastError();
    else if (written < more.size())
        error = ERROR_DISK_FULL;
    if ((!SetFilePointerEx(handle, length, nullptr, FILE_BEGIN) || !SetEndOfFile(handle) ||
         !FlushFileBuffers(handle)) &&
        error == 0)
        error = GetLastError();
    CloseHandle(handle);
    return error ? SystemReason(error) : std::string();
}

bool IsFolderWritable(const fs::path& folder) {
    const fs::path probe = TemporaryBeside((folder.empty() ? fs::path(L".") : folder) / L"probe");
    const HANDLE handle = CreateFileW(SystemPath(probe).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    CloseHandle(handle);
    return true;
}

fs::path PathFromUtf8(std::string_view text) {
    const std::u16string wide = ZvCore::Unicode::Utf8To16(text);
    return std::wstring(AsWide(wide.data()), wide.size());
}

std::string PathToUtf8(const fs::path& path) {
    return ZvCore::Unicode::Utf16To8(AsUtf16(path.native()));
}

} // namespace ZvPlatform
