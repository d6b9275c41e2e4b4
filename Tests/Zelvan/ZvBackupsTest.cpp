#include "Zelvan/ZvBackups.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SimulatedFiles.h"
#include "Zelvan/DrawingAux/IZvCommandRunner.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/Tables/ZvBitmapTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvDrawingLock.h"
#include "Zelvan/ZvRecovery.h"
#include "ZvCore/Platform/Platform.h"
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class SetClock : public IZvClock {
public:
    DateTime Now() const override { return now; }
    double MonotonicSeconds() const override { return 0; }
    DateTime now = DateTime::FromUtc(2020, 1, 1);
    void Pass(int hours) { now.ticks += uint64_t(hours) * 3600 * DateTime::kTicksPerSecond; }
};

class ZvBackupsTest : public ::testing::Test {
protected:
    ZvBackupsTest() {
        files.MakeFolder("/d");
        files.MakeFolder("/b");
        settings.directory = "/b";
        drawing = Make();
    }
    std::unique_ptr<ZvDrawing> Make() {
        ZvDrawingSetup setup;
        setup.clock = &clock;
        setup.host = &host;
        auto made = std::make_unique<ZvDrawing>(setup);
        made->DrawingIO()->SetFiles(files);
        made->DrawingIO()->SetBackupSettings(&settings);
        made->Insert(std::make_unique<ZvPointEnt>(Vec3d{1, 2, 3}));
        made->SetModified();
        return made;
    }
    Zv::Status Save(const fs::path& path) {
        errors.Clear();
        return drawing->DrawingIO()->SaveFile(path, nullptr, 0, &errors);
    }
    std::string Printed() const { return host.Printed().ToUtf8(); }
    SimulatedFiles files;
    SetClock clock;
    ZvSilentHost host;
    ZvBackupSettings settings;
    IOErrorSet errors;
    std::unique_ptr<ZvDrawing> drawing;
};

} // namespace

TEST_F(ZvBackupsTest, InstantBackupStandsBesideTheDrawingOrInTheDirectory) {
    ZvDrawingIO& io = *drawing->DrawingIO();
    EXPECT_EQ(io.GetInstantBackupFilename("/d/plan.zvd"), fs::path("/d/plan.zvd.bak"));
    settings.besideDrawing = false;
    EXPECT_EQ(io.GetInstantBackupFilename("/d/plan.zvd"), fs::path("/b/plan.zvd.bak"));
    settings.directory = "/none";
    EXPECT_EQ(io.GetInstantBackupFilename("/d/plan.zvd"), fs::path());
    const std::string said =
        "Autobackup of the Drawing cannot continue because the chosen path '/none' cannot be written to.\n";
    EXPECT_EQ(Printed(), said);
    EXPECT_FALSE(io.CheckBackupPath(true));
    EXPECT_EQ(Printed(), said);
    ASSERT_EQ(Save("/d/plan.zvd"), Zv::Status::Success);
    EXPECT_EQ(Save("/d/plan.zvd"), Zv::Status::Success) << "without a backup, but saved";
    EXPECT_EQ(files.All().count("/d/plan.zvd.bak"), 0u);
}

TEST_F(ZvBackupsTest, PeriodicBackupsGoRoundAndPassOverOtherDrawings) {
    settings.periodicKept = 3;
    ASSERT_EQ(Save("/d/plan.zvd"), Zv::Status::Success);
    ZvDrawingIO& io = *drawing->DrawingIO();
    EXPECT_EQ(io.PeriodicBackup(false), Zv::Status::NotStarted) << "nothing changed";
    for (const char* name : {"0000", "0001", "0002", "0000"}) {
        drawing->SetModified();
        const fs::path expected = std::string("/b/Autobackup_plan") + name + ".zvd";
        EXPECT_EQ(io.GetPeriodicBackupFilename("/d/plan.zvd"), expected);
        EXPECT_EQ(io.PeriodicBackup(false), Zv::Status::Success);
        EXPECT_EQ(files.Get(expected).empty(), false);
    }
    EXPECT_EQ(Printed().substr(0, 31), "Periodic Auto Backup... Done.\nP");
    EXPECT_TRUE(drawing->IsModified());
    EXPECT_FALSE(io.IsUnsaved());

    const std::string ours = files.Get("/b/Autobackup_plan0001.zvd");
    const auto twin = Make();
    twin->DrawingIO()->SetDrawingFileName("/d/plan.zvd");
    EXPECT_EQ(twin->DrawingIO()->PeriodicBackup(true), Zv::Status::Success);
    EXPECT_TRUE(files.Get("/b/Autobackup_plan0001.zvd") == ours);
    EXPECT_EQ(files.All().count("/b/Autobackup_plan0003.zvd"), 1u) << "the round is taken by another drawing";

    files.SetReadOnlyFolder("/b");
    EXPECT_EQ(io.PeriodicBackup(true), Zv::Status::NotStarted);
    EXPECT_NE(Printed().find("'/b' cannot be written to"), std::string::npos);
}

TEST_F(ZvBackupsTest, PurgeDeletesWhatExpiredButNeverTheNewest) {
    settings.expiryHours = 10;
    files.now = clock.now;
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(drawing->DrawingIO()->PeriodicBackup(true), Zv::Status::Success);
    files.Put("/b/Autobackup_0000.txt", "not one of them");
    clock.Pass(9);
    EXPECT_EQ(drawing->DrawingIO()->PeriodicBackupPurge("/b"), 0);
    clock.Pass(2);
    EXPECT_EQ(drawing->DrawingIO()->PeriodicBackupPurge("/b"), 2);
    EXPECT_NE(Printed().find("Purging autobackup file "), std::string::npos);
    EXPECT_NE(Printed().find("Autobackup_0001.zvd because it has expired\n"), std::string::npos);
    EXPECT_EQ(files.All().count("/b/Autobackup_0002.zvd"), 1u);
    files.SetModified("/b/Autobackup_0002.zvd", DateTime::FromUtc(2030, 1, 1)); // the clock went back
    EXPECT_EQ(drawing->DrawingIO()->PeriodicBackupPurge("/b"), 0);
    EXPECT_EQ(drawing->DrawingIO()->PeriodicBackupPurge("/none"), 0);
}

TEST_F(ZvBackupsTest, LocksOfEndedProcessesAreTakenOver) {
    const std::string host_ = ZvPlatform::HostName();
    const std::string self = std::to_string(ZvPlatform::ProcessId());
    const struct {
        std::string content;
        ZvDrawingLock::Outcome expected;
    } cases[] = {
        {"Zelvan lock 1\n999999999\nx\n" + host_ + "\n", ZvDrawingLock::Outcome::Taken},
        {"Zelvan lock 1\n" + self + "\nearlier\n" + host_ + "\n", ZvDrawingLock::Outcome::Taken},
        {"", ZvDrawingLock::Outcome::Taken},
        {"Zelvan lock 1\n1\nx\nelsewhere\n", ZvDrawingLock::Outcome::Held},
    };
    for (const auto& c : cases) {
        files.Put("/d/a.zvd.lock", c.content);
        {
            ZvDrawingLock lock;
            EXPECT_EQ(lock.Take(files, "/d/a.zvd"), c.expected) << c.content;
        }
        EXPECT_EQ(files.All().count("/d/a.zvd.lock"), c.expected == ZvDrawingLock::Outcome::Held ? 1u : 0u);
    }
    ZvDrawingLock lock;
    EXPECT_EQ(lock.Take(files, "/none/a.zvd"), ZvDrawingLock::Outcome::Unavailable);
}

TEST_F(ZvBackupsTest, OpeningOffersTheNewestWholeFormAndChangesNothingUnasked) {
    ASSERT_EQ(Save("/d/plan.zvd"), Zv::Status::Success);
    ASSERT_EQ(Save("/d/plan.zvd"), Zv::Status::Success);
    const std::string whole = files.Get("/d/plan.zvd");
    (void)files.Delete("/d/plan.zvd");
    files.Put("/d/plan.zvd.0123abcd.tmp", whole.substr(0, whole.size() / 2));
    const auto reader = Make();
    EXPECT_NE(reader->DrawingIO()->LoadFile("/d/plan.zvd"), Zv::Status::Success);
    ASSERT_EQ(host.Questions().size(), 1u);
    const std::string asked = host.Questions()[0].question.text.ToUtf8();
    EXPECT_NE(asked.find("plan.zvd.bak: the content before the last save"), std::string::npos) << asked;
    EXPECT_EQ(asked.find("0123abcd"), std::string::npos) << "it is not whole";
    EXPECT_EQ(host.Questions()[0].answer, ZvAnswer::No);

    ZvBackups backups(files, settings, clock, nullptr);
    const ZvRecovery recovery(files, backups);
    const ZvRecovery::Finding finding = recovery.Look("/d/plan.zvd");
    ASSERT_NE(finding.Best(), nullptr);
    EXPECT_EQ(recovery.Restore(finding, *finding.Best()), "");
    recovery.DeleteRubbish(finding);
    EXPECT_EQ(files.All().count("/d/plan.zvd.0123abcd.tmp"), 0u);
    EXPECT_EQ(files.All().count("/d/plan.zvd.bak"), 1u);
    EXPECT_EQ(reader->DrawingIO()->LoadFile("/d/plan.zvd"), Zv::Status::Success);

    files.Put("/d/plan.zvd", "damaged");
    const ZvRecovery::Finding damaged = recovery.Look("/d/plan.zvd");
    ASSERT_NE(damaged.Best(), nullptr);
    EXPECT_EQ(recovery.Restore(damaged, *damaged.Best()), "");
    EXPECT_EQ(files.Get("/d/plan.zvd.damaged"), "damaged");
}

TEST_F(ZvBackupsTest, ManyFilesAreAskedAboutAndRecordingsAndImagesAreTold) {
    std::vector<fs::path> opened;
    const auto open = [&](const fs::path& file) {
        opened.push_back(file);
        return Zv::Status::Success;
    };
    ZvDrawingIO& io = *drawing->DrawingIO();
    EXPECT_EQ(io.GenericFileLoader({"a.zvd", "x.zelvid", "my-video", "b.TIF", "c.zvd"}, open), 2);
    EXPECT_EQ(opened, (std::vector<fs::path>{"a.zvd", "c.zvd"}));
    ASSERT_EQ(host.Questions().size(), 1u);
    EXPECT_EQ(host.Questions()[0].question.text, u"Are you sure you want to open 5 files?");
    EXPECT_EQ(Printed(), "Ignoring bitmap b.TIF, because unable to read embedded geographic coordinates\n");
    EXPECT_EQ(io.LocateMedia("/d/missing.wav"), fs::path());
    EXPECT_EQ(
        host.Questions().back().question.text,
        u"The media file '/d/missing.wav' referenced in the drawing could not be found. Would you like to "
        u"locate it?");
    files.Put("/d/there.wav", "x");
    EXPECT_EQ(io.LocateMedia("/d/there.wav"), fs::path("/d/there.wav"));
}

TEST_F(ZvBackupsTest, LinkedImagesThatAreMissingAreAskedForWhenTheDrawingIsOpened) {
    struct Locating : ZvSilentHost {
        ZvAnswer Ask(const ZvQuestion& question) override {
            asked.push_back(question.text.ToUtf8());
            return ZvAnswer::Yes;
        }
        std::vector<fs::path> AskFile(ZvFileRequest&) override { return {"/b/moved.png"}; }
        std::vector<std::string> asked;
    } locating;
    drawing->BitmapTable()->InsertNew(u"There")->SetLinked(u"there.png");
    drawing->BitmapTable()->InsertNew(u"Moved")->SetLinked(u"moved.png");
    files.Put("/d/there.png", "x");
    files.Put("/b/moved.png", "x");
    ASSERT_EQ(Save("/d/plan.zvd"), Zv::Status::Success);
    const auto pathAfter = [&](uint32_t flags) {
        drawing = Make();
        drawing->SetHost(&locating);
        EXPECT_EQ(drawing->DrawingIO()->LoadFile("/d/plan.zvd", flags), Zv::Status::Success);
        return drawing->BitmapTable()->GetByName(u"Moved")->GetPath().ToUtf8();
    };
    EXPECT_EQ(pathAfter(ZvIOFlag::Quiet), "moved.png");
    EXPECT_FALSE(drawing->DrawingIO()->IsDrawingDirty());
    EXPECT_EQ(pathAfter(0), "/b/moved.png");
    EXPECT_TRUE(drawing->DrawingIO()->IsDrawingDirty());
    ASSERT_EQ(locating.asked.size(), 1u);
    EXPECT_NE(locating.asked[0].find("moved.png' referenced"), std::string::npos) << locating.asked[0];
    drawing.reset(); // before its host
}
