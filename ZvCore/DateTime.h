#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <compare>
#include <cstdint>

/// A moment in UTC: units of 100 ns since 1601-01-01T00:00:00Z (the form files store).
struct ZV_API DateTime {
    uint64_t ticks = 0;

    static constexpr uint64_t kTicksPerSecond = 10'000'000;
    /// Gregorian. Fields beyond their range carry over (month 13 is the next January); before 1601 it is the
    /// zero date.
    static DateTime FromUtc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
    static DateTime FromUnixSeconds(double seconds);
    double ToUnixSeconds() const;
    /// "2012-09-03 14:05:06Z"; "9999-12-31 23:59:59Z" for anything later.
    XStringW ToString() const;
    friend constexpr auto operator<=>(const DateTime&, const DateTime&) = default;
};

/// Where time comes from. Tests set their own.
class ZV_API IZvClock {
public:
    virtual ~IZvClock() = default;
    virtual DateTime Now() const = 0;
    /// Seconds from an arbitrary start, never going backwards.
    virtual double MonotonicSeconds() const = 0;
    /// The system's clock; lives as long as the program.
    static const IZvClock& System();
};
