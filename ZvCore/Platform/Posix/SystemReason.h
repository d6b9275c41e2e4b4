#pragma once
#include <filesystem>
#include <string>

namespace ZvPlatform {

/// An errno value in words.
std::string SystemReason(int error);
/// As above, telling a missing file from a missing folder.
std::string SystemReason(int error, const std::filesystem::path& path);

} // namespace ZvPlatform
