#include "Tests/Support/ProbeEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>
#include <random>

namespace {

std::vector<uint32_t> Names(const ZvSelection& selection) {
    return selection.Names();
}

class ZvSelectionTest : public ::testing::Test {
protected:
    ZvDrawing drawing;
    ProbeEntity* Add(double x = 0, const XStringW& layer = {}) {
        auto entity = std::make_unique<ProbeEntity>(ZvBounds2D{x, 0, x + 1, 1});
        ProbeEntity* raw = entity.get();
        drawing.Insert(std::move(entity), layer);
        return raw;
    }
    ZvSelection Of(std::initializer_list<uint32_t> names) {
        ZvSelection selection(&drawing);
        for (uint32_t name : names)
            selection.Insert(ZvName(name));
        return selection;
    }
};

} // namespace

TEST_F(ZvSelectionTest, SecondInsertionOfAMemberChangesNothing) {
    ProbeEntity* entity = Add();
    ProbeEntity nameless;
    ZvSelection selection(&drawing);
    EXPECT_TRUE(selection.Insert(entity));
    const uint32_t changes = selection.ChangeCount();
    EXPECT_FALSE(selection.Insert(entity));
    EXPECT_FALSE(selection.Insert(entity->Name()));
    EXPECT_FALSE(selection.Insert(&nameless));
    EXPECT_FALSE(selection.InsertIfExists(ZvName(77)));
    EXPECT_EQ(selection.Count(), 1);
    EXPECT_EQ(selection.ChangeCount(), changes);
    selection.Clear();
    EXPECT_EQ(selection.ChangeCount(), changes + 1);

    ZvSelection orphan;
    ZvErrorCapture errors;
    EXPECT_TRUE(orphan.Insert(entity));
    EXPECT_TRUE(errors.Has(10039));
    EXPECT_EQ(orphan.ParentDrawing(), &drawing);
}

TEST_F(ZvSelectionTest, MembershipIsTheSameBeforeAndAfterTheIndexSwitch) {
    std::mt19937 random(7);
    ZvSelection selection(&drawing);
    std::vector<uint32_t> model;
    for (int step = 0; step < 4000; ++step) {
        const uint32_t name = 1 + random() % 60;
        const auto at = std::find(model.begin(), model.end(), name);
        const bool wasIn = at != model.end();
        ASSERT_EQ(selection.Contains(ZvName(name)), wasIn) << step;
        if (random() % 3) {
            ASSERT_EQ(selection.Insert(ZvName(name)), !wasIn);
            if (!wasIn)
                model.push_back(name);
        } else {
            ASSERT_EQ(selection.Remove(ZvName(name)), wasIn);
            if (wasIn)
                model.erase(at);
        }
        ASSERT_EQ(Names(selection), model);
        ASSERT_EQ(selection.IndexOf(ZvName(61)), -1);
    }
    ASSERT_FALSE(model.empty());
    EXPECT_EQ(selection.IndexOf(ZvName(model.back())), int(model.size()) - 1);
}

TEST_F(ZvSelectionTest, UniqueInsertionNestsAndLeavesMembershipRight) {
    ZvSelection selection(&drawing);
    selection.Insert(ZvName(1));
    selection.BeginUniqueInsertion();
    selection.BeginUniqueInsertion();
    for (uint32_t name = 2; name <= 50; ++name)
        selection.Insert(ZvName(name));
    selection.FinishUniqueInsertion();
    selection.Insert(ZvName(51));
    selection.FinishUniqueInsertion();
    EXPECT_FALSE(selection.Insert(ZvName(40)));
    EXPECT_EQ(selection.Count(), 51);
    EXPECT_TRUE(selection.Contains(ZvName(51)));
}

TEST_F(ZvSelectionTest, CombineModes) {
    const ZvSelection a = Of({5, 1, 3, 9}), b = Of({9, 2, 1, 8});
    const struct {
        ZvSetCombineModes mode;
        std::vector<uint32_t> expected;
    } cases[] = {
        {ZvSetCombineModes::Union, {5, 1, 3, 9, 2, 8}},
        {ZvSetCombineModes::AWithoutB, {5, 3}},
        {ZvSetCombineModes::BWithoutA, {2, 8}},
        {ZvSetCombineModes::Intersection, {1, 9}},
        {ZvSetCombineModes::SymmetricDifference, {5, 3, 2, 8}},
        {ZvSetCombineModes::OnlyA, {5, 1, 3, 9}},
        {ZvSetCombineModes::OnlyB, {9, 2, 1, 8}},
    };
    for (const auto& c : cases) {
        ZvSelection out = Of({77});
        ZvSelection::Combine(a, b, out, c.mode);
        EXPECT_EQ(Names(out), c.expected) << int(c.mode);
    }
    ZvErrorCapture errors;
    ZvSelection out = Of({77});
    ZvSelection::Combine(a, b, out, ZvSetCombineModes(7));
    EXPECT_TRUE(errors.Has(ZvErrors::kFatal));
    EXPECT_TRUE(out.IsEmpty());
    EXPECT_TRUE(a.PositiveUnion(b));
    EXPECT_FALSE(Of({1}).PositiveUnion(Of({2})));
    EXPECT_EQ(Of({1, 2}), Of({2, 1}));
    EXPECT_FALSE(Of({1, 2}) == Of({1, 3}));
}

TEST_F(ZvSelectionTest, MembersThatVanishedAreToldApartAndCropped) {
    ProbeEntity* a = Add(0);
    ProbeEntity* b = Add(10);
    ProbeEntity* c = Add(20, u"hidden");
    ProbeEntity* d = Add(30);
    ProbeEntity* e = Add(40);
    ZvSelection selection = Of({a->Name32(), b->Name32(), c->Name32(), d->Name32(), e->Name32()});
    EXPECT_EQ(selection.GetBounds(), ZvBounds3D(0, 0, 0, 41, 1, 0));
    drawing.LayerTable()->GetByName(u"hidden")->SetVisible(false);
    d->SetVisible(false);
    e->SetErased(true);
    a->RemoveAndDelete();
    EXPECT_FALSE(selection.Check(0));
    EXPECT_EQ(selection.GetEntityQuiet(0), nullptr);
    EXPECT_EQ(selection.GetEntityQuiet(5), nullptr);
    {
        ZvErrorCapture errors;
        EXPECT_EQ(selection.GetEntity(0), nullptr);
        EXPECT_TRUE(errors.Has(13));
    }
    ZvSelection valid = selection, visible = selection;
    EXPECT_EQ(valid.CropInvalidEntities(), 1);
    EXPECT_EQ(visible.CropToVisibleNonErased(), 4);
    EXPECT_EQ(Names(visible), std::vector<uint32_t>{b->Name32()});
}

TEST_F(ZvSelectionTest, CurrentSelectionMarksItsMembers) {
    ProbeEntity* a = Add(0);
    ProbeEntity* b = Add(10);
    b->SetSelectable(false);
    ProbeEntity* c = Add(20);
    struct Listener : ZvcIEventListener {
        void OnEvent(const ZvcEvent& event) override {
            changes += event.code == ZvDrawingEvent::SelectionChanged;
        }
        int changes = 0;
    } listener;
    drawing.AddListener(&listener);
    EXPECT_TRUE(drawing.ChangeSelection(Of({a->Name32(), b->Name32()})));
    EXPECT_FALSE(drawing.ChangeSelection(Of({a->Name32(), b->Name32()})));
    EXPECT_TRUE(a->IsSelected());
    EXPECT_FALSE(b->IsSelected()) << "not selectable";
    drawing.CurrentSelection().Insert(c);
    EXPECT_TRUE(c->IsSelected());
    drawing.CurrentSelection().Remove(a);
    EXPECT_FALSE(a->IsSelected());
    ZvSelection copy = drawing.CurrentSelection();
    copy.Clear();
    EXPECT_TRUE(c->IsSelected()) << "a copy is a set of its own";
    drawing.ClearCurrentSelection();
    EXPECT_FALSE(c->IsSelected());
    EXPECT_TRUE(drawing.CurrentSelection().IsAssignedToDrawing());
    EXPECT_EQ(listener.changes, 2);
}

TEST_F(ZvSelectionTest, SpatialOrderKeepsNeighboursTogether) {
    ZvSelection selection(&drawing);
    std::vector<double> xs;
    for (int i = 0; i < 64; ++i)
        xs.push_back(((i * 37) % 64) * 10.0);
    for (double x : xs)
        selection.Insert(Add(x));
    selection.ReorderSpatialCurve();
    ASSERT_EQ(selection.Count(), 64);
    double walked = 0;
    for (int i = 1; i < 64; ++i)
        walked +=
            std::abs(selection.GetEntity(i)->Bounds2D().minX - selection.GetEntity(i - 1)->Bounds2D().minX);
    EXPECT_LE(walked, 2 * 630.0) << "points on a line are walked along, not across";
}
