#include "Apps/zvd/Command.h"
#include "Apps/zvd/DrawingFile.h"
#include "Apps/zvd/RepairCommand.h"
#include "Zelvan/ZvNativeCheck.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

struct CheckArguments {
    std::vector<std::string> files;
    bool noDigests = false;
    bool repair = false;
    int level = 3;
};

nlohmann::ordered_json ToJson(const std::string& file, const ZvNativeCheck::Result& result) {
    nlohmann::ordered_json findings = nlohmann::ordered_json::array();
    for (const ZvNativeFinding& finding : result.findings)
        findings.push_back({{"offset", finding.offset},
                            {"inner", finding.inner},
                            {"where", finding.where},
                            {"what", finding.what},
                            {"loss", finding.loss}});
    return {{"file", file},
            {"sound", result.IsSound()},
            {"version", result.version},
            {"solid", result.isSolid},
            {"digest", result.hasDigest},
            {"entities", result.entities},
            {"unknownEntities", result.unknownEntities},
            {"blocks", result.blocks},
            {"records", result.records},
            {"findings", findings}};
}

void Print(const Console& console, const std::string& file, const ZvNativeCheck::Result& result) {
    if (result.IsSound()) {
        console.Line(file + ": sound (version " + std::to_string(result.version) + ", " +
                     Console::Grouped(result.entities) + " entities, " + Console::Grouped(result.records) +
                     " records, " + Console::Grouped(result.blocks) + " blocks" +
                     (result.hasDigest ? ", digest right)" : ", no digest)"));
        return;
    }
    console.Line(file + ": " + std::to_string(result.findings.size()) +
                 (result.truncatedList ? " and more" : "") +
                 (result.findings.size() == 1 && !result.truncatedList ? " fault" : " faults"));
    for (const ZvNativeFinding& finding : result.findings)
        console.Line("  at " + std::to_string(finding.offset) +
                     (finding.inner ? "+" + std::to_string(finding.inner) : "") + " " + finding.where + ": " +
                     finding.what + (finding.loss.empty() ? "" : "; lost: " + finding.loss));
}

ExitCode RunCheck(const Console& console, const CheckArguments& arguments) {
    if (arguments.repair && arguments.files.size() != 2)
        return console.Fail(ExitCode::Usage,
                            "--repair takes two files, the damaged one and the name for the repaired one");
    if (arguments.repair)
        return RepairFile(console, arguments.files[0], arguments.files[1], arguments.level);
    ExitCode worst = ExitCode::Ok;
    nlohmann::ordered_json reports = nlohmann::ordered_json::array();
    for (const std::string& name : arguments.files) {
        const std::filesystem::path path = ZvPlatform::PathFromUtf8(name);
        if (const ExitCode code = CheckInput(console, path); code != ExitCode::Ok) {
            worst = std::max(worst, code);
            continue;
        }
        std::string why;
        const auto file = ZvCore::DiskFile::Open(path, ZvCore::DiskFile::Mode::Read, why);
        if (!file) {
            worst = std::max(worst, console.Fail(ExitCode::NoInput, why));
            continue;
        }
        ConsoleProgress progress(console);
        ZvNativeCheck::Options options;
        options.digests = !arguments.noDigests;
        options.progress = &progress;
        const ZvNativeCheck::Result result = ZvNativeCheck::Run(*file, options);
        if (result.cancelled)
            return console.Fail(ExitCode::Interrupted, "interrupted");
        if (!result.IsSound())
            worst = std::max(worst, ExitCode::Findings);
        Print(console, name, result);
        reports.push_back(ToJson(name, result));
    }
    console.Json(reports);
    return worst;
}

} // namespace

void AddCheckCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command = app.add_subcommand(
        "check", "Examine native files: every fault with its byte offset and what it costs");
    auto arguments = std::make_shared<CheckArguments>();
    command->add_option("FILE", arguments->files, "Files to examine")->required();
    command->add_flag("--repair", arguments->repair,
                      "Read what can be read of the first file and save it as the second, with a report");
    command->add_option("--level", arguments->level, "Compression of the repaired file, 0 to 9")
        ->check(CLI::Range(0, 9));
    command->footer("With --repair: exit code 0 nothing was wrong, 1 something was and the rest is saved,\n"
                    "2 the second file is the first one, 4 nothing could be read and nothing was written.");
    command->add_flag("--no-digests", arguments->noDigests, "Do not compute the digests of file and blocks");
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) { return RunCheck(console, *arguments); };
    });
}
