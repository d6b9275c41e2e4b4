#pragma once
#include "Modules/Gis/ZvGdalGeometry.h"
#include "Zelvan/IZvFileProvider.h"
#include "Zelvan/ZvLossReport.h"
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class GDALDataset;
class OGRFeature;
class OGRLayer;
class OGRSpatialReference;
class ZvAttributeTable;
class ZvLayer;

/// One save through GDAL/OGR. Every drawing layer with entities or fields becomes a target layer; formats that hold one layer get one
/// with a field "layer" when there are several. Formats that hold one geometry kind a layer get one layer a kind.
///
/// The files are written into a folder of their own beside the target and put in place one by one when all of them are complete:
/// after a failure the target is untouched.
class ZvGdalWriter {
public:
    ZvGdalWriter(ZvDrawing& drawing, const ZvFileOptions& options, IOErrorSet& errors,
                 ZvCore::IProgress& progress);
    ~ZvGdalWriter();
    Zv::Status Write(const std::filesystem::path& file, const std::string& driver);

private:
    enum Family { kPoints, kLines, kPolygons, kMixed, kFamilies };
    /// What goes into one target layer.
    struct Plan {
        std::string name;
        std::vector<const ZvLayer*> sources;
        Family family = kMixed; ///< kMixed: every kind
        bool hasZ = false, hasM = false;
        int kinds = 0;  ///< bits 1 << Family that occur
        int multis = 0; ///< those of them that occur with several parts
        bool IsMulti() const { return (kinds & multis) != 0; }
    };
    void CollectLayers();
    std::vector<Plan> MakePlans() const;
    void Survey(Plan& plan) const;
    OGRLayer* MakeLayer(GDALDataset& target, const Plan& plan);
    void MakeFields(OGRLayer& layer, const Plan& plan);
    Zv::Status WriteLayer(GDALDataset& target, const Plan& plan);
    bool WriteEntity(OGRLayer& layer, const Plan& plan, const ZvLayer& source, ZvEntity& entity);
    void WriteField(OGRFeature& feature, int field, const ZvAttributeTable& table, int column, size_t row);
    Zv::Status WriteAll(const std::filesystem::path& file);
    bool IsOnDisk(const std::filesystem::path& folder, const std::filesystem::path& file);
    bool PutInPlace(const std::filesystem::path& folder, const std::filesystem::path& file);
    bool IsSelected(const ZvEntity& entity) const;
    std::string Subject() const;

    ZvDrawing& m_drawing;
    const ZvFileOptions& m_options;
    IOErrorSet& m_errors;
    ZvCore::IProgress& m_progress;
    ZvLossReport m_ownLosses;
    ZvLossReport& m_losses;
    ZvEntityToGdal m_convert;
    std::string m_driver;
    bool m_oneLayer = false, m_oneKind = false, m_isDxf = false;
    std::unique_ptr<OGRSpatialReference> m_reference;
    std::vector<const ZvLayer*> m_layers;
    bool m_promote = false;                  // of the target layer at hand: to multi geometries
    int m_layerField = -1;                   // of the target layer at hand
    std::vector<std::vector<int>> m_columns; // by source layer of the plan: target field of each column
    ZvName m_current;                        // while the library takes an entity
    int64_t m_done = 0, m_total = 0;
};
