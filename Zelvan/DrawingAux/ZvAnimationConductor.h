#pragma once
#include "ZvCore/Api.h"
#include <memory>
#include <vector>

/// Something that changes with time (a view that glides to its target, a blinking mark).
class ZV_API IZvAnimation {
public:
    virtual ~IZvAnimation() = default;
    /// `elapsed`: seconds since the animation started. False ends it.
    virtual bool Advance(double elapsed) = 0;
};

/// Advances the animations of a drawing whenever the time is told to it.
class ZV_API ZvAnimationConductor {
public:
    ZvAnimationConductor() = default;
    ~ZvAnimationConductor();
    ZvAnimationConductor(const ZvAnimationConductor&) = delete;
    ZvAnimationConductor& operator=(const ZvAnimationConductor&) = delete;

    /// `now`: seconds of a monotonic clock. The first Advance comes with the next tick. Answers a number for
    /// Stop, never 0.
    int Start(std::unique_ptr<IZvAnimation> animation, double now);
    /// False when it has ended. An animation may stop itself or others while it advances.
    bool Stop(int id);
    void StopAll();
    bool IsRunning(int id) const;
    int Count() const;
    /// Answers how many still run. Animations started during a tick first advance with the next.
    int Tick(double now);

private:
    struct Running {
        int id = 0; // 0: stopped during a tick
        double start = 0;
        std::unique_ptr<IZvAnimation> animation;
    };
    std::vector<Running> m_running;
    std::vector<Running> m_started; // during a tick
    int m_lastId = 0;
    bool m_ticking = false;
};
