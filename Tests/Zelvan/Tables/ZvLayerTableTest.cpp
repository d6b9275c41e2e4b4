#include "Zelvan/Tables/ZvLayerTable.h"
#include "Tests/Support/BoxEntity.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Tables/ZvDataTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>

namespace {

std::string Names(const std::vector<ZvLayer*>& layers) {
    std::string names;
    for (const ZvLayer* layer : layers)
        if (!layer->IsInternal())
            names += layer->GetName().ToUtf8() + " ";
    return names;
}

} // namespace

TEST(ZvLayerTable, DefaultsAreTheInternalLayersAndLayerZero) {
    ZvDrawing drawing;
    ZvLayerTable& layers = *drawing.LayerTable();
    ASSERT_EQ(layers.Count(), 7);
    const char* internals[] = {"__Paper__",        "__Scratch__", "__HotSnap__",
                               "__Construction__", "__Grid__",    "__TempBitmap__"};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(layers.Get(i)->GetName().ToUtf8(), internals[i]);
        EXPECT_TRUE(layers.Get(i)->IsLocked() && layers.Get(i)->IsInternal());
        EXPECT_FALSE(layers.DeleteRecord(i));
    }
    EXPECT_EQ(layers.Get(6)->GetName().ToUtf8(), "0");
    EXPECT_EQ(layers.GetCurrent(), layers.Get(6));
    layers.Purge();
    EXPECT_EQ(layers.GetGridLayer()->GetName().ToUtf8(), "__Grid__") << "made again when asked for";
    EXPECT_EQ(layers.Count(), 7);
}

TEST(ZvLayerTable, DrawingOrderFollowsMovesAndStrata) {
    ZvDrawing drawing;
    ZvLayerTable& layers = *drawing.LayerTable();
    ZvLayer *a = layers.InsertNew(u"a"), *b = layers.InsertNew(u"b"), *c = layers.InsertNew(u"c");
    EXPECT_EQ(Names(layers.GetLayerOrder()), "0 a b c ");
    EXPECT_TRUE(layers.MoveLayerToBottom(c));
    EXPECT_EQ(Names(layers.GetLayerOrder()), "c 0 a b ");
    EXPECT_TRUE(layers.MoveLayerAbove(c, a));
    EXPECT_EQ(Names(layers.GetLayerOrder()), "0 a c b ");
    EXPECT_TRUE(layers.MoveLayerBeneath(b, a));
    EXPECT_EQ(Names(layers.GetLayerOrder()), "0 b a c ");
    EXPECT_TRUE(layers.MoveLayerToTop(a));
    EXPECT_FALSE(layers.MoveLayerAbove(a, a));
    EXPECT_EQ(Names(layers.GetLayerOrder()), "0 b c a ");
    a->SetStrata(-1);
    EXPECT_EQ(Names(layers.GetDrawOrder()), "a 0 b c ");
    layers.DeleteRecord(b);
    layers.InsertNew(u"d");
    EXPECT_EQ(Names(layers.GetLayerOrder()), "0 c a d ");
    layers.SetLayerOrder({a, c});
    EXPECT_EQ(Names(layers.GetLayerOrder()), "a c 0 d ");
}

TEST(ZvLayerTable, GroupsHoldLayersAndShareTheNamesWithThem) {
    ZvDrawing drawing;
    ZvLayerTable& layers = *drawing.LayerTable();
    ZvLayer* wall = layers.InsertNew(u"Wall");
    EXPECT_TRUE(layers.AddGroup(u"Building"));
    for (const char16_t* bad : {u"building", u"WALL", u"a/b", u"", u"__UNGROUPED__"})
        EXPECT_FALSE(layers.AddGroup(bad)) << XStringW(bad).ToUtf8();
    EXPECT_FALSE(layers.IsNewNameValid(u"BUILDING"));
    EXPECT_FALSE(layers.IsNewNameValid(u"__ungrouped__"));
    EXPECT_TRUE(layers.AddToGroup(wall, u"BUILDING"));
    EXPECT_FALSE(layers.AddToGroup(wall, u"nowhere"));
    EXPECT_EQ(wall->GetGroup(), XStringW(u"Building"));
    EXPECT_TRUE(layers.GroupRename(u"Building", u"House"));
    EXPECT_EQ(Names(layers.GetGroupLayers(u"house")), "Wall ");
    EXPECT_EQ(layers.FindNewGroupName(), XStringW(u"Group1"));
    EXPECT_EQ(layers.FindNewGroupName(u"House"), XStringW(u"House1"));
    EXPECT_EQ(layers.FindNewGroupName(u"A/B"), XStringW(u"A_B"));
    for (const char16_t* taken : {u"house", u"ByBlock"}) {
        ZvPropertySetter setter;
        setter.Set("Name", XStringW(taken));
        wall->SetProperties(setter);
        EXPECT_TRUE(setter.IsRefused("Name")) << XStringW(taken).ToUtf8();
    }
    EXPECT_TRUE(layers.DeleteGroup(u"House"));
    EXPECT_TRUE(wall->GetGroup().IsEmpty());
    EXPECT_FALSE(drawing.DataTable()->GetByName(u"__LayerGroups__")) << "no groups, no record";
}

TEST(ZvLayerTable, PresetsBringSwitchesBack) {
    ZvDrawing drawing;
    ZvLayerTable& layers = *drawing.LayerTable();
    ZvLayer *a = layers.InsertNew(u"a"), *b = layers.InsertNew(u"b");
    a->SetVisible(false);
    b->SetLocked(true);
    EXPECT_FALSE(layers.PresetSet({}));
    EXPECT_TRUE(layers.PresetSet(u"Plan"));
    a->SetVisible(true);
    b->SetLocked(false);
    b->SetPrintable(false);
    layers.InsertNew(u"later")->SetVisible(false);
    EXPECT_TRUE(layers.PresetGet(u"PLAN"));
    EXPECT_TRUE(!a->IsVisible() && b->IsLocked() && b->IsPrintable());
    EXPECT_FALSE(layers.GetByName(u"later")->IsVisible()) << "a layer that the preset does not know stays";
    EXPECT_TRUE(drawing.DataTable()->GetXml(u"__LayerPresets__"));
    EXPECT_TRUE(layers.PresetErase(u"plan"));
    EXPECT_FALSE(layers.PresetFind(u"Plan") || layers.PresetGet(u"Plan") || layers.PresetErase(u"Plan"));
}

TEST(ZvLayer, EntitiesGetNamesAndLeaveTheNameTableWithTheLayer) {
    ZvDrawing drawing;
    ZvLayer* layer = drawing.LayerTable()->InsertNew(u"a");
    const ZvName first = layer->Adopt(std::make_unique<BoxEntity>(0, 0, 1, 1));
    layer->Adopt(std::make_unique<BoxEntity>(2, 2, 3, 3));
    EXPECT_EQ(first.value, 1u);
    EXPECT_EQ(drawing.GetEntity(first)->GetLayer(), layer);
    auto again = std::make_unique<BoxEntity>(4, 4, 5, 5);
    again->SetName32(1);
    {
        const ZvErrorCapture taken;
        EXPECT_EQ(layer->AdoptNamed(std::move(again)).value, 3u);
    }
    EXPECT_EQ(layer->EntityCount(), 3u);
    EXPECT_EQ(drawing.LayerTable()->WorldExtents(), ZvBounds3D(0, 0, 0, 5, 5, 0));
    layer->Attributes().AddField({u"f"});
    const uint64_t stamp = layer->GetEntityModStamp();
    EXPECT_TRUE(drawing.LayerTable()->DeleteRecord(layer));
    EXPECT_GT(stamp, 0u);
    EXPECT_EQ(drawing.NameTable().Count(), 0);
    ZvLayer loose;
    EXPECT_TRUE(loose.Adopt(std::make_unique<BoxEntity>()).IsNull());
}

TEST(ZvLayer, DelayedEntitiesAreLoadedOnce) {
    ZvDrawing drawing;
    ZvLayer* layer = drawing.LayerTable()->InsertNew(u"a");
    int calls = 0;
    bool works = false;
    layer->SetDelayLoaded([&](ZvLayer& asked) {
        ++calls;
        EXPECT_TRUE(asked.EnsureEntireLayerLoaded()) << "asking from inside does not come back";
        if (works)
            asked.Adopt(std::make_unique<BoxEntity>(0, 0, 1, 1));
        return works;
    });
    EXPECT_TRUE(layer->IsDelayLoaded());
    EXPECT_FALSE(layer->EnsureEntireLayerLoaded());
    EXPECT_TRUE(layer->IsDelayLoaded()) << "it can be tried again";
    works = true;
    EXPECT_TRUE(layer->EnsureEntireLayerLoaded() && layer->EnsureEntireLayerLoaded());
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(layer->EntityCount(), 1u);
}

TEST(ZvLayer, OwnValuesCannotBeByLayer) {
    ZvLayer layer;
    layer.SetColor(ZvColor::ByLayer());
    layer.SetLineType(ZvLineType::ByLayer());
    layer.SetLineWidth(ZvLineWidth::ByBlock());
    layer.SetBrush(ZvBrush::ByLayer());
    layer.SetTransparency(7);
    EXPECT_EQ(layer.GetColor(), ZvColor(7));
    EXPECT_TRUE(layer.GetLineType().IsContinuous() && layer.GetLineWidth().IsThin() &&
                layer.GetBrush().IsEmpty());
    EXPECT_EQ(layer.GetTransparency(), 1);
}
