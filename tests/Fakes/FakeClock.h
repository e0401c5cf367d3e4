#pragma once

#include "Utilities/Clock.h"
#include "Utilities/Completion.h"

#include <QList>

#include <algorithm>
#include <memory>
#include <stop_token>

namespace korvo {

/// A clock that a test turns by hand. Sleepers wake only by `advance` or by their stop token.
class FakeClock final : public Clock {
public:
    enum class Kind { sleep, pause };
    struct Wait {
        Kind kind;
        double seconds;
        bool operator==(const Wait &) const = default;
    };

    explicit FakeClock(QDateTime start = QDateTime(QDate(2026, 11, 21), QTime(9, 30))) : m_now(std::move(start)) { }

    QDateTime now() const override { return m_now; }
    Seconds uptime() const override { return Seconds(m_uptime); }
    QCoro::Task<bool> sleepFor(Seconds duration, std::stop_token stop) override
    {
        return waitFor(Kind::sleep, duration.count(), std::move(stop));
    }
    QCoro::Task<bool> pauseFor(Seconds duration, std::stop_token stop) override
    {
        return waitFor(Kind::pause, duration.count(), std::move(stop));
    }

    /// Moves the time on and wakes those whose time has come.
    void advance(double seconds)
    {
        m_now = m_now.addMSecs(qRound64(seconds * 1000));
        m_uptime += seconds;
        const auto sleepers = m_sleepers;
        for (const auto &sleeper : sleepers) {
            if (sleeper.wakeAt <= m_now)
                sleeper.done.complete(true);
        }
        m_sleepers.removeIf([](const Sleeper &sleeper) { return sleeper.done.isComplete(); });
    }
    void setNow(const QDateTime &now) { m_now = now; } ///< Wakes no one.

    /// How many waits are under way.
    int sleeperCount()
    {
        m_sleepers.removeIf([](const Sleeper &sleeper) { return sleeper.done.isComplete(); });
        return int(m_sleepers.size());
    }

    QList<Wait> waits;             ///< Each wait that was asked for, in order.
    bool isInstant = false;        ///< Every wait ends at once, as if its time had passed.
    bool arePausesInstant = false; ///< Every pause does; sleeps wait as ever.

private:
    struct Sleeper {
        QDateTime wakeAt;
        Completion<bool> done;
    };

    /// The time after so many seconds; that of a wait without an end in sight is ten thousand years off, either way.
    QDateTime after(double seconds) const
    {
        constexpr double mostSeconds = 3.2e11;
        return m_now.addMSecs(qRound64(std::clamp(seconds, -mostSeconds, mostSeconds) * 1000));
    }

    QCoro::Task<bool> waitFor(Kind kind, double seconds, std::stop_token stop)
    {
        waits.append({kind, seconds});
        Completion<bool> done;
        if (stop.stop_requested())
            co_return false;
        if (isInstant || (arePausesInstant && kind == Kind::pause)) {
            m_now = after(seconds);
            m_uptime += seconds;
            done.complete(true);
        } else {
            m_sleepers.append({after(seconds), done});
        }
        const std::stop_callback onStop(stop, [done] { done.complete(false); });
        co_return co_await done;
    }

    QDateTime m_now;
    double m_uptime = 0;
    QList<Sleeper> m_sleepers;
};

} // namespace korvo
