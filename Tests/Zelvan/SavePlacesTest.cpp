#include "Tests/Support/AnsweringHost.h"
#include "Tests/Support/DrawingOnDisk.h"
#include "Tests/Support/ScratchFolder.h"
#include "Zelvan/ZvRecovery.h"
#include "ZvCore/Platform/Platform.h"
#include <functional>
#include <gtest/gtest.h>
#include <set>
#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace {

namespace fs = std::filesystem;

const char* const kPlan = DrawingOnDisk::kPlan;

std::string NameOf(size_t length) {
    return std::string(length - 4, 'n') + ".zvd";
}

/// Files in "/d" and "/b" by name, without locks.
std::vector<std::string> Names(const DrawingOnDisk& world) {
    std::vector<std::string> names;
    for (const auto& [path, bytes] : world.files.All())
        if (!path.ends_with(".lock"))
            names.push_back(path);
    return names;
}

} // namespace

TEST(SavePlaces, WhatStandsInTheWayIsToldInOneMessageAndNothingIsTouched) {
    const struct {
        const char* name;
        std::string file;
        std::function<void(DrawingOnDisk&)> prepare;
        const char* told;
    } cases[] = {
        {"a folder", "/b", [](DrawingOnDisk&) {}, "is a folder. Give"},
        {"no folder", "/none/a.zvd", [](DrawingOnDisk&) {}, "Choose another folder"},
        {"a closed folder", "/b/a.zvd", [](DrawingOnDisk& w) { w.files.SetReadOnlyFolder("/b"); },
         "Choose another folder"},
        {"read-only", kPlan, [](DrawingOnDisk& w) { w.files.SetReadOnly(kPlan); }, "marked read-only"},
        {"a name of 300", "/d/" + NameOf(300), [](DrawingOnDisk&) {}, "Choose a shorter name"},
        {"changed", kPlan, [](DrawingOnDisk& w) { w.files.Put(kPlan, "theirs"); },
         "changed by another program"},
        {"changed to an older one", kPlan,
         [](DrawingOnDisk& w) { w.files.SetModified(kPlan, DateTime::FromUtc(1999, 1, 1)); },
         "changed by another program"},
        {"edited elsewhere", "/b/a.zvd",
         [](DrawingOnDisk& w) {
             w.files.Put("/b/a.zvd", "theirs");
             w.files.Put("/b/a.zvd.lock", "Zelvan lock 1\n4711\n1\nelsewhere\n");
         },
         "is being edited by process 4711 on elsewhere"},
        {"a full disk", kPlan, [](DrawingOnDisk& w) { w.files.SetRoom(300); }, "the disk is full"},
        {"a full disk, first save", "/b/a.zvd", [](DrawingOnDisk& w) { w.files.SetRoom(300); },
         "the disk is full"},
        {"held open", kPlan, [](DrawingOnDisk& w) { w.files.SetHeld(kPlan); }, "another program uses it"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        DrawingOnDisk world;
        world.SaveOld();
        c.prepare(world);
        const SimulatedFiles::Contents before = world.files.All();
        EXPECT_FALSE(Zv::Ok(world.SaveAs(c.file)));
        ASSERT_EQ(world.errors.Items().size(), 1u) << world.errors.ToString();
        const std::string text = world.errors.Items()[0].text;
        EXPECT_NE(text.find(c.told), std::string::npos) << text;
        EXPECT_NE(text.find(c.file), std::string::npos) << text;
        EXPECT_TRUE(world.drawing.IsModified());
        for (const auto& [path, bytes] : before)
            EXPECT_TRUE(world.files.Get(path) == bytes) << path;
        EXPECT_TRUE(world.files.All().size() == before.size() || std::string(c.name) == "held open");
    }
}

TEST(SavePlaces, AFileThatWasChangedIsOverwrittenWhenTheUserSaysSo) {
    DrawingOnDisk world;
    AnsweringHost host(ZvAnswer::Yes);
    world.drawing.SetHost(&host);
    world.SaveOld();
    world.files.Put(kPlan, "theirs");
    EXPECT_TRUE(Zv::Ok(world.Save())) << world.errors.ToString();
    EXPECT_EQ(host.texts.size(), 1u);
    EXPECT_EQ(world.files.Get(std::string(kPlan) + ".bak"), "theirs");
    world.drawing.SetHost(nullptr);
}

TEST(SavePlaces, ABackupThatCannotBeMadeIsWarnedAboutAndTheDrawingSaved) {
    const std::function<void(DrawingOnDisk&)> cases[] = {
        [](DrawingOnDisk& w) { w.files.MakeFolder(std::string(kPlan) + ".bak"); },
        [](DrawingOnDisk& w) {
            w.settings.besideDrawing = false;
            w.settings.directory = "/none";
        },
    };
    for (const auto& prepare : cases) {
        DrawingOnDisk world;
        world.SaveOld();
        prepare(world);
        const std::string old = world.files.Get(kPlan);
        EXPECT_TRUE(Zv::Ok(world.Save()));
        EXPECT_FALSE(world.errors.HasErrors()) << world.errors.ToString();
        EXPECT_TRUE(world.errors.Items().size() == 1 ||
                    world.host.Printed().ToUtf8().find("'/none' cannot be written to") != std::string::npos);
        EXPECT_FALSE(world.files.Get(kPlan) == old);
        EXPECT_EQ(Names(world), std::vector<std::string>{kPlan});
    }
}

// Up to the 255 bytes that file systems take, whatever a save puts behind the name.
TEST(SavePlaces, NamesOfAnyLengthThatFitAreSavedBackedUpAndRecovered) {
    for (const size_t length : {200, 236, 240, 243, 247, 250, 252, 255}) {
        SCOPED_TRACE(length);
        DrawingOnDisk world;
        const fs::path plan = "/d/" + NameOf(length);
        ASSERT_TRUE(Zv::Ok(world.SaveAs(plan))) << world.errors.ToString();
        const std::string old = world.files.Get(plan);
        world.Change();
        ASSERT_TRUE(Zv::Ok(world.SaveAs(plan))) << world.errors.ToString();
        EXPECT_TRUE(world.errors.IsEmpty()) << world.errors.ToString();
        EXPECT_TRUE(world.files.Get(world.drawing.DrawingIO()->GetInstantBackupFilename(plan)) == old);
        EXPECT_EQ(Names(world).size(), 2u);
        world.Backup(), world.Backup();
        EXPECT_EQ(Names(world).size(), 4u);

        const ZvBackups backups(world.files, world.settings, IZvClock::System(), nullptr);
        const ZvRecovery recovery(world.files, backups);
        EXPECT_EQ(recovery.Look(plan).candidates.size(), 3u);
        ASSERT_TRUE(Zv::Ok(world.SaveAs(plan)));
        const std::string whole = world.files.Get(plan);
        world.files.Put(plan, "damaged");
        world.files.Put(ZvCore::IFileSystem::TemporaryBeside(plan), whole);
        std::vector<fs::path> drawings;
        EXPECT_EQ(recovery.DrawingsIn("/d", drawings), "");
        EXPECT_EQ(drawings, std::vector<fs::path>{plan}) << "what stands for its name is no other drawing";
        const ZvRecovery::Finding finding = recovery.Look(plan);
        ASSERT_NE(finding.Best(), nullptr);
        EXPECT_EQ(finding.Best()->kind, ZvRecovery::Kind::Unfinished);
        EXPECT_EQ(recovery.Restore(finding, *finding.Best()), "");
        EXPECT_TRUE(world.files.Get(plan) == whole);
        EXPECT_EQ(world.files.Get(ZvRecovery::DamagedName(plan)), "damaged");
    }
}

TEST(SavePlaces, AFirstSaveUnderALongNameThatBrokeOffIsFoundUnderTheShortOne) {
    DrawingOnDisk world;
    world.SaveOld();
    world.files.Put(ZvCore::IFileSystem::TemporaryBeside("/b/" + NameOf(255)), world.files.Get(kPlan));
    const ZvBackups backups(world.files, world.settings, IZvClock::System(), nullptr);
    const ZvRecovery recovery(world.files, backups);
    std::vector<fs::path> drawings;
    EXPECT_EQ(recovery.DrawingsIn("/b", drawings), "");
    ASSERT_EQ(drawings.size(), 1u);
    const ZvRecovery::Finding finding = recovery.Look(drawings[0]);
    ASSERT_NE(finding.Best(), nullptr);
    EXPECT_EQ(recovery.Restore(finding, *finding.Best()), "");
    EXPECT_TRUE(recovery.Look(drawings[0]).IsWhole());
}

TEST(SavePlaces, LongNamesAreCutBetweenCharactersAndStayApart) {
    std::string umlauts;
    for (int i = 0; i < 125; ++i)
        umlauts += "\xC3\xA4";
    const fs::path names[] = {ZvPlatform::PathFromUtf8(umlauts + ".zvd"),
                              ZvPlatform::PathFromUtf8("x" + umlauts + ".zvd"),
                              ZvPlatform::PathFromUtf8(umlauts + "x.zvd")};
    std::set<fs::path> brief;
    for (const fs::path& name : names) {
        const fs::path made = ZvCore::IFileSystem::ShortForm("folder" / name);
        EXPECT_EQ(made.parent_path(), "folder");
        EXPECT_EQ(made.extension(), ".zvd");
        EXPECT_EQ(fs::path(made.u16string()), made) << "it is text";
        brief.insert(made);
    }
    EXPECT_EQ(brief.size(), std::size(names));
    EXPECT_EQ(ZvCore::IFileSystem::ShortForm("plan.zvd"), "plan.zvd");
}

TEST(SavePlaces, TheLongestNamesAreSavedOnTheRealDisk) {
    ScratchFolder folder;
    DrawingOnDisk world;
    world.drawing.DrawingIO()->SetFiles(ZvCore::IFileSystem::System());
    for (const size_t length : {245, 255}) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_TRUE(Zv::Ok(world.SaveAs(folder / NameOf(length)))) << world.errors.ToString();
            EXPECT_TRUE(world.errors.IsEmpty()) << world.errors.ToString();
        }
        EXPECT_TRUE(Zv::Ok(world.drawing.DrawingIO()->PeriodicBackup(true)));
    }
    EXPECT_FALSE(Zv::Ok(world.SaveAs(folder / NameOf(300))));
    EXPECT_EQ(world.errors.Items().size(), 1u) << world.errors.ToString();
    ASSERT_TRUE(Zv::Ok(world.SaveAs(folder / "plan.zvd")));
    fs::permissions(folder / "plan.zvd", fs::perms::owner_read);
    EXPECT_FALSE(Zv::Ok(world.SaveAs(folder / "plan.zvd")));
    EXPECT_NE(world.errors.ToString().find("read-only"), std::string::npos);
    fs::permissions(folder / "plan.zvd", fs::perms::owner_all);
    std::vector<fs::path>
        names; // where paths of that length need a form of their own the folder cannot delete them
    EXPECT_EQ(ZvCore::IFileSystem::System().List(folder.Path(), names), "");
    for (const fs::path& name : names)
        EXPECT_EQ(ZvCore::IFileSystem::System().Delete(folder.Path() / name), "");
}

namespace {

ZvRecovery::Finding LookAt(DrawingOnDisk& world) {
    const ZvBackups backups(world.files, world.settings, IZvClock::System(), nullptr);
    return ZvRecovery(world.files, backups).Look(kPlan);
}

const DateTime kLongAgo = DateTime::FromUtc(1999, 1, 1);
const DateTime kLongAfter = DateTime::FromUtc(2050, 1, 1);

} // namespace

TEST(SavePlaces, AClockThatGoesBackLosesNoBackup) {
    DrawingOnDisk world;
    world.settings.periodicKept = 4;
    world.SaveOld();
    world.Backup(), world.Backup();
    const std::string newest = world.files.Get("/d/Autobackup_plan0001.zvd");
    world.files.now = kLongAgo;
    world.Change();
    world.Backup();
    EXPECT_FALSE(world.files.Get("/d/Autobackup_plan0002.zvd").empty());
    EXPECT_TRUE(world.files.Get("/d/Autobackup_plan0001.zvd") == newest);
    ASSERT_NE(LookAt(world).Best(), nullptr);
    EXPECT_EQ(LookAt(world).Best()->file.filename(), "Autobackup_plan0002.zvd") << "dated before the others";

    ZvDrawing other; // another session goes on with the numbers
    other.DrawingIO()->SetFiles(world.files);
    other.DrawingIO()->SetBackupSettings(&world.settings);
    EXPECT_TRUE(Zv::Ok(other.DrawingIO()->LoadSimple(kPlan)));
    EXPECT_EQ(other.DrawingIO()->GetPeriodicBackupFilename(kPlan).filename(), "Autobackup_plan0003.zvd");

    EXPECT_TRUE(Zv::Ok(world.Save())) << "its own file, now dated before the one that it read";
    EXPECT_TRUE(Zv::Ok(world.Save()));
    EXPECT_TRUE(world.host.Questions().empty());
    EXPECT_EQ(LookAt(world).Best(), nullptr) << "backups of before the save, dated after it";
}

TEST(SavePlaces, OnlyWhatWasMadeFromTheDrawingsFileIsNewerThanIt) {
    DrawingOnDisk world;
    world.settings.directory = "/b";
    world.SaveOld();
    world.Backup();
    const std::string first = world.files.Get(kPlan), backup = world.files.Get("/b/Autobackup_plan0000.zvd");
    ASSERT_TRUE(Zv::Ok(world.Save()));
    const std::string second = world.files.Get(kPlan);
    world.Change();
    ASSERT_TRUE(Zv::Ok(world.SaveAs("/b/copy.zvd", ZvIOFlag::KeepName)));
    const std::string copy = world.files.Get("/b/copy.zvd");
    ASSERT_TRUE(Zv::Ok(world.Save()));
    const std::string third = world.files.Get(kPlan);
    const struct {
        const char* name;
        const std::string &drawing, &beside;
        bool isNewer;
    } cases[] = {{"of the save before", second, backup, false},
                 {"of this save", first, backup, true},
                 {"the next save", first, second, true},
                 {"the same", second, second, false},
                 {"the save before", second, first, false},
                 {"two saves on", first, third, false},
                 {"another file of the drawing", second, copy, false}};
    for (const auto& c : cases)
        for (const DateTime time : {kLongAgo, kLongAfter}) {
            SCOPED_TRACE(c.name);
            for (const char* place : {"/d/plan.zvd.0123abcd.tmp", "/b/Autobackup_plan0000.zvd"}) {
                (void)world.files.Delete("/d/plan.zvd.0123abcd.tmp");
                (void)world.files.Delete("/b/Autobackup_plan0000.zvd");
                world.files.Put(kPlan, c.drawing);
                world.files.Put(place, c.beside);
                world.files.SetModified(place, time);
                EXPECT_EQ(LookAt(world).Best() != nullptr, c.isNewer) << place;
                const ZvBackups backups(world.files, world.settings, IZvClock::System(), nullptr);
                EXPECT_EQ(ZvRecovery(world.files, backups).HasReason(kPlan), c.isNewer) << place;
            }
        }
}

TEST(SavePlaces, PurgesDeleteWhatBackupsLeftUnfinishedUnlessTheirWritersMayLive) {
    const std::string host = ZvPlatform::HostName();
    const uint64_t id = ZvPlatform::ProcessId();
    const std::string self = std::to_string(id) + "\n" + ZvPlatform::ProcessBirth(id) + "\n";
    const struct {
        const char* lock;
        std::string content;
        bool isKept;
    } cases[] = {{"", "", false},
                 {"Autobackup_plan0007.zvd.lock", "Zelvan lock 1\n999999999\nx\n" + host + "\n", false},
                 {"Autobackup_plan0007.zvd.lock", "Zelvan lock 1\n" + self + host + "\n", true},
                 {"Autobackup_plan0007.zvd.lock", "Zelvan lock 1\n1\nx\nelsewhere\n", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        DrawingOnDisk world;
        world.files.Put("/b/Autobackup_plan0007.zvd.0123abcd.tmp", "half");
        world.files.Put("/b/Autobackup_plan0007.zvd", "whole");
        world.files.Put("/b/mine.zvd.0123abcd.tmp", "no backup");
        if (*c.lock)
            world.files.Put(std::string("/b/") + c.lock, c.content);
        EXPECT_EQ(world.drawing.DrawingIO()->PeriodicBackupPurge("/b"), 0);
        EXPECT_EQ(world.files.All().size(), c.isKept ? 4u : 2u);
    }
}

TEST(SavePlaces, RecoveryLeavesAloneWhatOthersEditOrChanged) {
    DrawingOnDisk world;
    world.SaveOld();
    world.Backup();
    const ZvBackups backups(world.files, world.settings, IZvClock::System(), nullptr);
    const ZvRecovery recovery(world.files, backups);
    const ZvRecovery::Finding finding = recovery.Look(kPlan);
    ASSERT_NE(finding.Best(), nullptr);
    const std::string lock = std::string(kPlan) + ".lock";
    world.drawing.DrawingIO()->ForgetDrawingFileName();
    for (const std::string& held :
         {std::string("Zelvan lock 1\n1\nx\nelsewhere\n"), std::string(5000, 'x')}) {
        world.files.Put(lock, held);
        EXPECT_TRUE(recovery.Look(kPlan).isBusy);
    }
    world.files.Put(lock, "Zelvan lock 1\n1\nx\nelsewhere\n");
    EXPECT_NE(recovery.Restore(finding, *finding.Best()), "");
    EXPECT_EQ(world.files.Delete(lock), "");
    world.files.SetModified(kPlan, kLongAfter);
    EXPECT_NE(recovery.Restore(finding, *finding.Best()), "");
    EXPECT_EQ(recovery.Restore(recovery.Look(kPlan), *finding.Best()), "");
    EXPECT_EQ(world.files.All().count(lock), 0u);
    world.files.Put(lock, "Zelvan lock 1\n999999999\nx\n" + ZvPlatform::HostName() + "\n");
    recovery.DeleteRubbish(recovery.Look(kPlan));
    EXPECT_EQ(world.files.All().count(lock), 0u) << "its program has ended";
}

TEST(SavePlaces, ARelativeNameMeansTheSameFileInAnotherFolder) {
    ScratchFolder folder;
    DrawingOnDisk world;
    ZvDrawingIO& io = *world.drawing.DrawingIO();
    io.SetFiles(ZvCore::IFileSystem::System());
    const fs::path before = fs::current_path();
    fs::current_path(folder.Path());
    EXPECT_TRUE(Zv::Ok(world.SaveAs("plan.zvd"))) << world.errors.ToString();
    fs::current_path(before);
    EXPECT_TRUE(Zv::Ok(world.SaveAs(io.DrawingFileName()))) << world.errors.ToString();
    EXPECT_EQ(folder.CountFiles(), 3u) << "drawing, backup, lock";
    io.ForgetDrawingFileName();
    EXPECT_EQ(folder.CountFiles(), 2u);
}

#ifndef _WIN32
TEST(SavePlaces, WhatIsNoFileIsNotReplaced) {
    ScratchFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe.zvd").c_str(), 0600), 0);
    fs::create_symlink("round2.zvd", folder / "round1.zvd");
    fs::create_symlink("round1.zvd", folder / "round2.zvd");
    fs::create_symlink("further.zvd", folder / "link.zvd");
    fs::create_symlink("real.zvd", folder / "further.zvd");
    DrawingOnDisk world;
    world.drawing.DrawingIO()->SetFiles(ZvCore::IFileSystem::System());
    for (const char* name : {"pipe.zvd", "round1.zvd"}) {
        EXPECT_FALSE(Zv::Ok(world.SaveAs(folder / name)));
        EXPECT_EQ(world.errors.Items().size(), 1u);
        EXPECT_NE(world.errors.ToString().find("is no file"), std::string::npos) << world.errors.ToString();
    }
    EXPECT_TRUE(fs::is_fifo(folder / "pipe.zvd"));
    EXPECT_TRUE(fs::is_symlink(folder / "round1.zvd"));
    for (int i = 0; i < 2; ++i) // the first makes what the links lead to
        EXPECT_TRUE(Zv::Ok(world.SaveAs(folder / "link.zvd"))) << world.errors.ToString();
    EXPECT_TRUE(fs::is_symlink(folder / "link.zvd") && fs::is_symlink(folder / "further.zvd"));
    EXPECT_TRUE(fs::is_regular_file(folder / "real.zvd") && fs::is_regular_file(folder / "real.zvd.bak"));
}
#endif
