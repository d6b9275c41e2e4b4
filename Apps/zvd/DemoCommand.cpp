#include "Apps/zvd/Command.h"
#include "Apps/zvd/CompareDrawings.h"
#include "Apps/zvd/DemoEdits.h"
#include "Apps/zvd/DrawingFile.h"
#include "Apps/zvd/Picture.h"
#include "Apps/zvd/WorldStyle.h"
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/IFile.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

namespace {

constexpr uint32_t kSea = 0xFFDCEAF4;

struct DemoArguments {
    std::string source = "Samples/world.geojson";
    std::string folder = ".";
};

std::string Text(const fs::path& path) {
    return ZvPlatform::PathToUtf8(path);
}

bool SaveToMemory(ZvDrawing& drawing, ZvCore::MemFile& file) {
    return Zv::Ok(ZvNativeFile().WriteFile(&drawing, &file)) && file.Seek(0);
}

// The reloaded drawing holds the same as the first, and one more round gives the same bytes.
std::string FindDifference(const ZvDrawing& first, ZvDrawing& second) {
    std::string why;
    if (!AreDrawingsEqual(first, second, why))
        return why;
    ZvCore::MemFile once, twice;
    ZvDrawing third;
    if (!SaveToMemory(second, once) || !Zv::Ok(ZvNativeFile().ReadFile(&third, &once)) ||
        !SaveToMemory(third, twice))
        return "it cannot be saved and loaded once more";
    if (once.Length() != twice.Length() || std::memcmp(once.Data(), twice.Data(), size_t(once.Length())) != 0)
        return "saving it once more gives other bytes";
    return {};
}

ExitCode DrawPictures(const Console& console, ZvDrawing& drawing, const fs::path& folder,
                      nlohmann::ordered_json& report) {
    for (const char* name : {"world.png", "world.svg", "world.pdf"}) {
        PictureOptions options;
        options.width = 2400;
        options.background = kSea;
        options.extent.Set(-182, -92, 182, 92);
        PictureReport picture;
        if (const ExitCode code = RenderPicture(console, drawing, folder / name, options, picture);
            code != ExitCode::Ok)
            return code;
        char line[200];
        std::snprintf(line, sizeof line, "  %s (%d x %d, drawn in %.0f ms)", Text(folder / name).c_str(),
                      picture.width, picture.height, picture.seconds * 1000);
        console.Line(line);
        report["pictures"].push_back(Text(folder / name));
    }
    return ExitCode::Ok;
}

ExitCode RunDemo(const Console& console, const DemoArguments& arguments) {
    const fs::path source = ZvPlatform::PathFromUtf8(arguments.source),
                   folder = ZvPlatform::PathFromUtf8(arguments.folder);
    const fs::path target = folder / "world.zvd";
    console.Line("1. Reading the map " + arguments.source);
    ZvFileOptions options;
    options.values.Set("LayerField", XStringW(u"layer"));
    LoadedDrawing world;
    if (const ExitCode code = LoadDrawing(console, source, options, world); code != ExitCode::Ok)
        return code;
    console.ShowErrors(world.errors);
    StyleWorld(*world.drawing);
    console.Line("   " + Console::Grouped(world.drawing->NameTable().Count()) +
                 " entities, coloured by layer and country");

    console.Line("2. Saving it as " + Text(target));
    IOErrorSet errors;
    if (const ExitCode code =
            SaveDrawing(console, *world.drawing, target, {}, ZvNativeOptions{}.compressionLevel, errors);
        code != ExitCode::Ok)
        return code;
    std::error_code failed;
    console.Line("   " + Console::Human(fs::file_size(target, failed)) + " for a source of " +
                 Console::Human(fs::file_size(source, failed)));

    console.Line("3. Loading it again");
    LoadedDrawing again;
    if (const ExitCode code = LoadDrawing(console, target, {}, again); code != ExitCode::Ok)
        return code;
    if (const std::string difference = FindDifference(*world.drawing, *again.drawing); !difference.empty())
        return console.Fail(ExitCode::Internal, "the reloaded drawing is not the same: " + difference);
    console.Line("   The reloaded drawing equals the first: every layer, entity, coordinate and attribute; "
                 "another round gives the same bytes.");

    console.Line("4. Drawing it");
    nlohmann::ordered_json report{
        {"drawing", Text(target)}, {"entities", again.drawing->NameTable().Count()}, {"equal", true}};
    ExitCode code = DrawPictures(console, *again.drawing, folder, report);
    if (code == ExitCode::Ok)
        code = ShowEdits(console, *again.drawing, folder / "edited.zvd");
    if (code == ExitCode::Ok)
        console.Json(report);
    return code;
}

} // namespace

void AddDemoCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command = app.add_subcommand(
        "demo", "Take a map of the world through everything: read, save, load, compare, draw");
    auto arguments = std::make_shared<DemoArguments>();
    command->add_option("--source", arguments->source, "The map")->capture_default_str();
    command->add_option("--out", arguments->folder, "Folder for world.zvd and the pictures")
        ->capture_default_str();
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) { return RunDemo(console, *arguments); };
    });
}
