#include "Utilities/LocalDay.h"

#include <QTime>

#include <algorithm>

namespace korvo {

namespace {

/// What clocks on the wall show at an instant, written down as if it were UTC.
QDateTime wallClock(qint64 msecs)
{
    const auto local = QDateTime::fromMSecsSinceEpoch(msecs, Qt::LocalTime);
    return QDateTime(local.date(), local.time(), Qt::UTC);
}

qint64 offsetAt(qint64 msecs)
{
    return wallClock(msecs).toMSecsSinceEpoch() - msecs;
}

} // namespace

QDateTime LocalDay::start(QDate day)
{
    // QDate::startOfDay() gives the later one of two midnights, so the two are worked out from the offsets on both
    // sides of any change. The larger offset makes the earlier instant.
    const QDateTime midnight(day, QTime(0, 0), Qt::UTC);
    const auto wall = midnight.toMSecsSinceEpoch();
    constexpr qint64 aside = qint64(36) * 3600 * 1000;
    const auto before = offsetAt(wall - aside);
    const auto after = offsetAt(wall + aside);
    for (const auto offset : {std::max(before, after), std::min(before, after)}) {
        if (wallClock(wall - offset) == midnight)
            return QDateTime::fromMSecsSinceEpoch(wall - offset, Qt::UTC);
    }
    if (const auto start = day.startOfDay(); start.isValid())
        return start.toUTC();
    return QDateTime::fromMSecsSinceEpoch(wall - before, Qt::UTC); // The day was left out: when the clocks jumped.
}

} // namespace korvo
