#include "Tests/Support/ProbeEntity.h"
#include "Zelvan/DrawingAux/IZvEntityReactor.h"
#include "Zelvan/DrawingAux/ZvAnimationConductor.h"
#include "Zelvan/DrawingAux/ZvAuxTimer.h"
#include "Zelvan/DrawingAux/ZvCBHandler.h"
#include "Zelvan/DrawingAux/ZvDefaultProperties.h"
#include "Zelvan/DrawingAux/ZvDrawingUIReactorHandler.h"
#include "Zelvan/DrawingAux/ZvDrawingUtility.h"
#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/DrawingAux/ZvEntityNotifier.h"
#include "Zelvan/DrawingAux/ZvEntityReactorHandler.h"
#include "Zelvan/DrawingAux/ZvHomeGrid.h"
#include "Zelvan/DrawingAux/ZvMergeHelper.h"
#include "Zelvan/DrawingAux/ZvModOps.h"
#include "Zelvan/DrawingAux/ZvPageSetTable.h"
#include "Zelvan/DrawingAux/ZvSwapManager.h"
#include "Zelvan/DrawingAux/ZvTemporaryData.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/BinXml.h"
#include <gtest/gtest.h>
#include <numeric>

namespace {

class DrawingServicesTest : public ::testing::Test {
protected:
    ZvDrawing drawing;
    ProbeEntity& Add(double x = 0, const XStringW& layer = {}) { return AddTo(drawing, x, layer); }
    static ProbeEntity& AddTo(ZvDrawing& to, double x, const XStringW& layer = {}) {
        auto entity = std::make_unique<ProbeEntity>(ZvBounds2D{x, 0, x + 1, 1});
        ProbeEntity& raw = *entity;
        to.Insert(std::move(entity), layer);
        return raw;
    }
};

using Told = std::vector<std::pair<uint32_t, int>>;

} // namespace

// --- notifier, reactors, associator ------------------------------------------------------------------------------------

TEST_F(DrawingServicesTest, SubscribersHearOfTheEntitiesThatTheyWatch) {
    ProbeEntity &watcher = Add(), &other = Add(), &watched = Add();
    ZvEntityNotifier& notifier = *drawing.EntityNotifier();
    EXPECT_TRUE(notifier.Subscribe(watcher, watched.Name()));
    EXPECT_FALSE(notifier.Subscribe(watcher, watched.Name()));
    EXPECT_FALSE(notifier.Subscribe(watcher, watcher.Name()));
    EXPECT_TRUE(notifier.Subscribe(other, watched.Name()));
    EXPECT_TRUE(watcher.IsSubscriber());
    EXPECT_TRUE(notifier.Unsubscribe(other, watched.Name()));
    EXPECT_FALSE(other.IsSubscriber());
    const uint32_t who = watched.Name32();
    notifier.Tell(ZvName(who), ZvNotifyWhat::Changed);
    watched.SetErased(true);
    watched.SetErased(false);
    watched.RemoveAndDelete();
    EXPECT_EQ(watcher.notified, (Told{{who, ZvNotifyWhat::Changed},
                                      {who, ZvNotifyWhat::Erased},
                                      {who, ZvNotifyWhat::Restored},
                                      {who, ZvNotifyWhat::Removed}}));
    EXPECT_TRUE(other.notified.empty());
    watcher.RemoveAndDelete();
    EXPECT_EQ(notifier.Count(), 0u);
}

TEST_F(DrawingServicesTest, RingOfSubscriptionsComesToAnEnd) {
    struct Chained : ProbeEntity {
        void Notify(ZvName who, int what) override {
            ProbeEntity::Notify(who, what);
            ParentDrawing()->EntityNotifier()->Tell(Name(), what);
        }
    };
    Chained* ring[3];
    for (Chained*& entity : ring)
        drawing.Insert(entity = new Chained);
    for (int i = 0; i < 3; ++i)
        drawing.EntityNotifier()->Subscribe(*ring[i], ring[(i + 1) % 3]->Name());
    drawing.EntityNotifier()->Tell(ring[0]->Name(), ZvNotifyWhat::Changed);
    for (const Chained* entity : ring)
        EXPECT_EQ(entity->notified.size(), 1u);
}

TEST_F(DrawingServicesTest, ReactorsHearOfReactableEntitiesAndMayLeaveMeanwhile) {
    struct Reactor : IZvEntityReactor {
        void EntityInserted(ZvDrawing& d, ZvEntity&) override {
            ++inserted;
            if (leave)
                d.EntityReactorHandler()->Unregister(leave);
        }
        void EntityErased(ZvDrawing&, ZvEntity&, bool erased) override { erasures += erased ? 1 : 100; }
        void EntityRemoved(ZvDrawing&, ZvEntity&) override { ++removed; }
        void EntityChanged(ZvDrawing&, ZvEntity&) override { ++changed; }
        int inserted = 0, erasures = 0, removed = 0, changed = 0;
        IZvEntityReactor* leave = nullptr;
    } first, second;
    ZvEntityReactorHandler& handler = *drawing.EntityReactorHandler();
    handler.Register(&first);
    handler.Register(&second);
    first.leave = &second;
    ProbeEntity& entity = Add();
    EXPECT_EQ(first.inserted, 1);
    EXPECT_EQ(second.inserted, 0);
    EXPECT_EQ(first.changed, 0);
    entity.SetColor(ZvColor(3));
    entity.Translate({1, 0, 0});
    EXPECT_GE(first.changed, 2);
    entity.SetErased(true);
    entity.SetErased(false);
    handler.Suspend();
    entity.SetErased(true);
    handler.Resume();
    entity.SetReactable(false);
    entity.SetErased(false);
    EXPECT_EQ(first.erasures, 101);
    entity.SetReactable(true);
    entity.RemoveAndDelete();
    EXPECT_EQ(first.removed, 1);
    EXPECT_TRUE(handler.Unregister(&first));
}

TEST_F(DrawingServicesTest, AssociationsEndWithTheirEntities) {
    ProbeEntity &a = Add(), &b = Add(), &c = Add();
    ZvEntityAssociator& associator = *drawing.EntityAssociator();
    EXPECT_TRUE(associator.Associate(a.Name(), b.Name()));
    EXPECT_FALSE(associator.Associate(b.Name(), a.Name()));
    EXPECT_FALSE(associator.Associate(a.Name(), ZvName(99)));
    EXPECT_TRUE(associator.Associate(b.Name(), c.Name()));
    associator.NotifyModified(b.Name());
    EXPECT_EQ(a.associatesModified + c.associatesModified, 2);
    EXPECT_EQ(b.associatesModified, 0);
    b.RemoveAndDelete();
    EXPECT_EQ(associator.Count(), 0u);
    EXPECT_FALSE(a.IsAssociated());
}

TEST_F(DrawingServicesTest, DelayedAssociationsAreMadeOnceTheirEntitiesExist) {
    ZvCore::BinXmlNode node;
    {
        ZvDrawing from;
        AddTo(from, 0), AddTo(from, 1), AddTo(from, 2);
        from.EntityAssociator()->Associate(1, 2);
        from.EntityAssociator()->Associate(3, 1);
        from.EntityAssociator()->Store(node);
    }
    Add(), Add();
    drawing.EntityAssociator()->LoadDelayed(node);
    EXPECT_EQ(drawing.EntityAssociator()->Count(), 0u);
    EXPECT_EQ(drawing.EntityAssociator()->CommitDelayed(nullptr), 1) << "3 does not exist";
    EXPECT_TRUE(drawing.EntityAssociator()->AreAssociated(2, 1));
    EXPECT_EQ(drawing.EntityAssociator()->DelayedCount(), 0u);
}

// --- small services ------------------------------------------------------------------------------------------------------

TEST(ZvAnimationConductor, AnimationsEndStopAndStartOthers) {
    ZvAnimationConductor conductor;
    std::vector<double> elapsed;
    struct Animation : IZvAnimation {
        explicit Animation(std::function<bool(double)> f) : advance(std::move(f)) {}
        bool Advance(double t) override { return advance(t); }
        std::function<bool(double)> advance;
    };
    int self = 0;
    conductor.Start(std::make_unique<Animation>([&](double t) {
                        elapsed.push_back(t);
                        return t < 2;
                    }),
                    10);
    self = conductor.Start(std::make_unique<Animation>([&](double) {
                               conductor.Stop(self);
                               conductor.Start(std::make_unique<Animation>([](double) { return true; }), 11);
                               return true;
                           }),
                           10);
    EXPECT_EQ(conductor.Tick(11), 2) << "the first and the one just started";
    EXPECT_FALSE(conductor.IsRunning(self));
    EXPECT_EQ(conductor.Tick(12), 1);
    EXPECT_EQ(elapsed, (std::vector<double>{1, 2}));
    conductor.StopAll();
    EXPECT_EQ(conductor.Tick(13), 0);
}

TEST(ZvAuxTimer, MissedPeriodsCountOnce) {
    int calls = 0;
    ZvAuxTimer timer(1000, 5, [&](ZvAuxTimer& t) {
        ++calls;
        EXPECT_FALSE(t.Poll(1e9)) << "not from within";
    });
    for (double now : {5.0, 5.9, 6.0, 6.5, 20.0, 20.5})
        timer.Poll(now);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(timer.Ticks(), 2);
}

TEST(ZvCBHandler, CallsEverybodyOfTheName) {
    ZvCBHandler handler;
    int first = 0;
    first = handler.Register("sum", [&](const ZvCBHandler::Arguments&) {
        handler.Unregister(first);
        return int64_t(1);
    });
    handler.Register("sum", [](const ZvCBHandler::Arguments& a) { return std::get<int64_t>(a.at(0)) + 1; });
    EXPECT_EQ(handler.Register("sum", nullptr), 0);
    ZvCBHandler::Value result;
    EXPECT_TRUE(handler.Call("sum", {int64_t(41)}, &result));
    EXPECT_EQ(std::get<int64_t>(result), 42);
    EXPECT_EQ(handler.Count(), 1);
    EXPECT_FALSE(handler.Call("none"));
}

TEST(ZvHomeGrid, SnapsToTurnedAndDividedLines) {
    ZvHomeGrid grid(0);
    EXPECT_EQ(grid.SpacingX(), 1);
    grid.SetOrigin({10, 0, 0});
    grid.SetSpacing(4, 2);
    grid.SetDivisions(2);
    EXPECT_EQ(grid.Snap({12.9, 1.4, 7}), (Vec3d{12, 1, 7}));
    grid.SetRotation(1.5707963267948966); // its x axis points up
    const Vec3d turned = grid.Snap({8.6, 4.9, 0});
    EXPECT_NEAR(turned.x, 9, 1e-9);
    EXPECT_NEAR(turned.y, 4, 1e-9);
    ZvCore::BinXmlNode node;
    grid.Store(node);
    ZvHomeGrid copy(1);
    copy.Load(node);
    EXPECT_EQ(copy.Snap({8.6, 4.9, 0}), turned);
}

TEST(ZvPageSetTable, SetsKeepTheirPagesInOrder) {
    const Guid a = Guid::New(), b = Guid::New(), paper = Guid::New();
    ZvPageSetTable sets;
    sets.Add(u"All")->pages = {{b, paper}, {a, paper}, {Guid(), paper}};
    EXPECT_EQ(sets.Add(u"ALL"), nullptr);
    EXPECT_EQ(sets.Add(u""), nullptr);
    EXPECT_TRUE(sets.Rename(u"all", u"Everything"));
    sets.Add(u"Other");
    EXPECT_FALSE(sets.Rename(u"Other", u"everything"));
    ZvCore::BinXmlNode node;
    sets.Store(node);
    ZvPageSetTable copy;
    copy.Load(node);
    ASSERT_EQ(copy.Count(), 2);
    EXPECT_EQ(copy.Get(0).pages, sets.Get(0).pages);
    EXPECT_EQ(copy.RemoveLayout(a), 1);
    EXPECT_EQ(copy.Get(0).pages.size(), 2u);
    EXPECT_TRUE(copy.Delete(u"other"));
}

TEST_F(DrawingServicesTest, DefaultPropertiesOfAKindComeBeforeThoseOfAll) {
    ZvDefaultProperties& defaults = *drawing.DefaultProperties();
    const uint32_t probe = ZvEntityCode::Full(1, ZvEntityCode::TestEntity);
    defaults.Set(0, "Color", XStringW(u"I:1"));
    defaults.Set(probe, "Color", XStringW(u"I:2"));
    defaults.Set(0, "Height", 2.5);
    ZvCore::BinXmlNode node;
    defaults.Store(node);
    ZvDefaultProperties copy;
    copy.Load(node);
    EXPECT_EQ(copy.Count(), 3);
    EXPECT_EQ(std::get<XStringW>(*copy.Find(probe, "Color")), u"I:2");
    EXPECT_EQ(std::get<XStringW>(*copy.Find(77, "Color")), u"I:1");
    EXPECT_EQ(std::get<double>(*copy.Find(77, "Height")), 2.5);
    ProbeEntity entity;
    ZvPropertyGatherer gatherer;
    entity.GetProperties(gatherer, true);
    copy.ApplyTo(entity);
    EXPECT_EQ(entity.GetColor(), ZvColor(2));
}

TEST_F(DrawingServicesTest, TemporaryEntitiesBelongToTheSink) {
    ProbeEntity& entity = Add(3);
    ZvEntity* ghost = entity.CloneForTempDraw();
    ASSERT_NE(ghost, nullptr);
    EXPECT_TRUE(ghost->IsTempDraw());
    EXPECT_EQ(ghost->ParentDrawing(), &drawing);
    EXPECT_FALSE(ghost->IsInDrawing());
    EXPECT_EQ(drawing.NameTable().Count(), 1);
    EXPECT_EQ(drawing.TemporaryData()->Bounds(), entity.Bounds3D());
    const auto taken = drawing.TemporaryData()->Take(ghost);
    EXPECT_EQ(taken->Owner(), nullptr);
    EXPECT_FALSE(taken->IsTempDraw());
    EXPECT_FALSE(drawing.TemporaryData()->Delete(ghost));
}

// --- changes -------------------------------------------------------------------------------------------------------------

TEST_F(DrawingServicesTest, DirectChangesLeaveWhatIsProtected) {
    ProbeEntity &plain = Add(0), &locked = Add(10, u"locked"), &erased = Add(20), &vetoed = Add(30);
    erased.SetErased(true);
    drawing.LayerTable()->GetByName(u"locked")->SetLocked(true);
    struct Veto : IZvDrawingUIReactor {
        bool AllowModification(ZvDrawing&, const ZvEntity& entity, XStringW&) override {
            return &entity != protege;
        }
        bool AllowErasure(ZvDrawing& d, const ZvEntity& entity, XStringW& r) override {
            return AllowModification(d, entity, r);
        }
        const ZvEntity* protege = nullptr;
    } veto;
    veto.protege = &vetoed;
    drawing.UIReactorHandler()->Register(&veto);
    ZvSelection selection(&drawing);
    for (const ProbeEntity* entity : {&locked, &plain, &erased, &vetoed})
        selection.Insert(entity);
    ZvModOps& ops = *drawing.ModOps();
    drawing.ResetModified();
    const ZvModOps::Result moved = ops.Translate(selection, {5, 5, 0});
    EXPECT_EQ(moved.changed, 1);
    EXPECT_EQ(moved.refused, 3);
    EXPECT_EQ(moved.reason, u"The layer \"locked\" is locked");
    EXPECT_TRUE(drawing.IsModified());
    EXPECT_EQ(plain.Bounds2D(), ZvBounds2D(5, 5, 6, 6));
    EXPECT_EQ(locked.Bounds2D(), ZvBounds2D(10, 0, 11, 1));
    EXPECT_EQ(ops.Scale(selection, {5, 5, 0}, 0).refused, 4);
    EXPECT_EQ(ops.Scale(selection, {5, 5, 0}, 2).changed, 1);
    EXPECT_EQ(plain.Bounds2D(), ZvBounds2D(5, 5, 7, 7));
    ops.Rotate(selection, {5, 5, 0}, 3.141592653589793);
    EXPECT_NEAR(plain.Bounds2D().minX, 3, 1e-9);
    ZvDrawing other;
    EXPECT_EQ(ops.MoveToLayer(selection, other.LayerTable()->Get(0)).changed, 0);
    EXPECT_EQ(ops.MoveToLayer(selection, drawing.LayerTable()->InsertNew(u"new")).changed, 1);
    EXPECT_EQ(plain.GetLayerName(), u"new");
    drawing.CurrentSelection().Insert(&plain);
    EXPECT_EQ(ops.Erase(selection).changed, 1);
    EXPECT_TRUE(plain.IsErased());
    EXPECT_TRUE(drawing.CurrentSelection().IsEmpty());
    EXPECT_EQ(drawing.GetEntity(plain.Name()), &plain);
    drawing.UIReactorHandler()->Unregister(&veto);
}

TEST_F(DrawingServicesTest, MergeTranslatesNamesLayersAndReferences) {
    ZvDrawing from;
    auto* dashed = from.LineTypeTable()->InsertNew(u"Special");
    AddTo(from, 0, u"Walls"), AddTo(from, 10, u"Doors"), AddTo(from, 20, u"Walls");
    from.LayerTable()->GetByName(u"Walls")->SetLineType(ZvLineType(dashed->GetTableIndex()));
    from.GetEntity(2)->SetErased(true);
    from.EntityAssociator()->Associate(1, 3);
    Add(100, u"walls"), Add(110);
    drawing.LineTypeTable()->InsertNew(u"in the way");
    const ZvMergeHelper::Result result = drawing.MergeHelper()->Merge(from);
    EXPECT_TRUE(Zv::Ok(result.status));
    EXPECT_EQ(result.entities, 2);
    EXPECT_EQ(result.associations, 1);
    ASSERT_EQ(result.names.count(3), 1u);
    const ZvEntity* merged = drawing.GetEntity(result.names.at(3));
    ASSERT_NE(merged, nullptr);
    EXPECT_EQ(merged->Bounds2D().minX, 20);
    EXPECT_EQ(merged->GetLayerName(), u"walls") << "the layer that was there";
    EXPECT_TRUE(merged->IsAssociated());
    EXPECT_NE(drawing.LineTypeTable()->GetByName(u"Special"), nullptr);
    EXPECT_EQ(drawing.NameTable().Count(), 4);
    EXPECT_EQ(from.NameTable().Count(), 3);

    ZvDrawing part;
    const ZvSelection one = ZvSelection::Single(from.GetEntity(1));
    EXPECT_EQ(part.MergeHelper()->Merge(from, {}, &one).entities, 1);
    EXPECT_NE(part.LayerTable()->GetByName(u"Walls"), nullptr);
    EXPECT_EQ(part.LayerTable()->GetByName(u"Doors"), nullptr);
    const ZvLineType taken = part.LayerTable()->GetByName(u"Walls")->GetLineType();
    EXPECT_EQ(part.LineTypeTable()->Get(taken.GetIndex())->GetName(), u"Special");
    struct Impatient : ZvCore::IProgress {
        bool Step(std::string_view, uint64_t, uint64_t) override { return false; }
    } impatient;
    EXPECT_EQ(part.MergeHelper()->Merge(from, {}, nullptr, &impatient).status, Zv::Status::Cancelled);
    EXPECT_EQ(part.MergeHelper()->Merge(part).status, Zv::Status::Failure);
}

TEST_F(DrawingServicesTest, UtilityCountsByKindAndLayer) {
    Add(0, u"a"), Add(1, u"a"), Add(2, u"b").SetErased(true);
    const ZvDrawingUtility& utility = *drawing.Utility();
    EXPECT_EQ(utility.CountAll().count, 3);
    EXPECT_EQ(utility.CountAll().erased, 1);
    EXPECT_EQ(utility.CountByLayer().at(drawing.LayerTable()->GetByName(u"a")->GetTableIndex()).count, 2);
    EXPECT_EQ(utility.CountByKind().size(), 1u);
    std::vector<ZvEntity*> probes;
    utility.EntitiesOfKind(ZvEntityCode::Full(1, ZvEntityCode::TestEntity), probes);
    EXPECT_EQ(probes.size(), 2u);
}

// --- swapping --------------------------------------------------------------------------------------------------------------

TEST_F(DrawingServicesTest, OldestIsSwappedOutFirstAndComesBackWhole) {
    struct Pixels : IZvSwappable {
        explicit Pixels(double when) : used(when), bytes(1 << 20) {
            std::iota(bytes.begin(), bytes.end(), uint8_t(when));
        }
        size_t SwappableBytes() const override { return bytes.size(); }
        double LastUsed() const override { return used; }
        bool SwapOut(ZvSwapFile& file) override {
            std::string why;
            if (!file.Store(bytes, piece, why))
                return false;
            bytes.clear();
            return true;
        }
        double used;
        std::vector<uint8_t> bytes;
        ZvSwapFile::Piece piece;
    } newest(30), oldest(10), middle(20);
    Add();
    ZvSwapManager& swap = *drawing.SwapManager();
    for (Pixels* pixels : {&newest, &oldest, &middle})
        swap.Register(pixels);
    drawing.Settings().Set("SwapThreshold", int64_t(0));
    EXPECT_EQ(swap.Balance().swappedOut, 0) << "no limit";
    const auto all = int64_t(swap.MeasureMemory().Total());
    drawing.Settings().Set("SwapThreshold", all - (3 << 19));
    const ZvSwapManager::Result result = swap.Balance();
    EXPECT_EQ(result.swappedOut, 2);
    EXPECT_TRUE(result.withinBudget);
    EXPECT_TRUE(oldest.bytes.empty() && middle.bytes.empty());
    EXPECT_FALSE(newest.bytes.empty());
    const std::vector<uint8_t> expected = Pixels(20).bytes;
    std::vector<uint8_t> back;
    std::string why;
    ASSERT_TRUE(swap.File().Load(middle.piece, back, why)) << why;
    EXPECT_EQ(back, expected);
    drawing.Settings().Set("SwapThreshold", int64_t(1));
    EXPECT_FALSE(swap.Balance().withinBudget) << "nothing more can go";
    const std::filesystem::path path = swap.File().Path();
    EXPECT_TRUE(std::filesystem::exists(path));
    for (Pixels* pixels : {&newest, &oldest, &middle}) {
        swap.File().Release(pixels->piece);
        swap.Unregister(pixels);
    }
    EXPECT_EQ(swap.File().BytesHeld(), 0u);
    EXPECT_FALSE(swap.File().Load({1u << 30, 5}, back, why));
    drawing.Settings().Remove("SwapThreshold");
}
