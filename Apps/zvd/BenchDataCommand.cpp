#include "Apps/zvd/Command.h"
#include "Apps/zvd/DrawingFile.h"
#include "Apps/zvd/SyntheticMap.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

struct BenchDataArguments {
    std::string out;
    SyntheticMap map;
    int level = 3;
};

ExitCode RunBenchData(const Console& console, const BenchDataArguments& arguments) {
    ZvDrawing drawing;
    {
        ConsoleProgress progress(console);
        if (!arguments.map.Fill(drawing, progress))
            return console.Fail(ExitCode::Interrupted, "interrupted; nothing was written");
    }
    IOErrorSet errors;
    const std::filesystem::path path = ZvPlatform::PathFromUtf8(arguments.out);
    if (const ExitCode code = SaveDrawing(console, drawing, path, {}, arguments.level, errors);
        code != ExitCode::Ok)
        return code;
    std::error_code failed;
    const uint64_t bytes = std::filesystem::file_size(path, failed);
    console.Line(arguments.out + ": " + Console::Grouped(drawing.NameTable().Count()) + " entities, " +
                 Console::Human(bytes));
    console.Json({{"out", arguments.out}, {"entities", drawing.NameTable().Count()}, {"bytes", bytes}});
    return ExitCode::Ok;
}

} // namespace

void AddBenchDataCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command = app.add_subcommand(
        "bench-data", "Make a large map for benchmarks: the same options give the same map");
    auto arguments = std::make_shared<BenchDataArguments>();
    SyntheticMap& map = arguments->map;
    command->add_option("OUT", arguments->out, "Target file, in any format that can be saved")->required();
    constexpr uint64_t kMost = 1'000'000'000; // names of entities are numbers of 32 bits
    command->add_option("--lines", map.lines, "Polylines")
        ->check(CLI::Range(uint64_t(0), kMost))
        ->capture_default_str();
    command->add_option("--vertices", map.vertices, "Vertices of each line and ring")
        ->check(CLI::Range(2, 1000000))
        ->capture_default_str();
    command->add_option("--polygons", map.polygons, "Polygons; every third has a hole")
        ->check(CLI::Range(uint64_t(0), kMost))
        ->capture_default_str();
    command->add_option("--towns", map.towns, "Crowded places")->capture_default_str();
    command->add_option("--layers", map.layers, "Layers that the lines are dealt to")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str();
    command->add_option("--seed", map.seed, "Another number, another map")->capture_default_str();
    command->add_option("--level", arguments->level, "Compression of a native target")
        ->check(CLI::Range(0, 9))
        ->capture_default_str();
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) { return RunBenchData(console, *arguments); };
    });
}
