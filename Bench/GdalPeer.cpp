#include "GdalPeer.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include <memory>
#include <vector>

#ifdef ZELVAN_BENCH_HAVE_GDAL
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

namespace {
std::vector<std::unique_ptr<OGRGeometry>> g_prepared;
std::vector<OGRFeatureUniquePtr> g_read;
} // namespace

bool GdalPeer::IsHere() {
    GDALAllRegister();
    return GetGDALDriverManager()->GetDriverByName("FlatGeobuf") != nullptr;
}

void GdalPeer::Prepare(ZvDrawing& drawing) {
    g_prepared.clear();
    std::vector<Vec2d> points;
    for (ZvLayer* layer : drawing.LayerTable()->GetDrawOrder())
        layer->Tree().ForEach([&](ZvEntity* entity) {
            ZvXLine* line = entity->ToXLine();
            for (uint32_t part = 0; line && part < line->NumParts(); ++part) {
                points.resize(line->PLen(part));
                line->ReadXY(line->PStart(part), line->PLen(part), points.data());
                auto string = std::make_unique<OGRLineString>();
                string->setPoints(int(points.size()), reinterpret_cast<const OGRRawPoint*>(points.data()));
                g_prepared.push_back(std::move(string));
            }
            return true;
        });
}

void GdalPeer::Write(const std::filesystem::path& file) {
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("FlatGeobuf");
    GDALDataset* target = driver->Create(file.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr);
    OGRLayer* layer = target->CreateLayer("lines", nullptr, wkbLineString, nullptr);
    OGRFieldDefn field("id", OFTInteger);
    (void)layer->CreateField(&field);
    int id = 0;
    for (const auto& geometry : g_prepared) {
        OGRFeature feature(layer->GetLayerDefn());
        feature.SetField(0, id++);
        feature.SetGeometry(geometry.get());
        (void)layer->CreateFeature(&feature);
    }
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
