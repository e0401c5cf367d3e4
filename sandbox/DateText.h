#pragma once

#include <QDateTime>
#include <QString>
#include <QTimeZone>

#include <optional>

namespace korvo::sandbox {

/// One end of a date property: a day, or a minute with its offset. The API keeps no seconds.
struct DateText {
    QDate day;                       ///< As written, in the value's own offset.
    std::optional<QDateTime> minute; ///< None for a day without a time.

    /// "2024-01-01", or "2025-09-22T11:19:00.000+02:00": always milliseconds and a numeric offset, never "Z".
    QString text() const;

    /// The day in UTC, which is what a filter by day looks at.
    QDate utcDay() const;

    /// The instant, with midnight UTC for a day without a time.
    QDateTime instant() const;
};

/// Reads ISO 8601 with "T" or a space, with any seconds (cut off) and "Z", an offset or none. None is taken as time in
/// `zone`, or as UTC if no zone is given. With a zone only "Z" may stand in the text. None if the text has another form.
std::optional<DateText> parseDateText(const QString &text, const std::optional<QTimeZone> &zone = std::nullopt);

/// The form of created_time and last_edited_time: cut to the minute, in UTC, with "Z".
QString stampText(const QDateTime &time);

} // namespace korvo::sandbox
