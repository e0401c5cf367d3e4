#include "Utilities/TimeFormatter.h"

#include "Fakes/LocalZone.h"

#include <QLocale>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <cstdio>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace korvo;

class TimeFormatterTest : public QObject {
    Q_OBJECT
private slots:
    void formatGivesHoursMinutesSeconds_data();
    void formatGivesHoursMinutesSeconds();
    void formatEndsTheProgramWithoutADuration_data();
    void formatEndsTheProgramWithoutADuration();
    void timeOfDayGivesHoursAndMinutes_data();
    void timeOfDayGivesHoursAndMinutes();
    void timeOfDayIsOfTheLocalZone_data();
    void timeOfDayIsOfTheLocalZone();
    void digitsAreEuropeanInAnyLocale_data();
    void digitsAreEuropeanInAnyLocale();
};

void TimeFormatterTest::formatGivesHoursMinutesSeconds_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << 0.0 << u"0:00:00"_s;
    QTest::newRow("less than a second is nothing") << 0.999 << u"0:00:00"_s;
    QTest::newRow("a fraction is dropped") << 59.999 << u"0:00:59"_s;
    QTest::newRow("a minute") << 60.0 << u"0:01:00"_s;
    QTest::newRow("one second before the hour") << 3599.0 << u"0:59:59"_s;
    QTest::newRow("an hour") << 3600.0 << u"1:00:00"_s;
    QTest::newRow("minutes and seconds have two digits") << 3725.0 << u"1:02:05"_s;
    QTest::newRow("there is no day unit") << 86400.0 << u"24:00:00"_s;
    QTest::newRow("hours have no upper bound") << 360000.0 << u"100:00:00"_s;
    QTest::newRow("a start ahead of the clock shows as zero") << -5.0 << u"0:00:00"_s;
    QTest::newRow("half a second ahead shows as zero") << -0.5 << u"0:00:00"_s;
    QTest::newRow("beyond 32 bits") << 5000000000.0 * 3600 << u"5000000000:00:00"_s;
    QTest::newRow("the longest of 64 bits") << 9223372036854774784.0 << u"2562047788015215:13:04"_s;
    QTest::newRow("the most negative of 64 bits") << -9223372036854775808.0 << u"0:00:00"_s;
}

void TimeFormatterTest::formatGivesHoursMinutesSeconds()
{
    QFETCH(double, seconds);
    QTEST(TimeFormatter::format(seconds), "text");
}

void TimeFormatterTest::formatEndsTheProgramWithoutADuration_data()
{
    QTest::addColumn<QString>("seconds");
    QTest::newRow("not a number") << u"nan"_s;
    QTest::newRow("infinite") << u"inf"_s;
    QTest::newRow("infinite backwards") << u"-inf"_s;
    QTest::newRow("just beyond 64 bits") << u"9223372036854775808"_s;
    QTest::newRow("beyond 64 bits backwards") << u"-9223372036854777856"_s;
}

void TimeFormatterTest::formatEndsTheProgramWithoutADuration()
{
    QFETCH(QString, seconds);
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--format"_s, seconds});
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    QCOMPARE(child.exitCode(), SIGABRT);
    QCOMPARE(child.readAllStandardOutput(), QByteArray());
}

void TimeFormatterTest::timeOfDayGivesHoursAndMinutes_data()
{
    QTest::addColumn<QTime>("time");
    QTest::addColumn<QString>("text");
    QTest::newRow("five past nine in the morning") << QTime(9, 5) << u"09:05"_s;
    QTest::newRow("ten past nine in the evening") << QTime(21, 10) << u"21:10"_s;
    QTest::newRow("midnight is hour 00") << QTime(0, 0) << u"00:00"_s;
    QTest::newRow("seconds are dropped") << QTime(23, 59, 59, 999) << u"23:59"_s;
}

void TimeFormatterTest::timeOfDayGivesHoursAndMinutes()
{
    QFETCH(QTime, time);
    QTEST(TimeFormatter::timeOfDay(QDateTime(QDate(2026, 11, 21), time)), "text");
}

void TimeFormatterTest::timeOfDayIsOfTheLocalZone_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("text");
    QTest::newRow("UTC") << "UTC"_ba << u"20:15"_s;
    QTest::newRow("another day already") << "Asia/Tokyo"_ba << u"05:15"_s;
    QTest::newRow("an offset with minutes") << "Asia/Kathmandu"_ba << u"02:00"_s;
}

void TimeFormatterTest::timeOfDayIsOfTheLocalZone()
{
    QFETCH(QByteArray, zone);
    const LocalZone localZone(zone);
    const QDateTime elsewhere(QDate(2026, 11, 21), QTime(22, 15), Qt::OffsetFromUTC, 2 * 3600);
    QTEST(TimeFormatter::timeOfDay(elsewhere), "text");
}

void TimeFormatterTest::digitsAreEuropeanInAnyLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::newRow("Persian") << u"fa_IR"_s;
    QTest::newRow("Egyptian Arabic") << u"ar_EG"_s;
}

void TimeFormatterTest::digitsAreEuropeanInAnyLocale()
{
    QFETCH(QString, locale);
    const QLocale before;
    QLocale::setDefault(QLocale(locale));
    const bool hasOwnDigits = QLocale().zeroDigit() != u"0"_s;
    const auto elapsed = TimeFormatter::format(3725);
    const auto clock = TimeFormatter::timeOfDay(QDateTime(QDate(2026, 11, 21), QTime(21, 10)));
    QLocale::setDefault(before);

    QVERIFY(hasOwnDigits);
    QCOMPARE(elapsed, u"1:02:05"_s);
    QCOMPARE(clock, u"21:10"_s);
}

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    if (app.arguments().value(1) == "--format"_L1) {
        const rlimit noCore{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);
        std::puts(qPrintable(TimeFormatter::format(app.arguments().at(2).toDouble())));
        return 0;
    }
    TimeFormatterTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "TimeFormatterTest.moc"
