#pragma once
#include "ZvCore/Api.h"
#include <string_view>

namespace ZvPlatform {

/// Writes the state of the running process to a file for the maker, and lets the process go on: a minidump on Windows, the call
/// stack elsewhere. `path` is the Windows name; elsewhere the file of that name goes to the folder for temporary files. False when
/// it cannot be written.
ZV_API bool WriteCrashDump(std::string_view path);

} // namespace ZvPlatform
