#include "Fakes/FakeClock.h"
#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakeNotion.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/NotionPages.h"
#include "Fakes/TestSettings.h"
#include "Utilities/Spawn.h"
#include "ViewModels/TimerViewModel.h"
#include "ViewModels/UserAction.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QString trackerQuery = u"POST /databases/tracker/query"_s;

/// The writes of an action that begins while entry e1 runs for task t1; a start is for task t2.
QStringList writesOf(Action action)
{
    QStringList writes{u"PATCH e1"_s, u"PATCH t1"_s};
    if (action == Action::start)
        writes += {u"POST tracker"_s, u"PATCH t2"_s};
    else if (action == Action::quickAdd)
        writes += {u"POST tasks"_s, u"POST tracker"_s};
    return writes;
}

} // namespace

/// The user's actions while the poll loop runs, which nothing keeps apart.
class ActionsBesidePollsTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aPollThatIsUnderWayChangesNoWrite_data();
    void aPollThatIsUnderWayChangesNoWrite();
    void aChangeOfTheLoopLeavesTheActionGoingOn_data();
    void aChangeOfTheLoopLeavesTheActionGoingOn();
    void whatAPollShowsMeanwhileIsNotWhatIsClosed_data();
    void whatAPollShowsMeanwhileIsNotWhatIsClosed();
    void aStaleAnswerShowsTheOldTimerUntilTheNextPoll_data();
    void aStaleAnswerShowsTheOldTimerUntilTheNextPoll();

private:
    struct World {
        FakeNotion notion;
        FakeClock clock;
        FakeNotificationCenter notifications;
        TestSettings settings;
        FakeSystemLog log;
        std::unique_ptr<TimerViewModel> viewModel;
    };

    FakeNotion &notion() { return m_world->notion; }
    TimerViewModel &viewModel() { return *m_world->viewModel; }
    void answerEntry(const std::optional<QJsonObject> &entry);
    void perform(Action action);
    QStringList writes() const;
    /// Lets one request after the other have its answer, those of action and loop in turns.
    void finishInTurns() { QTRY_VERIFY((notion().release(), !viewModel().isLoading() && notion().heldCount() == 0)); }
    void waitForPoll() { QTRY_COMPARE(m_world->clock.sleeperCount(), 1); }
    QString shownEntry() const
    {
        const auto &entry = m_world->viewModel->activeTimer();
        return entry ? entry->id : QString();
    }

    std::unique_ptr<World> m_world;
};

void ActionsBesidePollsTest::init()
{
    m_world = std::make_unique<World>();
    TestSettings::configure(m_world->settings.settings);
    answerEntry(pages::runningEntry(u"e1"_s, {u"t1"_s}));
    notion().answerRows(u"POST /databases/tasks/query"_s, {});
    for (const auto &id : {u"t1"_s, u"t2"_s, u"t3"_s}) {
        notion().answer(u"GET /pages/"_s + id, pages::task(id, u"Task "_s + id));
        notion().answer(u"PATCH /pages/"_s + id, pages::page(id, {}));
    }
    notion().answer(u"PATCH /pages/e1"_s, pages::page(u"e1"_s, {}));
    notion().answer(u"POST /pages"_s, pages::page(u"created"_s, {}));
    m_world->viewModel = std::make_unique<TimerViewModel>(m_world->notifications, notion(), m_world->settings.settings,
                                                          m_world->clock);
    viewModel().startPollingIfConfigured();
    waitForPoll();
    QCOMPARE(shownEntry(), u"e1"_s);
    notion().asked.clear();
    m_world->log.lines.clear();
}

void ActionsBesidePollsTest::cleanup()
{
    m_world->viewModel.reset();
    QVERIFY(finishSpawned(2000));
    m_world.reset();
}

void ActionsBesidePollsTest::answerEntry(const std::optional<QJsonObject> &entry)
{
    notion().answerRows(trackerQuery, entry ? QList<QJsonObject>{*entry} : QList<QJsonObject>());
}

void ActionsBesidePollsTest::perform(Action action)
{
    switch (action) {
    case Action::start:
        viewModel().startTimer({.id = u"t2"_s, .name = u"Task t2"_s, .date = std::nullopt});
        break;
    case Action::stop:
        viewModel().stopTimer();
        break;
    case Action::quickAdd:
        viewModel().quickAddTask(u"Call the framer"_s);
        break;
    }
}

QStringList ActionsBesidePollsTest::writes() const
{
    QStringList writes;
    for (const auto &[call, body] : m_world->notion.asked) {
        if (call.startsWith(u"PATCH /pages/"_s))
            writes.append(u"PATCH "_s + call.mid(13));
        else if (call == u"POST /pages"_s)
            writes.append(u"POST "_s + body[u"parent"_s][u"database_id"_s].toString());
    }
    return writes;
}

void ActionsBesidePollsTest::aPollThatIsUnderWayChangesNoWrite_data()
{
    addActionRows();
}

void ActionsBesidePollsTest::aPollThatIsUnderWayChangesNoWrite()
{
    QFETCH(Action, action);
    notion().isHolding = true;
    m_world->clock.advance(60);
    QTRY_COMPARE(notion().calls(), QStringList{trackerQuery});
    perform(action);
    QCOMPARE(notion().heldCount(), 2);
    finishInTurns();
    waitForPoll();
    QCOMPARE(writes(), writesOf(action));
    QCOMPARE(notion().calls().count(trackerQuery), 2); // That of the loop, and the action's own.
    QVERIFY(!viewModel().errorMessage());
}

void ActionsBesidePollsTest::aChangeOfTheLoopLeavesTheActionGoingOn_data()
{
    addActionColumn();
    QTest::addColumn<bool>("isRestarted");
    for (const auto action : allActions) {
        QTest::addRow("%s, and the loop is stopped", nameOf(action)) << action << false;
        QTest::addRow("%s, and the loop is started anew", nameOf(action)) << action << true;
    }
}

void ActionsBesidePollsTest::aChangeOfTheLoopLeavesTheActionGoingOn()
{
    QFETCH(Action, action);
    QFETCH(bool, isRestarted);
    notion().isHolding = true;
    perform(action);
    QCOMPARE(writes(), QStringList{u"PATCH e1"_s});
    if (isRestarted)
        viewModel().startPollingIfConfigured();
    else
        viewModel().stopPolling();
    QVERIFY(viewModel().isLoading());
    finishInTurns();
    QCOMPARE(writes(), writesOf(action));
    QCOMPARE(notion().calls().count(trackerQuery), isRestarted ? 2 : 1);
    QVERIFY(!viewModel().errorMessage());
    QTRY_COMPARE(spawnedCount(), isRestarted ? 1 : 0);
}

void ActionsBesidePollsTest::whatAPollShowsMeanwhileIsNotWhatIsClosed_data()
{
    addActionColumn();
    QTest::addColumn<QString>("shown");
    for (const auto action : allActions) {
        QTest::addRow("%s, and a poll shows another entry", nameOf(action)) << action << u"e3"_s;
        QTest::addRow("%s, and a poll shows none", nameOf(action)) << action << QString();
    }
}

void ActionsBesidePollsTest::whatAPollShowsMeanwhileIsNotWhatIsClosed()
{
    QFETCH(Action, action);
    QFETCH(QString, shown);
    notion().isHolding = true;
    perform(action);
    QCOMPARE(notion().heldCount(), 1);
    notion().isHolding = false;
    answerEntry(shown.isEmpty() ? std::nullopt : std::optional(pages::runningEntry(shown, {u"t3"_s})));
    m_world->clock.advance(60);
    QTRY_COMPARE(shownEntry(), shown);
    QVERIFY(viewModel().isLoading());
    QCOMPARE(writes(), QStringList{u"PATCH e1"_s});

    notion().release();
    QTRY_VERIFY(!viewModel().isLoading());
    QCOMPARE(writes(), writesOf(action)); // The status of the old entry's task is the second.
    QVERIFY(!viewModel().errorMessage());
}

void ActionsBesidePollsTest::aStaleAnswerShowsTheOldTimerUntilTheNextPoll_data()
{
    addActionColumn();
    QTest::addColumn<QString>("shown");
    QTest::newRow("start") << Action::start << u"e2"_s;
    QTest::newRow("stop") << Action::stop << QString();
    QTest::newRow("quick add") << Action::quickAdd << u"e2"_s;
}

void ActionsBesidePollsTest::aStaleAnswerShowsTheOldTimerUntilTheNextPoll()
{
    QFETCH(Action, action);
    QFETCH(QString, shown);
    const auto stale = pages::runningEntry(u"e1"_s, {u"t1"_s});
    const auto fresh = shown.isEmpty() ? std::nullopt : std::optional(pages::runningEntry(shown, {u"t2"_s}));
    notion().isHolding = true;
    m_world->clock.advance(60);
    QTRY_COMPARE(notion().heldCount(), 1);
    notion().isHolding = false;
    answerEntry(fresh);
    perform(action);
    QTRY_VERIFY(!viewModel().isLoading());
    QCOMPARE(shownEntry(), shown);

    answerEntry(stale);
    notion().release();
    QTRY_COMPARE(shownEntry(), u"e1"_s);
    waitForPoll();
    answerEntry(fresh);
    m_world->clock.advance(60);
    QTRY_COMPARE(shownEntry(), shown);
    QCOMPARE(writes(), writesOf(action));
}

QTEST_GUILESS_MAIN(ActionsBesidePollsTest)
#include "ActionsBesidePollsTest.moc"
