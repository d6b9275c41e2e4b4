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
    nlohmann::ordered_json damage = nlohmann::ordered_json::array(), layers = nlohmann::ordered_json::array(),
                           tables = nlohmann::ordered_json::array();
    for (const ZvNativeSalvage::Stretch& stretch : result.damage)
        damage.push_back(
            {{"offset", stretch.offset}, {"length", stretch.length}, {"records", stretch.records}});
    for (const ZvNativeSalvage::Layer& layer : result.layers)
        layers.push_back({{"name", layer.name},
                          {"kind", layer.isBlock ? "block" : "layer"},
                          {"layout", layer.sheet},
                          {"renamed", layer.renamed},
                          {"doubtfulName", layer.doubtfulName},
                          {"contentsLost", layer.contentsLost},
                          {"attributesLost", layer.attributesLost},
                          {"attributesUnknown", layer.attributesUnknown},
                          {"stated", layer.stated},
                          {"read", layer.read},
                          {"doubtful", layer.doubtful},
                          {"saved", layer.saved},
                          {"lost", layer.Lost()}});
    for (const ZvNativeSalvage::Table& table : result.tables)
        tables.push_back(
            {{"name", table.name}, {"layout", table.sheet}, {"stated", table.stated}, {"read", table.read}});
    return {{"file", from},
            {"saved", to},
            {"sound", result.wasSound},
            {"whole", result.isWhole},
            {"solid", result.solid},
            {"wasText", result.wasText},
            {"lostReturns", result.lostReturns},
            {"length", result.fileLength},
            {"statedLength", result.statedLength},
            {"bodyLength", result.bodyLength},
            {"statedBodyLength", result.statedBody},
            {"behind",
             {{"offset", result.behind.offset},
              {"length", result.behind.length},
              {"isDrawing", result.anotherBehind}}},
            {"headerLost", result.headerLost},
            {"settingsLost", result.settingsLost},
            {"clientsLost", result.clientsLost},
            {"blocks", result.blocks},
            {"damagedBlocks", result.damagedBlocks},
            {"objectsStated", result.stated},
            {"objectsRead", result.recordsFound},
            {"objectsSaved", result.saved},
            {"damage", damage},
            {"tables", tables},
            {"tablesLost", result.tablesLost},
            {"lostLayouts", result.lostLayouts},
            {"layers", layers},
            {"messages", ToJson(result.errors)}};
}

std::string BytesAt(uint64_t length, uint64_t offset) {
    return Count(length, "byte") + " at " + std::to_string(offset);
}

void PrintLengths(const Console& console, const Result& result) {
    if (result.wasText)
        console.Line(
            "  a transfer as text had put a carriage return in front of every line feed; that was undone" +
            std::string(result.isWhole ? "" : ", positions are those without these"));
    if (result.lostReturns)
        console.Line("  a transfer as text seems to have taken carriage returns away; "
                     "fetch the file again, as binary, to lose nothing");
    if (result.statedLength > result.fileLength)
        console.Line("  the file ends after " + Console::Grouped(result.fileLength) + " of the " +
                     Count(result.statedLength, "byte") + " that its header states");
    if (result.statedBody > result.bodyLength)
        console.Line("  its body inflates to " + Console::Grouped(result.bodyLength) + " of " +
                     Count(result.statedBody, "byte"));
    if (result.behind.length == 0)
        return;
    const std::string where = BytesAt(result.behind.length, result.behind.offset);
    console.Line(result.anotherBehind ? "  another drawing follows, " + where +
                                            "; it was left out: cut it off into a file of its own to have it"
                                      : "  " + where + " follow the end of the drawing; they were left out");
}

void PrintDamage(const Console& console, const Result& result) {
    PrintLengths(console, result);
    if (result.headerLost)
        console.Line("  the header is lost; the sections were found without it");
    if (result.settingsLost)
        console.Line("  the settings are lost; those of a new drawing take their place");
    if (result.clientsLost)
        console.Line("  the list of modules is lost; objects of modules other than the engine's are kept "
                     "without its name");
    for (const ZvNativeSalvage::Stretch& stretch : result.damage)
        console.Line("  damage within " + BytesAt(stretch.length, stretch.offset) +
                     (result.solid ? " of the inflated body" : "") +
                     (stretch.records ? ", " + Count(stretch.records, "record") + " found in them" : ""));
    for (const ZvNativeSalvage::Table& table : result.tables)
        console.Line("  " + Count(table.stated - table.read, "record") + " of " +
                     Console::Grouped(table.stated) + " of the table \"" + table.name + "\"" +
                     (table.sheet.empty() ? "" : " of layout \"" + table.sheet + "\"") + " lost");
    for (const std::string& layout : result.lostLayouts)
        console.Line("  layout \"" + layout + "\": what was drawn on it is lost");
    if (result.tablesLost)
        console.Line("  " + Count(result.tablesLost, "further table") + " lost");
    console.Line("  blocks: " + Console::Grouped(result.blocks) + " whole, " +
                 Console::Grouped(result.damagedBlocks) + " damaged");
}

std::string Told(const ZvNativeSalvage::Layer& layer) {
    std::string line = std::string(layer.isBlock ? "  block" : "  layer") + " \"" + layer.name + "\"";
    if (!layer.sheet.empty())
        line += " of layout \"" + layer.sheet + "\"";
    if (layer.contentsLost && layer.read == 0)
        line += ": all of its objects are lost, if it had any";
    else
        line += ": " + Count(layer.read, "object") + " read, " + Console::Grouped(layer.saved) + " saved";
    if (layer.Lost())
        line += ", " + Console::Grouped(layer.Lost()) + " lost";
    if (layer.doubtful)
        line += ", " + Console::Grouped(layer.doubtful) + " of those read from damaged blocks";
    if (layer.attributesLost)
        line += ", attributes of some or all of them are lost";
    else if (layer.attributesUnknown && layer.read > 0)
        line += ", their attributes are lost if they had any";
    if (layer.renamed)
        line += " (its own name is lost)";
    if (layer.doubtfulName)
        line += " (its name is from a damaged block)";
    return line;
}

void Print(const Console& console, const std::string& from, const std::string& to, const Result& result) {
    console.Line(from + (result.wasSound  ? ": nothing was wrong"
                         : result.isWhole ? ": damaged, but the drawing is whole"
                                          : ": damaged"));
    if (!result.wasSound)
        PrintDamage(console, result);
    uint64_t empty = 0;
    for (const ZvNativeSalvage::Layer& layer : result.layers)
        if (layer.read || layer.stated || layer.contentsLost || layer.renamed)
            console.Line(Told(layer));
        else
            ++empty;
    if (empty > 0)
        console.Line("  " + Count(empty, "layer") + " without objects");
    std::string sum = "saved " + Count(result.saved, "object");
    if (result.stated > result.saved)
        sum += " of the " + Console::Grouped(result.stated) + " that the file states, " +
               Console::Grouped(result.stated - result.saved) + " are lost";
    console.Line(sum + ": " + to);
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
