#include "Views/TimerFigures.h"

#include "UrlCatcher.h"
#include "ViewWorld.h"
#include "Views/Theme.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <cstdio>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace korvo;

class TimerFiguresTest : public QObject {
    Q_OBJECT
private slots:
    void theColourFollowsTheHours_data();
    void theColourFollowsTheHours();
    void theRingStartsOverEachHour_data();
    void theRingStartsOverEachHour();
    void aStartInTheFutureGivesNegativeSeconds();
    void totalTimeIsHoursAndMinutes_data();
    void totalTimeIsHoursAndMinutes();
    void totalTimeEndsTheProgramWithoutANumber_data();
    void totalTimeEndsTheProgramWithoutANumber();
    void thePageOfATaskHasItsIdWithoutHyphens_data();
    void thePageOfATaskHasItsIdWithoutHyphens();
    void onlyATimerWithATaskOpensAPage_data();
    void onlyATimerWithATaskOpensAPage();
};

void TimerFiguresTest::theColourFollowsTheHours_data()
{
    QTest::addColumn<double>("elapsed");
    QTest::addColumn<QColor>("color");
    QTest::newRow("a start in the future is green") << -5.0 << theme::systemGreen;
    QTest::newRow("the first second is green") << 0.0 << theme::systemGreen;
    QTest::newRow("the last second of the first hour is green") << 3599.0 << theme::systemGreen;
    QTest::newRow("an hour is cyan") << 3600.0 << theme::systemCyan;
    QTest::newRow("just below two hours is cyan") << 7199.9 << theme::systemCyan;
    QTest::newRow("two hours are orange") << 7200.0 << theme::systemOrange;
    QTest::newRow("just below four hours is orange") << 14399.9 << theme::systemOrange;
    QTest::newRow("four hours are red") << 14400.0 << theme::systemRed;
    QTest::newRow("red for good") << 400000.0 << theme::systemRed;
}

void TimerFiguresTest::theColourFollowsTheHours()
{
    QFETCH(double, elapsed);
    QTEST(ringColor(elapsed), "color");
}

void TimerFiguresTest::theRingStartsOverEachHour_data()
{
    QTest::addColumn<double>("elapsed");
    QTest::addColumn<double>("progress");
    QTest::newRow("nothing") << 0.0 << 0.0;
    QTest::newRow("half an hour") << 1800.0 << 0.5;
    QTest::newRow("one second before the hour") << 3599.0 << 3599.0 / 3600;
    QTest::newRow("an hour is empty, not full") << 3600.0 << 0.0;
    QTest::newRow("a quarter of the fifth hour") << 15300.0 << 0.25;
    QTest::newRow("a start in the future is negative") << -900.0 << -0.25;
}

void TimerFiguresTest::theRingStartsOverEachHour()
{
    QFETCH(double, elapsed);
    QTEST(hourProgress(elapsed), "progress");
}

void TimerFiguresTest::aStartInTheFutureGivesNegativeSeconds()
{
    const QDateTime start(QDate(2026, 11, 21), QTime(9, 30));
    QCOMPARE(elapsedSeconds(start, start.addMSecs(1500)), 1.5);
    QCOMPARE(elapsedSeconds(start, start.addSecs(-5)), -5.0);
}

void TimerFiguresTest::totalTimeIsHoursAndMinutes_data()
{
    QTest::addColumn<std::optional<double>>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("absent is a dash") << std::optional<double>() << u"—"_s;
    QTest::newRow("nothing") << std::optional(0.0) << u"0m"_s;
    QTest::newRow("59 seconds are no minute") << std::optional(59.0) << u"0m"_s;
    QTest::newRow("a fraction is dropped") << std::optional(59.99) << u"0m"_s;
    QTest::newRow("five minutes without hours") << std::optional(300.0) << u"5m"_s;
    QTest::newRow("an hour") << std::optional(3600.0) << u"1h 0m"_s;
    QTest::newRow("an hour and a half") << std::optional(5400.0) << u"1h 30m"_s;
    QTest::newRow("two hours and five minutes") << std::optional(7500.0) << u"2h 5m"_s;
    QTest::newRow("there is no day unit") << std::optional(360000.0) << u"100h 0m"_s;
}

void TimerFiguresTest::totalTimeIsHoursAndMinutes()
{
    QFETCH(std::optional<double>, seconds);
    QTEST(formatTotalTime(seconds), "text");
}

void TimerFiguresTest::totalTimeEndsTheProgramWithoutANumber_data()
{
    QTest::addColumn<QString>("seconds");
    QTest::newRow("not a number") << u"nan"_s;
    QTest::newRow("infinite") << u"inf"_s;
    QTest::newRow("too large for 64 bits") << u"9223372036854775808"_s;
    QTest::newRow("too large for 64 bits below zero") << u"-9223372036854777856"_s;
}

void TimerFiguresTest::totalTimeEndsTheProgramWithoutANumber()
{
    QFETCH(QString, seconds);
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--format"_s, seconds});
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    QCOMPARE(child.exitCode(), SIGABRT);
    QCOMPARE(child.readAllStandardOutput(), QByteArray());
}

void TimerFiguresTest::thePageOfATaskHasItsIdWithoutHyphens_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QUrl>("url");
    QTest::newRow("every hyphen goes") << u"0f6b1c2d-aaaa-4bbb-8ccc-123456789abc"_s
                                       << QUrl(u"https://www.notion.so/0f6b1c2daaaa4bbb8ccc123456789abc"_s);
    QTest::newRow("none to remove") << u"0f6b1c2d"_s << QUrl(u"https://www.notion.so/0f6b1c2d"_s);
    QTest::newRow("a blank makes no address") << u"no id"_s << QUrl();
    QTest::newRow("half an escape makes no address") << u"100%"_s << QUrl();
}

void TimerFiguresTest::thePageOfATaskHasItsIdWithoutHyphens()
{
    QFETCH(QString, id);
    QFETCH(QUrl, url);
    QCOMPARE(notionPageUrl(id).isValid(), url.isValid());
    if (url.isValid())
        QCOMPARE(notionPageUrl(id), url);
}

void TimerFiguresTest::onlyATimerWithATaskOpensAPage_data()
{
    QTest::addColumn<bool>("hasTimer");
    QTest::addColumn<std::optional<QString>>("taskId");
    QTest::addColumn<QList<QUrl>>("opened");
    QTest::newRow("no timer") << false << std::optional<QString>() << QList<QUrl>();
    QTest::newRow("a timer without a task") << true << std::optional<QString>() << QList<QUrl>();
    QTest::newRow("a task") << true << std::optional(u"ab-cd"_s) << QList{QUrl(u"https://www.notion.so/abcd"_s)};
    QTest::newRow("an id that makes no address") << true << std::optional(u"a b"_s) << QList<QUrl>();
}

void TimerFiguresTest::onlyATimerWithATaskOpensAPage()
{
    QFETCH(bool, hasTimer);
    QFETCH(std::optional<QString>, taskId);
    ViewWorld world;
    if (hasTimer)
        world.showTimer({.taskId = taskId});
    world.poll();
    QCOMPARE(world.viewModel->activeTimer().has_value(), hasTimer);
    const UrlCatcher browser;
    openInNotion(*world.viewModel);
    QTEST(browser.opened, "opened");
}

int main(int argc, char **argv)
{
    const QGuiApplication app(argc, argv);
    if (app.arguments().value(1) == "--format"_L1) {
        const rlimit noCore{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);
        std::puts(qPrintable(formatTotalTime(app.arguments().at(2).toDouble())));
        return 0;
    }
    TimerFiguresTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "TimerFiguresTest.moc"
