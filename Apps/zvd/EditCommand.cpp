#include "Apps/zvd/Command.h"
#include "Apps/zvd/ConsoleHost.h"
#include "Apps/zvd/DrawingFile.h"
#include "Apps/zvd/EditSession.h"
#include "Zelvan/ZvDrawingIO.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

struct EditArguments {
    std::string file, script;
    bool keepGoing = false;
    bool fresh = false;
};

// Each line as it is done: who reads along sees what happens.
void Tell(const Console& console, int number, const EditLine& line, const EditOutcome& outcome) {
    if (!console.json) {
        if (outcome.done)
            console.Line(std::to_string(number) + ": " + outcome.text);
        return;
    }
    nlohmann::ordered_json report = {
        {"line", number}, {"command", line.command}, {"done", outcome.done}, {"text", outcome.text}};
    if (!outcome.names.empty())
        report["names"] = outcome.names;
    std::cout << report.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
}

ExitCode RunLines(const Console& console, std::istream& script, const EditArguments& arguments,
                  EditSession& session) {
    ExitCode code = ExitCode::Ok;
    std::string text;
    for (int number = 1; std::getline(script, text); ++number) {
        if (ZvPlatform::WasInterrupted())
            return console.Fail(ExitCode::Interrupted, "interrupted before line " + std::to_string(number));
        if (number == 1 && text.starts_with("\xEF\xBB\xBF"))
            text.erase(0, 3); // the mark that some editors put in front of UTF-8
        EditLine line;
        EditOutcome outcome;
        if (EditLine::Parse(text, line, outcome.text)) {
            if (line.command.empty())
                continue;
            outcome = session.Run(line);
        }
        Tell(console, number, line, outcome);
        if (outcome.done)
            continue;
        code = ExitCode::Findings;
        if (!console.json)
            console.Fail(code, "line " + std::to_string(number) + ": " + outcome.text);
        if (!arguments.keepGoing)
            break;
    }
    return code;
}

ExitCode Open(const Console& console, const std::filesystem::path& file, ZvDrawing& drawing) {
    if (const ExitCode code = CheckInput(console, file); code != ExitCode::Ok)
        return code;
    IOErrorSet errors;
    const Zv::Status status = drawing.DrawingIO()->LoadFile(file, ZvIOFlag::Quiet, &errors);
    console.ShowErrors(errors);
    if (Zv::Ok(status))
        return ExitCode::Ok;
    return console.Fail(ExitCode::BadInput, "cannot load '" + ZvPlatform::PathToUtf8(file) + "'");
}

ExitCode RunEdit(const Console& console, const EditArguments& arguments) {
    const std::filesystem::path file = ZvPlatform::PathFromUtf8(arguments.file);
    std::ifstream opened;
    if (arguments.script != "-") {
        const std::filesystem::path path = ZvPlatform::PathFromUtf8(arguments.script);
        opened.open(path, std::ios::binary);
        if (!opened || std::filesystem::is_directory(path))
            return console.Fail(ExitCode::NoInput, "cannot read the script '" + arguments.script + "'");
    }
    LineHost host(console);
    ZvDrawing drawing;
    drawing.SetHost(&host);
    if (!arguments.fresh || std::filesystem::exists(file))
        if (const ExitCode code = Open(console, file, drawing); code != ExitCode::Ok)
            return code;
    EditSession session(drawing, host, file);
    const ExitCode code = RunLines(console, arguments.script == "-" ? std::cin : opened, arguments, session);
    if (drawing.IsModified())
        console.Warn("there are changes that no line saved");
    return code;
}

} // namespace

void AddEditCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command =
        app.add_subcommand("edit", "Change a drawing by the lines of a script, with undo and redo");
    auto arguments = std::make_shared<EditArguments>();
    command->add_option("FILE", arguments->file, "Drawing to change; only 'save' lines write it")->required();
    command->add_option("SCRIPT", arguments->script, "Lines of the edit language, - for standard input")
        ->required();
    command->add_flag("--keep-going", arguments->keepGoing, "Go on behind a line that cannot be done");
    command->add_flag("--new", arguments->fresh, "Begin an empty drawing where there is no file");
    command->footer("The language (Docs/edit-language.md):\n" + EditSession::Help());
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) { return RunEdit(console, *arguments); };
    });
}
