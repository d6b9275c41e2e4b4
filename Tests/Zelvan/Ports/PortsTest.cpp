// What the engine answers itself where nobody was plugged in.
#include "Zelvan/Ports/ZvMissingGeometryKernel.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/Ports/ZvTableTextMeasure.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include <gtest/gtest.h>

namespace {

TEST(ZvSilentHost, AnswersTheDefaultAndLogsTheQuestion) {
    std::string log;
    const auto former = ZvLog::SetSink([&](ZvLog::Level, std::string_view line) { log += line; });
    ZvSilentHost host;
    EXPECT_TRUE(host.AskYesNo(u"Keep going?", true));
    EXPECT_FALSE(host.AskYesNo(u"Delete all?", false));
    host.Tell(u"There is nothing to undo.");
    ZvFileRequest request;
    EXPECT_TRUE(host.AskFile(request).empty());
    ZvLog::SetSink(former);
    ASSERT_EQ(host.Questions().size(), 3u);
    EXPECT_EQ(host.Questions()[1].question.text, XStringW(u"Delete all?"));
    EXPECT_NE(log.find("Keep going? - answered Yes"), std::string::npos);
    EXPECT_NE(log.find("Delete all? - answered No"), std::string::npos);
    EXPECT_NE(log.find("There is nothing to undo."), std::string::npos);
}

TEST(ZvSilentHost, KeepsWhatItWasTold) {
    ZvSilentHost host;
    host.Print(u"Periodic Auto Backup... ");
    host.Print(u"Done.\n");
    EXPECT_EQ(host.Printed(), XStringW(u"Periodic Auto Backup... Done.\n"));
    {
        const ZvWaitCursor wait(&host);
        EXPECT_TRUE(host.IsWaiting());
    }
    EXPECT_FALSE(host.IsWaiting());
    EXPECT_TRUE(host.StartProgress(u"Saving")->Step("records", 1, 2));
}

TEST(ZvTableTextMeasure, WidthsAddUpOverCodePoints) {
    ZvTableTextMeasure& measure = ZvTableTextMeasure::Default();
    const auto width = [&](std::u16string_view run, bool bold = false) {
        return measure.Measure(run, {u"", bold}).width;
    };
    EXPECT_EQ(width(u""), 0);
    EXPECT_NEAR(width(u"iW"), width(u"i") + width(u"W"), 1e-12);
    EXPECT_GT(width(u"W"), 3 * width(u"i"));
    EXPECT_EQ(width(u"e\u0301"), width(u"e"));         // a combining accent
    EXPECT_EQ(width(u"\U00020000"), width(u"\u4E2D")); // a surrogate pair is one character
    EXPECT_EQ(width(u"\xD840"), width(u"0"));          // half a pair
    EXPECT_GT(width(u"a", true), width(u"a"));
    const ZvTextExtent extent = measure.Measure(u"x", {});
    EXPECT_NEAR(extent.ascent + extent.descent, 1, 1e-12);
}

TEST(ZvMissingGeometryKernel, RefusesAndSaysWhy) {
    IZvGeometryKernel& kernel = ZvMissingGeometryKernel::Or(nullptr);
    ZvKernelPolygons out(3);
    std::string why;
    EXPECT_FALSE(kernel.Buffer({}, {}, 1, 8, out, why));
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(why, ZvStrings::Get(ZvStr::KernelMissing));
    EXPECT_EQ(&ZvMissingGeometryKernel::Or(&kernel), &kernel);
}

TEST(ZvStrings, AreFoundByNumber) {
    EXPECT_STREQ(ZvStrings::Get(40000), "Dashed");
    EXPECT_EQ(ZvStrings::GetW(ZvStr::ByLayer), XStringW(u"By Layer"));
    EXPECT_STREQ(ZvStrings::Get(40002), "");
    EXPECT_FALSE(ZvStrings::Has(0));
}

} // namespace
