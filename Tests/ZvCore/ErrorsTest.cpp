#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Log.h"
#include "ZvCore/ZvErrors.h"

#include <gtest/gtest.h>
#include <thread>

TEST(ZvErrors, ReportGoesToTheInnermostCaptureAndIntoRecent) {
    ZvErrors::ClearRecent();
    ZvErrorCapture outer;
    {
        ZvErrorCapture inner;
        ZvErrors::Report(ZvErrorCode::NameTaken, "ZvEntityNameTable.Add");
        EXPECT_TRUE(inner.Has(10020) && inner.HasText("NameTable.Add"));
    }
    EXPECT_TRUE(outer.Entries().empty());
    ZvErrors::Fatal("Null record to table.insert");
    ASSERT_EQ(outer.Entries().size(), 1u);
    EXPECT_EQ(outer.Entries()[0].code, ZvErrors::kFatal);
    for (int i = 0; i < 300; ++i)
        ZvErrors::Report(13, std::to_string(i));
    EXPECT_EQ(ZvErrors::Recent().size(), 256u);
    EXPECT_EQ(ZvErrors::Recent().back().context, "299");
    EXPECT_EQ(ZvErrors::Meaning(2003), "the digest of a block does not fit its bytes");
    EXPECT_EQ(ZvErrors::Meaning(123), "unknown error");
}

TEST(ZvErrors, WithoutASinkTheyAreLogged) {
    std::string logged;
    const auto former = ZvLog::SetSink([&logged](ZvLog::Level, std::string_view text) { logged += text; });
    ZvErrors::Report(ZvErrorCode::OutOfMemory, "During IsValidFile");
    ZvLog::SetSink(former);
    EXPECT_EQ(logged, "error 10 (out of memory): During IsValidFile");
}

TEST(IOErrorSet, EqualTextsAreKeptOnceWithACount) {
    IOErrorSet errors, more;
    errors.Add(0, "odd units", IOErrorSet::Severity::Warning);
    EXPECT_FALSE(errors.HasErrors());
    errors.Add(2007, "block 3 is damaged");
    more.Add(2007, "block 3 is damaged");
    more.Add(2007, "block 4 is damaged");
    errors.AddAll(more);
    errors.AddAll(errors);
    EXPECT_TRUE(errors.HasErrors() && errors.Has(2007) && !errors.Has(2003));
    EXPECT_EQ(errors.ToString(),
              "odd units (2 times)\nblock 3 is damaged (4 times)\nblock 4 is damaged (2 times)\n");
    errors.Clear();
    errors.Add(2007, "block 3 is damaged");
    EXPECT_EQ(errors.ToString(), "block 3 is damaged\n");
}

TEST(ZvLog, LinesOfManyThreadsReachTheSinkWholeAndTheSinkMayReplaceItself) {
    EXPECT_FALSE(ZvLog::IsOn());
    std::vector<std::string> lines;
    const auto former =
        ZvLog::SetSink([&lines](ZvLog::Level, std::string_view text) { lines.emplace_back(text); });
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            for (int i = 0; i < 250; ++i)
                ZvLog::Printf(ZvLog::Level::Trace, "file version %d\n", 1075);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(lines, std::vector<std::string>(1000, "file version 1075\n"));
    ZvLog::SetSink([&lines](ZvLog::Level, std::string_view) {
        ZvLog::SetSink({});
        lines.clear();
    });
    ZvLog::Write(ZvLog::Level::Info, "x");
    ZvLog::Write(ZvLog::Level::Info, "nobody hears this");
    EXPECT_TRUE(lines.empty() && !ZvLog::IsOn());
    ZvLog::SetSink(former);
}
