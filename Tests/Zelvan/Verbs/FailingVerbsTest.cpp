// Verbs that fail half way, within aggregates and sections: the drawing is as before, and so is the rest of the history.
#include "Tests/Support/VerbTestDrawing.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Verbs/ZvVAggregate.h"
#include "Zelvan/Verbs/ZvVConvert.h"
#include "Zelvan/Verbs/ZvVEntNew.h"
#include "Zelvan/Verbs/ZvVEntTiny.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/Verbs/ZvVModify.h"
#include "Zelvan/Verbs/ZvVMoveToLayer.h"
#include "Zelvan/Verbs/ZvVPropertyChange.h"
#include "Zelvan/Verbs/ZvVRecordErase.h"
#include "Zelvan/Verbs/ZvVRecordNew.h"
#include "Zelvan/Verbs/ZvVTextChange.h"
#include "Zelvan/Verbs/ZvVTransform.h"
#include <functional>
#include <stdexcept>

namespace {

class FailingVerbsTest : public VerbTestDrawing {
protected:
    /// Fails where it is told to, with half of its own work done.
    struct Failing : ZvVTransform {
        Failing(const ZvSelection& entities, bool redo)
            : ZvVTransform(entities, Mat4d::Translation({5, 5, 0})), failsAtRedo(redo) {}
        void Do() override {
            ZvVTransform::Do();
            if (!failsAtRedo)
                throw std::runtime_error("in Do");
        }
        bool Redo() override {
            ZvVTransform::Do();
            throw std::bad_alloc();
        }
        bool failsAtRedo;
    };
    using Make = std::function<std::unique_ptr<ZvVerb>()>;

    FailingVerbsTest() {
        SetLabel(road, 7);
        drawing.LineTypeTable()->InsertNew(u"Dots");
        drawing.ChangeSelection(Set({road}));
    }
    ZvLayer* Layer(const char16_t* name) { return drawing.LayerTable()->GetByName(name); }

    /// One verb of most kinds, each of which finds what it needs after those before it.
    std::vector<Make> Makers() {
        return {
            [&] {
                auto verb = std::make_unique<ZvVEntNew>();
                verb->Add(LineFromText("1,1 2,2"), u"Roads");
                return verb;
            },
            [&] {
                return std::make_unique<ZvVTransform>(Set({road, river}), Mat4d::RotationZ(1));
            },
            [&] {
                auto verb = std::make_unique<ZvVPropertyChange>(Set({road, river}));
                verb->Set("Color", u"I:3");
                verb->SetAttribute(u"label", int64_t(9));
                return verb;
            },
            [&] {
                auto verb = std::make_unique<ZvVTextChange>(drawing);
                verb->AddRecord(*Layer(u"Roads"), "Description", u"changed");
                return verb;
            },
            [&] {
                auto verb = std::make_unique<ZvVEntTiny>(drawing);
                verb->Collect(Set({road, river}));
                verb->SetFlag(ZvEntity::kVisible, false);
                return verb;
            },
            [&] { return std::make_unique<ZvVMoveToLayer>(*Layer(u"Rivers"), Set({road})); },
            [&] {
                auto verb = std::make_unique<ZvVConvert>(&drawing);
                verb->AddPair(road, std::make_unique<ZvPointEnt>(Vec3d{1, 2, 3}));
                return verb;
            },
            [&] {
                auto verb = std::make_unique<ZvVModify>(&drawing);
                verb->Add1To1(river, LineFromText("0,0 1,1 2,0"));
                return verb;
            },
            [&] { return std::make_unique<ZvVRecordNew>(*drawing.LayerTable(), u"Fresh"); },
            [&] { return std::make_unique<ZvVRecordErase>(*Layer(u"Roads")); },
        };
    }

    ZvEntity* road = AddLine("10,10 20,10 20,20", u"Roads");
    ZvEntity* river = AddLine("0,50 50,50", u"Rivers");
    ZvEntity* other = AddLine("3,3 4,4");
};

} // namespace

TEST_F(FailingVerbsTest, AggregateThatFailsAtAnyChildLeavesEverythingAsItWas) {
    const size_t kinds = Makers().size();
    const ZvErrorCapture errors;
    drawing.DoVerb(new ZvVErase(Set({other})));
    const auto before = State();
    for (const bool atRedo : {false, true})
        for (size_t at = 0; at <= kinds; ++at) {
            const int section = stack.VerbBeginSection(ZvVerbStack::kSectionBarrier);
            auto aggregate = std::make_unique<ZvVAggregate>(&drawing);
            auto inner = std::make_unique<ZvVAggregate>(&drawing);
            for (size_t i = 0; i < kinds; ++i) {
                if (i == at)
                    inner->Add(std::make_unique<Failing>(Set({road, river}), atRedo));
                (i % 2 ? aggregate : inner)->Add(Makers()[i]());
            }
            aggregate->Add(std::move(inner));
            if (at == kinds)
                aggregate->Add(std::make_unique<Failing>(Set({road, river}), atRedo));
            EXPECT_EQ(drawing.DoVerb(aggregate.release()) != 0, atRedo) << at;
            if (atRedo) {
                EXPECT_TRUE(stack.Undo());
                EXPECT_FALSE(stack.Redo());
            }
            EXPECT_TRUE(State() == before) << (atRedo ? "redo" : "do") << " failed at " << at;
            EXPECT_EQ(drawing.CurrentSelection(), Set({road})) << at;
            EXPECT_EQ(stack.StackSize(), 1);
            EXPECT_TRUE(stack.VerbEndSection(section, ZvVerbStack::kSectionRollBack));
        }
    EXPECT_TRUE(errors.HasText("in Do"));
    EXPECT_TRUE(stack.Undo()) << "what was before the failures";
    EXPECT_FALSE(other->IsErased());
}

TEST_F(FailingVerbsTest, SectionWithAFailureInItRollsBackToItsStart) {
    const ZvErrorCapture errors;
    const auto before = State();
    const int section = stack.VerbBeginSection();
    for (const Make& make : Makers())
        EXPECT_NE(drawing.DoVerb(make().release()), 0);
    EXPECT_EQ(drawing.DoVerb(new Failing(Set({other}), false)), 0);
    EXPECT_EQ(host.Questions().back().question.text, u"The operation 'Transform' failed and was taken back.");
    EXPECT_TRUE(stack.VerbEndSection(section, ZvVerbStack::kSectionRollBack));
    EXPECT_TRUE(State() == before);
    EXPECT_EQ(stack.MemUsage(), 0u);
}
