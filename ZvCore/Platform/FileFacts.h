#pragma once
#include "ZvCore/FileSystem.h"

namespace ZvPlatform {

/// What the system tells of the file at the end of the path, links followed; paths of any length. `exists` is false, too, when the
/// system does not tell.
ZvCore::IFileSystem::Info FactsOf(const std::filesystem::path& path);

} // namespace ZvPlatform
