#include "Modules/Gis/ZvGdalProvider.h"
#include "ScratchFolder.h"
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvLossReport.h"
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <ogr_geometry.h>
#include <ogrsf_frmts.h>
#include <tuple>

namespace fs = std::filesystem;

namespace {

/// The coordinates of a feature or entity in order, a closed part without the vertex that repeats its first.
struct Shape {
    std::vector<Vec4d> vertices;
    std::vector<Vec4d> step; ///< of each vertex by axis; 0: kept to the bit
    size_t parts = 0;
};

void Take(const OGRSimpleCurve& curve, bool ring, Shape& shape) {
    int n = curve.getNumPoints();
    const auto at = [&](int i) {
        return Vec4d{curve.getX(i), curve.getY(i), curve.Is3D() ? curve.getZ(i) : 0,
                     curve.IsMeasured() ? curve.getM(i) : 0};
    };
    if (n > 1 && at(0) == at(n - 1) && (ring || n > 3))
        --n;
    for (int i = 0; i < n; ++i)
        shape.vertices.push_back(at(i));
    ++shape.parts;
}

void Take(const OGRGeometry& geometry, Shape& shape) {
    switch (wkbFlatten(geometry.getGeometryType())) {
    case wkbPoint: {
        const OGRPoint& p = *geometry.toPoint();
        shape.vertices.push_back(
            {p.getX(), p.getY(), p.Is3D() ? p.getZ() : 0, p.IsMeasured() ? p.getM() : 0});
        break;
    }
    case wkbLineString:
        return Take(*geometry.toLineString(), false, shape);
    case wkbPolygon:
        for (const OGRLinearRing* ring : *geometry.toPolygon())
            Take(*ring, true, shape);
        break;
    default:
        for (const OGRGeometry* member : *geometry.toGeometryCollection())
            Take(*member, shape);
    }
}

void Take(const ZvEntity& entity, Shape& shape) {
    auto& e = const_cast<ZvEntity&>(entity);
    if (const ZvXLine* line = e.ToXLine()) {
        dvect<Vec4d> vertices;
        line->GetAllVertices(vertices);
        shape.vertices.insert(shape.vertices.end(), vertices.begin(), vertices.end());
        shape.step.resize(shape.vertices.size(), line->Is64() ? Vec4d() : line->Scales());
        shape.parts += line->NumParts();
    } else if (const ZvPointEnt* point = e.ToPointEnt()) {
        const Vec3d& p = point->GetPosition();
        shape.vertices.push_back({p.x, p.y, p.z, point->HasM() ? point->GetMeasure() : 0});
    } else if (const ZvMultiPoint* points = e.ToMultiPoint()) {
        shape.vertices.insert(shape.vertices.end(), points->GetLocations().begin(),
                              points->GetLocations().end());
    } else if (const auto* compound = dynamic_cast<const ZvRawCompound*>(&entity)) {
        for (const auto& child : compound->GetEntityVect())
            Take(*child, shape);
    }
    shape.step.resize(shape.vertices.size());
}

bool Near(double a, double b, double step) {
    return std::abs(a - b) <= step * 0.5000001 + std::max(std::abs(a), std::abs(b)) * 3e-16;
}

/// What differs by more than half a step, empty when nothing does.
std::string Difference(const Shape& source, const Shape& kept) {
    if (source.parts != kept.parts || source.vertices.size() != kept.vertices.size())
        return std::to_string(source.parts) + " parts, " + std::to_string(source.vertices.size()) +
               " vertices became " + std::to_string(kept.parts) + ", " + std::to_string(kept.vertices.size());
    for (size_t i = 0; i < source.vertices.size(); ++i) {
        const Vec4d &a = source.vertices[i], &b = kept.vertices[i], &step = kept.step[i];
        if (!Near(a.x, b.x, step.x) || !Near(a.y, b.y, step.y) || !Near(a.z, b.z, step.z) ||
            !Near(a.w, b.w, step.w))
            return "vertex " + std::to_string(i) + " of " + std::to_string(source.vertices.size());
    }
    return {};
}

/// Features in the order of the source; a drawing gives them the names 1, 2, 3 ... in that order.
std::vector<Shape> FeaturesOf(const fs::path& file) {
    std::vector<Shape> shapes;
    const GDALDatasetUniquePtr source(GDALDataset::Open(file.string().c_str(), GDAL_OF_VECTOR));
    for (OGRLayer* layer : source->GetLayers())
        for (const auto& feature : *layer)
            if (const OGRGeometry* geometry = feature->GetGeometryRef())
                Take(*geometry, shapes.emplace_back());
    return shapes;
}

size_t CountDifferences(const std::vector<Shape>& sources, const ZvDrawing& drawing, std::string& first) {
    size_t differences = 0;
    for (uint32_t name = 1; name <= sources.size(); ++name) {
        const ZvEntity* entity = drawing.GetEntity(name);
        Shape kept;
        if (entity)
            Take(*entity, kept);
        const std::string why = entity ? Difference(sources[name - 1], kept) : "it is gone";
        if (!why.empty() && differences++ == 0)
            first = "feature " + std::to_string(name) + ": " + why;
    }
    return differences;
}

/// The same for a drawing with the features in any order (some formats sort them). First vertices are kept to the bit: a feature is
/// found by that.
size_t CountLost(const std::vector<Shape>& sources, const ZvDrawing& drawing, std::string& first) {
    const auto key = [](const Shape& shape) {
        const Vec4d v = shape.vertices.empty() ? Vec4d() : shape.vertices[0];
        return std::tuple(v.x, v.y, v.z, shape.parts, shape.vertices.size());
    };
    std::multimap<decltype(key(Shape())), const Shape*> left;
    for (const Shape& source : sources)
        left.emplace(key(source), &source);
    for (const ZvEntity* entity = drawing.NameTable().NextNonErased(nullptr); entity;
         entity = drawing.NameTable().NextNonErased(entity)) {
        Shape kept;
        Take(*entity, kept);
        const auto [from, to] = left.equal_range(key(kept));
        const auto found = std::find_if(
            from, to, [&](const auto& candidate) { return Difference(*candidate.second, kept).empty(); });
        if (found != to)
            left.erase(found);
    }
    if (!left.empty())
        first = "feature " + std::to_string(left.begin()->second - sources.data() + 1);
    return left.size();
}

bool IsMap(const fs::path& file) {
    const std::string extension = file.extension().string();
    return extension == ".fgb" || extension == ".gpkg" || extension == ".geojson" || extension == ".shp";
}

void Transfer(bool load, ZvDrawing& drawing, const fs::path& file) {
    IOErrorSet errors;
    ZvDrawingIO& io = *drawing.DrawingIO();
    const Zv::Status status =
        load ? io.LoadFile(file, ZvIOFlag::Quiet, &errors)
             : io.SaveFile(file, drawing.FileFormats().GetSaveFormat(file), ZvIOFlag::Quiet, &errors);
    ASSERT_EQ(status, Zv::Status::Success) << file << "\n" << errors.ToString();
}

} // namespace

// Every map of the test data goes into a drawing, into a native file and back into its own format. On the way no coordinate moves by
// more than half the step of its entity.
TEST(RealMaps, KeepEveryCoordinateThroughTheNativeFileAndBack) {
    const char* data = std::getenv("ZELVAN_TEST_DATA");
    if (!data) {
        std::printf("ZELVAN_TEST_DATA is not set: no real maps were tried\n");
        return;
    }
    ZvGdalProvider provider;
    ZvFileFormatServer::Application().RegisterProvider(&provider);
    const ScratchFolder folder;
    size_t maps = 0, vertices = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(fs::path(data) / "maps")) {
        if (!IsMap(entry.path()))
            continue;
        SCOPED_TRACE(entry.path().string());
        const fs::path native = folder.Path() / "map.zvd",
                       out = folder.Path() / (std::to_string(maps++) + entry.path().extension().string());
        const std::vector<Shape> sources = FeaturesOf(entry.path());
        ZvDrawing first, second, third;
        Transfer(true, first, entry.path());
        Transfer(false, first, native);
        Transfer(true, second, native);
        Transfer(false, second, out);
        Transfer(true, third, out);
        for (const ZvDrawing* drawing : {&first, &second, &third})
            ASSERT_EQ(size_t(drawing->NameTable().Count()), sources.size());
        std::string why;
        EXPECT_EQ(CountDifferences(sources, first, why), 0u) << "read: " << why;
        EXPECT_EQ(CountDifferences(sources, second, why), 0u) << "native: " << why;
        EXPECT_EQ(CountLost(sources, third, why), 0u) << "back: " << why;
        for (const Shape& shape : sources)
            vertices += shape.vertices.size();
    }
    ZvFileFormatServer::Application().UnRegisterProvider(&provider);
    EXPECT_GE(maps, 10u);
    EXPECT_GT(vertices, 1'000'000u);
}
