#include "Fakes/FakeClock.h"
#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/TestSettings.h"
#include "Services/CurlTransport.h"
#include "Services/NotionPropertyMapper.h"
#include "Utilities/Spawn.h"
#include "ViewModels/TimerViewModel.h"
#include "ViewModels/UserAction.h"
#include "sandbox/SandboxServer.h"
#include "sandbox/Workspace.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

using sandbox::Fault;

// What the sample workspace holds: this one runs at the start, the other does not.
const QString runningTask = u"Home page layout"_s;
const QString otherTask = u"Answer the printer"_s;
const QString newTask = u"Call the framer"_s; // One that is not there yet.
const QString createdLine = u"INFO Quick add: created task 'Call the framer' and started timer"_s;

QString selectName(const QJsonObject &page, const QString &property)
{
    return page[u"properties"_s][property][u"select"_s][u"name"_s].toString();
}

QString dateStart(const QJsonObject &page, const QString &property)
{
    return page[u"properties"_s][property][u"date"_s][u"start"_s].toString();
}

/// The writes of an action that begins while a timer runs.
QStringList writesOf(Action action)
{
    QStringList writes{u"PATCH entry"_s, u"PATCH task"_s};
    if (action == Action::start)
        writes += {u"POST entry"_s, u"PATCH task"_s};
    else if (action == Action::quickAdd)
        writes += {u"POST task"_s, u"POST entry"_s};
    return writes;
}

/// How many requests the poll behind an action sends: the queries for timer and today's tasks, and between them one page
/// each for the timer's task, project and client. A task of a quick add has no project yet.
int closingRequestsOf(Action action)
{
    switch (action) {
    case Action::start:
        return 5;
    case Action::stop:
        return 2;
    case Action::quickAdd:
        return 3;
    }
    return 0;
}

QString failureWords(Action action, const QString &description)
{
    const auto what = action == Action::start ? u"start timer"_s
        : action == Action::stop              ? u"stop timer"_s
                                              : u"create task"_s;
    return u"Failed to "_s + what + u": "_s + description;
}

QString serverError(const Fault &fault)
{
    return u"Server error %1: "_s.arg(fault.reply.status) + QString::fromUtf8(fault.reply.body);
}

QJsonObject dateProperty(const QDateTime &date)
{
    return NotionPropertyMapper::buildDateProperty(date);
}

/// The way to the network, which throws at one request.
class ThrowingTransport final : public HttpTransport {
public:
    explicit ThrowingTransport(HttpTransport &next) : m_next(next) { }

    QCoro::Task<Result<HttpResponse, HttpError>> send(HttpRequest request, std::stop_token stop) override
    {
        if (requestsUntilThrow > 0 && --requestsUntilThrow == 0)
            throw std::runtime_error("no memory for it");
        return m_next.send(std::move(request), std::move(stop));
    }

    int requestsUntilThrow = 0; ///< Counts down; 0 for none.

private:
    HttpTransport &m_next;
};

} // namespace

/// The user's actions on a workspace that behaves as the real one, over real sockets.
class TimerActionsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    // Start
    void startingWhileATimerRunsWritesInExactlyThisOrder();
    void startingWithoutATimerCreatesThenMarksTheTask();
    void startingTheTaskThatRunsMakesASecondEntryAndClosesTheFirst();
    void withoutATaskStatusAStartIsOneCreateAndAStopOneUpdate();
    void twoQuickPressesMakeOneEntry();
    void aFailedStepOfAStartLeavesWhatWasWritten_data();
    void aFailedStepOfAStartLeavesWhatWasWritten();

    // Stop
    void stoppingClosesTheEntryThenMarksTheTask();
    void withoutAnEndTimeOnlyTheStatusIsWritten();
    void anEntryWithoutATaskStopsWithoutASecondWrite();
    void stoppingWithoutATimerDoesNothing();
    void surfacesShowNoTimerBeforeTheClosingPollHasReturned();
    void aStopLetsTheReminderComeAgainWithoutItsClosingPoll_data();
    void aStopLetsTheReminderComeAgainWithoutItsClosingPoll();
    void aFailedStopKeepsTheTimerUntilALaterPoll_data();
    void aFailedStopKeepsTheTimerUntilALaterPoll();

    // Quick add
    void quickAddClosesTheRunningTimerThenCreatesTaskAndEntry();
    void quickAddWithoutTaskDateMakesATaskThatTodayDoesNotShow();
    void quickAddWithoutATaskStatusCreatesTitleAndDateOnly();
    void taskDateAndEntryStartAreTheSameInstant();
    void aNameGoesInUnchanged_data();
    void aNameGoesInUnchanged();
    void aNameThatIsTooLongIsRefusedInTheApisWords();
    void aFailedStepOfAQuickAddLeavesWhatWasWritten_data();
    void aFailedStepOfAQuickAddLeavesWhatWasWritten();
    void aCreatedPageWithoutAnIdIsAnInvalidResponse_data();
    void aCreatedPageWithoutAnIdIsAnInvalidResponse();

    // All of them
    void theStateIsBusyUntilTheNewStateIsOnDisplay_data();
    void theStateIsBusyUntilTheNewStateIsOnDisplay();
    void anActionDuringAnotherIsDropped_data();
    void anActionDuringAnotherIsDropped();
    void mappingTimeAndTrackerAreReadAnewForTheOpening_data();
    void mappingTimeAndTrackerAreReadAnewForTheOpening();
    void withoutAStatusNameTheTasksStatusIsNotWritten_data();
    void withoutAStatusNameTheTasksStatusIsNotWritten();
    void onlyAStopClosesAnEntryThatDoesNotRun_data();
    void onlyAStopClosesAnEntryThatDoesNotRun();
    void theWritesAreFollowedByAWholePoll_data();
    void theWritesAreFollowedByAWholePoll();
    void whatANewEntryIsAnsweredWithIsNotLookedAt_data();
    void whatANewEntryIsAnsweredWithIsNotLookedAt();
    void aFailureOfTheClosingPollIsNoneOfTheAction_data();
    void aFailureOfTheClosingPollIsNoneOfTheAction();
    void aFailureIsToldInItsOwnWords_data();
    void aFailureIsToldInItsOwnWords();
    void anExceptionIsAFailureAsAnyOther_data();
    void anExceptionIsAFailureAsAnyOther();
    void aFailedActionLeavesTheNetworkErrorAsItWas_data();
    void aFailedActionLeavesTheNetworkErrorAsItWas();
    void theLastErrorStaysUntilTheClosingPollHasSucceeded_data();
    void theLastErrorStaysUntilTheClosingPollHasSucceeded();

    void aLostAnswerToACreateMakesThePageTwice();
    void anActionOutlivesNoViewModel_data();
    void anActionOutlivesNoViewModel();

private:
    struct World {
        sandbox::SandboxServer server;
        CurlTransport transport;
        ThrowingTransport throwingTransport{transport};
        FakeClock clock{QDateTime::currentDateTime()};
        TestSettings settings;
        FakeSystemLog log;
        FakeNotificationCenter notifications;
        std::unique_ptr<TimerViewModel> viewModel;
    };

    TimerViewModel &viewModel() { return *m_world->viewModel; }
    sandbox::SandboxServer &server() { return m_world->server; }
    sandbox::Workspace &workspace() { return m_world->server.workspace(); }
    AppSettings &settings() { return m_world->settings.settings; }

    void pollOnce();
    void perform(Action action);
    void waitForAction() { QTRY_VERIFY_WITH_TIMEOUT(!viewModel().isLoading(), 20000); }
    NotionTask task(const QString &name);
    /// The writes that the server saw since the last poll of the loop, as "PATCH entry", "POST task".
    QStringList writes() const;
    QJsonObject bodyOfWrite(int index) const;
    QJsonObject pageOf(const QString &id) { return workspace().pageById(id); }
    QString runningEntryId();
    int queryCount() const;
    /// What was logged but for the lines about single requests.
    QStringList logLines() const;
    void failNth(const QByteArray &method, int nth);
    void failTrackerQuery();
    /// Lets a poll fail in which the timer stays on display.
    void pollInVain();
    void compareFailure(Action action, const QString &description);

    std::unique_ptr<World> m_world;
    QString m_firstEntry;
};

void TimerActionsTest::initTestCase()
{
    qRegisterMetaType<sandbox::RecordedRequest>();
}

void TimerActionsTest::init()
{
    m_world = std::make_unique<World>();
    m_world->clock.isInstant = false;
    QVERIFY(server().listen());
    m_world->transport.redirectHost(u"api.notion.com"_s, u"127.0.0.1"_s, server().port(), server().caFile());
    settings().setApiKey(server().apiKey());
    settings().setTimeTrackerDBId(workspace().timeTrackerId());
    settings().setTasksDBId(workspace().tasksId());
    const auto mapping = QJsonDocument(sandbox::Workspace::fieldMapping()).toJson();
    settings().setFieldMapping(*FieldMapping::fromJson(mapping));
    m_world->viewModel = std::make_unique<TimerViewModel>(m_world->notifications, m_world->throwingTransport,
                                                          settings(), m_world->clock);
    m_firstEntry = runningEntryId();
    pollOnce();
}

void TimerActionsTest::cleanup()
{
    m_world->viewModel.reset();
    QVERIFY(finishSpawned(5000));
    m_world.reset();
}

void TimerActionsTest::pollOnce()
{
    viewModel().startPollingIfConfigured();
    QTRY_COMPARE_WITH_TIMEOUT(m_world->clock.sleeperCount(), 1, 20000);
    viewModel().stopPolling();
    QTRY_COMPARE(spawnedCount(), 0);
    server().clearRequests();
    m_world->log.lines.clear();
}

void TimerActionsTest::perform(Action action)
{
    switch (action) {
    case Action::start:
        viewModel().startTimer(task(otherTask));
        break;
    case Action::stop:
        viewModel().stopTimer();
        break;
    case Action::quickAdd:
        viewModel().quickAddTask(newTask);
        break;
    }
}

int TimerActionsTest::queryCount() const
{
    const auto requests = m_world->server.requests();
    return int(std::count_if(requests.begin(), requests.end(),
                             [](const auto &request) { return request.target.endsWith("/query"); }));
}

QStringList TimerActionsTest::logLines() const
{
    auto lines = m_world->log.lines;
    lines.removeIf([](const QString &line) { return line.startsWith(u"ERROR API "_s); });
    return lines;
}

void TimerActionsTest::failTrackerQuery()
{
    server().faults().add(
        Fault::error(403),
        {.method = "POST", .pathPrefix = "/v1/databases/" + workspace().timeTrackerId().toLatin1(), .times = 3});
}

void TimerActionsTest::pollInVain()
{
    failTrackerQuery();
    pollOnce();
    QVERIFY(viewModel().hasNetworkError());
    QCOMPARE(viewModel().activeTimer()->id, m_firstEntry);
}

void TimerActionsTest::compareFailure(Action action, const QString &description)
{
    QCOMPARE(viewModel().errorMessage(), std::optional(failureWords(action, description)));
    QCOMPARE(logLines(),
             action == Action::quickAdd ? QStringList{u"ERROR Quick add failed: "_s + description} : QStringList());
}

NotionTask TimerActionsTest::task(const QString &name)
{
    return {.id = workspace().findPage(workspace().tasksId(), name), .name = name, .date = std::nullopt};
}

QString TimerActionsTest::runningEntryId()
{
    return workspace().runningEntries().value(0);
}

QStringList TimerActionsTest::writes() const
{
    QStringList found;
    const auto requests = m_world->server.requests();
    for (const auto &request : requests) {
        if (request.target.endsWith("/query") || request.method == "GET")
            continue;
        const auto parent = request.method == "POST"
            ? request.body[u"parent"_s][u"database_id"_s].toString()
            : m_world->server.workspace()
                  .pageById(QString::fromLatin1(request.target.mid(10)))[u"parent"_s][u"database_id"_s]
                  .toString();
        const bool isTask = parent == m_world->server.workspace().tasksId();
        found.append(QString::fromLatin1(request.method) + (isTask ? u" task"_s : u" entry"_s));
    }
    return found;
}

QJsonObject TimerActionsTest::bodyOfWrite(int index) const
{
    const auto requests = m_world->server.requests();
    for (const auto &request : requests) {
        if (request.target.endsWith("/query") || request.method == "GET")
            continue;
        if (index-- == 0)
            return request.body[u"properties"_s].toObject();
    }
    return {};
}

void TimerActionsTest::failNth(const QByteArray &method, int nth)
{
    // A client error is sent three times at once, with no wait and no log line.
    server().faults().add(Fault::error(403), {.method = method, .pathPrefix = "/v1/pages", .nth = nth, .times = 3});
}

void TimerActionsTest::startingWhileATimerRunsWritesInExactlyThisOrder()
{
    viewModel().startTimer(task(otherTask));
    waitForAction();
    QCOMPARE(writes(), QStringList({u"PATCH entry"_s, u"PATCH task"_s, u"POST entry"_s, u"PATCH task"_s}));
    QCOMPARE(bodyOfWrite(0).keys(), QStringList({u"End"_s, u"Status"_s}));
    QCOMPARE(selectName(pageOf(m_firstEntry), u"Status"_s), u"Stopped"_s);
    QVERIFY(!dateStart(pageOf(m_firstEntry), u"End"_s).isEmpty());
    QCOMPARE(selectName(pageOf(task(runningTask).id), u"Timer"_s), u"Stopped"_s);
    QCOMPARE(selectName(pageOf(task(otherTask).id), u"Timer"_s), u"Running"_s);
    QCOMPARE(viewModel().activeTimer()->taskName, otherTask);
    QCOMPARE(workspace().runningEntries().size(), 1);
    QVERIFY(!viewModel().errorMessage());
}

void TimerActionsTest::startingWithoutATimerCreatesThenMarksTheTask()
{
    workspace().stopTimers();
    pollOnce();
    viewModel().startTimer(task(otherTask));
    waitForAction();
    QCOMPARE(writes(), QStringList({u"POST entry"_s, u"PATCH task"_s}));
    QCOMPARE(bodyOfWrite(0).keys(), QStringList({u"Start"_s, u"Status"_s, u"Task"_s}));
    QVERIFY(viewModel().isTimerRunning());
}

void TimerActionsTest::startingTheTaskThatRunsMakesASecondEntryAndClosesTheFirst()
{
    viewModel().startTimer(task(runningTask));
    waitForAction();
    QCOMPARE(selectName(pageOf(m_firstEntry), u"Status"_s), u"Stopped"_s);
    QVERIFY(viewModel().activeTimer()->id != m_firstEntry);
    QCOMPARE(viewModel().activeTimer()->taskName, runningTask);
    QCOMPARE(selectName(pageOf(task(runningTask).id), u"Timer"_s), u"Running"_s);
}

void TimerActionsTest::withoutATaskStatusAStartIsOneCreateAndAStopOneUpdate()
{
    settings().changeFieldMapping([](FieldMapping &mapping) { mapping.taskTimerStatus.clear(); });
    viewModel().stopTimer();
    waitForAction();
    QCOMPARE(writes(), QStringList{u"PATCH entry"_s});
    server().clearRequests();
    viewModel().startTimer(task(otherTask));
    waitForAction();
    QCOMPARE(writes(), QStringList{u"POST entry"_s});
}

void TimerActionsTest::twoQuickPressesMakeOneEntry()
{
    workspace().stopTimers();
    pollOnce();
    const auto entries = workspace().pages(workspace().timeTrackerId()).size();
    viewModel().startTimer(task(otherTask));
    viewModel().startTimer(task(otherTask));
    viewModel().quickAddTask(u"Dropped"_s);
    waitForAction();
    QCOMPARE(workspace().pages(workspace().timeTrackerId()).size(), entries + 1);
    QVERIFY(workspace().findPage(workspace().tasksId(), u"Dropped"_s).isEmpty());
}

void TimerActionsTest::aFailedStepOfAStartLeavesWhatWasWritten_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<int>("nth");
    QTest::addColumn<QStringList>("written");
    QTest::addColumn<int>("stillRunning");
    const QString entry = u"PATCH entry"_s, status = u"PATCH task"_s, create = u"POST entry"_s;
    QTest::newRow("closing the old entry") << QByteArray("PATCH") << 1 << QStringList{entry, entry, entry} << 1;
    QTest::newRow("setting the old task's status")
        << QByteArray("PATCH") << 2 << QStringList{entry, status, status, status} << 0;
    QTest::newRow("creating the new entry")
        << QByteArray("POST") << 1 << QStringList{entry, status, create, create, create} << 0;
    QTest::newRow("setting the new task's status")
        << QByteArray("PATCH") << 3 << QStringList{entry, status, create, status, status, status} << 1;
}

void TimerActionsTest::aFailedStepOfAStartLeavesWhatWasWritten()
{
    QFETCH(QByteArray, method);
    QFETCH(int, nth);
    QFETCH(QStringList, written);
    QFETCH(int, stillRunning);
    failNth(method, nth);
    viewModel().startTimer(task(otherTask));
    waitForAction();
    QCOMPARE(writes(), written);
    QVERIFY(viewModel().errorMessage()->startsWith(u"Failed to start timer: Server error 403: "_s));
    QVERIFY(!viewModel().hasNetworkError());
    QVERIFY(m_world->log.lines.isEmpty());
    QCOMPARE(viewModel().activeTimer()->id, m_firstEntry); // No poll: the old one stays on display.
    QCOMPARE(workspace().runningEntries().size(), stillRunning);
    pollOnce();
    QVERIFY(!viewModel().errorMessage());
    QCOMPARE(viewModel().isTimerRunning(), stillRunning == 1);
}

void TimerActionsTest::stoppingClosesTheEntryThenMarksTheTask()
{
    viewModel().stopTimer();
    waitForAction();
    QCOMPARE(writes(), QStringList({u"PATCH entry"_s, u"PATCH task"_s}));
    QCOMPARE(selectName(pageOf(m_firstEntry), u"Status"_s), u"Stopped"_s);
    QCOMPARE(selectName(pageOf(task(runningTask).id), u"Timer"_s), u"Stopped"_s);
    QVERIFY(!viewModel().activeTimer());
    const auto end = QDateTime::fromString(dateStart(pageOf(m_firstEntry), u"End"_s), Qt::ISODate);
    const auto now = m_world->clock.now();
    QVERIFY(end <= now && end.secsTo(now) < 60); // Cut to the minute by the workspace.
}

void TimerActionsTest::withoutAnEndTimeOnlyTheStatusIsWritten()
{
    settings().changeFieldMapping([](FieldMapping &mapping) { mapping.ttEndTime.clear(); });
    viewModel().stopTimer();
    waitForAction();
    QCOMPARE(bodyOfWrite(0).keys(), QStringList{u"Status"_s});
    QVERIFY(dateStart(pageOf(m_firstEntry), u"End"_s).isEmpty());
}

void TimerActionsTest::anEntryWithoutATaskStopsWithoutASecondWrite()
{
    workspace().setProperty(m_firstEntry, u"Task"_s, QJsonObject{{u"relation"_s, QJsonArray()}});
    pollOnce();
    QVERIFY(!viewModel().activeTimer()->taskId);
    viewModel().stopTimer();
    waitForAction();
    QCOMPARE(writes(), QStringList{u"PATCH entry"_s});
}

void TimerActionsTest::stoppingWithoutATimerDoesNothing()
{
    workspace().stopTimers();
    pollOnce();
    viewModel().stopTimer();
    QVERIFY(!viewModel().isLoading());
    QVERIFY(server().requests().isEmpty());
}

void TimerActionsTest::surfacesShowNoTimerBeforeTheClosingPollHasReturned()
{
    bool wasLoading = false;
    int queries = -1;
    connect(&viewModel(), &TimerViewModel::activeTimerChanged, this, [&] {
        wasLoading = viewModel().isLoading();
        queries = queryCount();
    });
    viewModel().stopTimer();
    waitForAction();
    QVERIFY(wasLoading);
    QCOMPARE(queries, 0);
}

void TimerActionsTest::aStopLetsTheReminderComeAgainWithoutItsClosingPoll_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::newRow("the closing poll has not returned") << Fault::of(Fault::Kind::neverAnswer);
    QTest::newRow("the closing poll fails") << Fault::error(403);
}

void TimerActionsTest::aStopLetsTheReminderComeAgainWithoutItsClosingPoll()
{
    QFETCH(Fault, fault);
    constexpr double elapsed = 100 * 3600;
    settings().setReminderEnabled(true);
    viewModel().checkReminder(elapsed);
    viewModel().checkReminder(elapsed);
    QCOMPARE(m_world->notifications.shown.size(), 1);
    server().faults().add(fault, {.method = "POST", .pathPrefix = "/v1/databases", .times = 3});
    viewModel().stopTimer();
    QTRY_VERIFY(queryCount() > 0);
    if (fault.kind == Fault::Kind::answer) {
        waitForAction();
        QVERIFY(viewModel().hasNetworkError());
    } else {
        QVERIFY(viewModel().isLoading());
    }
    viewModel().checkReminder(elapsed);
    QCOMPARE(m_world->notifications.shown.size(), 2);
}

void TimerActionsTest::aFailedStopKeepsTheTimerUntilALaterPoll_data()
{
    QTest::addColumn<int>("nth");
    QTest::addColumn<QStringList>("written");
    QTest::addColumn<bool>("isClosed");
    const QString entry = u"PATCH entry"_s, status = u"PATCH task"_s;
    QTest::newRow("closing the entry") << 1 << QStringList{entry, entry, entry} << false;
    QTest::newRow("setting the task's status") << 2 << QStringList{entry, status, status, status} << true;
}

void TimerActionsTest::aFailedStopKeepsTheTimerUntilALaterPoll()
{
    QFETCH(int, nth);
    QFETCH(bool, isClosed);
    failNth("PATCH", nth);
    viewModel().stopTimer();
    waitForAction();
    QTEST(writes(), "written");
    QCOMPARE(viewModel().activeTimer()->id, m_firstEntry);
    QVERIFY(viewModel().errorMessage()->startsWith(u"Failed to stop timer: Server error 403: "_s));
    QVERIFY(!viewModel().hasNetworkError());
    QVERIFY(m_world->log.lines.isEmpty());
    QVERIFY(viewModel().isTimerRunning());
    QCOMPARE(workspace().runningEntries().isEmpty(), isClosed);
    QCOMPARE(selectName(pageOf(task(runningTask).id), u"Timer"_s), u"Running"_s);
    pollOnce();
    QVERIFY(!viewModel().errorMessage());
    QCOMPARE(viewModel().isTimerRunning(), !isClosed);
}

void TimerActionsTest::quickAddClosesTheRunningTimerThenCreatesTaskAndEntry()
{
    viewModel().quickAddTask(u"Call the framer"_s);
    waitForAction();
    QCOMPARE(writes(), QStringList({u"PATCH entry"_s, u"PATCH task"_s, u"POST task"_s, u"POST entry"_s}));
    QCOMPARE(bodyOfWrite(2).keys(), QStringList({u"Date"_s, u"Name"_s, u"Timer"_s}));
    QCOMPARE(bodyOfWrite(2)[u"Name"_s].toObject(),
             (QJsonObject{{u"title"_s,
                           QJsonArray{QJsonObject{{u"text"_s, QJsonObject{{u"content"_s, u"Call the framer"_s}}}}}}}));
    QCOMPARE(viewModel().activeTimer()->taskName, u"Call the framer"_s);
    QCOMPARE(selectName(pageOf(task(u"Call the framer"_s).id), u"Timer"_s), u"Running"_s);
    QCOMPARE(m_world->log.lines, QStringList{createdLine});
}

void TimerActionsTest::quickAddWithoutTaskDateMakesATaskThatTodayDoesNotShow()
{
    settings().changeFieldMapping([](FieldMapping &mapping) { mapping.taskDate.clear(); });
    viewModel().quickAddTask(u"Undated"_s);
    waitForAction();
    QCOMPARE(dateStart(pageOf(task(u"Undated"_s).id), u"Date"_s), QString());
    QCOMPARE(viewModel().activeTimer()->taskName, u"Undated"_s);
    settings().changeFieldMapping([](FieldMapping &mapping) { mapping.taskDate = u"Date"_s; });
    pollOnce();
    for (const auto &shown : viewModel().todayTasks())
        QVERIFY(shown.name != u"Undated"_s);
}

void TimerActionsTest::quickAddWithoutATaskStatusCreatesTitleAndDateOnly()
{
    workspace().stopTimers();
    pollOnce();
    settings().changeFieldMapping([](FieldMapping &mapping) { mapping.taskTimerStatus.clear(); });
    viewModel().quickAddTask(u"Plain"_s);
    waitForAction();
    QCOMPARE(writes(), QStringList({u"POST task"_s, u"POST entry"_s}));
    QCOMPARE(bodyOfWrite(0).keys(), QStringList({u"Date"_s, u"Name"_s}));
}

void TimerActionsTest::taskDateAndEntryStartAreTheSameInstant()
{
    auto &clock = m_world->clock;
    const auto begin = clock.now();
    QObject scope;
    connect(&server(), &sandbox::SandboxServer::requestReceived, &scope,
            [&clock] { clock.setNow(clock.now().addSecs(90)); }); // Each request takes its time.
    viewModel().quickAddTask(u"At once"_s);
    waitForAction();
    QCOMPARE(bodyOfWrite(0)[u"End"_s].toObject(), dateProperty(begin));
    QCOMPARE(bodyOfWrite(2)[u"Date"_s].toObject(), dateProperty(begin.addSecs(180)));
    QCOMPARE(bodyOfWrite(3)[u"Start"_s].toObject(), dateProperty(begin.addSecs(180)));
}

void TimerActionsTest::aNameGoesInUnchanged_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("quotes and a backslash") << uR"(Say "hello" \ 'bye')"_s;
    QTest::newRow("emoji") << u"Ship it 🚀👩‍🚀"_s;
    QTest::newRow("right to left") << u"פגישה עם דנה"_s;
    QTest::newRow("a NUL in it") << u"before%1after"_s.arg(QChar(u'\0'));
    QTest::newRow("two thousand characters") << QString(2000, u'ß');
    QTest::newRow("blanks around it") << u"  \tblank \u00a0"_s;
    QTest::newRow("two blanks and a line feed in it") << u"first  and\nsecond"_s;
    QTest::newRow("e with a combining accent") << u"Caf"
                                                  u"e\u0301"_s;
    QTest::newRow("nothing") << QString();
}

void TimerActionsTest::aNameGoesInUnchanged()
{
    QFETCH(QString, name);
    viewModel().quickAddTask(name);
    waitForAction();
    const auto content = bodyOfWrite(2)[u"Name"_s][u"title"_s][0][u"text"_s][u"content"_s];
    QVERIFY(content.isString());
    QCOMPARE(content.toString(), name);
    QCOMPARE(m_world->log.lines, QStringList{u"INFO Quick add: created task '"_s + name + u"' and started timer"_s});
    QCOMPARE(viewModel().activeTimer()->taskName, name.isEmpty() ? u"Unknown task"_s : name); // A title without text.
}

void TimerActionsTest::aNameThatIsTooLongIsRefusedInTheApisWords()
{
    const auto tasks = workspace().pages(workspace().tasksId()).size();
    viewModel().quickAddTask(QString(10000, u'x'));
    waitForAction();
    const auto words = viewModel().errorMessage().value_or(QString());
    QVERIFY(words.startsWith(u"Failed to create task: Server error 400: "_s));
    QVERIFY(words.contains(u"text.content.length should be"_s));
    QCOMPARE(m_world->log.lines, QStringList{u"ERROR Quick add failed: "_s + words.mid(23)});
    QCOMPARE(workspace().pages(workspace().tasksId()).size(), tasks);
    QVERIFY(workspace().runningEntries().isEmpty()); // The old entry was closed,
    QCOMPARE(selectName(pageOf(m_firstEntry), u"Status"_s), u"Stopped"_s);
    QCOMPARE(viewModel().activeTimer()->id, m_firstEntry); // and is shown until the next poll.
}

void TimerActionsTest::aFailedStepOfAQuickAddLeavesWhatWasWritten_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<int>("nth");
    QTest::addColumn<QStringList>("written");
    QTest::addColumn<bool>("isOldClosed");
    QTest::addColumn<bool>("isTaskThere");
    const QString entry = u"PATCH entry"_s, status = u"PATCH task"_s, task = u"POST task"_s, create = u"POST entry"_s;
    QTest::newRow("closing the old entry")
        << QByteArray("PATCH") << 1 << QStringList{entry, entry, entry} << false << false;
    QTest::newRow("setting the old task's status")
        << QByteArray("PATCH") << 2 << QStringList{entry, status, status, status} << true << false;
    QTest::newRow("creating the task") << QByteArray("POST") << 1 << QStringList{entry, status, task, task, task}
                                       << true << false;
    QTest::newRow("creating the entry") << QByteArray("POST") << 2
                                        << QStringList{entry, status, task, create, create, create} << true << true;
}

void TimerActionsTest::aFailedStepOfAQuickAddLeavesWhatWasWritten()
{
    QFETCH(QByteArray, method);
    QFETCH(int, nth);
    QFETCH(bool, isOldClosed);
    QFETCH(bool, isTaskThere);
    failNth(method, nth);
    viewModel().quickAddTask(u"Half done"_s);
    waitForAction();
    QTEST(writes(), "written");
    QCOMPARE(viewModel().activeTimer()->id, m_firstEntry); // No poll: the old one stays on display.
    const auto words = viewModel().errorMessage().value_or(QString());
    QVERIFY(words.startsWith(u"Failed to create task: Server error 403: "_s));
    QCOMPARE(m_world->log.lines, QStringList{u"ERROR Quick add failed: "_s + words.mid(23)});
    QVERIFY(!viewModel().hasNetworkError());
    QCOMPARE(workspace().runningEntries().isEmpty(), isOldClosed);
    const auto id = workspace().findPage(workspace().tasksId(), u"Half done"_s);
    QCOMPARE(!id.isEmpty(), isTaskThere);
    if (isTaskThere)
        QCOMPARE(selectName(pageOf(id), u"Timer"_s), u"Running"_s); // So today's list keeps it out.
}

void TimerActionsTest::aCreatedPageWithoutAnIdIsAnInvalidResponse_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("no id") << QByteArray(R"({"object": "page"})");
    QTest::newRow("a number") << QByteArray(R"({"object": "page", "id": 5})");
    QTest::newRow("null") << QByteArray(R"({"object": "page", "id": null})");
}

void TimerActionsTest::aCreatedPageWithoutAnIdIsAnInvalidResponse()
{
    QFETCH(QByteArray, answer);
    workspace().stopTimers();
    pollOnce();
    server().faults().add(Fault::answer(200, answer), {.method = "POST", .pathPrefix = "/v1/pages"});
    viewModel().quickAddTask(u"Nameless"_s);
    waitForAction();
    compareFailure(Action::quickAdd, u"Invalid response from Notion"_s);
    QCOMPARE(writes(), QStringList{u"POST task"_s});
    QVERIFY(workspace().runningEntries().isEmpty());
}

void TimerActionsTest::theStateIsBusyUntilTheNewStateIsOnDisplay_data()
{
    addActionColumn();
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QStringList>("logged");
    QTest::newRow("start") << Action::start << otherTask << QStringList();
    QTest::newRow("stop") << Action::stop << QString() << QStringList();
    QTest::newRow("quick add") << Action::quickAdd << newTask << QStringList{createdLine};
}

void TimerActionsTest::theStateIsBusyUntilTheNewStateIsOnDisplay()
{
    QFETCH(Action, action);
    QFETCH(QString, shown);
    QFETCH(QStringList, logged);
    QSignalSpy loading(&viewModel(), &TimerViewModel::isLoadingChanged);
    QString shownAtTheEnd;
    QStringList loggedAtTheEnd;
    int queriesAtTheEnd = 0;
    QObject scope;
    connect(&viewModel(), &TimerViewModel::isLoadingChanged, &scope, [&] {
        if (viewModel().isLoading())
            return;
        shownAtTheEnd = viewModel().activeTimer() ? viewModel().activeTimer()->taskName : QString();
        loggedAtTheEnd = m_world->log.lines;
        queriesAtTheEnd = queryCount();
    });
    perform(action);
    QVERIFY(viewModel().isLoading());
    waitForAction();
    QCOMPARE(loading.count(), 2);
    QCOMPARE(shownAtTheEnd, shown);
    QCOMPARE(loggedAtTheEnd, logged);
    QCOMPARE(queriesAtTheEnd, 2); // The timer and today's tasks.
}

void TimerActionsTest::anActionDuringAnotherIsDropped_data()
{
    addActionColumn();
    QTest::addColumn<Action>("second");
    for (const auto first : allActions) {
        for (const auto second : allActions)
            QTest::addRow("%s, then %s", nameOf(first), nameOf(second)) << first << second;
    }
}

void TimerActionsTest::anActionDuringAnotherIsDropped()
{
    QFETCH(Action, action);
    QFETCH(Action, second);
    QSignalSpy loading(&viewModel(), &TimerViewModel::isLoadingChanged);
    perform(action);
    perform(second);
    waitForAction();
    QTRY_COMPARE(spawnedCount(), 0);
    QCOMPARE(loading.count(), 2);
    QCOMPARE(writes(), writesOf(action));
    QCOMPARE(viewModel().activeTimer().has_value(), action != Action::stop);
    QCOMPARE(logLines().size(), action == Action::quickAdd ? 1 : 0);
    QVERIFY(!viewModel().errorMessage());
}

void TimerActionsTest::mappingTimeAndTrackerAreReadAnewForTheOpening_data()
{
    addActionColumn();
    QTest::newRow("start") << Action::start;
    QTest::newRow("quick add") << Action::quickAdd;
}

void TimerActionsTest::mappingTimeAndTrackerAreReadAnewForTheOpening()
{
    QFETCH(Action, action);
    auto &clock = m_world->clock;
    const auto begin = clock.now();
    settings().setTimeTrackerDBId(u"former"_s);
    QObject scope;
    connect(&server(), &sandbox::SandboxServer::requestReceived, &scope, [&] {
        clock.setNow(clock.now().addSecs(90));
        if (writes().size() == writesOf(action).indexOf(u"POST entry"_s)) // The opening comes next.
            settings().setTimeTrackerDBId(workspace().timeTrackerId());
        settings().changeFieldMapping([](FieldMapping &mapping) {
            mapping.taskTimerStatusStopped = u"Too late"_s; // The closing has its mapping already.
            mapping.taskTimerStatusRunning = u"Busy"_s;
        });
    });
    perform(action);
    waitForAction();
    QCOMPARE(writes(), writesOf(action));
    QCOMPARE(bodyOfWrite(0)[u"End"_s].toObject(), dateProperty(begin));
    QCOMPARE(bodyOfWrite(1)[u"Timer"_s][u"select"_s][u"name"_s].toString(), u"Stopped"_s);
    const auto entry = bodyOfWrite(action == Action::start ? 2 : 3);
    const auto status = bodyOfWrite(action == Action::start ? 3 : 2);
    QCOMPARE(entry[u"Start"_s].toObject(), dateProperty(begin.addSecs(180)));
    QCOMPARE(status[u"Timer"_s][u"select"_s][u"name"_s].toString(), u"Busy"_s);
    QVERIFY(!viewModel().errorMessage()); // As there would be, were the entry sent to the former database.
}

void TimerActionsTest::withoutAStatusNameTheTasksStatusIsNotWritten_data()
{
    addActionColumn();
    QTest::addColumn<bool>("hasRunning");
    QTest::addColumn<QStringList>("written");
    const QString entry = u"PATCH entry"_s, status = u"PATCH task"_s, task = u"POST task"_s, create = u"POST entry"_s;
    QTest::newRow("start, no running") << Action::start << false << QStringList{entry, status, create};
    QTest::newRow("stop, no running") << Action::stop << false << QStringList{entry, status};
    QTest::newRow("quick add, no running") << Action::quickAdd << false << QStringList{entry, status, task, create};
    QTest::newRow("start, no stopped") << Action::start << true << QStringList{entry, create, status};
    QTest::newRow("stop, no stopped") << Action::stop << true << QStringList{entry};
    QTest::newRow("quick add, no stopped") << Action::quickAdd << true << QStringList{entry, task, create};
}

void TimerActionsTest::withoutAStatusNameTheTasksStatusIsNotWritten()
{
    QFETCH(Action, action);
    QFETCH(bool, hasRunning);
    settings().changeFieldMapping([hasRunning](FieldMapping &mapping) {
        (hasRunning ? mapping.taskTimerStatusStopped : mapping.taskTimerStatusRunning).clear();
    });
    perform(action);
    waitForAction();
    QTEST(writes(), "written");
    QVERIFY(!viewModel().errorMessage());
    if (action == Action::quickAdd)
        QCOMPARE(bodyOfWrite(hasRunning ? 1 : 2).contains(u"Timer"_s), hasRunning);
}

void TimerActionsTest::onlyAStopClosesAnEntryThatDoesNotRun_data()
{
    addActionColumn();
    QTest::addColumn<QStringList>("written");
    QTest::newRow("start") << Action::start << QStringList{u"POST entry"_s, u"PATCH task"_s};
    QTest::newRow("stop") << Action::stop << QStringList{u"PATCH entry"_s, u"PATCH task"_s};
    QTest::newRow("quick add") << Action::quickAdd << QStringList{u"POST task"_s, u"POST entry"_s};
}

void TimerActionsTest::onlyAStopClosesAnEntryThatDoesNotRun()
{
    QFETCH(Action, action);
    // As when the entry is paused between the server's filter and its answer.
    auto entry = pageOf(m_firstEntry);
    auto properties = entry[u"properties"_s].toObject();
    properties.insert(u"Status"_s, QJsonObject{{u"select"_s, QJsonObject{{u"name"_s, u"Paused"_s}}}});
    entry.insert(u"properties"_s, properties);
    const QJsonObject rows{{u"results"_s, QJsonArray{entry}}};
    server().faults().add(Fault::answer(200, QJsonDocument(rows).toJson()),
                          {.method = "POST", .pathPrefix = "/v1/databases"});
    pollOnce();
    QCOMPARE(viewModel().activeTimer()->id, m_firstEntry);
    QVERIFY(!viewModel().isTimerRunning());

    perform(action);
    waitForAction();
    QTEST(writes(), "written");
    QVERIFY(!viewModel().errorMessage());
    QCOMPARE(selectName(pageOf(m_firstEntry), u"Status"_s), action == Action::stop ? u"Stopped"_s : u"Running"_s);
}

void TimerActionsTest::theWritesAreFollowedByAWholePoll_data()
{
    addActionRows();
}

void TimerActionsTest::theWritesAreFollowedByAWholePoll()
{
    QFETCH(Action, action);
    perform(action);
    waitForAction();
    QCOMPARE(writes(), writesOf(action));
    QCOMPARE(server().requests().size(), writesOf(action).size() + closingRequestsOf(action));
}

void TimerActionsTest::whatANewEntryIsAnsweredWithIsNotLookedAt_data()
{
    addActionColumn();
    QTest::addColumn<int>("nth");
    QTest::newRow("start") << Action::start << 1;
    QTest::newRow("quick add") << Action::quickAdd << 2;
}

void TimerActionsTest::whatANewEntryIsAnsweredWithIsNotLookedAt()
{
    QFETCH(Action, action);
    QFETCH(int, nth);
    server().faults().add(Fault::answer(200, "{}"), {.method = "POST", .pathPrefix = "/v1/pages", .nth = nth});
    perform(action);
    waitForAction();
    QCOMPARE(writes(), writesOf(action));
    QCOMPARE(queryCount(), 2);
    QVERIFY(!viewModel().errorMessage());
    QVERIFY(!viewModel().activeTimer()); // The poll has found none.
    QCOMPARE(logLines(), action == Action::quickAdd ? QStringList{createdLine} : QStringList());
}

void TimerActionsTest::aFailureOfTheClosingPollIsNoneOfTheAction_data()
{
    addActionColumn();
    QTest::addColumn<QString>("query"); // Else it is a page that fails,
    QTest::addColumn<int>("page");      // the first, second or third that the poll asks for.
    for (const auto action : allActions) {
        QTest::addRow("%s, then the timer", nameOf(action)) << action << u"timer"_s << 0;
        QTest::addRow("%s, then today's tasks", nameOf(action)) << action << u"tasks"_s << 0;
        if (action != Action::stop)
            QTest::addRow("%s, then the timer's task", nameOf(action)) << action << QString() << 1;
    }
    QTest::newRow("start, then the project") << Action::start << QString() << 2;
    QTest::newRow("start, then the client") << Action::start << QString() << 3;
}

void TimerActionsTest::aFailureOfTheClosingPollIsNoneOfTheAction()
{
    QFETCH(Action, action);
    QFETCH(QString, query);
    QFETCH(int, page);
    const auto tasks = viewModel().todayTasks();
    const auto fault = Fault::error(403);
    if (query == u"timer"_s)
        failTrackerQuery();
    else if (query == u"tasks"_s)
        server().faults().add(
            fault, {.method = "POST", .pathPrefix = "/v1/databases/" + workspace().tasksId().toLatin1(), .times = 3});
    else
        server().faults().add(fault, {.method = "GET", .pathPrefix = "/v1/pages", .nth = page, .times = 3});
    perform(action);
    waitForAction();
    QCOMPARE(writes(), writesOf(action));

    // Only the query for the timer decides over the poll.
    const auto isFailure = query == u"timer"_s;
    QStringList lines;
    if (isFailure)
        lines.append(u"ERROR Poll failed: "_s + serverError(fault));
    if (action == Action::quickAdd)
        lines.append(createdLine);
    QCOMPARE(logLines(), lines);
    QCOMPARE(viewModel().hasNetworkError(), isFailure);
    QCOMPARE(viewModel().errorMessage(), isFailure ? std::optional(serverError(fault)) : std::nullopt);
    if (page == 0)
        QCOMPARE(viewModel().todayTasks(), tasks);
    if (action == Action::stop)
        QVERIFY(!viewModel().activeTimer());
    else if (isFailure)
        QCOMPARE(viewModel().activeTimer()->id, m_firstEntry);
    else
        QCOMPARE(viewModel().activeTimer()->taskName,
                 page == 1                     ? u"Unknown task"_s
                     : action == Action::start ? otherTask
                                               : newTask);
    if (action == Action::start && !isFailure) {
        const bool hasProject = page == 0 || page == 3;
        QCOMPARE(viewModel().activeTimer()->projectName,
                 hasProject ? std::optional(u"Autumn catalogue"_s) : std::nullopt);
        QCOMPARE(viewModel().activeTimer()->clientName.has_value(), page == 0);
    }
}

void TimerActionsTest::aFailureIsToldInItsOwnWords_data()
{
    addActionColumn();
    QTest::addColumn<std::optional<Fault>>("fault");
    QTest::addColumn<QString>("words");
    QTest::addColumn<int>("sends");
    using MaybeFault = std::optional<Fault>;
    for (const auto action : allActions) {
        const auto *const name = nameOf(action);
        const auto refused = Fault::error(400), broken = Fault::error(500), busy = Fault::error(503);
        QTest::addRow("%s, no key", name) << action << MaybeFault() << u"No API key configured"_s << 0;
        QTest::addRow("%s, a wrong key", name) << action << MaybeFault(Fault::error(401)) << u"Invalid API key"_s << 1;
        QTest::addRow("%s, a page that is gone", name)
            << action << MaybeFault(Fault::error(404)) << u"Resource not found"_s << 1;
        QTest::addRow("%s, a refusal", name) << action << MaybeFault(refused) << serverError(refused) << 3;
        QTest::addRow("%s, too many requests", name)
            << action << MaybeFault(Fault::error(429, "7")) << u"Rate limited, retrying..."_s << 3;
        QTest::addRow("%s, status 500", name) << action << MaybeFault(broken) << serverError(broken) << 3;
        QTest::addRow("%s, status 503", name) << action << MaybeFault(busy) << serverError(busy) << 3;
    }
}

void TimerActionsTest::aFailureIsToldInItsOwnWords()
{
    QFETCH(Action, action);
    QFETCH(std::optional<Fault>, fault);
    QFETCH(QString, words);
    QFETCH(int, sends);
    m_world->clock.arePausesInstant = true;
    if (fault)
        server().faults().add(*fault, -1);
    else
        settings().setApiKey({});
    perform(action);
    waitForAction();
    compareFailure(action, words);
    QCOMPARE(server().requests().size(), sends);
    QVERIFY(!viewModel().hasNetworkError());
    QCOMPARE(viewModel().activeTimer()->id, m_firstEntry);
}

void TimerActionsTest::anExceptionIsAFailureAsAnyOther_data()
{
    addActionColumn();
    QTest::addColumn<int>("nth");
    for (const auto action : allActions) {
        for (int nth = 1; nth <= writesOf(action).size(); ++nth)
            QTest::addRow("%s, write %d", nameOf(action), nth) << action << nth;
    }
}

void TimerActionsTest::anExceptionIsAFailureAsAnyOther()
{
    QFETCH(Action, action);
    QFETCH(int, nth);
    m_world->throwingTransport.requestsUntilThrow = nth;
    perform(action);
    waitForAction();
    compareFailure(action, u"no memory for it"_s);
    QCOMPARE(writes(), writesOf(action).mid(0, nth - 1));
    QVERIFY(!viewModel().hasNetworkError());
    QCOMPARE(viewModel().activeTimer()->id, m_firstEntry);
    pollOnce();
    QVERIFY(!viewModel().errorMessage());
}

void TimerActionsTest::aFailedActionLeavesTheNetworkErrorAsItWas_data()
{
    addActionRows();
}

void TimerActionsTest::aFailedActionLeavesTheNetworkErrorAsItWas()
{
    QFETCH(Action, action);
    pollInVain();
    QSignalSpy flag(&viewModel(), &TimerViewModel::hasNetworkErrorChanged);
    failNth("PATCH", 1);
    perform(action);
    waitForAction();
    compareFailure(action, serverError(Fault::error(403)));
    QVERIFY(viewModel().hasNetworkError());
    QCOMPARE(flag.count(), 0);
}

void TimerActionsTest::theLastErrorStaysUntilTheClosingPollHasSucceeded_data()
{
    addActionRows();
}

void TimerActionsTest::theLastErrorStaysUntilTheClosingPollHasSucceeded()
{
    QFETCH(Action, action);
    pollInVain();
    const auto error = viewModel().errorMessage();
    QVERIFY(error);
    QList<std::optional<QString>> seen;
    QObject scope;
    connect(&server(), &sandbox::SandboxServer::requestReceived, &scope,
            [&] { seen.append(viewModel().errorMessage()); });
    perform(action);
    QCOMPARE(viewModel().errorMessage(), error);
    waitForAction();
    QVERIFY(seen.size() >= writesOf(action).size() + 2);
    QCOMPARE(seen.count(error), seen.size());
    QVERIFY(!viewModel().errorMessage());
    QVERIFY(!viewModel().hasNetworkError());
}

void TimerActionsTest::aLostAnswerToACreateMakesThePageTwice()
{
    workspace().stopTimers();
    pollOnce();
    m_world->clock.isInstant = true;
    server().faults().add(Fault::of(Fault::Kind::loseAnswer), {.method = "POST", .pathPrefix = "/v1/pages"});
    const auto entries = workspace().pages(workspace().timeTrackerId()).size();
    viewModel().startTimer(task(otherTask));
    waitForAction();
    QCOMPARE(workspace().pages(workspace().timeTrackerId()).size(), entries + 2);
    QCOMPARE(m_world->log.lines.size(), 1);
    QVERIFY(m_world->log.lines.first().startsWith(u"ERROR API network error on /pages, attempt 1/3: "_s));
}

void TimerActionsTest::anActionOutlivesNoViewModel_data()
{
    addActionColumn();
    QTest::addColumn<int>("nth");
    for (const auto action : allActions) {
        for (int nth = 1; nth <= writesOf(action).size() + closingRequestsOf(action); ++nth)
            QTest::addRow("%s, request %d", nameOf(action), nth) << action << nth;
    }
}

void TimerActionsTest::anActionOutlivesNoViewModel()
{
    QFETCH(Action, action);
    QFETCH(int, nth);
    server().faults().add(Fault::of(Fault::Kind::neverAnswer), {.method = {}, .pathPrefix = {}, .nth = nth});
    perform(action);
    QTRY_COMPARE(server().requests().size(), nth);
    m_world->viewModel.reset();
    QTRY_COMPARE(spawnedCount(), 0);
    QCOMPARE(server().requests().size(), nth);
    // Only what was all written is told of.
    const auto isWritten = action == Action::quickAdd && nth > writesOf(action).size();
    QCOMPARE(logLines(), isWritten ? QStringList{createdLine} : QStringList());
}

QTEST_GUILESS_MAIN(TimerActionsTest)
#include "TimerActionsTest.moc"
