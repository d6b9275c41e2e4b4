#pragma once
#include "Zelvan/Entities/ZvEntity.h"
#include <memory>
#include <string>
#include <vector>

class OGRGeometry;
class OGRPolygon;
class OGRSimpleCurve;
class ZvDrawing;
class ZvLossReport;
class ZvMultiPoint;
class ZvXLine;

/// Turns source geometries into entities. Multi-part lines and polygons with holes become one polyline entity each; what a geometry
/// collection mixes becomes a compound. Keeps its buffers: use one for a whole load.
class ZvGdalToEntity {
public:
    /// `losses` is told what was approximated or left out of a geometry.
    ZvGdalToEntity(ZvDrawing& drawing, ZvLossReport& losses) : m_drawing(drawing), m_losses(losses) {}
    /// Null when nothing usable is left; `why` then says why in a few words.
    std::unique_ptr<ZvEntity> Convert(const OGRGeometry& geometry, std::string& why);

private:
    std::unique_ptr<ZvEntity> Points(const OGRGeometry& geometry, std::string& why);
    std::unique_ptr<ZvEntity> Lines(const OGRGeometry& geometry, bool polygon, std::string& why);
    std::unique_ptr<ZvEntity> Collection(const OGRGeometry& geometry, std::string& why);
    void AddLines(const OGRGeometry& geometry);
    void AddPolygon(const OGRPolygon& polygon);
    bool AddPart(const OGRSimpleCurve& curve, bool ring, uint32_t depthRaw);

    ZvDrawing& m_drawing;
    ZvLossReport& m_losses;
    bool m_hasZ = false, m_hasM = false;
    std::vector<double> m_vertices; // 2 + Z + M doubles each
    std::vector<uint32_t> m_parts;
    uint32_t m_count = 0;
};

/// Turns entities into geometries for a target layer.
class ZvEntityToGdal {
public:
    explicit ZvEntityToGdal(ZvLossReport& losses) : m_losses(losses) {}
    /// Null when the target cannot hold the kind; `why` then says why.
    std::unique_ptr<OGRGeometry> Convert(ZvEntity& entity, std::string& why);

private:
    std::unique_ptr<OGRGeometry> Line(const ZvXLine& line);
    std::unique_ptr<OGRGeometry> Polygon(const ZvXLine& polygon);
    std::unique_ptr<OGRGeometry> Exploded(ZvEntity& entity, std::string& why);
    void FillCurve(const ZvXLine& line, uint32_t part, bool close, OGRSimpleCurve& curve);

    ZvLossReport& m_losses;
    std::vector<Vec4d> m_buffer;
};
