// RunLoop: delayed calls ordered by due time, on a manual or a wall clock.
#pragma once

#include "kit/Object.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace kit {

class RunLoop {
public:
    /// The main thread's run loop, made on first use. It starts on the manual clock at 0.
    static RunLoop& main();

    enum class Clock {
        Manual,
        Wall
    };
    /// The wall clock follows the system's monotonic time from the moment it is chosen.
    void setClock(Clock clock);
    Clock clock() const { return m_clock; }
    /// Seconds on the loop's clock.
    double now() const;

    /// Runs `action` once, `seconds` from now. The call holds a reference to `target` until it
    /// has run, so the target outlives it. Calls due at the same time run in the order made.
    void performAfterDelay(Object* target, std::function<void()> action, double seconds);
    template <typename T> void performAfterDelay(T* target, void (T::*method)(), double seconds)
    {
        performAfterDelay(
            static_cast<Object*>(target), [target, method] { (target->*method)(); }, seconds);
    }
    /// Drops the calls that have not run yet for this target.
    void cancelPerforms(const Object* target);

    /// Manual clock: moves time forward by `seconds`, running each call as its time comes
    /// (with the clock set to that time), then drains the autorelease pool.
    void advance(double seconds);
    /// Runs what is due now, then drains the autorelease pool; the interactive loop calls it.
    /// Gives how many calls ran, so that a window redraws only when something happened.
    std::size_t runDue();

    std::size_t pendingCount() const { return m_pending.size(); }
    std::optional<double> nextDueTime() const;

private:
    RunLoop() = default;
    struct Pending {
        double due;
        std::uint64_t sequence;
        RefPtr<Object> target;
        std::function<void()> action;
    };
    /// Runs the earliest call due at or before `limit`; false when there is none.
    bool runOneDue(double limit);

    Clock m_clock = Clock::Manual;
    double m_manualNow = 0;
    double m_wallStart = 0;
    double m_wallBase = 0;
    std::uint64_t m_sequence = 0;
    std::vector<Pending> m_pending;
};

} // namespace kit
