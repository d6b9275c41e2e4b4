#include "Apps/zvd/Command.h"
#include "Apps/zvd/DrawingFile.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

struct ConvertArguments {
    std::string in, out;
    int level = 3;
    std::string layerField, layers;
    double precision = 0;
    bool strict = false;
};

void Print(const Console& console, const char* title, const ZvLossReport& losses) {
    for (const ZvLossReport::Fate fate :
         {ZvLossReport::Fate::Kept, ZvLossReport::Fate::Approximated, ZvLossReport::Fate::Dropped})
        for (const auto& [what, count] : losses.Items())
            if (what.first == fate)
                console.Line(std::string(title) + " " + ZvLossReport::FateName(fate) + " " +
                             Console::Grouped(uint64_t(count)) + ": " + what.second);
}

ExitCode RunConvert(const Console& console, const ConvertArguments& arguments) {
    ZvFileOptions options;
    options.values.Set("LayerField", XStringW::FromUtf8(arguments.layerField));
    options.values.Set("Layers", XStringW::FromUtf8(arguments.layers));
    options.values.Set("Precision", arguments.precision);
    LoadedDrawing loaded;
    if (const ExitCode code = LoadDrawing(console, ZvPlatform::PathFromUtf8(arguments.in), options, loaded);
        code != ExitCode::Ok)
        return code;
    console.ShowErrors(loaded.errors);
    ZvFileOptions saving;
    ZvLossReport saveLosses;
    saving.losses = &saveLosses;
    IOErrorSet errors;
    const double start = IZvClock::System().MonotonicSeconds();
    const ExitCode code = SaveDrawing(console, *loaded.drawing, ZvPlatform::PathFromUtf8(arguments.out),
                                      saving, arguments.level, errors);
    if (code != ExitCode::Ok)
        return code;
    const double seconds = IZvClock::System().MonotonicSeconds() - start;
    console.ShowErrors(errors);
    Print(console, "reading:", loaded.losses);
    Print(console, "writing:", saveLosses);
    std::error_code failed;
    const auto size = std::filesystem::file_size(ZvPlatform::PathFromUtf8(arguments.out), failed);
    char line[160];
    std::snprintf(line, sizeof line, "%s (%s), read in %.2f s, written in %.2f s", arguments.out.c_str(),
                  failed ? "?" : Console::Human(size).c_str(), loaded.seconds, seconds);
    console.Line(line);
    console.Json({{"in", arguments.in},
                  {"out", arguments.out},
                  {"bytes", failed ? 0 : size},
                  {"readSeconds", loaded.seconds},
                  {"writeSeconds", seconds},
                  {"reading", ToJson(loaded.losses)},
                  {"writing", ToJson(saveLosses)},
                  {"messages", ToJson(loaded.errors)}});
    const bool lossless = loaded.losses.IsLossless() && saveLosses.IsLossless();
    return arguments.strict && !lossless ? ExitCode::Findings : ExitCode::Ok;
}

} // namespace

void AddConvertCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command =
        app.add_subcommand("convert", "Turn a drawing or map into another format, told by the extensions");
    auto arguments = std::make_shared<ConvertArguments>();
    command->add_option("IN", arguments->in, "Source file")->required();
    command->add_option("OUT", arguments->out, "Target file; replaced only when the new one is complete")
        ->required();
    command
        ->add_option("--level", arguments->level,
                     "Native target: 0 stored, 1-5 compressed blocks, 6-9 one solid block")
        ->check(CLI::Range(0, 9))
        ->capture_default_str();
    command->add_option("--layer-field", arguments->layerField,
                        "Field whose text gives each feature's layer (DXF: Layer)");
    command->add_option("--layers", arguments->layers, "Only these source layers, separated by commas");
    command
        ->add_option("--precision", arguments->precision,
                     "Step to which vertices may be rounded, in units of the map (default: a millimetre on "
                     "the ground)")
        ->check([](const std::string& text) {
            double step = 0;
            char rest = 0;
            const bool good = std::sscanf(text.c_str(), "%lf%c", &step, &rest) == 1 && std::isfinite(step);
            return good && step >= 0 ? std::string() : "a step is a number from 0 up, not '" + text + "'";
        });
    command->add_flag("--strict", arguments->strict, "Exit with 1 when anything was approximated or dropped");
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) { return RunConvert(console, *arguments); };
    });
}
