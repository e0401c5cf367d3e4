#include "Utilities/TimeFormatter.h"

#include <algorithm>

namespace korvo {

QString TimeFormatter::format(double seconds)
{
    constexpr double limit = 9223372036854775808.0; // 2 to the 63rd.
    if (!(seconds >= -limit && seconds < limit))    // Also false of what is not a number.
        qFatal("TimeFormatter::format: no duration: %g", seconds);
    const auto total = std::max(qint64(seconds), qint64(0));
    return QString::asprintf("%lld:%02d:%02d", total / 3600, int(total % 3600 / 60), int(total % 60));
}

QString TimeFormatter::timeOfDay(const QDateTime &time)
{
    return time.toLocalTime().toString(u"HH:mm"); // Of the C locale, hence European digits.
}

} // namespace korvo
