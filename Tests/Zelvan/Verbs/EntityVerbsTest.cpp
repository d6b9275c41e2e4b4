#include "Tests/Support/VerbTestDrawing.h"
#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Verbs/ZvVConvert.h"
#include "Zelvan/Verbs/ZvVEntModify.h"
#include "Zelvan/Verbs/ZvVEntNewDualSource.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/Verbs/ZvVModify.h"
#include "Zelvan/Verbs/ZvVRecordNew.h"

namespace {

class EntityVerbsTest : public VerbTestDrawing {
protected:
    EntityVerbsTest() {
        for (int i = 0; i < 120; ++i) // enough for nodes to split
            AddLine(XStringA::Format("%d,%d %d,%d", i, i % 7, i + 3, i % 5 + 2).Str().c_str());
        road = AddLine("10,10 20,10 20,20", u"Roads");
        SetLabel(road, 7);
        river = AddLine("0,50 50,50", u"Rivers");
        before = State();
    }
    std::unique_ptr<ZvEntity> Longer(const ZvEntity& line) {
        auto state = line.Clone();
        SetFromText(*state->ToXLine(), "-400,-400 900,900 900,0");
        state->SetColor(ZvColor(9, 8, 7));
        return state;
    }

    ZvEntity *road, *river;
    NativeFiles::Bytes before;
};

} // namespace

TEST_F(EntityVerbsTest, EveryKindComesBackToTheByte) {
    auto created = new ZvVEntNew;
    created->Add(LineFromText("-500,-500 500,500"), u"Roads");
    created->Add(LineFromText("1,1 2,2"));
    ExpectDoUndoRedo(created, before);
    ExpectDoUndoRedo(new ZvVErase(Set({road, river})), before);

    auto replace = new ZvVModify(&drawing);
    EXPECT_TRUE(replace->Add1To1(road, LineFromText("0,0 1,1 2,0")));
    ExpectDoUndoRedo(replace, before);

    auto convert = new ZvVConvert(&drawing);
    EXPECT_TRUE(convert->AddPair(road, std::make_unique<ZvPointEnt>(Vec3d{15, 15, 0})));
    EXPECT_FALSE(convert->AddPair(road, std::make_unique<ZvPointEnt>()));
    ExpectDoUndoRedo(convert, before);

    auto modify = new ZvVEntModify(&drawing);
    EXPECT_TRUE(modify->AddOriginalAndModified(*road, Longer(*road)));
    EXPECT_TRUE(modify->AddOriginal(*river));
    EXPECT_TRUE(modify->AddModified(*river, Longer(*river)));
    EXPECT_FALSE(modify->AddModified(*river, Longer(*river))) << "a second could never be redone";
    ExpectDoUndoRedo(modify, before);
}

TEST_F(EntityVerbsTest, ChangesMadeByTheCommandAreTakenBackWithLayerAndAttributes) {
    auto* verb = new ZvVEntModify(&drawing);
    EXPECT_TRUE(verb->AddOriginal(*road));
    EXPECT_TRUE(verb->AddOriginal(*river));
    road->Translate({1000, 0, 0});
    SetLabel(road, 8);
    river->GetLayer()->Attributes(); // no row before, none afterwards
    river->SetVisible(false);
    EXPECT_TRUE(verb->StoreModified());
    const auto after = State();
    ASSERT_NE(drawing.DoVerb(verb), 0);
    EXPECT_TRUE(State() == after) << "what the command did stands";
    ASSERT_TRUE(stack.Undo());
    EXPECT_TRUE(State() == before);
    ASSERT_TRUE(stack.Redo());
    EXPECT_TRUE(State() == after);
}

TEST_F(EntityVerbsTest, SnapshotsRefuseWhatWouldNotFit) {
    const ZvErrorCapture errors;
    auto* verb = new ZvVEntModify(&drawing);
    EXPECT_TRUE(verb->AddOriginal(*road));
    EXPECT_FALSE(verb->AddOriginal(*road));
    EXPECT_TRUE(errors.Has(10040));
    EXPECT_TRUE(verb->AddOriginal(*river));
    EXPECT_FALSE(verb->AddModified(*river, std::make_unique<ZvPointEnt>()));
    const ZvName gone = river->Name();
    river->RemoveAndDelete();
    EXPECT_TRUE(verb->StoreModified());
    EXPECT_FALSE(verb->StoreModified());
    EXPECT_TRUE(errors.Has(10041));
    EXPECT_EQ(verb->OriginalCount(), 2u);
    EXPECT_EQ(verb->ModifiedCount(), 1u);
    drawing.DoVerb(verb);
    ASSERT_TRUE(stack.Undo());
    EXPECT_TRUE(errors.Has(10043)) << "the one that is gone";
    EXPECT_FALSE(drawing.NameTable().Exists(gone));
    EXPECT_FALSE(stack.Redo());
    EXPECT_EQ(host.Questions().back().question.text, u"The operation 'Modify' cannot be redone.");
}

TEST_F(EntityVerbsTest, UndoneCreationKeepsTheEntityUntilItIsDiscarded) {
    auto* verb = new ZvVEntNew;
    verb->Add(road);
    EXPECT_FALSE(verb->Add(road));
    const ZvName name = road->Name();
    drawing.DoVerb(verb);
    const size_t done = stack.MemUsage();
    drawing.ChangeSelection(Set({road, river}));
    stack.Undo();
    EXPECT_EQ(drawing.GetEntity(name), road);
    EXPECT_TRUE(road->IsErased());
    EXPECT_EQ(stack.MemUsage(), done + road->MemUsage());
    EXPECT_EQ(drawing.CurrentSelection(), Set({river}));
    stack.Redo();
    EXPECT_FALSE(road->IsErased());
    EXPECT_EQ(stack.MemUsage(), done);
    stack.Undo();
    drawing.DoVerb(new ZvVErase(Set({river})));
    EXPECT_FALSE(drawing.NameTable().Exists(name));
}

TEST_F(EntityVerbsTest, ErasedEntitiesLeaveTheSelectionAndAreFreedWithTheirVerb) {
    const ZvName name = road->Name();
    ZvLayer* layer = road->GetLayer();
    drawing.ChangeSelection(Set({river, road}));
    drawing.DoVerb(new ZvVErase(Set({road})));
    EXPECT_EQ(drawing.CurrentSelection(), Set({river}));
    EXPECT_GE(stack.MemUsage(), road->MemUsage());
    stack.Undo();
    EXPECT_EQ(drawing.CurrentSelection(), Set({river, road}));
    stack.Redo();
    stack.PurgeUndo();
    EXPECT_FALSE(drawing.NameTable().Exists(name));
    EXPECT_FALSE(layer->Attributes().HasRow(name));

    river->SetErased(true);
    auto* again = new ZvVErase(Set({river}));
    drawing.DoVerb(again);
    stack.Undo();
    EXPECT_TRUE(river->IsErased()) << "what was erased before stays so";
}

TEST_F(EntityVerbsTest, FlushingFreesExactlyWhatNothingBringsBack) {
    const ZvName roadName = road->Name(), riverName = river->Name();
    // Done and undone flushes of each kind: which of the two remains.
    auto* convert = new ZvVConvert(&drawing);
    convert->AddPair(road, std::make_unique<ZvPointEnt>(Vec3d{1, 2, 3}));
    drawing.DoVerb(convert);
    stack.PurgeUndo();
    EXPECT_FALSE(drawing.NameTable().Exists(roadName));
    const int32_t left = drawing.NameTable().Count();
    auto* undone = new ZvVModify(&drawing);
    undone->Add1To1(river, LineFromText("0,0 1,1"));
    drawing.DoVerb(undone);
    EXPECT_EQ(drawing.NameTable().Count(), left + 1);
    stack.Undo();
    stack.PurgeUndo();
    EXPECT_EQ(drawing.NameTable().Count(), left);
    EXPECT_FALSE(drawing.GetEntity(riverName)->IsErased());
    // Created, then erased: the creation that leaves the stack must not take what the erasure holds.
    auto* created = new ZvVEntNew;
    created->Add(river);
    drawing.DoVerb(created);
    drawing.DoVerb(new ZvVErase(Set({river})));
    settings.Set(ZvVerbStack::kMaxVerbsKey, int64_t(2));
    drawing.DoVerb(new ZvVRecordNew(*drawing.LayerTable(), u"A"));
    EXPECT_TRUE(drawing.NameTable().Exists(riverName));
    drawing.DoVerb(new ZvVRecordNew(*drawing.LayerTable(), u"B"));
    EXPECT_FALSE(drawing.NameTable().Exists(riverName));
}

TEST_F(EntityVerbsTest, AttributesAndPartnersFollowToTheHeir) {
    drawing.EntityAssociator()->Associate(road->Name(), river->Name());
    ZvEntity* heir = AddLine("5,5 6,6", u"Heirs");
    auto* verb = new ZvVModify(&drawing);
    EXPECT_TRUE(verb->Add1To1(road, heir));
    EXPECT_EQ(verb->Pairs(), (std::vector<ZvVerb::Pair>{{road->Name32(), heir->Name32()}}));
    drawing.DoVerb(verb);
    EXPECT_EQ(heir->GetLayer()->Attributes().Get(heir->Name(), u"label"),
              ZvAttributeTable::Value(int64_t(7)));
    EXPECT_TRUE(drawing.EntityAssociator()->AreAssociated(heir->Name(), river->Name()));
    stack.Undo();
    EXPECT_FALSE(drawing.EntityAssociator()->AreAssociated(heir->Name(), river->Name()));
    EXPECT_EQ(heir->GetLayer()->Attributes().FieldCount(), 0) << "fields that came with the row went with it";

    ZvEntity* meeting = AddLine("1,1 2,2", u"Roads");
    auto* dual = new ZvVEntNewDualSource;
    EXPECT_TRUE(dual->AddDualSourceTripple(meeting, river, road));
    EXPECT_FALSE(dual->AddDualSourceTripple(meeting, river, road));
    drawing.DoVerb(dual);
    EXPECT_EQ(meeting->GetLayer()->Attributes().Get(meeting->Name(), u"label"),
              ZvAttributeTable::Value(int64_t(7)));
    EXPECT_TRUE(dual->UsesEntities({road->Name32()}));
    EXPECT_EQ(stack.EntitiesInUse(), std::set<uint32_t>{meeting->Name32()});
}

TEST_F(EntityVerbsTest, ManualReplacementIsLeftToTheCommand) {
    ZvEntity* fresh = AddLine("5,5 6,6", u"Roads");
    road->SetErased(true);
    const auto after = State();
    auto* verb = new ZvVModify(&drawing);
    EXPECT_TRUE(verb->Add1To1Manual(road, fresh));
    drawing.DoVerb(verb);
    stack.Undo();
    EXPECT_TRUE(State() == before);
    stack.Redo();
    EXPECT_TRUE(road->IsErased() && !fresh->IsErased());
}

TEST_F(EntityVerbsTest, ConvertedEntityTakesItsPlaceInTheSelection) {
    drawing.ChangeSelection(Set({river, road}));
    auto* convert = new ZvVConvert(&drawing);
    convert->AddPair(road, std::make_unique<ZvPointEnt>(Vec3d{1, 2, 3}));
    drawing.DoVerb(convert);
    ASSERT_EQ(drawing.CurrentSelection().Count(), 2);
    EXPECT_TRUE(drawing.CurrentSelection().GetEntity(1)->IsPointEnt());
    stack.Undo();
    EXPECT_EQ(drawing.CurrentSelection(), Set({river, road}));
}

TEST_F(EntityVerbsTest, CreationTellsOfWhatCannotBeSeen) {
    drawing.LayerTable()->GetByName(u"Roads")->SetVisible(false);
    const struct {
        const char16_t* layer;
        ZvColor color;
        const char16_t* printed;
    } cases[] = {
        {u"0", ZvColor(1, 2, 3), u""},
        {u"Roads", ZvColor(1, 2, 3), u"1 objects were created on layers that are not visible.\n"},
        {u"0", ZvColor::Transparent(),
         u"The object created has a transparent pen and will not be visible unless selected\n"},
    };
    XStringW expected;
    for (const auto& c : cases) {
        auto line = LineFromText("0,0 1,1");
        line->SetColor(c.color);
        line->SetBrush(ZvBrush::Empty());
        auto* verb = new ZvVEntNew;
        verb->Add(std::move(line), c.layer);
        drawing.DoVerb(verb);
        expected += c.printed;
        EXPECT_EQ(host.Printed(), expected);
    }
}
