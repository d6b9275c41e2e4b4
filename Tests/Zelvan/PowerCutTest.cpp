#include "Tests/Support/DrawingOnDisk.h"
#include "Zelvan/ZvRecovery.h"
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <set>

namespace {

const char* const kPlan = DrawingOnDisk::kPlan;

struct Script {
    const char* name;
    std::function<void(DrawingOnDisk&)> before;
    std::function<void(DrawingOnDisk&)> save;
};

void SaveWorld(DrawingOnDisk& world) {
    EXPECT_TRUE(Zv::Ok(world.Save())) << world.errors.ToString();
}

void OldOnly(DrawingOnDisk& world) {
    world.settings.instantBackup = false;
    world.SaveOld();
}

void OldWithBackup(DrawingOnDisk& world) {
    world.SaveOld();
    world.SaveOld();
}

void ElsewhereBackup(DrawingOnDisk& world) {
    world.settings.besideDrawing = false;
    world.settings.directory = "/b";
    world.SaveOld();
}

void NoLinks(DrawingOnDisk& world) {
    world.files.SetLinks(false);
    world.SaveOld();
}

void Backup(DrawingOnDisk& world) {
    world.Backup();
}

void FullDisk(DrawingOnDisk& world, uint64_t room) {
    world.files.SetRoom(room);
    EXPECT_FALSE(Zv::Ok(world.Save()));
    EXPECT_TRUE(world.errors.HasErrors());
}

void Recover(DrawingOnDisk& world) {
    const ZvBackups backups(world.files, world.settings, IZvClock::System(), nullptr);
    const ZvRecovery recovery(world.files, backups);
    const ZvRecovery::Finding finding = recovery.Look(kPlan);
    ASSERT_NE(finding.Best(), nullptr);
    EXPECT_EQ(recovery.Restore(finding, *finding.Best()), "");
}

const Script kScripts[] = {
    {"first save", [](DrawingOnDisk&) {}, SaveWorld},
    {"over an old file, no backup", OldOnly, SaveWorld},
    {"first backup", [](DrawingOnDisk& w) { w.SaveOld(); }, SaveWorld},
    {"backup over an older one", OldWithBackup, SaveWorld},
    {"backup directory", ElsewhereBackup, SaveWorld},
    {"no links", NoLinks, SaveWorld},
    {"no links, backup directory",
     [](DrawingOnDisk& w) {
         w.files.SetLinks(false);
         ElsewhereBackup(w);
     },
     SaveWorld},
    {"solid", [](DrawingOnDisk& w) { w.SaveOld(); },
     [](DrawingOnDisk& w) { EXPECT_TRUE(Zv::Ok(w.Save(ZvIOFlag::Solid))) << w.errors.ToString(); }},
    {"unverified", [](DrawingOnDisk& w) { w.SaveOld(); },
     [](DrawingOnDisk& w) { EXPECT_TRUE(Zv::Ok(w.Save(ZvIOFlag::NoVerify))) << w.errors.ToString(); }},
    {"first periodic backup", [](DrawingOnDisk& w) { w.SaveOld(); }, Backup},
    {"periodic rotation",
     [](DrawingOnDisk& w) {
         w.settings.periodicKept = 2;
         w.SaveOld();
         w.Backup(), w.Backup();
         w.files.Settle();
     },
     Backup},
    {"periodic backup and purge",
     [](DrawingOnDisk& w) {
         w.settings.expiryHours = 1;
         w.SaveOld();
         w.Backup();
         w.Change();
     },
     Backup},
    {"first save on a full disk", [](DrawingOnDisk&) {}, [](DrawingOnDisk& w) { FullDisk(w, 900); }},
    {"periodic backup on a full disk", [](DrawingOnDisk& w) { w.SaveOld(); },
     [](DrawingOnDisk& w) {
         w.files.SetRoom(700);
         EXPECT_FALSE(Zv::Ok(w.drawing.DrawingIO()->PeriodicBackup(true)));
     }},
    {"recovery of a damaged file",
     [](DrawingOnDisk& w) {
         OldWithBackup(w);
         w.files.Put(kPlan, "damaged");
     },
     Recover},
    {"recovery of a missing file",
     [](DrawingOnDisk& w) {
         OldWithBackup(w);
         EXPECT_EQ(w.files.Delete(kPlan), "");
     },
     Recover},
    {"two saves", [](DrawingOnDisk& w) { w.SaveOld(); },
     [](DrawingOnDisk& w) {
         SaveWorld(w);
         w.Change();
         SaveWorld(w);
     }},
};

/// The folder as a program finds it: what the drawing is, and what it becomes when the offer is taken.
void ExpectOldOrNew(SimulatedFiles& after, const DrawingOnDisk& world, const std::set<std::string>& allowed,
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

bool Thoroughly() {
    return std::getenv("ZELVAN_SOAK_CUTS") != nullptr;
}

/// Runs the script and looks at every state that a power cut in it could leave; how many those are.
size_t TryCuts(const Script& script) {
    SCOPED_TRACE(script.name);
    DrawingOnDisk world;
    script.before(world);
    world.files.Settle();
    std::set<std::string> allowed;
    const auto note = [&] {
        for (const auto& [path, bytes] : world.files.All())
            if (path.starts_with(kPlan) || ZvBackups::PeriodicNumber(path) >= 0)
                allowed.insert(bytes); // of two saves the one between is the backup
    };
    note();
    const bool hadOld = world.files.Look(kPlan).exists;
    script.save(world);
    note();
    const auto cuts = Thoroughly() ? SimulatedFiles::Cuts::All() : SimulatedFiles::Cuts();
    const size_t states = world.files.ForEachCut(
        cuts, [&](SimulatedFiles& after) { ExpectOldOrNew(after, world, allowed, hadOld); });
    if (*script.name)
        std::printf("  %-32s %7zu states\n", script.name, states);
    EXPECT_GT(states, 1u);
    return states;
}

} // namespace

TEST(PowerCut, EveryStateOfEverySaveHoldsTheOldOrTheNewDrawing) {
    size_t total = 0;
    for (const Script& script : kScripts)
        total += TryCuts(script);
    const size_t full = DrawingOnDisk().SizeWhenSaved();
    const size_t step = Thoroughly() ? 64 : full / 6;
    size_t states = 0;
    for (size_t room = 0; room < full - 100; room += step)
        states += TryCuts(
            {"", [](DrawingOnDisk& w) { w.SaveOld(); }, [&](DrawingOnDisk& w) { FullDisk(w, room); }});
    std::printf("  %-32s %7zu states\n", "disk full, at every moment", states);
    std::printf("  %-32s %7zu states\n", "all", total + states);
}

/// The simulation itself: without syncs it must come across folders that hold no whole drawing.
TEST(PowerCut, ADiskThatDoesNotSyncLosesDrawings) {
    DrawingOnDisk world;
    world.settings.instantBackup = false;
    world.SaveOld();
    world.files.SetLyingSync();
    SaveWorld(world);
    int lost = 0;
    world.files.ForEachCut({}, [&](SimulatedFiles& after) {
        const ZvBackups backups(after, world.settings, IZvClock::System(), nullptr);
        const ZvRecovery::Finding finding = ZvRecovery(after, backups).Look(kPlan);
        lost += !finding.IsWhole() && !finding.Best();
    });
    EXPECT_GT(lost, 0);
}
