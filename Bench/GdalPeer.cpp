#include "GdalPeer.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include <cstdio>
#include <memory>
#include <vector>

#ifdef ZELVAN_BENCH_HAVE_GDAL
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

namespace {

using Attributes = ZvAttributeTable;

std::vector<OGRFeatureUniquePtr> g_prepared, g_read;
OGRFeatureDefn* g_fields = nullptr;

OGRFieldType TypeOf(Attributes::Type type) {
    switch (type) {
    case Attributes::Type::Int64:
    case Attributes::Type::Bool:
        return OFTInteger64;
    case Attributes::Type::Double:
        return OFTReal;
    default:
        return OFTString;
    }
}

// The fields of all layers, each name once, behind a number.
void PrepareFields(ZvDrawing& drawing) {
    if (g_fields)
        g_fields->Release();
    g_fields = new OGRFeatureDefn("lines");
    g_fields->Reference();
    g_fields->SetGeomType(wkbUnknown);
    OGRFieldDefn number("id", OFTInteger);
    g_fields->AddFieldDefn(&number);
    for (ZvLayer* layer : drawing.LayerTable()->GetDrawOrder())
        for (int i = 0; layer->AttributesOrNull() && i < layer->AttributesOrNull()->FieldCount(); ++i) {
            const Attributes::Field& field = layer->AttributesOrNull()->Fields()[size_t(i)];
            OGRFieldDefn column(field.name.ToUtf8().c_str(), TypeOf(field.type));
            if (g_fields->GetFieldIndex(column.GetNameRef()) < 0)
                g_fields->AddFieldDefn(&column);
        }
}

std::unique_ptr<OGRGeometry> GeometryOf(const ZvXLine& line) {
    auto parts = std::make_unique<OGRMultiLineString>();
    std::vector<Vec2d> points;
    for (uint32_t part = 0; part < line.NumParts(); ++part) {
        points.resize(line.PLen(part));
        line.ReadXY(line.PStart(part), line.PLen(part), points.data());
        auto string = std::make_unique<OGRLineString>();
        string->setPoints(int(points.size()), reinterpret_cast<const OGRRawPoint*>(points.data()));
        if (line.NumParts() == 1)
            return string;
        parts->addGeometryDirectly(string.release());
    }
    return parts;
}

void SetFields(OGRFeature& feature, const Attributes& table, int row) {
    for (int i = 0; i < table.FieldCount(); ++i) {
        const int to = feature.GetFieldIndex(table.Fields()[size_t(i)].name.ToUtf8().c_str());
        const ZvAttributeColumn& column = table.Column(i);
        if (column.IsNull(size_t(row)))
            continue;
        if (column.GetType() == Attributes::Type::Int64)
            feature.SetField(to, GIntBig(column.GetInt(size_t(row))));
        else if (column.GetType() == Attributes::Type::Double)
            feature.SetField(to, column.GetDouble(size_t(row)));
        else if (column.GetType() == Attributes::Type::String)
            feature.SetField(to, std::string(column.GetBytes(size_t(row))).c_str());
    }
}

} // namespace

bool GdalPeer::IsHere() {
    GDALAllRegister();
    return GetGDALDriverManager()->GetDriverByName("FlatGeobuf") != nullptr;
}

void GdalPeer::Prepare(ZvDrawing& drawing) {
    g_prepared.clear();
    PrepareFields(drawing);
    for (ZvLayer* layer : drawing.LayerTable()->GetDrawOrder())
        layer->Tree().ForEach([&](ZvEntity* entity) {
            const ZvXLine* line = entity->ToXLine();
            if (!line)
                return true;
            OGRFeatureUniquePtr feature(new OGRFeature(g_fields));
            feature->SetField(0, int(g_prepared.size()));
            feature->SetGeometryDirectly(GeometryOf(*line).release());
            const Attributes* table = layer->AttributesOrNull();
            if (const int row = table ? table->FindRow(entity->Name()) : -1; row >= 0)
                SetFields(*feature, *table, row);
            g_prepared.push_back(std::move(feature));
            return true;
        });
}

void GdalPeer::Write(const std::filesystem::path& file) {
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("FlatGeobuf");
    GDALDataset* target = driver->Create(file.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr);
    OGRLayer* layer = target->CreateLayer("lines", nullptr, wkbUnknown, nullptr);
    for (int i = 0; i < g_fields->GetFieldCount(); ++i)
        (void)layer->CreateField(g_fields->GetFieldDefn(i));
    for (const OGRFeatureUniquePtr& feature : g_prepared)
        if (layer->CreateFeature(feature.get()) != OGRERR_NONE)
            std::fprintf(stderr, "GDAL refuses a feature\n");
    GDALClose(target);
}

size_t GdalPeer::Read(const std::filesystem::path& file) {
    GDALDataset* source = static_cast<GDALDataset*>(
        GDALOpenEx(file.string().c_str(), GDAL_OF_VECTOR, nullptr, nullptr, nullptr));
    OGRLayer* layer = source->GetLayer(0);
    g_read.reserve(size_t(layer->GetFeatureCount()));
    while (OGRFeatureUniquePtr feature{layer->GetNextFeature()})
        g_read.push_back(std::move(feature));
    const size_t count = g_read.size();
    GDALClose(source);
    return count;
}

void GdalPeer::Forget() {
    g_read.clear();
    g_read.shrink_to_fit();
}
#else
bool GdalPeer::IsHere() {
    return false;
}
void GdalPeer::Prepare(ZvDrawing&) {}
void GdalPeer::Write(const std::filesystem::path&) {}
size_t GdalPeer::Read(const std::filesystem::path&) {
    return 0;
}
void GdalPeer::Forget() {}
#endif
