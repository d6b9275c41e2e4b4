#include "Apps/zvd/Command.h"
#include "Zelvan/IZvFileProvider.h"
#include "Zelvan/ZvFileFormatServer.h"
#include <CLI/CLI.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

Json ProviderJson(const ZvFileFormatServer& server, const IZvFileProvider& provider) {
    std::vector<const ZvFileFormat*> formats = server.FileFormatInList(&provider);
    for (const ZvFileFormat* format : server.FileFormatOutList(&provider))
        if (std::find(formats.begin(), formats.end(), format) == formats.end())
            formats.push_back(format);
    Json list = Json::array();
    for (const ZvFileFormat* format : formats)
        list.push_back({{"id", format->id},
                        {"name", format->name.ToUtf8()},
                        {"extensions", format->extensions},
                        {"load", format->canLoad},
                        {"save", format->canSave}});
    return {{"provider", provider.ProviderName()}, {"formats", list}};
}

void Print(const Console& console, const Json& provider) {
    console.Line(provider["provider"].get<std::string>() + ":");
    for (const Json& format : provider["formats"]) {
        std::string extensions;
        for (const Json& extension : format["extensions"])
            extensions += " ." + extension.get<std::string>();
        console.Line(std::string("  ") + (format["load"].get<bool>() ? "load " : "     ") +
                     (format["save"].get<bool>() ? "save " : "     ") + format["name"].get<std::string>() +
                     extensions);
    }
}

ExitCode RunFormats(const Console& console) {
    const ZvFileFormatServer& server = ZvFileFormatServer::Application();
    Json providers = Json::array();
    for (const IZvFileProvider* provider : server.FileProviderList())
        providers.push_back(ProviderJson(server, *provider));
    console.Json({{"providers", providers}, {"saveExtensions", server.FileFormatOutExtensions()}});
    if (!console.json)
        for (const Json& provider : providers)
            Print(console, provider);
    return ExitCode::Ok;
}

} // namespace

void AddFormatsCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command = app.add_subcommand("formats", "The kinds of files that can be loaded and saved");
    command->callback([&run] { run = RunFormats; });
}
