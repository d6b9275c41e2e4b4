// Verbs that have nothing to change, are refused, or hold what they should not: erased entities, entities of other
// drawings and of blocks, the same one twice, null.
#include "Tests/Support/VerbTestDrawing.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Tables/ZvBlock.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Verbs/ZvVAggregate.h"
#include "Zelvan/Verbs/ZvVChangeSS.h"
#include "Zelvan/Verbs/ZvVConvert.h"
#include "Zelvan/Verbs/ZvVDrawOrder.h"
#include "Zelvan/Verbs/ZvVEntModify.h"
#include "Zelvan/Verbs/ZvVEntNew.h"
#include "Zelvan/Verbs/ZvVEntTiny.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/Verbs/ZvVModify.h"
#include "Zelvan/Verbs/ZvVMoveGrip.h"
#include "Zelvan/Verbs/ZvVMoveToLayer.h"
#include "Zelvan/Verbs/ZvVPropertyChange.h"
#include "Zelvan/Verbs/ZvVRecordErase.h"
#include "Zelvan/Verbs/ZvVRecordModify.h"
#include "Zelvan/Verbs/ZvVRecordNew.h"
#include "Zelvan/Verbs/ZvVTextChange.h"
#include "Zelvan/Verbs/ZvVTransform.h"
#include "Zelvan/ZvBNode.h"
#include <functional>

namespace {

class OddVerbsTest : public VerbTestDrawing {
protected:
    using Make = std::function<std::unique_ptr<ZvVerb>(const ZvSelection&)>;
    struct Kind {
        const char* name;
        Make make;
    };

    OddVerbsTest() { SetLabel(road, 7); }
    ZvLayer& Layer(const char16_t* name) { return *drawing.LayerTable()->GetByName(name); }
    std::string LastMessage() {
        return host.Questions().empty() ? "" : host.Questions().back().question.text.ToUtf8();
    }
    /// One verb of each kind that changes a selection of entities.
    std::vector<Kind> OnEntities() {
        const auto each = [](const ZvSelection& set, const auto& add) {
            std::vector<ZvEntity*> entities;
            set.GetValidEntities(entities);
            for (ZvEntity* entity : entities)
                add(*entity);
        };
        return {
            {"erase", [](const ZvSelection& set) { return std::make_unique<ZvVErase>(set); }},
            {"turn",
             [](const ZvSelection& set) { return std::make_unique<ZvVTransform>(set, Mat4d::RotationZ(1)); }},
            {"move",
             [](const ZvSelection& set) {
                 return std::make_unique<ZvVTransform>(set, Mat4d::Translation({3, 4, 0}));
             }},
            {"to layer",
             [this](const ZvSelection& set) {
                 return std::make_unique<ZvVMoveToLayer>(Layer(u"Rivers"), set);
             }},
            {"colour",
             [](const ZvSelection& set) {
                 auto verb = std::make_unique<ZvVPropertyChange>(set);
                 verb->Set("Color", u"I:3");
                 return verb;
             }},
            {"attribute",
             [](const ZvSelection& set) {
                 auto verb = std::make_unique<ZvVPropertyChange>(set);
                 verb->SetAttribute(u"label", int64_t(9), true);
                 return verb;
             }},
            {"tiny",
             [this](const ZvSelection& set) {
                 auto verb = std::make_unique<ZvVEntTiny>(drawing);
                 (void)verb->Collect(set);
                 verb->SetColor(ZvColor(5));
                 return verb;
             }},
            {"order",
             [](const ZvSelection& set) {
                 auto verb = std::make_unique<ZvVDrawOrder>(set);
                 verb->Bring(ZvEntityOrder::ToFront);
                 return verb;
             }},
            {"select", [](const ZvSelection& set) { return std::make_unique<ZvVChangeSS>(set); }},
            {"grip",
             [this, each](const ZvSelection& set) {
                 auto verb = std::make_unique<ZvVMoveGrip>(&drawing);
                 each(set, [&](ZvEntity& entity) { verb->AddGripPair(entity, 0, {-7, -7, 0}); });
                 return verb;
             }},
            {"modify",
             [this, each](const ZvSelection& set) {
                 auto verb = std::make_unique<ZvVEntModify>(&drawing);
                 each(set, [&](ZvEntity& entity) {
                     std::unique_ptr<ZvEntity> copy = entity.Clone();
                     copy->Translate({1, 2, 0});
                     verb->AddOriginalAndModified(entity, std::move(copy));
                 });
                 return verb;
             }},
            {"replace",
             [this, each](const ZvSelection& set) {
                 auto verb = std::make_unique<ZvVModify>(&drawing);
                 each(set, [&](ZvEntity& entity) { verb->Add1To1(&entity, LineFromText("0,0 1,1")); });
                 return verb;
             }},
            {"convert",
             [this, each](const ZvSelection& set) {
                 auto verb = std::make_unique<ZvVConvert>(&drawing);
                 each(set, [&](ZvEntity& entity) {
                     verb->AddPair(&entity, std::make_unique<ZvPointEnt>(Vec3d{1, 2, 3}));
                 });
                 return verb;
             }},
        };
    }

    ZvEntity* road = AddLine("10,10 20,10 20,20", u"Roads");
    ZvEntity* path = AddLine("11,11 12,12", u"Roads");
    ZvEntity* river = AddLine("0,50 50,50", u"Rivers");
};

} // namespace

TEST_F(OddVerbsTest, WhatChangesNothingLeavesNoStepAndSaysWhy) {
    const auto withName = [](ZvVRecordModify* verb, const char16_t* name) {
        verb->Set("Name", XStringW(name));
        return verb;
    };
    const struct {
        const char* name;
        std::function<ZvVerb*()> make;
        const char* reason; ///< empty: there was nothing to do, nothing is said
    } cases[] = {
        {"bad name", [&] { return new ZvVRecordNew(*drawing.LayerTable(), u"BYLAYER"); }, "BYLAYER"},
        {"no record",
         [&] { return new ZvVRecordNew(*drawing.LayerTable(), std::unique_ptr<ZvTableRecord>()); },
         "the record"},
        {"name taken", [&] { return withName(new ZvVRecordModify(Layer(u"Roads")), u"Rivers"); }, "Name"},
        {"same name", [&] { return withName(new ZvVRecordModify(Layer(u"Roads")), u"Roads"); }, ""},
        {"bad colour",
         [&] {
             auto* verb = new ZvVPropertyChange(Set({road, river}));
             verb->Set("Color", u"nix");
             return verb;
         },
         "Color"},
        {"no such property",
         [&] {
             auto* verb = new ZvVPropertyChange(Set({road}));
             verb->Set("Flavour", u"sweet");
             return verb;
         },
         "Flavour"},
        {"no such attribute",
         [&] {
             auto* verb = new ZvVPropertyChange(Set({road}));
             verb->SetAttribute(u"speed", int64_t(50));
             return verb;
         },
         "speed"},
        {"same attribute",
         [&] {
             auto* verb = new ZvVPropertyChange(Set({road}));
             verb->SetAttribute(u"label", int64_t(7));
             return verb;
         },
         ""},
        {"name taken by text",
         [&] {
             auto* verb = new ZvVTextChange(drawing);
             verb->AddRecord(Layer(u"Roads"), "Name", u"Rivers");
             return verb;
         },
         "Name"},
        {"no numbers",
         [&] {
             return new ZvVTransform(Set({road, river}), Mat4d::Scaling({HUGE_VAL, 1, 1}));
         },
         "2 objects"},
        {"identity",
         [&] {
             return new ZvVTransform(Set({road}), Mat4d::Translation({0, 0, 0}));
         },
         ""},
        {"on the layer already", [&] { return new ZvVMoveToLayer(Layer(u"Rivers"), Set({river})); }, ""},
        {"selected already", [&] { return new ZvVChangeSS(Set({})); }, ""},
        {"aggregate",
         [&] {
             auto* verb = new ZvVAggregate(&drawing);
             verb->Add(std::make_unique<ZvVErase>(Set({})));
             verb->Add(std::make_unique<ZvVRecordNew>(*drawing.LayerTable(), u"BYBLOCK"));
             return verb;
         },
         "BYBLOCK"},
    };
    const ZvErrorCapture errors;
    drawing.DoVerb(new ZvVErase(Set({path})));
    const auto before = State();
    drawing.ResetModified();
    for (const auto& c : cases) {
        const size_t said = host.Questions().size();
        EXPECT_EQ(drawing.DoVerb(c.make()), 0) << c.name;
        EXPECT_EQ(stack.StackSize(), 1) << c.name;
        EXPECT_FALSE(drawing.IsModified()) << c.name;
        EXPECT_TRUE(State() == before) << c.name;
        EXPECT_EQ(host.Questions().size() - said, *c.reason ? 1u : 0u) << c.name << ": " << LastMessage();
        if (*c.reason) {
            EXPECT_NE(LastMessage().find(c.reason), std::string::npos) << c.name << ": " << LastMessage();
        }
    }
    auto* half = new ZvVPropertyChange(Set({road}));
    half->Set("Color", u"I:9");
    half->Set("LineType", u"nix");
    EXPECT_NE(drawing.DoVerb(half), 0) << "what can be done is done";
    EXPECT_NE(half->Refusal().ToUtf8().find("LineType"), std::string::npos);
}

TEST_F(OddVerbsTest, VerbsLeaveErasedEntitiesAlone) {
    settings.Set(ZvVerbStack::kMaxVerbsKey, int64_t(2));
    for (const Kind& kind : OnEntities()) {
        ZvEntity* doomed = AddLine("1,1 2,2 3,1", u"Roads");
        const uint32_t name = doomed->Name32();
        ZvEntity* other = AddLine("5,5 6,6 7,5", u"Roads");
        (void)AddLine("5,5 6,6 8,5", u"Roads"); // one to be ordered against
        drawing.DoVerb(new ZvVErase(Set({doomed})));
        drawing.DoVerb(kind.make(Set({doomed, other})).release());
        drawing.DoVerb(
            new ZvVRecordNew(*drawing.LayerTable(), u"Third")); // the erasure goes, and what it held
        ASSERT_FALSE(drawing.NameTable().Exists(ZvName(name))) << kind.name;
        std::unique_ptr<ZvEntity> owned = LineFromText("1,1 2,2 3,1");
        owned->SetName32(name);
        const ZvEntity* heir = drawing.GetEntity(Layer(u"Roads").AdoptNamed(std::move(owned)));
        ASSERT_EQ(heir->Name32(), name);
        const auto entire = [&] {
            return heir->Bounds3D() == LineFromText("1,1 2,2 3,1")->Bounds3D() && !heir->IsErased() &&
                   heir->GetColor() == road->GetColor() && heir->GetLayer() == &Layer(u"Roads");
        };
        ASSERT_TRUE(stack.Undo() && stack.Undo()) << kind.name;
        EXPECT_TRUE(entire()) << kind.name << ": the name has passed to another";
        stack.PurgeUndo();
    }
}

TEST_F(OddVerbsTest, NothingHappensToNamesakesInAnotherDrawing) {
    ZvDrawing stranger;
    ZvSelection foreign(&stranger);
    for (int i = 0; i < 9; ++i)
        foreign.Insert(stranger.Insert(LineFromText("0,0 1,1 2,0"), u"Roads"));
    const ZvErrorCapture errors;
    const auto before = State();
    for (const Kind& kind : OnEntities()) {
        EXPECT_EQ(drawing.DoVerb(kind.make(foreign).release()), 0) << kind.name;
        auto aggregate = std::make_unique<ZvVAggregate>(&drawing);
        aggregate->Add(kind.make(foreign));
        EXPECT_EQ(drawing.DoVerb(aggregate.release()), 0) << kind.name;
        EXPECT_TRUE(State() == before) << kind.name;
        EXPECT_TRUE(drawing.CurrentSelection().IsEmpty()) << kind.name;
    }
    EXPECT_EQ(stack.StackSize(), 0);
    EXPECT_TRUE(errors.HasText("another drawing"));
}

TEST_F(OddVerbsTest, EntitiesTwiceOnHiddenOrLockedLayersAndInBlocksComeBack) {
    ZvBlock* block = drawing.BlockTable()->InsertNew(u"House");
    auto inner = LineFromText("0,0 9,0 9,9");
    ZvEntity* wall = inner.get();
    block->Tree().Insert(inner.release());
    drawing.NameTable().Add(wall);
    Layer(u"Roads").SetLocked(true);
    Layer(u"Rivers").SetVisible(false);
    const auto before = State();
    for (const Kind& kind : OnEntities()) {
        ZvSelection all = Set({road, wall, river, road});
        EXPECT_EQ(all.Count(), 3);
        auto outer = std::make_unique<ZvVAggregate>(&drawing);
        auto inside = std::make_unique<ZvVAggregate>(&drawing);
        inside->Add(kind.make(all));
        inside->Add(kind.make(all)); // finds what the first left
        outer->Add(std::move(inside));
        ASSERT_NE(drawing.DoVerb(outer.release()), 0) << kind.name;
        const auto after = State();
        for (int round = 0; round < 2; ++round) {
            ASSERT_TRUE(stack.Undo()) << kind.name;
            EXPECT_TRUE(State() == before) << kind.name;
            ASSERT_TRUE(stack.Redo()) << kind.name;
            EXPECT_TRUE(State() == after) << kind.name;
        }
        ASSERT_TRUE(stack.Undo()) << kind.name;
        stack.PurgeUndo();
        EXPECT_TRUE(State() == before) << kind.name;
    }
}

TEST_F(OddVerbsTest, ReplacementOfWhatIsGoneOrWithoutALayerBringsNothing) {
    auto* late = new ZvVModify(&drawing);
    late->Add1To1(path, LineFromText("0,0 1,1"));
    late->Add1To1(river, LineFromText("0,0 2,2"));
    EXPECT_FALSE(late->Add1To1(nullptr, LineFromText("0,0 3,3")));
    EXPECT_FALSE(late->Add1To1(road, std::unique_ptr<ZvEntity>()));
    drawing.DoVerb(new ZvVErase(Set({path})));
    const auto before = State();
    ASSERT_NE(drawing.DoVerb(late), 0);
    ASSERT_EQ(late->Pairs().size(), 1u);
    EXPECT_EQ(late->Pairs()[0].from, river->Name32()) << "each goes to its own";
    EXPECT_TRUE(stack.Undo());
    EXPECT_TRUE(State() == before);
    const ZvErrorCapture errors;
    auto* nowhere = new ZvVEntNew(&drawing);
    nowhere->Add(LineFromText("0,0 1,1"), u"a\"b"); // no layer may have that name
    EXPECT_EQ(drawing.DoVerb(nowhere), 0);
    EXPECT_NE(LastMessage().find("no layer"), std::string::npos) << LastMessage();
}
