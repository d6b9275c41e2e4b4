#pragma once
#include "Apps/zvd/Console.h"
#include "Zelvan/IZvFileProvider.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvLossReport.h"
#include <filesystem>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

/// A drawing with what its loading told.
struct LoadedDrawing {
    std::unique_ptr<ZvDrawing> drawing;
    const ZvFileFormat* format = nullptr;
    ZvLossReport losses;
    IOErrorSet errors;
    double seconds = 0;
};

/// Says what is wrong and answers its code when the path is no readable, non-empty file.
ExitCode CheckInput(const Console& console, const std::filesystem::path& file);

/// Loads any known format. Messages have been shown when the answer is not Ok; `loaded.errors` holds them otherwise.
ExitCode LoadDrawing(const Console& console, const std::filesystem::path& file, const ZvFileOptions& options,
                     LoadedDrawing& loaded);

/// Saves in the format of the name's extension, leaving the target alone on failure. `level`: compression of native files.
ExitCode SaveDrawing(const Console& console, ZvDrawing& drawing, const std::filesystem::path& file,
                     ZvFileOptions options, int level, IOErrorSet& errors);

/// The formats that can be loaded (or saved), as one line of extensions.
std::string KnownExtensions(bool save);

nlohmann::ordered_json ToJson(const ZvLossReport& losses);
nlohmann::ordered_json ToJson(const IOErrorSet& errors);
