#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvDrawing.h"
#include <gtest/gtest.h>

namespace {

class ZvVerbStackTest : public ::testing::Test {
protected:
    /// Writes down what happens to it: "+a" done, "-a" undone, "done a" and "never a" flushed.
    struct Logged : ZvVerb {
        Logged(std::vector<std::string>& to, std::string n, size_t memory = 0)
            : log(to), id(std::move(n)), bytes(memory) {}
        ~Logged() override { log.push_back("~" + id); }
        XStringW DefaultName() const override { return XStringW::FromUtf8(id); }
        size_t MemUsage() const override { return bytes; }
        void Do() override {
            log.push_back("+" + id);
            if (onDo)
                onDo(*this);
        }
        void Undo() override { log.push_back("-" + id); }
        bool Redo() override {
            log.push_back("r" + id);
            return redoable;
        }
        bool IsUndoable(bool* quiet) const override {
            ZvVerb::IsUndoable(quiet);
            return undoable;
        }
        bool ChangesDrawing() const override { return changes; }
        void FlushDone() override { log.push_back("done " + id); }
        void FlushNeverDone() override { log.push_back("never " + id); }
        std::vector<std::string>& log;
        std::string id;
        size_t bytes;
        std::function<void(Logged&)> onDo;
        bool redoable = true, undoable = true, changes = true;
    };
    Logged* Verb(const char* id, size_t memory = 0) { return new Logged(log, id, memory); }
    std::vector<std::string> TakeLog() { return std::exchange(log, {}); }
    XStringW LastQuestion() {
        return host.Questions().empty() ? XStringW() : host.Questions().back().question.text;
    }

    std::vector<std::string> log;
    ZvSilentHost host;
    ZvCore::Settings settings; // the application's
    ZvDrawing drawing{ZvDrawingSetup{.host = &host, .settings = &settings}};
    ZvVerbStack& stack = *drawing.Verbs();
};

using Log = std::vector<std::string>;

} // namespace

TEST_F(ZvVerbStackTest, UndoneVerbsAreRedoneOrDiscardedByTheNext) {
    EXPECT_EQ(drawing.DoVerb(Verb("a")), 1);
    EXPECT_EQ(drawing.DoVerb(Verb("b")), 2);
    EXPECT_EQ(drawing.DoVerb(Verb("c")), 3);
    EXPECT_EQ(TakeLog(), (Log{"+a", "+b", "+c"}));
    EXPECT_TRUE(stack.Undo());
    EXPECT_TRUE(stack.Undo());
    EXPECT_TRUE(stack.Redo());
    EXPECT_TRUE(stack.Undo());
    EXPECT_EQ(TakeLog(), (Log{"-c", "-b", "rb", "-b"}));
    EXPECT_EQ(stack.Position(), 1);
    ZvVerb* d = drawing.DoVerbR(Verb("d"));
    EXPECT_EQ(TakeLog(), (Log{"never c", "~c", "never b", "~b", "+d"}));
    EXPECT_EQ(d, stack.GetVerb(1));
    EXPECT_EQ(stack.GetVerbStack().size(), 2u);
    EXPECT_EQ(stack.VerbsExecuted(), 4);
    EXPECT_EQ(host.Printed(), u"Undo c\nUndo b\nRedo b\nUndo b\n");
    EXPECT_EQ(drawing.DoVerb(nullptr), 0);
}

TEST_F(ZvVerbStackTest, NothingToUndoOrRedoIsSaid) {
    EXPECT_FALSE(stack.Undo());
    EXPECT_EQ(LastQuestion(), u"There is nothing to undo.");
    EXPECT_FALSE(stack.Redo());
    EXPECT_EQ(LastQuestion(),
              u"There is nothing to redo. Certain operations, including all GIS actions, cannot be redone.");
}

TEST_F(ZvVerbStackTest, VerbThatCannotBeUndoneEndsTheHistory) {
    drawing.DoVerb(Verb("a"));
    Logged* b = Verb("b");
    b->undoable = false;
    drawing.DoVerb(b);
    TakeLog();
    EXPECT_FALSE(stack.Undo());
    EXPECT_EQ(LastQuestion(), u"The previous operation cannot be undone");
    EXPECT_EQ(stack.StackSize(), 0);
    EXPECT_EQ(TakeLog(), (Log{"done a", "done b", "~a", "~b"}));
}

TEST_F(ZvVerbStackTest, VerbThatCannotBeRedoneTakesThoseAboveWithIt) {
    drawing.DoVerb(Verb("a"));
    Logged* b = Verb("b");
    b->redoable = false;
    drawing.DoVerb(b);
    drawing.DoVerb(Verb("c"));
    stack.Undo();
    stack.Undo();
    EXPECT_FALSE(stack.Redo());
    EXPECT_EQ(LastQuestion(), u"The operation 'b' cannot be redone.");
    EXPECT_EQ(stack.StackSize(), 1);
    EXPECT_TRUE(stack.CanUndo());
    EXPECT_FALSE(stack.CanRedo());
}

TEST_F(ZvVerbStackTest, BudgetDropsTheOldestAndKeepsTheNewest) {
    settings.Set("UndoMem", int64_t(100));
    for (const char* id : {"a", "b", "c"})
        drawing.DoVerb(Verb(id, 40));
    EXPECT_EQ(stack.StackSize(), 2);
    EXPECT_EQ(stack.MemUsage(), 80u);
    EXPECT_EQ(stack.Position(), 2);
    EXPECT_NE(drawing.DoVerb(Verb("huge", 5000)), 0);
    EXPECT_EQ(stack.StackSize(), 1);
    EXPECT_TRUE(stack.Undo());
    settings.Set("UndoMem", int64_t(0));
    EXPECT_EQ(drawing.DoVerb(Verb("d", 1)), 0) << "undo is off";
    EXPECT_EQ(stack.StackSize(), 0);
}

TEST_F(ZvVerbStackTest, CallsFromWithinAVerbChangeNothing) {
    Logged* a = Verb("a");
    a->onDo = [&](Logged&) {
        EXPECT_TRUE(stack.IsBusy());
        EXPECT_FALSE(stack.Undo());
        EXPECT_FALSE(stack.Redo());
        EXPECT_EQ(stack.DoVerb(Verb("inner")), 0);
        stack.PurgeUndo();
        EXPECT_EQ(stack.StackSize(), 1) << "the purge waits";
    };
    drawing.DoVerb(a);
    EXPECT_FALSE(stack.IsBusy());
    EXPECT_EQ(stack.StackSize(), 0);
    EXPECT_EQ(TakeLog(), (Log{"+a", "~inner", "done a", "~a"}));
}

TEST_F(ZvVerbStackTest, VerbMayAskToBeUndoneAtOnce) {
    Logged* a = Verb("a");
    a->onDo = [](Logged& self) { self.RequestUndo(); };
    EXPECT_EQ(drawing.DoVerb(a), 1);
    EXPECT_EQ(TakeLog(), (Log{"+a", "-a"}));
    EXPECT_TRUE(stack.CanRedo());
}

TEST_F(ZvVerbStackTest, OnlyVerbsThatChangeTheDrawingMakeItDirty) {
    Logged* look = Verb("look");
    look->changes = false;
    drawing.DoVerb(look);
    EXPECT_FALSE(drawing.IsModified());
    drawing.DoVerb(Verb("change"));
    EXPECT_TRUE(drawing.IsModified());
    drawing.ResetModified();
    stack.Undo();
    EXPECT_TRUE(drawing.IsModified());
}
