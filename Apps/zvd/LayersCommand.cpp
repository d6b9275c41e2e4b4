#include "Apps/zvd/Command.h"
#include "Apps/zvd/DrawingFile.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

XStringW Wide(const std::string& text) {
    return XStringW::FromUtf8(text);
}

ZvLayer* Find(const ZvLayerTable& layers, const std::string& name, std::string& why) {
    ZvLayer* layer = layers.GetByName(Wide(name));
    if (!layer || layer->IsInternal()) {
        why = "there is no layer '" + name + "'";
        return nullptr;
    }
    return layer;
}

bool Known(bool known, const char* what, const std::string& name, std::string& why) {
    if (!known)
        why = std::string("there is no ") + what + " '" + name + "'";
    return known;
}

bool Place(ZvLayerTable& layers, const Words& words, bool above, std::string& why) {
    const ZvLayer* layer = Find(layers, words[0], why);
    const ZvLayer* other = layer ? Find(layers, words[1], why) : nullptr;
    if (!other)
        return false;
    if (layer == other)
        why = "'" + words[0] + "' cannot lie above or beneath itself";
    return above ? layers.MoveLayerAbove(layer, other) : layers.MoveLayerBeneath(layer, other);
}

bool Group(ZvLayerTable& layers, const Words& words, std::string& why) {
    ZvLayer* layer = Find(layers, words[0], why);
    if (!layer)
        return false;
    const XStringW group = Wide(words[1]);
    if (!layers.HasGroup(group) && !layers.AddGroup(group)) {
        why = "'" + words[1] +
              "' cannot name a group: a layer has the name, or it is not allowed; free is '" +
              layers.FindNewGroupName(group).ToUtf8() + "'";
        return false;
    }
    return layers.AddToGroup(layer, group);
}

bool RenameGroup(ZvLayerTable& layers, const Words& words, std::string& why) {
    if (!Known(layers.HasGroup(Wide(words[0])), "group", words[0], why))
        return false;
    if (layers.GroupRename(Wide(words[0]), Wide(words[1])))
        return true;
    why = "'" + words[1] + "' cannot name a group: it is taken, or not allowed";
    return false;
}

/// What an option does; false with the reason.
struct Change {
    const char* option;
    size_t words;
    const char* value;
    const char* help;
    bool (*make)(ZvLayerTable&, const Words&, std::string& why);
};

// In the order in which they are made, whatever the order on the command line.
const Change kChanges[] = {
    {"--apply-preset", 1, "NAME", "Give the layers the switches kept under a name",
     [](ZvLayerTable& layers, const Words& w, std::string& why) {
         return Known(layers.PresetGet(Wide(w[0])), "preset", w[0], why);
     }},
    {"--top", 1, "LAYER", "Draw the layer above all others",
     [](ZvLayerTable& layers, const Words& w, std::string& why) {
         const ZvLayer* layer = Find(layers, w[0], why);
         return layer && layers.MoveLayerToTop(layer);
     }},
    {"--bottom", 1, "LAYER", "Draw the layer beneath all others",
     [](ZvLayerTable& layers, const Words& w, std::string& why) {
         const ZvLayer* layer = Find(layers, w[0], why);
         return layer && layers.MoveLayerToBottom(layer);
     }},
    {"--above", 2, "LAYER OTHER", "Draw the layer right above the other",
     [](ZvLayerTable& layers, const Words& w, std::string& why) { return Place(layers, w, true, why); }},
    {"--beneath", 2, "LAYER OTHER", "Draw the layer right beneath the other",
     [](ZvLayerTable& layers, const Words& w, std::string& why) { return Place(layers, w, false, why); }},
    {"--group", 2, "LAYER GROUP", "Put the layer into a group, made when it is new", Group},
    {"--ungroup", 1, "LAYER", "Take the layer out of its group",
     [](ZvLayerTable& layers, const Words& w, std::string& why) {
         ZvLayer* layer = Find(layers, w[0], why);
         if (layer && !layers.RemoveFromGroup(layer))
             why = "the layer '" + w[0] + "' is in no group";
         return why.empty();
     }},
    {"--rename-group", 2, "OLD NEW", "Rename a group", RenameGroup},
    {"--delete-group", 1, "GROUP", "Forget a group; its layers stay",
     [](ZvLayerTable& layers, const Words& w, std::string& why) {
         return Known(layers.DeleteGroup(Wide(w[0])), "group", w[0], why);
     }},
    {"--save-preset", 1, "NAME", "Keep visibility, locks and the like of all layers under a name",
     [](ZvLayerTable& layers, const Words& w, std::string& why) {
         if (!layers.PresetSet(Wide(w[0])))
             why = "a preset needs a name";
         return why.empty();
     }},
    {"--delete-preset", 1, "NAME", "Forget a preset",
     [](ZvLayerTable& layers, const Words& w, std::string& why) {
         return Known(layers.PresetErase(Wide(w[0])), "preset", w[0], why);
     }},
};

struct LayersArguments {
    std::string file, out;
    std::vector<Words> changes{std::size(kChanges)};
};

Json LayerJson(const ZvLayer& layer) {
    return {{"name", layer.GetName().ToUtf8()}, {"group", layer.GetGroup().ToUtf8()},
            {"entities", layer.EntityCount()},  {"visible", layer.IsVisible()},
            {"locked", layer.IsLocked()},       {"printed", layer.WillPrint()},
            {"snappable", layer.IsSnappable()}, {"editable", layer.IsEditable()},
            {"strata", layer.GetStrata()}};
}

Json TableJson(ZvLayerTable& layers) {
    Json drawn = Json::array(), groups = Json::array(), presets = Json::array();
    const std::vector<ZvLayer*> order = layers.GetDrawOrder();
    for (auto layer = order.rbegin(); layer != order.rend(); ++layer)
        if ((*layer)->IsVisibleToUser() && !(*layer)->IsErased())
            drawn.push_back(LayerJson(**layer));
    for (const XStringW& group : layers.GetGroups())
        groups.push_back(group.ToUtf8());
    for (const XStringW& preset : layers.GetPresets())
        presets.push_back(preset.ToUtf8());
    return {{"layers", drawn}, {"groups", groups}, {"presets", presets}};
}

void Print(const Console& console, const Json& table) {
    console.Line("layers, the one on top first:");
    for (const Json& layer : table["layers"]) {
        std::string line = "  " + layer["name"].get<std::string>();
        if (const std::string group = layer["group"]; !group.empty())
            line += " (" + group + ")";
        const uint64_t entities = layer["entities"];
        line += ": " + Console::Grouped(entities) + (entities == 1 ? " entity" : " entities");
        for (const auto& [key, usual, text] : {std::tuple("visible", true, "hidden"),
                                               {"locked", false, "locked"},
                                               {"printed", true, "not printed"},
                                               {"editable", true, "read only"}})
            if (layer[key].get<bool>() != usual)
                line += std::string("; ") + text;
        console.Line(line);
    }
    for (const char* what : {"groups", "presets"}) {
        std::string names;
        for (const Json& name : table[what])
            names += (names.empty() ? "" : ", ") + name.get<std::string>();
        if (!names.empty())
            console.Line(std::string(what) + ": " + names);
    }
}

ExitCode RunLayers(const Console& console, const LayersArguments& arguments) {
    LoadedDrawing loaded;
    if (const ExitCode code = LoadDrawing(console, ZvPlatform::PathFromUtf8(arguments.file), {}, loaded);
        code != ExitCode::Ok)
        return code;
    console.ShowErrors(loaded.errors);
    ZvLayerTable& layers = *loaded.drawing->LayerTable();
    bool changed = false;
    for (size_t i = 0; i < std::size(kChanges); ++i)
        for (size_t at = 0; at + kChanges[i].words <= arguments.changes[i].size(); at += kChanges[i].words) {
            const auto first = arguments.changes[i].begin() + ptrdiff_t(at);
            std::string why;
            if (!kChanges[i].make(layers, Words(first, first + ptrdiff_t(kChanges[i].words)), why))
                return console.Fail(ExitCode::Usage,
                                    std::string(kChanges[i].option) + ": " + why + "; nothing was saved");
            changed = true;
        }
    if (changed || !arguments.out.empty()) {
        IOErrorSet errors;
        const std::string& out = arguments.out.empty() ? arguments.file : arguments.out;
        if (const ExitCode code = SaveDrawing(console, *loaded.drawing, ZvPlatform::PathFromUtf8(out), {},
                                              ZvNativeOptions().compressionLevel, errors);
            code != ExitCode::Ok)
            return code;
        console.ShowErrors(errors);
    }
    const Json table = TableJson(layers);
    console.Json(table);
    if (!console.json)
        Print(console, table);
    return ExitCode::Ok;
}

} // namespace

void AddLayersCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command =
        app.add_subcommand("layers", "List the layers of a drawing; order, group and switch them");
    auto arguments = std::make_shared<LayersArguments>();
    command->add_option("FILE", arguments->file, "Drawing; saved when something is changed")->required();
    command->add_option("--out", arguments->out, "Save there instead");
    for (size_t i = 0; i < std::size(kChanges); ++i)
        command->add_option(kChanges[i].option, arguments->changes[i], kChanges[i].help)
            ->type_size(int(kChanges[i].words))
            ->allow_extra_args(false)
            ->option_text(kChanges[i].value);
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) { return RunLayers(console, *arguments); };
    });
}
