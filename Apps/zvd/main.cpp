#include "Apps/zvd/Command.h"
#include "ZvCore/Platform/Platform.h"
#include "ZvCore/Version.h"
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>
#ifdef ZELVAN_HAVE_GIS
#include "Modules/Gis/ZvGdalProvider.h"
#include "Zelvan/ZvFileFormatServer.h"
#endif

namespace {

constexpr const char* kAbout =
    "zvd: looks at, checks, converts and draws Zelvan drawings (.zvd) and maps in other formats.";
constexpr const char* kFooter = R"(
Examples:
  zvd convert coast.gpkg coast.zvd        a map becomes a drawing
  zvd info coast.zvd                      what is in it
  zvd render coast.zvd coast.png          a picture of it
  zvd render coast.zvd coast.pdf --scale 50000000 --paper A3
  zvd check *.zvd                         are these files sound?
  zvd check --repair bad.zvd good.zvd     save what can be read of a damaged one
  zvd convert coast.zvd coast.fgb         and back
  zvd edit plan.zvd script.txt            edits by the lines of a script, with undo and redo
  zvd recover plans/                      after a power cut: whole drawings again

Exit codes: 0 fine, 1 check found faults (or repaired some), 2 wrong usage, 3 input missing or of no known kind,
4 input damaged, 5 output cannot be written, 70 fault of the program, 130 interrupted.)";

ExitCode Run(int argc, char** argv) {
    CLI::App app{kAbout, "zvd"};
    app.footer(kFooter);
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("zvd ") + ZvCore::Version::Text());
    Console console;
    CommandRun run;
    AddInfoCommand(app, run);
    AddCheckCommand(app, run);
    AddDumpCommand(app, run);
    AddConvertCommand(app, run);
    AddRenderCommand(app, run);
    AddBenchDataCommand(app, run);
    AddDemoCommand(app, run);
    AddRecoverCommand(app, run);
    AddEditCommand(app, run);
    AddLayersCommand(app, run);
    AddFormatsCommand(app, run);
    for (CLI::App* command : app.get_subcommands({})) {
        command->add_flag("--json", console.json, "Report as JSON on standard output");
        command->add_flag("-q,--quiet", console.quiet, "Say nothing but errors");
    }
    try {
        std::vector<std::string> arguments = ZvPlatform::CommandLine(argc, argv);
        std::reverse(arguments.begin(), arguments.end()); // as the parser wants them, without the program
        arguments.pop_back();
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ExitCode::Ok : ExitCode::Usage;
    }
#ifdef ZELVAN_HAVE_GIS
    ZvGdalProvider gdal;
    ZvFileFormatServer::Application().RegisterProvider(&gdal);
#endif
    const ExitCode code = run(console);
#ifdef ZELVAN_HAVE_GIS
    ZvFileFormatServer::Application().UnRegisterProvider(&gdal);
#endif
    return ZvPlatform::WasInterrupted() ? ExitCode::Interrupted : code;
}

} // namespace

int main(int argc, char** argv) {
    ZvPlatform::InstallInterruptHandler();
    try {
        return int(Run(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zvd: internal error: %s; please report it with the command that you ran\n",
                     error.what());
        return int(ExitCode::Internal);
    }
}
