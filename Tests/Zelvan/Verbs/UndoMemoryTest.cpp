// What verbs say they hold, beside what the heap gets back when they go. The heap does not see the objects of entities
// again, only their blocks: the former go back to a pool of their own.
#if defined(__GLIBC__) || __has_include(<malloc.h>)
#include <malloc.h>
#endif
#include "Tests/Support/VerbTestDrawing.h"
#include "Zelvan/DrawingAux/ZvUndoSettings.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Verbs/ZvVAggregate.h"
#include "Zelvan/Verbs/ZvVChangeSS.h"
#include "Zelvan/Verbs/ZvVConvert.h"
#include "Zelvan/Verbs/ZvVDrawOrder.h"
#include "Zelvan/Verbs/ZvVEntModify.h"
#include "Zelvan/Verbs/ZvVEntNew.h"
#include "Zelvan/Verbs/ZvVEntNewDualSource.h"
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

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)

namespace {

size_t BytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

class UndoMemoryTest : public VerbTestDrawing {
protected:
    UndoMemoryTest() {
        for (int i = 0; i < 2000; ++i) {
            std::string text;
            for (int k = 0; k < 19; ++k)
                text +=
                    std::to_string(i % 40 * 30 + k) + "," + std::to_string(i / 40 * 30 + k * 7 % 11) + " ";
            lines.push_back(AddLine(text.c_str(), u"Roads"));
        }
        drawing.LayerTable()->InsertNew(u"Else");
        settings.Set(ZvUndoSettings::kBudgetKey, int64_t(1) << 30);
    }
    ZvSelection One(int i) { return Set({lines[size_t(i)]}); }
    ZvSelection All() {
        ZvSelection all(&drawing);
        for (const ZvEntity* line : lines)
            all.Insert(line);
        return all;
    }
    std::vector<ZvEntity*> lines;
};

} // namespace

TEST_F(UndoMemoryTest, MemoryOfVerbsIsWhatTheHeapGetsBack) {
    const struct {
        const char* name;
        int verbs;
        std::function<ZvVerb*(int)> make;
        bool undone;
    } cases[] = {
        {"modify", 500,
         [&](int i) {
             auto* verb = new ZvVEntModify(&drawing);
             verb->AddOriginal(*lines[size_t(i)]);
             lines[size_t(i)]->SetColor(ZvColor(i & 255));
             verb->StoreModified();
             return verb;
         },
         false},
        {"turn", 500, [&](int i) { return new ZvVTransform(One(i), Mat4d::RotationZ(1)); }, false},
        {"move", 500,
         [&](int i) {
             return new ZvVTransform(One(i), Mat4d::Translation({1, 1, 0}));
         },
         false},
        {"turn all", 1, [&](int) { return new ZvVTransform(All(), Mat4d::RotationZ(1)); }, false},
        {"hide all", 1,
         [&](int) {
             auto* verb = new ZvVEntTiny(drawing);
             verb->Collect(All());
             verb->SetFlag(ZvEntity::kVisible, false);
             return verb;
         },
         false},
        {"colour all", 1,
         [&](int) {
             auto* verb = new ZvVPropertyChange(All());
             verb->Set("Color", u"I:9");
             return verb;
         },
         false},
        {"move all to a layer", 1,
         [&](int) { return new ZvVMoveToLayer(*drawing.LayerTable()->GetByName(u"Else"), All()); }, false},
        {"create", 500,
         [&](int i) {
             auto* verb = new ZvVEntNew(&drawing);
             verb->Add(lines[size_t(i)]->Clone());
             return verb;
         },
         true},
        {"select all", 1, [&](int) { return new ZvVChangeSS(All()); }, false},
        {"select one", 500, [&](int i) { return new ZvVChangeSS(One(i)); }, false},
        {"order", 1,
         [&](int) {
             auto* verb = new ZvVDrawOrder(All());
             verb->Bring(ZvEntityOrder::ToBack);
             return verb;
         },
         false},
        {"grips", 1,
         [&](int) {
             auto* verb = new ZvVMoveGrip(&drawing);
             for (ZvEntity* line : lines)
                 verb->AddGripPair(*line, 3, line->Bounds3D().Center());
             return verb;
         },
         false},
        {"attributes", 1,
         [&](int) {
             auto* verb = new ZvVPropertyChange(All());
             verb->SetAttribute(u"owner", XStringW(u"a name that is rather long"), true);
             return verb;
         },
         false},
        {"texts", 1,
         [&](int) {
             auto* verb = new ZvVTextChange(drawing);
             for (const ZvEntity* line : lines)
                 verb->AddAttribute(*line, u"owner", u"another name that is long");
             return verb;
         },
         false},
        {"copies with attributes", 1,
         [&](int) {
             auto* verb = new ZvVEntModify(&drawing);
             for (ZvEntity* line : lines) {
                 std::unique_ptr<ZvEntity> copy = line->Clone();
                 copy->Translate({1, 0, 0});
                 verb->AddOriginalAndModified(*line, std::move(copy));
             }
             return verb;
         },
         false},
        {"new from two", 500,
         [&](int i) {
             auto* verb = new ZvVEntNewDualSource(&drawing);
             verb->AddDualSourceTripple(AddLine("0,0 1,1", u"Else"), lines[size_t(i)], lines[size_t(i + 1)]);
             return verb;
         },
         false},
        {"records", 200, [&](int) { return new ZvVRecordNew(*drawing.LayerTable(), XStringW()); }, true},
        {"record names", 200,
         [&](int i) {
             auto* verb = new ZvVRecordModify(*drawing.LayerTable()->GetByName(u"Else"));
             verb->Set("Description", XStringW::Format("the %d-th description of the layer", i));
             return verb;
         },
         false},
        {"aggregate", 200,
         [&](int i) {
             auto* verb = new ZvVAggregate(&drawing);
             verb->Add(std::make_unique<ZvVTransform>(One(i), Mat4d::RotationZ(1)));
             verb->Add(std::make_unique<ZvVErase>(One(i + 500)));
             return verb;
         },
         false},
        {"replace", 200,
         [&](int i) {
             auto* verb = new ZvVModify(&drawing);
             verb->Add1To1(lines[size_t(i)], lines[size_t(i)]->Clone());
             return verb;
         },
         false},
        {"convert", 200,
         [&](int i) {
             auto* verb = new ZvVConvert(&drawing);
             verb->AddPair(lines[size_t(i + 200)], std::make_unique<ZvPointEnt>(Vec3d{1, 2, 0}));
             return verb;
         },
         false},
        {"erase a layer", 1,
         [&](int) { return new ZvVRecordErase(*drawing.LayerTable()->GetByName(u"Else")); }, false},
    };
    for (const auto& c : cases) {
        for (int i = 0; i < c.verbs; ++i)
            ASSERT_NE(drawing.DoVerb(c.make(i)), 0) << c.name;
        while (c.undone && stack.CanUndo())
            ASSERT_TRUE(stack.Undo());
        const double counted = double(stack.MemUsage()), before = double(BytesInUse());
        stack.PurgeUndo();
        const double freed = before - double(BytesInUse());
        EXPECT_GT(counted / freed, 0.8) << c.name << ": " << counted << " counted, " << freed << " freed";
        EXPECT_LT(counted / freed, 1.4) << c.name << ": " << counted << " counted, " << freed << " freed";
    }
}

#endif
