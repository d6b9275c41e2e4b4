#pragma once
#include "Modules/Gis/ZvGdalGeometry.h"
#include "Zelvan/IZvFileProvider.h"
#include "Zelvan/ZvLossReport.h"
#include <filesystem>
#include <map>
#include <string>
#include <vector>

class GDALDataset;
class OGRFeature;
class OGRLayer;
class ZvAttributeTable;
class ZvLayer;

/// One load through GDAL/OGR: streams the features of every source layer into drawing layers, one at a time.
///
/// Options: "LayerField" names the field whose text gives a feature's drawing layer (DXF: "Layer" unless set), "Layers" takes only the
/// source layers named (separated by commas), "Precision" is the step to which vertices may be rounded, in world units (0: a
/// millimetre on the ground where the coordinate system is known, else the drawing's own precision).
class ZvGdalReader {
public:
    ZvGdalReader(ZvDrawing& drawing, const ZvFileOptions& options, IOErrorSet& errors,
                 ZvCore::IProgress& progress);
    Zv::Status Read(const std::filesystem::path& file, const std::vector<std::string>& drivers);

private:
    struct Target {
        ZvLayer* layer = nullptr;
        ZvAttributeTable* attributes = nullptr;
        std::vector<int> columns; // by source field; -1 when there is none
    };
    void TakeCoordSystem(GDALDataset& source);
    void ChoosePrecision();
    Zv::Status ReadLayer(OGRLayer& source);
    Zv::Status TellMissing(const std::string& layer, int64_t stated, int64_t read);
    void ReadFeature(OGRFeature& feature);
    Target& TargetFor(OGRFeature& feature);
    Target MakeTarget(const std::string& name, OGRLayer& source);
    void StoreFields(OGRFeature& feature, Target& target, ZvName name);
    bool CheckNames(GDALDataset& source, const std::string& path);
    bool IsWanted(const std::string& layerName) const;

    ZvDrawing& m_drawing;
    const ZvFileOptions& m_options;
    IOErrorSet& m_errors;
    ZvCore::IProgress& m_progress;
    ZvLossReport m_ownLosses;
    ZvLossReport& m_losses;
    ZvGdalToEntity m_convert;
    std::string m_driver, m_layerField;
    OGRLayer* m_source = nullptr;
    int m_layerFieldIndex = -1;
    std::map<std::string, Target> m_targets; // of the source layer at hand, by drawing layer name
    int64_t m_done = 0, m_total = 0;
};
