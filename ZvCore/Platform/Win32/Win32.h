#pragma once
#include <windows.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace ZvPlatform {

/// A GetLastError value in words.
std::string SystemReason(DWORD error);
/// As above, telling a missing file from a missing folder and a folder from a file that may not be touched.
std::string SystemReason(DWORD error, const std::filesystem::path& path);
/// The form in which the system takes a path of any length.
std::wstring SystemPath(const std::filesystem::path& path);

/// wchar_t holds UTF-16 code units here.
inline const wchar_t* AsWide(const char16_t* text) {
    return reinterpret_cast<const wchar_t*>(text);
}
inline std::u16string_view AsUtf16(std::wstring_view text) {
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}

} // namespace ZvPlatform
