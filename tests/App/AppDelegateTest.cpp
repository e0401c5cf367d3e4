#include "AppDelegate.h"
#include "Fakes/FakeNotion.h"
#include "Fakes/FakePlatform.h"
#include "Fakes/NotionPages.h"
#include "Fakes/TestSettings.h"
#include "Utilities/Spawn.h"
#include "Views/Theme.h"

#include <QImage>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QString trackerQuery = u"POST /databases/tracker/query"_s;

/// The picture at `scale` pixels a point, with a template image in white.
QImage render(const StatusImage &image, int scale = 4)
{
    QImage picture((image.size * scale).toSize(), QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(Qt::white);
    image.draw(painter, image.size);
    return picture;
}

/// The colour at a point of the ring, `degrees` clockwise from twelve o'clock.
QColor ringColor(const QImage &picture, double degrees)
{
    const double radians = qDegreesToRadians(degrees);
    const double scale = picture.width() / 18.0;
    return picture.pixelColor(int(scale * (9 + 6.5 * std::sin(radians))), int(scale * (9 - 6.5 * std::cos(radians))));
}

/// The same colour but for what blending rounds.
bool isNear(const QColor &one, const QColor &other)
{
    return qAbs(one.red() - other.red()) <= 3 && qAbs(one.green() - other.green()) <= 3
        && qAbs(one.blue() - other.blue()) <= 3;
}

} // namespace

class AppDelegateTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void launchDoesAllInOrder();
    void itemIsNeverBlank();
    void permissionForNotificationsIsAskedOnceAtLaunch();
    void endTakesAllDownInOrder();
    void aStartAfterTheEndIsItsOwn();
    void aRunningTimerIsNotStoppedAtTheEnd();
    void closingTheLastWindowDoesNotEndTheProgram();
    void signalsAreLoggedAtFaultLevel();
    void uncaughtExceptionsAreLoggedWithReasonAndStack();
    void anExceptionWithoutAReasonLogsNoReason();
    void quittingDuringAPollEndsCleanly();

    void ringColourFollowsTheHours_data();
    void ringColourFollowsTheHours();
    void ringStartsOverEachHour();
    void zeroProgressDrawsAShortStrokeWithTheDotOnIt();
    void arcRunsClockwiseFromTwelve();
    void titleIsABlankAndTheTime();
    void aStartInTheFutureIsGreenAndShowsZero();
    void withANotchActiveTheItemShowsTheSymbolOnly();
    void aNotchWithoutItsInterfaceLeavesTheRing();
    void noScreenAtAllHasNoNotch();
    void onlyTheFirstScreenCountsForTheNotch();
    void aRunningTimerOutweighsANetworkError();
    void aNetworkErrorShowsTheWarningUntilAPollSucceeds();
    void aStoppedEntryCountsAsNoTimer();
    void theTickMovesTheClock();
    void theTickComesEachSecondUntilTheEnd();
    void theReminderComesOnceAlsoWithANotchActive_data();
    void theReminderComesOnceAlsoWithANotchActive();
    void aTimerOfAnotherDeviceThatIsOverTheLimitIsRemindedOfAtTheFirstTick();
    void aTimerExactlyAsOldAsTheLimitIsRemindedOfAtTheFirstTick();
    void aStoppedEntryIsNotRemindedOf();
    void toolTipNamesTheTaskAndChangesWithTheMinute();
    void aPageOfAGatewayIsCutToALineInTheToolTip();
    void nearlyAnHourIsANearlyFullRing();
    void lineAndDotAreAsWideAsTheyShould();
    void menuNamesTheRunningTask();
    void anyNameIsOneShortLineOfTheMenu_data();
    void anyNameIsOneShortLineOfTheMenu();
    void theFirstStartWithANotchSwitchesItsInterfaceOn();
    void aLaterStartWithANotchLeavesTheSavedValue_data();
    void aLaterStartWithANotchLeavesTheSavedValue();
    void aStartWithoutANotchSwitchesItsInterfaceOffWhateverWasSaved();
    void theEndGivesTheShortcutBack();

private:
    struct World {
        FakeNotion notion;
        FakePlatform platform;
        TestSettings settings;
        std::unique_ptr<AppDelegate> delegate;
    };

    FakeNotion &notion() { return m_world->notion; }
    FakeStatusItem &item() { return *m_world->platform.statusItem; }
    /// Lets a poll see an entry that began so many seconds ago; then the program is launched.
    void launchWithTimer(double elapsed, const QString &status = u"Running"_s);
    void launch();
    std::shared_ptr<EventList> events() const { return m_world->platform.events; }
    /// Has the events tell where the timer of the tick starts and stops.
    void watchTheTick();
    /// Waits until the loop sleeps.
    void settle() { QTRY_VERIFY(m_world->platform.fakeClock.sleeperCount() > 0); }

    std::unique_ptr<World> m_world;
};

void AppDelegateTest::init()
{
    m_world = std::make_unique<World>();
    TestSettings::configure(m_world->settings.settings);
    m_world->delegate = std::make_unique<AppDelegate>(m_world->platform, notion(), m_world->settings.settings);
    notion().answerRows(trackerQuery, {});
    notion().answerRows(u"POST /databases/tasks/query"_s, {});
}

void AppDelegateTest::cleanup()
{
    events()->beforeEach = nullptr;
    m_world->delegate.reset();
    QVERIFY(finishSpawned(2000));
    m_world.reset();
}

void AppDelegateTest::launch()
{
    m_world->delegate->applicationDidFinishLaunching();
    settle();
}

void AppDelegateTest::launchWithTimer(double elapsed, const QString &status)
{
    const auto start = m_world->platform.fakeClock.now().addMSecs(qint64(-elapsed * 1000)).toUTC();
    notion().answerRows(trackerQuery,
                        {pages::page(u"e1"_s,
                                     {{u"Start"_s, pages::date(start.toString(Qt::ISODateWithMs))},
                                      {u"Status"_s, pages::select(status)},
                                      {u"Task"_s, pages::relation({u"t1"_s})}})});
    notion().answer(u"GET /pages/t1"_s, pages::task(u"t1"_s, u"Write the letter"_s));
    m_world->delegate->timerViewModel().startPollingIfConfigured();
    settle();
    launch();
}

void AppDelegateTest::watchTheTick()
{
    const auto isTicking = [this] {
        const auto *tick = m_world->delegate->findChild<QTimer *>(u"statusBarTimer"_s);
        return tick && tick->isActive();
    };
    events()->beforeEach = [this, isTicking, was = isTicking()]() mutable {
        if (std::exchange(was, isTicking()) != was)
            events()->all.append(was ? u"tick started"_s : u"tick stopped"_s);
    };
}

void AppDelegateTest::launchDoesAllInOrder()
{
    notion().events = events();
    watchTheTick();
    m_world->settings.settings.setShowDockIcon(true);
    m_world->delegate->applicationDidFinishLaunching();
    QCOMPARE(
        events()->all,
        QStringList({u"INFO App launched — applicationDidFinishLaunching"_s, u"exception handler"_s,
                     u"signal handler"_s, u"status item made"_s, u"image symbol timer"_s, u"INFO Status item created"_s,
                     u"tick started"_s, u"tile present"_s, u"authorization"_s, u"INFO Polling started"_s, trackerQuery,
                     u"POST /databases/tasks/query"_s, u"INFO Physical notch detected: false"_s,
                     u"INFO No notch — menu bar mode only"_s, u"key install"_s, u"key grab"_s,
                     u"INFO Global hotkey registered (keyCode: 45, modifiers: 768)"_s, u"INFO App launch complete"_s}));
}

void AppDelegateTest::itemIsNeverBlank()
{
    notion().isHolding = true;
    m_world->delegate->applicationDidFinishLaunching();
    QCOMPARE(item().image.key, u"symbol timer"_s);
    QCOMPARE(item().image.description, u"Korvo"_s);
    QCOMPARE(item().title, QString());
}

void AppDelegateTest::permissionForNotificationsIsAskedOnceAtLaunch()
{
    QCOMPARE(m_world->platform.fakeNotifications.authorizationCount, 0);
    launchWithTimer(60);
    m_world->platform.fakeClock.setNow(m_world->platform.fakeClock.now().addSecs(1));
    QTRY_COMPARE(item().title, u" 0:01:01"_s);
    QCOMPARE(m_world->platform.fakeNotifications.authorizationCount, 1);
    QVERIFY(m_world->platform.fakeNotifications.shown.isEmpty()); // Reminders are off.
}

void AppDelegateTest::endTakesAllDownInOrder()
{
    m_world->settings.settings.setShowDockIcon(true);
    launchWithTimer(600);
    QTRY_VERIFY(m_world->platform.fakeDockTile.content);
    item().click();
    QVERIFY(m_world->platform.panel->isVisible());
    m_world->platform.fakeClock.arePausesInstant = true;
    m_world->platform.keyGrabber->press();
    QTRY_VERIFY(m_world->platform.inputPanel && m_world->platform.inputPanel->isVisible());

    watchTheTick();
    events()->all.clear();
    m_world->delegate->applicationWillTerminate();
    QTRY_COMPARE(events()->all,
                 QStringList({u"INFO App terminating — applicationWillTerminate"_s, u"key ungrab"_s, u"key uninstall"_s,
                              u"panel orderOut"_s, u"quick add orderOut"_s, u"tick stopped"_s, u"tile none"_s,
                              u"INFO Polling stopped"_s, u"status item gone"_s, u"name released"_s,
                              u"INFO Polling task finished (cancelled: true)"_s}));
    QVERIFY(m_world->platform.statusItem.isNull());
}

void AppDelegateTest::aStartAfterTheEndIsItsOwn()
{
    launch();
    QCOMPARE(m_world->platform.fakeSingleInstance.releaseCount, 0);
    m_world->delegate->applicationWillTerminate();
    QCOMPARE(m_world->platform.fakeSingleInstance.releaseCount, 1);
    m_world->platform.fakeSingleInstance.startAgain(); // On its way already.
    m_world->platform.fakeDockTile.click();
    QCOMPARE(m_world->platform.panelCount, 0);
}

void AppDelegateTest::aRunningTimerIsNotStoppedAtTheEnd()
{
    launchWithTimer(60);
    notion().asked.clear();
    m_world->delegate->applicationWillTerminate();
    QVERIFY(finishSpawned(2000));
    QVERIFY(notion().asked.isEmpty());
}

void AppDelegateTest::closingTheLastWindowDoesNotEndTheProgram()
{
    QVERIFY(!m_world->delegate->applicationShouldTerminateAfterLastWindowClosed());
}

void AppDelegateTest::signalsAreLoggedAtFaultLevel()
{
    launch();
    QVERIFY(m_world->platform.signalHandler);
    m_world->platform.signalHandler(15);
    QCOMPARE(m_world->platform.fakeLog.lines.last(), u"FAULT Received signal 15"_s);
}

void AppDelegateTest::uncaughtExceptionsAreLoggedWithReasonAndStack()
{
    launch();
    m_world->platform.fakeLog.lines.clear();
    m_world->platform.exceptionHandler({u"std::bad_alloc"_s, u"no memory"_s, {u"inner"_s, u"outer"_s}});
    QCOMPARE(
        m_world->platform.fakeLog.lines,
        QStringList({u"FAULT Uncaught exception: std::bad_alloc — no memory"_s, u"FAULT Stack trace: inner\nouter"_s}));
}

void AppDelegateTest::anExceptionWithoutAReasonLogsNoReason()
{
    launch();
    m_world->platform.fakeLog.lines.clear();
    m_world->platform.exceptionHandler({u"int"_s, std::nullopt, {}});
    QCOMPARE(m_world->platform.fakeLog.lines.first(), u"FAULT Uncaught exception: int — no reason"_s);
}

void AppDelegateTest::quittingDuringAPollEndsCleanly()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().isHolding = true;
    m_world->delegate->applicationDidFinishLaunching();
    QTRY_COMPARE(notion().heldCount(), 1);
    notion().release();
    QTRY_COMPARE(notion().asked.size(), 2); // The page of the task is being read.
    m_world->delegate->applicationWillTerminate();
    QVERIFY(finishSpawned(2000));
    QCOMPARE(m_world->platform.fakeLog.lines.last(), u"INFO Polling task finished (cancelled: true)"_s);
}

void AppDelegateTest::ringColourFollowsTheHours_data()
{
    QTest::addColumn<double>("elapsed");
    QTest::addColumn<QColor>("color");
    QTest::newRow("a new timer is green") << 0.0 << theme::systemGreen;
    QTest::newRow("3599 seconds are green") << 3599.0 << theme::systemGreen;
    QTest::newRow("3600 seconds are cyan") << 3600.0 << theme::systemCyan;
    QTest::newRow("7199 seconds are cyan") << 7199.0 << theme::systemCyan;
    QTest::newRow("7200 seconds are orange") << 7200.0 << theme::systemOrange;
    QTest::newRow("14399 seconds are orange") << 14399.0 << theme::systemOrange;
    QTest::newRow("14400 seconds are red") << 14400.0 << theme::systemRed;
    QTest::newRow("a thousand hours are red") << 3600000.0 << theme::systemRed;
}

void AppDelegateTest::ringColourFollowsTheHours()
{
    QFETCH(double, elapsed);
    QFETCH(QColor, color);
    launchWithTimer(elapsed);
    const auto track = ringColor(render(item().image), 180); // Of the arc or of the track.
    QVERIFY2(isNear(track, color), qPrintable(track.name()));
    QVERIFY(!item().image.isTemplate);
    QCOMPARE(item().image.size, QSizeF(18, 18));
}

void AppDelegateTest::ringStartsOverEachHour()
{
    launchWithTimer(3600 + 900);
    const auto picture = render(item().image);
    QCOMPARE(ringColor(picture, 45).alpha(), 255);
    QVERIFY(qAbs(ringColor(picture, 180).alpha() - 51) <= 2); // The track, a fifth as strong.
}

void AppDelegateTest::zeroProgressDrawsAShortStrokeWithTheDotOnIt()
{
    launchWithTimer(3600);
    const auto picture = render(item().image);
    QCOMPARE(ringColor(picture, 3.6).rgb(), qRgb(255, 255, 255)); // The dot, at a hundredth of the circle.
    QCOMPARE(ringColor(picture, 354).alpha(), 255);               // The round cap reaches a little to the left.
    QVERIFY(ringColor(picture, 90).alpha() < 60);
}

void AppDelegateTest::arcRunsClockwiseFromTwelve()
{
    launchWithTimer(1800);
    const auto picture = render(item().image);
    QCOMPARE(ringColor(picture, 90).rgb(), theme::systemGreen.rgb());
    QCOMPARE(ringColor(picture, 90).alpha(), 255);
    QCOMPARE(ringColor(picture, 180).rgb(), qRgb(255, 255, 255));
    QVERIFY(ringColor(picture, 270).alpha() < 60);
}

void AppDelegateTest::titleIsABlankAndTheTime()
{
    launchWithTimer(3725);
    QCOMPARE(item().title, u" 1:02:05"_s);
}

void AppDelegateTest::aStartInTheFutureIsGreenAndShowsZero()
{
    launchWithTimer(-90);
    QCOMPARE(item().title, u" 0:00:00"_s);
    const auto picture = render(item().image);
    QVERIFY(isNear(ringColor(picture, 180), theme::systemGreen));
    // No more than a speck, not the nearly full ring of the hour before.
    QCOMPARE(ringColor(picture, 3.6).rgb(), qRgb(255, 255, 255));
    for (const double degrees : {90.0, 180.0, 270.0})
        QVERIFY(ringColor(picture, degrees).alpha() < 60);
}

void AppDelegateTest::withANotchActiveTheItemShowsTheSymbolOnly()
{
    m_world->platform.fakeScreens.setSingle(QRectF(0, 0, 1512, 982), 32);
    m_world->settings.settings.setUseNotchUI(true);
    launchWithTimer(60);
    QCOMPARE(item().image.key, u"symbol timer"_s);
    QCOMPARE(item().image.description, u"Korvo"_s);
    QCOMPARE(item().title, QString());
}

void AppDelegateTest::aNotchWithoutItsInterfaceLeavesTheRing()
{
    m_world->platform.fakeScreens.setSingle(QRectF(0, 0, 1512, 982), 32);
    m_world->platform.fakeDefaults.set({{u"hasSetNotchDefault4"_s, true}});
    m_world->settings.settings.setUseNotchUI(false);
    launchWithTimer(60);
    QCOMPARE(item().title, u" 0:01:00"_s);
}

void AppDelegateTest::noScreenAtAllHasNoNotch()
{
    m_world->platform.fakeScreens.all.clear();
    m_world->settings.settings.setUseNotchUI(true);
    QVERIFY(!m_world->delegate->hasPhysicalNotch());
    launchWithTimer(60);
    QCOMPARE(item().title, u" 0:01:00"_s);
}

void AppDelegateTest::onlyTheFirstScreenCountsForTheNotch()
{
    m_world->platform.fakeScreens.all = {{QRectF(0, 0, 1920, 1080), 0}, {QRectF(1920, 0, 1512, 982), 32}};
    QVERIFY(!m_world->delegate->hasPhysicalNotch());
}

void AppDelegateTest::aRunningTimerOutweighsANetworkError()
{
    launchWithTimer(60);
    notion().forget(trackerQuery);
    m_world->platform.fakeClock.advance(30);
    QTRY_VERIFY(m_world->delegate->timerViewModel().hasNetworkError());
    QTRY_COMPARE(item().title, u" 0:01:30"_s);
    QVERIFY(item().image.key.startsWith(u"ring"_s));
}

void AppDelegateTest::aNetworkErrorShowsTheWarningUntilAPollSucceeds()
{
    notion().forget(trackerQuery);
    launch();
    QTRY_COMPARE(item().image.key, u"symbol wifi.exclamationmark"_s);
    QCOMPARE(item().image.description, QString());
    QCOMPARE(item().title, QString());
    QCOMPARE(item().text, u"Resource not found"_s);
    notion().answerRows(trackerQuery, {});
    m_world->platform.fakeClock.advance(60);
    QTRY_COMPARE(item().image.key, u"symbol timer"_s);
}

void AppDelegateTest::aStoppedEntryCountsAsNoTimer()
{
    launchWithTimer(60, u"Stopped"_s);
    QVERIFY(m_world->delegate->timerViewModel().activeTimer());
    QCOMPARE(item().image.key, u"symbol timer"_s);
}

void AppDelegateTest::theTickMovesTheClock()
{
    launchWithTimer(60);
    m_world->platform.fakeClock.setNow(m_world->platform.fakeClock.now().addSecs(1));
    QTRY_COMPARE(item().title, u" 0:01:01"_s);
}

void AppDelegateTest::theTickComesEachSecondUntilTheEnd()
{
    launch();
    const auto *tick = m_world->delegate->findChild<QTimer *>(u"statusBarTimer"_s);
    QVERIFY(tick);
    QVERIFY(tick->isActive());
    QVERIFY(!tick->isSingleShot());
    QCOMPARE(tick->interval(), 1000);
    m_world->delegate->applicationWillTerminate();
    QVERIFY(!tick->isActive());
}

void AppDelegateTest::theReminderComesOnceAlsoWithANotchActive_data()
{
    QTest::addColumn<double>("inset");
    QTest::newRow("in the tray") << 0.0;
    QTest::newRow("with a notch active") << 32.0;
}

void AppDelegateTest::theReminderComesOnceAlsoWithANotchActive()
{
    QFETCH(double, inset);
    m_world->platform.fakeScreens.setSingle(QRectF(0, 0, 1512, 982), inset);
    m_world->settings.settings.setUseNotchUI(true);
    m_world->settings.settings.setReminderEnabled(true);
    m_world->settings.settings.setReminderHours(1);
    launchWithTimer(3599);
    const auto &shown = m_world->platform.fakeNotifications.shown;
    QVERIFY(shown.isEmpty());
    m_world->platform.fakeClock.setNow(m_world->platform.fakeClock.now().addSecs(1));
    QTRY_COMPARE(shown.size(), 1);
    QCOMPARE(shown.first().title, u"Timer Running"_s);
    QCOMPARE(shown.first().body, u"Your timer has been running for over 1 hours."_s);
    m_world->platform.fakeClock.setNow(m_world->platform.fakeClock.now().addSecs(60));
    QTRY_COMPARE(item().text, u"Running for 1:01"_s);
    QCOMPARE(shown.size(), 1);
}

void AppDelegateTest::aTimerOfAnotherDeviceThatIsOverTheLimitIsRemindedOfAtTheFirstTick()
{
    m_world->settings.settings.setReminderEnabled(true);
    launch();
    QVERIFY(m_world->platform.fakeNotifications.shown.isEmpty());
    const auto start = m_world->platform.fakeClock.now().addSecs(-8 * 3600).toUTC();
    notion().answerRows(trackerQuery,
                        {pages::page(u"e1"_s,
                                     {{u"Start"_s, pages::date(start.toString(Qt::ISODateWithMs))},
                                      {u"Status"_s, pages::select(u"Running"_s)}})});
    m_world->platform.fakeClock.advance(60);
    QTRY_COMPARE(m_world->platform.fakeNotifications.shown.size(), 1);
}

void AppDelegateTest::aTimerExactlyAsOldAsTheLimitIsRemindedOfAtTheFirstTick()
{
    m_world->settings.settings.setReminderEnabled(true);
    m_world->settings.settings.setReminderHours(8);
    launchWithTimer(8 * 3600); // The clock stands still, so it gets no older.
    QTRY_COMPARE(m_world->platform.fakeNotifications.shown.size(), 1);
    QCOMPARE(m_world->platform.fakeNotifications.shown.first().body,
             u"Your timer has been running for over 8 hours."_s);
}

void AppDelegateTest::aStoppedEntryIsNotRemindedOf()
{
    m_world->settings.settings.setReminderEnabled(true);
    m_world->settings.settings.setReminderHours(0);
    launchWithTimer(60, u"Stopped"_s);
    QVERIFY(m_world->platform.fakeNotifications.shown.isEmpty());
}

void AppDelegateTest::toolTipNamesTheTaskAndChangesWithTheMinute()
{
    launchWithTimer(3725);
    QCOMPARE(item().headline, u"Write the letter"_s);
    QCOMPARE(item().text, u"Running for 1:02"_s);
}

void AppDelegateTest::aPageOfAGatewayIsCutToALineInTheToolTip()
{
    notion().forget(trackerQuery);
    notion().answer(trackerQuery, {{u"html"_s, QString(5000000, u'<')}, {u"more\nlines"_s, 1}}, 403);
    launch();
    QTRY_VERIFY(item().text.startsWith(u"Server error 403: "_s));
    QCOMPARE(item().text.size(), 200);
    QVERIFY(item().text.endsWith(u'…'));
}

void AppDelegateTest::nearlyAnHourIsANearlyFullRing()
{
    launchWithTimer(3599);
    const auto picture = render(item().image);
    for (const double degrees : {20.0, 90.0, 180.0, 270.0, 340.0})
        QCOMPARE(ringColor(picture, degrees).alpha(), 255);
}

void AppDelegateTest::lineAndDotAreAsWideAsTheyShould()
{
    launchWithTimer(1800);
    constexpr int scale = 20;
    const auto picture = render(item().image, scale);
    // Along the line from the centre to three o'clock, where the arc stands alone.
    int line = 0;
    for (int x = 9 * scale; x < 18 * scale; ++x)
        line += picture.pixelColor(x, 9 * scale).alpha() > 200 ? 1 : 0;
    QVERIFY2(qAbs(line - 2.5 * scale) <= 2, qPrintable(QString::number(line)));
    // Down from the centre, where the dot is: white in the middle of the arc's end.
    int dot = 0;
    for (int y = 9 * scale; y < 18 * scale; ++y)
        dot += picture.pixelColor(9 * scale, y).rgb() == qRgb(255, 255, 255) ? 1 : 0;
    QVERIFY2(qAbs(dot - 3 * scale) <= 2, qPrintable(QString::number(dot)));
}

void AppDelegateTest::menuNamesTheRunningTask()
{
    launch();
    QCOMPARE(item().menu.at(2).label, u"No timer running"_s);
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(u"GET /pages/t1"_s, pages::task(u"t1"_s, u"Write the letter"_s));
    m_world->platform.fakeClock.advance(60);
    QTRY_COMPARE(item().menu.at(2).label, u"Write the letter"_s);
    QVERIFY(!item().menu.at(2).isEnabled);
    QCOMPARE(item().menu.last().label, u"Quit"_s);
}

void AppDelegateTest::anyNameIsOneShortLineOfTheMenu_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("label");
    const auto family = u"👨‍👩‍👧"_s; // One character in 8 units.
    QTest::newRow("a line break is a blank") << u"a\r\nb"_s << u"a b"_s;
    QTest::newRow("blanks at the ends go") << u"\n  Write the letter\t"_s << u"Write the letter"_s;
    QTest::newRow("an emoji stays whole") << family << family;
    QTest::newRow("200 letters stay") << QString(200, u'm') << QString(200, u'm');
    QTest::newRow("2000 letters are cut") << QString(2000, u'm') << QString(199, u'm') + u'…';
    QTest::newRow("no emoji is cut in two") << family.repeated(100) << family.repeated(24) + u'…';
    QTest::newRow("Hebrew") << u"לכתוב מכתב"_s << u"לכתוב מכתב"_s;
}

void AppDelegateTest::anyNameIsOneShortLineOfTheMenu()
{
    QFETCH(QString, name);
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(u"GET /pages/t1"_s, pages::task(u"t1"_s, name));
    launch();
    QTEST(item().menu.at(2).label, "label");
}

void AppDelegateTest::theFirstStartWithANotchSwitchesItsInterfaceOn()
{
    m_world->platform.fakeScreens.setSingle({0, 0, 1512, 982}, 38);
    m_world->settings.settings.setUseNotchUI(false);
    launch();
    QVERIFY(m_world->settings.settings.useNotchUI());
    QCOMPARE(m_world->platform.fakeDefaults.boolean(u"hasSetNotchDefault4"_s), true);
    QVERIFY(m_world->platform.fakeLog.lines.contains(u"INFO Physical notch detected: true"_s));
    QVERIFY(!m_world->platform.fakeLog.lines.contains(u"INFO No notch — menu bar mode only"_s));
}

void AppDelegateTest::aLaterStartWithANotchLeavesTheSavedValue_data()
{
    QTest::addColumn<bool>("saved");
    QTest::newRow("switched off by the user") << false;
    QTest::newRow("left on") << true;
}

void AppDelegateTest::aLaterStartWithANotchLeavesTheSavedValue()
{
    QFETCH(const bool, saved);
    m_world->platform.fakeScreens.setSingle({0, 0, 1512, 982}, 38);
    m_world->platform.fakeDefaults.set({{u"hasSetNotchDefault4"_s, true}});
    m_world->settings.settings.setUseNotchUI(saved);
    launch();
    QCOMPARE(m_world->settings.settings.useNotchUI(), saved);
}

void AppDelegateTest::aStartWithoutANotchSwitchesItsInterfaceOffWhateverWasSaved()
{
    m_world->settings.settings.setUseNotchUI(true);
    launch();
    QVERIFY(!m_world->settings.settings.useNotchUI());
    QVERIFY(!m_world->platform.fakeDefaults.contains(u"hasSetNotchDefault4"_s));
}

void AppDelegateTest::theEndGivesTheShortcutBack()
{
    launch();
    QVERIFY(m_world->platform.keyGrabber);
    m_world->delegate->applicationWillTerminate();
    QVERIFY(!m_world->platform.keyGrabber->isInstalled);
}

QTEST_MAIN(AppDelegateTest)
#include "AppDelegateTest.moc"
