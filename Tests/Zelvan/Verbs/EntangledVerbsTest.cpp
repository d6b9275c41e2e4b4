// Purges, deletions and sections that come at the wrong moment: from within a verb, with undo switched off, out of order.
#include "Tests/Support/VerbTestDrawing.h"
#include "Zelvan/DrawingAux/ZvUndoSettings.h"
#include "Zelvan/Verbs/ZvVAggregate.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/Verbs/ZvVMoveToLayer.h"
#include "Zelvan/Verbs/ZvVTransform.h"
#include <functional>

namespace {

class EntangledVerbsTest : public VerbTestDrawing {
protected:
    /// Moves, and does something else on the way.
    struct Meddling : ZvVTransform {
        Meddling(const ZvSelection& entities, std::function<void(Meddling&)> meddle)
            : ZvVTransform(entities, Mat4d::Translation({5, 5, 0})), onDo(std::move(meddle)) {}
        void Do() override {
            ZvVTransform::Do();
            onDo(*this);
        }
        void Ask() { RequestUndo(); }
        std::function<void(Meddling&)> onDo;
    };
    ZvVerb* Move(const ZvEntity* entity) {
        return new ZvVTransform(Set({entity}), Mat4d::Translation({1, 0, 0}));
    }
    ZvLayer* Layer(const char16_t* name) { return drawing.LayerTable()->GetByName(name); }

    ZvEntity* road = AddLine("10,10 20,10 20,20", u"Roads");
    ZvEntity* river = AddLine("0,50 50,50", u"Rivers");
};

} // namespace

TEST_F(EntangledVerbsTest, ChildThatAsksToBeUndoneAtOnceTakesTheAggregateWithIt) {
    const auto before = State();
    auto aggregate = std::make_unique<ZvVAggregate>(&drawing);
    auto inner = std::make_unique<ZvVAggregate>(&drawing);
    inner->Add(std::make_unique<Meddling>(Set({road}), [](Meddling& self) { self.Ask(); }));
    aggregate->Add(std::move(inner));
    aggregate->Add(std::make_unique<ZvVErase>(Set({river})));
    EXPECT_NE(drawing.DoVerb(aggregate.release()), 0);
    EXPECT_TRUE(State() == before);
    EXPECT_EQ(stack.Position(), 0);
    EXPECT_TRUE(stack.Redo());
    EXPECT_TRUE(river->IsErased());
}

TEST_F(EntangledVerbsTest, SectionsMayEndOutOfOrder) {
    const auto before = State();
    const int outer = stack.VerbBeginSection();
    drawing.DoVerb(Move(road));
    const auto between = State();
    const int inner = stack.VerbBeginSection(ZvVerbStack::kSectionBarrier);
    drawing.DoVerb(Move(river));
    EXPECT_TRUE(stack.VerbEndSection(outer)) << "the inner one stays open";
    EXPECT_TRUE(stack.Undo());
    EXPECT_FALSE(stack.Undo()) << "and bars";
    EXPECT_TRUE(stack.Redo());
    EXPECT_TRUE(stack.VerbEndSection(inner, ZvVerbStack::kSectionRollBack));
    EXPECT_TRUE(State() == between);
    EXPECT_FALSE(stack.CanRedo());

    const int first = stack.VerbBeginSection();
    drawing.DoVerb(Move(road));
    const int second = stack.VerbBeginSection(ZvVerbStack::kSectionBarrier);
    drawing.DoVerb(Move(river));
    EXPECT_TRUE(stack.VerbEndSection(first, ZvVerbStack::kSectionRollBack))
        << "what the inner one did as well";
    EXPECT_TRUE(State() == between);
    drawing.DoVerb(Move(river));
    EXPECT_TRUE(stack.VerbEndSection(second, ZvVerbStack::kSectionRollBack))
        << "it begins where the outer did";
    EXPECT_TRUE(State() == between);
    EXPECT_TRUE(stack.Undo());
    EXPECT_TRUE(State() == before);
}

TEST_F(EntangledVerbsTest, PurgesAskedForByARunningVerbWaitAndTakeItAlong) {
    drawing.DoVerb(Move(river));
    drawing.DoVerb(Move(road));
    int bySelf = -1;
    EXPECT_EQ(drawing.DoVerb(new Meddling(Set({road}),
                                          [&](Meddling& self) {
                                              stack.PurgeUndoForLayer(Layer(u"Roads"));
                                              EXPECT_TRUE(stack.VerbIsPendingDestruction(&self));
                                              bySelf = stack.StackSize();
                                          })),
              0);
    EXPECT_EQ(bySelf, 3) << "nothing goes while the verb runs";
    EXPECT_EQ(stack.StackSize(), 1);
    EXPECT_DOUBLE_EQ(road->Bounds3D().minX, 16) << "what it did stays";
    EXPECT_TRUE(stack.Undo());
    EXPECT_DOUBLE_EQ(river->Bounds3D().minX, 0);
}

TEST_F(EntangledVerbsTest, DeletionForGoodRunsWithUndoSwitchedOffAndReachesUndoneVerbs) {
    const ZvErrorCapture errors;
    const ZvName name = road->Name();
    drawing.DoVerb(Move(road));
    auto* both = new ZvVTransform(Set({road, river}), Mat4d::RotationZ(1));
    drawing.DoVerb(both);
    stack.Undo();
    stack.Undo();
    const auto undone = stack.StackSize();
    stack.DeleteEntityClean(road);
    EXPECT_EQ(stack.StackSize(), undone - 1) << "the verb that did nothing else";
    EXPECT_TRUE(stack.Redo());
    EXPECT_EQ(both->Entities().Count(), 1);
    EXPECT_TRUE(stack.Undo());
    EXPECT_DOUBLE_EQ(river->Bounds3D().minY, 50);

    settings.Set(ZvUndoSettings::kBudgetKey, int64_t(0));
    const ZvName other = river->Name();
    EXPECT_EQ(drawing.DoVerb(new Meddling(Set({river}), [&](Meddling&) { stack.DeleteEntityClean(river); })),
              0);
    EXPECT_FALSE(drawing.NameTable().Exists(name) || drawing.NameTable().Exists(other));
    EXPECT_EQ(stack.StackSize(), 0);
    EXPECT_EQ(stack.MemUsage(), 0u);
    EXPECT_TRUE(errors.Entries().empty());
}

TEST_F(EntangledVerbsTest, VerbsOfALayerThatIsDeletedForGoodReportOrArePurged) {
    const auto deleteRivers = [&](Meddling&) { EXPECT_TRUE(drawing.LayerTable()->DeleteRecord(u"Rivers")); };
    ZvEntity* moved = AddLine("3,3 4,4", u"Rivers");
    drawing.DoVerb(Move(road));
    drawing.DoVerb(new ZvVMoveToLayer(*Layer(u"Roads"), Set({moved})));
    auto* gone = new Meddling(Set({river, road}), deleteRivers);
    EXPECT_NE(drawing.DoVerb(gone), 0) << "it has moved the road";
    const ZvErrorCapture errors;
    EXPECT_TRUE(stack.Undo());
    EXPECT_TRUE(errors.Has(int(ZvErrorCode::VerbEntityGone)));
    EXPECT_TRUE(stack.Undo());
    EXPECT_TRUE(errors.Has(int(ZvErrorCode::VerbLayerGone)));
    EXPECT_TRUE(stack.Undo());
    EXPECT_DOUBLE_EQ(road->Bounds3D().minX, 10) << "others go on as ever";
    stack.Redo();
    stack.PurgeUndoForLayer(Layer(u"Roads"));
    EXPECT_EQ(stack.StackSize(), 0);
}
