#include "Zelvan/ZvDrawing.h"
#include "Tests/Support/ProbeEntity.h"
#include "Zelvan/DrawingAux/IZvCommandRunner.h"
#include "Zelvan/DrawingAux/IZvDrawingUIReactor.h"
#include "Zelvan/DrawingAux/IZvEntityReactor.h"
#include "Zelvan/DrawingAux/ZvDrawingUIReactorHandler.h"
#include "Zelvan/DrawingAux/ZvEntityReactorHandler.h"
#include "Zelvan/DrawingAux/ZvTemporaryData.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayout.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Tables/ZvTextStyleTable.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/View/ZvView.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvServer.h"
#include "Zelvan/ZvTableTable.h"
#include "Zelvan/ZvUnits.h"
#include "ZvCore/BinXml.h"
#include "ZvCore/Log.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>

namespace {

struct Events : ZvcIEventListener {
    void OnEvent(const ZvcEvent& event) override { codes.push_back(event.code); }
    int Count(int code) const { return int(std::count(codes.begin(), codes.end(), code)); }
    std::vector<int> codes;
};

ProbeEntity* Insert(ZvDrawing& drawing, const XStringW& layer = {}, const ZvBounds2D& box = {0, 0, 1, 1}) {
    auto entity = std::make_unique<ProbeEntity>(box);
    ProbeEntity* raw = entity.get();
    drawing.Insert(std::move(entity), layer);
    return raw;
}

struct IdleVerb : ZvVerb {
    XStringW DefaultName() const override { return u"Idle"; }
};

class TestClock : public IZvClock {
public:
    DateTime Now() const override { return DateTime::FromUtc(2020, 1, 1); }
    double MonotonicSeconds() const override { return seconds; }
    double seconds = 0;
};

} // namespace

TEST(ZvDrawing, StartsWithItsDefaults) {
    const TestClock clock;
    ZvDrawingSetup setup;
    setup.clock = &clock;
    ZvDrawing drawing(setup), other;
    EXPECT_FALSE(drawing.GetGuid().IsNull());
    EXPECT_NE(drawing.GetGuid(), other.GetGuid());
    EXPECT_EQ(drawing.Tolerance(), 1e-6);
    EXPECT_EQ(drawing.CurrentLineType(), ZvLineType::Continuous());
    EXPECT_TRUE(drawing.CurrentLineWidth().IsByLayer());
    EXPECT_TRUE(drawing.CurrentColor().IsByLayer());
    EXPECT_TRUE(drawing.AllowByLayer() && drawing.AllowByBlock() && drawing.AllowTexturedBrushes() &&
                drawing.AllowTableReferences());
    EXPECT_FALSE(drawing.IsChildLayout() || drawing.IsChildLayoutWithProxyTables() || drawing.Destroying());
    EXPECT_EQ(drawing.ParentLayoutDrawing(), nullptr);
    EXPECT_NE(drawing.PageSetTable(), nullptr);
    EXPECT_NE(drawing.SwapManager(), nullptr);
    EXPECT_FALSE(drawing.IsModified());
    EXPECT_NE(drawing.LayerTable()->GetByName(u"0"), nullptr);
    EXPECT_TRUE(ZvServer::Instance().IsRegistered(&drawing));
    drawing.MakeCurrentDrawing();
    EXPECT_EQ(ZvDrawing::CurrentDrawing(), &drawing);

    const uint16_t order[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    ASSERT_EQ(drawing.TableTable()->Count(), 15);
    for (int i = 0; i < 15; ++i)
        EXPECT_EQ(drawing.TableTable()->Get(i)->GetTableCode(), order[i]);

    EXPECT_EQ(drawing.SuspendAutoCleanup(), 1);
    EXPECT_EQ(drawing.ResumeAutoCleanup(), 0);
    EXPECT_EQ(drawing.ResumeAutoCleanup(), 0) << "never below 0";
}

TEST(ZvDrawing, ChildLayoutBorrowsTheFirstSevenTables) {
    ZvDrawing parent;
    const Guid guid = Guid::New();
    ZvDrawing child(parent, true, true, guid);
    EXPECT_TRUE(child.IsChildLayout() && child.IsChildLayoutWithProxyTables());
    EXPECT_EQ(child.GetGuid(), guid);
    EXPECT_EQ(child.ParentLayoutDrawing(), &parent);
    EXPECT_EQ(child.LineTypeTable(), parent.LineTypeTable());
    EXPECT_EQ(child.TextStyleTable(), parent.TextStyleTable());
    EXPECT_NE(child.LayerTable(), parent.LayerTable());
    EXPECT_TRUE(child.IsProxyTable(child.LineTypeTable()));
    EXPECT_FALSE(child.IsProxyTable(child.LayerTable()));
    EXPECT_FALSE(parent.IsProxyTable(parent.LineTypeTable()));
    EXPECT_EQ(child.TableTable()->Count(), 8);
    EXPECT_EQ(child.TableTable()->Get(0)->GetTableCode(), ZvTableCode::Layer);
    EXPECT_EQ(child.PageSetTable(), nullptr);
    EXPECT_EQ(child.SwapManager(), nullptr);
    EXPECT_EQ(child.Units()->TextureScale(), 0.01);

    child.SetModified();
    EXPECT_TRUE(parent.IsModified()) << "what changes in a layout changes its drawing";
    child.ResetModified();
    EXPECT_FALSE(child.IsModified(false));
    EXPECT_TRUE(child.IsModified(true));

    ZvDrawing independent(parent, false, true, {});
    EXPECT_FALSE(independent.IsChildLayoutWithProxyTables());
    EXPECT_NE(independent.LineTypeTable(), parent.LineTypeTable());
    EXPECT_EQ(independent.TableTable()->Count(), 15);
}

TEST(ZvDrawing, InsertPicksTheLayerByNameThenCurrentThenZero) {
    ZvDrawingSetup bare;
    bare.createDefaults = false;
    ZvDrawing drawing(bare);
    ASSERT_EQ(drawing.LayerTable()->Count(), 0);
    ProbeEntity* first = Insert(drawing);
    EXPECT_EQ(first->Name(), ZvName(1));
    EXPECT_EQ(first->GetLayerName(), u"0");
    EXPECT_EQ(drawing.GetEntity(1), first);
    EXPECT_EQ(Insert(drawing, u"Walls")->GetLayerName(), u"Walls");
    EXPECT_EQ(Insert(drawing, u"WALLS")->GetLayerName(), u"Walls");
    drawing.LayerTable()->SetCurrent(drawing.LayerTable()->GetByName(u"Walls"));
    EXPECT_EQ(Insert(drawing)->GetLayerName(), u"Walls");
    EXPECT_EQ(drawing.LayerTable()->Count(), 2);

    ZvErrorCapture errors;
    auto refused = std::make_unique<ProbeEntity>();
    ProbeEntity* raw = refused.get();
    EXPECT_EQ(drawing.Insert(raw, u"a/b"), ZvName())
        << "no layer can have that name: the entity stays the caller's";
    EXPECT_TRUE(errors.Has(5));
    EXPECT_TRUE(errors.HasText("No default layer"));
    EXPECT_FALSE(raw->IsInDrawing());
}

TEST(ZvDrawing, RemoveReportsWhatIsNotThere) {
    ZvDrawing drawing;
    {
        ZvErrorCapture errors;
        drawing.Remove(nullptr);
        EXPECT_TRUE(errors.HasText("Null entity for ZvDrawing.Remove"));
    }
    ProbeEntity stranger;
    stranger.SetName32(1);
    stranger.SetSubscriber(true);
    ZvErrorCapture errors;
    drawing.Remove(&stranger);
    EXPECT_TRUE(errors.Has(13));
    EXPECT_FALSE(stranger.IsSubscriber()) << "unsubscribed in every case";
}

TEST(ZvDrawing, NewEntitiesAreFinishedAndMayBeVetoed) {
    struct Veto : IZvDrawingUIReactor {
        bool AllowCreation(ZvDrawing&, const ZvEntity&, XStringW& reason) override {
            reason = u"not today";
            return allow;
        }
        bool allow = true;
    } veto;
    ZvDrawing drawing;
    drawing.UIReactorHandler()->Register(&veto);
    drawing.SetCurrentColor(ZvColor(1, 2, 3));
    ProbeEntity entity;
    XStringW reason;
    EXPECT_TRUE(drawing.FinalizeNewEntity(entity, true, &reason));
    EXPECT_EQ(entity.GetColor(), ZvColor(1, 2, 3));
    entity.okForInsertion = false;
    EXPECT_FALSE(drawing.FinalizeNewEntity(entity, false, &reason));
    EXPECT_EQ(reason, u"probe refused");
    entity.okForInsertion = true;
    veto.allow = false;
    EXPECT_FALSE(drawing.FinalizeNewEntity(entity, false, &reason));
    EXPECT_EQ(reason, u"not today");
}

TEST(ZvDrawing, CurrentAttributesPostTheirEventAndTravelByName) {
    ZvDrawing drawing, other;
    Events events;
    drawing.AddListener(&events);
    drawing.SetCurrentColor(ZvColor(9));
    drawing.SetCurrentLineWidth(ZvLineWidth::Pixels(3));
    drawing.SetCurrentBrush(ZvBrush::Solid(ZvColor(10, 20, 30)));
    drawing.SetCurrentLineType(ZvLineType(0));
    drawing.SetCurrentTextProperties({0, ZvUniSize::Points(12)});
    EXPECT_EQ(events.codes, std::vector<int>(5, 20));

    other.LineTypeTable()->Purge();
    ASSERT_NE(other.LineTypeTable()->InsertNew(u"other"), nullptr);
    ASSERT_NE(other.LineTypeTable()->InsertNew(drawing.LineTypeTable()->Get(0)->GetName()), nullptr);
    ZvCore::BinXmlNode node;
    drawing.SerializeCurrent(node, true);
    Events heard;
    other.AddListener(&heard);
    other.SerializeCurrent(node, false);
    EXPECT_EQ(heard.codes, std::vector<int>{20});
    EXPECT_EQ(other.CurrentColor(), ZvColor(9));
    EXPECT_EQ(other.CurrentBrush(), ZvBrush::Solid(ZvColor(10, 20, 30)));
    EXPECT_NEAR(other.CurrentLineWidth().GetPixels(), 3, 1e-3);
    EXPECT_EQ(other.CurrentLineType(), ZvLineType(1)) << "the record of that name, wherever it is";
    EXPECT_NEAR(other.CurrentTextProperties().size.GetRealValue(), 12, 1e-3);
}

TEST(ZvDrawing, SettingsDocumentRoundTrips) {
    ZvDrawing drawing, other;
    drawing.SetTolerance(0.5);
    drawing.SetAllowByBlock(false);
    drawing.Settings().Set("Colour", XStringW(u"red"));
    drawing.SetLinearPrecision(0.125);
    drawing.SetCurrentColor(ZvColor(4));
    ZvCore::BinXmlNode node("root"), again("root");
    drawing.StoreSettings(node);
    other.LoadSettings(node, false);
    other.LoadSettings(node, true);
    EXPECT_EQ(other.GetGuid(), drawing.GetGuid());
    EXPECT_EQ(other.LinearPrecision(), 0.125);
    other.StoreSettings(again);
    EXPECT_EQ(node, again);
}

TEST(ZvDrawing, MetresGoThroughTheCoordinateSystemAndDecideThePrecision) {
    ZvDrawing drawing;
    EXPECT_EQ(drawing.MetersToWorld(3), 3);
    EXPECT_EQ(drawing.LinearPrecision(), 1e-6);
    EXPECT_FALSE(drawing.RequireDoublePrecision({0, 0, 0, 8, 8, 0}));
    EXPECT_TRUE(drawing.RequireDoublePrecision({0, 0, 0, 1000, 8, 0}));
    ZvCoordSystem feet;
    feet.kind = ZvCoordSystem::Kind::Projected;
    feet.metersPerUnit = 0.3048;
    drawing.UcsTable()->SetCoordinateSystem(feet);
    Events events;
    drawing.AddListener(&events);
    drawing.NotifyCoordinateSystemChanged();
    EXPECT_EQ(events.Count(ZvDrawingEvent::CoordinatesChanged), 1);
    EXPECT_NEAR(drawing.MetersToWorld(0.3048), 1, 1e-12);
    EXPECT_NEAR(drawing.WorldToMeters(1), 0.3048, 1e-12);
    EXPECT_NEAR(drawing.LinearPrecision(), 1e-6 / 0.3048, 1e-18);
    drawing.SetLinearPrecision(2);
    EXPECT_EQ(drawing.LinearPrecision(), 2);
    drawing.SetLinearPrecision(0);
    EXPECT_NEAR(drawing.LinearPrecision(), 1e-6 / 0.3048, 1e-18);
    double latitude = 0, longitude = 0;
    EXPECT_FALSE(drawing.PtWorldToLatLon({}, latitude, longitude)) << "nobody knows coordinate systems here";
}

TEST(ZvDrawing, ResetGoesBackToTheStart) {
    ZvDrawing drawing;
    int destroyed = 0;
    for (int i = 0; i < 100; ++i)
        Insert(drawing, i % 2 ? u"a" : u"b")->onDestroyed = [&] { ++destroyed; };
    drawing.SetCurrentColor(ZvColor(4));
    drawing.SetCurrentLineWidth(ZvLineWidth::World(4));
    Events events;
    drawing.AddListener(&events);
    ZvErrorCapture errors;
    drawing.Reset();
    EXPECT_TRUE(errors.Entries().empty());
    EXPECT_EQ(destroyed, 100);
    EXPECT_EQ(drawing.NameTable().Count(), 0);
    EXPECT_TRUE(drawing.CurrentColor().IsByLayer() && drawing.CurrentLineWidth().IsByLayer());
    EXPECT_EQ(drawing.LayerTable()->GetByName(u"a"), nullptr);
    EXPECT_NE(drawing.LayerTable()->GetByName(u"0"), nullptr);
    EXPECT_EQ(events.Count(ZvDrawingEvent::Reset), 1);
    EXPECT_EQ(Insert(drawing)->Name(), ZvName(1));
}

TEST(ZvDrawing, UnusedRecordsArePurgedAndReferencesFollow) {
    ZvDrawing drawing;
    drawing.PurgeUnusedTableRecords();
    Insert(drawing, u"unused")->RemoveAndDelete();
    ProbeEntity* entity = Insert(drawing, u"used");
    drawing.LayerTable()->InsertNew(u"unused too");
    auto* dashed = drawing.LineTypeTable()->InsertNew(u"of a layer");
    drawing.LayerTable()->GetByName(u"used")->SetLineType(ZvLineType(dashed->GetTableIndex()));
    drawing.LineTypeTable()->InsertNew(u"of nothing");
    drawing.LayerTable()->SetCurrent(drawing.LayerTable()->GetByName(u"0"));
    const uint32_t layers = ZvTableCode::Full(ZvTableCode::Layer);
    EXPECT_EQ(drawing.GetRecordUsage(layers, entity->GetLayerIndex()), 1);
    EXPECT_EQ(drawing.PurgeUnusedTableRecords(), 3);
    EXPECT_EQ(entity->GetLayerName(), u"used");
    EXPECT_EQ(drawing.LayerTable()->GetByName(u"unused"), nullptr);
    EXPECT_NE(drawing.LayerTable()->GetByName(u"0"), nullptr);
    EXPECT_NE(drawing.LineTypeTable()->GetByName(u"of a layer"), nullptr);
    EXPECT_EQ(drawing.LineTypeTable()->GetByName(u"of nothing"), nullptr);

    ASSERT_NE(drawing.DoVerb(new IdleVerb), 0);
    drawing.LineTypeTable()->DeleteRecord(u"of a layer");
    EXPECT_EQ(entity->GetLayer()->GetLineType(), ZvLineType::Continuous());
    EXPECT_EQ(drawing.Verbs()->StackSize(), 0) << "what verbs kept would refer to other records now";
}

TEST(ZvDrawing, ErasedEntitiesOfVerbsSurviveThePurge) {
    ZvDrawing drawing;
    ProbeEntity* kept = Insert(drawing);
    int destroyed = 0;
    Insert(drawing)->onDestroyed = [&] { ++destroyed; };
    drawing.GetEntity(2)->SetErased(true);
    kept->SetErased(true);
    auto* verb = new IdleVerb;
    verb->Entities().SetParentDrawing(&drawing);
    verb->Entities().Insert(kept);
    ASSERT_NE(drawing.DoVerb(verb), 0);
    drawing.PurgeErased();
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(drawing.GetEntity(1), kept);
    EXPECT_EQ(drawing.NameTable().Count(), 1);
}

TEST(ZvDrawing, TimerTicksOnceAPeriodAndCleansUpRarely) {
    TestClock clock;
    ZvDrawingSetup setup;
    setup.clock = &clock;
    ZvDrawing drawing(setup);
    EXPECT_EQ(drawing.LastCleanup().verbs, 0);
    for (int i = 0; i < 100; ++i)
        drawing.DoVerb(new IdleVerb);
    clock.seconds = 299;
    drawing.Tick();
    EXPECT_EQ(drawing.LastCleanup().verbs, 0);
    drawing.SuspendAutoCleanup();
    clock.seconds = 301;
    drawing.Tick();
    EXPECT_EQ(drawing.LastCleanup().verbs, 0) << "suspended";
    drawing.ResumeAutoCleanup();
    drawing.Tick();
    EXPECT_EQ(drawing.LastCleanup().verbs, 0) << "the second is not over";
    clock.seconds = 302;
    drawing.Tick();
    EXPECT_EQ(drawing.LastCleanup().verbs, 100);
    EXPECT_EQ(drawing.LastCleanup().time, 302);
}

// --- what is said to the user ----------------------------------------------------------------------------------------

TEST(ZvDrawing, InconsistencyEndsTheProcessOnPurpose) {
    int ended = 0;
    std::vector<std::string> log;
    ZvSilentHost host;
    ZvDrawing drawing;
    drawing.SetHost(&host);
    const auto sink = ZvLog::SetSink([&](ZvLog::Level level, std::string_view text) {
        if (level == ZvLog::Level::Forensic)
            log.emplace_back(text);
    });
    const auto hook = ZvDrawing::SetTerminateHook([&] { ++ended; });
    ZV_BETA_CRASH(&drawing, "lost node");
    std::string reported;
    const auto reporter =
        ZvDrawing::SetCrashReporter([&](std::string_view kind, std::string_view) { reported = kind; });
    ZV_BETA_CRASH(&drawing, nullptr);
    ZvDrawing::SetCrashReporter(reporter);
    ZvDrawing::SetTerminateHook(hook);
    ZvLog::SetSink(sink);
    EXPECT_EQ(ended, 1) << "with a reporter the call returns";
    EXPECT_EQ(reported, "betacrash");
    EXPECT_EQ(log.size(), 2u);
    EXPECT_NE(log.at(0).find("lost node"), std::string::npos);
    ASSERT_EQ(host.Questions().size(), 1u);
    EXPECT_EQ(host.Questions()[0].question.text,
              u"Fatal Error: Database has become out of sync. Forced crash initiated to avoid data loss, "
              u"please contact KTR Support immediately!");
}

TEST(ZvDrawing, FatalErrorOffersToSaveAndTellsListeners) {
    ZvSilentHost host;
    ZvDrawing drawing;
    drawing.SetHost(&host);
    Events events;
    drawing.AddListener(&events);
    drawing.FatalError();
    ASSERT_EQ(host.Questions().size(), 1u);
    EXPECT_EQ(host.Questions()[0].question.text,
              u"A fatal error has occured. Would you like to try to save your drawing?");
    EXPECT_EQ(events.codes, std::vector<int>{10});
}

TEST(ZvDrawing, StatsPrintsVerbsAndTheirMemory) {
    ZvSilentHost host;
    ZvDrawing drawing;
    drawing.SetHost(&host);
    struct Heavy : ZvVerb {
        XStringW DefaultName() const override { return u"Heavy"; }
        size_t MemUsage() const override { return 5000; }
    };
    drawing.DoVerb(new Heavy);
    drawing.DoVerb(new Heavy);
    drawing.Stats();
    EXPECT_EQ(host.Printed(), u"Number of verbs = 2\nAmount of memory used by verbs = 9 KB\n");
}

TEST(ZvDrawing, ViewsAreKeptByNumberAndTheFirstIsCurrent) {
    ZvDrawing drawing;
    Vec3d center;
    double level = 0;
    EXPECT_FALSE(drawing.GetScreenCenterAndLevel(center, level));
    ZvView* a = drawing.AddView(std::make_unique<ZvView>());
    ZvView* b = drawing.AddView(std::make_unique<ZvView>());
    EXPECT_NE(a->GetId(), b->GetId());
    EXPECT_EQ(drawing.GetViewById(b->GetId()), b);
    EXPECT_EQ(drawing.GetCurrentView(), a);
    EXPECT_TRUE(drawing.SetCurrentView(b));
    ZvView foreign(&drawing, b->GetId());
    EXPECT_FALSE(drawing.SetCurrentView(&foreign));
    b->Resize(256, 256);
    b->XForm().SetPlan({5, 6, 0}, 40075016.685578488 / 8);
    b->XForm().RebuildView();
    EXPECT_TRUE(drawing.GetScreenCenterAndLevel(center, level));
    EXPECT_EQ(center, (Vec3d{5, 6, 0}));
    EXPECT_NEAR(level, 3, 1e-9);
    EXPECT_EQ(drawing.RemoveView(b).get(), b);
    EXPECT_EQ(drawing.GetCurrentView(), a);
    EXPECT_EQ(drawing.GetViewCount(), 1);
}

// --- the end -----------------------------------------------------------------------------------------------------------

namespace {

/// Writes down the order in which a drawing is taken apart.
struct Journal : ZvcIEventListener, IZvDrawingUIReactor, IZvEntityReactor {
    std::vector<std::string> lines;
    void Note(const char* line) { lines.emplace_back(line); }
    void OnEvent(const ZvcEvent& event) override {
        if (event.sender == &ZvServer::Instance() && event.code == ZvServer::kDrawingUnregistered)
            Note("unregistered");
        else if (event.sender != &ZvServer::Instance() && event.code == ZvDrawingEvent::Dying)
            Note("dying event");
        else if (event.sender != &ZvServer::Instance() && event.code == ZvDrawingEvent::SelectionChanged)
            Note("selection cleared");
    }
    void DrawingDying(ZvDrawing& drawing) override {
        Note(drawing.Destroying() ? "reactor, late" : "reactor");
    }
};

struct LoggedRunner : IZvCommandRunner {
    explicit LoggedRunner(Journal& to) : journal(to) {}
    ~LoggedRunner() override { journal.Note("processor gone"); }
    bool IsBusy() const override { return busy; }
    void CancelCommand() override {
        journal.Note("cancelled");
        busy = false;
    }
    bool ExecuteLine(const XStringW& line) override { return line == u"known"; }
    void DrawingDestroyed() override { journal.Note("processor told"); }
    Journal& journal;
    bool busy = true;
};

struct LoggedVerb : ZvVerb {
    explicit LoggedVerb(Journal& to) : journal(to) {}
    XStringW DefaultName() const override { return u"Logged"; }
    void FlushDone() override { journal.Note("undo purged"); }
    Journal& journal;
};

} // namespace

TEST(ZvDrawing, IsTakenApartInOrder) {
    Journal journal;
    ZvServer::Instance().AddListener(&journal);
    {
        ZvDrawing drawing;
        ProbeEntity* inLayer = Insert(drawing);
        inLayer->onDestroyed = [&] { journal.Note("layer's entity"); };
        auto scratch = std::make_unique<ProbeEntity>();
        scratch->onDestroyed = [&] { journal.Note("scratch entity"); };
        drawing.ScratchLayer()->Tree().Insert(scratch.release());
        auto temporary = std::make_unique<ProbeEntity>();
        temporary->onDestroyed = [&] { journal.Note("temporary entity"); };
        drawing.TemporaryData()->Add(std::move(temporary));
        drawing.AddListener(&journal);
        drawing.UIReactorHandler()->Register(&journal);
        drawing.EntityReactorHandler()->Register(&journal);
        drawing.CurrentSelection().Insert(inLayer);
        drawing.DoVerb(new LoggedVerb(journal));
        ASSERT_TRUE(drawing.InitUI(std::make_unique<LoggedRunner>(journal)));
        EXPECT_FALSE(drawing.InitUI(std::make_unique<LoggedRunner>(journal))) << "one processor a drawing";
        journal.lines.clear();
        EXPECT_TRUE(drawing.Execute(u"known"));
        EXPECT_FALSE(drawing.CanDestroy());
        EXPECT_TRUE(drawing.CanDestroy()) << "the busy command was cancelled";
        static_cast<LoggedRunner*>(drawing.CmdProcessor())->busy = true;
        journal.lines.clear();
    }
    EXPECT_EQ(journal.lines,
              (std::vector<std::string>{"dying event", "selection cleared", "reactor", "reactor", "cancelled",
                                        "undo purged", "scratch entity", "layer's entity", "temporary entity",
                                        "unregistered", "processor told", "processor gone"}));
}

TEST(ZvDrawing, LayoutDrawingsGoBeforeTheTablesThatTheyBorrow) {
    auto parent = std::make_unique<ZvDrawing>();
    ZvDrawing* child = nullptr;
    {
        auto layout = std::make_unique<ZvLayout>();
        ZvLayout* raw = layout.get();
        ASSERT_TRUE(Zv::Ok(parent->TableTable()->Get(ZvTableCode::Layout)->Insert(std::move(layout))));
        child = raw->Drawing();
    }
    ASSERT_NE(child, nullptr);
    struct Watch : ZvcIEventListener {
        void OnEvent(const ZvcEvent& event) override {
            if (event.code == ZvDrawingEvent::Dying)
                styleTableAlive = static_cast<ZvDrawing*>(event.sender)->TextStyleTable()->Count() >= 0;
        }
        bool styleTableAlive = false;
    } watch;
    child->AddListener(&watch);
    Insert(*child);
    parent.reset();
    EXPECT_TRUE(watch.styleTableAlive);
}
