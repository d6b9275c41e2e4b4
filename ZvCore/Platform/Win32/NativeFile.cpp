#include "ZvCore/Platform/NativeFile.h"
#include "ZvCore/Platform/Reason.h"
#include "ZvCore/Platform/Win32/Win32.h"
#include <algorithm>

namespace ZvPlatform {

namespace {

constexpr size_t kMostPerCall = size_t(1) << 30; // the system counts in 32 bits

HANDLE AsHandle(intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

OVERLAPPED At(uint64_t offset) {
    OVERLAPPED at{};
    at.Offset = DWORD(offset);
    at.OffsetHigh = DWORD(offset >> 32);
    return at;
}

} // namespace

std::unique_ptr<NativeFile> NativeFile::Open(const std::filesystem::path& path, Access access,
                                             std::string& why) {
    const bool reading = access == Access::Read;
    const DWORD rights = reading ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    const DWORD sharing = reading ? FILE_SHARE_READ | FILE_SHARE_DELETE : FILE_SHARE_READ;
    const DWORD creation = reading ? OPEN_EXISTING : access == Access::Create ? CREATE_ALWAYS : CREATE_NEW;
    const DWORD flags = FILE_ATTRIBUTE_NORMAL | (reading ? FILE_FLAG_SEQUENTIAL_SCAN : 0);
    const HANDLE handle =
        CreateFileW(SystemPath(path).c_str(), rights, sharing, nullptr, creation, flags, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        why = SystemReason(GetLastError(), path);
        return nullptr;
    }
    if (GetFileType(handle) != FILE_TYPE_DISK) {
        CloseHandle(handle);
        why = Reason::kNotRegular;
        return nullptr;
    }
    return std::unique_ptr<NativeFile>(new NativeFile(reinterpret_cast<intptr_t>(handle)));
}

NativeFile::~NativeFile() {
    if (m_map)
        UnmapViewOfFile(m_map);
    CloseHandle(AsHandle(m_handle));
}

uint64_t NativeFile::Length() const {
    LARGE_INTEGER length{};
    return GetFileSizeEx(AsHandle(m_handle), &length) ? uint64_t(length.QuadPart) : 0;
}

size_t NativeFile::ReadAt(uint64_t offset, void* bytes, size_t count, std::string& why) {
    size_t moved = 0;
    while (moved < count) {
        OVERLAPPED at = At(offset + moved);
        DWORD n = 0;
        const auto wanted = DWORD(std::min(count - moved, kMostPerCall));
        if (!ReadFile(AsHandle(m_handle), static_cast<char*>(bytes) + moved, wanted, &n, &at) &&
            GetLastError() != ERROR_HANDLE_EOF) {
            why = SystemReason(GetLastError());
            break;
        }
        if (n == 0)
            break;
        moved += n;
    }
    return moved;
}

size_t NativeFile::WriteAt(uint64_t offset, const void* bytes, size_t count, std::string& why) {
    size_t moved = 0;
    while (moved < count) {
        OVERLAPPED at = At(offset + moved);
        DWORD n = 0;
        const auto wanted = DWORD(std::min(count - moved, kMostPerCall));
        if (!WriteFile(AsHandle(m_handle), static_cast<const char*>(bytes) + moved, wanted, &n, &at)) {
            why = SystemReason(GetLastError());
            break;
        }
        if (n == 0) {
            why = Reason::kDiskFull;
            break;
        }
        moved += n;
    }
    return moved;
}

bool NativeFile::Sync(std::string& why) {
    if (FlushFileBuffers(AsHandle(m_handle)))
        return true;
    why = SystemReason(GetLastError());
    return false;
}

const uint8_t* NativeFile::Map(uint64_t length) {
    if (m_map || length == 0)
        return nullptr;
    const HANDLE mapping = CreateFileMappingW(AsHandle(m_handle), nullptr, PAGE_READONLY, DWORD(length >> 32),
                                              DWORD(length), nullptr);
    if (!mapping)
        return nullptr;
    m_map = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, SIZE_T(length));
    m_mapLength = m_map ? length : 0;
    CloseHandle(mapping); // the view keeps it
    return static_cast<const uint8_t*>(m_map);
}

} // namespace ZvPlatform
