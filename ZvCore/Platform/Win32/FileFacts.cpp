#include "ZvCore/Platform/FileFacts.h"
#include "ZvCore/Platform/Win32/Win32.h"

namespace ZvPlatform {

namespace {

ZvCore::IFileSystem::Info FromAttributes(DWORD attributes, DWORD lengthHigh, DWORD lengthLow,
                                         const FILETIME& written) {
    ZvCore::IFileSystem::Info facts;
    facts.exists = true;
    facts.isFolder = attributes & FILE_ATTRIBUTE_DIRECTORY;
    facts.isReadOnly = attributes & FILE_ATTRIBUTE_READONLY;
    if (!facts.isFolder)
        facts.length = uint64_t(lengthHigh) << 32 | lengthLow;
    facts.modified = DateTime{uint64_t(written.dwHighDateTime) << 32 | written.dwLowDateTime};
    return facts;
}

} // namespace

ZvCore::IFileSystem::Info FactsOf(const std::filesystem::path& path) {
    const std::wstring name = SystemPath(path);
    // Opened for nothing but its facts, which follows links and is allowed whoever else has it open.
    const HANDLE handle = CreateFileW(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
        BY_HANDLE_FILE_INFORMATION info{};
        if (GetFileType(handle) != FILE_TYPE_DISK) {
            CloseHandle(handle);
            ZvCore::IFileSystem::Info facts;
            facts.exists = facts.isSpecial = true;
            return facts;
        }
        const bool known = GetFileInformationByHandle(handle, &info);
        CloseHandle(handle);
        if (known)
            return FromAttributes(info.dwFileAttributes, info.nFileSizeHigh, info.nFileSizeLow,
                                  info.ftLastWriteTime);
    }
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(name.c_str(), GetFileExInfoStandard, &data))
        return {};
    return FromAttributes(data.dwFileAttributes, data.nFileSizeHigh, data.nFileSizeLow, data.ftLastWriteTime);
}

} // namespace ZvPlatform
