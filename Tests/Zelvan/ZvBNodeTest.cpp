#include "Zelvan/ZvBNode.h"
#include "Tests/Support/BoxEntity.h"
#include "Tests/Support/TextGeometry.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"
#include <cmath>
#include <gtest/gtest.h>

namespace {

BoxEntity* Add(ZvBNode& tree, double x0, double y0, double x1, double y1) {
    auto* entity = new BoxEntity(x0, y0, x1, y1);
    EXPECT_TRUE(tree.Insert(entity));
    return entity;
}

/// A root box of 300 x 210 around the origin: a frame of 200 x 140 and 49 small entities along its diagonal.
void FillToTheBrim(ZvBNode& tree) {
    Add(tree, -100, -70, 100, 70);
    for (int i = 0; i < 49; ++i)
        Add(tree, -100 + 4 * i, -70 + 2.75 * i, -99 + 4 * i, -69 + 2.75 * i);
}

std::vector<ZvEntity*> Listed(const ZvBNode& node) {
    const auto own = node.GetEntitiesNoWalk();
    return {own.begin(), own.end()};
}

} // namespace

TEST(ZvBNode, StartsEmptyWithEmptyBoxes) {
    ZvBNode tree;
    EXPECT_TRUE(tree.Box().IsNull());
    EXPECT_TRUE(tree.Bounds().IsNull());
    EXPECT_EQ(tree.DebugGetNodeId(), 1);
    EXPECT_EQ(tree.GetMaxEntitiesPerNode(), 50);
    EXPECT_EQ(tree.ChildNumber(), -1);
    EXPECT_EQ(tree.RootBlock(), &tree);
    dvect<ZvEntity*> found;
    tree.PureSelectRect(ZvBounds2D::SuperBounds(), found);
    EXPECT_TRUE(found.empty());
}

TEST(ZvBNode, RootBoxGrowsAboutTheUnion) {
    ZvBNode tree;
    Add(tree, 0, 0, 8, 4);
    // Grown by 1.5 about the centre, its proportion left alone.
    EXPECT_EQ(tree.Box(), ZvBounds3D(-2, -1, 0, 10, 5, 0));
    Add(tree, 0, 0, 1, 1);
    EXPECT_EQ(tree.Box(), ZvBounds3D(-2, -1, 0, 10, 5, 0));
    Add(tree, 20, 0, 22, 1);
    // A leaf: the union of old box and entity by 1.5, then the proportion of the square root of two.
    EXPECT_EQ(tree.Box().minX, -8);
    EXPECT_EQ(tree.Box().maxX, 28);
    EXPECT_DOUBLE_EQ(tree.Box().Height(), 36 * std::sqrt(2.0));
    EXPECT_DOUBLE_EQ(tree.Box().Center().y, 2);
    std::string why;
    EXPECT_TRUE(tree.DebugCheck(why)) << why;
}

TEST(ZvBNode, AFullOrSplitRootIsRebuiltInThreeTimesTheUnion) {
    ZvBNode tree;
    FillToTheBrim(tree);
    ZvBounds3D all = tree.Box();
    EXPECT_FALSE(tree.IsSplit());
    Add(tree, 1000, 0, 1001, 1);
    all.ExpandToFit(ZvBounds3D(1000, 0, 0, 1001, 1, 0));
    EXPECT_DOUBLE_EQ(tree.Box().Width(), 3 * all.Width());
    EXPECT_DOUBLE_EQ(tree.Box().Center().x, all.Center().x);
    EXPECT_EQ(tree.Count(), 51u);
    std::string why;
    EXPECT_TRUE(tree.DebugCheck(why)) << why;
}

TEST(ZvBNode, GrowthInHeightAloneRebuildsAsAnyOther) {
    ZvBNode tree;
    FillToTheBrim(tree);
    Add(tree, 0, 0, 1, 1);
    ZvBounds3D all = tree.Box();
    auto* high = new BoxEntity(ZvBounds3D(0, 0, 50, 1, 1, 60));
    tree.Insert(high);
    all.ExpandToFit(high->Bounds3D());
    EXPECT_DOUBLE_EQ(tree.Box().Width(), 3 * all.Width());
    EXPECT_DOUBLE_EQ(tree.Box().minZ, -60);
    EXPECT_DOUBLE_EQ(tree.Box().maxZ, 120);
    EXPECT_EQ(tree.Bounds().maxZ, 60);
    std::string why;
    EXPECT_TRUE(tree.DebugCheck(why)) << why;
}

TEST(ZvBNode, TheEntityAfterTheLimitSplitsTheRoot) {
    ZvBNode tree;
    FillToTheBrim(tree);
    EXPECT_FALSE(tree.IsSplit());
    const ZvBounds3D box = tree.Box();
    const double middle = box.Center().x, band = 0.02 * box.Width();
    auto* within = new BoxEntity(middle - band / 2, 0, middle + band / 2, 1);
    auto* astride = new BoxEntity(middle - 2 * band, 0, middle + 2 * band, 1);
    tree.Insert(within);
    tree.Insert(astride);
    ASSERT_TRUE(tree.IsSplit());
    // Cut across the longer side; halves overlap by 2 % of the width on each side.
    EXPECT_DOUBLE_EQ(tree.Child(0)->Box().maxX, middle + band);
    EXPECT_DOUBLE_EQ(tree.Child(1)->Box().minX, middle - band);
    EXPECT_EQ(tree.Child(0)->Box().minY, box.minY);
    EXPECT_EQ(tree.Child(0)->Box().maxY, box.maxY);
    EXPECT_EQ(within->ParentBlockLeaf(), tree.Child(0));
    EXPECT_EQ(astride->ParentBlockLeaf(), &tree);
    EXPECT_EQ(astride->ParentBlockRoot(), &tree);
    EXPECT_EQ(tree.Child(0)->ChildNumber(), 0);
    EXPECT_EQ(tree.Child(1)->ChildNumber(), 1);
    EXPECT_EQ(tree.Child(1)->DebugGetLevel(), 1);
    EXPECT_EQ(tree.Child(0)->DebugGetNodeId(), 2);
    EXPECT_EQ(tree.Child(1)->DebugGetNodeId(), 3);
    EXPECT_TRUE(tree.IsBoundsDirty());
    EXPECT_EQ(tree.Bounds(), ZvBounds3D(-100, -70, 0, 100, 70, 0));
    EXPECT_FALSE(tree.IsBoundsDirty());
}

TEST(ZvBNode, AChildWithoutEntitiesGetsTheMiddleOfTheHeights) {
    ZvBNode tree;
    tree.Insert(new BoxEntity(ZvBounds3D(-100, -70, 10, 100, 70, 30)));
    for (int i = 0; i < 50; ++i)
        tree.Insert(new BoxEntity(ZvBounds3D(-90 + i, i, 10, -89 + i, i + 1, 30)));
    ASSERT_TRUE(tree.IsSplit());
    ASSERT_EQ(tree.Child(1)->Count(), 0u);
    EXPECT_DOUBLE_EQ(tree.Child(1)->Box().minZ, 20);
    EXPECT_EQ(tree.Child(1)->Box().maxZ, tree.Child(1)->Box().minZ);
}

TEST(ZvBNode, InsertionTriesTheLastNodeFirst) {
    ZvBNode tree;
    FillToTheBrim(tree);
    Add(tree, -90, -60, -89, -59);
    const int32_t counted = tree.RootInfo().insertionCounter;
    const ZvBNode* last = tree.RootInfo().lastInsertionNode;
    ASSERT_NE(last, &tree);
    const BoxEntity* near = Add(tree, -90.5, -60.5, -90, -60);
    EXPECT_EQ(near->ParentBlockLeaf(), last);
    EXPECT_EQ(tree.RootInfo().insertionCounter, counted);
    Add(tree, 90, 60, 91, 61);
    EXPECT_EQ(tree.RootInfo().insertionCounter, counted + 1);
    EXPECT_EQ(tree.Bounds().minX, -100);
}

TEST(ZvBNode, NullAndOwnedEntitiesAreRefusedAndReported) {
    ZvBNode tree, other;
    BoxEntity* owned = Add(other, 0, 0, 1, 1);
    ZvErrorCapture errors;
    EXPECT_FALSE(tree.Insert(nullptr));
    EXPECT_TRUE(errors.HasText("ZvBNode.Insert"));
    EXPECT_FALSE(tree.Insert(owned));
    ZvEntity* const mixed[] = {nullptr, owned, new BoxEntity(0, 0, 1, 1)};
    tree.InsertBulk(mixed);
    EXPECT_EQ(tree.Count(), 1u);
    EXPECT_EQ(errors.Entries().size(), 4u);
    EXPECT_FALSE(tree.RemoveMe(owned));
}

TEST(ZvBNode, ErasedEntitiesAreHeldButExtendNothing) {
    ZvBNode tree;
    Add(tree, 0, 0, 1, 1);
    auto* erased = new BoxEntity(50, 50, 60, 60);
    erased->SetErased(true);
    tree.Insert(erased);
    EXPECT_EQ(tree.Count(), 2u);
    EXPECT_EQ(tree.CountNonErased(), 1u);
    EXPECT_EQ(tree.Bounds().maxX, 1);
    EXPECT_TRUE(erased->SetErased(false));
    EXPECT_EQ(tree.Bounds().maxX, 60);
    erased->SetVisible(false);
    EXPECT_EQ(tree.Bounds().maxX, 60);
    EXPECT_EQ(tree.VisibleBounds().maxX, 1);
    EXPECT_EQ(tree.DrawSet().size(), 1u);
    erased->SetErased(true);
    EXPECT_EQ(tree.PurgeErased(), 1u);
    EXPECT_EQ(tree.Count(), 1u);
}

TEST(ZvBNode, RemovalKeepsTheOrderOfTheOthers) {
    ZvBNode tree;
    std::vector<ZvEntity*> order;
    for (int i = 0; i < 5; ++i)
        order.push_back(Add(tree, i, 0, i + 1, 1));
    const int32_t changes = tree.ChangeCounter();
    ASSERT_TRUE(tree.RemoveMe(order[2]));
    EXPECT_EQ(order[2]->Owner(), nullptr);
    EXPECT_GT(tree.ChangeCounter(), changes);
    EXPECT_TRUE(tree.IsBoundsDirty());
    delete order[2];
    order.erase(order.begin() + 2);
    EXPECT_EQ(Listed(tree), order);
    EXPECT_TRUE(tree.DeleteMe(order[0]));
    EXPECT_EQ(tree.Count(), 3u);
}

TEST(ZvBNode, EntityOrderChangesWithinTheNode) {
    struct Case {
        ZvEntityOrder order;
        int what, relative;
        std::string expected;
    };
    for (const Case& c :
         {Case{ZvEntityOrder::ToFront, 1, -1, "0231"}, Case{ZvEntityOrder::ToBack, 2, -1, "2013"},
          Case{ZvEntityOrder::Above, 0, 2, "1203"}, Case{ZvEntityOrder::Above, 3, 0, "0312"},
          Case{ZvEntityOrder::Below, 0, 3, "1203"}, Case{ZvEntityOrder::Below, 3, 1, "0312"},
          Case{ZvEntityOrder::Above, 1, 0, "0123"}}) {
        ZvBNode tree;
        std::vector<ZvEntity*> e;
        for (int i = 0; i < 4; ++i)
            e.push_back(Add(tree, i, 0, i + 1, 1));
        const ZvEntity* relative = c.relative < 0 ? nullptr : e[size_t(c.relative)];
        EXPECT_TRUE(tree.ChangeEntityOrder(e[size_t(c.what)], c.order, relative));
        std::string order;
        for (const ZvEntity* entity : tree.GetEntitiesNoWalk())
            order += char('0' + std::find(e.begin(), e.end(), entity) - e.begin());
        EXPECT_EQ(order, c.expected);
        EXPECT_FALSE(tree.ChangeEntityOrder(e[0], ZvEntityOrder::Above, e[0]));
        std::string why;
        EXPECT_TRUE(tree.DebugCheck(why)) << why;
    }
}

TEST(ZvBNode, FindsEnclosingAndEnclosedNodes) {
    ZvBNode tree;
    FillToTheBrim(tree);
    Add(tree, 0, 0, 1, 1);
    const ZvBounds3D left = tree.Child(0)->Box(), right = tree.Child(1)->Box();
    EXPECT_EQ(tree.SmallestEnclosingNode({-90, 0, -80, 1}), tree.Child(0));
    EXPECT_EQ(tree.SmallestEnclosingNode({-90, 0, 90, 1}), &tree);
    EXPECT_EQ(tree.SmallestEnclosingNode({-9000, 0, 90, 1}), nullptr);
    EXPECT_EQ(tree.SmallestEnclosingNode({right.minX, 0, left.maxX, 1}),
              tree.Child(0)); // the band: child 0 first
    EXPECT_EQ(tree.LargestEnclosedNode(tree.Box().ToBounds2D()), &tree);
    EXPECT_EQ(tree.LargestEnclosedNode(right.ToBounds2D()), tree.Child(1));
    EXPECT_EQ(tree.LargestEnclosedNode({0, 0, 1, 1}), nullptr);
}

TEST(ZvBNode, CoincidentEntitiesDoNotGrowChainsOfNodes) {
    ZvBNode tree;
    Add(tree, -100, -100, 100, 100);
    std::vector<ZvEntity*> many;
    for (int i = 0; i < 3000; ++i)
        Add(tree, 1, 1, 1, 1);
    for (int i = 0; i < 3000; ++i)
        many.push_back(new BoxEntity(1 + 1e-9, 1, 1 + 1e-9, 1));
    tree.InsertBulk(many);
    const ZvIndexBlockStats stats = tree.GetIndexBlockStats();
    EXPECT_LT(stats.maxDepth, 100);
    EXPECT_LT(stats.nodes, 300u);
    EXPECT_EQ(stats.entities, 6001u);
    std::string why;
    EXPECT_TRUE(tree.DebugCheck(why)) << why;
}

TEST(ZvBNode, WalkGoesFromNodeToChildrenAndObeysTheVisitor) {
    ZvBNode tree;
    FillToTheBrim(tree);
    const ZvEntity* frame = tree.DataGet(0);
    Add(tree, 95, 60, 96, 61)->SetVisible(false);
    struct Visitor : IZvBNodeVisitor {
        ZvWalkStep answer = ZvWalkStep::Descend;
        std::vector<const ZvEntity*> seen;
        int nodes = 0;
        ZvWalkStep Node(const ZvBNode& node, const ZvBounds3D& bounds) override {
            ++nodes;
            EXPECT_EQ(bounds, node.VisibleBounds());
            return node.IsRoot() ? answer : ZvWalkStep::Descend;
        }
        bool Run(const ZvNodeRun& run) override {
            seen.insert(seen.end(), run.entities.begin(), run.entities.end());
            return true;
        }
    } all, whole, none;
    EXPECT_TRUE(tree.Walk(all));
    EXPECT_EQ(all.nodes, 3);
    ASSERT_EQ(all.seen.size(), 50u); // the hidden one is not drawn
    EXPECT_EQ(all.seen[0], frame);
    EXPECT_EQ(all.seen[1], tree.Child(0)->DataGet(0));
    whole.answer = ZvWalkStep::TakeAll;
    EXPECT_TRUE(tree.Walk(whole));
    EXPECT_EQ(whole.nodes, 1);
    EXPECT_EQ(whole.seen, all.seen);
    none.answer = ZvWalkStep::Stop;
    EXPECT_FALSE(tree.Walk(none));
    EXPECT_TRUE(none.seen.empty());
}

TEST(ZvBNode, RaysReachWithinTheirRadius) {
    const ZvBounds3D box(0, 0, 0, 10, 10, 0);
    const Ray3d down{{12, 5, 100}, {0, 0, -1}}, slanting{{-50, 5, 50}, {1, 0, -1}},
        along{{-5, 20, 0}, {1, 0, 0}};
    EXPECT_FALSE(ZvBNode::RayCylinderIntersects(down, 1.9, box));
    EXPECT_TRUE(ZvBNode::RayCylinderIntersects(down, 2, box));
    EXPECT_TRUE(ZvBNode::RayCylinderIntersects(slanting, 0, box));
    EXPECT_FALSE(ZvBNode::RayCylinderIntersects(along, 9, box));
    EXPECT_FALSE(ZvBNode::RayCylinderIntersects(down, 1e9, ZvBounds3D()));
}

// --- in a drawing ------------------------------------------------------------------------------------------------------------

namespace {

struct PackedLayer {
    ZvDrawing drawing;
    ZvBNode* tree = nullptr;

    PackedLayer() {
        for (int i = 0; i < 200; ++i) {
            auto line = LineFromText("0,0 5,1,2 9,9");
            line->Translate({i % 20 * 10.0, i / 20 * 10.0, 0});
            line->SetLineWidth(ZvLineWidth::Points(i % 7));
            line->SetErased(i % 11 == 3);
            line->SetDirectionFlipped(i % 5 == 0);
            drawing.Insert(std::move(line));
        }
        drawing.Insert(std::make_unique<ZvPointEnt>(Vec3d{1, 2, 3}));
        tree = drawing.GetEntity(1)->ParentBlockRoot();
    }
    std::string Content() const {
        std::string text;
        for (uint32_t name = 1; name <= 201; ++name) {
            const ZvEntity* e = drawing.GetEntity(name);
            const ZvBounds3D b = e->Bounds3D();
            text += std::to_string(e->GetFlagsMask()) + ' ' + std::to_string(b.minX) + ' ' +
                    std::to_string(b.maxZ) + ' ' + std::to_string(e->GetFullCode()) + '\n';
        }
        return text;
    }
};

} // namespace

TEST(ZvBNodePack, UnpackedEntitiesTakeThePlaceOfTheirFormers) {
    PackedLayer layer;
    const std::string before = layer.Content();
    std::vector<uint8_t> packed, again;
    ASSERT_TRUE(layer.tree->Pack(packed));
    EXPECT_EQ(layer.tree->ComputePackedSize(), packed.size());
    layer.drawing.GetEntity(7)->Translate({1000, 0, 0});
    layer.drawing.Insert(std::make_unique<ZvPointEnt>(Vec3d{1, 2, 3})); // is not in the pack
    ASSERT_TRUE(layer.tree->Unpack(packed));
    EXPECT_EQ(layer.Content(), before);
    EXPECT_EQ(layer.drawing.GetEntity(202), nullptr);
    EXPECT_EQ(layer.tree->Count(), 201u);
    ASSERT_TRUE(layer.tree->Pack(again));
    EXPECT_EQ(again.size(), packed.size());
    std::string why;
    EXPECT_TRUE(layer.tree->DebugCheck(why)) << why;
}

TEST(ZvBNodePack, WhatIsNotAWholePackChangesNothing) {
    PackedLayer layer;
    const std::string before = layer.Content();
    std::vector<uint8_t> packed;
    ASSERT_TRUE(layer.tree->Pack(packed));
    for (size_t length = 0; length < packed.size(); length += length < 200 ? 1 : 997)
        EXPECT_FALSE(layer.tree->Unpack({packed.data(), length})) << length;
    packed.push_back(0);
    EXPECT_FALSE(layer.tree->Unpack(packed));
    EXPECT_EQ(layer.Content(), before);
    ZvBNode homeless;
    EXPECT_FALSE(homeless.Pack(packed));
}

TEST(ZvBNodePack, NamesAreRemapped) {
    PackedLayer layer;
    ZvEntity* entity = layer.drawing.GetEntity(5);
    layer.tree->RemapEntities({{5, 5000}});
    EXPECT_EQ(entity->Name32(), 5000u);
    layer.tree->RemapEntities({{5000, 5}});
    EXPECT_EQ(entity->Name32(), 5u);
}

TEST(ZvBNode, DeletingEntitiesGivesTheirNamesBack) {
    PackedLayer layer;
    ZvErrorCapture errors;
    EXPECT_TRUE(layer.tree->DeleteMe(layer.drawing.GetEntity(4)));
    EXPECT_FALSE(layer.drawing.NameTable().Exists(4));
    const size_t purged = layer.tree->PurgeErased();
    EXPECT_EQ(layer.drawing.NameTable().Count(), int32_t(200 - purged));
    layer.tree->DeleteAll();
    EXPECT_EQ(layer.drawing.NameTable().Count(), 0);
    EXPECT_TRUE(errors.Entries().empty());
}
