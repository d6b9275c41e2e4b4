#include "Modules/Gis/ZvGdalCoordSystems.h"
#include "Modules/Gis/ZvGdalGeometry.h"
#include "Modules/Gis/ZvGdalProvider.h"
#include "ScratchFolder.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvFilledEntity.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvLossReport.h"
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <ogr_geometry.h>
#include <ogrsf_frmts.h>

namespace fs = std::filesystem;

namespace {

std::unique_ptr<OGRGeometry> FromWkt(const char* wkt) {
    OGRGeometry* geometry = nullptr;
    OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry);
    return std::unique_ptr<OGRGeometry>(geometry);
}

/// The GDAL provider among the application's formats, for one test.
class Gdal : public ::testing::Test {
protected:
    Gdal() { ZvFileFormatServer::Application().RegisterProvider(&m_provider); }
    ~Gdal() override { ZvFileFormatServer::Application().UnRegisterProvider(&m_provider); }

    void Load(ZvDrawing& drawing, const fs::path& file, const char16_t* layerField = u"") {
        ZvFileOptions options;
        options.losses = &m_losses;
        options.values.Set("LayerField", XStringW(layerField));
        m_errors.Clear();
        ASSERT_EQ(drawing.DrawingIO()->LoadFile(file, ZvIOFlag::Quiet, &m_errors, &options),
                  Zv::Status::Success)
            << file << "\n"
            << m_errors.ToString();
    }
    void Save(ZvDrawing& drawing, const fs::path& file) {
        ZvFileOptions options;
        options.losses = &m_losses;
        m_errors.Clear();
        ASSERT_EQ(drawing.DrawingIO()->SaveFile(file, drawing.FileFormats().GetSaveFormat(file),
                                                ZvIOFlag::Quiet, &m_errors, &options),
                  Zv::Status::Success)
            << file << "\n"
            << m_errors.ToString();
    }
    fs::path Write(const char* name, const char* text) {
        const fs::path file = m_folder.Path() / name;
        std::ofstream(file) << text;
        return file;
    }

    ZvGdalProvider m_provider;
    ScratchFolder m_folder;
    ZvLossReport m_losses;
    IOErrorSet m_errors;
};

constexpr const char* kFeatures = R"({"type":"FeatureCollection","features":[
 {"type":"Feature","properties":{"kind":"road","lanes":2,"width":3.5,"open":true,"name":"Hauptstraße"},
  "geometry":{"type":"LineString","coordinates":[[10,50],[10.25,50.5],[10.75,50.25]]}},
 {"type":"Feature","properties":{"kind":"lake","lanes":null,"width":-1e300,"open":false,"name":""},
  "geometry":{"type":"Polygon","coordinates":[[[0,0],[8,0],[8,8],[0,8],[0,0]],[[2,2],[2,4],[4,4],[4,2],[2,2]]]}},
 {"type":"Feature","properties":{"kind":"road","lanes":9007199254740993,"width":0,"open":null,"name":"湖"},
  "geometry":{"type":"MultiLineString","coordinates":[[[1,1],[2,2]],[[3,3],[4,4],[5,3]]]}},
 {"type":"Feature","properties":{"kind":"town"},"geometry":{"type":"Point","coordinates":[7,46.5,410.25]}}]})";

} // namespace

TEST(GdalGeometry, ComesBackAsItWentIn) {
    const char* const cases[] = {
        "POINT (1 2)",
        "POINT ZM (1 2 3 4)",
        "MULTIPOINT Z ((1 2 3),(4 5 6))",
        "LINESTRING (0 0,1 1,2 0)",
        "LINESTRING (0 0,1 0,1 1,0 0)",
        "LINESTRING Z (0 0 1,1 0 2,1 1 3,0 0 4)", // the same place at another height: open
        "LINESTRING M (0 0 5,1 1 6)",
        "LINESTRING ZM (0 0 1 5,1 1 2 6,2 2 3 7)",
        "MULTILINESTRING ((0 0,1 1),(5 5,6 6,7 5))",
        "POLYGON ((0 0,4 0,4 4,0 4,0 0))",
        "POLYGON ((0 0,9 0,9 9,0 9,0 0),(1 1,1 2,2 2,2 1,1 1),(4 4,4 6,6 6,6 4,4 4))",
        "MULTIPOLYGON (((0 0,4 0,4 4,0 4,0 0)),((6 6,9 6,9 9,6 6),(7 6.5,8 7,8 6.5,7 6.5)))",
        "MULTIPOLYGON (((0 0,9 0,9 9,0 9,0 0),(1 1,1 8,8 8,8 1,1 1)),((3 3,5 3,5 5,3 5,3 3)))", // an island in a hole
        "GEOMETRYCOLLECTION (POINT (1 2),LINESTRING (0 0,1 1))",
    };
    ZvDrawing drawing;
    drawing.SetLinearPrecision(1e-15); // nothing is rounded
    ZvLossReport losses;
    for (const char* wkt : cases) {
        const auto source = FromWkt(wkt);
        std::string why;
        const auto entity = ZvGdalToEntity(drawing, losses).Convert(*source, why);
        ASSERT_TRUE(entity) << wkt << ": " << why;
        const auto back = ZvEntityToGdal(losses).Convert(*entity, why);
        ASSERT_TRUE(back) << wkt << ": " << why;
        EXPECT_EQ(back->exportToWkt(), source->exportToWkt());
    }
    EXPECT_TRUE(losses.IsLossless()) << losses.ToString();
}

TEST(GdalGeometry, WhatCannotBeIsRefusedWithAReason) {
    const char* const cases[] = {"LINESTRING EMPTY", "LINESTRING (1 1)", "POLYGON ((0 0,1 1,0 0))",
                                 "POINT EMPTY", "GEOMETRYCOLLECTION EMPTY"};
    ZvDrawing drawing;
    ZvLossReport losses;
    for (const char* wkt : cases) {
        const auto source = FromWkt(wkt);
        ASSERT_TRUE(source) << wkt;
        std::string why;
        EXPECT_FALSE(ZvGdalToEntity(drawing, losses).Convert(*source, why)) << wkt;
        EXPECT_FALSE(why.empty()) << wkt;
    }
    OGRLineString line;
    line.addPoint(0, 0);
    line.addPoint(std::nan(""), 1);
    std::string why;
    EXPECT_FALSE(ZvGdalToEntity(drawing, losses).Convert(line, why));
}

TEST(GdalGeometry, DegenerateLinesAndSpareHolesKeepTheRest) {
    ZvDrawing drawing;
    ZvLossReport losses;
    std::string why;
    EXPECT_TRUE(ZvGdalToEntity(drawing, losses).Convert(*FromWkt("LINESTRING (5 5,5 5)"), why))
        << "zero length";
    const auto area =
        ZvGdalToEntity(drawing, losses).Convert(*FromWkt("POLYGON ((0 0,4 0,4 4,0 0),(1 1,2 1,1 1))"), why);
    ASSERT_TRUE(area);
    EXPECT_EQ(area->ToXLine()->NumParts(), 1u);
    EXPECT_EQ(losses.Total(ZvLossReport::Fate::Dropped), 1);
    const auto arc = ZvGdalToEntity(drawing, losses).Convert(*FromWkt("CIRCULARSTRING (0 0,1 1,2 0)"), why);
    ASSERT_TRUE(arc);
    EXPECT_GT(arc->ToXLine()->NumVerts(), 20u);
    EXPECT_EQ(losses.Total(ZvLossReport::Fate::Approximated), 1);
}

TEST_F(Gdal, FeaturesKeepGeometryAndAttributesThroughTheNativeFileAndBack) {
    const fs::path source = Write("in.geojson", kFeatures);
    ZvDrawing first;
    Load(first, source);
    Save(first, m_folder.Path() / "map.zvd");
    for (const char* name : {"out.geojson", "out.gpkg", "out.fgb"}) {
        ZvDrawing second, third;
        Load(second, m_folder.Path() / "map.zvd");
        Save(second, m_folder.Path() / name);
        Load(third, m_folder.Path() / name);
        const ZvLayer* layer = nullptr;
        for (const ZvLayer* candidate : third.LayerTable()->GetDrawOrder())
            layer = candidate->Tree().CountNonErased() ? candidate : layer;
        ASSERT_TRUE(layer) << name;
        EXPECT_EQ(layer->Tree().CountNonErased(), 4u) << name;
        const ZvAttributeTable& table = *layer->AttributesOrNull();
        std::map<XStringW, ZvName> byName;
        table.ForEachRow([&](ZvName row, size_t) {
            if (const auto value = table.Get(row, u"name"); const auto* text = std::get_if<XStringW>(&value))
                byName[*text] = row;
        });
        ASSERT_TRUE(byName.contains(u"湖") && byName.contains(u"") && byName.contains(u"Hauptstraße"))
            << name;
        using Value = ZvAttributeTable::Value;
        EXPECT_EQ(table.Get(byName[u"湖"], u"lanes"), Value(int64_t(9007199254740993))) << name;
        EXPECT_EQ(table.Get(byName[u""], u"width"), Value(-1e300)) << name;
        EXPECT_TRUE(std::holds_alternative<std::monostate>(table.Get(byName[u""], u"lanes")))
            << name << ": null is not zero";
        EXPECT_EQ(table.Get(byName[u"Hauptstraße"], u"open"), Value(true)) << name;
        const ZvBounds3D box = third.GetEntity(byName[u"Hauptstraße"])->Bounds3D();
        EXPECT_NEAR(box.minX, 10, 1e-8);
        EXPECT_NEAR(box.maxY, 50.5, 1e-8);
        EXPECT_EQ(third.GetEntity(byName[u""])->ToXLine()->NumParts(), 2u) << name << ": the hole";
    }
}

TEST_F(Gdal, LayerFieldDealsFeaturesToLayersAndOneLayerFormatsKeepTheNames) {
    ZvDrawing drawing, back;
    Load(drawing, Write("in.geojson", kFeatures), u"kind");
    for (const auto& [name, count] : {std::pair{u"road", 2u}, {u"lake", 1u}, {u"town", 1u}}) {
        ASSERT_TRUE(drawing.LayerTable()->GetByName(name));
        EXPECT_EQ(drawing.LayerTable()->GetByName(name)->Tree().CountNonErased(), count);
    }
    Save(drawing, m_folder.Path() / "one.geojson");
    EXPECT_EQ(m_losses.Count(ZvLossReport::Fate::Approximated,
                             "layers written as one, told apart by the field \"layer\""),
              3);
    Load(back, m_folder.Path() / "one.geojson", u"layer");
    EXPECT_EQ(back.LayerTable()->GetByName(u"road")->Tree().CountNonErased(), 2u);
}

TEST_F(Gdal, ShapefilesGetAFilesetPerKindAndReplaceOldOnesWhole) {
    ZvDrawing drawing, back;
    Load(drawing, Write("in.geojson", kFeatures));
    Save(drawing, m_folder.Path() / "roads.shp");
    Save(drawing, m_folder.Path() / "roads.shp");
    size_t shapes = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder.Path())) {
        shapes += entry.path().extension() == ".shp";
        EXPECT_NE(entry.path().filename().string().front(), '.') << "left over: " << entry.path();
    }
    EXPECT_EQ(shapes, 3u) << "points, lines and polygons";
}

TEST_F(Gdal, CoordinateSystemIsKeptByDrawingAndTarget) {
    ZvDrawing drawing, again, back;
    Load(drawing, Write("in.geojson", kFeatures));
    EXPECT_EQ(drawing.UcsTable()->CoordinateSystem().authority, XStringW(u"EPSG:4326"));
    EXPECT_EQ(drawing.UcsTable()->CoordinateSystem().kind, ZvCoordSystem::Kind::Geographic);
    EXPECT_NEAR(drawing.WorldToMeters(1), 111319.49, 0.01);
    Save(drawing, m_folder.Path() / "map.zvd");
    Load(again, m_folder.Path() / "map.zvd");
    EXPECT_EQ(again.UcsTable()->CoordinateSystem(), drawing.UcsTable()->CoordinateSystem());
    Save(again, m_folder.Path() / "map.gpkg");
    Load(back, m_folder.Path() / "map.gpkg");
    EXPECT_EQ(back.UcsTable()->CoordinateSystem().authority, XStringW(u"EPSG:4326"));
}

TEST_F(Gdal, CoordSystemsAnswerThroughTheDrawing) {
    ZvGdalCoordSystems systems;
    std::string why;
    EXPECT_TRUE(systems.Check(u"EPSG:25832", why));
    EXPECT_FALSE(systems.Check(u"EPSG:99999999", why));
    EXPECT_FALSE(why.empty());
    double latitude = 0, longitude = 0;
    ASSERT_TRUE(systems.ToLatLon(u"EPSG:25832", {500000, 5540000, 0}, latitude, longitude));
    EXPECT_NEAR(longitude, 9, 1e-6);
    EXPECT_NEAR(latitude, 50.01, 0.01);
    Vec3d back;
    ASSERT_TRUE(systems.FromLatLon(u"EPSG:25832", latitude, longitude, back));
    EXPECT_NEAR(back.x, 500000, 1e-3);
    EXPECT_NEAR(back.y, 5540000, 1e-3);
}

TEST_F(Gdal, StylesOfFeaturesBecomeAppearanceAndGoBack) {
    ZvDrawing drawing, back;
    Load(drawing, Write("in.geojson", kFeatures));
    for (ZvEntity* entity = drawing.NameTable().NextNonErased(nullptr); entity;
         entity = drawing.NameTable().NextNonErased(entity))
        if (ZvLineEntity* line = entity->ToLineEntity()) {
            line->SetColor(ZvColor(255, 0, 0));
            line->SetLineWidth(ZvLineWidth::ViewportMM(0.5));
        }
    Save(drawing, m_folder.Path() / "map.dxf");
    Load(back, m_folder.Path() / "map.dxf");
    size_t coloured = 0;
    for (ZvEntity* entity = back.NameTable().NextNonErased(nullptr); entity;
         entity = back.NameTable().NextNonErased(entity))
        coloured += entity->GetColor() == ZvColor(255, 0, 0);
    EXPECT_GE(coloured, 2u);
}

TEST_F(Gdal, DamagedSourcesAreRefusedWithTheFileNamed) {
    ZvDrawing drawing;
    for (const char* name : {"bad.geojson", "bad.gpkg", "bad.fgb", "bad.shp"}) {
        const fs::path file = Write(name, "{\"type\": \"Feat");
        IOErrorSet errors;
        EXPECT_NE(drawing.DrawingIO()->LoadFile(file, ZvIOFlag::Quiet, &errors), Zv::Status::Success) << name;
        EXPECT_NE(errors.ToString().find(name), std::string::npos) << errors.ToString();
    }
}

TEST_F(Gdal, RealDrawingsImportWithALossReport) {
    const char* data = std::getenv("ZELVAN_TEST_DATA");
    if (!data) {
        std::printf("ZELVAN_TEST_DATA is not set: no real drawings were tried\n");
        return;
    }
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(fs::path(data) / "cad")) {
        if (entry.path().extension() != ".dxf")
            continue;
        ZvDrawing drawing;
        ZvFileOptions options;
        ZvLossReport losses;
        options.losses = &losses;
        IOErrorSet errors;
        const Zv::Status status =
            drawing.DrawingIO()->LoadFile(entry.path(), ZvIOFlag::Quiet, &errors, &options);
        EXPECT_TRUE(Zv::Ok(status) || errors.HasErrors()) << entry.path();
        if (Zv::Ok(status)) {
            EXPECT_GT(losses.Total(ZvLossReport::Fate::Kept) + losses.Total(ZvLossReport::Fate::Dropped), 0)
                << entry.path();
        }
    }
}
