#include "Tests/Support/ScratchFolder.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/FaultyFile.h"
#include "ZvCore/IFile.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <random>

using ZvCore::DiskFile;
using ZvCore::FaultyFile;
using ZvCore::IFile;
using ZvCore::MemFile;

namespace {

std::string TextOf(MemFile& file) {
    return {reinterpret_cast<const char*>(file.Data()), size_t(file.Length())};
}

std::unique_ptr<DiskFile> MustOpen(const std::filesystem::path& path, DiskFile::Mode mode,
                                   DiskFile::Access access = DiskFile::Access::Mapped) {
    std::string why;
    auto file = DiskFile::Open(path, mode, why, access);
    EXPECT_TRUE(file) << why;
    return file;
}

} // namespace

/// What every stream does, whatever it stands on.
class AnyFile : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (std::string_view(GetParam()) == "memory")
            m_file = std::make_unique<MemFile>();
        else
            m_file = MustOpen(m_folder / "f", DiskFile::Mode::Create);
    }
    ScratchFolder m_folder;
    std::unique_ptr<IFile> m_file;
};
INSTANTIATE_TEST_SUITE_P(Streams, AnyFile, testing::Values("memory", "disk"));

TEST_P(AnyFile, BehavesAsAPlainByteArrayUnderRandomCalls) {
    std::mt19937 random(7);
    std::string model;
    uint64_t position = 0;
    const size_t sizes[] = {0, 1, 4, 30, 1000, 70'000, 300'000};
    for (int step = 0; step < 4000; ++step) {
        const size_t size = sizes[random() % (step % 50 == 0 ? 7 : 5)];
        switch (random() % 5) {
        case 0:
        case 1: {
            const std::string bytes(size, char('a' + step % 26));
            ASSERT_EQ(m_file->Write(bytes.data(), size), size);
            if (size > 0 && model.size() < position + size)
                model.resize(position + size);
            model.replace(position, size > 0 ? size : 0, bytes);
            position += size;
            break;
        }
        case 2: {
            std::string bytes(size, '?');
            const size_t there = position < model.size() ? std::min(size, model.size() - position) : 0;
            ASSERT_EQ(m_file->Read(bytes.data(), size), there);
            ASSERT_EQ(bytes.compare(0, there, model, std::min(position, model.size()), there), 0);
            ASSERT_EQ(m_file->Error(), there < size);
            m_file->ClearError();
            position += there;
            break;
        }
        case 3: // near the end, as writers that patch what they just wrote
            position = model.size() - std::min<size_t>(model.size(), random() % 500);
            ASSERT_TRUE(m_file->Seek(position));
            break;
        default:
            const uint64_t target = random() % (model.size() + 100);
            ASSERT_TRUE(m_file->SeekRelative(int64_t(target) - int64_t(position)));
            position = target;
            break;
        }
        ASSERT_EQ(m_file->Position(), position);
        ASSERT_EQ(m_file->Length(), model.size());
    }
    std::string all(model.size(), 0);
    ASSERT_TRUE(m_file->Seek(0) && m_file->ReadChunked(all.data(), all.size(), 4096));
    EXPECT_TRUE(all == model);
}

TEST_P(AnyFile, FailuresStayUntilClearedAndSayWhatHappened) {
    ASSERT_EQ(m_file->Write("abc", 3), 3u);
    EXPECT_FALSE(m_file->SeekRelative(-4));
    EXPECT_TRUE(m_file->Error());
    const std::string first = m_file->ErrorText();
    EXPECT_FALSE(first.empty());
    char bytes[8];
    EXPECT_EQ(m_file->Read(bytes, 8), 0u);
    EXPECT_EQ(m_file->ErrorText(), first);
    EXPECT_TRUE(m_file->Seek(1));
    EXPECT_EQ(m_file->Read(bytes, 8), 2u);
    m_file->ClearError();
    EXPECT_FALSE(m_file->Error());
    EXPECT_FALSE(m_file->SeekRelative(std::numeric_limits<int64_t>::min()));
}

TEST_P(AnyFile, RecordsOfOtherSizesArePaddedOrSkipped) {
    ASSERT_EQ(m_file->Write("0123456789", 10), 10u);
    const struct {
        uint64_t stored;
        const char* expected;
        uint64_t position;
        bool ok;
    } cases[] = {
        {4, "0123", 4, true}, {2, "01\0\0", 2, true}, {10, "0123", 10, true}, {11, "0123", 10, false}};
    for (const auto& c : cases) {
        char buffer[4] = {'x', 'x', 'x', 'x'};
        ASSERT_TRUE(m_file->Seek(0));
        EXPECT_EQ(m_file->ReadPad(buffer, 4, c.stored), c.ok);
        EXPECT_EQ(std::string(buffer, 4), std::string(c.expected, 4));
        EXPECT_EQ(m_file->Position(), c.position);
        EXPECT_EQ(m_file->Error(), !c.ok);
        m_file->ClearError();
    }
    ASSERT_TRUE(m_file->Seek(8));
    char buffer[4] = {'x', 'x', 'x', 'x'};
    EXPECT_FALSE(m_file->ReadPad(buffer, 4, 4));
    EXPECT_EQ(std::string(buffer, 4), std::string("89\0\0", 4));
}

TEST_P(AnyFile, CopiesFromAnotherStreamAndStopsWhereThatEnds) {
    MemFile source(std::vector<uint8_t>(3'000'000, 'q'));
    ASSERT_TRUE(source.Seek(1));
    EXPECT_TRUE(m_file->Write(source, 2'500'000));
    EXPECT_EQ(source.Position(), 2'500'001u);
    EXPECT_EQ(m_file->Length(), 2'500'000u);
    EXPECT_FALSE(m_file->Write(source, 500'000));
    EXPECT_TRUE(source.Error());
    FaultyFile unseen(source, 0); // shows nothing in memory
    ASSERT_TRUE(source.Seek(0));
    EXPECT_TRUE(m_file->Write(unseen, 1000));
}

TEST(MemFile, ViewsAreReadOnlyAndBudgetsHold) {
    const uint8_t bytes[4] = {1, 2, 3, 4};
    const auto view = MemFile::OverView(bytes, 4);
    EXPECT_EQ(view->View(1, 3), bytes + 1);
    EXPECT_EQ(view->View(1, 4), nullptr);
    EXPECT_FALSE(view->Seek(5));
    EXPECT_EQ(view->Write("x", 1), 0u);
    EXPECT_EQ(view->Take(), std::vector<uint8_t>(bytes, bytes + 4));

    MemFile file;
    file.SetBudget(1000);
    const std::string text(600, 'a');
    EXPECT_EQ(file.Write(text.data(), 600), 600u);
    EXPECT_EQ(file.Write(text.data(), 600), 0u);
    EXPECT_EQ(file.ErrorText(), "out of memory budget (1000 bytes)");
    EXPECT_EQ(file.Write("b", 1), 0u) << "after a failed write the rest would have a hole";
    file.ClearError();
    EXPECT_FALSE(file.Reserve(1001));
    EXPECT_FALSE(file.Error());
    EXPECT_EQ(file.Write(text.data(), 400), 400u);
    EXPECT_EQ(file.Expand(1001), nullptr);
}

TEST(MemFile, BytesGoInAndOutWithoutLoss) {
    MemFile file(std::vector<uint8_t>{'a', 'b', 'c'});
    ASSERT_TRUE(file.Seek(3));
    EXPECT_EQ(file.Write("def", 3), 3u);
    EXPECT_EQ(TextOf(file), "abcdef");
    const std::vector<uint8_t> taken = file.Take();
    EXPECT_EQ(std::string(taken.begin(), taken.end()), "abcdef");
    EXPECT_EQ(file.Length(), 0u);
    std::memcpy(file.Expand(2), "xy", 2);
    EXPECT_EQ(TextOf(file), "xy");
    std::vector<uint8_t> reserved;
    reserved.reserve(100);
    MemFile empty(std::move(reserved));
    EXPECT_EQ(empty.Write("z", 1), 1u);
    EXPECT_EQ(empty.Take(), std::vector<uint8_t>{'z'});
}

TEST(FaultyFile, FailsTheNthCallAndEveryOneAfter) {
    for (uint64_t n = 1; n <= 3; ++n) {
        MemFile inner;
        FaultyFile file(inner, n);
        EXPECT_EQ(file.Write("a", 1) == 1, n > 1);
        EXPECT_EQ(file.Seek(0), n > 2);
        char byte;
        EXPECT_EQ(file.Read(&byte, 1), 0u);
        EXPECT_TRUE(file.Error());
        file.ClearError();
        EXPECT_TRUE(file.Error());
        EXPECT_EQ(file.Calls(), 3u);
    }
}

TEST(DiskFile, EachReasonForNotOpeningIsTold) {
    ScratchFolder folder;
    folder.Put("there", "x");
    using Mode = DiskFile::Mode;
    const struct {
        std::filesystem::path path;
        Mode mode;
        const char* reason;
    } cases[] = {
        {folder / "missing", Mode::Read, "no such file"},
        {folder / "missing" / "f", Mode::Read, "its folder does not exist"},
        {folder / "missing" / "f", Mode::Create, "its folder does not exist"},
        {folder.Path(), Mode::Read, "it is a folder"},
        {folder.Path(), Mode::Create, "it is a folder"},
        {folder / "there", Mode::CreateNew, "it exists already"},
    };
    for (const auto& c : cases) {
        std::string why;
        EXPECT_FALSE(DiskFile::Open(c.path, c.mode, why));
        const std::string doing = c.mode == Mode::Read ? "cannot open '" : "cannot create '";
        EXPECT_EQ(why, doing + ZvPlatform::PathToUtf8(c.path) + "': " + c.reason);
    }
#ifndef _WIN32
    std::string why;
    EXPECT_FALSE(DiskFile::Open("/dev/zero", Mode::Read, why));
    EXPECT_EQ(why, "cannot open '/dev/zero': it is not a regular file");
    std::filesystem::permissions(folder / "there", std::filesystem::perms::none);
    if (!std::ifstream(folder / "there")) { // permissions do not bind the superuser
        EXPECT_FALSE(DiskFile::Open(folder / "there", Mode::Read, why));
        EXPECT_NE(why.find("access denied"), std::string::npos);
    }
#endif
}

TEST(DiskFile, WhatWasWrittenIsReadBackMappedAndBuffered) {
    ScratchFolder folder;
    std::string text;
    {
        const auto file = MustOpen(folder / "f", DiskFile::Mode::CreateNew);
        for (int i = 0; i < 100'000; ++i) {
            file->Write("12345678", 8);
            text += "12345678";
            if (i % 1000 == 0) { // a length in front of what was just written, sometimes far back
                const uint64_t at = file->Length() - std::min<uint64_t>(file->Length(), uint64_t(i) * 7);
                file->Seek(at);
                file->Write("!", 1);
                file->Seek(file->Length());
                text[at < text.size() ? at : text.size() - 1] = '!';
                if (at == text.size())
                    text.back() = '8', text += '!';
            }
        }
        EXPECT_EQ(file->View(0, 1), nullptr);
        EXPECT_TRUE(file->SyncToDisk()) << file->ErrorText();
        EXPECT_TRUE(folder.Get("f") == text);
    }
    for (const auto access : {DiskFile::Access::Mapped, DiskFile::Access::Buffered}) {
        const auto file = MustOpen(folder / "f", DiskFile::Mode::Read, access);
        std::string all(text.size(), 0);
        EXPECT_TRUE(file->ReadChunked(all.data(), all.size(), 777));
        EXPECT_TRUE(all == text);
        EXPECT_FALSE(file->Seek(text.size() + 1));
        EXPECT_EQ(file->View(text.size() - 1, 1) != nullptr, access == DiskFile::Access::Mapped);
        EXPECT_EQ(file->View(text.size(), 1), nullptr);
        EXPECT_EQ(file->Write("x", 1), 0u);
        EXPECT_NE(file->ErrorText().find("it ends at"), std::string::npos) << "the first failure is told";
        EXPECT_TRUE(file->Seek(0) && file->Read(all.data(), 8) == 8) << "reading goes on";
    }
    folder.Put("empty", "");
    EXPECT_EQ(MustOpen(folder / "empty", DiskFile::Mode::Read)->Length(), 0u);
}

TEST(DiskFile, BufferedReadingNoticesThatTheFileBecameShorter) {
    ScratchFolder folder;
    folder.Put("f", std::string(600'000, 'x'));
    const auto file = MustOpen(folder / "f", DiskFile::Mode::Read, DiskFile::Access::Buffered);
    std::error_code failed;
    std::filesystem::resize_file(folder / "f", 1000, failed);
    if (failed)
        return void(std::puts("this system keeps open files as they are"));
    std::string bytes(2000, 0);
    EXPECT_EQ(file->Read(bytes.data(), 2000), 1000u);
    EXPECT_NE(file->ErrorText().find("it has become shorter"), std::string::npos);
}

TEST(DiskFile, OffsetsAreSixtyFourBitsWide) {
    ScratchFolder folder;
    const uint64_t far = 5'000'000'000;
    {
        const auto file = MustOpen(folder / "f", DiskFile::Mode::Create);
        ASSERT_TRUE(file->Seek(far));
        ASSERT_EQ(file->Write("end", 3), 3u);
        if (!file->Flush())
            return void(std::puts(file->ErrorText().c_str()));
    }
    const auto file = MustOpen(folder / "f", DiskFile::Mode::Read);
    char bytes[4] = {};
    EXPECT_EQ(file->Length(), far + 3);
    EXPECT_TRUE(file->Seek(far - 1) && file->Read(bytes, 4) == 4);
    EXPECT_EQ(std::string(bytes, 4), std::string("\0end", 4));
}

#ifdef __linux__
TEST(DiskFile, AFullDiskIsAFailureOfFlushAtTheLatest) {
    const auto file = MustOpen("/dev/full", DiskFile::Mode::Create);
    EXPECT_EQ(file->Write("small", 5), 5u);
    EXPECT_FALSE(file->Flush());
    EXPECT_EQ(file->ErrorText(), "cannot write '/dev/full': the disk is full");
    EXPECT_EQ(file->Write("x", 1), 0u);
    EXPECT_FALSE(file->SyncToDisk());
    const std::string large(1'000'000, 'x');
    file->ClearError();
    EXPECT_EQ(file->Write(large.data(), large.size()), 0u);
    EXPECT_TRUE(file->Error());
}
#endif
