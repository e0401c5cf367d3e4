#include "Views/MenuBarView.h"

#include "LookUp.h"
#include "UrlCatcher.h"
#include "ViewWorld.h"
#include "Views/BusyIndicator.h"
#include "Views/CardButton.h"
#include "Views/ClockText.h"
#include "Views/DarkTaskRow.h"
#include "Views/ProgressRing.h"
#include "Views/RoundedBox.h"
#include "Views/StatsRow.h"
#include "Views/SymbolIcon.h"
#include "Views/TaskColumn.h"
#include "Views/Theme.h"
#include "Views/Timeline.h"

#include <QAccessible>
#include <QApplication>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QStringList sampleTasks{u"Home page layout"_s, u"Answer the printer"_s, u"Invoice for October"_s};

} // namespace

/// What the panel shows and does; how it is laid out has a test of its own.
class MenuBarViewTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    // Sections
    void sectionsFollowSetupAndTimer_data();
    void sectionsFollowSetupAndTimer();
    void theBannerStandsAboveTheSetupView();
    void theBannerComesAndGoesWithTheError();
    void aNewSetupShowsAtOnce();
    void aTimerThatStopsElsewhereLeavesTheIdleCard();
    void anEntryThatIsNotRunningIsShownAllTheSame();
    void anErrorMessageIsShownNowhere();

    // The card
    void theCardTellsWhatIsKnownOfTheTimer();
    void whatIsNotKnownIsADash();
    void aChangedEntryIsShownInPlace();
    void clockAndRingTickTogether();
    void aStartInTheFutureShowsZero();
    void nothingTicksWithoutATimerOrASight();
    void openInNotionOpensThePageWithoutHyphens();
    void stopEndsTheEntry();
    void whileTheStopRunsTheButtonIsBusyAndOpenInNotionWorks();
    void aFailedStopGivesTheButtonBack();

    // Tasks
    void tasksKeepTheOrderOfTheList();
    void anEmptyListHasItsWords();
    void onlyTheRowOfTheRunningTaskIsGreenAndOpen();
    void aTimerOfATaskThatIsNotInTheListLocksEveryRow();
    void anEntryWithoutATaskIsActiveForNoRow();
    void whileLoadingWithoutATimerRowsLockAndNothingIsBusy();
    void aPressAnywhereOnARowStartsItsTask();
    void aPressOnTheRunningRowStartsItAgain();
    void rowsUnlockWhenTheTimerStops();
    void aListThatGetsEmptyAndFullAgainIsFollowed();

    // Around
    void theChipShowsTheShortcut();
    void retryPollsAgainAndTheBannerStaysUntilThen();
    void openSettingsCallsBack_data();
    void openSettingsCallsBack();
    void theCallBackMayDestroyTheView();
    void theFooterOpensTheVendorsSite();
    void thePowerButtonQuitsAtOnce();
    void everyButtonHasANameForScreenReaders();
    void assistiveProgramsFindAndPressEveryButton_data();
    void assistiveProgramsFindAndPressEveryButton();
    void assistiveProgramsStartATask();
    void theColumnOfTasksHasAName();
    void theKeyboardGoesFromTopToBottom();
    void aChangeOfTheContentTellsTheNewHeight();

private:
    MenuBarView &show();
    TimerViewModel &viewModel() { return *m_world->viewModel; }
    QList<DarkTaskRow *> rows() const { return visibleIn<DarkTaskRow>(*m_view); }
    QStringList sections() const;
    /// Holds the answers to all requests from now on.
    void hold() { m_world->notion.isHolding = true; }
    void release();
    int callCount(const QString &call) const { return int(m_world->notion.calls().count(call)); }

    std::unique_ptr<ViewWorld> m_world;
    std::unique_ptr<MenuBarView> m_view;
    int m_settingsCount = 0;
};

void MenuBarViewTest::init()
{
    m_settingsCount = 0;
    m_world = std::make_unique<ViewWorld>();
}

void MenuBarViewTest::cleanup()
{
    m_view.reset();
    m_world->viewModel.reset();
    m_world->notion.release();
    m_world.reset();
}

MenuBarView &MenuBarViewTest::show()
{
    m_view = std::make_unique<MenuBarView>(
        viewModel(), [this] { ++m_settingsCount; }, m_world->settings.settings, m_world->clock);
    m_view->show();
    if (!QTest::qWaitForWindowExposed(m_view.get()))
        qFatal("The view is not shown");
    settleLayout();
    return *m_view;
}

void MenuBarViewTest::release()
{
    m_world->notion.isHolding = false;
    m_world->notion.release();
}

/// Object names of what is shown, from top to bottom.
QStringList MenuBarViewTest::sections() const
{
    static const QStringList known{u"networkErrorBanner"_s, u"setupRequiredView"_s, u"activeTimerCard"_s,
                                   u"idleCard"_s,           u"todayTasksSection"_s, u"footerView"_s};
    QMap<int, QString> byPlace;
    for (const auto &name : known) {
        if (const auto *found = childIn(*m_view, name))
            byPlace.insert(placeIn(*m_view, found).top(), name);
    }
    return byPlace.values();
}

void MenuBarViewTest::sectionsFollowSetupAndTimer_data()
{
    QTest::addColumn<bool>("isConfigured");
    QTest::addColumn<bool>("hasTimer");
    QTest::addColumn<QStringList>("shown");
    const QStringList setup{u"setupRequiredView"_s, u"footerView"_s};
    QTest::newRow("no setup") << false << false << setup;
    QTest::newRow("no setup but a timer") << false << true << setup;
    QTest::newRow("no timer") << true << false << QStringList{u"idleCard"_s, u"todayTasksSection"_s, u"footerView"_s};
    QTest::newRow("a timer") << true << true
                             << QStringList{u"activeTimerCard"_s, u"todayTasksSection"_s, u"footerView"_s};
}

void MenuBarViewTest::sectionsFollowSetupAndTimer()
{
    QFETCH(bool, isConfigured);
    QFETCH(bool, hasTimer);
    if (hasTimer)
        m_world->showTimer({});
    m_world->poll();
    if (!isConfigured)
        m_world->settings.settings.setTasksDBId({});
    show();
    QTEST(sections(), "shown");
}

void MenuBarViewTest::theBannerStandsAboveTheSetupView()
{
    m_world->notion.isOffline = true;
    m_world->poll();
    QVERIFY(viewModel().hasNetworkError());
    m_world->settings.settings.setApiKey({});
    show();
    QCOMPARE(sections(), QStringList({u"networkErrorBanner"_s, u"setupRequiredView"_s, u"footerView"_s}));
}

void MenuBarViewTest::theBannerComesAndGoesWithTheError()
{
    m_world->poll();
    show();
    QVERIFY(!textIn(*m_view, u"Connection issue"_s));
    m_world->notion.isOffline = true;
    m_world->poll();
    settleLayout();
    QVERIFY(textIn(*m_view, u"Connection issue"_s));
    QCOMPARE(sections().first(), u"networkErrorBanner"_s);
    m_world->notion.isOffline = false;
    m_world->poll();
    settleLayout();
    QVERIFY(!textIn(*m_view, u"Connection issue"_s));
    QCOMPARE(sections().first(), u"idleCard"_s);
}

void MenuBarViewTest::aNewSetupShowsAtOnce()
{
    m_world->settings.settings.setApiKey({});
    show();
    QVERIFY(textIn(*m_view, u"Setup Required"_s));
    m_world->settings.settings.setApiKey(u"ntn_test"_s);
    settleLayout();
    QCOMPARE(sections(), QStringList({u"idleCard"_s, u"todayTasksSection"_s, u"footerView"_s}));
}

void MenuBarViewTest::aTimerThatStopsElsewhereLeavesTheIdleCard()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    m_world->showNothing();
    m_world->poll();
    settleLayout();
    QCOMPARE(sections(), QStringList({u"idleCard"_s, u"todayTasksSection"_s, u"footerView"_s}));
    QVERIFY(textIn(*m_view, u"No active timer"_s));
}

void MenuBarViewTest::anEntryThatIsNotRunningIsShownAllTheSame()
{
    m_world->showTimer({.status = u"Paused"_s});
    m_world->poll();
    QVERIFY(!viewModel().isTimerRunning());
    show();
    QCOMPARE(sections().first(), u"activeTimerCard"_s);
    QVERIFY(textIn(*m_view, u"Running"_s));
}

void MenuBarViewTest::anErrorMessageIsShownNowhere()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    viewModel().stopTimer(); // The workspace knows no such entry.
    QTRY_VERIFY(viewModel().errorMessage());
    QVERIFY(!viewModel().hasNetworkError());
    settleLayout();
    for (const auto *label : visibleIn<ElidedLabel>(*m_view))
        QVERIFY(!label->text().contains(u"Failed"_s));
    QVERIFY(!textIn(*m_view, u"Connection issue"_s));
}

void MenuBarViewTest::theCardTellsWhatIsKnownOfTheTimer()
{
    m_world->showTimer({.elapsed = 5025, .totalMinutes = 125});
    m_world->poll();
    show();
    QCOMPARE(childIn<ElidedLabel>(*m_view, u"taskName"_s)->text(), u"Home page layout"_s);
    QVERIFY(textIn(*m_view, u"Running"_s));
    QCOMPARE(childIn<ElidedLabel>(*m_view, u"started"_s)->text(), u"Started 08:06"_s);
    QCOMPARE(visibleIn<ClockText>(*m_view).first()->time(), u"1:23:45"_s);
    QStringList cells;
    for (const auto *cell : visibleIn<StatItem>(*m_view)) {
        for (const auto *label : visibleIn<ElidedLabel>(*cell))
            cells.append(label->text());
    }
    QCOMPARE(cells, QStringList({u"PROJECT"_s, u"Website"_s, u"CLIENT"_s, u"Northwind"_s, u"TOTAL"_s, u"2h 5m"_s}));
}

void MenuBarViewTest::whatIsNotKnownIsADash()
{
    m_world->showTimer({.project = std::nullopt, .client = std::nullopt, .totalMinutes = std::nullopt});
    m_world->poll();
    show();
    QStringList values;
    for (const auto *cell : visibleIn<StatItem>(*m_view))
        values.append(childIn<ElidedLabel>(*cell, u"value"_s)->text());
    QCOMPARE(values, QStringList({u"—"_s, u"—"_s, u"—"_s}));
}

void MenuBarViewTest::aChangedEntryIsShownInPlace()
{
    m_world->showTimer({.elapsed = 1800});
    m_world->poll();
    show();
    const auto *stop = childIn(*m_view, u"stop"_s);
    m_world->showTimer({.taskName = u"Another name"_s, .elapsed = 7260});
    m_world->poll();
    settleLayout();
    QCOMPARE(childIn<ElidedLabel>(*m_view, u"taskName"_s)->text(), u"Another name"_s);
    QCOMPARE(visibleIn<ClockText>(*m_view).first()->time(), u"2:01:00"_s);
    QCOMPARE(visibleIn<ProgressRing>(*m_view).first()->color(), QColor(theme::systemOrange));
    QCOMPARE(childIn(*m_view, u"stop"_s), stop); // Whoever is about to press it isn't interrupted.
}

void MenuBarViewTest::clockAndRingTickTogether()
{
    m_world->showTimer({.elapsed = 3599});
    m_world->poll();
    show();
    auto *clock = visibleIn<ClockText>(*m_view).first();
    auto *ring = visibleIn<ProgressRing>(*m_view).first();
    QCOMPARE(clock->time(), u"0:59:59"_s);
    QCOMPARE(ring->color(), QColor(theme::systemGreen));
    QVERIFY(ring->progress() > 0.999);
    m_world->clock.setNow(m_world->clock.now().addSecs(1));
    QTRY_COMPARE(clock->time(), u"1:00:00"_s);
    QCOMPARE(ring->color(), QColor(theme::systemCyan));
    QCOMPARE(ring->progress(), 0.0);
}

void MenuBarViewTest::aStartInTheFutureShowsZero()
{
    m_world->showTimer({.elapsed = -90});
    m_world->poll();
    show();
    QCOMPARE(visibleIn<ClockText>(*m_view).first()->time(), u"0:00:00"_s);
    QCOMPARE(visibleIn<ProgressRing>(*m_view).first()->progress(), 0.0);
    QCOMPARE(visibleIn<ProgressRing>(*m_view).first()->color(), QColor(theme::systemGreen));
}

void MenuBarViewTest::nothingTicksWithoutATimerOrASight()
{
    m_world->poll();
    show();
    const auto *timeline = m_view->findChild<Timeline *>();
    QVERIFY(!timeline->isTicking());
    m_world->showTimer({});
    m_world->poll();
    QVERIFY(timeline->isTicking());
    m_view->hide();
    QVERIFY(!timeline->isTicking());
    m_view->show();
    QVERIFY(timeline->isTicking());
    m_world->showNothing();
    m_world->poll();
    QVERIFY(!timeline->isTicking());
}

void MenuBarViewTest::openInNotionOpensThePageWithoutHyphens()
{
    m_world->showTimer({.taskId = u"0f6b-1c2d-99"_s});
    m_world->poll();
    show();
    const UrlCatcher browser;
    QTest::mouseClick(childIn(*m_view, u"openInNotion"_s), Qt::LeftButton);
    QCOMPARE(browser.opened, QList{QUrl(u"https://www.notion.so/0f6b1c2d99"_s)});
}

void MenuBarViewTest::stopEndsTheEntry()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    hold();
    QTest::mouseClick(childIn(*m_view, u"stop"_s), Qt::LeftButton);
    QCOMPARE(m_world->notion.calls().last(), u"PATCH /pages/e1"_s);
    release();
    QTRY_VERIFY(!viewModel().isLoading());
}

void MenuBarViewTest::whileTheStopRunsTheButtonIsBusyAndOpenInNotionWorks()
{
    m_world->showTimer({});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    auto *stop = childIn<CardButton>(*m_view, u"stop"_s);
    QVERIFY(visibleIn<BusyIndicator>(*m_view).isEmpty());
    QCOMPARE(visibleIn<SymbolIcon>(*stop).first()->symbol(), Symbol::stopFill);
    hold();
    QTest::mouseClick(stop, Qt::LeftButton);
    QVERIFY(viewModel().isLoading());
    QVERIFY(!stop->isEnabled());
    QCOMPARE(visibleIn<BusyIndicator>(*m_view).size(), 1);
    QVERIFY(visibleIn<BusyIndicator>(*stop).first()->isTurning());
    QVERIFY(visibleIn<SymbolIcon>(*stop).isEmpty());
    for (const auto *row : rows())
        QVERIFY(!row->isEnabled()); // The running task's too.
    QTest::mouseClick(stop, Qt::LeftButton);
    QCOMPARE(callCount(u"PATCH /pages/e1"_s), 1);

    const UrlCatcher browser;
    QTest::mouseClick(childIn(*m_view, u"openInNotion"_s), Qt::LeftButton);
    QCOMPARE(browser.opened.size(), 1);
}

void MenuBarViewTest::aFailedStopGivesTheButtonBack()
{
    m_world->showTimer({});
    m_world->poll();
    show();
    auto *stop = childIn<CardButton>(*m_view, u"stop"_s);
    hold();
    QTest::mouseClick(stop, Qt::LeftButton);
    const QPointer indicator = visibleIn<BusyIndicator>(*stop).first();
    release(); // The workspace knows no such entry.
    QTRY_VERIFY(stop->isEnabled());
    QVERIFY(!indicator->isTurning());
    QCOMPARE(visibleIn<SymbolIcon>(*stop).first()->symbol(), Symbol::stopFill);
    QCOMPARE(sections().first(), u"activeTimerCard"_s);
}

void MenuBarViewTest::tasksKeepTheOrderOfTheList()
{
    m_world->showTasks({u"zebra"_s, u"Apple"_s, u"10"_s, u"9"_s});
    m_world->poll();
    show();
    QStringList names;
    const auto *column = m_view->findChild<TaskColumn *>();
    for (int i = 0; i < 4; ++i)
        names.append(column->rowAt(i)->accessibleName());
    QCOMPARE(names, QStringList({u"zebra"_s, u"Apple"_s, u"10"_s, u"9"_s}));
}

void MenuBarViewTest::anEmptyListHasItsWords()
{
    m_world->poll();
    show();
    QVERIFY(textIn(*m_view, u"TODAY'S TASKS"_s));
    QVERIFY(textIn(*m_view, u"No tasks for today"_s));
}

void MenuBarViewTest::onlyTheRowOfTheRunningTaskIsGreenAndOpen()
{
    m_world->showTimer({.taskId = u"t2"_s});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    for (const auto *row : rows()) {
        const bool isActive = row->accessibleName() == sampleTasks.at(1);
        const auto *icon = visibleIn<SymbolIcon>(*row).first();
        QCOMPARE(row->isEnabled(), isActive);
        QCOMPARE(visibleIn<RoundedBox>(*row).first()->color(),
                 isActive ? QColor(theme::systemGreen) : theme::white(0.15));
        QCOMPARE(icon->symbol(), isActive ? Symbol::timer : Symbol::playFill);
        QCOMPARE(inkOf(icon), isActive ? QColor(theme::systemGreen) : theme::white(0.2));
        QCOMPARE(inkOf(visibleIn<ElidedLabel>(*row).first()), theme::white(0.8));
    }
}

void MenuBarViewTest::aTimerOfATaskThatIsNotInTheListLocksEveryRow()
{
    m_world->showTimer({.taskId = u"t9"_s});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    QCOMPARE(rows().size(), 3);
    for (const auto *row : rows()) {
        QVERIFY(!row->isEnabled());
        QCOMPARE(visibleIn<RoundedBox>(*row).first()->color(), theme::white(0.15));
        QCOMPARE(visibleIn<SymbolIcon>(*row).first()->symbol(), Symbol::playFill);
    }
}

void MenuBarViewTest::anEntryWithoutATaskIsActiveForNoRow()
{
    m_world->showTimer({.taskId = std::nullopt});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    QVERIFY(viewModel().activeTimer() && !viewModel().activeTimer()->taskId);
    show();
    for (const auto *row : rows()) {
        QVERIFY(!row->isEnabled());
        QCOMPARE(visibleIn<SymbolIcon>(*row).first()->symbol(), Symbol::playFill);
    }
    auto *open = childIn<CardButton>(*m_view, u"openInNotion"_s);
    QVERIFY(open->isEnabled());
    const UrlCatcher browser;
    QTest::mouseClick(open, Qt::LeftButton);
    QVERIFY(browser.opened.isEmpty());
}

void MenuBarViewTest::whileLoadingWithoutATimerRowsLockAndNothingIsBusy()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    hold();
    QTest::mouseClick(rows().first(), Qt::LeftButton);
    QVERIFY(viewModel().isLoading());
    QVERIFY(!viewModel().activeTimer());
    for (const auto *row : rows())
        QVERIFY(!row->isEnabled());
    QVERIFY(visibleIn<BusyIndicator>(*m_view).isEmpty());
    release(); // The workspace refuses the entry.
    QTRY_VERIFY(rows().first()->isEnabled());
}

void MenuBarViewTest::aPressAnywhereOnARowStartsItsTask()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    hold();
    auto *row = m_view->findChild<TaskColumn *>()->rowAt(1);
    const QPoint corner(row->width() - 2, row->height() - 2);
    for (const auto &place : {row->rect().topLeft(), corner, row->rect().center()})
        QCOMPARE(m_view->childAt(row->mapTo(m_view.get(), place)), row);
    QTest::mouseClick(row, Qt::LeftButton, {}, corner);
    QVERIFY(viewModel().isLoading());
    QCOMPARE(m_world->notion.calls().last(), u"POST /pages"_s);
    const auto task = m_world->notion.asked.last().body[u"properties"_s][u"Task"_s][u"relation"_s][0][u"id"_s];
    QCOMPARE(task.toString(), u"t2"_s);
    release();
    QTRY_VERIFY(!viewModel().isLoading());
}

void MenuBarViewTest::aPressOnTheRunningRowStartsItAgain()
{
    m_world->showTimer({.taskId = u"t1"_s});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    m_world->notion.answer(u"PATCH /pages/e1"_s, {});
    m_world->notion.answer(u"PATCH /pages/t1"_s, {});
    m_world->notion.answer(u"POST /pages"_s, {});
    show();
    QTest::mouseClick(m_view->findChild<TaskColumn *>()->rowAt(0), Qt::LeftButton);
    QTRY_VERIFY(!viewModel().isLoading());
    QCOMPARE(callCount(u"PATCH /pages/e1"_s), 1); // The entry that ran is closed,
    QCOMPARE(callCount(u"POST /pages"_s), 1);     // and a new one opened.
    QVERIFY(viewModel().activeTimer());
}

void MenuBarViewTest::rowsUnlockWhenTheTimerStops()
{
    m_world->showTimer({.taskId = u"t1"_s});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    QVERIFY(!m_view->findChild<TaskColumn *>()->rowAt(1)->isEnabled());
    m_world->notion.answerRows(ViewWorld::trackerQuery(), {});
    m_world->poll();
    for (const auto *row : rows()) {
        QVERIFY(row->isEnabled());
        QCOMPARE(visibleIn<RoundedBox>(*row).first()->color(), theme::white(0.15));
    }
}

void MenuBarViewTest::aListThatGetsEmptyAndFullAgainIsFollowed()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    QCOMPARE(rows().size(), 3);
    m_world->showTasks(QStringList());
    m_world->poll();
    settleLayout();
    QCOMPARE(rows().size(), 0);
    QVERIFY(textIn(*m_view, u"No tasks for today"_s));
    m_world->showTasks({u"Another task"_s});
    m_world->poll();
    settleLayout();
    QCOMPARE(rows().size(), 1);
    QVERIFY(!textIn(*m_view, u"No tasks for today"_s));
    QCOMPARE(sections(), QStringList({u"idleCard"_s, u"todayTasksSection"_s, u"footerView"_s}));
}

void MenuBarViewTest::theChipShowsTheShortcut()
{
    show();
    const auto *chip = childIn(*m_view, u"hotkeyChip"_s);
    QCOMPARE(visibleIn<ElidedLabel>(*chip).first()->text(), u"⇧⌘N"_s);
    m_world->settings.settings.setQuickAddKeyCode(0x28);
    QCOMPARE(visibleIn<ElidedLabel>(*chip).first()->text(), u"⇧⌘K"_s);
    m_world->settings.settings.setQuickAddKeyCode(0);
    m_world->settings.settings.setQuickAddModifiers(0);
    QCOMPARE(visibleIn<ElidedLabel>(*chip).first()->text(), u"Not set"_s);
}

void MenuBarViewTest::retryPollsAgainAndTheBannerStaysUntilThen()
{
    m_world->notion.isOffline = true;
    m_world->poll();
    show();
    hold();
    m_world->notion.isOffline = false;
    const int before = callCount(ViewWorld::trackerQuery());
    auto *retry = childIn(*m_view, u"retry"_s);
    QTest::mouseClick(retry, Qt::LeftButton);
    QTRY_COMPARE(callCount(ViewWorld::trackerQuery()), before + 1);
    QVERIFY(textIn(*m_view, u"Connection issue"_s));
    release();
    QTRY_VERIFY(!textIn(*m_view, u"Connection issue"_s));
}

void MenuBarViewTest::openSettingsCallsBack_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("from the setup view") << u"openSettings"_s;
    QTest::newRow("from the footer") << u"settings"_s;
}

void MenuBarViewTest::openSettingsCallsBack()
{
    QFETCH(QString, button);
    m_world->settings.settings.setApiKey({});
    show();
    QTest::mouseClick(childIn(*m_view, button), Qt::LeftButton);
    QCOMPARE(m_settingsCount, 1);
}

void MenuBarViewTest::theCallBackMayDestroyTheView()
{
    bool wasCalled = false;
    m_view = std::make_unique<MenuBarView>(
        viewModel(),
        [this, &wasCalled] {
            m_view.reset();
            wasCalled = true;
        },
        m_world->settings.settings, m_world->clock);
    m_view->show();
    QTest::mouseClick(childIn(*m_view, u"settings"_s), Qt::LeftButton);
    QVERIFY(wasCalled);
    QVERIFY(!m_view);
}

void MenuBarViewTest::theFooterOpensTheVendorsSite()
{
    show();
    const UrlCatcher browser;
    QVERIFY(textIn(*m_view, u"korvo.app"_s));
    QTest::mouseClick(childIn(*m_view, u"vendorSite"_s), Qt::LeftButton);
    QCOMPARE(browser.opened, QList{QUrl(u"https://korvo.app"_s)});
}

void MenuBarViewTest::thePowerButtonQuitsAtOnce()
{
    show();
    QTimer::singleShot(0, m_view.get(), [this] { QTest::mouseClick(childIn(*m_view, u"quit"_s), Qt::LeftButton); });
    QTimer watchdog;
    connect(&watchdog, &QTimer::timeout, qApp, [] { QCoreApplication::exit(1); });
    watchdog.start(std::chrono::seconds(20));
    QCOMPARE(QCoreApplication::exec(), 0);
}

void MenuBarViewTest::everyButtonHasANameForScreenReaders()
{
    m_world->showTimer({});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    m_world->notion.isOffline = true;
    m_world->poll();
    show();
    QStringList names;
    for (const auto *button : visibleIn<PlainButton>(*m_view))
        names.append(button->accessibleName());
    names.sort();
    QStringList expected = sampleTasks
        + QStringList{u"Stop"_s, u"Open in Notion"_s, u"Retry"_s, u"Settings"_s, u"korvo.app"_s, u"Quit"_s};
    expected.sort();
    QCOMPARE(names, expected);
}

void MenuBarViewTest::assistiveProgramsFindAndPressEveryButton_data()
{
    QTest::addColumn<bool>("isConfigured");
    QTest::addColumn<QString>("timerOf");
    QTest::addColumn<bool>("isOffline");
    QTest::addColumn<bool>("isLoading");
    QTest::addColumn<QStringList>("disabled");
    const QString nobody;
    QTest::newRow("no setup") << false << nobody << false << false << QStringList();
    QTest::newRow("no timer") << true << nobody << false << false << QStringList();
    QTest::newRow("a timer locks the other rows")
        << true << u"t2"_s << false << false << QStringList{sampleTasks.at(0), sampleTasks.at(2)};
    QTest::newRow("a timer of another task locks every row") << true << u"t9"_s << false << false << sampleTasks;
    QTest::newRow("a network error") << true << nobody << true << false << QStringList();
    QTest::newRow("a start under way locks every row") << true << nobody << false << true << sampleTasks;
    QTest::newRow("a stop under way locks all that acts")
        << true << u"t1"_s << false << true << sampleTasks + QStringList{u"Stop"_s};
}

void MenuBarViewTest::assistiveProgramsFindAndPressEveryButton()
{
    QFETCH(const bool, isConfigured);
    QFETCH(const QString, timerOf);
    QFETCH(const bool, isOffline);
    QFETCH(const bool, isLoading);
    QFETCH(QStringList, disabled);
    if (!timerOf.isEmpty())
        m_world->showTimer({.taskId = timerOf});
    m_world->showTasks(sampleTasks);
    m_world->poll();
    m_world->notion.isOffline = isOffline;
    if (isOffline)
        m_world->poll();
    if (!isConfigured)
        m_world->settings.settings.setApiKey({});
    show();
    if (isLoading) {
        hold();
        auto *pressed = timerOf.isEmpty() ? rows().first() : childIn<PlainButton>(*m_view, u"stop"_s);
        QTest::mouseClick(pressed, Qt::LeftButton);
        QVERIFY(viewModel().isLoading());
    }
    const auto buttons = visibleIn<PlainButton>(*m_view);
    QVERIFY(buttons.size() >= 4);
    QStringList found;
    for (auto *button : buttons) {
        auto *told = QAccessible::queryAccessibleInterface(button);
        QVERIFY(told);
        const auto name = told->text(QAccessible::Name);
        QVERIFY(!name.isEmpty());
        QCOMPARE(told->role(), QAccessible::Button);
        auto *actions = told->actionInterface();
        QVERIFY(actions);
        if (told->state().disabled)
            found.append(name);
        QCOMPARE(actions->actionNames().contains(QAccessibleActionInterface::pressAction()), button->isEnabled());
    }
    found.sort();
    disabled.sort();
    QCOMPARE(found, disabled);
    release();
    QTRY_VERIFY(!viewModel().isLoading());
}

void MenuBarViewTest::assistiveProgramsStartATask()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    hold();
    auto *row = QAccessible::queryAccessibleInterface(m_view->findChild<TaskColumn *>()->rowAt(1));
    QVERIFY(row);
    QCOMPARE(row->text(QAccessible::Name), sampleTasks.at(1));
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QTRY_COMPARE(m_world->notion.calls().last(), u"POST /pages"_s);
    const auto task = m_world->notion.asked.last().body[u"properties"_s][u"Task"_s][u"relation"_s][0][u"id"_s];
    QCOMPARE(task.toString(), u"t2"_s);
    release();
    QTRY_VERIFY(!viewModel().isLoading());
}

void MenuBarViewTest::theColumnOfTasksHasAName()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    auto *column = QAccessible::queryAccessibleInterface(m_view->findChild<TaskColumn *>());
    QVERIFY(column);
    QCOMPARE(column->text(QAccessible::Name), u"Today's tasks"_s);
}

void MenuBarViewTest::theKeyboardGoesFromTopToBottom()
{
    m_world->showTasks(sampleTasks);
    m_world->poll();
    show();
    m_view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    m_world->notion.isOffline = true; // The banner is made last and stands first.
    m_world->poll();
    settleLayout();
    childIn(*m_view, u"retry"_s)->setFocus(Qt::TabFocusReason);
    QStringList names;
    for (int i = 0; i < 7; ++i) {
        names.append(qApp->focusWidget()->accessibleName());
        QTest::keyClick(qApp->focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(names, QStringList{u"Retry"_s} + sampleTasks + QStringList({u"Settings"_s, u"korvo.app"_s, u"Quit"_s}));
    QCOMPARE(qApp->focusWidget()->accessibleName(), u"Retry"_s);
}

void MenuBarViewTest::aChangeOfTheContentTellsTheNewHeight()
{
    m_world->poll();
    show();
    const QSignalSpy heights(m_view.get(), &MenuBarView::heightChanged);
    const int before = m_view->sizeHint().height();
    m_world->showTasks(sampleTasks);
    m_world->poll();
    QTRY_COMPARE(heights.count(), 1);
    QVERIFY(heights.last().first().toInt() > before);
    QCOMPARE(m_view->sizeHint().height(), heights.last().first().toInt());
}

QTEST_MAIN(MenuBarViewTest)
#include "MenuBarViewTest.moc"
