#include "Utilities/LocalDay.h"

#include "Fakes/LocalZone.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

class LocalDayTest : public QObject {
    Q_OBJECT
private slots:
    void startIsTheFirstInstantOfTheDay_data();
    void startIsTheFirstInstantOfTheDay();
    void startsOfALongTimeAreTheFirstInstants_data();
    void startsOfALongTimeAreTheFirstInstants();
};

void LocalDayTest::startIsTheFirstInstantOfTheDay_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QDate>("day");
    QTest::addColumn<QString>("start");
    QTest::newRow("UTC") << "UTC"_ba << QDate(2024, 5, 1) << u"2024-05-01T00:00:00.000Z"_s;
    QTest::newRow("east of Greenwich") << "Europe/Berlin"_ba << QDate(2024, 5, 1) << u"2024-04-30T22:00:00.000Z"_s;
    QTest::newRow("west of Greenwich") << "America/New_York"_ba << QDate(2024, 5, 1) << u"2024-05-01T04:00:00.000Z"_s;
    QTest::newRow("fourteen hours ahead")
        << "Pacific/Kiritimati"_ba << QDate(2024, 5, 1) << u"2024-04-30T10:00:00.000Z"_s;
    QTest::newRow("the day the clocks go forward at two")
        << "Europe/Berlin"_ba << QDate(2024, 3, 31) << u"2024-03-30T23:00:00.000Z"_s;
    QTest::newRow("the day after that") << "Europe/Berlin"_ba << QDate(2024, 4, 1) << u"2024-03-31T22:00:00.000Z"_s;
    QTest::newRow("the day the clocks go back at three")
        << "Europe/Berlin"_ba << QDate(2024, 10, 27) << u"2024-10-26T22:00:00.000Z"_s;
    QTest::newRow("no midnight in Sao Paulo")
        << "America/Sao_Paulo"_ba << QDate(2018, 11, 4) << u"2018-11-04T03:00:00.000Z"_s;
    QTest::newRow("no midnight in Cairo") << "Africa/Cairo"_ba << QDate(2024, 4, 26) << u"2024-04-25T22:00:00.000Z"_s;
    QTest::newRow("no midnight in Beirut") << "Asia/Beirut"_ba << QDate(2024, 3, 31) << u"2024-03-30T22:00:00.000Z"_s;
    QTest::newRow("no midnight in Havana")
        << "America/Havana"_ba << QDate(2024, 3, 10) << u"2024-03-10T05:00:00.000Z"_s;
    QTest::newRow("midnight twice in Havana")
        << "America/Havana"_ba << QDate(2024, 11, 3) << u"2024-11-03T04:00:00.000Z"_s;
    QTest::newRow("midnight twice on the Azores")
        << "Atlantic/Azores"_ba << QDate(2024, 10, 27) << u"2024-10-27T00:00:00.000Z"_s;
    QTest::newRow("the hour before midnight twice in Cairo")
        << "Africa/Cairo"_ba << QDate(2024, 11, 1) << u"2024-10-31T22:00:00.000Z"_s;
    QTest::newRow("the hour before midnight twice in Beirut")
        << "Asia/Beirut"_ba << QDate(2024, 10, 27) << u"2024-10-26T22:00:00.000Z"_s;
    QTest::newRow("clocks set forward from 23:30 to 00:30")
        << "America/Toronto"_ba << QDate(1919, 3, 31) << u"1919-03-31T04:30:00.000Z"_s;
    QTest::newRow("a day that Samoa left out")
        << "Pacific/Apia"_ba << QDate(2011, 12, 30) << u"2011-12-30T10:00:00.000Z"_s;
    QTest::newRow("the day after the one left out")
        << "Pacific/Apia"_ba << QDate(2011, 12, 31) << u"2011-12-30T10:00:00.000Z"_s;
    QTest::newRow("before 1970") << "Europe/Berlin"_ba << QDate(1965, 7, 1) << u"1965-06-30T23:00:00.000Z"_s;
    QTest::newRow("after 2038") << "Europe/Berlin"_ba << QDate(2050, 7, 1) << u"2050-06-30T22:00:00.000Z"_s;
}

void LocalDayTest::startIsTheFirstInstantOfTheDay()
{
    QFETCH(QByteArray, zone);
    QFETCH(QDate, day);
    const LocalZone localZone(zone);
    QTEST(LocalDay::start(day).toString(Qt::ISODateWithMs), "start");
}

void LocalDayTest::startsOfALongTimeAreTheFirstInstants_data()
{
    QTest::addColumn<QByteArray>("zone");
    for (const char *zone : {"America/Sao_Paulo", "Africa/Cairo", "Asia/Beirut", "America/Havana", "Atlantic/Azores",
                             "Asia/Tehran", "America/Asuncion", "Australia/Lord_Howe", "America/Scoresbysund"})
        QTest::newRow(zone) << QByteArray(zone);
}

void LocalDayTest::startsOfALongTimeAreTheFirstInstants()
{
    QFETCH(QByteArray, zone);
    const LocalZone localZone(zone);
    // The day is one that the wall clock shows at its start, and did not show a moment before, nor for two hours.
    for (QDate day(2005, 1, 1); day < QDate(2026, 1, 1); day = day.addDays(1)) {
        const auto start = LocalDay::start(day);
        QCOMPARE(start.toLocalTime().date(), day);
        for (const int seconds : {1, 1800, 3600, 7200})
            QCOMPARE(start.addSecs(-seconds).toLocalTime().date(), day.addDays(-1));
    }
}

QTEST_GUILESS_MAIN(LocalDayTest)

#include "LocalDayTest.moc"
