#include "LaunchedApp.h"

#include "Views/NotchContentView.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QRectF laptop(0, 0, 1512, 982);
const QRectF external(1512, 0, 1920, 1080);
constexpr double inset = 32;
const QRect idleFrame(656, -10, 200, 47);
const QRect compactFrame(536, -10, 440, 50);
const QRect expandedFrame(536, -10, 440, 210);

} // namespace

/// The notch interface as the program brings it up and down.
class NotchTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_app.reset(); }

    void theFirstLaunchWithANotchBringsItUp();
    void aLaunchWithTheInterfaceSwitchedOffBringsNone();
    void aLaunchWithoutANotchBringsNone();
    void thePollGoesOutBeforeThePanelIsMade();
    void theTickFollowsTheTimer();
    void theTickWithoutATimerLeavesThePanelAlone();
    void thePointerOpensTheCard();
    void anExternalScreenBesideTheNotchRebuildsThePanel();
    void aRebuiltPanelShowsARunningTimerAtOnce();
    void anotherFirstScreenTakesThePanelDownForTheRestOfTheRun();
    void theTimeMovesToTheItemWithTheScreenAndBack();
    void switchedOffThePanelStaysUntilTheScreensChange();
    void switchedOnWithoutAPanelThereIsNoneBeforeTheNextLaunch();
    void aChangeOfScreensWithoutANotchOnlyLogs();
    void changesOfScreensBeforeTheLaunchDoNothing();
    void settingItUpAgainReplacesThePanel();
    void takingItDownTwiceIsHarmless();
    void theEndHidesThePanel();
    void afterTheEndScreensDoNothing();

private:
    LaunchedApp &app() { return *m_app; }
    FakePanel &panel() { return *app().platform.panel; }
    NotchState shown() { return static_cast<NotchContentView *>(panel().content.data())->state(); }
    QStringList &log() { return app().platform.fakeLog.lines; }
    /// Launches with a timer that the delegate knows already.
    void launchWithTimer();
    void plugExternalScreen(bool isFirst);
    void changeScreens() { app().platform.fakeScreens.change(); }

    std::unique_ptr<LaunchedApp> m_app;
};

void NotchTest::init()
{
    m_app = std::make_unique<LaunchedApp>();
    app().platform.fakeScreens.setSingle(laptop, inset);
    app().platform.fakeScreens.pointer = QPointF(100, 700);
}

void NotchTest::launchWithTimer()
{
    app().setEntry(60, u"Running"_s);
    app().delegate->timerViewModel().startPollingIfConfigured();
    app().settle();
    app().launch();
    QVERIFY(app().delegate->timerViewModel().isTimerRunning());
}

void NotchTest::plugExternalScreen(bool isFirst)
{
    auto &all = app().platform.fakeScreens.all;
    all = {{laptop, inset, laptop}};
    const Screen screen{external, 0, external};
    isFirst ? all.prepend(screen) : all.append(screen);
    changeScreens();
}

void NotchTest::theFirstLaunchWithANotchBringsItUp()
{
    app().settings.settings.setUseNotchUI(false);
    app().delegate->applicationDidFinishLaunching();
    QCOMPARE(
        log(),
        QStringList({u"INFO App launched — applicationDidFinishLaunching"_s, u"INFO Status item created"_s,
                     u"INFO Polling started"_s, u"INFO Physical notch detected: true"_s,
                     u"INFO NotchWindowController.setup() — screen: {{0, 0}, {1512, 982}}"_s,
                     u"INFO Notch UI initialized"_s, u"INFO Global hotkey registered (keyCode: 45, modifiers: 768)"_s,
                     u"INFO App launch complete"_s}));
    QVERIFY(app().settings.settings.useNotchUI());
    QCOMPARE(app().platform.fakeDefaults.boolean(u"hasSetNotchDefault4"_s), true);
    QVERIFY(panel().isVisible());
    QCOMPARE(panel().frame, idleFrame);
}

void NotchTest::aLaunchWithTheInterfaceSwitchedOffBringsNone()
{
    app().platform.fakeDefaults.set({{u"hasSetNotchDefault4"_s, true}});
    app().settings.settings.setUseNotchUI(false);
    app().launch();
    QCOMPARE(app().platform.panelCount, 0);
    QVERIFY(!log().contains(u"INFO Notch UI initialized"_s));
    QVERIFY(!log().contains(u"INFO No notch — menu bar mode only"_s));
}

void NotchTest::aLaunchWithoutANotchBringsNone()
{
    app().platform.fakeScreens.setSingle(laptop, 0);
    app().settings.settings.setUseNotchUI(true);
    app().launch();
    QCOMPARE(app().platform.panelCount, 0);
    QVERIFY(!app().settings.settings.useNotchUI());
}

void NotchTest::thePollGoesOutBeforeThePanelIsMade()
{
    app().notion.isHolding = true;
    app().delegate->applicationDidFinishLaunching();
    QVERIFY(log().indexOf(u"INFO Polling started"_s) < log().indexOf(u"INFO Notch UI initialized"_s));
}

void NotchTest::theTickFollowsTheTimer()
{
    app().launch();
    app().setEntry(60, u"Running"_s);
    app().clock().advance(60); // The next poll finds it.
    QTRY_COMPARE(shown(), NotchState::compact);
    QTRY_COMPARE(app().item().title, QString()); // The time isn't told twice.
    app().clock().advance(0.3);
    QTRY_COMPARE(panel().frame, compactFrame);
    app().setNoEntry();
    app().clock().advance(30);
    QTRY_COMPARE(shown(), NotchState::idle);
    app().clock().advance(0.3);
    QTRY_COMPARE(panel().frame, idleFrame);
}

void NotchTest::theTickWithoutATimerLeavesThePanelAlone()
{
    app().launch();
    panel().calls.clear();
    app().setEntry(60, u"Stopped"_s);
    app().clock().advance(60);
    QTRY_VERIFY(app().delegate->timerViewModel().activeTimer());
    app().clock().setNow(app().clock().now().addSecs(1));
    app().item().title = u"before"_s;
    QTRY_COMPARE(app().item().title, QString()); // A tick has come.
    QCOMPARE(panel().calls, QStringList());
    QVERIFY(panel().isVisible());
}

void NotchTest::thePointerOpensTheCard()
{
    app().launch();
    panel().enter();
    QCOMPARE(shown(), NotchState::expanded);
    app().clock().advance(0.4);
    QTRY_COMPARE(panel().frame, expandedFrame);
}

void NotchTest::anExternalScreenBesideTheNotchRebuildsThePanel()
{
    app().launch();
    log().clear();
    const QPointer<FakePanel> former = &panel();
    plugExternalScreen(false);
    QCOMPARE(log(),
             QStringList({u"INFO Screen changed — physical notch: true, useNotchUI: true"_s,
                          u"INFO NotchWindowController.setup() — screen: {{0, 0}, {1512, 982}}"_s}));
    QCOMPARE(app().platform.panelCount, 2);
    QVERIFY(!former);
    QVERIFY(panel().isVisible());
    app().platform.fakeScreens.setSingle(laptop, inset);
    changeScreens();
    QCOMPARE(app().platform.panelCount, 3);
    QCOMPARE(panel().frame, idleFrame);
}

void NotchTest::aRebuiltPanelShowsARunningTimerAtOnce()
{
    launchWithTimer();
    plugExternalScreen(false); // Before the first tick.
    QCOMPARE(shown(), NotchState::compact);
    app().clock().advance(0.3);
    QTRY_COMPARE(panel().frame, compactFrame);
}

void NotchTest::anotherFirstScreenTakesThePanelDownForTheRestOfTheRun()
{
    app().launch();
    log().clear();
    plugExternalScreen(true);
    QCOMPARE(log(), QStringList(u"INFO Screen changed — physical notch: false, useNotchUI: true"_s));
    QVERIFY(app().platform.panel.isNull());
    QVERIFY(!app().delegate->hasPhysicalNotch());
    plugExternalScreen(false);
    QVERIFY(app().delegate->hasPhysicalNotch());
    QCOMPARE(log().last(), u"INFO Screen changed — physical notch: true, useNotchUI: true"_s);
    QCOMPARE(app().platform.panelCount, 1);
    QVERIFY(app().settings.settings.useNotchUI());
}

void NotchTest::theTimeMovesToTheItemWithTheScreenAndBack()
{
    launchWithTimer();
    QTRY_COMPARE(app().item().title, QString());
    plugExternalScreen(true);
    QCOMPARE(app().item().title, u" 0:01:00"_s); // At once.
    plugExternalScreen(false);
    QCOMPARE(app().item().title, QString());
}

void NotchTest::switchedOffThePanelStaysUntilTheScreensChange()
{
    launchWithTimer();
    app().settings.settings.setUseNotchUI(false);
    QTRY_COMPARE(app().item().title, u" 0:01:00"_s);
    QVERIFY(panel().isVisible());
    log().clear();
    changeScreens();
    QCOMPARE(log(), QStringList(u"INFO Screen changed — physical notch: true, useNotchUI: false"_s));
    QVERIFY(app().platform.panel.isNull());
}

void NotchTest::switchedOnWithoutAPanelThereIsNoneBeforeTheNextLaunch()
{
    app().platform.fakeDefaults.set({{u"hasSetNotchDefault4"_s, true}});
    app().settings.settings.setUseNotchUI(false);
    launchWithTimer();
    QCOMPARE(app().item().title, u" 0:01:00"_s);
    app().settings.settings.setUseNotchUI(true);
    QTRY_COMPARE(app().item().title, QString());
    changeScreens();
    QCOMPARE(app().platform.panelCount, 0);
}

void NotchTest::aChangeOfScreensWithoutANotchOnlyLogs()
{
    app().platform.fakeScreens.setSingle(laptop, 0);
    app().launch();
    log().clear();
    changeScreens();
    QCOMPARE(log(), QStringList(u"INFO Screen changed — physical notch: false, useNotchUI: false"_s));
    QCOMPARE(app().platform.panelCount, 0);
}

void NotchTest::changesOfScreensBeforeTheLaunchDoNothing()
{
    changeScreens();
    QVERIFY(log().isEmpty());
}

void NotchTest::settingItUpAgainReplacesThePanel()
{
    app().launch();
    const QPointer<FakePanel> former = &panel();
    app().delegate->setupNotchUI();
    QVERIFY(!former);
    QVERIFY(panel().isVisible());
    QCOMPARE(app().platform.panelCount, 2);
}

void NotchTest::takingItDownTwiceIsHarmless()
{
    app().launch();
    app().delegate->teardownNotchUI();
    QVERIFY(app().platform.panel.isNull());
    app().delegate->teardownNotchUI();
}

void NotchTest::theEndHidesThePanel()
{
    app().launch();
    app().delegate->applicationWillTerminate();
    QVERIFY(!panel().isVisible());
    QCOMPARE(panel().calls.last(), u"orderOut"_s);
}

void NotchTest::afterTheEndScreensDoNothing()
{
    app().launch();
    app().delegate->applicationWillTerminate();
    log().clear();
    changeScreens();
    QVERIFY(log().isEmpty());
    QVERIFY(!panel().isVisible());
}

QTEST_MAIN(NotchTest)
#include "NotchTest.moc"
