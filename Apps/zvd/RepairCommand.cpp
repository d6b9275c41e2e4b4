#include "Apps/zvd/RepairCommand.h"
#include "Apps/zvd/DrawingFile.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvNativeSalvage.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Platform/Platform.h"
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

namespace {

using Result = ZvNativeSalvage::Result;

std::string Count(uint64_t number, const char* what) {
    return Console::Grouped(number) + " " + what + (number == 1 ? "" : "s");
}

/// The same file, be it under another name.
bool IsSameFile(const fs::path& a, const fs::path& b) {
    std::error_code failed;
    return fs::equivalent(a, b, failed) && !failed;
}

nlohmann::ordered_json ToJson(const std::string& from, const std::string& to, const Result& result) {
    nlohmann::ordered_json damage = nlohmann::ordered_json::array(), layers = nlohmann::ordered_json::array();
    for (const ZvNativeSalvage::Stretch& stretch : result.damage)
        damage.push_back(
            {{"offset", stretch.offset}, {"length", stretch.length}, {"records", stretch.records}});
    for (const ZvNativeSalvage::Layer& layer : result.layers)
        layers.push_back({{"name", layer.name},
                          {"kind", layer.isBlock ? "block" : "layer"},
                          {"layout", layer.sheet},
                          {"renamed", layer.renamed},
                          {"doubtfulName", layer.doubtfulName},
                          {"stated", layer.stated},
                          {"read", layer.read},
                          {"doubtful", layer.doubtful},
                          {"saved", layer.saved},
                          {"lost", layer.Lost()}});
    return {{"file", from},
            {"saved", to},
            {"sound", result.wasSound},
            {"solid", result.solid},
            {"headerLost", result.headerLost},
            {"settingsLost", result.settingsLost},
            {"clientsLost", result.clientsLost},
            {"blocks", result.blocks},
            {"damagedBlocks", result.damagedBlocks},
            {"objectsRead", result.recordsFound},
            {"objectsSaved", result.saved},
            {"damage", damage},
            {"layers", layers},
            {"messages", ToJson(result.errors)}};
}

void PrintDamage(const Console& console, const Result& result) {
    if (result.headerLost)
        console.Line("  the header is lost; the sections were found without it");
    if (result.settingsLost)
        console.Line("  the settings are lost; those of a new drawing take their place");
    if (result.clientsLost)
        console.Line("  the list of modules is lost; objects of modules other than the engine's are kept "
                     "without its name");
    for (const ZvNativeSalvage::Stretch& stretch : result.damage)
        console.Line("  damage within " + Count(stretch.length, "byte") + " at " +
                     std::to_string(stretch.offset) + (result.solid ? " of the inflated body" : "") +
                     (stretch.records ? ", " + Count(stretch.records, "record") + " found in them" : ""));
    console.Line("  blocks: " + Console::Grouped(result.blocks) + " whole, " +
                 Console::Grouped(result.damagedBlocks) + " damaged");
}

void Print(const Console& console, const std::string& from, const std::string& to, const Result& result) {
    console.Line(from + (result.wasSound ? ": nothing was wrong" : ": damaged"));
    if (!result.wasSound)
        PrintDamage(console, result);
    for (const ZvNativeSalvage::Layer& layer : result.layers) {
        std::string line = std::string(layer.isBlock ? "  block" : "  layer") + " \"" + layer.name + "\"";
        if (!layer.sheet.empty())
            line += " of layout \"" + layer.sheet + "\"";
        line += ": " + Count(layer.read, "object") + " read, " + Console::Grouped(layer.saved) + " saved";
        if (layer.Lost())
            line += ", " + Console::Grouped(layer.Lost()) + " lost";
        if (layer.doubtful)
            line += ", " + Console::Grouped(layer.doubtful) + " of those read from damaged blocks";
        if (layer.renamed)
            line += " (its own name is lost)";
        if (layer.doubtfulName)
            line += " (its name is from a damaged block)";
        console.Line(line);
    }
    console.Line("saved " + Count(result.saved, "object") + " to " + to);
}

} // namespace

ExitCode RepairFile(const Console& console, const std::string& from, const std::string& to, int level) {
    const fs::path source = ZvPlatform::PathFromUtf8(from), target = ZvPlatform::PathFromUtf8(to);
    if (const ExitCode code = CheckInput(console, source); code != ExitCode::Ok)
        return code;
    if (IsSameFile(source, target))
        return console.Fail(ExitCode::Usage,
                            "'" + to + "' is the damaged file itself; give the repaired one another name");
    const ZvFileFormat* format = ZvFileFormatServer::Application().GetSaveFormat(target);
    if (!format || format != ZvFileFormatServer::Application().GetSaveFormat("repaired.zvd"))
        return console.Fail(ExitCode::Usage, "'" + to + "' is no name of a drawing; let it end in .zvd");
    std::string why;
    auto file = ZvCore::DiskFile::Open(source, ZvCore::DiskFile::Mode::Read, why);
    if (!file)
        return console.Fail(ExitCode::NoInput, why);
    ZvDrawing drawing;
    ConsoleProgress progress(console);
    ZvNativeSalvage::Options options;
    options.progress = &progress;
    const Result result = ZvNativeSalvage::Run(*file, drawing, options);
    if (result.status == Zv::Status::Cancelled || ZvPlatform::WasInterrupted())
        return console.Fail(ExitCode::Interrupted, "interrupted; nothing was written");
    if (!Zv::Ok(result.status))
        return console.Fail(ExitCode::BadInput, "nothing of '" + from +
                                                    "' could be read as a drawing; nothing was written, "
                                                    "restore it from a copy");
    file.reset();
    IOErrorSet errors;
    if (const ExitCode code = SaveDrawing(console, drawing, target, {}, level, errors); code != ExitCode::Ok)
        return code;
    console.ShowErrors(errors);
    Print(console, from, to, result);
    console.Json(ToJson(from, to, result));
    return result.wasSound ? ExitCode::Ok : ExitCode::Findings;
}
