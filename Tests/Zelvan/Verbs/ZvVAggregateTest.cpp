#include "Zelvan/Verbs/ZvVAggregate.h"
#include "Tests/Support/VerbTestDrawing.h"
#include "Zelvan/Tables/ZvLayout.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Verbs/ZvVEntNew.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/Verbs/ZvVPaperAggregate.h"

namespace {

class ZvVAggregateTest : public VerbTestDrawing {
protected:
    struct Stubborn : ZvVerb {
        XStringW DefaultName() const override { return u"Stubborn"; }
        bool Redo() override { return false; }
        bool IsUndoable(bool*) const override { return undoable; }
        bool undoable = true;
    };
    ZvEntity* line = AddLine("0,0 5,5");
};

} // namespace

TEST_F(ZvVAggregateTest, ChildrenAreDoneInOrderAndUndoneBackwards) {
    const auto before = State();
    auto aggregate = std::make_unique<ZvVAggregate>();
    auto created = std::make_unique<ZvVEntNew>();
    created->Add(LineFromText("1,1 2,2"), u"New layer is made");
    aggregate->Add(std::move(created));
    aggregate->Add(nullptr);
    EXPECT_FALSE(aggregate->IsNullOp());
    auto inner = std::make_unique<ZvVAggregate>();
    inner->Add(std::make_unique<ZvVErase>(Set({line})));
    aggregate->Add(std::move(inner));
    ZvVAggregate* verb = aggregate.get();
    drawing.ChangeSelection(Set({line}));
    drawing.LayerTable()->InsertNew(u"New layer is made"); // records are not the verb's
    const auto withLayer = State();
    EXPECT_FALSE(withLayer == before);
    ExpectDoUndoRedo(aggregate.release(), withLayer);
    EXPECT_EQ(drawing.CurrentSelection(), Set({line}));
    std::vector<ZvVerb*> erasures;
    verb->GetVerbsByOp(ZvVerb::Kind::Erase, erasures);
    ASSERT_EQ(erasures.size(), 1u);
    EXPECT_EQ(erasures[0]->Sequence(), verb->Sequence());
    EXPECT_TRUE(verb->UsesLayers({line->GetLayer()}));
    EXPECT_TRUE(verb->UsesEntities({line->Name32()}));
    EXPECT_GT(verb->MemUsage(), erasures[0]->MemUsage());
}

TEST_F(ZvVAggregateTest, FailedRedoOfAChildUndoesTheOthersAgain) {
    auto aggregate = std::make_unique<ZvVAggregate>();
    ZvEntity* other = AddLine("3,3 4,4");
    aggregate->Add(std::make_unique<ZvVErase>(Set({line})));
    aggregate->Add(std::make_unique<Stubborn>());
    aggregate->Add(std::make_unique<ZvVErase>(Set({other})));
    drawing.ChangeSelection(Set({line, other}));
    drawing.DoVerb(aggregate.release());
    stack.Undo();
    const auto undone = State();
    EXPECT_FALSE(stack.Redo());
    EXPECT_TRUE(State() == undone);
    EXPECT_FALSE(line->IsErased() || other->IsErased());
    EXPECT_EQ(drawing.CurrentSelection(), Set({line, other}));
    EXPECT_EQ(stack.StackSize(), 0);
}

TEST_F(ZvVAggregateTest, OneChildThatCannotBeUndoneStandsForAll) {
    auto aggregate = std::make_unique<ZvVAggregate>();
    EXPECT_TRUE(aggregate->IsNullOp());
    auto child = std::make_unique<Stubborn>();
    child->undoable = false;
    aggregate->Add(std::move(child));
    EXPECT_FALSE(aggregate->IsUndoable());
    drawing.DoVerb(aggregate.release());
    EXPECT_FALSE(stack.Undo());
    EXPECT_EQ(stack.StackSize(), 0);
}

TEST_F(ZvVAggregateTest, OnlyPaperAggregatesReachIntoLayouts) {
    ZvDrawing* page = drawing.LayoutTable()->InsertNew(u"Sheet")->Drawing();
    ASSERT_NE(page, nullptr);
    ZvEntity* frame = page->GetEntity(page->Insert(LineFromText("0,0 1,0 1,1 close")));
    ZvSelection frames(page);
    frames.Insert(frame);
    const ZvErrorCapture errors;
    for (const bool paper : {false, true}) {
        std::unique_ptr<ZvVAggregate> aggregate;
        if (paper)
            aggregate = std::make_unique<ZvVPaperAggregate>();
        else
            aggregate = std::make_unique<ZvVAggregate>();
        aggregate->Add(std::make_unique<ZvVErase>(frames));
        page->ResetModified();
        EXPECT_EQ(drawing.DoVerb(aggregate.release()) != 0, paper);
        EXPECT_EQ(frame->IsErased(), paper);
        EXPECT_EQ(page->IsModified(), paper);
        EXPECT_EQ(errors.Entries().size(), 1u);
        EXPECT_EQ(stack.Undo(), paper);
        EXPECT_FALSE(frame->IsErased());
    }
}
