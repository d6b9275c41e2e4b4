#pragma once
#include "Apps/zvd/Console.h"
#include <filesystem>

class ZvDrawing;

/// The second half of the demonstration: an edit and its undo, a save over an old file, and a recovery, each proved. `file` is
/// written. Answers Internal when a proof fails.
ExitCode ShowEdits(const Console& console, ZvDrawing& drawing, const std::filesystem::path& file);
