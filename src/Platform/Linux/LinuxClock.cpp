#include "Platform/Linux/LinuxClock.h"

#include "Utilities/Completion.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <limits>
#include <memory>
#include <utility>

#include <sys/timerfd.h>
#include <unistd.h>

namespace korvo {

namespace {

/// Completes with true after a duration, once. Completions go on in a later turn of the event loop, so the coroutine
/// that waits may destroy this: it is never inside a signal of ours.
class OneShot {
public:
    OneShot(clockid_t clock, Clock::Seconds duration, const Completion<bool> &done)
    {
        m_fd = ::timerfd_create(clock, TFD_NONBLOCK | TFD_CLOEXEC);
        if (m_fd >= 0)
            startKernelTimer(duration, done);
        else
            startQtTimer(duration, done);
    }

    ~OneShot()
    {
        m_notifier.reset(); // Before the number of its descriptor can get another meaning.
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Q_DISABLE_COPY_MOVE(OneShot)

private:
    /// At least a nanosecond, since a timer set to zero never fires.
    static itimerspec fromNow(Clock::Seconds duration)
    {
        constexpr double century = 100 * 366 * 86400.0;
        itimerspec spec{};
        spec.it_value.tv_nsec = 1;
        if (duration.count() > 0) { // False of what is not a number.
            const double seconds = std::min(duration.count(), century);
            const double whole = std::floor(seconds);
            spec.it_value.tv_sec = time_t(whole);
            spec.it_value.tv_nsec = std::min(long((seconds - whole) * 1e9) + 1, 999999999L);
        }
        return spec;
    }

    void startKernelTimer(Clock::Seconds duration, const Completion<bool> &done)
    {
        const auto spec = fromNow(duration);
        ::timerfd_settime(m_fd, 0, &spec, nullptr);
        m_notifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this, done] {
            quint64 expirations = 0;
            if (::read(m_fd, &expirations, sizeof expirations) != sizeof expirations)
                return; // Woken for nothing.
            m_notifier->setEnabled(false);
            done.complete(true);
        });
    }

    /// Without a free file descriptor: a timer that stands still while the machine is suspended and knows 24 days at
    /// most.
    void startQtTimer(Clock::Seconds duration, const Completion<bool> &done)
    {
        constexpr double most = std::numeric_limits<int>::max();
        const double msecs = std::ceil(duration.count() * 1000);
        m_context = std::make_unique<QObject>();
        QTimer::singleShot(msecs > 0 ? int(std::min(msecs, most)) : 0, Qt::PreciseTimer, m_context.get(),
                           [done] { done.complete(true); });
    }

    int m_fd = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::unique_ptr<QObject> m_context; ///< Of the Qt timer, which does nothing any more without it.
};

QCoro::Task<bool> waitOn(clockid_t clock, Clock::Seconds duration, std::stop_token stop)
{
    if (stop.stop_requested())
        co_return false;
    const Completion<bool> done;
    const OneShot timer(clock, duration, done);
    const std::stop_callback onStop(stop, [done] { done.complete(false); });
    co_return co_await done;
}

} // namespace

QDateTime LinuxClock::now() const
{
    return QDateTime::currentDateTime();
}

Clock::Seconds LinuxClock::uptime() const
{
    return std::chrono::steady_clock::now().time_since_epoch(); // CLOCK_MONOTONIC.
}

QCoro::Task<bool> LinuxClock::sleepFor(Seconds duration, std::stop_token stop)
{
    return waitOn(CLOCK_BOOTTIME, duration, std::move(stop));
}

QCoro::Task<bool> LinuxClock::pauseFor(Seconds duration, std::stop_token stop)
{
    return waitOn(CLOCK_MONOTONIC, duration, std::move(stop));
}

} // namespace korvo
