#include "ZvCore/DateTime.h"
#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

namespace {

using Ticks = std::chrono::duration<int64_t, std::ratio<1, DateTime::kTicksPerSecond>>;
constexpr std::chrono::sys_days kEpoch = std::chrono::year(1601) / 1 / 1;
constexpr int64_t kUnixEpochTicks = Ticks(std::chrono::sys_days{} - kEpoch).count();

class SystemClock : public IZvClock {
public:
    DateTime Now() const override {
        const auto sinceUnix = std::chrono::system_clock::now().time_since_epoch();
        const int64_t ticks = kUnixEpochTicks + std::chrono::duration_cast<Ticks>(sinceUnix).count();
        return {ticks > 0 ? uint64_t(ticks) : 0};
    }
    double MonotonicSeconds() const override {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    }
};

} // namespace

DateTime DateTime::FromUtc(int year, int month, int day, int hour, int minute, int second) {
    const std::chrono::sys_days monthStart =
        std::chrono::year_month(std::chrono::year(year), std::chrono::month(1)) / 1 +
        std::chrono::months(month - 1);
    const int64_t days = (monthStart - kEpoch).count() + day - 1;
    const int64_t seconds = days * 86400 + int64_t(hour) * 3600 + int64_t(minute) * 60 + second;
    return {seconds > 0 ? uint64_t(seconds) * kTicksPerSecond : 0};
}

DateTime DateTime::FromUnixSeconds(double seconds) {
    const double ticks = double(kUnixEpochTicks) + seconds * double(kTicksPerSecond);
    if (!(ticks > 0))
        return {};
    if (ticks >= 18446744073709551615.0)
        return {std::numeric_limits<uint64_t>::max()};
    // The whole seconds and the rest are scaled apart: together they would lose the last digits.
    const double whole = std::floor(seconds);
    const auto rest = int64_t(std::llround((seconds - whole) * double(kTicksPerSecond)));
    return {uint64_t(kUnixEpochTicks) + uint64_t(int64_t(whole)) * kTicksPerSecond + uint64_t(rest)};
}

double DateTime::ToUnixSeconds() const {
    const uint64_t wholeSeconds = ticks / kTicksPerSecond;
    constexpr int64_t unixEpochSeconds = kUnixEpochTicks / int64_t(kTicksPerSecond);
    return double(int64_t(wholeSeconds) - unixEpochSeconds) +
           double(ticks % kTicksPerSecond) / double(kTicksPerSecond);
}

XStringW DateTime::ToString() const {
    constexpr std::chrono::sys_days afterLast = std::chrono::year(10000) / 1 / 1;
    constexpr uint64_t lastSecond = uint64_t((afterLast - kEpoch).count()) * 86400 - 1;
    const uint64_t seconds = std::min(ticks / kTicksPerSecond, lastSecond);
    const std::chrono::year_month_day date = kEpoch + std::chrono::days(seconds / 86400);
    const int inDay = int(seconds % 86400);
    return XStringW::Format("%04d-%02u-%02u %02d:%02d:%02dZ", int(date.year()), unsigned(date.month()),
                            unsigned(date.day()), inDay / 3600, inDay / 60 % 60, inDay % 60);
}

const IZvClock& IZvClock::System() {
    static const SystemClock clock;
    return clock;
}
