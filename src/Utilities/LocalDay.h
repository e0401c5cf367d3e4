#pragma once

#include <QDate>
#include <QDateTime>

namespace korvo {

/// Days as the local time zone has them.
namespace LocalDay {

/// The first instant of `day` in the local time zone, given in UTC: its midnight; the earlier one where the clocks are
/// set back over midnight; the end of the gap where they are set forward over it, even over the whole day.
QDateTime start(QDate day);

} // namespace LocalDay

} // namespace korvo
