#pragma once
#include <filesystem>
#include <string>

class ZvDrawing;

/// Ends the run: a benchmark that fails measures nothing.
[[noreturn]] void Die(const std::string& why);
/// Writes the native file over what is there, handed to the system and not waited for.
void SavePlain(ZvDrawing& drawing, const std::filesystem::path& path, int level);
