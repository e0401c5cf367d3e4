#include "ViewModels/TimerViewModel.h"

#include "Fakes/FakeClock.h"
#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakeNotion.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/NotionPages.h"
#include "Fakes/TestSettings.h"
#include "Utilities/Spawn.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QString trackerQuery = u"POST /databases/tracker/query"_s;
constexpr double eightHours = 8 * 3600;

/// Takes so long to show something that the next tick comes meanwhile.
class SlowNotificationCenter final : public NotificationCenter {
public:
    void requestAuthorization() override { }
    void add(const Notification &) override
    {
        if (++count < enough)
            viewModel->checkReminder(eightHours);
    }

    static constexpr int enough = 5; // Else ticks without an end would end the test.
    int count = 0;
    TimerViewModel *viewModel = nullptr;
};

} // namespace

class ReminderTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theNotificationSaysWhatItSays();
    void wholeHoursAreCutDownAndTheWordStaysPlural_data();
    void wholeHoursAreCutDownAndTheWordStaysPlural();
    void theLimitItselfSendsAndJustBelowItDoesNot();
    void aLimitOfZeroSendsAtTheFirstTick();
    void oneEntryGetsOneNotificationHoweverLongItRuns();
    void aTickWhileTheReminderIsBeingShownSendsNoSecondOne();
    void eachNotificationHasAnIdentifierOfItsOwn();
    void aReminderThatIsOffSendsNothingAndTurnedOnItSendsAtTheNextTick();
    void aRaisedLimitSendsNoSecondOne();
    void anotherEntryOfTheSameTaskIsRemindedOfAgain();
    void aPollThatSeesTheSameEntrySendsNoSecondOne();
    void anEntryThatEndedInBetweenCountsAnew();
    void anEntryWithoutAStartStaysBelowALimitAboveTheInterval();

private:
    struct World {
        FakeNotion notion;
        FakeClock clock;
        FakeNotificationCenter notifications;
        TestSettings settings;
        FakeSystemLog log;
        std::unique_ptr<TimerViewModel> viewModel;
    };

    AppSettings &settings() { return m_world->settings.settings; }
    TimerViewModel &viewModel() { return *m_world->viewModel; }
    const QList<Notification> &shown() const { return m_world->notifications.shown; }
    /// Lets the next poll see these rows, and waits for it.
    void pollRows(const QList<QJsonObject> &rows);

    std::unique_ptr<World> m_world;
};

void ReminderTest::init()
{
    m_world = std::make_unique<World>();
    TestSettings::configure(settings());
    settings().setReminderEnabled(true);
    m_world->viewModel
        = std::make_unique<TimerViewModel>(m_world->notifications, m_world->notion, settings(), m_world->clock);
    m_world->notion.answerRows(u"POST /databases/tasks/query"_s, {});
}

void ReminderTest::cleanup()
{
    m_world->viewModel.reset();
    QVERIFY(finishSpawned(2000));
    m_world.reset();
}

void ReminderTest::pollRows(const QList<QJsonObject> &rows)
{
    m_world->notion.answerRows(trackerQuery, rows);
    const auto before = m_world->clock.waits.size();
    if (before == 0)
        viewModel().startPollingIfConfigured();
    else
        m_world->clock.advance(60);
    QTRY_VERIFY(m_world->clock.waits.size() > before);
    QCOMPARE(viewModel().activeTimer().has_value(), !rows.isEmpty());
}

void ReminderTest::theNotificationSaysWhatItSays()
{
    viewModel().checkReminder(eightHours);
    QCOMPARE(shown().size(), 1);
    const auto &notification = shown().first();
    QCOMPARE(notification.title, u"Timer Running"_s);
    QCOMPARE(notification.body, u"Your timer has been running for over 8 hours."_s);
    QVERIFY(notification.hasDefaultSound);
    const QRegularExpression form(u"^timerReminder-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"_s);
    QVERIFY2(form.match(notification.identifier).hasMatch(), qPrintable(notification.identifier));
    QCOMPARE(m_world->log.lines, QStringList());
}

void ReminderTest::wholeHoursAreCutDownAndTheWordStaysPlural_data()
{
    QTest::addColumn<double>("hours");
    QTest::addColumn<QString>("number");
    QTest::newRow("one and a half shows 1") << 1.5 << u"1"_s;
    QTest::newRow("one shows 1") << 1.0 << u"1"_s;
    QTest::newRow("almost three shows 2") << 2.999 << u"2"_s;
    QTest::newRow("half an hour shows 0") << 0.5 << u"0"_s;
    QTest::newRow("a negative one is cut towards zero") << -1.5 << u"-1"_s;
}

void ReminderTest::wholeHoursAreCutDownAndTheWordStaysPlural()
{
    QFETCH(double, hours);
    QFETCH(QString, number);
    settings().setReminderHours(hours);
    viewModel().checkReminder(eightHours);
    QCOMPARE(shown().size(), 1);
    QCOMPARE(shown().first().body, u"Your timer has been running for over %1 hours."_s.arg(number));
}

void ReminderTest::theLimitItselfSendsAndJustBelowItDoesNot()
{
    viewModel().checkReminder(eightHours - 0.001);
    QCOMPARE(shown().size(), 0);
    viewModel().checkReminder(eightHours);
    QCOMPARE(shown().size(), 1);
}

void ReminderTest::aLimitOfZeroSendsAtTheFirstTick()
{
    settings().setReminderHours(0);
    viewModel().checkReminder(0);
    QCOMPARE(shown().size(), 1);
}

void ReminderTest::oneEntryGetsOneNotificationHoweverLongItRuns()
{
    for (const double elapsed : {eightHours, eightHours + 1, 10 * eightHours})
        viewModel().checkReminder(elapsed);
    QCOMPARE(shown().size(), 1);
}

void ReminderTest::aTickWhileTheReminderIsBeingShownSendsNoSecondOne()
{
    SlowNotificationCenter notifications;
    TimerViewModel reminding(notifications, m_world->notion, settings(), m_world->clock);
    notifications.viewModel = &reminding;
    reminding.checkReminder(eightHours);
    QCOMPARE(notifications.count, 1);
}

void ReminderTest::eachNotificationHasAnIdentifierOfItsOwn()
{
    pollRows({pages::runningEntry(u"e1"_s)});
    viewModel().checkReminder(eightHours);
    pollRows({pages::runningEntry(u"e2"_s)});
    viewModel().checkReminder(eightHours);
    QCOMPARE(shown().size(), 2);
    QVERIFY(shown().first().identifier != shown().last().identifier);
}

void ReminderTest::aReminderThatIsOffSendsNothingAndTurnedOnItSendsAtTheNextTick()
{
    settings().setReminderEnabled(false);
    viewModel().checkReminder(2 * eightHours);
    QCOMPARE(shown().size(), 0);
    settings().setReminderEnabled(true);
    viewModel().checkReminder(2 * eightHours + 1);
    QCOMPARE(shown().size(), 1);
}

void ReminderTest::aRaisedLimitSendsNoSecondOne()
{
    viewModel().checkReminder(eightHours);
    settings().setReminderHours(9);
    viewModel().checkReminder(9 * 3600);
    QCOMPARE(shown().size(), 1);
}

void ReminderTest::anotherEntryOfTheSameTaskIsRemindedOfAgain()
{
    pollRows({pages::runningEntry(u"e1"_s, {u"t1"_s})});
    viewModel().checkReminder(eightHours);
    pollRows({pages::runningEntry(u"e2"_s, {u"t1"_s})});
    viewModel().checkReminder(eightHours - 1);
    QCOMPARE(shown().size(), 1);
    viewModel().checkReminder(eightHours);
    QCOMPARE(shown().size(), 2);
}

void ReminderTest::aPollThatSeesTheSameEntrySendsNoSecondOne()
{
    pollRows({pages::runningEntry(u"e1"_s)});
    viewModel().checkReminder(eightHours);
    pollRows({pages::runningEntry(u"e1"_s)});
    viewModel().checkReminder(eightHours + 60);
    QCOMPARE(shown().size(), 1);
}

void ReminderTest::anEntryThatEndedInBetweenCountsAnew()
{
    pollRows({pages::runningEntry(u"e1"_s)});
    viewModel().checkReminder(eightHours);
    pollRows({});
    pollRows({pages::runningEntry(u"e1"_s)});
    viewModel().checkReminder(eightHours);
    QCOMPARE(shown().size(), 2);
}

void ReminderTest::anEntryWithoutAStartStaysBelowALimitAboveTheInterval()
{
    settings().setReminderHours(0.1);
    const auto entry = pages::page(u"e1"_s, {{u"Status"_s, pages::select(u"Running"_s)}});
    for (int polls = 0; polls < 10; ++polls) {
        pollRows({entry});
        const auto start = viewModel().activeTimer()->startTime;
        viewModel().checkReminder(double(start.msecsTo(m_world->clock.now())) / 1000 + 59);
    }
    QCOMPARE(shown().size(), 0);
}

QTEST_GUILESS_MAIN(ReminderTest)
#include "ReminderTest.moc"
