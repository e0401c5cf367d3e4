#pragma once

#include <QDateTime>
#include <QString>

namespace korvo {

/// The texts of elapsed time and of clock time.
namespace TimeFormatter {

/// Elapsed seconds as "1:02:05": hours without a leading zero and without a bound; a fraction is dropped and a negative
/// duration is zero. A duration that is not finite or beyond 64 bits ends the program.
QString format(double seconds);

/// Clock time as "21:10", in the user's time zone, always with European digits.
QString timeOfDay(const QDateTime &time);

} // namespace TimeFormatter

} // namespace korvo
