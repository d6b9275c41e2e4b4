#include "Tests/Support/SimulatedFiles.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvRecovery.h"
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <set>

namespace {

const char* const kPlan = "/d/plan.zvd";

/// A drawing on a simulated disk, saved once and changed since.
class World {
public:
    World() {
        files.MakeFolder("/d");
        files.MakeFolder("/b");
        drawing.DrawingIO()->SetFiles(files);
        drawing.DrawingIO()->SetBackupSettings(&settings);
        drawing.SetHost(&host);
        Change();
    }
    void Change() {
        for (int i = 0; i < 100; ++i, ++m_points)
            drawing.Insert(
                std::make_unique<ZvPointEnt>(Vec3d{m_points * 0.37, m_points * m_points * 0.11, 0}));
        drawing.SetModified();
    }
    Zv::Status Save(uint32_t flags = 0) {
        errors.Clear();
        return drawing.DrawingIO()->SaveFile(kPlan, nullptr, flags, &errors);
    }
    void SaveOld() {
        ASSERT_TRUE(Zv::Ok(Save())) << errors.ToString();
        Change();
        files.Settle();
    }
    SimulatedFiles files;
    ZvBackupSettings settings;
    ZvSilentHost host;
    IOErrorSet errors;
    ZvDrawing drawing;

private:
    int m_points = 0;
};

struct Script {
    const char* name;
    std::function<void(World&)> before;
    std::function<void(World&)> save;
};

void SaveWorld(World& world) {
    EXPECT_TRUE(Zv::Ok(world.Save())) << world.errors.ToString();
}

void OldOnly(World& world) {
    world.settings.instantBackup = false;
    world.SaveOld();
}

void OldWithBackup(World& world) {
    world.SaveOld();
    world.SaveOld();
}

void ElsewhereBackup(World& world) {
    world.settings.besideDrawing = false;
    world.settings.directory = "/b";
    world.SaveOld();
}

void NoLinks(World& world) {
    world.files.SetLinks(false);
    world.SaveOld();
}

void Backup(World& world) {
    EXPECT_TRUE(Zv::Ok(world.drawing.DrawingIO()->PeriodicBackup(true)));
}

void FullDisk(World& world, uint64_t room) {
    world.files.SetRoom(room);
    EXPECT_FALSE(Zv::Ok(world.Save()));
    EXPECT_TRUE(world.errors.HasErrors());
}

const Script kScripts[] = {
    {"first save", [](World&) {}, SaveWorld},
    {"over an old file, no backup", OldOnly, SaveWorld},
    {"first backup", [](World& w) { w.SaveOld(); }, SaveWorld},
    {"backup over an older one", OldWithBackup, SaveWorld},
    {"backup directory", ElsewhereBackup, SaveWorld},
    {"no links", NoLinks, SaveWorld},
    {"no links, backup directory",
     [](World& w) {
         w.files.SetLinks(false);
         ElsewhereBackup(w);
     },
     SaveWorld},
    {"solid", [](World& w) { w.SaveOld(); },
     [](World& w) { EXPECT_TRUE(Zv::Ok(w.Save(ZvIOFlag::Solid))) << w.errors.ToString(); }},
    {"unverified", [](World& w) { w.SaveOld(); },
     [](World& w) { EXPECT_TRUE(Zv::Ok(w.Save(ZvIOFlag::NoVerify))) << w.errors.ToString(); }},
    {"first periodic backup", [](World& w) { w.SaveOld(); }, Backup},
    {"periodic rotation",
     [](World& w) {
         w.settings.periodicKept = 2;
         w.SaveOld();
         Backup(w), Backup(w);
         w.files.Settle();
     },
     Backup},
    {"disk full at once", [](World& w) { w.SaveOld(); }, [](World& w) { FullDisk(w, 0); }},
    {"disk full soon", [](World& w) { w.SaveOld(); }, [](World& w) { FullDisk(w, 500); }},
    {"disk full late", [](World& w) { w.SaveOld(); },
     [](World& w) { FullDisk(w, w.files.Get(kPlan).size() - 100); }},
    {"first save on a full disk", [](World&) {}, [](World& w) { FullDisk(w, 900); }},
    {"two saves", [](World& w) { w.SaveOld(); },
     [](World& w) {
         SaveWorld(w);
         w.Change();
         SaveWorld(w);
     }},
};

/// The folder as a program finds it: what the drawing is, and what it becomes when the offer is taken.
void ExpectOldOrNew(SimulatedFiles& after, const World& world, const std::set<std::string>& allowed,
                    bool hadOld) {
    ZvBackups backups(after, world.settings, IZvClock::System(), nullptr);
    const ZvRecovery recovery(after, backups);
    const ZvRecovery::Finding finding = recovery.Look(kPlan);
    EXPECT_TRUE(!finding.IsWhole() || allowed.contains(after.Get(kPlan)))
        << "a whole file of unknown content";
    EXPECT_TRUE(!hadOld || after.Look(kPlan).exists) << "the name is without a file";
    if (const ZvRecovery::Candidate* best = finding.Best()) {
        EXPECT_TRUE(allowed.contains(after.Get(best->file))) << best->Describe();
        EXPECT_EQ(recovery.Restore(finding, *best), "");
        EXPECT_TRUE(recovery.Look(kPlan).IsWhole());
        EXPECT_TRUE(allowed.contains(after.Get(kPlan)));
    } else if (hadOld) {
        EXPECT_TRUE(finding.IsWhole()) << finding.why;
    }
}

} // namespace

TEST(PowerCut, EveryStateOfEverySaveHoldsTheOldOrTheNewDrawing) {
    size_t total = 0;
    for (const Script& script : kScripts) {
        SCOPED_TRACE(script.name);
        World world;
        script.before(world);
        world.files.Settle();
        std::set<std::string> allowed;
        const std::string old = world.files.Get(kPlan);
        const auto note = [&] {
            for (const auto& [path, bytes] : world.files.All())
                if (path == kPlan || ZvBackups::PeriodicNumber(path) >= 0)
                    allowed.insert(bytes);
        };
        note();
        script.save(world);
        note();
        for (const auto& [path, bytes] : world.files.All()) // of two saves the one between
            if (path == std::string(kPlan) + ".bak")
                allowed.insert(bytes);
        const size_t states = world.files.ForEachCut(
            [&](SimulatedFiles& after) { ExpectOldOrNew(after, world, allowed, !old.empty()); });
        std::printf("  %-28s %6zu states\n", script.name, states);
        total += states;
        EXPECT_GT(states, 1u);
    }
    std::printf("  %-28s %6zu states\n", "all", total);
}

/// The simulation itself: without syncs it must come across folders that hold no whole drawing.
TEST(PowerCut, ADiskThatDoesNotSyncLosesDrawings) {
    World world;
    world.settings.instantBackup = false;
    world.SaveOld();
    world.files.SetLyingSync();
    SaveWorld(world);
    int lost = 0;
    world.files.ForEachCut([&](SimulatedFiles& after) {
        const ZvBackups backups(after, world.settings, IZvClock::System(), nullptr);
        const ZvRecovery::Finding finding = ZvRecovery(after, backups).Look(kPlan);
        lost += !finding.IsWhole() && !finding.Best();
    });
    EXPECT_GT(lost, 0);
}

TEST(PowerCut, AFailureOfAnyOneCallLeavesTheOldFileOrTheNewOne) {
    for (const bool periodic : {false, true}) {
        uint64_t calls = 0;
        for (uint64_t n = 1; n == 1 || n <= calls; ++n) {
            World world;
            world.SaveOld();
            const std::string old = world.files.Get(kPlan);
            world.files.FailAt(n);
            const Zv::Status status =
                periodic ? world.drawing.DrawingIO()->PeriodicBackup(true) : world.Save();
            if (n == 1) {
                World whole;
                whole.SaveOld();
                whole.files.FailAt(0);
                (void)(periodic ? whole.drawing.DrawingIO()->PeriodicBackup(true) : whole.Save());
                calls = whole.files.Calls();
                ASSERT_GT(calls, 20u);
            }
            const std::string now = world.files.Get(kPlan);
            SCOPED_TRACE(n);
            const bool replaced = !periodic && Zv::Ok(status);
            EXPECT_EQ(now == old, !replaced);
            EXPECT_TRUE(periodic || replaced || world.errors.HasErrors());
            EXPECT_TRUE(ZvSaveVerifier(world.files).Check(kPlan).empty());
            EXPECT_EQ(world.drawing.GetAutoCleanupSuspendCount(), 0);
        }
    }
}

TEST(PowerCut, AFailureOfAnyOneCallOfLoadPurgeOrRecoveryLosesNothing) {
    World world;
    world.SaveOld();
    world.SaveOld();
    Backup(world), Backup(world);
    const SimulatedFiles::Contents before = world.files.All();
    const std::string plan = before.at(kPlan);
    for (uint64_t n = 1; n < 40; ++n) {
        SCOPED_TRACE(n);
        SimulatedFiles files(before);
        files.FailAt(n);
        ZvDrawing drawing;
        drawing.DrawingIO()->SetFiles(files);
        std::string why;
        const Zv::Status loaded = drawing.DrawingIO()->LoadSimple(kPlan, &why);
        EXPECT_EQ(Zv::Ok(loaded), drawing.NameTable().Count() > 0);
        EXPECT_TRUE(Zv::Ok(loaded) || !why.empty());

        files.FailAt(n);
        const ZvBackups backups(files, world.settings, IZvClock::System(), nullptr);
        (void)backups.PeriodicBackupPurge("/d"); // all of them expired years ago
        EXPECT_FALSE(files.Get("/d/Autobackup_plan0001.zvd").empty()) << "the newest one";
        EXPECT_TRUE(files.Get(kPlan) == plan);

        SimulatedFiles broken(before);
        broken.Put(kPlan, "damaged");
        broken.FailAt(n);
        const ZvBackups others(broken, world.settings, IZvClock::System(), nullptr);
        const ZvRecovery recovery(broken, others);
        const ZvRecovery::Finding finding = recovery.Look(kPlan);
        const bool done = finding.Best() && recovery.Restore(finding, *finding.Best()).empty();
        broken.FailAt(0); // looking must not meet the failure that the restoring did not come to
        EXPECT_TRUE(!done || recovery.Look(kPlan).IsWhole());
        const ZvRecovery::Finding again = recovery.Look(kPlan);
        EXPECT_TRUE(again.IsWhole() || again.Best());
    }
}
