#pragma once

#include "Utilities/Clock.h"
#include "Utilities/Completion.h"

#include <QList>

#include <algorithm>
#include <optional>

namespace korvo::campaign {

/// A clock that the campaign turns. Sleeps end when it is turned that far; pauses turn it themselves and end at once.
/// Keeps nothing of what is over.
class TurnedClock final : public Clock {
public:
    explicit TurnedClock(const QDateTime &start) : m_now(start.toMSecsSinceEpoch()) { }

    QDateTime now() const override { return QDateTime::fromMSecsSinceEpoch(m_now); }
    Seconds uptime() const override { return Seconds(double(m_now) / 1000.0); }
    QCoro::Task<bool> sleepFor(Seconds duration, std::stop_token stop) override
    {
        Completion<bool> done;
        if (stop.stop_requested())
            co_return false;
        m_lastSleep = duration.count();
        m_sleepers.append({m_now + milliseconds(duration), done});
        const std::stop_callback onStop(stop, [done] { done.complete(false); });
        co_return co_await done;
    }
    QCoro::Task<bool> pauseFor(Seconds duration, std::stop_token stop) override
    {
        Completion<bool> done;
        if (stop.stop_requested())
            co_return false;
        m_now += std::max<qint64>(0, milliseconds(duration));
        const auto end = [done] { done.complete(true); };
        QMetaObject::invokeMethod(QCoreApplication::instance(), end, Qt::QueuedConnection);
        co_return co_await done;
    }

    qint64 milliseconds() const { return m_now; }    ///< Since the epoch.
    double lastSleep() const { return m_lastSleep; } ///< Seconds that were last asked for.

    /// When the first sleeper wakes; none if nobody sleeps.
    std::optional<qint64> nextWake()
    {
        forget();
        const auto first = std::ranges::min_element(m_sleepers, {}, &Sleeper::wakeAt);
        return first == m_sleepers.end() ? std::nullopt : std::optional(first->wakeAt);
    }
    int sleeperCount()
    {
        forget();
        return int(m_sleepers.size());
    }

    /// Turns it forward to that time, or lets it be if that is over, and wakes those whose time has come.
    void turnTo(qint64 time)
    {
        m_now = std::max(m_now, time);
        const auto sleepers = m_sleepers;
        for (const auto &sleeper : sleepers) {
            if (sleeper.wakeAt <= m_now)
                sleeper.done.complete(true);
        }
        forget();
    }

private:
    struct Sleeper {
        qint64 wakeAt;
        Completion<bool> done;
    };

    static qint64 milliseconds(Seconds duration) { return qRound64(std::min(duration.count(), 3.2e11) * 1000.0); }
    void forget()
    {
        m_sleepers.removeIf([](const Sleeper &sleeper) { return sleeper.done.isComplete(); });
    }

    qint64 m_now;
    double m_lastSleep = 0;
    QList<Sleeper> m_sleepers;
};

} // namespace korvo::campaign
