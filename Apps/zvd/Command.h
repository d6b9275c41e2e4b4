#pragma once
#include "Apps/zvd/Console.h"
#include "Apps/zvd/ExitCode.h"
#include <functional>

namespace CLI {
class App;
}

/// What a command's parsing leaves behind: the work to do.
using CommandRun = std::function<ExitCode(const Console&)>;

/// Each adds one subcommand; when it is chosen, `run` is set.
void AddInfoCommand(CLI::App& app, CommandRun& run);
void AddCheckCommand(CLI::App& app, CommandRun& run);
void AddDumpCommand(CLI::App& app, CommandRun& run);
void AddConvertCommand(CLI::App& app, CommandRun& run);
void AddRenderCommand(CLI::App& app, CommandRun& run);
void AddBenchDataCommand(CLI::App& app, CommandRun& run);
void AddDemoCommand(CLI::App& app, CommandRun& run);
void AddEditCommand(CLI::App& app, CommandRun& run);
void AddLayersCommand(CLI::App& app, CommandRun& run);
void AddFormatsCommand(CLI::App& app, CommandRun& run);
void AddRecoverCommand(CLI::App& app, CommandRun& run);
