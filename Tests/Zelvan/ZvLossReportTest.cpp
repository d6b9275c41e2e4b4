#include "Zelvan/ZvLossReport.h"
#include <gtest/gtest.h>

TEST(ZvLossReport, CountsEqualReasonsAndKnowsWhetherAnythingWasLost) {
    using Fate = ZvLossReport::Fate;
    ZvLossReport report;
    report.Add(Fate::Kept, "lines", 5);
    report.Add(Fate::Dropped, "text", 0);
    EXPECT_TRUE(report.IsLossless());
    report.Add(Fate::Approximated, "arcs written as straight segments");
    report.Add(Fate::Approximated, "arcs written as straight segments", 2);
    ZvLossReport sum;
    sum.Add(Fate::Dropped, "images", 7);
    sum.AddAll(report);
    EXPECT_FALSE(report.IsLossless());
    EXPECT_EQ(sum.Total(Fate::Approximated), 3);
    EXPECT_EQ(sum.Count(Fate::Dropped, "images"), 7);
    EXPECT_EQ(sum.Count(Fate::Dropped, "lines"), 0);
    EXPECT_EQ(sum.ToString(),
              "kept 5: lines\napproximated 3: arcs written as straight segments\ndropped 7: images\n");
}
