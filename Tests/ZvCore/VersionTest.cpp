#include "ZvCore/Version.h"

#include <gtest/gtest.h>

#include <string>

using ZvCore::Version;

TEST(Version, TextIsMadeOfTheThreeNumbers) {
    EXPECT_EQ(std::string(Version::Text()), std::to_string(Version::Major()) + "." +
                                                std::to_string(Version::Minor()) + "." +
                                                std::to_string(Version::Patch()));
}

TEST(Version, BuildStampIsAMidnightAfterTheFirstReleaseDay) {
    constexpr uint64_t TicksOfADay = 864'000'000'000;
    // 11,644,473,600 s lie between 1601-01-01 and 1970-01-01; 1,795,305,600 s are 2026-11-22.
    constexpr uint64_t FirstReleaseDay = (11'644'473'600 + 1'795'305'600) * 10'000'000;
    EXPECT_GE(Version::BuildStamp(), FirstReleaseDay);
    EXPECT_EQ(Version::BuildStamp() % TicksOfADay, 0u);
}
