#pragma once

#include <QCoroTask>
#include <QDateTime>

#include <chrono>
#include <stop_token>

namespace korvo {

/// The time of day, time as such, and the two kinds of waiting. One for the process, an own one in tests.
class Clock {
public:
    using Seconds = std::chrono::duration<double>;

    virtual ~Clock() = default;

    /// The present instant in the local time zone, to the millisecond.
    virtual QDateTime now() const = 0;

    /// Seconds on the clock that `pauseFor` waits on, from whatever moment: for what lasts fractions of a second.
    virtual Seconds uptime() const = 0;

    /// Waits on a clock that goes on while the machine is suspended. True when the time has passed, false as soon as
    /// `stop` is requested. Nothing or less than nothing to wait ends at the next turn of the event loop.
    virtual QCoro::Task<bool> sleepFor(Seconds duration, std::stop_token stop) = 0;

    /// Waits on a monotonic clock that stands still while the machine is suspended. Otherwise like `sleepFor`.
    virtual QCoro::Task<bool> pauseFor(Seconds duration, std::stop_token stop) = 0;

    /// The clock of the process. The platform sets it before anything else runs.
    static Clock &shared();
    static void setShared(Clock *clock); ///< Must outlive its use; not owned.
};

} // namespace korvo
