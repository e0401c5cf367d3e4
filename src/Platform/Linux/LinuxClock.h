#pragma once

#include "Utilities/Clock.h"

namespace korvo {

/// The clocks of the Linux kernel. Each wait has a timer of the kernel of its own while it lasts; nothing else runs.
class LinuxClock final : public Clock {
public:
    QDateTime now() const override;
    Seconds uptime() const override;

    /// Waits on CLOCK_BOOTTIME: after a suspension in which the time has passed it ends at once. Durations of more than
    /// a century count as a century. Source: timerfd_create(2).
    QCoro::Task<bool> sleepFor(Seconds duration, std::stop_token stop) override;

    /// Waits on CLOCK_MONOTONIC, otherwise like `sleepFor`.
    QCoro::Task<bool> pauseFor(Seconds duration, std::stop_token stop) override;
};

} // namespace korvo
