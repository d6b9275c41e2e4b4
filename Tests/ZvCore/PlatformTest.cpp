#include "ZvCore/Platform/Platform.h"
#include "Tests/Support/ScratchFolder.h"

#include <cstdio>
#include <gtest/gtest.h>

TEST(Platform, RenameReplacesInOneStepAndTellsWhyNot) {
    ScratchFolder folder;
    folder.Put("old", "old");
    folder.Put("new", "new");
    EXPECT_EQ(ZvPlatform::RenameReplace(folder / "new", folder / "old"), "");
    EXPECT_EQ(folder.Get("old"), "new");
    EXPECT_EQ(folder.CountFiles(), 1u);
    EXPECT_EQ(ZvPlatform::RenameReplace(folder / "gone", folder / "old"), "no such file");
    EXPECT_NE(ZvPlatform::RenameReplace(folder / "old", folder / "no" / "where"), "");
    EXPECT_EQ(folder.Get("old"), "new");
    EXPECT_EQ(ZvPlatform::SyncFolder(folder.Path()), "");
}

TEST(Platform, BackupByLinkKeepsTheOldBytesWhenTheOriginalIsReplaced) {
    ScratchFolder folder;
    folder.Put("plan.zvd", "first");
    folder.Put("plan.bak", "before");
    for (int i = 0; i < 2; ++i) // the second time both are one file already
        EXPECT_EQ(ZvPlatform::HardLinkOrCopy(folder / "plan.zvd", folder / "plan.bak"), "");
    folder.Put("temporary", "second");
    EXPECT_EQ(ZvPlatform::RenameReplace(folder / "temporary", folder / "plan.zvd"), "");
    EXPECT_EQ(folder.Get("plan.bak"), "first");
    EXPECT_EQ(folder.Get("plan.zvd"), "second");
    EXPECT_EQ(folder.CountFiles(), 2u) << "nothing is left lying about";
    EXPECT_EQ(ZvPlatform::HardLinkOrCopy(folder / "gone", folder / "plan.bak"), "no such file");
    EXPECT_EQ(folder.Get("plan.bak"), "first");
}

#ifdef __linux__
TEST(Platform, BackupOnAnotherDiskIsACopyWithTheSamePermissions) {
    namespace fs = std::filesystem;
    const fs::path other = "/dev/shm";
    ScratchFolder folder;
    struct Remover {
        fs::path path;
        ~Remover() { ZvPlatform::DeleteFileIfThere(path); }
    } original{other / ("zelvan-" + std::to_string(ZvPlatform::ProcessId()))};
    if (!fs::is_directory(other) || !(std::ofstream(original.path) << std::string(3'000'000, 'x')))
        return void(std::puts("no second file system here"));
    fs::permissions(original.path, fs::perms::owner_read);
    EXPECT_EQ(ZvPlatform::HardLinkOrCopy(original.path, folder / "backup"), "");
    EXPECT_EQ(folder.Get("backup"), std::string(3'000'000, 'x'));
    EXPECT_EQ(fs::status(folder / "backup").permissions(), fs::perms::owner_read);
    EXPECT_EQ(folder.CountFiles(), 1u);
}
#endif

TEST(Platform, DeletingWhatIsNotThereIsNoFailure) {
    ScratchFolder folder;
    folder.Put("f", "");
    EXPECT_EQ(ZvPlatform::DeleteFileIfThere(folder / "f"), "");
    EXPECT_EQ(ZvPlatform::DeleteFileIfThere(folder / "f"), "");
    EXPECT_NE(ZvPlatform::DeleteFileIfThere(folder.Path()), "");
    EXPECT_TRUE(ZvPlatform::IsFolderWritable(folder.Path()));
    EXPECT_FALSE(ZvPlatform::IsFolderWritable(folder / "f"));
}

TEST(Platform, ProbingWhetherAFileCanGrowLeavesItAsItIs) {
    ScratchFolder folder;
    folder.Put("f", "text");
    EXPECT_EQ(ZvPlatform::SyncAndProbeGrowth(folder / "f"), "");
    EXPECT_EQ(folder.Get("f"), "text");
    EXPECT_NE(ZvPlatform::SyncAndProbeGrowth(folder / "missing"), "");
}

TEST(Platform, LongPathsWork) {
    ScratchFolder folder;
    std::filesystem::path deep = folder.Path();
    for (int i = 0; i < 6; ++i)
        deep /= std::string(60, char('a' + i));
    std::error_code failed;
    std::filesystem::create_directories(deep, failed);
    if (failed)
        return void(std::puts(failed.message().c_str()));
    std::ofstream(deep / "f") << "x";
    EXPECT_EQ(ZvPlatform::RenameReplace(deep / "f", deep / "g"), "");
    EXPECT_EQ(ZvPlatform::HardLinkOrCopy(deep / "g", deep / "h"), "");
    EXPECT_EQ(ZvPlatform::DeleteFileIfThere(deep / "h"), "");
}

TEST(Platform, KnowsItsMemoryAndItsProcess) {
    ZvPlatform::MemoryStatus memory;
    ASSERT_TRUE(ZvPlatform::GetMemoryStatus(memory));
    EXPECT_GT(memory.physicalBytes, uint64_t(100) << 20);
    EXPECT_LE(memory.loadPercent, 100u);
    EXPECT_GT(ZvPlatform::ResidentBytes(), 100'000u);
    EXPECT_GE(ZvPlatform::PeakResidentBytes() * 2, ZvPlatform::ResidentBytes());
    EXPECT_TRUE(ZvPlatform::IsProcessAlive(ZvPlatform::ProcessId()));
    EXPECT_FALSE(ZvPlatform::IsProcessAlive(0));
    EXPECT_FALSE(ZvPlatform::IsProcessAlive(0x7FFFFFF0));
    EXPECT_FALSE(ZvPlatform::IsProcessAlive(uint64_t(1) << 40 | ZvPlatform::ProcessId()));
}

TEST(Platform, AnsiTextKeepsAsciiAndMarksWhatItLacks) {
    EXPECT_EQ(ZvPlatform::WideToAnsi(u"Plan 7"), "Plan 7");
    EXPECT_EQ(ZvPlatform::AnsiToWide("Plan 7"), u"Plan 7");
    EXPECT_EQ(ZvPlatform::AnsiToWide(""), u"");
    // Every code page that has 'é' takes it there and back; the others answer '?'.
    const std::string narrow = ZvPlatform::WideToAnsi(u"é");
    EXPECT_TRUE(narrow == "?" || ZvPlatform::AnsiToWide(narrow) == u"é") << narrow;
    EXPECT_EQ(ZvPlatform::PathToUtf8(ZvPlatform::PathFromUtf8("\xC3\xA9\xE2\x82\xAC.zvd")),
              "\xC3\xA9\xE2\x82\xAC.zvd");
}
