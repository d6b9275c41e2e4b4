// Values that mean something only in a drawing: by layer, records by name, indices of a file.
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Tables/ZvTextureTable.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/View/ZvView.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvUnits.h"
#include "ZvCore/MemFile.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>

namespace {

constexpr uint32_t kTextures = ZvTableCode::Full(ZvTableCode::Texture);
constexpr uint32_t kLineTypes = ZvTableCode::Full(ZvTableCode::LineType);

TEST(ValuesInDrawing, ByLayerResolvesThroughTheEntity) {
    ZvDrawing drawing;
    const ZvName name = drawing.Insert(std::make_unique<ZvPointEnt>(Vec3d{1, 2, 0}));
    const ZvEntity* entity = drawing.GetEntity(name);
    ASSERT_TRUE(entity && entity->GetLayer());
    ZvLayer& layer = *entity->GetLayer();
    layer.SetColor(ZvColor(1, 2, 3));
    layer.SetLineWidth(ZvLineWidth::Points(2));
    layer.SetLineType(ZvLineType(1));
    layer.SetBrush(ZvBrush::CrossHatch(ZvColor(2)));
    ZvColor color(5);
    ZvLineWidth width;
    ZvLineType type;
    ZvBrush brush;
    EXPECT_TRUE(ZvColor::ByLayer().Resolve(entity, color));
    EXPECT_EQ(color, ZvColor(1, 2, 3));
    EXPECT_TRUE(ZvLineWidth::ByLayer().Resolve(entity, width));
    EXPECT_EQ(width, ZvLineWidth::Points(2));
    EXPECT_TRUE(ZvLineType::ByLayer().Resolve(entity, type));
    EXPECT_EQ(type, ZvLineType(1));
    EXPECT_TRUE(ZvBrush::ByLayer().Resolve(entity, brush));
    EXPECT_EQ(brush, ZvBrush::CrossHatch(ZvColor(2)));
    EXPECT_TRUE(ZvBrush::Solid(ZvColor::ByLayer()).Resolve(entity, brush));
    EXPECT_EQ(brush, ZvBrush::Solid(ZvColor(1, 2, 3)));

    const ZvPointEnt loose({0, 0, 0});
    for (const ZvEntity* none :
         {static_cast<const ZvEntity*>(&loose), static_cast<const ZvEntity*>(nullptr)}) {
        EXPECT_FALSE(ZvColor::ByLayer().Resolve(none, color));
        EXPECT_FALSE(ZvBrush::Solid(ZvColor::ByLayer()).Resolve(none, brush));
        EXPECT_TRUE(ZvColor::ByBlock().Resolve(none, color));
        EXPECT_EQ(color.To64(), ZvColor(7).To64());
    }
}

TEST(ValuesInDrawing, PortableFormsCarryRecordsByName) {
    ZvDrawing from, to;
    from.TextureTable()->InsertNew(u"Grass");
    from.TextureTable()->InsertNew(u"Brick, red");
    to.TextureTable()->InsertNew(u"brick, RED");
    const ZvBrush brush = ZvBrush::FromTexture(1, ZvColor(1));
    EXPECT_EQ(brush.ToStringPortable(&from), XStringW(u"Texture:\"Brick, red\":I:1"));
    EXPECT_EQ(ZvBrush::FromStringPortable(brush.ToStringPortable(&from), &to),
              ZvBrush::FromTexture(0, ZvColor(1)));
    EXPECT_TRUE(ZvBrush::FromStringPortable(u"Texture:\"Grass\":I:1", &to).IsNull());
    EXPECT_TRUE(ZvBrush::FromStringPortable(u"Texture:0:I:1", &to).IsNull());
    EXPECT_EQ(ZvBrush::FromStringPortable(u"Solid:I:4", &to), ZvBrush::Solid(ZvColor(4)));
    EXPECT_TRUE(brush.CheckResolve(&from));
    EXPECT_FALSE(brush.CheckResolve(&to));

    const int dash = from.LineTypeTable()->IndexOf(from.LineTypeTable()->InsertNew(u"Dash-dot"));
    EXPECT_EQ(ZvLineType(dash).ToStringPortable(&from), XStringW(u"Dash-dot"));
    EXPECT_EQ(ZvLineType(dash).GetTextDesc(&from), XStringW(u"Dash-dot"));
    EXPECT_EQ(ZvLineType::FromStringPortable(u"dash-DOT", &from), ZvLineType(dash));
    EXPECT_EQ(ZvLineType::FromStringPortable(u"ByLayer", &to), ZvLineType::ByLayer());
    EXPECT_TRUE(ZvLineType::FromStringPortable(u"Dash-dot", &to).IsNull());
    ZvErrorCapture errors;
    EXPECT_EQ(ZvLineType(99).ToStringPortable(&from), XStringW(u"Null"));
    EXPECT_TRUE(errors.HasText("ZvLineType.ToStringPortable rec not found"));
}

TEST(ValuesInDrawing, IndicesOfAFileAreTranslated) {
    ZvDrawing drawing;
    ZvNativeFile native;
    ZvNativeDesc desc(native, drawing);
    ZvCore::MemFile file;
    desc.file = &file;
    desc.SetTableIndex(kTextures, 2, 5);
    desc.SetTableIndex(kLineTypes, 2, 6);
    const ZvBrush known = ZvBrush::FromTexture(2, ZvColor(-2, 0x44332211)), unknown = ZvBrush::FromTexture(3);
    ASSERT_TRUE(known.NativeOut(desc));
    const uint8_t expected[] = {2, 0, 0x11, 0x22, 0x33, 0x44, 0xFE, 0xFF}; // style, value, index
    ASSERT_EQ(file.Length(), sizeof expected);
    EXPECT_EQ(std::memcmp(file.View(0, sizeof expected), expected, sizeof expected), 0);
    ASSERT_TRUE(unknown.NativeOut(desc) && unknown.NativeOut(desc));
    ASSERT_TRUE(ZvLineType(2).NativeOut(desc) && ZvLineType(3).NativeOut(desc));
    ASSERT_TRUE(ZvLineWidth::Pixels(3).NativeOut(desc) && ZvColor(9).NativeOut(desc));

    ASSERT_TRUE(file.Seek(0));
    ZvBrush a, b, c;
    ASSERT_TRUE(a.NativeIn(desc) && b.NativeIn(desc, true) && c.NativeIn(desc, false));
    EXPECT_EQ(a, ZvBrush::FromTexture(5, known.GetColor()));
    EXPECT_TRUE(b.IsEmpty());
    EXPECT_EQ(c, unknown);
    ZvLineType d, e;
    ASSERT_TRUE(d.NativeIn(desc) && e.NativeIn(desc, true));
    EXPECT_EQ(d, ZvLineType(6));
    EXPECT_EQ(e, ZvLineType::Continuous());
    ZvLineWidth width;
    ZvColor color;
    ASSERT_TRUE(width.NativeIn(desc) && color.NativeIn(desc));
    EXPECT_EQ(width, ZvLineWidth::Pixels(3));
    EXPECT_EQ(color, ZvColor(9));
    EXPECT_FALSE(a.NativeIn(desc)); // the end
    EXPECT_EQ(a.GetTexture(), 5);
}

TEST(ValuesInDrawing, UsesAreCounted) {
    ZvDrawing drawing;
    drawing.TextureTable()->InsertNew(u"Grass");
    ZvUsageTable usage;
    ZvErrorCapture errors;
    ZvBrush::FromTexture(0).RecordUse(usage, &drawing);
    ZvBrush::Solid(ZvColor(1)).RecordUse(usage, &drawing);
    ZvLineType(1).RecordUse(usage);
    ZvLineType::ByLayer().RecordUse(usage);
    EXPECT_EQ(usage.Count(kTextures, 0), 1);
    EXPECT_EQ(usage.Count(kLineTypes, 1), 1);
    EXPECT_TRUE(errors.Entries().empty());
    ZvBrush::FromTexture(1).RecordUse(usage, &drawing);
    EXPECT_TRUE(errors.Has(14));
}

TEST(ValuesInDrawing, TheCurrentUcsGivesTheUsersUnit) {
    ZvDrawing drawing;
    ZvUnits& units = *drawing.Units();
    ZvUcs* ucs = drawing.UcsTable()->GetCurrent();
    ASSERT_TRUE(ucs);
    units.SetPreset(ZvUnits::Preset::Millimeters, 1, true);
    EXPECT_EQ(ucs->GetScale(), 1000);
    EXPECT_DOUBLE_EQ(units.UU2World(), 0.001);
    units.SetPreset(ZvUnits::Preset::Meters);
    double world = 0;
    EXPECT_TRUE(units.ParseDistanceFromUCS(u"250", world));
    EXPECT_DOUBLE_EQ(world, 0.25);
    EXPECT_TRUE(units.ParseDistanceFromUCS(u"250 km", world));
    EXPECT_DOUBLE_EQ(world, 250000);
    EXPECT_TRUE(units.ParseAreaFromUCS(u"1000000", world));
    EXPECT_DOUBLE_EQ(world, 1);
    EXPECT_EQ(units.FormatDistanceToUCS(0.25, true), XStringW(u"250.000 mm"));
    EXPECT_EQ(units.FormatDistance(0.25, true), XStringW(u"0.250 m"));
    ucs->SetOrigin({1, 0, 0});
    Vec3d point;
    EXPECT_TRUE(units.ParseCoord(u"500, 250", point));
    EXPECT_NEAR(point.x, 1.5, 1e-12);
    EXPECT_EQ(units.FormatCoord(Vec2d{1.5, 0.25}), XStringW(u"500.000, 250.000"));
}

TEST(ValuesInDrawing, ViewsShowTheirDrawingAndTellTheHost) {
    struct Host : ZvSilentHost {
        void InvalidateView(ZvView&, const Rect2I& pixels) override { last = pixels; }
        Rect2I last;
    } host;
    ZvDrawing drawing;
    drawing.SetHost(&host);
    drawing.Insert(std::make_unique<ZvPointEnt>(Vec3d{10, 20, 0}));
    drawing.Insert(std::make_unique<ZvPointEnt>(Vec3d{50, 60, 0}));
    ZvView view(&drawing, 1);
    view.Resize(200, 200);
    EXPECT_EQ(host.last, (Rect2I{0, 0, 200, 200}));
    ASSERT_TRUE(view.ZoomExtents(0));
    EXPECT_NEAR(view.PixelToPlane({0, 200}).x, 10, 1e-9);
    EXPECT_NEAR(view.PixelToPlane({0, 200}).y, 20, 1e-9);
    view.Invalidate({30, 40, 0, 31, 41, 0});
    EXPECT_EQ(host.last, (Rect2I{98, 93, 107, 102}));
}

} // namespace
