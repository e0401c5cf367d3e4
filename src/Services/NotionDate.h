#pragma once

#include <QDateTime>
#include <QStringView>

#include <optional>

namespace korvo {

/// The instant of a date text in one of three strict forms, given in UTC and cut to the millisecond; none of any other
/// text. "2024-05-01T09:30:00.123+02:00" with a fraction of any length, "2024-05-01T09:30:00Z" without, and "2024-05-01",
/// which is the beginning of that day in the local time zone. Zones are Z or an offset of less than a day with its
/// colon, years 0001 to 9999; there is no hour 24 and no second 60.
std::optional<QDateTime> parseNotionDate(QStringView text);

} // namespace korvo
