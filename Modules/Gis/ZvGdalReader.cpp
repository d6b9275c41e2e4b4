#include "Modules/Gis/ZvGdalReader.h"
#include "Modules/Gis/ZvGdalSession.h"
#include "Modules/Gis/ZvGdalStyle.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvUnits.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <gdal_priv.h>
#include <memory>
#include <ogrsf_frmts.h>
#include <set>
#include <sstream>

namespace {

constexpr double kGroundPrecision = 1e-3; // metres
constexpr int64_t kProgressEvery = 1024;

struct CloseDataset {
    void operator()(GDALDataset* dataset) const { GDALClose(dataset); }
};

ZvAttributeTable::Type FieldType(const OGRFieldDefn& field) {
    switch (field.GetType()) {
    case OFTInteger:
        return field.GetSubType() == OFSTBoolean ? ZvAttributeTable::Type::Bool
                                                 : ZvAttributeTable::Type::Int64;
    case OFTInteger64:
        return ZvAttributeTable::Type::Int64;
    case OFTReal:
        return ZvAttributeTable::Type::Double;
    case OFTBinary:
        return ZvAttributeTable::Type::Binary;
    default:
        return ZvAttributeTable::Type::String;
    }
}

// Layer names take no / \ " ? * |.
XStringW LayerName(const std::string& name) {
    XStringW clean = XStringW::FromUtf8(name);
    for (char16_t& c : clean.Str())
        if (std::u16string_view(u"/\\\"?*|").find(c) != std::u16string_view::npos)
            c = u'_';
    return clean.IsEmpty() ? XStringW(u"0") : clean;
}

std::string JoinNames(const std::vector<std::string>& names) {
    std::string joined;
    for (const std::string& name : names)
        joined += (joined.empty() ? "" : ", ") + name;
    return joined;
}

} // namespace

ZvGdalReader::ZvGdalReader(ZvDrawing& drawing, const ZvFileOptions& options, IOErrorSet& errors,
                           ZvCore::IProgress& progress)
    : m_drawing(drawing), m_options(options), m_errors(errors), m_progress(progress),
      m_losses(options.losses ? *options.losses : m_ownLosses), m_convert(drawing, m_losses) {
    ZvGdalInit();
}

Zv::Status ZvGdalReader::Read(const std::filesystem::path& file, const std::vector<std::string>& drivers) {
    ZvGdalMessages messages(m_errors);
    const std::string path = ZvPlatform::PathToUtf8(file);
    std::vector<const char*> allowed;
    for (const std::string& driver : drivers)
        allowed.push_back(driver.c_str());
    allowed.push_back(nullptr);
    const std::unique_ptr<GDALDataset, CloseDataset> source(
        static_cast<GDALDataset*>(GDALOpenEx(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY,
                                             drivers.empty() ? nullptr : allowed.data(), nullptr, nullptr)));
    if (!source) {
        m_errors.Add(0, "cannot read '" + path + "' as " +
                            (drivers.empty() ? "a vector file" : JoinNames(drivers)) +
                            (messages.LastFailure().empty() ? ": the content is not of that format" : "") +
                            "; check that the file is complete and has the right extension");
        return Zv::Status::Failure;
    }
    m_driver = source->GetDriverName();
    m_layerField = m_options.values.GetString("LayerField", u"").ToUtf8();
    if (m_layerField.empty() && m_driver == "DXF")
        m_layerField = "Layer";
    if (!CheckNames(*source, path))
        return Zv::Status::Failure;
    TakeCoordSystem(*source);
    ChoosePrecision();
    for (OGRLayer* layer : source->GetLayers())
        if (IsWanted(layer->GetName()))
            m_total += std::max<int64_t>(0, layer->GetFeatureCount(FALSE));
    for (OGRLayer* layer : source->GetLayers()) {
        if (!IsWanted(layer->GetName()))
            continue;
        if (const Zv::Status status = ReadLayer(*layer); !Zv::Ok(status))
            return status;
    }
    return messages.LastFailure().empty() ? Zv::Status::Success : Zv::Status::Failure;
}

/// Whether the layers asked for are there; a field for layer names that no layer has is worth a warning.
bool ZvGdalReader::CheckNames(GDALDataset& source, const std::string& path) {
    std::set<std::string> layers;
    bool hasField = false;
    for (OGRLayer* layer : source.GetLayers()) {
        layers.insert(layer->GetName());
        hasField = hasField || layer->GetLayerDefn()->GetFieldIndex(m_layerField.c_str()) >= 0;
    }
    std::istringstream wanted(m_options.values.GetString("Layers", u"").ToUtf8());
    for (std::string name; std::getline(wanted, name, ',');)
        if (!layers.contains(name)) {
            m_errors.Add(0, "'" + path + "' has no layer '" + name + "'; its layers are " +
                                JoinNames({layers.begin(), layers.end()}));
            return false;
        }
    if (!m_layerField.empty() && !hasField)
        m_errors.Add(0,
                     "no layer of '" + path + "' has a field '" + m_layerField +
                         "': each source layer becomes one layer",
                     IOErrorSet::Severity::Warning);
    return true;
}

bool ZvGdalReader::IsWanted(const std::string& layerName) const {
    const std::string wanted = m_options.values.GetString("Layers", u"").ToUtf8();
    return wanted.empty() || ("," + wanted + ",").find("," + layerName + ",") != std::string::npos;
}

// The drawing has one coordinate system: that of its first source. A layer in another one keeps its numbers, with a warning.
void ZvGdalReader::TakeCoordSystem(GDALDataset& source) {
    ZvUcsTable& table = *m_drawing.UcsTable();
    for (OGRLayer* layer : source.GetLayers()) {
        const ZvCoordSystem system = ZvGdalDescribe(layer->GetSpatialRef());
        if (!system.IsSet())
            continue;
        if (!table.CoordinateSystem().IsSet()) {
            table.SetCoordinateSystem(system);
            m_drawing.Units()->SetWorldOf(system);
            m_drawing.NotifyCoordinateSystemChanged();
        } else if (table.CoordinateSystem().wkt != system.wkt) {
            m_errors.Add(0,
                         std::string("layer '") + layer->GetName() + "' is in '" + system.name.ToUtf8() +
                             "', the drawing in '" + table.CoordinateSystem().name.ToUtf8() +
                             "': coordinates are kept as they are; reproject the source first",
                         IOErrorSet::Severity::Warning);
        }
    }
}

void ZvGdalReader::ChoosePrecision() {
    const double asked = m_options.values.GetDouble("Precision", 0);
    if (asked > 0)
        m_drawing.SetLinearPrecision(asked);
    else if (m_drawing.NameTable().Count() == 0 && m_drawing.UcsTable()->CoordinateSystem().IsSet())
        m_drawing.SetLinearPrecision(m_drawing.MetersToWorld(kGroundPrecision));
}

Zv::Status ZvGdalReader::ReadLayer(OGRLayer& source) {
    m_source = &source;
    m_targets.clear();
    m_layerFieldIndex =
        m_layerField.empty() ? -1 : source.GetLayerDefn()->GetFieldIndex(m_layerField.c_str());
    if (m_layerFieldIndex < 0)
        m_targets.emplace(source.GetName(),
                          MakeTarget(source.GetName(), source)); // exists without features, too
    const int64_t before = m_done, stated = source.GetFeatureCount(FALSE);
    source.ResetReading();
    while (const std::unique_ptr<OGRFeature> feature{source.GetNextFeature()}) {
        ReadFeature(*feature);
        if (++m_done % kProgressEvery == 0 &&
            !m_progress.Step("reading features", uint64_t(m_done), uint64_t(std::max(m_total, m_done))))
            return Zv::Status::Cancelled;
    }
    return TellMissing(source.GetName(), stated, m_done - before);
}

/// Readers of some formats end quietly where a file is cut short. Only a count that stands in the file's own head is proof.
Zv::Status ZvGdalReader::TellMissing(const std::string& layer, int64_t stated, int64_t read) {
    if (stated <= read)
        return Zv::Status::Success;
    const bool proof = m_driver == "FlatGeobuf";
    m_errors.Add(0,
                 "layer '" + layer + "' states " + std::to_string(stated) + " features, " +
                     std::to_string(read) + " could be read: the file is cut short or damaged",
                 proof ? IOErrorSet::Severity::Error : IOErrorSet::Severity::Warning);
    return proof ? Zv::Status::Failure : Zv::Status::Success;
}

void ZvGdalReader::ReadFeature(OGRFeature& feature) {
    const OGRGeometry* geometry = feature.GetGeometryRef();
    if (!geometry) {
        m_losses.Add(ZvLossReport::Fate::Dropped, "features without geometry");
        return;
    }
    std::string why;
    std::unique_ptr<ZvEntity> entity = m_convert.Convert(*geometry, why);
    if (!entity) {
        m_losses.Add(ZvLossReport::Fate::Dropped, "features: " + why);
        return;
    }
    ZvGdalStyle::Apply(feature, *entity);
    XStringW reason;
    if (!m_drawing.FinalizeNewEntity(*entity, false, &reason)) {
        m_losses.Add(ZvLossReport::Fate::Dropped, "features: " + reason.ToUtf8());
        return;
    }
    Target& target = TargetFor(feature);
    const ZvName name = target.layer->Adopt(std::move(entity));
    StoreFields(feature, target, name);
    m_losses.Add(ZvLossReport::Fate::Kept, "features");
}

ZvGdalReader::Target& ZvGdalReader::TargetFor(OGRFeature& feature) {
    if (m_layerFieldIndex < 0)
        return m_targets.begin()->second;
    const std::string name = feature.IsFieldSetAndNotNull(m_layerFieldIndex)
                                 ? feature.GetFieldAsString(m_layerFieldIndex)
                                 : m_source->GetName();
    const auto found = m_targets.find(name);
    return found != m_targets.end() ? found->second
                                    : m_targets.emplace(name, MakeTarget(name, *m_source)).first->second;
}

ZvGdalReader::Target ZvGdalReader::MakeTarget(const std::string& name, OGRLayer& source) {
    const XStringW layerName = LayerName(name);
    Target target;
    target.layer = m_drawing.LayerTable()->GetByName(layerName);
    if (!target.layer)
        target.layer = m_drawing.LayerTable()->InsertNew(layerName);
    target.attributes = &target.layer->Attributes();
    const OGRFeatureDefn& definition = *source.GetLayerDefn();
    for (int i = 0; i < definition.GetFieldCount(); ++i) {
        const OGRFieldDefn& field = *definition.GetFieldDefn(i);
        ZvAttributeTable::Field column;
        column.name = XStringW::FromUtf8(field.GetNameRef());
        column.type = FieldType(field);
        column.width = field.GetWidth();
        column.precision = field.GetPrecision();
        int index = i == m_layerFieldIndex ? -2 : target.attributes->FindField(column.name);
        if (index == -1)
            index = target.attributes->AddField(column);
        if (index == -1)
            m_losses.Add(ZvLossReport::Fate::Dropped, "fields that could not be made");
        else if (column.type == ZvAttributeTable::Type::String && field.GetType() != OFTString)
            m_losses.Add(ZvLossReport::Fate::Approximated,
                         std::string("fields of type ") + OGRFieldDefn::GetFieldTypeName(field.GetType()) +
                             " kept as text");
        target.columns.push_back(index < 0 ? -1 : index);
    }
    return target;
}

void ZvGdalReader::StoreFields(OGRFeature& feature, Target& target, ZvName name) {
    if (target.columns.empty())
        return;
    const int row = target.attributes->MakeRow(name);
    if (row < 0)
        return;
    for (int i = 0; i < int(target.columns.size()); ++i) {
        const int column = target.columns[size_t(i)];
        if (column < 0 || !feature.IsFieldSetAndNotNull(i))
            continue;
        ZvAttributeColumn& values = target.attributes->Column(column);
        switch (values.GetType()) {
        case ZvAttributeTable::Type::Bool:
            values.SetBool(size_t(row), feature.GetFieldAsInteger(i) != 0);
            break;
        case ZvAttributeTable::Type::Int64:
            values.SetInt(size_t(row), feature.GetFieldAsInteger64(i));
            break;
        case ZvAttributeTable::Type::Double:
            values.SetDouble(size_t(row), feature.GetFieldAsDouble(i));
            break;
        case ZvAttributeTable::Type::Binary: {
            int size = 0;
            const GByte* bytes = feature.GetFieldAsBinary(i, &size);
            values.SetBytes(size_t(row), {reinterpret_cast<const char*>(bytes), size_t(size)});
            break;
        }
        default:
            values.SetBytes(size_t(row), feature.GetFieldAsString(i));
            break;
        }
    }
}
