#include "Apps/zvd/Command.h"
#include "Apps/zvd/DrawingFile.h"
#include "Apps/zvd/DrawingUnits.h"
#include "Apps/zvd/Picture.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

struct RenderArguments {
    std::string in, out, size, extent, around, within, layers, background = "white", scale, paper;
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
    if (arguments.around.empty() != arguments.within.empty())
        return "--around and --within belong together: --around 8,47 --within 20km";
    if (!arguments.around.empty() && !arguments.extent.empty())
        return "--around and --extent exclude each other";
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

// What the picture is to show, in the drawing's units; the reason of a refusal, empty when it makes sense.
std::string ParseExtent(const RenderArguments& arguments, const ZvDrawing& drawing, ZvBounds2D& extent) {
    const DrawingUnits units(drawing);
    if (!arguments.extent.empty()) {
        const std::vector<Vec2d> corners = units.Places(arguments.extent);
        const bool right = corners.size() == 2 && corners[1].x > corners[0].x && corners[1].y > corners[0].y;
        if (right)
            extent.Set(corners[0].x, corners[0].y, corners[1].x, corners[1].y);
        if (!right || !ZvBounds2D::SuperBounds().IsInsideMe(extent))
            return "--extent takes MINX,MINY,MAXX,MAXY, not '" + arguments.extent + "'";
    }
    if (!arguments.around.empty()) {
        const auto center = units.Place(arguments.around);
        const auto within = units.Distance(arguments.within);
        if (!center || !within || !(*within > 0))
            return "--around takes X,Y and --within a distance, not '" + arguments.around + "' and '" +
                   arguments.within + "'";
        extent.Set(center->x - *within, center->y - *within, center->x + *within, center->y + *within);
    }
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
    if (const std::string why = ParseExtent(arguments, *loaded.drawing, options.extent); !why.empty())
        return console.Fail(ExitCode::Usage, why);
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
                        "MINX,MINY,MAXX,MAXY in the drawing's unit (everything visible)");
    command->add_option("--around", arguments->around, "X,Y in the middle of the picture");
    command->add_option("--within", arguments->within, "How far it reaches around that: 20km, 300ft");
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
