#include "sandbox/DateCondition.h"

#include "sandbox/ApiError.h"
#include "sandbox/DateText.h"

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

/// -1, 0 or 1 as the stored value lies before, at or after the operand.
int compare(const DateText &stored, const DateText &operand)
{
    if (!operand.minute) {
        const QDate storedDay = stored.utcDay();
        return storedDay < operand.day ? -1 : (storedDay > operand.day ? 1 : 0);
    }
    const QDateTime storedInstant = stored.instant();
    return storedInstant < operand.instant() ? -1 : (storedInstant > operand.instant() ? 1 : 0);
}

bool holds(const QString &name, int order)
{
    if (name == "equals"_L1)
        return order == 0;
    if (name == "before"_L1)
        return order < 0;
    if (name == "after"_L1)
        return order > 0;
    if (name == "on_or_before"_L1)
        return order <= 0;
    return order >= 0;
}

/// First and last day of a span named relative to today; none for an unknown name.
std::optional<std::pair<QDate, QDate>> span(const QString &name, QDate today)
{
    const QDate monday = today.addDays(1 - today.dayOfWeek());
    if (name == "past_week"_L1)
        return std::pair(today.addDays(-7), today);
    if (name == "past_month"_L1)
        return std::pair(today.addMonths(-1), today);
    if (name == "past_year"_L1)
        return std::pair(today.addYears(-1), today);
    if (name == "this_week"_L1)
        return std::pair(monday, monday.addDays(6));
    if (name == "next_week"_L1)
        return std::pair(today, today.addDays(7));
    if (name == "next_month"_L1)
        return std::pair(today, today.addMonths(1));
    if (name == "next_year"_L1)
        return std::pair(today, today.addYears(1));
    return std::nullopt;
}

} // namespace

std::optional<std::function<bool(const QString &)>> compileDateOperator(const QString &name, const QJsonValue &operand,
                                                                        const QString &path, const QDateTime &now)
{
    static const QStringList comparisons{u"equals"_s, u"before"_s, u"after"_s, u"on_or_before"_s, u"on_or_after"_s};
    if (comparisons.contains(name)) {
        const auto date = operand.isString() ? parseDateText(operand.toString()) : std::nullopt;
        if (!date)
            throw bodyError(path + u'.' + name + u" should be a valid ISO 8601 date string"_s, operand);
        return [name, operand = *date](const QString &text) {
            const auto stored = parseDateText(text);
            return stored && holds(name, compare(*stored, operand));
        };
    }
    if (const auto days = span(name, now.toUTC().date())) {
        if (!operand.isObject())
            throw bodyError(path + u'.' + name + u" should be an object"_s, operand);
        return [days = *days](const QString &text) {
            const auto stored = parseDateText(text);
            return stored && stored->utcDay() >= days.first && stored->utcDay() <= days.second;
        };
    }
    return std::nullopt;
}

} // namespace korvo::sandbox
