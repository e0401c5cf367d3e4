#include "ViewModels/TimerViewModel.h"
#include "Fakes/FakeClock.h"
#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakeNotion.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/LocalZone.h"
#include "Fakes/NotionPages.h"
#include "Fakes/TestSettings.h"
#include "Utilities/Spawn.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QString trackerQuery = u"POST /databases/tracker/query"_s;
const QString tasksQuery = u"POST /databases/tasks/query"_s;

QString pageCall(const QString &id)
{
    return u"GET /pages/"_s + id;
}

} // namespace

class TimerViewModelTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    // The loop
    void nothingHappensBeforePollingIsStarted();
    void firstPollRunsAtOnceAndLogsPollingStarted();
    void anEmptyResultWithNoTimerPublishesNothingAndSleepsForTheIdleInterval();
    void aTimerStartedElsewhereShowsUpAtTheNextPollAndChangesThePace();
    void aChangedIntervalCountsFromTheNextSleep();
    void startingTwiceLeavesExactlyOneLoopAndLogsPollingStartedTwice();
    void startingWithoutConfigurationEndsTheLoopWithoutLoggingPollingStarted();
    void stoppingWithNoLoopOnlyLogsPollingStopped();
    void aSleepingLoopEndsAtOnceOnCancellationWithNoFurtherPoll();
    void stoppingDuringARequestTakesTheErrorPathAndEndsTheLoop();
    void stateStaysWhenTheLoopStops();
    void anOwnerThatGoesAwayDuringARequestEndsTheLoop();
    void theLoopGoesOnAtTheIntervalThatTheOldStateImpliesAfterAFailure();

    // The running entry
    void theQueryAsksForTheLatestRunningEntry();
    void onlyTheFirstRowIsSeenAndTheOtherSurfacesOnceItStops();
    void anEntryIsReadWithItsTaskProjectAndClientOneAfterTheOther();
    void anEntryWithoutATaskCostsNoPageReads();
    void anEntryFollowsTheFirstOfTwoTasks();
    void anUnreadableTaskPageKeepsItsIdAndIsAnUnknownTask();
    void aTaskWithoutTitleIsUnknownButTheRestGoesOn();
    void anUnreadableProjectStillLeavesTheTotalTime();
    void anUnreadableClientKeepsTheProject();
    void aProjectTitleOfTwoRunsShowsOnlyTheFirst();
    void aPageWithoutATitlePropertyGivesNoName();
    void anEmptyProjectTitleIsFoundAllTheSame();
    void aRollupOfNinetyIsATotalTimeOf5400();
    void anEntryWithoutStartBeginsAtEachPoll();
    void anEntryOfAnotherStatusIsStoppedButActive();
    void aRowWithoutIdOrPropertiesFailsThePoll_data();
    void aRowWithoutIdOrPropertiesFailsThePoll();
    void anEqualEntryIsPublishedOnce();
    void aTimerThatEndsElsewhereGoes();

    // Failures
    void anUnauthorizedAnswerRaisesTheFlagJustAsALostConnectionDoes_data();
    void anUnauthorizedAnswerRaisesTheFlagJustAsALostConnectionDoes();
    void aFailureKeepsTimerAndTasksUntilALaterPollSucceeds();
    void aFailureIsLoggedOnce();
    void anExceptionInAPollFailsThatPollAndTheLoopGoesOn();
    void theSameFailureAndTheSameTasksArePublishedOnce();
    void aChangedMappingTakesEffectWithTheNextPoll();
    void anAnswerIsReadByTheMappingOfThatMoment();
    void anEntryIsReadByOneMappingThroughout();
    void theEntryIsShownBeforeTheTasksAreReadAndTheErrorGoesLast();
    void theFlagChangesBeforeTheMessage();

    // Today's tasks
    void theTasksFilterIsBareWithoutATimerStatusOrItsRunningOption_data();
    void theTasksFilterIsBareWithoutATimerStatusOrItsRunningOption();
    void theTasksFilterJoinsDateAndStatusInThatOrder();
    void theDateOfTheFilterChangesAtLocalMidnight_data();
    void theDateOfTheFilterChangesAtLocalMidnight();
    void withoutTaskDateTheListIsEmptiedAndNothingIsAsked_data();
    void withoutTaskDateTheListIsEmptiedAndNothingIsAsked();
    void tasksComeInTheOrderThatNotionGave();
    void aTaskRowWithoutIdOrPropertiesIsDropped();
    void aTaskWithoutTitleIsUntitled();
    void aFailedTasksQueryLeavesTheListAndThePollSucceeds();

private:
    struct World {
        FakeNotion notion;
        FakeClock clock;
        FakeNotificationCenter notifications;
        TestSettings settings;
        FakeSystemLog log;
        std::unique_ptr<TimerViewModel> viewModel;
    };

    void startPolling() { m_world->viewModel->startPollingIfConfigured(); }
    /// Lets everything happen that the present state allows, up to the loop's next sleep.
    void settle();
    void pollAgain();
    int callCount(const QString &call) const { return int(m_world->notion.calls().count(call)); }
    QList<double> sleeps() const;

    FakeNotion &notion() { return m_world->notion; }
    TimerViewModel &viewModel() { return *m_world->viewModel; }

    std::unique_ptr<World> m_world;
};

void TimerViewModelTest::init()
{
    m_world = std::make_unique<World>();
    TestSettings::configure(m_world->settings.settings);
    m_world->viewModel = std::make_unique<TimerViewModel>(m_world->notifications, notion(), m_world->settings.settings,
                                                          m_world->clock);
    notion().answerRows(trackerQuery, {});
    notion().answerRows(tasksQuery, {});
}

void TimerViewModelTest::cleanup()
{
    m_world->viewModel.reset();
    notion().release();
    QVERIFY2(finishSpawned(2000), "A loop went on without its owner");
    m_world.reset();
}

void TimerViewModelTest::settle()
{
    QTRY_VERIFY(m_world->clock.sleeperCount() > 0);
}

void TimerViewModelTest::pollAgain()
{
    const auto before = callCount(trackerQuery);
    m_world->clock.advance(60);
    QTRY_VERIFY(callCount(trackerQuery) > before);
    settle();
}

QList<double> TimerViewModelTest::sleeps() const
{
    QList<double> seconds;
    for (const auto &wait : m_world->clock.waits) {
        if (wait.kind == FakeClock::Kind::sleep)
            seconds.append(wait.seconds);
    }
    return seconds;
}

void TimerViewModelTest::nothingHappensBeforePollingIsStarted()
{
    QCoreApplication::processEvents();
    QVERIFY(notion().asked.isEmpty());
    QVERIFY(!viewModel().activeTimer());
    QVERIFY(viewModel().todayTasks().isEmpty());
    QVERIFY(!viewModel().isLoading());
    QVERIFY(!viewModel().errorMessage());
    QVERIFY(!viewModel().hasNetworkError());
    QVERIFY(!viewModel().isTimerRunning());
    QVERIFY(m_world->log.lines.isEmpty());
}

void TimerViewModelTest::firstPollRunsAtOnceAndLogsPollingStarted()
{
    startPolling();
    settle();
    QCOMPARE(notion().calls(), QStringList({trackerQuery, tasksQuery}));
    QCOMPARE(m_world->log.lines, QStringList{u"INFO Polling started"_s});
}

void TimerViewModelTest::anEmptyResultWithNoTimerPublishesNothingAndSleepsForTheIdleInterval()
{
    QSignalSpy timer(&viewModel(), &TimerViewModel::activeTimerChanged);
    QSignalSpy tasks(&viewModel(), &TimerViewModel::todayTasksChanged);
    QSignalSpy error(&viewModel(), &TimerViewModel::errorMessageChanged);
    QSignalSpy flag(&viewModel(), &TimerViewModel::hasNetworkErrorChanged);
    QSignalSpy running(&viewModel(), &TimerViewModel::isTimerRunningChanged);
    startPolling();
    settle();
    QCOMPARE(timer.count() + tasks.count() + error.count() + flag.count() + running.count(), 0);
    QCOMPARE(sleeps(), QList<double>{60.0});
}

void TimerViewModelTest::aTimerStartedElsewhereShowsUpAtTheNextPollAndChangesThePace()
{
    startPolling();
    settle();
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s)});
    QSignalSpy running(&viewModel(), &TimerViewModel::isTimerRunningChanged);
    pollAgain();
    QVERIFY(viewModel().isTimerRunning());
    QCOMPARE(viewModel().activeTimer()->id, u"e1"_s);
    QCOMPARE(running.count(), 1);
    QCOMPARE(sleeps(), QList<double>({60.0, 30.0}));
}

void TimerViewModelTest::aChangedIntervalCountsFromTheNextSleep()
{
    startPolling();
    settle();
    m_world->settings.settings.setPollIntervalIdle(15);
    QCOMPARE(sleeps(), QList<double>{60.0});
    pollAgain();
    QCOMPARE(sleeps(), QList<double>({60.0, 15.0}));
}

void TimerViewModelTest::startingTwiceLeavesExactlyOneLoopAndLogsPollingStartedTwice()
{
    startPolling();
    startPolling();
    QTRY_COMPARE(spawnedCount(), 1);
    settle();
    QCOMPARE(m_world->log.lines.count(u"INFO Polling started"_s), 2);
    QCOMPARE(m_world->clock.sleeperCount(), 1);
    QVERIFY(!viewModel().hasNetworkError());
}

void TimerViewModelTest::startingWithoutConfigurationEndsTheLoopWithoutLoggingPollingStarted()
{
    startPolling();
    settle();
    m_world->settings.settings.setApiKey({});
    startPolling();
    QTRY_COMPARE(spawnedCount(), 0);
    QCOMPARE(m_world->log.lines,
             QStringList({u"INFO Polling started"_s, u"INFO Polling task finished (cancelled: true)"_s}));
}

void TimerViewModelTest::stoppingWithNoLoopOnlyLogsPollingStopped()
{
    viewModel().stopPolling();
    QCoreApplication::processEvents();
    QCOMPARE(m_world->log.lines, QStringList{u"INFO Polling stopped"_s});
    QVERIFY(notion().asked.isEmpty());
}

void TimerViewModelTest::aSleepingLoopEndsAtOnceOnCancellationWithNoFurtherPoll()
{
    startPolling();
    settle();
    const auto asked = notion().asked.size();
    viewModel().stopPolling();
    QTRY_COMPARE(spawnedCount(), 0);
    QCOMPARE(notion().asked.size(), asked);
    QCOMPARE(m_world->log.lines,
             QStringList({u"INFO Polling started"_s, u"INFO Polling stopped"_s,
                          u"INFO Polling task finished (cancelled: true)"_s}));
}

void TimerViewModelTest::stoppingDuringARequestTakesTheErrorPathAndEndsTheLoop()
{
    notion().isHolding = true;
    startPolling();
    QTRY_COMPARE(notion().heldCount(), 1);
    viewModel().stopPolling();
    QTRY_COMPARE(spawnedCount(), 0);
    QVERIFY(viewModel().hasNetworkError());
    QCOMPARE(viewModel().errorMessage(), u"Network error: cancelled"_s);
    QCOMPARE(m_world->log.lines.last(), u"INFO Polling task finished (cancelled: true)"_s);
}

void TimerViewModelTest::stateStaysWhenTheLoopStops()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s)});
    notion().answerRows(tasksQuery, {pages::task(u"t1"_s, u"Write"_s)});
    startPolling();
    settle();
    m_world->settings.settings.setTasksDBId({});
    m_world->settings.settings.setTimeTrackerDBId({});
    startPolling();
    QTRY_COMPARE(spawnedCount(), 0);
    QVERIFY(viewModel().isTimerRunning());
    QCOMPARE(viewModel().todayTasks().size(), 1);
}

void TimerViewModelTest::anOwnerThatGoesAwayDuringARequestEndsTheLoop()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().isHolding = true;
    startPolling();
    QTRY_COMPARE(notion().heldCount(), 1);
    m_world->viewModel.reset();
    QTRY_COMPARE(spawnedCount(), 0);
}

void TimerViewModelTest::theLoopGoesOnAtTheIntervalThatTheOldStateImpliesAfterAFailure()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s)});
    startPolling();
    settle();
    notion().forget(trackerQuery);
    pollAgain();
    QVERIFY(viewModel().hasNetworkError());
    QCOMPARE(sleeps(), QList<double>({30.0, 30.0}));
}

void TimerViewModelTest::theQueryAsksForTheLatestRunningEntry()
{
    startPolling();
    settle();
    const QJsonObject expected{
        {u"filter"_s,
         QJsonObject{{u"property"_s, u"Status"_s}, {u"select"_s, QJsonObject{{u"equals"_s, u"Running"_s}}}}},
        {u"sorts"_s, QJsonArray{QJsonObject{{u"property"_s, u"Start"_s}, {u"direction"_s, u"descending"_s}}}},
        {u"page_size"_s, 1},
    };
    QCOMPARE(notion().asked.first().body, expected);
}

void TimerViewModelTest::onlyTheFirstRowIsSeenAndTheOtherSurfacesOnceItStops()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"late"_s), pages::runningEntry(u"early"_s)});
    startPolling();
    settle();
    QCOMPARE(viewModel().activeTimer()->id, u"late"_s);
    notion().answerRows(trackerQuery, {pages::runningEntry(u"early"_s)});
    pollAgain();
    QCOMPARE(viewModel().activeTimer()->id, u"early"_s);
}

void TimerViewModelTest::anEntryIsReadWithItsTaskProjectAndClientOneAfterTheOther()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(pageCall(u"t1"_s),
                    pages::page(u"t1"_s,
                                {{u"Name"_s, pages::title({u"Write the letter"_s})},
                                 {u"Project"_s, pages::relation({u"p1"_s, u"p2"_s})},
                                 {u"Total minutes"_s, pages::rollup(12.5)}}));
    notion().answer(pageCall(u"p1"_s),
                    pages::page(u"p1"_s,
                                {{u"Area"_s, pages::select(u"Home"_s)},
                                 {u"Client"_s, pages::relation({u"c1"_s})},
                                 {u"What it is called"_s, pages::title({u"Correspondence"_s})}}));
    notion().answer(pageCall(u"c1"_s), pages::page(u"c1"_s, {{u"Company"_s, pages::title({u"Post & Sons"_s})}}));
    startPolling();
    settle();
    QCOMPARE(notion().calls(),
             QStringList({trackerQuery, pageCall(u"t1"_s), pageCall(u"p1"_s), pageCall(u"c1"_s), tasksQuery}));
    const TimerEntry expected{
        .id = u"e1"_s,
        .startTime = QDateTime(QDate(2026, 11, 21), QTime(8, 30), Qt::UTC),
        .taskId = u"t1"_s,
        .taskName = u"Write the letter"_s,
        .status = TimerEntry::TimerStatus::running,
        .projectName = u"Correspondence"_s,
        .clientName = u"Post & Sons"_s,
        .totalTime = 750.0,
    };
    QVERIFY(viewModel().activeTimer() == expected);
}

void TimerViewModelTest::anEntryWithoutATaskCostsNoPageReads()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s)});
    startPolling();
    settle();
    QCOMPARE(notion().calls(), QStringList({trackerQuery, tasksQuery}));
    QCOMPARE(viewModel().activeTimer()->taskName, u"Unknown task"_s);
    QVERIFY(!viewModel().activeTimer()->taskId);
}

void TimerViewModelTest::anEntryFollowsTheFirstOfTwoTasks()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s, u"t2"_s})});
    notion().answer(pageCall(u"t1"_s), pages::task(u"t1"_s, u"First"_s));
    notion().answer(pageCall(u"t2"_s), pages::task(u"t2"_s, u"Second"_s));
    startPolling();
    settle();
    QCOMPARE(viewModel().activeTimer()->taskName, u"First"_s);
    QCOMPARE(callCount(pageCall(u"t2"_s)), 0);
}

void TimerViewModelTest::anUnreadableTaskPageKeepsItsIdAndIsAnUnknownTask()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    startPolling();
    settle();
    const auto &entry = *viewModel().activeTimer();
    QCOMPARE(entry.taskId, u"t1"_s);
    QCOMPARE(entry.taskName, u"Unknown task"_s);
    QVERIFY(!entry.projectName && !entry.clientName && !entry.totalTime);
    QVERIFY(!viewModel().hasNetworkError());
    QCOMPARE(m_world->log.lines, QStringList{u"INFO Polling started"_s});
}

void TimerViewModelTest::aTaskWithoutTitleIsUnknownButTheRestGoesOn()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(pageCall(u"t1"_s),
                    pages::page(u"t1"_s, {{u"Name"_s, pages::title({})}, {u"Project"_s, pages::relation({u"p1"_s})}}));
    notion().answer(pageCall(u"p1"_s), pages::page(u"p1"_s, {{u"Name"_s, pages::title({u"Garden"_s})}}));
    startPolling();
    settle();
    QCOMPARE(viewModel().activeTimer()->taskName, u"Unknown task"_s);
    QCOMPARE(viewModel().activeTimer()->projectName, u"Garden"_s);
}

void TimerViewModelTest::anUnreadableProjectStillLeavesTheTotalTime()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(pageCall(u"t1"_s),
                    pages::page(u"t1"_s,
                                {{u"Name"_s, pages::title({u"Dig"_s})},
                                 {u"Project"_s, pages::relation({u"p1"_s})},
                                 {u"Total minutes"_s, pages::rollup(3)}}));
    startPolling();
    settle();
    const auto &entry = *viewModel().activeTimer();
    QVERIFY(!entry.projectName && !entry.clientName);
    QCOMPARE(entry.totalTime, 180.0);
}

void TimerViewModelTest::anUnreadableClientKeepsTheProject()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(pageCall(u"t1"_s), pages::page(u"t1"_s, {{u"Project"_s, pages::relation({u"p1"_s})}}));
    notion().answer(
        pageCall(u"p1"_s),
        pages::page(u"p1"_s, {{u"Name"_s, pages::title({u"Garden"_s})}, {u"Client"_s, pages::relation({u"c1"_s})}}));
    startPolling();
    settle();
    QCOMPARE(viewModel().activeTimer()->projectName, u"Garden"_s);
    QVERIFY(!viewModel().activeTimer()->clientName);
}

void TimerViewModelTest::aProjectTitleOfTwoRunsShowsOnlyTheFirst()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(pageCall(u"t1"_s), pages::page(u"t1"_s, {{u"Project"_s, pages::relation({u"p1"_s})}}));
    notion().answer(pageCall(u"p1"_s), pages::page(u"p1"_s, {{u"Name"_s, pages::title({u"Kitchen "_s, u"garden"_s})}}));
    startPolling();
    settle();
    QCOMPARE(viewModel().activeTimer()->projectName, u"Kitchen "_s);
}

void TimerViewModelTest::aPageWithoutATitlePropertyGivesNoName()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(pageCall(u"t1"_s), pages::page(u"t1"_s, {{u"Project"_s, pages::relation({u"p1"_s})}}));
    notion().answer(pageCall(u"p1"_s), pages::page(u"p1"_s, {{u"Odd"_s, 5}, {u"Empty"_s, pages::title({})}}));
    startPolling();
    settle();
    QVERIFY(!viewModel().activeTimer()->projectName);
}

void TimerViewModelTest::anEmptyProjectTitleIsFoundAllTheSame()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(pageCall(u"t1"_s), pages::page(u"t1"_s, {{u"Project"_s, pages::relation({u"p1"_s})}}));
    notion().answer(pageCall(u"p1"_s), pages::page(u"p1"_s, {{u"Name"_s, pages::title({QString()})}}));
    startPolling();
    settle();
    QCOMPARE(viewModel().activeTimer()->projectName, std::optional(QString()));
}

void TimerViewModelTest::aRollupOfNinetyIsATotalTimeOf5400()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(pageCall(u"t1"_s), pages::page(u"t1"_s, {{u"Total minutes"_s, pages::rollup(90)}}));
    startPolling();
    settle();
    QCOMPARE(viewModel().activeTimer()->totalTime, 5400.0);
}

void TimerViewModelTest::anEntryWithoutStartBeginsAtEachPoll()
{
    notion().answerRows(trackerQuery, {pages::page(u"e1"_s, {{u"Status"_s, pages::select(u"Running"_s)}})});
    startPolling();
    settle();
    QCOMPARE(viewModel().activeTimer()->startTime, m_world->clock.now());
    pollAgain();
    QCOMPARE(viewModel().activeTimer()->startTime, m_world->clock.now());
}

void TimerViewModelTest::anEntryOfAnotherStatusIsStoppedButActive()
{
    notion().answerRows(
        trackerQuery,
        {pages::page(u"e1"_s, {{u"Status"_s, pages::select(u"running"_s)}, {u"End"_s, pages::date(u"2026-11-21"_s)}})});
    startPolling();
    settle();
    QVERIFY(viewModel().activeTimer());
    QVERIFY(viewModel().activeTimer()->endTime);
    QCOMPARE(viewModel().activeTimer()->status, TimerEntry::TimerStatus::stopped);
    QVERIFY(!viewModel().isTimerRunning());
    QCOMPARE(sleeps(), QList<double>{30.0}); // By its being there, not by its running.
}

void TimerViewModelTest::aRowWithoutIdOrPropertiesFailsThePoll_data()
{
    QTest::addColumn<QJsonObject>("row");
    QTest::newRow("without an id") << QJsonObject{{u"properties"_s, QJsonObject()}};
    QTest::newRow("with a number for its id") << QJsonObject{{u"id"_s, 5}, {u"properties"_s, QJsonObject()}};
    QTest::newRow("without properties") << QJsonObject{{u"id"_s, u"e1"_s}};
    QTest::newRow("with null for its properties")
        << QJsonObject{{u"id"_s, u"e1"_s}, {u"properties"_s, QJsonValue::Null}};
}

void TimerViewModelTest::aRowWithoutIdOrPropertiesFailsThePoll()
{
    QFETCH(QJsonObject, row);
    notion().answerRows(trackerQuery, {row});
    startPolling();
    settle();
    QVERIFY(viewModel().hasNetworkError());
    QCOMPARE(viewModel().errorMessage(), u"Invalid response from Notion"_s);
    QCOMPARE(notion().calls(), QStringList{trackerQuery}); // Today's tasks are not asked for.
}

void TimerViewModelTest::anEqualEntryIsPublishedOnce()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(pageCall(u"t1"_s), pages::task(u"t1"_s, u"Old name"_s));
    notion().answer(pageCall(u"t1"_s), pages::task(u"t1"_s, u"Old name"_s));
    notion().answer(pageCall(u"t1"_s), pages::task(u"t1"_s, u"New name"_s));
    QSignalSpy timer(&viewModel(), &TimerViewModel::activeTimerChanged);
    startPolling();
    settle();
    pollAgain();
    QCOMPARE(timer.count(), 1);
    pollAgain();
    QCOMPARE(timer.count(), 2);
    QCOMPARE(viewModel().activeTimer()->taskName, u"New name"_s);
}

void TimerViewModelTest::aTimerThatEndsElsewhereGoes()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s)});
    startPolling();
    settle();
    notion().answerRows(trackerQuery, {});
    pollAgain();
    QVERIFY(!viewModel().activeTimer());
    QCOMPARE(sleeps(), QList<double>({30.0, 60.0}));
}

void TimerViewModelTest::anUnauthorizedAnswerRaisesTheFlagJustAsALostConnectionDoes_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");
    QTest::newRow("unauthorized") << 401 << u"Invalid API key"_s;
    QTest::newRow("not found") << 404 << u"Resource not found"_s;
    QTest::newRow("client error") << 400 << u"Server error 400: {\"code\":\"validation_error\"}"_s;
    QTest::newRow("overloaded") << 529 << u"Server error 529: {\"code\":\"validation_error\"}"_s;
    QTest::newRow("rate limited") << 429 << u"Rate limited, retrying..."_s;
    QTest::newRow("no connection") << 0 << u"Network error: The Internet connection appears to be offline."_s;
}

void TimerViewModelTest::anUnauthorizedAnswerRaisesTheFlagJustAsALostConnectionDoes()
{
    QFETCH(int, status);
    QFETCH(QString, message);
    m_world->clock.isInstant = false;
    notion().isOffline = status == 0;
    notion().forget(trackerQuery);
    notion().answer(trackerQuery, {{u"code"_s, u"validation_error"_s}}, status);
    startPolling();
    for (int retries = 0; retries < 2 && !viewModel().hasNetworkError(); ++retries) {
        QTRY_VERIFY(m_world->clock.sleeperCount() > 0);
        m_world->clock.advance(2);
    }
    QTRY_VERIFY(viewModel().hasNetworkError());
    QCOMPARE(viewModel().errorMessage(), message);
    QCOMPARE(m_world->log.lines.last(), u"ERROR Poll failed: "_s + message);
}

void TimerViewModelTest::aFailureKeepsTimerAndTasksUntilALaterPollSucceeds()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s)});
    notion().answerRows(tasksQuery, {pages::task(u"t1"_s, u"Write"_s)});
    startPolling();
    settle();
    notion().forget(trackerQuery);
    pollAgain();
    QVERIFY(viewModel().hasNetworkError());
    QVERIFY(viewModel().isTimerRunning());
    QCOMPARE(viewModel().todayTasks().size(), 1);
    QCOMPARE(callCount(tasksQuery), 1);
    notion().answerRows(trackerQuery, {});
    pollAgain();
    QVERIFY(!viewModel().hasNetworkError());
    QVERIFY(!viewModel().errorMessage());
}

void TimerViewModelTest::aFailureIsLoggedOnce()
{
    notion().forget(trackerQuery);
    startPolling();
    settle();
    QCOMPARE(m_world->log.lines, QStringList({u"INFO Polling started"_s, u"ERROR Poll failed: Resource not found"_s}));
}

void TimerViewModelTest::anExceptionInAPollFailsThatPollAndTheLoopGoesOn()
{
    notion().throwsNext = true;
    startPolling();
    settle();
    QCOMPARE(viewModel().errorMessage(), u"no memory for it"_s);
    pollAgain();
    QVERIFY(!viewModel().hasNetworkError());
}

void TimerViewModelTest::theSameFailureAndTheSameTasksArePublishedOnce()
{
    notion().answerRows(tasksQuery, {pages::task(u"t1"_s, u"Write"_s)});
    QSignalSpy tasks(&viewModel(), &TimerViewModel::todayTasksChanged);
    QSignalSpy error(&viewModel(), &TimerViewModel::errorMessageChanged);
    startPolling();
    settle();
    pollAgain();
    QCOMPARE(tasks.count(), 1);
    notion().forget(trackerQuery);
    pollAgain();
    pollAgain();
    QCOMPARE(error.count(), 1);
}

void TimerViewModelTest::aChangedMappingTakesEffectWithTheNextPoll()
{
    startPolling();
    settle();
    m_world->settings.settings.changeFieldMapping(
        [](FieldMapping &mapping) { mapping.ttStatusRunning = u"In progress"_s; });
    notion().asked.clear();
    pollAgain();
    QCOMPARE(notion().asked.first().body[u"filter"_s][u"select"_s][u"equals"_s].toString(), u"In progress"_s);
}

void TimerViewModelTest::anAnswerIsReadByTheMappingOfThatMoment()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s)});
    notion().isHolding = true;
    startPolling();
    QTRY_COMPARE(notion().heldCount(), 1);
    m_world->settings.settings.changeFieldMapping(
        [](FieldMapping &mapping) { mapping.ttStatusRunning = u"In progress"_s; });
    notion().isHolding = false;
    notion().release();
    settle();
    QCOMPARE(viewModel().activeTimer()->status, TimerEntry::TimerStatus::stopped);
}

void TimerViewModelTest::anEntryIsReadByOneMappingThroughout()
{
    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s, {u"t1"_s})});
    notion().answer(
        pageCall(u"t1"_s),
        pages::page(u"t1"_s, {{u"Name"_s, pages::title({u"Write"_s})}, {u"Total minutes"_s, pages::rollup(2)}}));
    notion().isHolding = true;
    startPolling();
    QTRY_COMPARE(notion().heldCount(), 1);
    notion().release();
    QTRY_COMPARE(notion().calls().last(), pageCall(u"t1"_s));
    m_world->settings.settings.changeFieldMapping([](FieldMapping &mapping) {
        mapping.taskName = u"What"_s;
        mapping.taskTotalTimeRollup.clear();
    });
    notion().isHolding = false;
    notion().release();
    settle();
    QCOMPARE(viewModel().activeTimer()->taskName, u"Write"_s);
    QCOMPARE(viewModel().activeTimer()->totalTime, 120.0);
}

void TimerViewModelTest::theEntryIsShownBeforeTheTasksAreReadAndTheErrorGoesLast()
{
    notion().forget(trackerQuery);
    startPolling();
    settle();
    QVERIFY(viewModel().hasNetworkError());

    notion().answerRows(trackerQuery, {pages::runningEntry(u"e1"_s)});
    notion().isHolding = true;
    m_world->clock.advance(60);
    QTRY_COMPARE(notion().heldCount(), 1);
    notion().release();
    QTRY_COMPARE(notion().calls().last(), tasksQuery);
    QCOMPARE(notion().heldCount(), 1);
    QVERIFY(viewModel().isTimerRunning());
    QVERIFY(viewModel().hasNetworkError());
    QCOMPARE(viewModel().errorMessage(), u"Resource not found"_s);

    notion().release();
    QTRY_VERIFY(!viewModel().hasNetworkError());
    QVERIFY(!viewModel().errorMessage());
}

void TimerViewModelTest::theFlagChangesBeforeTheMessage()
{
    QStringList changes;
    const auto flag = viewModel().bindableHasNetworkError().addNotifier(
        [&] { changes.append(viewModel().hasNetworkError() ? u"flag up"_s : u"flag down"_s); });
    const auto message = viewModel().bindableErrorMessage().addNotifier(
        [&] { changes.append(viewModel().errorMessage().value_or(u"no message"_s)); });
    notion().forget(trackerQuery);
    startPolling();
    settle();
    QCOMPARE(changes, QStringList({u"flag up"_s, u"Resource not found"_s}));
    changes.clear();
    notion().answerRows(trackerQuery, {});
    pollAgain();
    QCOMPARE(changes, QStringList({u"flag down"_s, u"no message"_s}));
}

void TimerViewModelTest::theTasksFilterIsBareWithoutATimerStatusOrItsRunningOption_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("running");
    QTest::newRow("neither is mapped") << QString() << QString();
    QTest::newRow("only the option is mapped") << QString() << u"Running"_s;
    QTest::newRow("only the status is mapped") << u"Timer"_s << QString();
}

void TimerViewModelTest::theTasksFilterIsBareWithoutATimerStatusOrItsRunningOption()
{
    QFETCH(QString, status);
    QFETCH(QString, running);
    m_world->settings.settings.changeFieldMapping([&](FieldMapping &mapping) {
        mapping.taskTimerStatus = status;
        mapping.taskTimerStatusRunning = running;
    });
    startPolling();
    settle();
    const QJsonObject expected{
        {u"filter"_s,
         QJsonObject{{u"property"_s, u"Date"_s}, {u"date"_s, QJsonObject{{u"equals"_s, u"2026-11-21"_s}}}}},
        {u"page_size"_s, 100}};
    QCOMPARE(notion().asked.last().body, expected);
}

void TimerViewModelTest::theTasksFilterJoinsDateAndStatusInThatOrder()
{
    startPolling();
    settle();
    const QJsonObject date{{u"property"_s, u"Date"_s}, {u"date"_s, QJsonObject{{u"equals"_s, u"2026-11-21"_s}}}};
    const QJsonObject status{{u"property"_s, u"Timer"_s},
                             {u"select"_s, QJsonObject{{u"does_not_equal"_s, u"Running"_s}}}};
    const QJsonObject expected{{u"filter"_s, QJsonObject{{u"and"_s, QJsonArray{date, status}}}}, {u"page_size"_s, 100}};
    QCOMPARE(notion().asked.last().body, expected);
}

void TimerViewModelTest::theDateOfTheFilterChangesAtLocalMidnight_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::newRow("where it is the next day in UTC before midnight") << "America/Los_Angeles"_ba;
    QTest::newRow("where it is the day before in UTC after midnight") << "Pacific/Auckland"_ba;
}

void TimerViewModelTest::theDateOfTheFilterChangesAtLocalMidnight()
{
    QFETCH(QByteArray, zone);
    const LocalZone local(zone);
    m_world->clock.setNow(QDateTime(QDate(2026, 12, 31), QTime(23, 59)));
    startPolling();
    settle();
    const auto day = [this] {
        const auto parts = notion().asked.last().body[u"filter"_s][u"and"_s].toArray();
        return parts.first()[u"date"_s][u"equals"_s].toString();
    };
    QCOMPARE(day(), u"2026-12-31"_s);
    notion().answerRows(tasksQuery, {pages::task(u"t1"_s, u"New Year's task"_s)});
    m_world->clock.setNow(QDateTime(QDate(2027, 1, 1), QTime(0, 1)));
    pollAgain();
    QCOMPARE(day(), u"2027-01-01"_s);
    QCOMPARE(viewModel().todayTasks().first().name, u"New Year's task"_s);
}

void TimerViewModelTest::withoutTaskDateTheListIsEmptiedAndNothingIsAsked_data()
{
    QTest::addColumn<bool>("hasDatabase");
    QTest::newRow("the date is not mapped") << true;
    QTest::newRow("there is no Tasks database") << false;
}

void TimerViewModelTest::withoutTaskDateTheListIsEmptiedAndNothingIsAsked()
{
    QFETCH(bool, hasDatabase);
    notion().answerRows(tasksQuery, {pages::task(u"t1"_s, u"Write"_s)});
    startPolling();
    settle();
    QCOMPARE(viewModel().todayTasks().size(), 1);
    if (hasDatabase)
        m_world->settings.settings.changeFieldMapping([](FieldMapping &mapping) { mapping.taskDate.clear(); });
    else
        m_world->settings.settings.setTasksDBId({});
    pollAgain();
    QVERIFY(viewModel().todayTasks().isEmpty());
    QCOMPARE(callCount(tasksQuery), 1);
    QVERIFY(!viewModel().hasNetworkError());
}

void TimerViewModelTest::tasksComeInTheOrderThatNotionGave()
{
    auto running = pages::task(u"t2"_s, u"Alpha"_s);
    auto properties = running[u"properties"_s].toObject();
    properties[u"Timer"_s] = pages::select(u"Paused"_s);
    running[u"properties"_s] = properties;
    notion().answerRows(tasksQuery, {pages::task(u"t1"_s, u"Omega"_s), running});
    startPolling();
    settle();
    const auto date = QDate(2026, 11, 21).startOfDay();
    const QList<NotionTask> expected{{.id = u"t1"_s, .name = u"Omega"_s, .date = date},
                                     {.id = u"t2"_s, .name = u"Alpha"_s, .date = date, .timerStatus = u"Paused"_s}};
    QCOMPARE(viewModel().todayTasks(), expected);
}

void TimerViewModelTest::aTaskRowWithoutIdOrPropertiesIsDropped()
{
    notion().answerRows(tasksQuery, {{{u"id"_s, u"t0"_s}}, pages::task(u"t1"_s, u"Write"_s), {{u"properties"_s, 1}}});
    startPolling();
    settle();
    QCOMPARE(viewModel().todayTasks().size(), 1);
    QCOMPARE(viewModel().todayTasks().first().id, u"t1"_s);
}

void TimerViewModelTest::aTaskWithoutTitleIsUntitled()
{
    notion().answerRows(tasksQuery, {pages::page(u"t1"_s, {})});
    startPolling();
    settle();
    QCOMPARE(viewModel().todayTasks().first(), (NotionTask{.id = u"t1"_s, .name = u"Untitled"_s, .date = {}}));
}

void TimerViewModelTest::aFailedTasksQueryLeavesTheListAndThePollSucceeds()
{
    notion().answerRows(tasksQuery, {pages::task(u"t1"_s, u"Write"_s)});
    startPolling();
    settle();
    notion().forget(tasksQuery);
    pollAgain();
    QCOMPARE(viewModel().todayTasks().size(), 1);
    QVERIFY(!viewModel().hasNetworkError());
    QVERIFY(!viewModel().errorMessage());
    QCOMPARE(m_world->log.lines, QStringList{u"INFO Polling started"_s});
}

QTEST_GUILESS_MAIN(TimerViewModelTest)
#include "TimerViewModelTest.moc"
