#include "sandbox/DateText.h"

#include <QRegularExpression>

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

int offsetSeconds(const QString &text)
{
    const int sign = text.startsWith(u'-') ? -1 : 1;
    const QString digits = QString(text).remove(u':').mid(1);
    return sign * (digits.left(2).toInt() * 3600 + digits.mid(2).toInt() * 60);
}

} // namespace

QString DateText::text() const
{
    if (!minute)
        return day.toString(Qt::ISODate);
    const int offset = minute->offsetFromUtc() / 60;
    return minute->toString(u"yyyy-MM-dd'T'HH:mm':00.000'"_s) + (offset < 0 ? u'-' : u'+')
        + u"%1:%2"_s.arg(std::abs(offset) / 60, 2, 10, QChar(u'0')).arg(std::abs(offset) % 60, 2, 10, QChar(u'0'));
}

QDate DateText::utcDay() const
{
    return minute ? minute->toUTC().date() : day;
}

QDateTime DateText::instant() const
{
    return minute ? minute->toUTC() : QDateTime(day, QTime(0, 0), Qt::UTC);
}

std::optional<DateText> parseDateText(const QString &text, const std::optional<QTimeZone> &zone)
{
    static const QRegularExpression form(
        u"\\A(\\d{4}-\\d{2}-\\d{2})(?:[Tt ](\\d{2}):(\\d{2})(?::([0-5]\\d)(?:[.,]\\d+)?)?(Z|z|[+-]\\d{2}:?[0-5]\\d)?)?\\z"_s);
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    DateText date{.day = QDate::fromString(match.captured(1), Qt::ISODate), .minute = std::nullopt};
    if (!date.day.isValid())
        return std::nullopt;
    if (match.captured(2).isEmpty())
        return date;
    const QTime time(match.captured(2).toInt(), match.captured(3).toInt());
    if (!time.isValid())
        return std::nullopt;
    const QString offset = match.captured(5).toUpper();
    if (zone) {
        if (!offset.isEmpty() && offset != "Z"_L1)
            return std::nullopt;
        const QDateTime local = offset.isEmpty() ? QDateTime(date.day, time, *zone)
                                                 : QDateTime(date.day, time, Qt::UTC).toTimeZone(*zone);
        date.minute = local.toOffsetFromUtc(local.offsetFromUtc());
        date.day = date.minute->date();
    } else {
        const int seconds = offset.isEmpty() || offset == "Z"_L1 ? 0 : offsetSeconds(offset);
        if (std::abs(seconds) > 14 * 3600)
            return std::nullopt;
        date.minute = QDateTime(date.day, time, Qt::OffsetFromUTC, seconds);
    }
    return date;
}

QString stampText(const QDateTime &time)
{
    return time.toUTC().toString(u"yyyy-MM-dd'T'HH:mm':00.000Z'"_s);
}

} // namespace korvo::sandbox
