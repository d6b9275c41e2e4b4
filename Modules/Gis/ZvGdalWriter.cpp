#include "Modules/Gis/ZvGdalWriter.h"
#include "Modules/Gis/ZvGdalSession.h"
#include "Modules/Gis/ZvGdalStyle.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvSelection.h"
#include "ZvCore/Guid.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <gdal_priv.h>
#include <ogrsf_frmts.h>
#include <set>

namespace fs = std::filesystem;

namespace {

constexpr int64_t kProgressEvery = 1024;
constexpr const char* kLayerFieldName = "layer";

int FamilyOf(ZvEntity& entity) {
    if (ZvXLine* line = entity.ToXLine())
        return line->IsPolygon() ? 2 : 1;
    return entity.IsPointEnt() || entity.IsMultiPoint() ? 0 : 3;
}

void NoteDimensions(ZvEntity& entity, bool& multi, bool& z, bool& m) {
    if (ZvXLine* line = entity.ToXLine()) {
        std::vector<uint32_t> holes;
        multi = multi ||
                (line->IsPolygon() ? line->NumParts() > 1 &&
                                         line->GetOuterParts(line->GetOuterParts(0) + 1) < line->NumParts()
                                   : line->NumParts() > 1);
        z = z || line->HasZ();
        m = m || line->HasM();
    } else {
        multi = multi || entity.IsMultiPoint();
        const ZvBounds3D box = entity.Bounds3D();
        z = z || box.minZ != 0 || box.maxZ != 0;
    }
}

OGRFieldType FieldType(ZvAttributeTable::Type type, OGRFieldSubType& sub) {
    sub = OFSTNone;
    switch (type) {
    case ZvAttributeTable::Type::Bool:
        sub = OFSTBoolean;
        return OFTInteger;
    case ZvAttributeTable::Type::Int64:
        return OFTInteger64;
    case ZvAttributeTable::Type::Double:
        return OFTReal;
    case ZvAttributeTable::Type::Binary:
        return OFTBinary;
    default:
        return OFTString;
    }
}

// A layer of a multi type takes no single geometries in strict formats.
std::unique_ptr<OGRGeometry> ToMulti(std::unique_ptr<OGRGeometry> geometry) {
    const OGRwkbGeometryType multi = OGR_GT_GetCollection(geometry->getGeometryType());
    return std::unique_ptr<OGRGeometry>(OGRGeometryFactory::forceTo(geometry.release(), multi));
}

} // namespace

ZvGdalWriter::ZvGdalWriter(ZvDrawing& drawing, const ZvFileOptions& options, IOErrorSet& errors,
                           ZvCore::IProgress& progress)
    : m_drawing(drawing), m_options(options), m_errors(errors), m_progress(progress),
      m_losses(options.losses ? *options.losses : m_ownLosses), m_convert(m_losses) {
    ZvGdalInit();
}

ZvGdalWriter::~ZvGdalWriter() = default;

Zv::Status ZvGdalWriter::Write(const fs::path& file, const std::string& driver) {
    m_driver = driver;
    m_isDxf = driver == "DXF";
    m_oneKind = driver == "ESRI Shapefile";
    static const std::set<std::string> kOneLayer{"GeoJSON", "GeoJSONSeq", "FlatGeobuf",
                                                 "DXF",     "CSV",        "GMLAS"};
    m_oneLayer = kOneLayer.contains(driver);
    CollectLayers();
    const fs::path parent = file.has_parent_path() ? file.parent_path() : fs::path(".");
    const fs::path folder = parent / (".zelvan-" + Guid::New().ToString().ToUtf8().substr(0, 8));
    std::error_code failed;
    if (!fs::create_directory(folder, failed)) {
        m_errors.Add(0, "cannot write into '" + ZvPlatform::PathToUtf8(parent) + "': " + failed.message() +
                            "; choose a folder that exists and is writable");
        return Zv::Status::Failure;
    }
    Zv::Status status = WriteAll(folder / file.filename());
    if (status != Zv::Status::Cancelled && !IsOnDisk(folder, file))
        status = Zv::Status::Failure;
    if (Zv::Ok(status) && !PutInPlace(folder, file))
        status = Zv::Status::Failure;
    fs::remove_all(folder, failed);
    return status;
}

Zv::Status ZvGdalWriter::WriteAll(const fs::path& file) {
    ZvGdalMessages messages(m_errors);
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(m_driver.c_str());
    const std::string path = ZvPlatform::PathToUtf8(file);
    GDALDataset* target = driver ? driver->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr) : nullptr;
    if (!target) {
        m_errors.Add(0, "cannot make '" + path + "' as " + m_driver);
        return Zv::Status::Failure;
    }
    messages.SetSubject([this] { return Subject(); });
    Zv::Status status = Zv::Status::Success;
    for (const Plan& plan : MakePlans())
        if (status = WriteLayer(*target, plan); !Zv::Ok(status))
            break;
    target->FlushCache(true);
    GDALClose(target); // most drivers write the rest here; what goes wrong comes as a message
    if (Zv::Ok(status) && !messages.LastFailure().empty())
        status = Zv::Status::Failure;
    return status;
}

// Some drivers do not look whether their writes succeed. What the disk says comes before what they say.
bool ZvGdalWriter::IsOnDisk(const fs::path& folder, const fs::path& file) {
    std::error_code failed;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, failed)) {
        if (!entry.is_regular_file(failed))
            continue;
        const std::string why = ZvPlatform::SyncAndProbeGrowth(entry.path());
        if (why.empty())
            continue;
        const IOErrorSet told = m_errors;
        m_errors.Clear();
        m_errors.Add(0, "cannot write '" + ZvPlatform::PathToUtf8(file) + "': " + why);
        m_errors.AddAll(told);
        return false;
    }
    return true;
}

// Every file that the library made (sidecars too) replaces the one of that name beside the target.
bool ZvGdalWriter::PutInPlace(const fs::path& folder, const fs::path& file) {
    std::vector<fs::path> made;
    std::error_code failed;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, failed))
        made.push_back(entry.path());
    std::sort(made.begin(), made.end());
    for (const fs::path& from : made) {
        const fs::path to = file.parent_path() / from.filename();
        const std::string why = ZvPlatform::RenameReplace(from, to);
        if (why.empty())
            continue;
        m_errors.Add(0, "cannot put '" + ZvPlatform::PathToUtf8(to) + "' in place: " + why);
        return false;
    }
    return !made.empty();
}

bool ZvGdalWriter::IsSelected(const ZvEntity& entity) const {
    return !m_options.selection || m_options.selection->Contains(entity.Name());
}

void ZvGdalWriter::CollectLayers() {
    for (const ZvLayer* layer : m_drawing.LayerTable()->GetDrawOrder()) {
        const bool hasFields = layer->AttributesOrNull() && layer->AttributesOrNull()->FieldCount() > 0;
        const size_t count = layer->Tree().CountNonErased();
        if (layer->IsInternal() || (count == 0 && !hasFields))
            continue;
        m_layers.push_back(layer);
        m_total += int64_t(count);
    }
}

std::vector<ZvGdalWriter::Plan> ZvGdalWriter::MakePlans() const {
    std::vector<Plan> whole;
    if (m_oneLayer && !m_layers.empty()) {
        Plan all;
        all.name = m_isDxf ? "entities" : m_layers.size() == 1 ? m_layers[0]->GetName().ToUtf8() : "drawing";
        all.sources = m_layers;
        whole.push_back(all);
    } else {
        for (const ZvLayer* layer : m_layers)
            whole.push_back({layer->GetName().ToUtf8(), {layer}});
    }
    std::vector<Plan> plans;
    for (Plan& plan : whole) {
        Survey(plan);
        if (!m_oneKind || (plan.kinds & (plan.kinds - 1)) == 0) {
            plans.push_back(plan);
            continue;
        }
        static constexpr const char* kSuffix[] = {"_points", "_lines", "_polygons", "_mixed"};
        for (int family = kPoints; family < kMixed; ++family) {
            if (!(plan.kinds & 1 << family))
                continue;
            Plan part = plan;
            part.name += kSuffix[family];
            part.family = Family(family);
            part.kinds = 1 << family;
            plans.push_back(part);
        }
    }
    return plans;
}

void ZvGdalWriter::Survey(Plan& plan) const {
    for (const ZvLayer* layer : plan.sources)
        layer->Tree().ForEach([&](ZvEntity* entity) {
            if (entity->IsErased() || !IsSelected(*entity))
                return true;
            plan.kinds |= 1 << FamilyOf(*entity);
            bool multi = false;
            NoteDimensions(*entity, multi, plan.hasZ, plan.hasM);
            if (multi)
                plan.multis |= 1 << FamilyOf(*entity);
            return true;
        });
}

OGRLayer* ZvGdalWriter::MakeLayer(GDALDataset& target, const Plan& plan) {
    OGRwkbGeometryType type = wkbUnknown;
    if (!m_isDxf) {
        if (plan.kinds == 1 << kPoints)
            type = plan.IsMulti() ? wkbMultiPoint : wkbPoint;
        else if (plan.kinds == 1 << kLines)
            type = plan.IsMulti() ? wkbMultiLineString : wkbLineString;
        else if (plan.kinds == 1 << kPolygons)
            type = plan.IsMulti() ? wkbMultiPolygon : wkbPolygon;
        type = OGR_GT_SetModifier(type, plan.hasZ, plan.hasM);
    }
    m_reference = std::make_unique<OGRSpatialReference>();
    const bool known = ZvGdalMakeReference(m_drawing.UcsTable()->CoordinateSystem(), *m_reference);
    if (!known && m_drawing.UcsTable()->CoordinateSystem().IsSet())
        m_losses.Add(ZvLossReport::Fate::Dropped, "coordinate system (its definition could not be read)");
    std::vector<const char*> options;
    if (m_driver == "ESRI Shapefile")
        options.push_back("ENCODING=UTF-8");
    else if (m_driver == "GeoJSON")
        options.push_back("COORDINATE_PRECISION=15");
    else if (m_driver == "CSV")
        options.push_back("GEOMETRY=AS_WKT"); // without it the geometry would be left out
    options.push_back(nullptr);
    return target.CreateLayer(plan.name.c_str(), known ? m_reference.get() : nullptr, type,
                              const_cast<char**>(options.data()));
}

// DXF has its own fixed fields; everything else gets a field for each column of each source layer, once a name.
void ZvGdalWriter::MakeFields(OGRLayer& layer, const Plan& plan) {
    m_columns.assign(plan.sources.size(), {});
    m_layerField = -1;
    if (m_isDxf) {
        m_layerField = layer.GetLayerDefn()->GetFieldIndex("Layer");
    } else if (plan.sources.size() > 1) {
        OGRFieldDefn field(kLayerFieldName, OFTString);
        if (layer.CreateField(&field) == OGRERR_NONE)
            m_layerField = layer.GetLayerDefn()->GetFieldCount() - 1;
        m_losses.Add(ZvLossReport::Fate::Approximated,
                     "layers written as one, told apart by the field \"layer\"",
                     int64_t(plan.sources.size()));
    }
    for (size_t s = 0; s < plan.sources.size(); ++s) {
        const ZvAttributeTable* table = plan.sources[s]->AttributesOrNull();
        for (int c = 0; table && c < table->FieldCount(); ++c) {
            const ZvAttributeTable::Field& column = table->Fields()[size_t(c)];
            const std::string name = column.name.ToUtf8();
            int index = layer.GetLayerDefn()->GetFieldIndex(name.c_str());
            if (index < 0 && !m_isDxf) {
                OGRFieldSubType sub;
                OGRFieldDefn field(name.c_str(), FieldType(column.type, sub));
                field.SetSubType(sub);
                if (column.type != ZvAttributeTable::Type::Int64)
                    field.SetWidth(column.width), field.SetPrecision(column.precision);
                const int before = layer.GetLayerDefn()->GetFieldCount();
                if (layer.CreateField(&field) == OGRERR_NONE &&
                    layer.GetLayerDefn()->GetFieldCount() > before)
                    index = before;
            }
            if (index < 0 || index == m_layerField) {
                m_losses.Add(ZvLossReport::Fate::Dropped, "fields that " + m_driver + " has no place for");
                index = -1;
            }
            m_columns[s].push_back(index);
        }
    }
}

/// This format has no features without a field.
static void MakeFieldForMapInfo(OGRLayer& layer) {
    OGRFieldDefn field("id", OFTInteger);
    (void)layer.CreateField(&field); // without it the features are refused, with a reason
}

Zv::Status ZvGdalWriter::WriteLayer(GDALDataset& target, const Plan& plan) {
    OGRLayer* layer = MakeLayer(target, plan);
    if (!layer) {
        m_errors.Add(0, "cannot make layer '" + plan.name + "' in " + m_driver);
        return Zv::Status::Failure;
    }
    MakeFields(*layer, plan);
    if (m_driver == "MapInfo File" && layer->GetLayerDefn()->GetFieldCount() == 0)
        MakeFieldForMapInfo(*layer);
    m_promote = plan.IsMulti() && wkbFlatten(layer->GetGeomType()) != wkbUnknown && m_driver != "GeoJSON" &&
                !m_oneKind;
    const bool transaction =
        layer->TestCapability(OLCTransactions) && layer->StartTransaction() == OGRERR_NONE;
    Zv::Status status = Zv::Status::Success;
    for (const ZvLayer* source : plan.sources)
        source->Tree().ForEach([&](ZvEntity* entity) {
            if (entity->IsErased() || !IsSelected(*entity) ||
                (plan.family != kMixed && FamilyOf(*entity) != int(plan.family)))
                return true;
            if (!WriteEntity(*layer, plan, *source, *entity))
                status = Zv::Status::Failure;
            else if (++m_done % kProgressEvery == 0 &&
                     !m_progress.Step("writing features", uint64_t(m_done), uint64_t(m_total)))
                status = Zv::Status::Cancelled;
            return Zv::Ok(status);
        });
    if (transaction && layer->CommitTransaction() != OGRERR_NONE)
        status = Zv::Status::Failure;
    return status;
}

bool ZvGdalWriter::WriteEntity(OGRLayer& layer, const Plan& plan, const ZvLayer& source, ZvEntity& entity) {
    std::string why;
    std::unique_ptr<OGRGeometry> geometry = m_convert.Convert(entity, why);
    if (!geometry) {
        m_losses.Add(ZvLossReport::Fate::Dropped, "entities: " + why);
        return true;
    }
    if (m_promote)
        geometry = ToMulti(std::move(geometry));
    const std::unique_ptr<OGRFeature> feature(OGRFeature::CreateFeature(layer.GetLayerDefn()));
    feature->SetGeometryDirectly(geometry.release());
    const size_t at =
        size_t(std::find(plan.sources.begin(), plan.sources.end(), &source) - plan.sources.begin());
    if (m_layerField >= 0)
        feature->SetField(m_layerField, source.GetName().ToUtf8().c_str());
    if (const ZvAttributeTable* table = source.AttributesOrNull())
        if (const int row = table->FindRow(entity.Name()); row >= 0)
            for (int c = 0; c < table->FieldCount(); ++c)
                if (m_columns[at][size_t(c)] >= 0 && !table->Column(c).IsNull(size_t(row)))
                    WriteField(*feature, m_columns[at][size_t(c)], *table, c, size_t(row));
    if (const std::string style = ZvGdalStyle::Describe(entity); !style.empty())
        feature->SetStyleString(style.c_str());
    m_current = entity.Name();
    if (layer.CreateFeature(feature.get()) != OGRERR_NONE) {
        m_errors.Add(0, "entity " + m_current.ToString().ToUtf8() + " could not be written as " + m_driver);
        return false;
    }
    m_current = {};
    m_losses.Add(ZvLossReport::Fate::Kept, "entities");
    return true;
}

/// What messages of the library are about.
std::string ZvGdalWriter::Subject() const {
    return m_current.IsNull()
               ? m_driver + ": "
               : "entity " + m_current.ToString().ToUtf8() + " cannot be written as " + m_driver + ": ";
}

void ZvGdalWriter::WriteField(OGRFeature& feature, int field, const ZvAttributeTable& table, int column,
                              size_t row) {
    const ZvAttributeColumn& values = table.Column(column);
    switch (values.GetType()) {
    case ZvAttributeTable::Type::Bool:
        feature.SetField(field, values.GetBool(row) ? 1 : 0);
        break;
    case ZvAttributeTable::Type::Int64:
        feature.SetField(field, GIntBig(values.GetInt(row)));
        break;
    case ZvAttributeTable::Type::Double:
        feature.SetField(field, values.GetDouble(row));
        break;
    case ZvAttributeTable::Type::Date:
        feature.SetField(field, values.GetDate(row).ToString().ToUtf8().c_str());
        break;
    case ZvAttributeTable::Type::Binary: {
        const std::string_view bytes = values.GetBytes(row);
        feature.SetField(field, int(bytes.size()), bytes.data());
        break;
    }
    default:
        feature.SetField(field, std::string(values.GetBytes(row)).c_str());
        break;
    }
}
