#include "Zelvan/ZvDrawingIO.h"
#include "Tests/Support/ProbeEntity.h"
#include "Tests/Support/ScratchFolder.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayout.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/View/ZvView.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "ZvCore/Platform/Platform.h"
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

/// Writes and reads a text; fails on demand.
class TextProvider : public IZvFileProvider {
public:
    std::string ProviderName() const override { return "Text"; }
    std::vector<ZvFileFormat> Formats() const override {
        ZvFileFormat text;
        text.id = "text";
        text.name = u"Text";
        text.extensions = {"txt", "text"};
        text.canLoad = text.canSave = true;
        ZvFileFormat readable = text;
        readable.id = "readable";
        readable.extensions = {"rd"};
        readable.canSave = false;
        ZvFileFormat nameless = text;
        nameless.id = "nameless";
        nameless.extensions.clear();
        nameless.canLoad = false;
        return {text, readable, nameless};
    }
    Zv::Status Load(ZvDrawing& drawing, const fs::path& file, const ZvFileFormat&, const ZvFileOptions& given,
                    IOErrorSet& errors, ZvCore::IProgress&) override {
        options = given;
        if (fail) {
            errors.Add(77, "told to fail");
            return Zv::Status::Failure;
        }
        std::ifstream in(file);
        std::string layer;
        in >> layer;
        drawing.Insert(std::make_unique<ProbeEntity>(), XStringW::FromUtf8(layer));
        return Zv::FromBool(!failHalfway);
    }
    Zv::Status Save(ZvDrawing& drawing, const fs::path& file, const ZvFileFormat&, const ZvFileOptions& given,
                    IOErrorSet&, ZvCore::IProgress&) override {
        written = file;
        options = given;
        selectedWhileSaving = drawing.CurrentSelection().Count();
        nested = drawing.DrawingIO()->SaveFile(file);
        std::ofstream(file) << content;
        return fail ? Zv::Status::Failure : Zv::Status::Success;
    }
    bool fail = false, failHalfway = false;
    std::string content = "new";
    fs::path written;
    ZvFileOptions options;
    int selectedWhileSaving = -1;
    Zv::Status nested = Zv::Status::Success;
};

struct IdleVerb : ZvVerb {
    XStringW DefaultName() const override { return u"Idle"; }
};

class TestClock : public IZvClock {
public:
    DateTime Now() const override { return now; }
    double MonotonicSeconds() const override { return 0; }
    DateTime now = DateTime::FromUtc(2020, 1, 1);
};

class ZvDrawingIOTest : public ::testing::Test {
protected:
    ZvDrawingIOTest() {
        formats.RegisterProvider(&provider);
        ZvDrawingSetup setup;
        setup.formats = &formats;
        setup.clock = &clock;
        setup.host = &host;
        drawing = std::make_unique<ZvDrawing>(setup);
        io = drawing->DrawingIO();
    }
    /// In the format that the name's extension tells.
    Zv::Status Save(const fs::path& file, uint32_t flags = 0, IOErrorSet* errors = nullptr) {
        return io->SaveFile(file, formats.GetSaveFormat(file), flags, errors);
    }
    ScratchFolder folder;
    ZvSilentHost host;
    TestClock clock;
    TextProvider provider;
    ZvFileFormatServer formats;
    std::unique_ptr<ZvDrawing> drawing;
    ZvDrawingIO* io = nullptr;
};

} // namespace

TEST_F(ZvDrawingIOTest, FormatsAreFoundByExtension) {
    EXPECT_EQ(formats.GetFormat("a.TXT")->id, "text");
    EXPECT_EQ(formats.GetFormat("dir.txt/a.rd")->id, "readable");
    EXPECT_EQ(formats.GetSaveFormat("a.rd"), nullptr);
    EXPECT_EQ(formats.GetFormat("txt"), nullptr);
    EXPECT_EQ(formats.GetFormat("a.zvd"), formats.GetNativeLoadFormat());
    EXPECT_EQ(formats.GetFormat("a.ZelvanTextures")->id, "zvf");
    EXPECT_EQ(formats.FileFormatOutExtensions(), (std::vector<std::string>{".zvd", ".txt", ".text"}));
    EXPECT_EQ(formats.FileFormatInList(&provider).size(), 2u);
    EXPECT_EQ(formats.FileFormatOutList().size(), 3u);
    TextProvider twin;
    EXPECT_FALSE(formats.RegisterProvider(&provider));
    EXPECT_FALSE(formats.RegisterProvider(&twin)) << "its format ids are taken";
    EXPECT_FALSE(formats.UnRegisterProvider(formats.FileProviderList().front())) << "the native one stays";
    EXPECT_TRUE(formats.UnRegisterProvider(&provider));
    EXPECT_EQ(formats.GetFormat("a.txt"), nullptr);
    EXPECT_TRUE(formats.RegisterProvider(&twin));
    EXPECT_TRUE(formats.UnRegisterProvider(&twin));
}

TEST_F(ZvDrawingIOTest, NamesOfTheOldExtensionAreNormalised) {
    const struct {
        const char *given, *expected;
    } cases[] = {{"d/a.zvf", "d/a.zvd"},    {"a.zvf.zvd", "a.zvd"}, {"a.ZVF.zvd", "a.zvd"},
                 {"a.Zvf", "a.zvd"},        {"a.zvd", "a.zvd"},     {"azvf", "azvf"},
                 {"a.zvf.txt", "a.zvf.txt"}};
    for (const auto& c : cases)
        EXPECT_EQ(ZvDrawingIO::NormalizeName(c.given), fs::path(c.expected)) << c.given;
}

TEST_F(ZvDrawingIOTest, FirstSaveWritesDirectlyLaterOnesThroughATemporaryFile) {
    const fs::path file = folder / "plan.txt";
    EXPECT_EQ(Save(file), Zv::Status::Success);
    EXPECT_EQ(provider.written, file);
    EXPECT_EQ(io->DrawingFileName(), file);
    EXPECT_EQ(io->GetLastFormat()->id, "text");
    EXPECT_EQ(provider.nested, Zv::Status::NotStarted) << "a save within a save";
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    provider.content = "newer";
    EXPECT_EQ(Save(file), Zv::Status::Success);
    EXPECT_NE(provider.written, file);
    EXPECT_EQ(provider.written.parent_path(), folder.Path());
    EXPECT_EQ(folder.Get("plan.txt"), "newer");
    EXPECT_EQ(folder.Get("plan.txt.bak"), "new");
    EXPECT_EQ(folder.CountFiles(), 2u);
#ifndef _WIN32 // which knows read-only alone
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
#endif
    EXPECT_EQ(host.StatusText(), u"Done");
}

TEST_F(ZvDrawingIOTest, FailedSaveLeavesTheTargetAndNothingElse) {
    folder.Put("old.txt", "old");
    drawing->SetModified();
    provider.fail = true;
    for (const char* name : {"old.txt", "new.txt"}) {
        IOErrorSet errors;
        EXPECT_EQ(Save(folder / name, ZvIOFlag::Quiet, &errors), Zv::Status::Failure);
        EXPECT_TRUE(errors.HasErrors()) << name;
    }
    EXPECT_EQ(folder.Get("old.txt"), "old");
    EXPECT_EQ(folder.CountFiles(), 1u);
    EXPECT_TRUE(drawing->IsModified());
    EXPECT_TRUE(io->DrawingFileName().empty());
    EXPECT_FALSE(io->IsFileSaveBusy());
    EXPECT_EQ(drawing->GetAutoCleanupSuspendCount(), 0);

    IOErrorSet errors;
    EXPECT_EQ(io->SaveFile(folder / "a.rd", formats.GetFormatById("readable"), ZvIOFlag::Quiet, &errors),
              Zv::Status::NotStarted);
    EXPECT_TRUE(errors.HasErrors());
}

TEST_F(ZvDrawingIOTest, LinksToTheTargetSurviveASave) {
    folder.Put("real.txt", "old");
    std::error_code error;
    fs::create_symlink(folder / "real.txt", folder / "link.txt", error);
    if (error)
        return void(std::puts("no symbolic links here"));
    EXPECT_EQ(Save(folder / "link.txt"), Zv::Status::Success);
    EXPECT_TRUE(fs::is_symlink(folder / "link.txt"));
    EXPECT_EQ(folder.Get("real.txt"), "new");
}

TEST_F(ZvDrawingIOTest, SelectionIsKeptAcrossASaveAndPassedOnWhenAsked) {
    drawing->Insert(std::make_unique<ProbeEntity>());
    drawing->CurrentSelection().Insert(ZvName(1));
    EXPECT_EQ(Save(folder / "a.txt", ZvIOFlag::SelectionOnly | ZvIOFlag::ProviderOption),
              Zv::Status::Success);
    EXPECT_EQ(provider.selectedWhileSaving, 0);
    ASSERT_NE(provider.options.selection, nullptr);
    EXPECT_TRUE(provider.options.providerOption);
    EXPECT_EQ(drawing->CurrentSelection().Count(), 1);
    EXPECT_TRUE(drawing->GetEntity(1)->IsSelected());
}

TEST_F(ZvDrawingIOTest, LoadTakesTheNameRunsScheduledWorkAndIsClean) {
    struct Events : ZvcIEventListener {
        void OnEvent(const ZvcEvent& event) override { codes.push_back(event.code); }
        std::vector<int> codes;
    } events;
    folder.Put("in.txt", "Walls");
    drawing->DoVerb(new IdleVerb);
    ASSERT_TRUE(drawing->IsModified());
    drawing->AddListener(&events);
    int runs = 0;
    io->AddPostLoadScheduledAction([&](ZvDrawing& loaded) { runs += loaded.NameTable().Count(); });
    EXPECT_EQ(io->LoadFile(folder / "in.txt"), Zv::Status::Success);
    EXPECT_EQ(drawing->GetEntity(1)->GetLayerName(), u"Walls");
    EXPECT_EQ(io->DrawingFileName(), folder / "in.txt");
    EXPECT_FALSE(drawing->IsModified());
    EXPECT_EQ(drawing->Verbs()->StackSize(), 0);
    EXPECT_EQ(std::count(events.codes.begin(), events.codes.end(), ZvDrawingEvent::Loaded), 1);
    EXPECT_EQ(io->LoadFile(folder / "in.txt", ZvIOFlag::Merge | ZvIOFlag::SkipChecksum), Zv::Status::Success);
    EXPECT_EQ(runs, 1) << "once";
    EXPECT_TRUE(drawing->IsModified());
    EXPECT_TRUE(provider.options.values.GetBool("SkipChecksum", false));

    std::string why;
    provider.fail = true;
    drawing->ResetModified();
    EXPECT_EQ(io->LoadSimple(folder / "in.txt", &why), Zv::Status::Failure);
    EXPECT_FALSE(drawing->IsModified());
    EXPECT_NE(why.find("told to fail"), std::string::npos);
    EXPECT_EQ(io->LoadSimple(folder / "in.unknown", &why), Zv::Status::NotStarted);
    EXPECT_NE(why.find("in.unknown"), std::string::npos);
}

TEST_F(ZvDrawingIOTest, HalfALoadStandsForNoFile) {
    folder.Put("in.txt", "Walls");
    ASSERT_EQ(io->LoadFile(folder / "in.txt"), Zv::Status::Success);
    provider.failHalfway = true;
    EXPECT_EQ(io->LoadSimple(folder / "in.txt"), Zv::Status::Failure);
    EXPECT_TRUE(io->DrawingFileName().empty());
    EXPECT_TRUE(drawing->IsModified());
}

TEST_F(ZvDrawingIOTest, DirtyIsSuppressedUntilItsTime) {
    drawing->SetModified();
    EXPECT_TRUE(io->IsDrawingDirty());
    EXPECT_TRUE(io->IsUnsaved());
    io->SuppressDirtyUntil(DateTime::FromUtc(2020, 1, 1, 0, 0, 5));
    EXPECT_FALSE(drawing->IsModified());
    clock.now = DateTime::FromUtc(2020, 1, 1, 0, 0, 5);
    EXPECT_TRUE(drawing->IsModified());
    io->SuppressDirtyUntil(DateTime::FromUtc(2021, 1, 1));
    io->ResetSaveTime();
    EXPECT_TRUE(drawing->IsModified());
    drawing->ResetModified();
    EXPECT_FALSE(io->IsUnsaved());
}

TEST_F(ZvDrawingIOTest, ASaveMakesTheDrawingsOfLayoutsCleanToo) {
    ZvDrawing& sheet = *drawing->LayoutTable()->InsertNew(u"Sheet")->Drawing();
    sheet.SetModified();
    ASSERT_TRUE(drawing->IsModified());
    ASSERT_EQ(io->SaveFile(folder / "a.zvd"), Zv::Status::Success);
    EXPECT_FALSE(sheet.IsModified());
    EXPECT_FALSE(drawing->IsModified());
}

// --- the native format ---------------------------------------------------------------------------------------------

TEST_F(ZvDrawingIOTest, NativeFileKeepsEntitiesNamesSettingsAndView) {
    const fs::path file = folder / "drawing.zvf";
    for (int i = 0; i < 50; ++i)
        drawing->Insert(std::make_unique<ZvPointEnt>(Vec3d{double(i), 1, 0}), i % 2 ? u"odd" : u"even");
    drawing->GetEntity(7)->RemoveAndDelete();
    drawing->SetCurrentColor(ZvColor(3));
    drawing->AddView(std::make_unique<ZvView>())->Resize(100, 100);
    drawing->GetCurrentView()->CenterOn({12, 34, 0});
    EXPECT_EQ(Save(file), Zv::Status::Success);
    EXPECT_EQ(io->DrawingFileName(), folder / "drawing.zvd");
    EXPECT_EQ(io->SaveNative(folder / "drawing.zvd", ZvIOFlag::Solid), Zv::Status::Success);
    EXPECT_EQ(folder.CountFiles(), 3u) << "drawing, backup, lock";

    ZvDrawing loaded;
    loaded.AddView(std::make_unique<ZvView>())->Resize(100, 100);
    IOErrorSet errors;
    EXPECT_EQ(loaded.DrawingIO()->LoadFile(folder / "drawing.zvd", 0, &errors), Zv::Status::Success);
    EXPECT_TRUE(errors.IsEmpty()) << errors.ToString();
    EXPECT_EQ(loaded.NameTable().Count(), 49);
    EXPECT_EQ(loaded.GetEntity(7), nullptr);
    EXPECT_EQ(loaded.GetEntity(10)->GetLayerName(), u"odd");
    EXPECT_EQ(loaded.CurrentColor(), ZvColor(3));
    EXPECT_EQ(loaded.GetGuid(), drawing->GetGuid());
    EXPECT_NEAR(loaded.GetCurrentView()->XForm().Target().x, 12, 1e-9);
    EXPECT_FALSE(loaded.IsModified());
    EXPECT_GT(loaded.NameTable().Add(loaded.GetEntity(1)).value, 50u)
        << "new names come after those of the file";
}

TEST_F(ZvDrawingIOTest, CleanupGivesTheArenaBackWhenMostOfItIsGarbage) {
    for (int i = 0; i < 300; ++i) {
        auto line = std::make_unique<ZvXLine>();
        const Vec2d vertices[] = {{double(i), 0}, {i + 0.5, 1}, {double(i), 2}};
        line->SetPoly(false, false, 3, vertices);
        drawing->Insert(std::move(line));
    }
    ASSERT_EQ(io->SaveFile(folder / "d.zvd"), Zv::Status::Success);
    ZvDrawing loaded;
    ASSERT_EQ(loaded.DrawingIO()->LoadFile(folder / "d.zvd"), Zv::Status::Success);
    const size_t used = loaded.EntityHeap().BytesUsed();
    ASSERT_GT(used, 0u);
    EXPECT_EQ(loaded.HeapLiveBytes(), used);
    for (uint32_t name = 1; name <= 100; ++name)
        loaded.GetEntity(name)->SetErased(true);
    loaded.Cleanup();
    EXPECT_EQ(loaded.NameTable().Count(), 200);
    EXPECT_EQ(loaded.EntityHeap().BytesUsed(), used) << "a third is garbage";
    for (uint32_t name = 101; name <= 200; ++name)
        loaded.GetEntity(name)->SetErased(true);
    loaded.Cleanup();
    EXPECT_EQ(loaded.EntityHeap().BytesUsed(), 0u);
    ASSERT_EQ(loaded.NameTable().Count(), 100);
    for (uint32_t name = 201; name <= 300; ++name)
        EXPECT_TRUE(loaded.GetEntity(name)->IsGeometryEqual(*drawing->GetEntity(name)));
}

TEST_F(ZvDrawingIOTest, DamagedFileIsRefusedAndTheDrawingKept) {
    const fs::path file = folder / "d.zvd";
    drawing->Insert(std::make_unique<ZvPointEnt>(Vec3d{1, 2, 3}));
    ASSERT_EQ(Save(file), Zv::Status::Success);
    std::string bytes = folder.Get("d.zvd");
    bytes[bytes.size() / 2] = char(bytes[bytes.size() / 2] ^ 0x55);
    folder.Put("d.zvd", bytes);
    ZvDrawing other;
    other.Insert(std::make_unique<ZvPointEnt>(Vec3d{4, 5, 6}));
    other.CurrentSelection().Insert(ZvName(1));
    ASSERT_NE(other.DoVerb(new IdleVerb), 0);
    std::string why;
    EXPECT_EQ(other.DrawingIO()->LoadSimple(file, &why), Zv::Status::Failure);
    EXPECT_NE(why.find("checksum"), std::string::npos) << why;
    EXPECT_EQ(other.NameTable().Count(), 1);
    EXPECT_EQ(other.CurrentSelection().Count(), 1);
    EXPECT_EQ(other.Verbs()->StackSize(), 1);
    EXPECT_TRUE(other.DrawingIO()->DrawingFileName().empty());
}

TEST_F(ZvDrawingIOTest, AnOpenedBackupStandsForNoFile) {
    const fs::path file = folder / "plan.zvd";
    drawing->Insert(std::make_unique<ZvPointEnt>(Vec3d{1, 2, 3}));
    ASSERT_EQ(io->SaveFile(file), Zv::Status::Success);
    drawing->Insert(std::make_unique<ZvPointEnt>(Vec3d{4, 5, 6}));
    ASSERT_EQ(io->SaveFile(file), Zv::Status::Success);
    ZvDrawing old;
    EXPECT_EQ(old.DrawingIO()->LoadFile(folder / "plan.zvd.bak"), Zv::Status::Success);
    EXPECT_EQ(old.NameTable().Count(), 1);
    EXPECT_EQ(old.DrawingIO()->DrawingFileName(), fs::path());
    EXPECT_FALSE(old.IsModified());
    EXPECT_EQ(folder.CountFiles(), 3u) << "drawing, backup, the drawing's lock";
    EXPECT_NE(old.DrawingIO()->SaveFile({}, nullptr, ZvIOFlag::Quiet), Zv::Status::Success);
}

TEST_F(ZvDrawingIOTest, WithoutAFormatASaveIsNativeWhateverTheName) {
    EXPECT_EQ(io->SaveFile(folder / "plan.txt"), Zv::Status::Success);
    EXPECT_EQ(io->GetLastFormat(), formats.GetNativeSaveFormat());
    EXPECT_TRUE(provider.written.empty());
}
