#pragma once
#include "Tests/Support/NativeFiles.h"
#include "Tests/Support/TextGeometry.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>
#include <string>

/// A drawing with a host and settings of the test's own, whose saved bytes tell whether two states are equal.
class VerbTestDrawing : public ::testing::Test {
protected:
    struct StillClock : IZvClock {
        DateTime Now() const override { return DateTime::FromUtc(2024, 5, 6); }
        double MonotonicSeconds() const override { return 0; }
    };

    ZvEntity* AddLine(const char* text, const char16_t* layer = u"0") {
        return drawing.GetEntity(drawing.Insert(LineFromText(text), layer));
    }
    ZvSelection Set(std::initializer_list<const ZvEntity*> entities) {
        ZvSelection set(&drawing);
        for (const ZvEntity* entity : entities)
            set.Insert(entity);
        return set;
    }
    void SetLabel(ZvEntity* entity, int value) {
        ZvAttributeTable& table = entity->GetLayer()->Attributes();
        table.AddField({u"label", ZvAttributeTable::Type::Int64});
        table.Set(entity->Name(), u"label", int64_t(value));
    }
    NativeFiles::Bytes State() {
        ZvNativeOptions options;
        options.orderByName = true;
        options.threads = false;
        return NativeFiles::Save(drawing, options);
    }
    /// Do, undo, redo, undo, redo: each state comes back. `check` looks after every step (true: done).
    void ExpectDoUndoRedo(ZvVerb* verb, const NativeFiles::Bytes& before) {
        ASSERT_NE(drawing.DoVerb(verb), 0);
        const NativeFiles::Bytes after = State();
        EXPECT_FALSE(before == after) << "the verb does something";
        for (int round = 0; round < 2; ++round) {
            ASSERT_TRUE(stack.Undo());
            EXPECT_TRUE(State() == before) << "undone, round " << round;
            ASSERT_TRUE(stack.Redo());
            EXPECT_TRUE(State() == after) << "redone, round " << round;
        }
        ASSERT_TRUE(stack.Undo());
    }

    StillClock clock;
    ZvSilentHost host;
    ZvCore::Settings settings; // the application's
    ZvDrawing drawing{ZvDrawingSetup{.host = &host, .clock = &clock, .settings = &settings}};
    ZvVerbStack& stack = *drawing.Verbs();
};
