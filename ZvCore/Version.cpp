#include "ZvCore/Version.h"

#include <chrono>

namespace ZvCore {

namespace {

// ZELVAN_RELEASE_DATE is a decimal yyyymmdd.
constexpr std::chrono::year_month_day ReleaseDay{std::chrono::year(ZELVAN_RELEASE_DATE / 10000),
                                                 std::chrono::month(ZELVAN_RELEASE_DATE / 100 % 100),
                                                 std::chrono::day(ZELVAN_RELEASE_DATE % 100)};
static_assert(ReleaseDay.ok(), "the release date is no calendar day");

constexpr std::chrono::year_month_day EpochDay{std::chrono::year(1601), std::chrono::month(1),
                                               std::chrono::day(1)};
using Ticks = std::chrono::duration<int64_t, std::ratio<1, 10'000'000>>;

} // namespace

const char* Version::Text() {
    return ZELVAN_VERSION_TEXT;
}

int Version::Major() {
    return ZELVAN_VERSION_MAJOR;
}

int Version::Minor() {
    return ZELVAN_VERSION_MINOR;
}

int Version::Patch() {
    return ZELVAN_VERSION_PATCH;
}

uint64_t Version::BuildStamp() {
    constexpr Ticks sinceEpoch = std::chrono::sys_days(ReleaseDay) - std::chrono::sys_days(EpochDay);
    return static_cast<uint64_t>(sinceEpoch.count());
}

} // namespace ZvCore
