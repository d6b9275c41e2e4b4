#include "Tests/Support/DrawingOnDisk.h"
#include "Zelvan/ZvRecovery.h"
#include <cstring>
#include <functional>
#include <gtest/gtest.h>

namespace {

const char* const kPlan = DrawingOnDisk::kPlan;

/// Calls `act` with a disk whose first, second, third ... call fails, until it makes fewer; how many it makes.
uint64_t FailingAtEveryCall(const std::function<void(DrawingOnDisk&)>& prepare,
                            const std::function<void(DrawingOnDisk&)>& act) {
    for (uint64_t n = 1;; ++n) {
        SCOPED_TRACE("call " + std::to_string(n));
        DrawingOnDisk world;
        prepare(world);
        world.files.FailAt(n);
        act(world);
        EXPECT_FALSE(world.host.IsWaiting());
        EXPECT_EQ(world.drawing.GetAutoCleanupSuspendCount(), 0);
        if (world.files.Calls() < n || ::testing::Test::HasFatalFailure())
            return n - 1;
    }
}

class YesHost final : public ZvSilentHost {
public:
    ZvAnswer Ask(const ZvQuestion& question) override {
        if (question.buttons != ZvQuestion::Buttons::YesNo) {
            told += question.text.ToUtf8();
            return ZvAnswer::Ok;
        }
        wasAsked = true;
        return ZvAnswer::Yes;
    }
    bool wasAsked = false;
    std::string told;
};

/// Looks at the file on a disk without faults.
std::string Check(const DrawingOnDisk& world, const char* file) {
    SimulatedFiles sound(world.files.All());
    return ZvSaveVerifier(sound).Check(file);
}

/// Everything there bears a name that recovery knows what to do with.
void ExpectNoLitter(DrawingOnDisk& world) {
    for (const auto& [path, bytes] : world.files.All()) {
        const std::string ending = path.starts_with(kPlan) ? path.substr(std::strlen(kPlan)) : "?";
        const bool known = ending.empty() || ending == ".bak" || ending == ".lock" ||
                           ZvBackups::PeriodicNumber(path) >= 0 || path.ends_with(".zvd.lock") ||
                           ZvCore::IFileSystem::IsTemporary(path);
        EXPECT_TRUE(known) << path;
    }
}

} // namespace

TEST(SaveFaults, AFailureOfAnyOneCallOfASaveIsToldOnceAndLeavesTheOldFileOrTheNewOne) {
    for (const bool isFirst : {false, true}) {
        std::string old;
        const uint64_t calls = FailingAtEveryCall(
            [&](DrawingOnDisk& world) {
                if (!isFirst)
                    world.SaveOld();
                old = world.files.Get(kPlan);
            },
            [&](DrawingOnDisk& world) {
                const bool saved = Zv::Ok(world.Save());
                const std::string now = world.files.Get(kPlan);
                EXPECT_EQ(world.drawing.IsModified(), !saved);
                EXPECT_FALSE(world.drawing.DrawingIO()->IsFileSaveBusy());
                ExpectNoLitter(world);
                if (saved) {
                    EXPECT_EQ(Check(world, kPlan), "");
                    return;
                }
                EXPECT_TRUE(now == old);
                ASSERT_EQ(world.errors.Items().size(), 1u) << world.errors.ToString();
                EXPECT_NE(world.errors.Items()[0].text.find(kPlan), std::string::npos);
                EXPECT_NE(world.errors.Items()[0].text.find("made to fail"), std::string::npos)
                    << world.errors.Items()[0].text;
                EXPECT_TRUE(Zv::Ok(world.Save())) << "the next save is not disturbed";
            });
        EXPECT_GT(calls, 15u);
    }
}

TEST(SaveFaults, AFailureOfAnyOneCallOfAPeriodicBackupIsToldAndLosesNoBackup) {
    std::string former, old;
    const uint64_t calls = FailingAtEveryCall(
        [&](DrawingOnDisk& world) {
            world.settings.periodicKept = 2;
            world.SaveOld();
            world.Backup(), world.Backup();
            world.Change();
            old = world.files.Get(kPlan);
            former = world.files.Get("/d/Autobackup_plan0001.zvd");
        },
        [&](DrawingOnDisk& world) {
            const bool saved = Zv::Ok(world.drawing.DrawingIO()->PeriodicBackup(true));
            EXPECT_TRUE(world.files.Get(kPlan) == old);
            EXPECT_TRUE(world.files.Get("/d/Autobackup_plan0001.zvd") == former);
            EXPECT_EQ(Check(world, "/d/Autobackup_plan0000.zvd"), "");
            EXPECT_EQ(world.drawing.DrawingIO()->IsUnsaved(), !saved);
            const std::string said = world.host.Printed().ToUtf8();
            EXPECT_EQ(said.find("Failed: ") != std::string::npos, !saved) << said;
            ExpectNoLitter(world);
        });
    EXPECT_GT(calls, 15u);
}

TEST(SaveFaults, AFailureOfAnyOneCallOfALoadIsToldAndLeavesTheDrawingEmpty) {
    SimulatedFiles::Contents contents;
    const uint64_t calls = FailingAtEveryCall(
        [&](DrawingOnDisk& world) {
            world.SaveOld();
            contents = world.files.All();
        },
        [&](DrawingOnDisk& world) {
            ZvDrawing drawing;
            drawing.DrawingIO()->SetFiles(world.files);
            std::string why;
            const bool loaded = Zv::Ok(drawing.DrawingIO()->LoadSimple(kPlan, &why));
            EXPECT_EQ(drawing.NameTable().Count(), loaded ? 100 : 0);
            EXPECT_EQ(why.empty(), loaded) << why;
            EXPECT_EQ(drawing.DrawingIO()->DrawingFileName().empty(), !loaded);
            EXPECT_FALSE(drawing.IsModified());
            for (const auto& [path, bytes] : contents) // its lock among them
                EXPECT_TRUE(world.files.Get(path) == bytes) << path;
            ExpectNoLitter(world);
        });
    EXPECT_GT(calls, 1u);
}

TEST(SaveFaults, AFailureOfAnyOneCallOfAPurgeSparesTheNewestBackup) {
    const uint64_t calls = FailingAtEveryCall(
        [](DrawingOnDisk& world) {
            world.settings.expiryHours = 1;
            world.SaveOld();
            world.Backup(), world.Backup();
        },
        [](DrawingOnDisk& world) { // all of them expired years ago
            const size_t before = world.files.All().size();
            const int deleted = world.drawing.DrawingIO()->PeriodicBackupPurge("/d");
            EXPECT_EQ(world.files.All().size(), before - size_t(deleted));
            EXPECT_FALSE(world.files.Get("/d/Autobackup_plan0001.zvd").empty());
            EXPECT_FALSE(world.files.Get(kPlan).empty());
        });
    EXPECT_GT(calls, 3u);
}

TEST(SaveFaults, AFailureOfAnyOneCallOfARecoveryIsToldAndCanBeRepeated) {
    std::string good;
    const uint64_t calls = FailingAtEveryCall(
        [&](DrawingOnDisk& world) {
            world.SaveOld();
            world.SaveOld();
            good = world.files.Get(std::string(kPlan) + ".bak");
            world.files.Put(kPlan, "damaged");
        },
        [&](DrawingOnDisk& world) {
            const ZvBackups backups(world.files, world.settings, IZvClock::System(), nullptr);
            const ZvRecovery recovery(world.files, backups);
            YesHost host;
            const bool done = recovery.Offer(kPlan, host);
            EXPECT_EQ(host.told.empty(), done || !host.wasAsked);
            const std::string now = world.files.Get(kPlan);
            EXPECT_TRUE(now == good || (!done && now == "damaged"));
            SimulatedFiles sound(world.files.All());
            const ZvBackups others(sound, world.settings, IZvClock::System(), nullptr);
            const ZvRecovery::Finding again = ZvRecovery(sound, others).Look(kPlan);
            EXPECT_TRUE(again.IsWhole() || again.Best());
        });
    EXPECT_GT(calls, 8u);
}
