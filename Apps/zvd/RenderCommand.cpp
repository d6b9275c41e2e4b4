#include "Apps/zvd/Command.h"
#include "Apps/zvd/DrawingFile.h"
#include "Apps/zvd/Picture.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

struct RenderArguments {
    std::string in, out, size, extent, layers, background = "white", scale, paper;
    bool noAntialias = false;
};

bool ParseScale(const std::string& text, double& scale) {
    const std::string number = text.starts_with("1:") ? text.substr(2) : text;
    char rest = 0;
    return std::sscanf(number.c_str(), "%lf%c", &scale, &rest) == 1 && scale > 0 && std::isfinite(scale);
}

// The reason of a refusal, empty when all options make sense.
std::string ParseOptions(const RenderArguments& arguments, PictureOptions& options) {
    char rest = 0;
    if (!arguments.size.empty() &&
        std::sscanf(arguments.size.c_str(), "%dx%d%c", &options.width, &options.height, &rest) != 2 &&
        std::sscanf(arguments.size.c_str(), "%d%c", &options.width, &rest) != 1)
        return "--size takes WIDTH or WIDTHxHEIGHT in pixels, not '" + arguments.size + "'";
    if (options.width < 1 || options.width > 30000 || options.height < 0 || options.height > 30000)
        return "--size: sides go from 1 to 30000 pixels";
    if (!arguments.extent.empty()) {
        double v[4];
        if (std::sscanf(arguments.extent.c_str(), "%lf,%lf,%lf,%lf%c", &v[0], &v[1], &v[2], &v[3], &rest) !=
                4 ||
            !(v[2] > v[0]) || !(v[3] > v[1]) || v[0] < -kZvBoundsLimit || v[1] < -kZvBoundsLimit ||
            v[2] > kZvBoundsLimit || v[3] > kZvBoundsLimit)
            return "--extent takes MINX,MINY,MAXX,MAXY, not '" + arguments.extent + "'";
        options.extent.Set(v[0], v[1], v[2], v[3]);
    }
    for (size_t at = 0; at < arguments.layers.size();) {
        const size_t end = std::min(arguments.layers.find(',', at), arguments.layers.size());
        options.layers.push_back(arguments.layers.substr(at, end - at));
        at = end + 1;
    }
    if (!ParseBackground(arguments.background, options.background))
        return "--background takes white, black, transparent, #RRGGBB or #AARRGGBB, not '" +
               arguments.background + "'";
    if (!arguments.scale.empty() && !ParseScale(arguments.scale, options.scale))
        return "--scale takes 1:N, not '" + arguments.scale + "'";
    if (!arguments.paper.empty() && !ParsePaper(arguments.paper, options.paperWidthMm, options.paperHeightMm))
        return "--paper takes A0 to A5, Letter, Tabloid (with P: upright) or WIDTHxHEIGHT in millimetres, "
               "not '" +
               arguments.paper + "'";
    options.antialias = !arguments.noAntialias;
    return {};
}

ExitCode RunRender(const Console& console, const RenderArguments& arguments) {
    PictureOptions options;
    if (const std::string why = ParseOptions(arguments, options); !why.empty())
        return console.Fail(ExitCode::Usage, why);
    LoadedDrawing loaded;
    if (const ExitCode code = LoadDrawing(console, ZvPlatform::PathFromUtf8(arguments.in), {}, loaded);
        code != ExitCode::Ok)
        return code;
    console.ShowErrors(loaded.errors);
    PictureReport report;
    if (const ExitCode code =
            RenderPicture(console, *loaded.drawing, ZvPlatform::PathFromUtf8(arguments.out), options, report);
        code != ExitCode::Ok)
        return code;
    char line[200];
    std::snprintf(line, sizeof line, "%s: %d x %d, %s entities drawn in %.0f ms", arguments.out.c_str(),
                  report.width, report.height, Console::Grouped(report.stats.entitiesDrawn).c_str(),
                  report.seconds * 1000);
    console.Line(line);
    console.Json({{"out", arguments.out},
                  {"width", report.width},
                  {"height", report.height},
                  {"loadSeconds", loaded.seconds},
                  {"drawSeconds", report.seconds},
                  {"entitiesDrawn", report.stats.entitiesDrawn},
                  {"entitiesBelowPixel", report.stats.entitiesBelowPixel},
                  {"nodesVisited", report.stats.nodesVisited},
                  {"nodesCulled", report.stats.nodesCulled},
                  {"nodesBelowPixel", report.stats.nodesBelowPixel},
                  {"verticesRead", report.stats.verticesRead},
                  {"verticesPainted", report.stats.verticesPainted}});
    return ExitCode::Ok;
}

} // namespace

void AddRenderCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command = app.add_subcommand("render", "Draw a drawing or map into a .png, .svg or .pdf");
    auto arguments = std::make_shared<RenderArguments>();
    command->add_option("FILE", arguments->in, "Drawing or map")->required();
    command->add_option("OUT", arguments->out, "Picture; its extension tells the kind")->required();
    command->add_option("--size", arguments->size, "WIDTHxHEIGHT in pixels, or the width alone (1920)");
    command->add_option("--extent", arguments->extent,
                        "MINX,MINY,MAXX,MAXY in world units (everything visible)");
    command->add_option("--layers", arguments->layers, "Only these layers, separated by commas");
    command->add_option("--background", arguments->background, "Colour behind everything")
        ->capture_default_str();
    command->add_option("--scale", arguments->scale, "1:N on paper (PDF)");
    command->add_option("--paper", arguments->paper, "Paper of a PDF (A4)");
    command->add_flag("--no-antialias", arguments->noAntialias, "Draw hard pixels (PNG)");
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) { return RunRender(console, *arguments); };
    });
}
