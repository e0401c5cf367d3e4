#include "Controllers/NotchWindowController.h"

#include "Fakes/FakePlatform.h"
#include "Utilities/DiagnosticLogger.h"
#include "Views/NotchContentView.h"
#include "Views/NotchShape.h"
#include "Views/ViewWorld.h"

#include <QTest>

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QRectF screen(0, 0, 1512, 982);
const QRect idleFrame(656, -10, 200, 47);
const QRect compactFrame(536, -10, 440, 50);
const QRect expandedFrame(536, -10, 440, 210);

double cubic(double t, double first, double second)
{
    return 3 * (1 - t) * (1 - t) * t * first + 3 * (1 - t) * t * t * second + t * t * t;
}

/// How far a movement has come after that part of its time: the curve from (0, 0) to (1, 1) with the control points
/// (0.32, 0.72) and (0, 1).
double wayAfter(double time)
{
    double low = 0;
    double high = 1;
    for (int i = 0; i < 60; ++i) {
        const double t = (low + high) / 2;
        (cubic(t, 0.32, 0) < time ? low : high) = t;
    }
    return cubic(low, 0.72, 1);
}

/// Where the panel is on the way, widened to whole pixels.
QRect frameAfter(double time, const QRect &from, const QRect &to)
{
    const double way = wayAfter(time);
    const auto between = [way](int a, int b) { return a + (b - a) * way; };
    const auto left = int(std::floor(between(from.x(), to.x())));
    const auto right = int(std::ceil(between(from.x() + from.width(), to.x() + to.width())));
    return {left, -10, right - left, qRound(between(from.height(), to.height()))};
}

} // namespace

/// The states of the notch, with the time and the pointer of the test.
class NotchWindowControllerTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void thereIsNoPanelBeforeSetup();
    void setupLogsTheScreen();
    void setupShowsAPanelAboveEverythingAtRest();
    void theRoomOfThePanelEndsAtTheEdgeOfTheScreen();
    void thePanelStandsOnTheFirstOfSeveralScreens();
    void theSizesDependOnNoScreen();
    void withoutAListTheMainScreenStandsIn();
    void noScreensAtAllFailNothing();
    void theShapeFollowsTheFrame();

    void restingATickWithATimerMakesItCompact();
    void restingATickWithoutATimerLeavesItSo();
    void restingTicksDrawNothingAndMoveNothing();
    void restingTheEnteringPointerOpensTheCard();
    void restingTheLeavingPointerDoesNothing();
    void compactATickWithATimerBringsItToTheFront();
    void compactATickWithoutATimerPutsItToRest();
    void compactTheEnteringPointerOpensTheCard();
    void compactTheLeavingPointerDoesNothing();
    void openATickWithATimerBringsItToTheFront();
    void openATickWithoutATimerDoesNothing();
    void openTheEnteringPointerCancelsTheCollapse();
    void openTheLeavingPointerWithinTheGuardDoesNothing();
    void aCardThatNoPointerHasOpenedCollapsesAtTheFirstExit();
    void openTheLeavingPointerAfterTheGuardCollapses_data();
    void openTheLeavingPointerAfterTheGuardCollapses();
    void collapsingWithThePointerInTheFrameDoesNothing_data();
    void collapsingWithThePointerInTheFrameDoesNothing();
    void withoutAPanelAStateIsTakenAndAnOpenOneSurvivesTheTick();
    void anItemThatFiresAfterTheStateHasChangedDoesNothing();

    void aHoverUnderHalfASecondLeavesTheCardOpenUntilTheNextOne();
    void aReturnWithinTheDelayCollapsesNothingAndDoesNotRenewTheGuard();
    void aDroppedExitLeavesThePendingCollapse();
    void aSecondExitBeginsTheDelayAnew();
    void thePointerBesideTheShapeButInTheFrameKeepsTheCardForGood();
    void aTimerThatStopsUnderTheOpenCardLeadsToRest();
    void aTimerThatStartsUnderTheOpenCardLeadsToTheStrip();
    void aTimerThatStopsWithinTheDelayLeadsToTheStripAndThenToRest();
    void aClockThatIsSetBackDropsTheExit();
    void setupOfACompactPanelStaysAtRestUntilTheNextHover();
    void setupOfARestingPanelWithATimerGoesOnToTheStrip();
    void setupDuringAnAnimationLeavesTheNewPanelAlone();
    void aHiddenPanelStillCollapses();
    void hidingTouchesNothing();
    void theNextTickWithATimerBringsAHiddenPanelBack();
    void itMayGoWhileACollapseIsPending();

    void expandingTakesFourTenthsOfASecond();
    void shrinkingTakesThreeTenths();
    void theMovementFollowsTheCurve_data();
    void theMovementFollowsTheCurve();
    void aTickWhileTheCardFoldsAwayDoesNotBeginTheMovementAnew();
    void theContentChangesWithTheBeginOfTheMovement();
    void anInterruptedMovementGoesOnFromWhereItIs();

private:
    void makeController(const QRectF &geometry = screen);
    void startTimer();
    void stopTimer();
    void tick() { m_controller->updateForTimerState(); }
    void enter() { panel().enter(); }
    void leave() { panel().leave(); }
    void open(); ///< As by the pointer, and lets the guard pass.
    /// Lets time pass, and all that follows from it happen.
    void pass(double seconds);
    FakePanel &panel() { return *m_platform->panel; }
    FakeClock &clock() { return m_platform->fakeClock; }
    NotchContentView &content() { return *static_cast<NotchContentView *>(panel().content.data()); }
    NotchState state() const { return m_controller->state(); }

    std::unique_ptr<ViewWorld> m_world; ///< Of the timer; its clock stands still.
    std::unique_ptr<FakePlatform> m_platform;
    std::unique_ptr<NotchWindowController> m_controller;
};

void NotchWindowControllerTest::init()
{
    m_world = std::make_unique<ViewWorld>();
    m_world->poll();
    m_platform = std::make_unique<FakePlatform>();
    Log::setSystemLog(&m_platform->fakeLog);
}

void NotchWindowControllerTest::cleanup()
{
    Log::setSystemLog(nullptr);
    m_controller.reset();
    m_world.reset();
    m_platform.reset();
}

void NotchWindowControllerTest::makeController(const QRectF &geometry)
{
    m_platform->fakeScreens.setSingle(geometry, 32);
    m_platform->fakeScreens.pointer = QPointF(300, 700);
    m_controller
        = std::make_unique<NotchWindowController>(*m_world->viewModel, *m_platform, m_world->settings.settings);
    m_controller->setup();
}

void NotchWindowControllerTest::startTimer()
{
    m_world->showTimer({});
    m_world->poll();
    QVERIFY(m_world->viewModel->isTimerRunning());
}

void NotchWindowControllerTest::stopTimer()
{
    m_world->showNothing();
    m_world->poll();
    QVERIFY(!m_world->viewModel->isTimerRunning());
}

void NotchWindowControllerTest::pass(double seconds)
{
    clock().advance(seconds);
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents();
}

void NotchWindowControllerTest::open()
{
    enter();
    pass(0.6);
    QCOMPARE(panel().frame, expandedFrame);
}

void NotchWindowControllerTest::thereIsNoPanelBeforeSetup()
{
    NotchWindowController controller(*m_world->viewModel, *m_platform, m_world->settings.settings);
    QCOMPARE(m_platform->panelCount, 0);
    QCOMPARE(controller.state(), NotchState::idle);
    controller.show();
    controller.hide();
    controller.setState(NotchState::compact);
    QCOMPARE(controller.state(), NotchState::compact);
    QCOMPARE(clock().sleeperCount(), 0);
}

void NotchWindowControllerTest::setupLogsTheScreen()
{
    makeController({0, 0, 1512, 982.5});
    QCOMPARE(m_platform->fakeLog.lines,
             QStringList(u"INFO NotchWindowController.setup() — screen: {{0, 0}, {1512, 982.5}}"_s));
}

void NotchWindowControllerTest::setupShowsAPanelAboveEverythingAtRest()
{
    makeController();
    QVERIFY(!panel().style.hasShadow);
    QVERIFY(panel().style.isAboveEverything);
    QVERIFY(panel().isVisible());
    QCOMPARE(panel().calls.mid(0, 5),
             (QStringList{u"setRoom"_s, u"setFrame"_s, u"setContent"_s, u"setShape"_s, u"orderFront"_s}));
    QCOMPARE(panel().frame, idleFrame);
    QCOMPARE(content().size(), idleFrame.size());
    QCOMPARE(content().state(), NotchState::idle);
    QCOMPARE(panel().shape, NotchShape{.cornerRadius = 14}.path(QRectF(0, 0, 200, 47)));
}

void NotchWindowControllerTest::theRoomOfThePanelEndsAtTheEdgeOfTheScreen()
{
    makeController();
    QCOMPARE(panel().room, QRect(536, 0, 440, 200));
}

void NotchWindowControllerTest::thePanelStandsOnTheFirstOfSeveralScreens()
{
    makeController();
    m_platform->fakeScreens.all = {{QRectF(1920, 300, 1512, 982), 32}, {QRectF(0, 0, 1920, 1080), 0}};
    m_platform->fakeScreens.main = m_platform->fakeScreens.all.last(); // Of which the log alone tells.
    m_controller->setup();
    QCOMPARE(m_platform->fakeLog.lines.last(),
             u"INFO NotchWindowController.setup() — screen: {{0, 0}, {1920, 1080}}"_s);
    QCOMPARE(panel().frame, idleFrame.translated(1920, 300));
    QCOMPARE(panel().room, QRect(2456, 300, 440, 200));
}

void NotchWindowControllerTest::theSizesDependOnNoScreen()
{
    makeController({0, 0, 3024, 1964});
    QCOMPARE(panel().frame, QRect(1412, -10, 200, 47));
    enter();
    pass(1);
    QCOMPARE(panel().frame, QRect(1292, -10, 440, 210));
}

void NotchWindowControllerTest::withoutAListTheMainScreenStandsIn()
{
    makeController();
    m_platform->fakeScreens.all.clear();
    m_platform->fakeScreens.main = Screen{screen, 32};
    m_controller->setup();
    QCOMPARE(panel().frame, idleFrame);
}

void NotchWindowControllerTest::noScreensAtAllFailNothing()
{
    makeController();
    m_platform->fakeScreens.all.clear();
    m_controller->setup();
    QCOMPARE(m_platform->fakeLog.lines.last(), u"INFO NotchWindowController.setup() — screen: {{0, 0}, {0, 0}}"_s);
    QCOMPARE(panel().frame, QRect(-100, -10, 200, 47));
    enter();
    pass(1);
    QCOMPARE(panel().frame, QRect(-220, -10, 440, 210));
}

void NotchWindowControllerTest::theShapeFollowsTheFrame()
{
    makeController();
    enter();
    for (int i = 0; i < 30; ++i) {
        pass(1 / 60.0);
        QCOMPARE(panel().shape, NotchShape{.cornerRadius = 20}.path(QRectF(QPointF(), panel().frame.size())));
    }
    QCOMPARE(panel().frame, expandedFrame);
}

void NotchWindowControllerTest::restingATickWithATimerMakesItCompact()
{
    makeController();
    startTimer();
    panel().calls.clear();
    tick();
    QCOMPARE(state(), NotchState::compact);
    QCOMPARE(content().state(), NotchState::compact);
    QCOMPARE(panel().calls.last(), u"orderFront"_s);
    pass(0.3);
    QCOMPARE(panel().frame, compactFrame);
}

void NotchWindowControllerTest::restingATickWithoutATimerLeavesItSo()
{
    makeController();
    panel().calls.clear();
    tick();
    QCOMPARE(state(), NotchState::idle);
    QVERIFY(!panel().calls.contains(u"orderFront"_s));
    QVERIFY(panel().isVisible());
}

void NotchWindowControllerTest::restingTicksDrawNothingAndMoveNothing()
{
    makeController();
    pass(1);
    panel().calls.clear();
    class Watch : public QObject {
        bool eventFilter(QObject *, QEvent *event) override
        {
            paintCount += event->type() == QEvent::Paint || event->type() == QEvent::UpdateRequest ? 1 : 0;
            return false;
        }

    public:
        int paintCount = 0;
    } watch;
    panel().window.installEventFilter(&watch);
    content().installEventFilter(&watch);
    for (int i = 0; i < 5; ++i) {
        tick();
        QCOMPARE(clock().sleeperCount(), 0); // No animation runs.
        pass(1);
    }
    QCOMPARE(panel().calls, QStringList());
    QCOMPARE(watch.paintCount, 0);
    QCOMPARE(state(), NotchState::idle);
}

void NotchWindowControllerTest::restingTheEnteringPointerOpensTheCard()
{
    makeController();
    enter();
    QCOMPARE(state(), NotchState::expanded);
    QCOMPARE(content().state(), NotchState::expanded);
    pass(0.4);
    QCOMPARE(panel().frame, expandedFrame);
}

void NotchWindowControllerTest::restingTheLeavingPointerDoesNothing()
{
    makeController();
    pass(1);
    leave();
    QCOMPARE(state(), NotchState::idle);
    QCOMPARE(clock().sleeperCount(), 0);
}

void NotchWindowControllerTest::compactATickWithATimerBringsItToTheFront()
{
    makeController();
    startTimer();
    tick();
    pass(1);
    panel().calls.clear();
    tick();
    QCOMPARE(panel().calls, QStringList(u"orderFront"_s));
    QCOMPARE(state(), NotchState::compact);
}

void NotchWindowControllerTest::compactATickWithoutATimerPutsItToRest()
{
    makeController();
    startTimer();
    tick();
    pass(1);
    stopTimer();
    tick();
    QCOMPARE(state(), NotchState::idle);
    pass(0.3);
    QCOMPARE(panel().frame, idleFrame);
    QCOMPARE(content().state(), NotchState::idle);
}

void NotchWindowControllerTest::compactTheEnteringPointerOpensTheCard()
{
    makeController();
    startTimer();
    tick();
    pass(1);
    enter();
    QCOMPARE(state(), NotchState::expanded);
    pass(0.4);
    QCOMPARE(panel().frame, expandedFrame);
}

void NotchWindowControllerTest::compactTheLeavingPointerDoesNothing()
{
    makeController();
    startTimer();
    tick();
    pass(1);
    leave();
    QCOMPARE(state(), NotchState::compact);
    QCOMPARE(clock().sleeperCount(), 0);
}

void NotchWindowControllerTest::openATickWithATimerBringsItToTheFront()
{
    makeController();
    startTimer();
    open();
    panel().calls.clear();
    tick();
    QCOMPARE(panel().calls, QStringList(u"orderFront"_s));
    QCOMPARE(state(), NotchState::expanded);
}

void NotchWindowControllerTest::openATickWithoutATimerDoesNothing()
{
    makeController();
    open();
    panel().calls.clear();
    tick();
    QCOMPARE(panel().calls, QStringList());
    QCOMPARE(state(), NotchState::expanded);
}

void NotchWindowControllerTest::openTheEnteringPointerCancelsTheCollapse()
{
    makeController();
    open();
    leave();
    pass(0.2);
    enter();
    pass(5);
    QCOMPARE(state(), NotchState::expanded);
}

void NotchWindowControllerTest::openTheLeavingPointerWithinTheGuardDoesNothing()
{
    makeController();
    enter();
    pass(0.5); // Exactly.
    leave();
    pass(5);
    QCOMPARE(state(), NotchState::expanded);
}

void NotchWindowControllerTest::aCardThatNoPointerHasOpenedCollapsesAtTheFirstExit()
{
    makeController();
    m_controller->setState(NotchState::expanded);
    leave();
    pass(0.299);
    QCOMPARE(state(), NotchState::expanded);
    pass(0.001);
    QCOMPARE(state(), NotchState::idle);
}

void NotchWindowControllerTest::openTheLeavingPointerAfterTheGuardCollapses_data()
{
    QTest::addColumn<bool>("isTimerRunning");
    QTest::addColumn<QRect>("frame");
    QTest::newRow("to the strip with a timer") << true << compactFrame;
    QTest::newRow("to rest without one") << false << idleFrame;
}

void NotchWindowControllerTest::openTheLeavingPointerAfterTheGuardCollapses()
{
    QFETCH(const bool, isTimerRunning);
    QFETCH(const QRect, frame);
    makeController();
    if (isTimerRunning)
        startTimer();
    enter();
    pass(0.501);
    leave();
    pass(0.299);
    QCOMPARE(state(), NotchState::expanded);
    pass(0.001);
    QCOMPARE(state(), isTimerRunning ? NotchState::compact : NotchState::idle);
    QCOMPARE(content().state(), state());
    pass(0.3);
    QCOMPARE(panel().frame, frame);
}

void NotchWindowControllerTest::collapsingWithThePointerInTheFrameDoesNothing_data()
{
    QTest::addColumn<std::optional<QPointF>>("pointer");
    QTest::addColumn<bool>("isInside");
    QTest::newRow("in the middle") << std::optional(QPointF(700, 100)) << true;
    QTest::newRow("in a corner that is cut") << std::optional(QPointF(538, 199)) << true;
    QTest::newRow("in the strip above the screen") << std::optional(QPointF(700, -9)) << true;
    QTest::newRow("on the left edge") << std::optional(QPointF(536, 100)) << true;
    QTest::newRow("left of it") << std::optional(QPointF(535, 100)) << false;
    QTest::newRow("on the right edge") << std::optional(QPointF(976, 100)) << false;
    QTest::newRow("beside the right edge") << std::optional(QPointF(975, 100)) << true;
    QTest::newRow("on the lower edge") << std::optional(QPointF(700, 200)) << true;
    QTest::newRow("below it") << std::optional(QPointF(700, 201)) << false;
    QTest::newRow("on the upper edge") << std::optional(QPointF(700, -10)) << false;
    QTest::newRow("nowhere that anybody knows") << std::optional<QPointF>() << false;
}

void NotchWindowControllerTest::collapsingWithThePointerInTheFrameDoesNothing()
{
    QFETCH(const std::optional<QPointF>, pointer);
    QFETCH(const bool, isInside);
    makeController();
    open();
    m_platform->fakeScreens.pointer = pointer;
    leave();
    pass(0.3);
    QCOMPARE(state(), isInside ? NotchState::expanded : NotchState::idle);
}

void NotchWindowControllerTest::withoutAPanelAStateIsTakenAndAnOpenOneSurvivesTheTick()
{
    NotchWindowController controller(*m_world->viewModel, *m_platform, m_world->settings.settings);
    controller.setState(NotchState::expanded);
    controller.updateForTimerState();
    QCOMPARE(controller.state(), NotchState::expanded);
    controller.setState(NotchState::idle);
    QCOMPARE(controller.state(), NotchState::idle);
    QCOMPARE(m_platform->panelCount, 0);
}

void NotchWindowControllerTest::anItemThatFiresAfterTheStateHasChangedDoesNothing()
{
    makeController();
    startTimer();
    open();
    leave();
    m_controller->setState(NotchState::idle);
    pass(0.3);
    QCOMPARE(state(), NotchState::idle); // Not the strip that the item aimed at.
}

void NotchWindowControllerTest::aHoverUnderHalfASecondLeavesTheCardOpenUntilTheNextOne()
{
    makeController();
    enter();
    pass(0.4);
    leave();
    for (int i = 0; i < 10; ++i) {
        pass(1);
        tick();
    }
    QCOMPARE(state(), NotchState::expanded);
    enter();
    leave();
    pass(0.3);
    QCOMPARE(state(), NotchState::idle);
}

void NotchWindowControllerTest::aReturnWithinTheDelayCollapsesNothingAndDoesNotRenewTheGuard()
{
    makeController();
    open();
    leave();
    pass(0.2);
    enter();
    pass(0.2);
    QCOMPARE(state(), NotchState::expanded);
    leave(); // 0.2 seconds after the return, more than 0.5 after the card came.
    pass(0.3);
    QCOMPARE(state(), NotchState::idle);
}

void NotchWindowControllerTest::aDroppedExitLeavesThePendingCollapse()
{
    makeController();
    open();
    leave();
    clock().setNow(clock().now().addSecs(-3600)); // From now on exits are dropped.
    pass(0.1);
    leave();
    QCOMPARE(clock().waits.last(), (FakeClock::Wait{FakeClock::Kind::pause, 0.3}));
    clock().setNow(clock().now().addSecs(3600));
    pass(0.2);
    QCOMPARE(state(), NotchState::idle);
}

void NotchWindowControllerTest::aSecondExitBeginsTheDelayAnew()
{
    makeController();
    open();
    leave();
    pass(0.2);
    leave();
    pass(0.2);
    QCOMPARE(state(), NotchState::expanded);
    pass(0.1);
    QCOMPARE(state(), NotchState::idle);
}

void NotchWindowControllerTest::thePointerBesideTheShapeButInTheFrameKeepsTheCardForGood()
{
    makeController();
    open();
    m_platform->fakeScreens.pointer = QPointF(538, 199);
    leave();
    pass(0.3);
    m_platform->fakeScreens.pointer = QPointF(300, 700);
    for (int i = 0; i < 10; ++i) {
        pass(1);
        tick();
    }
    QCOMPARE(state(), NotchState::expanded);
    QCOMPARE(clock().sleeperCount(), 0); // There is no new attempt.
    enter();
    leave();
    pass(0.3);
    QCOMPARE(state(), NotchState::idle);
}

void NotchWindowControllerTest::aTimerThatStopsUnderTheOpenCardLeadsToRest()
{
    makeController();
    startTimer();
    tick();
    open();
    stopTimer();
    tick();
    QCOMPARE(state(), NotchState::expanded);
    QCOMPARE(panel().frame, expandedFrame);
    leave();
    pass(0.3);
    QCOMPARE(state(), NotchState::idle);
}

void NotchWindowControllerTest::aTimerThatStartsUnderTheOpenCardLeadsToTheStrip()
{
    makeController();
    open();
    startTimer();
    tick();
    QCOMPARE(state(), NotchState::expanded);
    leave();
    pass(0.3);
    QCOMPARE(state(), NotchState::compact);
}

void NotchWindowControllerTest::aTimerThatStopsWithinTheDelayLeadsToTheStripAndThenToRest()
{
    makeController();
    startTimer();
    open();
    leave();
    pass(0.1);
    stopTimer();
    pass(0.2);
    QCOMPARE(state(), NotchState::compact);
    tick();
    QCOMPARE(state(), NotchState::idle);
}

void NotchWindowControllerTest::aClockThatIsSetBackDropsTheExit()
{
    makeController();
    open();
    clock().setNow(clock().now().addSecs(-3600));
    leave();
    QCOMPARE(clock().sleeperCount(), 0);
    pass(5);
    QCOMPARE(state(), NotchState::expanded);
}

void NotchWindowControllerTest::setupOfACompactPanelStaysAtRestUntilTheNextHover()
{
    makeController();
    startTimer();
    tick();
    pass(1);
    m_controller->hide();
    m_controller->setup();
    QCOMPARE(m_platform->panelCount, 2);
    tick();
    pass(1);
    QCOMPARE(state(), NotchState::compact);
    QCOMPARE(panel().frame, idleFrame);
    QCOMPARE(content().state(), NotchState::idle);
    QVERIFY(panel().isVisible());
    open();
    QCOMPARE(content().state(), NotchState::expanded);
    leave();
    pass(0.3);
    QCOMPARE(state(), NotchState::compact);
    QCOMPARE(content().state(), NotchState::compact);
}

void NotchWindowControllerTest::setupOfARestingPanelWithATimerGoesOnToTheStrip()
{
    makeController();
    m_controller->hide();
    m_controller->setup();
    startTimer();
    tick();
    pass(0.3);
    QCOMPARE(panel().frame, compactFrame);
    QCOMPARE(content().state(), NotchState::compact);
}

void NotchWindowControllerTest::setupDuringAnAnimationLeavesTheNewPanelAlone()
{
    makeController();
    enter();
    pass(0.1);
    m_controller->hide();
    m_controller->setup();
    pass(1);
    QCOMPARE(panel().frame, idleFrame);
    QCOMPARE(state(), NotchState::expanded);
}

void NotchWindowControllerTest::aHiddenPanelStillCollapses()
{
    makeController();
    startTimer();
    open();
    leave();
    m_controller->hide();
    pass(0.3);
    QCOMPARE(state(), NotchState::compact);
    pass(0.3);
    QCOMPARE(panel().frame, compactFrame);
    QVERIFY(!panel().isVisible());
}

void NotchWindowControllerTest::hidingTouchesNothing()
{
    makeController();
    open();
    m_controller->hide();
    leave(); // As the window system tells it.
    pass(5);
    QCOMPARE(state(), NotchState::expanded);
    QCOMPARE(panel().frame, expandedFrame);
}

void NotchWindowControllerTest::theNextTickWithATimerBringsAHiddenPanelBack()
{
    makeController();
    m_controller->hide();
    tick();
    QVERIFY(!panel().isVisible());
    startTimer();
    tick();
    QVERIFY(panel().isVisible());
}

void NotchWindowControllerTest::itMayGoWhileACollapseIsPending()
{
    makeController();
    open();
    leave();
    m_controller.reset();
    pass(1);
    QCOMPARE(clock().sleeperCount(), 0);
}

void NotchWindowControllerTest::expandingTakesFourTenthsOfASecond()
{
    makeController();
    enter();
    QCOMPARE(panel().frame, idleFrame);
    pass(0.39);
    QVERIFY(panel().frame != expandedFrame || clock().sleeperCount() > 0);
    pass(0.01);
    QCOMPARE(panel().frame, expandedFrame);
    QCOMPARE(clock().sleeperCount(), 0);
}

void NotchWindowControllerTest::shrinkingTakesThreeTenths()
{
    makeController();
    open();
    leave();
    pass(0.3);
    QCOMPARE(panel().frame, expandedFrame);
    pass(0.29);
    QCOMPARE(clock().sleeperCount(), 1);
    pass(0.01);
    QCOMPARE(panel().frame, idleFrame);
    QCOMPARE(clock().sleeperCount(), 0);
}

void NotchWindowControllerTest::theMovementFollowsTheCurve_data()
{
    QTest::addColumn<NotchState>("from");
    QTest::addColumn<NotchState>("to");
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QRect>("frame");
    const auto idle = NotchState::idle;
    const auto compact = NotchState::compact;
    const auto expanded = NotchState::expanded;
    QTest::newRow("a quarter of the way to the card")
        << idle << expanded << 0.1 << frameAfter(0.25, idleFrame, expandedFrame);
    QTest::newRow("half of it") << idle << expanded << 0.2 << frameAfter(0.5, idleFrame, expandedFrame);
    QTest::newRow("three quarters of it") << idle << expanded << 0.3 << frameAfter(0.75, idleFrame, expandedFrame);
    QTest::newRow("half of the way from the strip to the card")
        << compact << expanded << 0.2 << frameAfter(0.5, compactFrame, expandedFrame);
    QTest::newRow("a third of the way to rest")
        << expanded << idle << 0.1 << frameAfter(1 / 3.0, expandedFrame, idleFrame);
    QTest::newRow("half of it, to rest") << expanded << idle << 0.15 << frameAfter(0.5, expandedFrame, idleFrame);
    QTest::newRow("half of the way from rest to the strip")
        << idle << compact << 0.15 << frameAfter(0.5, idleFrame, compactFrame);
}

void NotchWindowControllerTest::theMovementFollowsTheCurve()
{
    QFETCH(const NotchState, from);
    QFETCH(const NotchState, to);
    QFETCH(const double, seconds);
    makeController();
    m_controller->setState(from);
    pass(1);
    m_controller->setState(to);
    pass(seconds);
    QTEST(panel().frame, "frame");
}

void NotchWindowControllerTest::aTickWhileTheCardFoldsAwayDoesNotBeginTheMovementAnew()
{
    makeController();
    open();
    leave();
    pass(0.3); // Now it begins.
    QCOMPARE(state(), NotchState::idle);
    pass(0.1);
    const QRect before = panel().frame;
    tick();
    QCOMPARE(panel().frame, before);
    pass(0.05);
    QCOMPARE(panel().frame, frameAfter(0.5, expandedFrame, idleFrame));
    pass(0.15);
    QCOMPARE(panel().frame, idleFrame);
    QCOMPARE(clock().sleeperCount(), 0);
}

void NotchWindowControllerTest::theContentChangesWithTheBeginOfTheMovement()
{
    makeController();
    enter();
    QCOMPARE(panel().frame, idleFrame);
    QCOMPARE(content().state(), NotchState::expanded);
}

void NotchWindowControllerTest::anInterruptedMovementGoesOnFromWhereItIs()
{
    makeController();
    enter();
    pass(0.1);
    const QRect halfway = panel().frame;
    QVERIFY(halfway.height() > idleFrame.height() && halfway.height() < expandedFrame.height());
    m_controller->setState(NotchState::idle);
    QCOMPARE(panel().frame, halfway);
    pass(1 / 60.0);
    QVERIFY(panel().frame.height() < halfway.height());
    pass(0.3);
    QCOMPARE(panel().frame, idleFrame);
}

QTEST_MAIN(NotchWindowControllerTest)
#include "NotchWindowControllerTest.moc"
