#include "Apps/zvd/Command.h"
#include "Apps/zvd/DrawingFile.h"
#include "Zelvan/ZvNativeDump.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

struct DumpArguments {
    std::string file;
    uint64_t entities = 20;
    bool noPayloads = false;
};

void Print(const ZvNativeDumpItem& item) {
    char place[48];
    if (item.stream)
        std::snprintf(place, sizeof place, "[%d] %10llu %8llu", item.stream,
                      static_cast<unsigned long long>(item.offset),
                      static_cast<unsigned long long>(item.length));
    else
        std::snprintf(place, sizeof place, "    %10llu %8llu", static_cast<unsigned long long>(item.offset),
                      static_cast<unsigned long long>(item.length));
    std::printf("%s  %*s%s%s%s%s\n", place, item.depth * 2, "", item.isProblem ? "!! " : "",
                item.label.c_str(), item.value.empty() ? "" : " = ", item.value.c_str());
}

ExitCode RunDump(const Console& console, const DumpArguments& arguments) {
    const std::filesystem::path path = ZvPlatform::PathFromUtf8(arguments.file);
    if (const ExitCode code = CheckInput(console, path); code != ExitCode::Ok)
        return code;
    std::string why;
    const auto file = ZvCore::DiskFile::Open(path, ZvCore::DiskFile::Mode::Read, why);
    if (!file)
        return console.Fail(ExitCode::NoInput, why);
    ZvNativeDump::Options options;
    options.maxEntitiesPerList = arguments.entities;
    options.payloads = !arguments.noPayloads;
    if (!console.json && !console.quiet)
        std::printf("blk     offset   length  field\n");
    bool hasProblems = false;
    const bool isNative = ZvNativeDump::Run(*file, options, [&](const ZvNativeDumpItem& item) {
        hasProblems = hasProblems || item.isProblem;
        if (console.json) { // one object a line: dumps are long
            const nlohmann::ordered_json line{{"stream", item.stream},    {"offset", item.offset},
                                              {"length", item.length},    {"depth", item.depth},
                                              {"label", item.label},      {"value", item.value},
                                              {"problem", item.isProblem}};
            std::printf("%s\n", line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
        } else if (!console.quiet) {
            Print(item);
        }
        return !ZvPlatform::WasInterrupted();
    });
    if (!isNative)
        return console.Fail(ExitCode::BadInput, "'" + arguments.file + "' is no Zelvan drawing");
    return hasProblems ? ExitCode::BadInput : ExitCode::Ok;
}

} // namespace

void AddDumpCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command = app.add_subcommand(
        "dump", "Tell every record of a native file with offsets, the way one reads a format");
    auto arguments = std::make_shared<DumpArguments>();
    command->add_option("FILE", arguments->file, "File to tell")->required();
    command->add_option("--entities", arguments->entities, "Records of each entity list told in full")
        ->capture_default_str();
    command->add_flag("--no-payloads", arguments->noPayloads, "Leave the fields of entity payloads out");
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) { return RunDump(console, *arguments); };
    });
}
