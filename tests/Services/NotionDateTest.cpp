#include "Services/NotionDate.h"

#include "Fakes/LocalZone.h"

#include <QLocale>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

class NotionDateTest : public QObject {
    Q_OBJECT
private slots:
    void readsAnInstant_data();
    void readsAnInstant();
    void readsADayInTheLocalZone_data();
    void readsADayInTheLocalZone();
    void readsNothingElse_data();
    void readsNothingElse();
    void readsTheSameInAnyLocale();
};

void NotionDateTest::readsAnInstant_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("instant");
    const auto row = [](const char *name, const char *text, const char *instant) {
        QTest::newRow(name) << QString::fromLatin1(text) << QString::fromLatin1(instant);
    };
    row("UTC without a fraction", "2024-05-01T09:30:00Z", "2024-05-01T09:30:00.000Z");
    row("UTC with milliseconds", "2024-05-01T09:30:00.123Z", "2024-05-01T09:30:00.123Z");
    row("an offset", "2024-05-01T09:30:00+02:00", "2024-05-01T07:30:00.000Z");
    row("as the API answers", "2025-09-22T11:19:00.000+02:00", "2025-09-22T09:19:00.000Z");
    row("an offset west of Greenwich", "2024-05-01T22:30:00.000-04:00", "2024-05-02T02:30:00.000Z");
    row("an offset with minutes", "2024-05-01T00:15:00.000+05:45", "2024-04-30T18:30:00.000Z");
    row("an offset west of Greenwich with minutes", "2024-05-01T00:15:00.000-03:30", "2024-05-01T03:45:00.000Z");
    row("an offset of zero", "2024-05-01T09:30:00.000+00:00", "2024-05-01T09:30:00.000Z");
    row("an offset of minus zero", "2024-05-01T09:30:00.000-00:00", "2024-05-01T09:30:00.000Z");
    row("the largest offset", "2024-05-01T09:30:00+23:59", "2024-04-30T09:31:00.000Z");
    row("a fraction of one digit", "2024-05-01T09:30:00.5Z", "2024-05-01T09:30:00.500Z");
    row("a fraction of two digits", "2024-05-01T09:30:00.07Z", "2024-05-01T09:30:00.070Z");
    row("a long fraction is cut off", "2024-05-01T09:30:00.123999999999Z", "2024-05-01T09:30:00.123Z");
    row("all nines are not rounded up", "2024-12-31T23:59:59.999999Z", "2024-12-31T23:59:59.999Z");
    row("a leap day", "2024-02-29T12:00:00Z", "2024-02-29T12:00:00.000Z");
    row("a leap day of a full century", "2000-02-29T12:00:00Z", "2000-02-29T12:00:00.000Z");
    row("before 1970", "1969-12-31T23:59:59.250Z", "1969-12-31T23:59:59.250Z");
    row("the first year", "0001-01-01T00:00:00Z", "0001-01-01T00:00:00.000Z");
    row("the last second of the last year", "9999-12-31T23:59:59Z", "9999-12-31T23:59:59.000Z");
}

void NotionDateTest::readsAnInstant()
{
    QFETCH(QString, text);
    const LocalZone zone("America/New_York");
    const auto date = parseNotionDate(text);
    QVERIFY(date);
    QTEST(date->toUTC().toString(Qt::ISODateWithMs), "instant");
}

void NotionDateTest::readsADayInTheLocalZone_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("instant");
    const auto row = [](const char *name, const char *zone, const char *text, const char *instant) {
        QTest::newRow(name) << QByteArray(zone) << QString::fromLatin1(text) << QString::fromLatin1(instant);
    };
    row("UTC", "UTC", "2024-05-01", "2024-05-01T00:00:00.000Z");
    row("midnight in Berlin", "Europe/Berlin", "2024-05-01", "2024-04-30T22:00:00.000Z");
    row("midnight in New York", "America/New_York", "2024-05-01", "2024-05-01T04:00:00.000Z");
    row("the first hour where there is no midnight", "America/Sao_Paulo", "2018-11-04", "2018-11-04T03:00:00.000Z");
    row("the first of two midnights", "America/Havana", "2024-11-03", "2024-11-03T04:00:00.000Z");
    row("a leap day", "Europe/Berlin", "2024-02-29", "2024-02-28T23:00:00.000Z");
    row("the first day there is", "UTC", "0001-01-01", "0001-01-01T00:00:00.000Z");
    row("the last day there is", "UTC", "9999-12-31", "9999-12-31T00:00:00.000Z");
    row("the first day there is in New York, by the sun", "America/New_York", "0001-01-01", "0001-01-01T04:56:02.000Z");
    row("the last day there is in New York", "America/New_York", "9999-12-31", "9999-12-31T05:00:00.000Z");
}

void NotionDateTest::readsADayInTheLocalZone()
{
    QFETCH(QByteArray, zone);
    QFETCH(QString, text);
    const LocalZone localZone(zone);
    const auto date = parseNotionDate(text);
    QVERIFY(date);
    QTEST(date->toUTC().toString(Qt::ISODateWithMs), "instant");
}

void NotionDateTest::readsNothingElse_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing at all") << QString();
    QTest::newRow("a word") << u"tomorrow"_s;
    QTest::newRow("a year") << u"2024"_s;
    QTest::newRow("a month") << u"2024-05"_s;
    QTest::newRow("a day of one digit") << u"2024-05-1"_s;
    QTest::newRow("a year of five digits") << u"12024-05-01"_s;
    QTest::newRow("a year of two digits") << u"24-05-01"_s;
    QTest::newRow("a negative year") << u"-024-05-01"_s;
    QTest::newRow("the year zero") << u"0000-05-01"_s;
    QTest::newRow("a day without dashes") << u"20240501"_s;
    QTest::newRow("a day with slashes") << u"2024/05/01"_s;
    QTest::newRow("the day before the month") << u"01-05-2024"_s;
    QTest::newRow("month zero") << u"2024-00-01"_s;
    QTest::newRow("month thirteen") << u"2024-13-01"_s;
    QTest::newRow("day zero") << u"2024-05-00"_s;
    QTest::newRow("the thirty-first of April") << u"2024-04-31"_s;
    QTest::newRow("a leap day of an ordinary year") << u"2023-02-29"_s;
    QTest::newRow("a leap day of a century") << u"1900-02-29T12:00:00Z"_s;
    QTest::newRow("a blank before") << u" 2024-05-01"_s;
    QTest::newRow("a blank behind") << u"2024-05-01 "_s;
    QTest::newRow("a line feed behind") << u"2024-05-01T09:30:00Z\n"_s;
    QTest::newRow("a zero character behind") << QString(u"2024-05-01"_s + QChar(0));
    QTest::newRow("a T without a time") << u"2024-05-01T"_s;
    QTest::newRow("a day with a zone") << u"2024-05-01Z"_s;
    QTest::newRow("hours alone") << u"2024-05-01T09Z"_s;
    QTest::newRow("no seconds") << u"2024-05-01T09:30Z"_s;
    QTest::newRow("no zone") << u"2024-05-01T09:30:00"_s;
    QTest::newRow("no zone after a fraction") << u"2024-05-01T09:30:00.000"_s;
    QTest::newRow("a blank for the T") << u"2024-05-01 09:30:00Z"_s;
    QTest::newRow("a small t") << u"2024-05-01t09:30:00Z"_s;
    QTest::newRow("a small z") << u"2024-05-01T09:30:00z"_s;
    QTest::newRow("a time without colons") << u"2024-05-01T093000Z"_s;
    QTest::newRow("an hour of one digit") << u"2024-05-01T9:30:00Z"_s;
    QTest::newRow("hour twenty-four") << u"2024-05-01T24:00:00Z"_s;
    QTest::newRow("minute sixty") << u"2024-05-01T09:60:00Z"_s;
    QTest::newRow("second sixty") << u"2016-12-31T23:59:60Z"_s;
    QTest::newRow("a point without a fraction") << u"2024-05-01T09:30:00.Z"_s;
    QTest::newRow("a comma for the point") << u"2024-05-01T09:30:00,123Z"_s;
    QTest::newRow("two fractions") << u"2024-05-01T09:30:00.1.2Z"_s;
    QTest::newRow("a fraction of a minute") << u"2024-05-01T09:30.5Z"_s;
    QTest::newRow("an offset without its colon") << u"2024-05-01T09:30:00+0200"_s;
    QTest::newRow("an offset of hours") << u"2024-05-01T09:30:00+02"_s;
    QTest::newRow("an offset of one digit") << u"2024-05-01T09:30:00+2:00"_s;
    QTest::newRow("an offset of a day") << u"2024-05-01T09:30:00+24:00"_s;
    QTest::newRow("an offset of sixty minutes") << u"2024-05-01T09:30:00+01:60"_s;
    QTest::newRow("an offset with seconds") << u"2024-05-01T09:30:00+01:00:00"_s;
    QTest::newRow("an offset with a true minus sign") << u"2024-05-01T09:30:00\u221202:00"_s;
    QTest::newRow("a sign alone") << u"2024-05-01T09:30:00+"_s;
    QTest::newRow("both signs") << u"2024-05-01T09:30:00-+02:00"_s;
    QTest::newRow("an offset after Z") << u"2024-05-01T09:30:00Z+02:00"_s;
    QTest::newRow("the name of a zone") << u"2024-05-01T09:30:00CET"_s;
    QTest::newRow("the name of a zone in brackets") << u"2024-05-01T09:30:00+02:00[Europe/Berlin]"_s;
    QTest::newRow("a day of the week") << u"2024-W18-3"_s;
    QTest::newRow("a day of the year") << u"2024-122"_s;
    QTest::newRow("Arabic digits") << u"\u0662\u0660\u0662\u0664-\u0660\u0665-\u0660\u0661"_s;
    QTest::newRow("wide digits") << u"\uFF12\uFF10\uFF12\uFF14-05-01"_s;
}

void NotionDateTest::readsNothingElse()
{
    QFETCH(QString, text);
    QVERIFY(!parseNotionDate(text));
}

void NotionDateTest::readsTheSameInAnyLocale()
{
    const QLocale before;
    QLocale::setDefault(QLocale(u"fa_IR"_s));
    const auto date = parseNotionDate(u"2024-05-01T09:30:00.123+02:00");
    QLocale::setDefault(before);
    QVERIFY(date);
    QCOMPARE(*date, QDateTime(QDate(2024, 5, 1), QTime(7, 30, 0, 123), Qt::UTC));
}

QTEST_GUILESS_MAIN(NotionDateTest)

#include "NotionDateTest.moc"
