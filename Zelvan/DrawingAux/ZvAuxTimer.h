#pragma once
#include "ZvCore/Api.h"
#include <functional>

/// Calls back at most once a period, whenever whoever has the time (a host, a test) polls it.
class ZV_API ZvAuxTimer {
public:
    using Callback = std::function<void(ZvAuxTimer&)>;
    /// `now`: seconds of a monotonic clock; the first tick is due one period later.
    ZvAuxTimer(int periodMs, double now, Callback callback)
        : m_periodMs(periodMs), m_last(now), m_callback(std::move(callback)) {}
    ZvAuxTimer(const ZvAuxTimer&) = delete;
    ZvAuxTimer& operator=(const ZvAuxTimer&) = delete;

    int PeriodMs() const { return m_periodMs; }
    int Ticks() const { return m_ticks; }
    /// True when it called back. Periods that were missed count once; calls from within the callback do
    /// nothing.
    bool Poll(double now);

private:
    int m_periodMs;
    int m_ticks = 0;
    double m_last;
    bool m_calling = false;
    Callback m_callback;
};
