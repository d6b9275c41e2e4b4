#pragma once
#include "Apps/zvd/Console.h"
#include <string>

/// zvd check --repair: reads what can be read of `from` and writes it to `to`, with a report. Ok when nothing was wrong, Findings when
/// something was and the rest is saved, BadInput when nothing could be read (nothing is written then).
ExitCode RepairFile(const Console& console, const std::string& from, const std::string& to, int level);
