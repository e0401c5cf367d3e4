#include "Controllers/QuickAddWindowController.h"

#include "Fakes/FakeNotion.h"
#include "Fakes/FakePlatform.h"
#include "Fakes/NotionPages.h"
#include "Fakes/TestSettings.h"
#include "Utilities/Spawn.h"
#include "ViewModels/TimerViewModel.h"
#include "Views/KeyDownMonitor.h"
#include "Views/QuickAddView.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>
#include <QWindow>

#include <functional>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using namespace korvo;

class QuickAddWindowControllerTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void nothingIsShownToBeginWith();
    void thePanelIsSetUpBeforeItIsShown();
    void itCountsAsHiddenUntilAllIsSetUp();
    void thePanelStandsAboveTheMiddleOfTheMainScreen();
    void thePanelStandsOnTheScreenWhereTheUserWorks();
    void theLowerEdgeStaysWhereItIsWhenTheTextsAreHigher();
    void withoutAScreenThePanelIsStillShown();
    void theKeyboardIsTakenOnceMoreAfterAMoment();
    void theFocusingStepFindsTheField();
    void theFocusingStepPassesOverAFieldThatCannotBeEdited();
    void theFieldIsEmptyEachTime();
    void showDoesNothingWhileAPanelIsToBeSeen();
    void pressingTheShortcutAgainClosesThePanel();
    void pressingTheShortcutTwiceAtOnceClosesThePanelAndTheFocusingStepFocusesNothing();
    void theFocusingStepKeepsPanelAndControllerUntilItHasRun();
    void dismissWithNothingOpenChangesNothing();
    void submitMakesATaskAndClosesThePanelBeforeTheRequestHasFinished();
    void aSecondShowStraightAfterSubmitIsAllowed();
    void aNameSubmittedWhileTheControllerHasGoneDoesNothing();
    void aSubmittedNameIsMadeATaskThoughTheControllerIsLetGo();
    void aSubmittedNameGoesWithTheViewModelIfTheActionHasNotBegun();
    void aRequestUnderWayEndsWithTheViewModel();
    void escapeClosesThePanelAndMakesNoTask_data();
    void escapeClosesThePanelAndMakesNoTask();
    void otherKeysReachTheField();
    void escapeInAnotherWindowOfTheProgramClosesThePanel();
    void afterDismissEscapeIsLeftToOthers();
    void anotherProgramHidesThePanelAndTheNextPressShowsANewOne();
    void theMonitorOfAPanelThatHasHiddenLivesOnAndSwallowsEscape();
    void theMonitorOfAPanelThatHasHiddenOutlivesTheController();
    void dismissClosesAPanelThatHasHidden();

private:
    struct World {
        FakeNotion notion;
        FakePlatform platform;
        TestSettings settings;
        std::unique_ptr<TimerViewModel> timerVM = std::make_unique<TimerViewModel>(
            platform.fakeNotifications, notion, settings.settings, platform.fakeClock);
        std::shared_ptr<QuickAddWindowController> controller
            = std::make_shared<QuickAddWindowController>(*timerVM, platform);
    };

    QuickAddWindowController &controller() { return *m_world->controller; }
    FakeInputPanel &panel() { return *m_world->platform.inputPanel; }
    QuickAddView &view() { return *panel().window.findChild<QuickAddView *>(); }
    QLineEdit &field() { return *panel().window.findChild<QLineEdit *>(); }
    int panelCount() const { return m_world->platform.inputPanelCount; }
    static qsizetype monitorCount() { return qApp->findChildren<KeyDownMonitor *>().size(); }
    /// Lets the time pass after which the field is focused.
    void passFocusDelay();
    static void pressEscape(QWidget &window, Qt::KeyboardModifiers modifiers = {});

    std::unique_ptr<World> m_world;
};

void QuickAddWindowControllerTest::init()
{
    m_world = std::make_unique<World>();
    TestSettings::configure(m_world->settings.settings);
    m_world->notion.answerRows(u"POST /databases/tracker/query"_s, {});
    m_world->notion.answerRows(u"POST /databases/tasks/query"_s, {});
    m_world->notion.answer(u"POST /pages"_s, pages::page(u"p1"_s, {}));
}

void QuickAddWindowControllerTest::cleanup()
{
    m_world->notion.release();
    m_world->platform.fakeClock.advance(1);
    QVERIFY(finishSpawned(2000));
    if (m_world->controller)
        controller().dismiss();
    m_world.reset();
    qDeleteAll(qApp->findChildren<KeyDownMonitor *>()); // Those that live on.
}

void QuickAddWindowControllerTest::passFocusDelay()
{
    m_world->platform.fakeClock.advance(0.05);
    QTRY_COMPARE(spawnedCount(), 0);
}

void QuickAddWindowControllerTest::pressEscape(QWidget &window, Qt::KeyboardModifiers modifiers)
{
    constexpr quint32 nativeScanCode = 53 + 8; // As the fake layout has it.
    QKeyEvent event(QEvent::KeyPress, Qt::Key_Escape, modifiers, nativeScanCode, 0, 0);
    QCoreApplication::sendEvent(window.windowHandle(), &event);
}

void QuickAddWindowControllerTest::nothingIsShownToBeginWith()
{
    QVERIFY(!controller().isVisible());
    QCOMPARE(panelCount(), 0);
    QCOMPARE(monitorCount(), 0);
}

void QuickAddWindowControllerTest::thePanelIsSetUpBeforeItIsShown()
{
    controller().show();
    QVERIFY(controller().isVisible());
    QCOMPARE(panel().calls,
             (QStringList{u"setContent"_s, u"setFrame"_s, u"setShape"_s, u"makeKeyAndOrderFront"_s,
                          u"activateIgnoringOtherApps"_s}));
    QCOMPARE(monitorCount(), 1);
}

/// Asks something as the panel comes on the screen, and as its key monitor is made.
class SetUpProbe final : public QObject {
public:
    explicit SetUpProbe(std::function<void()> ask) : m_ask(std::move(ask)) { qApp->installEventFilter(this); }

private:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const bool isShown = event->type() == QEvent::Show && qobject_cast<QuickAddView *>(watched);
        if (isShown || (event->type() == QEvent::ChildAdded && watched == qApp))
            m_ask();
        return false;
    }

    std::function<void()> m_ask;
};

void QuickAddWindowControllerTest::itCountsAsHiddenUntilAllIsSetUp()
{
    QList<std::pair<bool, bool>> seen; // Of the panel itself, and of the controller.
    const SetUpProbe probe([&] { seen.append({panel().isVisible(), controller().isVisible()}); });
    controller().show();
    QCOMPARE(seen, (QList<std::pair<bool, bool>>{{true, false}, {true, false}}));
    QVERIFY(controller().isVisible());
}

void QuickAddWindowControllerTest::thePanelStandsAboveTheMiddleOfTheMainScreen()
{
    m_world->platform.fakeScreens.main = Screen{{0, 0, 1440, 900}, 0, {0, 0, 1440, 875}};
    controller().show();
    QCOMPARE(panel().frame.left(), 460);
    QCOMPARE(panel().frame.width(), 520);
    QCOMPARE(panel().frame.y() + panel().frame.height(), 900 - 550);
    QVERIFY(panel().frame.height() >= 90);
}

void QuickAddWindowControllerTest::thePanelStandsOnTheScreenWhereTheUserWorks()
{
    auto &screens = m_world->platform.fakeScreens;
    screens.all.append(Screen{{1280, 100, 1920, 1080}, 0, {1280, 130, 1920, 1050}});
    screens.main = screens.all.last();
    controller().show();
    QCOMPARE(panel().frame.left(), 1280 + 960 - 260);
    QCOMPARE(panel().frame.y() + panel().frame.height(), 130 + 525 - 105);
    controller().dismiss();
    screens.main = screens.all.first(); // Asked anew each time.
    controller().show();
    QCOMPARE(panel().frame.left(), 640 - 260);
}

void QuickAddWindowControllerTest::theLowerEdgeStaysWhereItIsWhenTheTextsAreHigher()
{
    controller().show();
    const int height = view().sizeHint().shrunkBy(QuickAddView::shadowMargins).height();
    QCOMPARE(panel().frame.height(), qMax(90, height));
    QCOMPARE(panel().frame.y() + panel().frame.height(), qRound(24 + 388 - 77.6));
    QCOMPARE(panel().shape.boundingRect().size(), QSizeF(520, height));
    QCOMPARE(view().size(), panel().frame.size().grownBy(QuickAddView::shadowMargins));
}

void QuickAddWindowControllerTest::withoutAScreenThePanelIsStillShown()
{
    m_world->platform.fakeScreens.all.clear();
    controller().show();
    QVERIFY(controller().isVisible());
    QCOMPARE(panel().frame.left(), 0);
    QCOMPARE(panel().frame.y() + panel().frame.height(), 90);
}

void QuickAddWindowControllerTest::theKeyboardIsTakenOnceMoreAfterAMoment()
{
    controller().show();
    QCOMPARE(m_world->platform.fakeClock.waits, (QList<FakeClock::Wait>{{FakeClock::Kind::pause, 0.05}}));
    QVERIFY(!panel().calls.contains(u"makeKey"_s));
    passFocusDelay();
    QCOMPARE(panel().calls.last(), u"makeKey"_s);
}

void QuickAddWindowControllerTest::theFocusingStepFindsTheField()
{
    controller().show();
    QVERIFY(QTest::qWaitForWindowActive(&panel().window));
    QVERIFY(view().isFocused()); // The view has asked for it by itself.
    field().clearFocus();
    passFocusDelay();
    QVERIFY(view().isFocused());
}

void QuickAddWindowControllerTest::theFocusingStepPassesOverAFieldThatCannotBeEdited()
{
    controller().show();
    QVERIFY(QTest::qWaitForWindowActive(&panel().window));
    field().setReadOnly(true);
    field().clearFocus();
    passFocusDelay();
    QVERIFY(!field().hasFocus());
}

void QuickAddWindowControllerTest::theFieldIsEmptyEachTime()
{
    controller().show();
    field().setText(u"Call"_s);
    controller().dismiss();
    controller().show();
    QCOMPARE(view().taskName(), QString());
    QCOMPARE(panelCount(), 2);
}

void QuickAddWindowControllerTest::showDoesNothingWhileAPanelIsToBeSeen()
{
    controller().show();
    controller().show();
    QCOMPARE(panelCount(), 1);
    QCOMPARE(monitorCount(), 1);
    QVERIFY(controller().isVisible());
}

void QuickAddWindowControllerTest::pressingTheShortcutAgainClosesThePanel()
{
    controller().toggle();
    passFocusDelay();
    const QPointer<FakeInputPanel> first = &panel();
    controller().toggle();
    QVERIFY(!controller().isVisible());
    QVERIFY(!first); // Nothing keeps it.
    QCOMPARE(monitorCount(), 0);
    controller().toggle();
    QVERIFY(controller().isVisible());
}

void QuickAddWindowControllerTest::pressingTheShortcutTwiceAtOnceClosesThePanelAndTheFocusingStepFocusesNothing()
{
    controller().toggle();
    const QPointer<FakeInputPanel> first = &panel();
    field().clearFocus();
    controller().toggle();
    QVERIFY(!controller().isVisible());
    QVERIFY(first); // The step to come holds it.
    m_world->platform.fakeClock.advance(0.05);
    const QPointer<QLineEdit> closedField = &field();
    bool wasFocused = false;
    QTRY_VERIFY((wasFocused |= closedField && closedField->hasFocus(), spawnedCount() == 0));
    QVERIFY(!wasFocused);
    QVERIFY(!first);
    QVERIFY(!controller().isVisible());
}

void QuickAddWindowControllerTest::theFocusingStepKeepsPanelAndControllerUntilItHasRun()
{
    controller().show();
    const QPointer<FakeInputPanel> shown = &panel();
    const std::weak_ptr<QuickAddWindowController> weak = m_world->controller;
    m_world->controller.reset();
    QVERIFY(!weak.expired());
    QVERIFY(shown);
    passFocusDelay();
    QVERIFY(weak.expired());
    QVERIFY(!shown);
}

void QuickAddWindowControllerTest::dismissWithNothingOpenChangesNothing()
{
    controller().dismiss();
    controller().dismiss();
    QVERIFY(!controller().isVisible());
    QCOMPARE(panelCount(), 0);
    QCOMPARE(monitorCount(), 0);
    QVERIFY(m_world->notion.asked.isEmpty());
}

void QuickAddWindowControllerTest::submitMakesATaskAndClosesThePanelBeforeTheRequestHasFinished()
{
    m_world->notion.isHolding = true;
    controller().show();
    QTest::keyClicks(&field(), u" Call the framer "_s);
    QTest::keyClick(&field(), Qt::Key_Return);
    QVERIFY(!controller().isVisible());
    QTRY_COMPARE(m_world->notion.heldCount(), 1);
    QVERIFY(m_world->timerVM->isLoading());
    const auto asked = m_world->notion.asked.value(0);
    QCOMPARE(asked.call, u"POST /pages"_s);
    QCOMPARE(asked.body["properties"_L1]["Name"_L1]["title"_L1][0]["text"_L1]["content"_L1].toString(),
             u"Call the framer"_s);
    m_world->notion.isHolding = false;
    m_world->notion.release();
    QTRY_VERIFY(!m_world->timerVM->isLoading());
}

void QuickAddWindowControllerTest::aSecondShowStraightAfterSubmitIsAllowed()
{
    m_world->notion.isHolding = true;
    controller().show();
    QTest::keyClicks(&field(), u"Call"_s);
    QTest::keyClick(&field(), Qt::Key_Return);
    controller().show();
    QVERIFY(controller().isVisible());
    QCOMPARE(view().taskName(), QString());
    QTRY_COMPARE(m_world->notion.heldCount(), 1);
    QVERIFY(controller().isVisible());
    m_world->notion.isHolding = false;
}

void QuickAddWindowControllerTest::aNameSubmittedWhileTheControllerHasGoneDoesNothing()
{
    controller().show();
    passFocusDelay();
    const QPointer<QLineEdit> left = &field();
    left->setText(u"Call"_s);
    m_world->controller.reset();
    QVERIFY(left); // It goes at the next turn of the event loop.
    emit left->returnPressed();
    QCoreApplication::processEvents();
    QVERIFY(!m_world->timerVM->isLoading());
    QVERIFY(m_world->notion.asked.isEmpty());
}

void QuickAddWindowControllerTest::aSubmittedNameIsMadeATaskThoughTheControllerIsLetGo()
{
    controller().show();
    passFocusDelay();
    field().setText(u"Call"_s);
    QTest::keyClick(&field(), Qt::Key_Return);
    const std::weak_ptr<QuickAddWindowController> weak = m_world->controller;
    m_world->controller.reset();
    QVERIFY(!weak.expired()); // The action to come holds it.
    QTRY_VERIFY(m_world->notion.calls().contains(u"POST /pages"_s));
    QVERIFY(weak.expired());
    QTRY_VERIFY(!m_world->timerVM->isLoading());
}

void QuickAddWindowControllerTest::aSubmittedNameGoesWithTheViewModelIfTheActionHasNotBegun()
{
    controller().show();
    passFocusDelay();
    field().setText(u"Call"_s);
    QTest::keyClick(&field(), Qt::Key_Return);
    const std::weak_ptr<QuickAddWindowController> weak = m_world->controller;
    m_world->controller.reset();
    m_world->timerVM.reset();
    QVERIFY(weak.expired());
    QCoreApplication::processEvents();
    QVERIFY(m_world->notion.asked.isEmpty());
}

void QuickAddWindowControllerTest::aRequestUnderWayEndsWithTheViewModel()
{
    m_world->notion.isHolding = true;
    controller().show();
    passFocusDelay();
    field().setText(u"Call"_s);
    QTest::keyClick(&field(), Qt::Key_Return);
    QTRY_COMPARE(m_world->notion.heldCount(), 1);
    m_world->controller.reset();
    m_world->timerVM.reset();
    QTRY_COMPARE(spawnedCount(), 0);
    for (const auto &asked : std::as_const(m_world->notion.asked)) // And again, each time stopped before it is sent:
        QCOMPARE(asked.body["parent"_L1]["database_id"_L1].toString(), u"tasks"_s); // no entry follows.
}

void QuickAddWindowControllerTest::escapeClosesThePanelAndMakesNoTask_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("with the field empty") << QString() << Qt::KeyboardModifiers();
    QTest::newRow("with text in it") << u"Call"_s << Qt::KeyboardModifiers();
    QTest::newRow("with Shift held") << u"Call"_s << Qt::KeyboardModifiers(Qt::ShiftModifier);
}

void QuickAddWindowControllerTest::escapeClosesThePanelAndMakesNoTask()
{
    QFETCH(const QString, text);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    controller().show();
    field().setText(text);
    pressEscape(panel().window, modifiers);
    QVERIFY(!controller().isVisible());
    QCOMPARE(monitorCount(), 0);
    QCoreApplication::processEvents();
    QVERIFY(!m_world->timerVM->isLoading());
    QVERIFY(m_world->notion.asked.isEmpty());
}

void QuickAddWindowControllerTest::otherKeysReachTheField()
{
    controller().show();
    QVERIFY(QTest::qWaitForWindowActive(&panel().window));
    QKeyEvent event(QEvent::KeyPress, Qt::Key_N, Qt::NoModifier, 45 + 8, 0, 0, u"n"_s);
    QCoreApplication::sendEvent(panel().window.windowHandle(), &event);
    QCOMPARE(view().taskName(), u"n"_s);
    QVERIFY(controller().isVisible());
}

void QuickAddWindowControllerTest::escapeInAnotherWindowOfTheProgramClosesThePanel()
{
    QWidget settings;
    settings.show();
    controller().show();
    pressEscape(settings);
    QVERIFY(!controller().isVisible());
}

/// Whether Escape reaches what a window holds.
class EscapeCounter final : public QWidget {
public:
    int count = 0;

private:
    void keyPressEvent(QKeyEvent *event) override { count += event->key() == Qt::Key_Escape; }
};

void QuickAddWindowControllerTest::afterDismissEscapeIsLeftToOthers()
{
    EscapeCounter settings;
    settings.show();
    controller().show();
    controller().dismiss();
    pressEscape(settings);
    QCOMPARE(settings.count, 1);
}

void QuickAddWindowControllerTest::anotherProgramHidesThePanelAndTheNextPressShowsANewOne()
{
    controller().toggle();
    passFocusDelay();
    const QPointer<FakeInputPanel> first = &panel();
    field().setText(u"Call"_s);
    panel().deactivate();
    QVERIFY(!controller().isVisible());
    QVERIFY(first); // It is still there.
    controller().toggle();
    QVERIFY(controller().isVisible());
    QVERIFY(!first);
    QCOMPARE(view().taskName(), QString());
}

void QuickAddWindowControllerTest::theMonitorOfAPanelThatHasHiddenLivesOnAndSwallowsEscape()
{
    EscapeCounter settings;
    settings.show();
    controller().show();
    panel().deactivate();
    controller().toggle();
    QCOMPARE(monitorCount(), 2);
    pressEscape(settings);
    QVERIFY(!controller().isVisible());
    QCOMPARE(monitorCount(), 1); // That of the second panel has gone with it.
    pressEscape(settings);
    QCOMPARE(settings.count, 0);
    controller().show();
    controller().dismiss();
    pressEscape(settings);
    QCOMPARE(settings.count, 0);
    QCOMPARE(monitorCount(), 1);
}

void QuickAddWindowControllerTest::theMonitorOfAPanelThatHasHiddenOutlivesTheController()
{
    EscapeCounter settings;
    settings.show();
    controller().show();
    panel().deactivate();
    controller().show();
    controller().dismiss();
    passFocusDelay();
    m_world->controller.reset();
    pressEscape(settings);
    QCOMPARE(settings.count, 0);
}

void QuickAddWindowControllerTest::dismissClosesAPanelThatHasHidden()
{
    controller().show();
    passFocusDelay();
    const QPointer<FakeInputPanel> shown = &panel();
    panel().deactivate();
    controller().dismiss();
    QVERIFY(!shown);
    QCOMPARE(monitorCount(), 0);
}

QTEST_MAIN(QuickAddWindowControllerTest)
#include "QuickAddWindowControllerTest.moc"
