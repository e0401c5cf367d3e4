#include "Services/NotionDate.h"

#include "Utilities/LocalDay.h"

#include <chrono>

// QDateTime::fromString() and Qt::ISODate take a blank for T, T24:00, +0200, lower-case letters and a missing zone, and
// round a fraction up.

namespace korvo {

namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;

/// Reads a text from left to right. After the first thing that isn't there nothing is there any more.
class Scanner {
public:
    explicit Scanner(QStringView text) : m_rest(text) { }

    /// Exactly `count` digits, of a value of `most` at most.
    int number(int count, int most)
    {
        int value = 0;
        for (; count > 0; --count)
            value = value * 10 + digit();
        if (value > most)
            m_isGood = false;
        return value;
    }

    void character(QChar expected)
    {
        if (!skip(expected))
            m_isGood = false;
    }

    bool skip(QChar wanted)
    {
        if (m_rest.isEmpty() || m_rest.front() != wanted)
            return false;
        m_rest = m_rest.sliced(1);
        return true;
    }

    /// One digit or more after the point of a fraction.
    milliseconds fraction()
    {
        milliseconds value(0);
        int weight = 100;
        do {
            value += milliseconds(weight * digit());
            weight /= 10;
        } while (hasDigit());
        return value;
    }

    bool isAtEnd() const { return m_rest.isEmpty(); }
    bool isGood() const { return m_isGood; }

private:
    bool hasDigit() const { return !m_rest.isEmpty() && m_rest.front() >= u'0' && m_rest.front() <= u'9'; }

    int digit()
    {
        if (!hasDigit()) {
            m_isGood = false;
            return 0;
        }
        const int value = m_rest.front().unicode() - u'0';
        m_rest = m_rest.sliced(1);
        return value;
    }

    QStringView m_rest;
    bool m_isGood = true;
};

std::chrono::year_month_day scanDay(Scanner &scanner)
{
    const std::chrono::year year(scanner.number(4, 9999));
    scanner.character(u'-');
    const std::chrono::month month(unsigned(scanner.number(2, 12)));
    scanner.character(u'-');
    const std::chrono::day day(unsigned(scanner.number(2, 31)));
    return year / month / day;
}

milliseconds scanTime(Scanner &scanner)
{
    milliseconds time = std::chrono::hours(scanner.number(2, 23));
    scanner.character(u':');
    time += minutes(scanner.number(2, 59));
    scanner.character(u':');
    time += std::chrono::seconds(scanner.number(2, 59));
    if (scanner.skip(u'.'))
        time += scanner.fraction();
    return time;
}

minutes scanZone(Scanner &scanner)
{
    if (scanner.skip(u'Z'))
        return minutes(0);
    const bool isBehind = scanner.skip(u'-');
    if (!isBehind)
        scanner.character(u'+');
    minutes offset = std::chrono::hours(scanner.number(2, 23));
    scanner.character(u':');
    offset += minutes(scanner.number(2, 59));
    return isBehind ? -offset : offset;
}

} // namespace

std::optional<QDateTime> parseNotionDate(QStringView text)
{
    Scanner scanner(text);
    const auto day = scanDay(scanner);
    if (!scanner.isGood() || !day.ok() || int(day.year()) == 0)
        return std::nullopt;
    if (scanner.isAtEnd())
        return LocalDay::start(QDate(int(day.year()), int(unsigned(day.month())), int(unsigned(day.day()))));

    scanner.character(u'T');
    const auto time = scanTime(scanner);
    const auto offset = scanZone(scanner);
    if (!scanner.isGood() || !scanner.isAtEnd())
        return std::nullopt;
    const milliseconds sinceEpoch = std::chrono::sys_days(day).time_since_epoch() + time - offset;
    return QDateTime::fromMSecsSinceEpoch(sinceEpoch.count(), Qt::UTC);
}

} // namespace korvo
