#include "Fakes/FakeClock.h"
#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/TestSettings.h"
#include "Services/CurlTransport.h"
#include "Utilities/Spawn.h"
#include "ViewModels/TimerViewModel.h"
#include "sandbox/SandboxServer.h"
#include "sandbox/Workspace.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

using sandbox::Fault;

// What the sample workspace holds: this one runs at the start, the other does not.
const QString runningTask = u"Home page layout"_s;
const QString otherTask = u"Answer the printer"_s;

QString selectName(const QJsonObject &page, const QString &property)
{
    return page[u"properties"_s][property][u"select"_s][u"name"_s].toString();
}

QString dateStart(const QJsonObject &page, const QString &property)
{
    return page[u"properties"_s][property][u"date"_s][u"start"_s].toString();
}

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
    void theStateIsBusyUntilTheNewTimerIsOnDisplay();
    void aFailedStepOfAStartLeavesWhatWasWritten_data();
    void aFailedStepOfAStartLeavesWhatWasWritten();

    // Stop
    void stoppingClosesTheEntryThenMarksTheTask();
    void withoutAnEndTimeOnlyTheStatusIsWritten();
    void anEntryWithoutATaskStopsWithoutASecondWrite();
    void stoppingWithoutATimerDoesNothing();
    void surfacesShowNoTimerBeforeTheClosingPollHasReturned();
    void aFailedStopKeepsTheTimerUntilALaterPoll_data();
    void aFailedStopKeepsTheTimerUntilALaterPoll();

    // Quick add
    void quickAddClosesTheRunningTimerThenCreatesTaskAndEntry();
    void quickAddWithoutTaskDateMakesATaskThatTodayDoesNotShow();
    void quickAddWithoutATaskStatusCreatesTitleAndDateOnly();
    void taskDateAndEntryStartAreTheSameInstant();
    void aNameGoesInUnchanged_data();
    void aNameGoesInUnchanged();
    void aNameDuringARunningActionIsDropped();
    void aNameThatIsTooLongIsRefusedInTheApisWords();
    void aFailedStepOfAQuickAddLeavesWhatWasWritten_data();
    void aFailedStepOfAQuickAddLeavesWhatWasWritten();
    void aCreatedPageWithoutAnIdIsAnInvalidResponse();

    void aLostAnswerToACreateMakesThePageTwice();
    void anActionOutlivesNoViewModel();

private:
    struct World {
        sandbox::SandboxServer server;
        CurlTransport transport;
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
    void waitForAction() { QTRY_VERIFY_WITH_TIMEOUT(!viewModel().isLoading(), 20000); }
    NotionTask task(const QString &name);
    /// The writes that the server saw since the last poll of the loop, as "PATCH entry", "POST task".
    QStringList writes() const;
    QJsonObject bodyOfWrite(int index) const;
    QJsonObject pageOf(const QString &id) { return workspace().pageById(id); }
    QString runningEntryId();
    void failNth(const QByteArray &method, int nth);

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
    m_world->viewModel
        = std::make_unique<TimerViewModel>(m_world->notifications, m_world->transport, settings(), m_world->clock);
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
            : m_world->server.workspace().pageById(QString::fromLatin1(request.target.mid(10)))[u"parent"_s]
                  [u"database_id"_s].toString();
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

void TimerActionsTest::theStateIsBusyUntilTheNewTimerIsOnDisplay()
{
    QSignalSpy loading(&viewModel(), &TimerViewModel::isLoadingChanged);
    QString shownAtTheEnd;
    connect(&viewModel(), &TimerViewModel::isLoadingChanged, this, [&] {
        if (!viewModel().isLoading())
            shownAtTheEnd = viewModel().activeTimer()->taskName;
    });
    viewModel().startTimer(task(otherTask));
    QVERIFY(viewModel().isLoading());
    waitForAction();
    QCOMPARE(loading.count(), 2);
    QCOMPARE(shownAtTheEnd, otherTask);
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
    qsizetype queries = -1;
    connect(&viewModel(), &TimerViewModel::activeTimerChanged, this, [&] {
        wasLoading = viewModel().isLoading();
        queries = 0;
        const auto requests = server().requests();
        for (const auto &request : requests)
            queries += request.target.endsWith("/query") ? 1 : 0;
    });
    viewModel().stopTimer();
    waitForAction();
    QVERIFY(wasLoading);
    QCOMPARE(queries, 0);
}

void TimerActionsTest::aFailedStopKeepsTheTimerUntilALaterPoll_data()
{
    QTest::addColumn<int>("nth");
    QTest::addColumn<bool>("isClosed");
    QTest::newRow("closing the entry") << 1 << false;
    QTest::newRow("setting the task's status") << 2 << true;
}

void TimerActionsTest::aFailedStopKeepsTheTimerUntilALaterPoll()
{
    QFETCH(int, nth);
    QFETCH(bool, isClosed);
    failNth("PATCH", nth);
    viewModel().stopTimer();
    waitForAction();
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
             (QJsonObject{{u"title"_s, QJsonArray{QJsonObject{
                                           {u"text"_s, QJsonObject{{u"content"_s, u"Call the framer"_s}}}}}}}));
    QCOMPARE(viewModel().activeTimer()->taskName, u"Call the framer"_s);
    QCOMPARE(selectName(pageOf(task(u"Call the framer"_s).id), u"Timer"_s), u"Running"_s);
    QCOMPARE(m_world->log.lines, QStringList{u"INFO Quick add: created task 'Call the framer' and started timer"_s});
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
    server().faults().add(Fault::slow(std::chrono::milliseconds(100)));
    viewModel().quickAddTask(u"At once"_s);
    waitForAction();
    const auto date = bodyOfWrite(2)[u"Date"_s][u"date"_s][u"start"_s].toString();
    QVERIFY(!date.isEmpty());
    QCOMPARE(bodyOfWrite(3)[u"Start"_s][u"date"_s][u"start"_s].toString(), date);
}

void TimerActionsTest::aNameGoesInUnchanged_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("quotes and a backslash") << uR"(Say "hello" \ 'bye')"_s;
    QTest::newRow("emoji") << u"Ship it 🚀👩‍🚀"_s;
    QTest::newRow("right to left") << u"פגישה עם דנה"_s;
    QTest::newRow("a NUL in it") << u"before%1after"_s.arg(QChar(u'\0'));
    QTest::newRow("two thousand characters") << QString(2000, u'ß');
}

void TimerActionsTest::aNameGoesInUnchanged()
{
    QFETCH(QString, name);
    viewModel().quickAddTask(name);
    waitForAction();
    const auto content = bodyOfWrite(2)[u"Name"_s][u"title"_s][0][u"text"_s][u"content"_s].toString();
    QCOMPARE(content, name);
    QCOMPARE(viewModel().activeTimer()->taskName, name);
}

void TimerActionsTest::aNameDuringARunningActionIsDropped()
{
    viewModel().stopTimer();
    viewModel().quickAddTask(u"Too early"_s);
    waitForAction();
    QVERIFY(workspace().findPage(workspace().tasksId(), u"Too early"_s).isEmpty());
    QVERIFY(m_world->log.lines.isEmpty());
}

void TimerActionsTest::aNameThatIsTooLongIsRefusedInTheApisWords()
{
    workspace().stopTimers();
    pollOnce();
    viewModel().quickAddTask(QString(10000, u'x'));
    waitForAction();
    QVERIFY(viewModel().errorMessage()->startsWith(u"Failed to create task: Server error 400: "_s));
    QVERIFY(viewModel().errorMessage()->contains(u"text.content.length should be"_s));
    QVERIFY(workspace().runningEntries().isEmpty());
}

void TimerActionsTest::aFailedStepOfAQuickAddLeavesWhatWasWritten_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<int>("nth");
    QTest::addColumn<bool>("isOldClosed");
    QTest::addColumn<bool>("isTaskThere");
    QTest::newRow("closing the old entry") << QByteArray("PATCH") << 1 << false << false;
    QTest::newRow("setting the old task's status") << QByteArray("PATCH") << 2 << true << false;
    QTest::newRow("creating the task") << QByteArray("POST") << 1 << true << false;
    QTest::newRow("creating the entry") << QByteArray("POST") << 2 << true << true;
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
    const auto words = *viewModel().errorMessage();
    QVERIFY(words.startsWith(u"Failed to create task: Server error 403: "_s));
    QCOMPARE(m_world->log.lines, QStringList{u"ERROR Quick add failed: "_s + words.mid(23)});
    QVERIFY(!viewModel().hasNetworkError());
    QCOMPARE(workspace().runningEntries().isEmpty(), isOldClosed);
    const auto id = workspace().findPage(workspace().tasksId(), u"Half done"_s);
    QCOMPARE(!id.isEmpty(), isTaskThere);
    if (isTaskThere)
        QCOMPARE(selectName(pageOf(id), u"Timer"_s), u"Running"_s); // So today's list keeps it out.
}

void TimerActionsTest::aCreatedPageWithoutAnIdIsAnInvalidResponse()
{
    workspace().stopTimers();
    pollOnce();
    server().faults().add(Fault::answer(200, R"({"object": "page"})"),
                          {.method = "POST", .pathPrefix = "/v1/pages"});
    viewModel().quickAddTask(u"Nameless"_s);
    waitForAction();
    QCOMPARE(viewModel().errorMessage(), u"Failed to create task: Invalid response from Notion"_s);
    QCOMPARE(m_world->log.lines, QStringList{u"ERROR Quick add failed: Invalid response from Notion"_s});
    QCOMPARE(writes(), QStringList{u"POST task"_s});
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

void TimerActionsTest::anActionOutlivesNoViewModel()
{
    server().faults().add(Fault::of(Fault::Kind::neverAnswer));
    viewModel().startTimer(task(otherTask));
    QTRY_COMPARE(server().requests().size(), 1);
    m_world->viewModel.reset();
    QTRY_COMPARE(spawnedCount(), 0);
    m_world->viewModel
        = std::make_unique<TimerViewModel>(m_world->notifications, m_world->transport, settings(), m_world->clock);
}

QTEST_GUILESS_MAIN(TimerActionsTest)
#include "TimerActionsTest.moc"
