#include "Tests/Support/NativeFiles.h"
#include "Tests/Support/TextGeometry.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Verbs/ZvVDrawOrder.h"
#include "Zelvan/Verbs/ZvVEntNewDualSource.h"
#include "Zelvan/Verbs/ZvVEntTiny.h"
#include "Zelvan/Verbs/ZvVMoveToLayer.h"
#include "Zelvan/Verbs/ZvVPropertyChange.h"
#include "Zelvan/Verbs/ZvVRecordErase.h"
#include "Zelvan/Verbs/ZvVRecordModify.h"
#include "Zelvan/Verbs/ZvVRecordNew.h"
#include "Zelvan/Verbs/ZvVTransform.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>

namespace {

class EditVerbsTest : public ::testing::Test {
protected:
    ZvEntity* Line(const char* text = "0,0 10,0 10,10", const char16_t* layer = u"0", int force64 = 0) {
        return drawing.GetEntity(drawing.Insert(LineFromText(text, force64), XStringW(layer)));
    }
    ZvSelection All() {
        ZvSelection all(&drawing);
        drawing.SelectAll(all);
        return all;
    }
    ZvLayer* Layer(const char16_t* name) {
        ZvLayer* layer = drawing.LayerTable()->GetByName(XStringW(name));
        return layer ? layer : drawing.LayerTable()->InsertNew(XStringW(name));
    }
    std::vector<uint32_t> Order() {
        dvect<ZvEntity*> entities;
        Layer(u"0")->Tree().EnumAll(entities, false);
        std::vector<uint32_t> names;
        for (const ZvEntity* entity : entities)
            names.push_back(entity->Name32());
        return names;
    }

    ZvDrawing drawing;
    ZvVerbStack& stack = *drawing.Verbs();
};

} // namespace

TEST_F(EditVerbsTest, MoveTakesAttributesAlongAndBringsBackWhatTheLayerCouldNotTake) {
    ZvLayer *from = Layer(u"From"), *to = Layer(u"To");
    from->Attributes().AddField({u"Id", ZvAttributeTable::Type::Int64, 0, 0});
    from->Attributes().AddField({u"Text", ZvAttributeTable::Type::String, 0, 0});
    to->Attributes().AddField({u"Id", ZvAttributeTable::Type::String, 0, 0});
    const ZvEntity* line = Line("0,0 1,1", u"From");
    from->Attributes().Set(line->Name(), XStringW(u"Id"), int64_t(7));
    from->Attributes().Set(line->Name(), XStringW(u"Text"), XStringW(u"seven"));
    const ZvAttributeTable before = from->Attributes(), beforeThere = to->Attributes();
    ASSERT_NE(drawing.DoVerb(new ZvVMoveToLayer(*to, All())), 0);
    EXPECT_EQ(line->GetLayer(), to);
    EXPECT_EQ(std::get<XStringW>(to->Attributes().Get(line->Name(), XStringW(u"Text"))), u"seven");
    EXPECT_FALSE(from->Attributes().HasRow(line->Name()));
    ASSERT_TRUE(stack.Undo());
    EXPECT_EQ(line->GetLayer(), from);
    EXPECT_TRUE(from->Attributes() == before);
    EXPECT_TRUE(to->Attributes() == beforeThere) << "the field that the move added is gone";
}

TEST_F(EditVerbsTest, FieldsComeBackWithRedoThoughTheEntityThatBroughtThemWasDeletedForGood) {
    ZvLayer *from = Layer(u"From"), *to = Layer(u"To"), *heirs = Layer(u"Heirs");
    from->Attributes().AddField({u"Owner", ZvAttributeTable::Type::String, 0, 0});
    ZvEntity *bringer = Line("0,0 1,1", u"From"), *source = Line("0,0 2,2", u"From");
    ZvEntity *mover = Line("5,5 6,6", u"From"), *heir = Line("7,7 8,8", u"Heirs"),
             *other = Line("1,1 3,3", u"Heirs");
    for (const ZvEntity* entity : {bringer, source})
        from->Attributes().Set(entity->Name(), 0, XStringW(u"Anna"));
    ZvSelection moved(&drawing), marked(&drawing), leaving(&drawing);
    moved.Insert(bringer);
    moved.Insert(mover);
    marked.Insert(mover);
    marked.Insert(other);
    leaving.Insert(bringer);
    leaving.Insert(heir);
    drawing.DoVerb(new ZvVMoveToLayer(*to, moved));
    auto* created = new ZvVEntNewDualSource(&drawing);
    created->AddDualSourceTripple(heir, source, source);
    created->AddDualSourceTripple(Line("0,0 9,9"), source, source);
    drawing.DoVerb(created);
    auto* marking = new ZvVPropertyChange(marked);
    marking->SetAttribute(u"Owner", XStringW(u"Bert"));
    marking->SetAttribute(u"Year", int64_t(2024), true);
    drawing.DoVerb(marking);
    stack.DeleteEntitiesClean(&leaving);
    const ZvAttributeTable moversThen = to->Attributes(), othersThen = heirs->Attributes();
    ASSERT_TRUE(stack.Undo() && stack.Undo() && stack.Undo());
    EXPECT_EQ(to->Attributes().FieldCount() + heirs->Attributes().FieldCount(), 0);
    ASSERT_TRUE(stack.Redo() && stack.Redo() && stack.Redo());
    EXPECT_TRUE(to->Attributes() == moversThen);
    EXPECT_TRUE(heirs->Attributes() == othersThen);
    EXPECT_EQ(std::get<XStringW>(heirs->Attributes().Get(other->Name(), u"Owner")), u"Bert");
}

TEST_F(EditVerbsTest, UndoOfAMoveReportsWhatIsGone) {
    ZvLayer *from = Layer(u"From"), *to = Layer(u"To");
    Line("0,0 1,1", u"From");
    ZvEntity* lost = Line("0,0 2,2", u"From");
    drawing.DoVerb(new ZvVMoveToLayer(*to, All()));
    lost->RemoveAndDelete();
    ASSERT_TRUE(drawing.LayerTable()->DeleteRecord(from));
    const ZvErrorCapture errors;
    stack.Undo();
    EXPECT_TRUE(errors.Has(10042));
    EXPECT_TRUE(errors.Has(10043));
    EXPECT_EQ(ZvErrors::Meaning(10042), "Layer not found during Undo.");
    EXPECT_EQ(ZvErrors::Meaning(10043), "Entity referenced by Undo/Redo operation is no longer available.");
}

TEST_F(EditVerbsTest, DrawOrderComesBack) {
    for (int i = 0; i < 5; ++i)
        Line("0,0 10,0 10,10");
    const std::vector<uint32_t> before = Order();
    for (const auto order : {ZvEntityOrder::ToFront, ZvEntityOrder::ToBack, ZvEntityOrder::Above}) {
        ZvSelection two(&drawing);
        two.Insert(ZvName(before[1]));
        two.Insert(ZvName(before[3]));
        auto* verb = new ZvVDrawOrder(two);
        verb->Bring(order, drawing.GetEntity(ZvName(before[4])));
        drawing.DoVerb(verb);
        const std::vector<uint32_t> after = Order();
        EXPECT_NE(after, before);
        EXPECT_LT(std::find(after.begin(), after.end(), before[1]),
                  std::find(after.begin(), after.end(), before[3]));
        stack.Undo();
        EXPECT_EQ(Order(), before);
        stack.Redo();
        EXPECT_EQ(Order(), after);
        stack.Undo();
    }
    ZvSelection middle(&drawing);
    middle.Insert(ZvName(before[2]));
    drawing.DoVerb(new ZvVMoveToLayer(*Layer(u"Other"), middle));
    stack.Undo();
    EXPECT_EQ(Order(), before) << "an entity that comes back to its layer is drawn where it was";
}

TEST_F(EditVerbsTest, TransformThatCannotBeStoredChangesNothing) {
    Line();
    const ZvBounds3D before = drawing.Bounds();
    for (const double bad : {double(NAN), double(INFINITY), 1e308}) {
        EXPECT_EQ(drawing.DoVerb(new ZvVTransform(All(), Mat4d::Scaling({bad, bad, 1}))), 0) << bad;
        EXPECT_TRUE(drawing.Bounds() == before) << bad;
    }
}

TEST_F(EditVerbsTest, MovedPolylinesAreKeptByTheirFirstVertex) {
    NativeFiles::AddPolylines(drawing, 10, 2000); // in 32 bits each
    auto* verb = new ZvVTransform(All(), Mat4d::Translation({5, 5, 0}));
    drawing.DoVerb(verb);
    EXPECT_LT(verb->MemUsage(), 10u * 1000);
    auto* turn = new ZvVTransform(All(), Mat4d::RotationZ(1));
    drawing.DoVerb(turn);
    EXPECT_GT(turn->MemUsage(), 10u * 2000 * 8);
}

TEST_F(EditVerbsTest, LargeSelectionsShareTheirStates) {
    NativeFiles::AddPolylines(drawing, 5000, 3);
    auto verb = std::make_unique<ZvVEntTiny>(drawing);
    ASSERT_TRUE(verb->Collect(All()));
    EXPECT_EQ(verb->StateCount(), 1u);
    EXPECT_TRUE(verb->IsNullOp());
    verb->SetColor(ZvColor(5));
    EXPECT_FALSE(verb->IsNullOp());
    EXPECT_LT(verb->MemUsage(), 5000u * 16);
}

TEST_F(EditVerbsTest, RefusedPropertiesAreTold) {
    ZvEntity* line = Line();
    auto* verb = new ZvVPropertyChange(All());
    EXPECT_FALSE(verb->Set("Layer", XStringW(u"Other")));
    verb->Set("Nonsense", true);
    verb->Set("LineCap", int64_t(9));
    verb->Set("Color", XStringW(u"I:3"));
    verb->SetAttribute(u"Missing", int64_t(1));
    drawing.DoVerb(verb);
    EXPECT_EQ(verb->Refusals().size(), 3u);
    EXPECT_EQ(line->GetColor(), ZvColor(3));
}

TEST_F(EditVerbsTest, DeletedLayerComesBackWithItsEntitiesAndItsName) {
    ZvLayer* layer = Layer(u"Doomed");
    const int index = layer->GetTableIndex();
    Line("0,0 1,1", u"Doomed");
    Line("0,0 2,2", u"Doomed");
    drawing.DoVerb(new ZvVRecordErase(*layer));
    EXPECT_EQ(drawing.LayerTable()->GetByName(XStringW(u"Doomed")), nullptr);
    EXPECT_TRUE(All().IsEmpty());
    drawing.DoVerb(new ZvVRecordNew(*drawing.LayerTable(), u"Doomed"));
    EXPECT_NE(drawing.LayerTable()->GetByName(XStringW(u"Doomed")), nullptr) << "the name is free";
    stack.Undo();
    stack.Undo();
    ASSERT_EQ(drawing.LayerTable()->GetByName(XStringW(u"Doomed")), layer);
    EXPECT_EQ(layer->GetTableIndex(), index);
    EXPECT_EQ(All().Count(), 2);
}

TEST_F(EditVerbsTest, DeletedLineTypeLeavesNoReferencesAndUndoBringsThemBack) {
    drawing.LineTypeTable()->InsertNew(u"Dots");
    const int index = drawing.LineTypeTable()->IndexOf(XStringW(u"Dots"));
    ZvLineEntity* line = Line()->ToLineEntity();
    line->SetLineType(ZvLineType(index));
    Layer(u"0")->SetLineType(ZvLineType(index));
    drawing.SetCurrentLineType(ZvLineType(index));
    drawing.DoVerb(new ZvVRecordErase(*drawing.LineTypeTable()->Get(index)));
    EXPECT_TRUE(line->GetLineType().IsContinuous());
    EXPECT_TRUE(Layer(u"0")->GetLineType().IsContinuous());
    EXPECT_TRUE(drawing.CurrentLineType().IsContinuous());
    stack.Undo();
    EXPECT_EQ(line->GetLineType(), ZvLineType(index));
    EXPECT_EQ(Layer(u"0")->GetLineType(), ZvLineType(index));
    EXPECT_EQ(drawing.CurrentLineType(), ZvLineType(index));
}

TEST_F(EditVerbsTest, NamesThatCannotBeARecordsAreRefused) {
    const ZvErrorCapture errors;
    for (const char16_t* name : {u"a/b", u"ByLayer"})
        EXPECT_EQ(drawing.DoVerb(new ZvVRecordNew(*drawing.LayerTable(), name)), 0);
    EXPECT_TRUE(errors.Has(17));
    auto* rename = new ZvVRecordModify(*Layer(u"Free"));
    rename->Set("Name", XStringW(u"0"));
    EXPECT_EQ(drawing.DoVerb(rename), 0);
    EXPECT_NE(drawing.LayerTable()->GetByName(XStringW(u"Free")), nullptr);
}
