#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Tests/Support/BoxEntity.h"
#include "Zelvan/DrawingAux/ZvUndoSettings.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvServer.h"
#include "ZvCore/ZvErrors.h"
#include <functional>
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
        void Undo() override {
            log.push_back("-" + id);
            if (onUndo)
                onUndo();
        }
        bool Redo() override {
            log.push_back("r" + id);
            if (onRedo)
                onRedo();
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
        std::function<void()> onUndo, onRedo;
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
    Logged* growing = Verb("growing", 10);
    growing->onDo = [](Logged& self) { self.bytes = 90; };
    drawing.DoVerb(growing);
    EXPECT_EQ(stack.StackSize(), 1) << "what it holds is known when it is done";
    EXPECT_EQ(stack.MemUsage(), 90u);
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
    EXPECT_EQ(host.Printed(), u"Undo a\n");
    Logged* b = Verb("b");
    b->onDo = [](Logged& self) { self.RequestUndo(); };
    b->undoable = false;
    EXPECT_EQ(drawing.DoVerb(b), 0);
    EXPECT_EQ(LastQuestion(), u"The previous operation cannot be undone");
    EXPECT_EQ(TakeLog(), (Log{"never a", "~a", "+b", "done b", "~b"}));
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

// --- sections, purges, clean deletion, budget ---------------------------------------------------------------

TEST_F(ZvVerbStackTest, SectionsRollBackAndBarUndo) {
    drawing.DoVerb(Verb("a"));
    drawing.DoVerb(Verb("gone"));
    stack.Undo();
    const int outer = stack.VerbBeginSection(ZvVerbStack::kSectionBarrier);
    const int inner = stack.VerbBeginSection();
    EXPECT_GT(inner, outer);
    EXPECT_FALSE(stack.CanRedo());
    EXPECT_FALSE(stack.Undo());
    EXPECT_EQ(LastQuestion(), u"Cannot undo beyond this point until the current command is complete.");
    drawing.DoVerb(Verb("b"));
    drawing.DoVerb(Verb("c"));
    EXPECT_TRUE(stack.Undo());
    TakeLog();
    EXPECT_TRUE(stack.VerbEndSection(inner));
    EXPECT_TRUE(stack.VerbEndSection(outer, ZvVerbStack::kSectionRollBack));
    EXPECT_EQ(TakeLog(), (Log{"-b", "never c", "~c", "never b", "~b"}));
    EXPECT_EQ(stack.StackSize(), 1);
    EXPECT_TRUE(stack.Undo()) << "the barrier is gone";
    const ZvErrorCapture errors;
    EXPECT_FALSE(stack.VerbEndSection(outer));
    EXPECT_TRUE(errors.Has(42));
    EXPECT_EQ(stack.OpenSections(), 0);
}

TEST_F(ZvVerbStackTest, SectionsFollowWhatIsDroppedBelowThem) {
    settings.Set(ZvVerbStack::kMaxVerbsKey, int64_t(3));
    drawing.DoVerb(Verb("a"));
    drawing.DoVerb(Verb("b"));
    const int section = stack.VerbBeginSection();
    for (const char* id : {"c", "d", "e", "f"})
        drawing.DoVerb(Verb(id));
    EXPECT_EQ(stack.StackSize(), 3);
    TakeLog();
    EXPECT_FALSE(stack.VerbEndSection(section, ZvVerbStack::kSectionRollBack))
        << "c cannot be undone any more";
    EXPECT_EQ(LastQuestion(),
              u"The operation could be taken back in part only: its first steps have left the undo "
              u"information.");
    EXPECT_EQ(TakeLog(), (Log{"-f", "-e", "-d", "never f", "~f", "never e", "~e", "never d", "~d"}));
    EXPECT_EQ(stack.StackSize(), 0);

    // Undone below its start, a section begins where the next verb finds itself.
    drawing.DoVerb(Verb("a"));
    const int open = stack.VerbBeginSection();
    EXPECT_TRUE(stack.Undo());
    drawing.DoVerb(Verb("b"));
    EXPECT_TRUE(stack.VerbEndSection(open, ZvVerbStack::kSectionRollBack));
    EXPECT_EQ(stack.StackSize(), 0);

    drawing.DoVerb(Verb("kept"));
    const int stuck = stack.VerbBeginSection();
    Logged* b = Verb("b");
    b->undoable = false;
    drawing.DoVerb(b);
    EXPECT_FALSE(stack.VerbEndSection(stuck, ZvVerbStack::kSectionRollBack));
    EXPECT_EQ(LastQuestion(), u"The previous operation cannot be undone");
    EXPECT_EQ(stack.StackSize(), 0);
}

TEST_F(ZvVerbStackTest, SpecialPurgesTakeWhatUsesALayerOrAnEntity) {
    ZvLayer* layers[] = {drawing.LayerTable()->InsertNew(u"A"), drawing.LayerTable()->InsertNew(u"B")};
    ZvEntity* entities[3];
    const char* ids[] = {"on A", "on B", "also on A"};
    for (int i = 0; i < 3; ++i) {
        entities[i] = drawing.GetEntity(layers[i % 2]->Adopt(std::make_unique<BoxEntity>(0, 0, 1, 1)));
        Logged* verb = Verb(ids[i], 10);
        verb->Entities().SetParentDrawing(&drawing);
        verb->Entities().Insert(entities[i]);
        drawing.DoVerb(verb);
    }
    drawing.DoVerb(Verb("none", 10));
    stack.Undo();
    stack.Undo();
    TakeLog();
    stack.PurgeUndoForLayer(layers[0]);
    EXPECT_EQ(TakeLog(), (Log{"never also on A", "done on A", "~also on A", "~on A"}));
    EXPECT_EQ(stack.Position(), 1);
    EXPECT_EQ(stack.MemUsage(), 20u);
    stack.PurgeUndoForLayer(nullptr);
    const ZvSelection one = ZvSelection::Single(entities[1]);
    stack.PurgeUndoForEntities(&one);
    EXPECT_EQ(TakeLog(), (Log{"done on B", "~on B"}));
    EXPECT_EQ(stack.GetVerb(0)->GetName(), u"none");
    EXPECT_EQ(stack.Position(), 0);
}

TEST_F(ZvVerbStackTest, CleanDeletionWaitsForTheRunningVerbAndLeavesNoReference) {
    ZvEntity* box = drawing.GetEntity(drawing.Insert(std::make_unique<BoxEntity>(0, 0, 1, 1)));
    const ZvName name = box->Name();
    ZvDrawing stranger;
    ZvEntity* other = stranger.GetEntity(stranger.Insert(std::make_unique<BoxEntity>(0, 0, 1, 1)));
    const ZvSelection others = ZvSelection::Single(other);
    stack.DeleteEntitiesClean(&others);
    EXPECT_TRUE(drawing.NameTable().Exists(name)) << "of the same name in another drawing";
    drawing.ChangeSelection(ZvSelection::Single(box));
    Logged* verb = Verb("a");
    verb->Entities().SetParentDrawing(&drawing);
    verb->Entities().Insert(box);
    verb->onDo = [&](Logged& self) {
        stack.DeleteEntityClean(box);
        EXPECT_TRUE(stack.IsEntityPendingDelete(box));
        EXPECT_TRUE(drawing.NameTable().Exists(name));
        const ZvSelection one = ZvSelection::Single(box);
        stack.PurgeUndoForEntities(&one);
        EXPECT_TRUE(stack.VerbIsPendingDestruction(&self));
    };
    EXPECT_NE(drawing.DoVerb(verb), 0) << "once it names the entity no more, it stays";
    EXPECT_FALSE(drawing.NameTable().Exists(name));
    EXPECT_TRUE(drawing.CurrentSelection().IsEmpty());
    EXPECT_TRUE(stack.EntitiesInUse().empty());
    EXPECT_EQ(stack.StackSize(), 1);
}

TEST_F(ZvVerbStackTest, UndoSwitchedOffOffersToSwitchItOn) {
    struct Person : ZvSilentHost {
        ZvAnswer Ask(const ZvQuestion& question) override {
            ZvSilentHost::Ask(question);
            return ZvAnswer::Yes;
        }
        bool OpenDrawingOptions() override { return ++optionsOpened; }
        int optionsOpened = 0;
    } person;
    drawing.SetHost(&person);
    settings.Set("UndoMem", int64_t(0));
    EXPECT_EQ(drawing.DoVerb(Verb("a", 1)), 0);
    EXPECT_EQ(TakeLog(), (Log{"+a", "done a", "~a"}));
    EXPECT_FALSE(stack.Undo());
    EXPECT_EQ(
        person.Questions().back().question.text,
        u"No undo information has been recorded because the undo buffer size is set to zero. Do you want "
        u"to increase this value?");
    EXPECT_EQ(person.optionsOpened, 1);
}

TEST_F(ZvVerbStackTest, AdviceIsGivenForAVerbThatAloneIsTooLarge) {
    struct Person : ZvSilentHost {
        int Choose(const ZvChoice& choice) override {
            asked += int(choice.choices.size()) == 3;
            return chosen;
        }
        bool OpenConfiguration(const XStringW& name) override {
            page = name;
            return true;
        }
        int asked = 0, chosen = 0;
        XStringW page;
    } person;
    struct Exempt : Logged {
        using Logged::Logged;
        bool IsExemptFromBudget() const override { return true; }
    };
    drawing.SetHost(&person);
    settings.Set("UndoMem", int64_t(100));
    EXPECT_NE(drawing.DoVerb(Verb("keep", 500)), 0);
    EXPECT_NE(drawing.DoVerb(new Exempt(log, "exempt", 500)), 0);
    EXPECT_EQ(person.asked, 1);
    person.chosen = 2;
    EXPECT_NE(drawing.DoVerb(Verb("configure", 500)), 0);
    EXPECT_EQ(person.page, u"MISCELLANEOUS");
    person.chosen = 1;
    EXPECT_EQ(drawing.DoVerb(Verb("purge", 500)), 0);
    EXPECT_EQ(person.asked, 3);
    EXPECT_EQ(stack.StackSize(), 0);
}

TEST_F(ZvVerbStackTest, VerbThatThrowsIsTakenBackOrEndsTheHistory) {
    const auto fail = [] { throw std::runtime_error("no more"); };
    const ZvErrorCapture errors;
    drawing.DoVerb(Verb("a"));
    Logged* b = Verb("b");
    b->onDo = [&](Logged&) { fail(); };
    TakeLog();
    EXPECT_EQ(drawing.DoVerb(b), 0);
    EXPECT_TRUE(errors.HasText("no more"));
    EXPECT_EQ(LastQuestion(), u"The operation 'b' failed and was taken back.");
    EXPECT_EQ(TakeLog(), (Log{"+b", "-b", "never b", "~b"}));
    EXPECT_FALSE(stack.IsBusy());

    Logged* c = Verb("c");
    drawing.DoVerb(c);
    stack.Undo();
    c->onRedo = fail;
    TakeLog();
    EXPECT_FALSE(stack.Redo());
    EXPECT_EQ(LastQuestion(), u"The operation 'c' cannot be redone.");
    EXPECT_EQ(TakeLog(), (Log{"rc", "-c", "never c", "~c"}));
    EXPECT_TRUE(stack.CanUndo()) << "a is untouched";

    const int section = stack.VerbBeginSection();
    drawing.DoVerb(Verb("d"));
    Logged* e = Verb("e");
    e->onUndo = fail;
    drawing.DoVerb(e);
    EXPECT_FALSE(stack.VerbEndSection(section, ZvVerbStack::kSectionRollBack));
    EXPECT_NE(LastQuestion().ToUtf8().find("The operation 'e' failed half way."), std::string::npos);
    EXPECT_EQ(stack.StackSize(), 0);
    EXPECT_EQ(stack.MemUsage(), 0u);
    EXPECT_EQ(stack.OpenSections(), 0);
    EXPECT_NE(drawing.DoVerb(Verb("f")), 0) << "a new history begins";
}

TEST(ZvUndoSettings, BudgetStaysWithinBounds) {
    const int64_t mib = 1 << 20, gib = mib << 10;
    const DateTime today = DateTime::FromUtc(2026, 1, 1), april = DateTime::FromUtc(2013, 4, 20);
    const struct {
        int64_t stored;
        DateTime now;
        uint64_t physical;
        int64_t bounded;
    } cases[] = {
        {-5, today, 8 * uint64_t(gib), mib},
        {0, today, 8 * uint64_t(gib), mib},
        {mib - 1, today, 8 * uint64_t(gib), mib},
        {mib, today, 8 * uint64_t(gib), mib},
        {500 * mib, today, 8 * uint64_t(gib), 500 * mib},
        {INT64_MAX, today, 8 * uint64_t(gib), 2 * gib},
        {INT64_MAX, today, 0, INT64_MAX},
        {500 * mib, today, 1, mib},
        {0, april, 8 * uint64_t(gib), 157'286'400},
        {1, april, 8 * uint64_t(gib), mib},
        {0, DateTime::FromUtc(2013, 4, 1, 0, 0, 1), 0, 157'286'400},
        {0, DateTime::FromUtc(2013, 4, 1), 0, mib},
        {0, DateTime::FromUtc(2013, 5, 30, 23, 59, 59), 0, 157'286'400},
        {0, DateTime::FromUtc(2013, 5, 31), 0, mib},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ZvUndoSettings::Bounded(c.stored, c.now, c.physical), c.bounded)
            << c.stored << " at " << c.now.ToString().ToUtf8();
}

TEST(ZvUndoSettings, ThePassRunsWhenSettingsAreReadAndWritten) {
    struct April : IZvClock {
        DateTime Now() const override { return DateTime::FromUtc(2013, 4, 30); }
        double MonotonicSeconds() const override { return 0; }
    } april;
    ZvServer& server = ZvServer::Instance();
    const ZvCore::Settings former = server.Settings();
    ZvCore::BinXmlNode node;
    node.Set("UndoMem", int64_t(0));
    server.LoadSettings(node, april);
    EXPECT_EQ(server.Settings().GetInt("UndoMem", 0), 157'286'400);
    server.Settings().Set("UndoMem", int64_t(0));
    {
        ZvDrawing drawing;
        EXPECT_EQ(drawing.Verbs()->Budget(), 0) << "for the session";
    }
    ZvCore::BinXmlNode stored;
    server.StoreSettings(stored, IZvClock::System());
    EXPECT_EQ(server.Settings().GetInt("UndoMem", 0), 1'048'576);
    server.Settings() = former;
}
