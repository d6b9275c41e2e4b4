#include "Apps/zvd/Command.h"
#include "Apps/zvd/DrawingFile.h"
#include "Apps/zvd/DrawingUnits.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvSelection.h"
#include "Zelvan/ZvTableTable.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/MD5.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <cstdio>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;

namespace {

struct InfoArguments {
    std::string file;
    std::vector<uint32_t> entities;
    std::string units, at, within = "0";
};

Json BoundsJson(const ZvBounds3D& b) {
    if (b.IsNull())
        return nullptr;
    return {b.minX, b.minY, b.minZ, b.maxX, b.maxY, b.maxZ};
}

// Header and digest of a native file; null for other formats.
Json HeaderJson(const std::filesystem::path& path) {
    std::string why;
    const auto file = ZvCore::DiskFile::Open(path, ZvCore::DiskFile::Mode::Read, why);
    uint8_t bytes[ZvNativeHeader::kSize];
    if (!file || file->Read(bytes, sizeof bytes) != sizeof bytes)
        return nullptr;
    ZvNativeHeader header;
    header.Parse(bytes);
    if (!header.HasMagic())
        return nullptr;
    XStringW reason;
    file->Seek(0);
    const bool right = ZvNativeFile::IsValidFile(file.get(), true, reason);
    return {{"version", header.version},
            {"minimumReader", header.minimumReader},
            {"length", header.length},
            {"solid", header.IsSolid()},
            {"builtOn", DateTime{header.buildStamp}.ToString().ToUtf8()},
            {"checksum", !header.HasDigest() ? "none"
                         : right             ? "right"
                                             : "wrong"},
            {"digest", ZvCore::MD5::ToHex(header.digest)}};
}

Json IndexJson(const ZvIndexBlockStats& stats) {
    return {{"nodes", stats.nodes},
            {"emptyLeaves", stats.emptyLeaves},
            {"levels", stats.maxDepth + 1},
            {"entitiesInInner", stats.entitiesInInner},
            {"largestNode", stats.largestNode},
            {"memory", stats.memory}};
}

Json LayerJson(const ZvLayer& layer) {
    std::map<std::string, uint64_t> kinds;
    uint64_t vertices = 0, memory = 0;
    layer.Tree().ForEach([&](ZvEntity* entity) {
        if (!entity->IsErased()) {
            ++kinds[entity->VerbalName().ToUtf8()];
            vertices += uint64_t(entity->MLVGetVertexCount());
            memory += entity->MemUsage();
        }
        return true;
    });
    Json json{{"name", layer.GetName().ToUtf8()},
              {"entities", layer.Tree().CountNonErased()},
              {"kinds", kinds},
              {"vertices", vertices},
              {"memory", memory},
              {"visible", layer.IsVisible()},
              {"locked", layer.IsLocked()},
              {"color", layer.GetColor().ToString().ToUtf8()},
              {"extents", BoundsJson(layer.Tree().Bounds())},
              {"index", IndexJson(layer.Tree().GetIndexBlockStats())}};
    if (const ZvAttributeTable* table = layer.AttributesOrNull()) {
        Json fields = Json::array();
        for (const ZvAttributeTable::Field& field : table->Fields())
            fields.push_back(field.name.ToUtf8());
        json["fields"] = fields;
    }
    return json;
}

std::string ValueText(const ZvProperty::Value& value) {
    if (const XStringW* text = std::get_if<XStringW>(&value))
        return text->ToUtf8();
    if (const double* number = std::get_if<double>(&value))
        return Json(*number).dump();
    if (const int64_t* number = std::get_if<int64_t>(&value))
        return std::to_string(*number);
    return std::get<bool>(value) ? "yes" : "no";
}

Json AttributeJson(const ZvAttributeTable::Value& value) {
    if (const auto* number = std::get_if<int64_t>(&value))
        return *number;
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* text = std::get_if<XStringW>(&value))
        return text->ToUtf8();
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag;
    if (const auto* bytes = std::get_if<std::vector<uint8_t>>(&value))
        return std::to_string(bytes->size()) + " bytes";
    if (const auto* date = std::get_if<DateTime>(&value))
        return date->ToString().ToUtf8();
    return nullptr;
}

Json EntityJson(const ZvEntity& entity) {
    ZvPropertyGatherer gatherer;
    entity.GetProperties(gatherer, true);
    Json properties;
    for (const ZvProperty& property : gatherer.Items())
        properties[property.id] = ValueText(property.value);
    ZvQueryResults told;
    entity.Query(told);
    Json details = Json::object();
    for (const auto& [label, text] : told.lines)
        details[label.ToUtf8()] = text.ToUtf8();
    Json json{{"name", entity.Name32()},
              {"kind", entity.VerbalName().ToUtf8()},
              {"layer", entity.GetLayerName().ToUtf8()},
              {"extents", BoundsJson(entity.Bounds3D())},
              {"properties", properties},
              {"details", details}};
    const ZvLayer* layer = entity.GetLayer();
    if (const ZvAttributeTable* table = layer ? layer->AttributesOrNull() : nullptr) {
        Json attributes = Json::object();
        for (int field = 0; field < table->FieldCount(); ++field)
            attributes[table->Fields()[size_t(field)].name.ToUtf8()] =
                AttributeJson(table->Get(entity.Name(), field));
        json["attributes"] = attributes;
    }
    return json;
}

Json DrawingJson(const LoadedDrawing& loaded, const std::filesystem::path& path) {
    ZvDrawing& drawing = *loaded.drawing;
    Json layers = Json::array(), tables = Json::object();
    for (ZvLayer* layer : drawing.LayerTable()->GetDrawOrder())
        if (!layer->IsInternal() || layer->EntityCount())
            layers.push_back(LayerJson(*layer));
    for (int i = 0; i < drawing.TableTable()->Count(); ++i) {
        const ZvTable* table = drawing.TableTable()->Get(i);
        tables[table->DefaultNameBase().Trimmed().ToUtf8() + " (" + std::to_string(table->GetTableCode()) +
               ")"] = table->Count();
    }
    std::error_code failed;
    const ZvCoordSystem& system = drawing.UcsTable()->CoordinateSystem();
    return {{"file", ZvPlatform::PathToUtf8(path)},
            {"format", loaded.format->name.ToUtf8()},
            {"bytes", std::filesystem::file_size(path, failed)},
            {"header", HeaderJson(path)},
            {"entities", drawing.NameTable().Count()},
            {"extents", BoundsJson(drawing.Bounds())},
            {"extentsText", DrawingUnits(drawing).ExtentText(drawing.Bounds())},
            {"coordinateSystem",
             system.IsSet() ? Json(system.name.ToUtf8() + " " + system.authority.ToUtf8()) : Json(nullptr)},
            {"linearPrecision", drawing.LinearPrecision()},
            {"memory", drawing.MemUsage()},
            {"loadSeconds", loaded.seconds},
            {"layers", layers},
            {"tables", tables}};
}

// Length and area of each layer that users see and of all, as texts in the user's unit.
Json MeasuresJson(ZvDrawing& drawing) {
    const DrawingUnits units(drawing);
    const auto json = [&](const XStringW& layer, const DrawingMeasure& measure) {
        return Json{{"layer", layer.ToUtf8()},
                    {"entities", measure.entities},
                    {"length", units.LengthText(measure.length)},
                    {"area", units.AreaText(measure.area)}};
    };
    Json list = Json::array();
    DrawingMeasure all;
    for (const ZvTableRecord* record : drawing.LayerTable()->GetUserEnumList()) {
        DrawingMeasure measure;
        static_cast<const ZvLayer*>(record)->Tree().ForEach([&](ZvEntity* entity) {
            measure.Add(*entity);
            return true;
        });
        list.push_back(json(record->GetName(), measure));
        all.Add(measure);
    }
    list.push_back(json(u"", all));
    return list;
}

void PrintMeasures(const Console& console, const Json& measures, bool geographic) {
    console.Line(geographic ? "  measured on a flat map of degrees, to scale on the equator only:"
                            : "  measured:");
    for (const Json& measure : measures) {
        const std::string layer = measure["layer"].get<std::string>();
        console.Line("    " + (layer.empty() ? "all" : layer) + ": length " +
                     measure["length"].get<std::string>() + ", area " + measure["area"].get<std::string>());
    }
}

void Print(const Console& console, const Json& info) {
    console.Line(info["file"].get<std::string>() + ": " + info["format"].get<std::string>() + ", " +
                 Console::Human(info["bytes"].get<uint64_t>()));
    if (const Json& header = info["header"]; !header.is_null())
        console.Line("  version " + std::to_string(header["version"].get<int>()) + " (readable from " +
                     std::to_string(header["minimumReader"].get<int>()) + " on), " +
                     (header["solid"].get<bool>() ? "one solid block" : "blocks") + ", checksum " +
                     header["checksum"].get<std::string>());
    console.Line("  " + Console::Grouped(info["entities"].get<uint64_t>()) + " entities, extents " +
                 info["extentsText"].get<std::string>());
    if (!info["coordinateSystem"].is_null())
        console.Line("  coordinate system " + info["coordinateSystem"].get<std::string>());
    char line[256];
    std::snprintf(line, sizeof line, "  in memory %s, loaded in %.3f s, vertices in steps of at most %g",
                  Console::Human(info["memory"].get<uint64_t>()).c_str(), info["loadSeconds"].get<double>(),
                  info["linearPrecision"].get<double>());
    console.Line(line);
    console.Line("  layers:");
    for (const Json& layer : info["layers"]) {
        std::string kinds;
        for (const auto& [kind, count] : layer["kinds"].items())
            kinds += (kinds.empty() ? "" : ", ") + Console::Grouped(count.get<uint64_t>()) + " " + kind;
        console.Line(
            "    " + layer["name"].get<std::string>() + ": " + (kinds.empty() ? "empty" : kinds) + "; " +
            Console::Grouped(layer["vertices"].get<uint64_t>()) + " vertices; colour " +
            layer["color"].get<std::string>() + (layer["visible"].get<bool>() ? "" : "; hidden") +
            (layer["locked"].get<bool>() ? "; locked" : "") +
            (layer.contains("fields") ? "; " + std::to_string(layer["fields"].size()) + " fields" : ""));
    }
    std::string tables;
    for (const auto& [name, count] : info["tables"].items())
        tables += (tables.empty() ? "" : ", ") + name + " " + std::to_string(count.get<int>());
    console.Line("  records: " + tables);
}

ExitCode ShowInUnits(const Console& console, ZvDrawing& drawing, const std::string& name) {
    std::string why;
    const auto unit = DrawingUnits(drawing).FindUnit(name, why);
    ZvUcs* ucs = drawing.UcsTable()->GetCurrent();
    if (!unit || !ucs)
        return console.Fail(ExitCode::Usage, "--units: " + why);
    ucs->SetScale(unit->perWorldUnit); // of the drawing in memory, which nobody saves
    ucs->SetUnitNames(unit->name, unit->abbreviation);
    return ExitCode::Ok;
}

// The entities at the place, nearest first, behind those asked for by name.
ExitCode FindAt(const Console& console, const ZvDrawing& drawing, const InfoArguments& arguments,
                std::vector<uint32_t>& names) {
    const DrawingUnits units(drawing);
    const auto at = units.Place(arguments.at);
    const auto within = units.Distance(arguments.within);
    if (!at)
        return console.Fail(ExitCode::Usage, "--at '" + arguments.at + "': " + units.PlaceHint());
    if (!within || *within < 0)
        return console.Fail(ExitCode::Usage, "--within '" + arguments.within +
                                                 "' is no distance: write for example " +
                                                 units.LengthText(1));
    ZvSelection found;
    drawing.SelectCylinderWorldRadius(Ray3d{*at}, *within, found);
    for (int i = 0; i < found.Count(); ++i)
        names.push_back(found.GetEntity(i)->Name32());
    return ExitCode::Ok;
}

ExitCode RunInfo(const Console& console, const InfoArguments& arguments) {
    const std::filesystem::path path = ZvPlatform::PathFromUtf8(arguments.file);
    LoadedDrawing loaded;
    if (const ExitCode code = LoadDrawing(console, path, {}, loaded); code != ExitCode::Ok)
        return code;
    console.ShowErrors(loaded.errors);
    if (!arguments.units.empty())
        if (const ExitCode code = ShowInUnits(console, *loaded.drawing, arguments.units);
            code != ExitCode::Ok)
            return code;
    std::vector<uint32_t> names = arguments.entities;
    if (!arguments.at.empty())
        if (const ExitCode code = FindAt(console, *loaded.drawing, arguments, names); code != ExitCode::Ok)
            return code;
    Json entities = Json::array();
    for (uint32_t name : names) {
        const ZvEntity* entity = loaded.drawing->GetEntity(name);
        if (!entity)
            return console.Fail(ExitCode::Usage, "there is no entity " + std::to_string(name) + " in '" +
                                                     arguments.file + "'");
        entities.push_back(EntityJson(*entity));
    }
    if (!arguments.entities.empty() || !arguments.at.empty()) {
        console.Json(entities);
        for (const Json& entity : entities)
            console.Line(entity.dump(2, ' ', false, Json::error_handler_t::replace));
        return ExitCode::Ok;
    }
    Json info = DrawingJson(loaded, path);
    if (!arguments.units.empty())
        info["measures"] = MeasuresJson(*loaded.drawing);
    console.Json(info);
    if (!console.json)
        Print(console, info);
    if (!console.json && info.contains("measures"))
        PrintMeasures(console, info["measures"],
                      loaded.drawing->UcsTable()->CoordinateSystem().kind == ZvCoordSystem::Kind::Geographic);
    return ExitCode::Ok;
}

} // namespace

void AddInfoCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command =
        app.add_subcommand("info", "What is in a drawing or map: layers, kinds, tables, extents, checksum");
    auto arguments = std::make_shared<InfoArguments>();
    command->add_option("FILE", arguments->file, "Drawing or map")->required();
    command->add_option("--entity", arguments->entities,
                        "Tell the entity of this name with its properties and attributes");
    command->add_option("--at", arguments->at, "Tell the entities at X,Y, nearest first");
    command->add_option("--within", arguments->within, "How far from there: 5, 2.5km, 10ft")
        ->capture_default_str();
    command->add_option(
        "--units", arguments->units,
        "Show coordinates in this unit (km, m, cm, mm, in, pt, ft, ...), measure lengths and areas");
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) { return RunInfo(console, *arguments); };
    });
}
