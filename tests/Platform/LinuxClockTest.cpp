#include "Platform/Linux/LinuxClock.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>

#include <cmath>
#include <limits>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

enum class Outcome { waiting, stopped, passed };

using Wait = QCoro::Task<bool> (Clock::*)(Clock::Seconds, std::stop_token);

QCoro::Task<> await(Clock *clock, Wait wait, double seconds, std::stop_token stop, Outcome *outcome)
{
    const bool hasPassed = co_await (clock->*wait)(Clock::Seconds(seconds), stop);
    *outcome = hasPassed ? Outcome::passed : Outcome::stopped;
}

/// What the kernel tells of each timer that this process has open.
QStringList kernelTimers()
{
    QStringList timers;
    for (const auto &fd : QDir(u"/proc/self/fdinfo"_s).entryList(QDir::Files)) {
        QFile file(u"/proc/self/fdinfo/"_s + fd);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        if (const auto text = QString::fromLatin1(file.readAll()); text.contains("clockid:"_L1))
            timers.append(text);
    }
    return timers;
}

/// No file descriptor is free for as long as it lives.
class NoDescriptors {
public:
    NoDescriptors()
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        ::close(next);
        const rlimit none{rlim_t(next), m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    Q_DISABLE_COPY_MOVE(NoDescriptors)

private:
    rlimit m_before{};
};

} // namespace

Q_DECLARE_METATYPE(Wait)

class LinuxClockTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();
    void nowIsTheLocalTimeOfDay();
    void aWaitPasses_data();
    void aWaitPasses();
    void aWaitIsNeverTooShort_data();
    void aWaitIsNeverTooShort();
    void nothingToWaitEndsAtTheNextTurnOfTheEventLoop_data();
    void nothingToWaitEndsAtTheNextTurnOfTheEventLoop();
    void aHugeDurationWaitsUntilItIsStopped_data();
    void aHugeDurationWaitsUntilItIsStopped();
    void aStopEndsAWaitAtOnce_data();
    void aStopEndsAWaitAtOnce();
    void aStopBeforehandMeansNoWait_data();
    void aStopBeforehandMeansNoWait();
    void uptimeCountsAPause();
    void waitsDoNotDisturbEachOther();
    void aWaitOutlivesItsClock();
    void sleepsCountSuspensionAndPausesDoNot();
    void withoutAFreeDescriptorAWaitStillPasses_data();
    void withoutAFreeDescriptorAWaitStillPasses();
    void withoutAFreeDescriptorAStopStillEndsAWait();

private:
    static void addWaits();

    LinuxClock m_clock;
    std::stop_source m_stop;
    Outcome m_outcome = Outcome::waiting;
    qsizetype m_timersBefore = 0; ///< Of the event loop itself, say.
};

void LinuxClockTest::initTestCase()
{
    QCoreApplication::processEvents();
    m_timersBefore = kernelTimers().size();
}

void LinuxClockTest::cleanup()
{
    m_stop.request_stop();
    QCoreApplication::processEvents();
    m_stop = {};
    m_outcome = Outcome::waiting;
    QCOMPARE(kernelTimers().size(), m_timersBefore);
}

void LinuxClockTest::addWaits()
{
    QTest::addColumn<Wait>("wait");
    QTest::newRow("a sleep") << Wait(&Clock::sleepFor);
    QTest::newRow("a pause") << Wait(&Clock::pauseFor);
}

void LinuxClockTest::nowIsTheLocalTimeOfDay()
{
    const auto before = QDateTime::currentDateTime();
    const auto now = m_clock.now();
    QVERIFY(before <= now && now <= QDateTime::currentDateTime());
    QCOMPARE(now.timeSpec(), Qt::LocalTime);
}

void LinuxClockTest::aWaitPasses_data()
{
    addWaits();
}

void LinuxClockTest::aWaitPasses()
{
    QFETCH(Wait, wait);
    await(&m_clock, wait, 0.01, m_stop.get_token(), &m_outcome);
    QCOMPARE(m_outcome, Outcome::waiting);
    QCOMPARE(kernelTimers().size(), m_timersBefore + 1);
    QTRY_COMPARE(m_outcome, Outcome::passed);
    QCOMPARE(kernelTimers().size(), m_timersBefore);
}

void LinuxClockTest::aWaitIsNeverTooShort_data()
{
    addWaits();
}

void LinuxClockTest::aWaitIsNeverTooShort()
{
    QFETCH(Wait, wait);
    for (const double seconds : {0.001, 0.0125, 0.9999999999e-2}) {
        m_outcome = Outcome::waiting;
        QElapsedTimer timer;
        timer.start();
        await(&m_clock, wait, seconds, m_stop.get_token(), &m_outcome);
        while (m_outcome == Outcome::waiting)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QVERIFY(double(timer.nsecsElapsed()) >= seconds * 1e9);
    }
}

void LinuxClockTest::nothingToWaitEndsAtTheNextTurnOfTheEventLoop_data()
{
    QTest::addColumn<Wait>("wait");
    QTest::addColumn<double>("seconds");
    constexpr auto infinity = std::numeric_limits<double>::infinity();
    for (const auto &[kind, wait] :
         {std::pair("sleep", Wait(&Clock::sleepFor)), std::pair("pause", Wait(&Clock::pauseFor))}) {
        QTest::addRow("%s of nothing", kind) << wait << 0.0;
        QTest::addRow("%s of less than nothing", kind) << wait << -5.0;
        QTest::addRow("%s of minus infinity", kind) << wait << -infinity;
        QTest::addRow("%s of what is not a number", kind) << wait << std::nan("");
        QTest::addRow("%s of the least there is", kind) << wait << std::numeric_limits<double>::denorm_min();
    }
}

void LinuxClockTest::nothingToWaitEndsAtTheNextTurnOfTheEventLoop()
{
    QFETCH(Wait, wait);
    QFETCH(double, seconds);
    await(&m_clock, wait, seconds, m_stop.get_token(), &m_outcome);
    QCOMPARE(m_outcome, Outcome::waiting);
    QTRY_COMPARE(m_outcome, Outcome::passed);
}

void LinuxClockTest::aHugeDurationWaitsUntilItIsStopped_data()
{
    QTest::addColumn<Wait>("wait");
    QTest::addColumn<double>("seconds");
    for (const auto &[kind, wait] :
         {std::pair("sleep", Wait(&Clock::sleepFor)), std::pair("pause", Wait(&Clock::pauseFor))}) {
        QTest::addRow("%s of a month", kind) << wait << 30 * 86400.0;
        QTest::addRow("%s beyond the clock", kind) << wait << 1e300;
        QTest::addRow("%s without an end", kind) << wait << std::numeric_limits<double>::infinity();
    }
}

void LinuxClockTest::aHugeDurationWaitsUntilItIsStopped()
{
    QFETCH(Wait, wait);
    QFETCH(double, seconds);
    await(&m_clock, wait, seconds, m_stop.get_token(), &m_outcome);
    Outcome other = Outcome::waiting;
    await(&m_clock, wait, 0.01, m_stop.get_token(), &other);
    QTRY_COMPARE(other, Outcome::passed);
    QCOMPARE(m_outcome, Outcome::waiting);
    const auto timers = kernelTimers();
    QCOMPARE(timers.size(), m_timersBefore + 1);
    QVERIFY(!timers.last().contains("it_value: (0, 0)"_L1)); // It is set.
    m_stop.request_stop();
    QTRY_COMPARE(m_outcome, Outcome::stopped);
}

void LinuxClockTest::aStopEndsAWaitAtOnce_data()
{
    addWaits();
}

void LinuxClockTest::aStopEndsAWaitAtOnce()
{
    QFETCH(Wait, wait);
    await(&m_clock, wait, 3600, m_stop.get_token(), &m_outcome);
    QCoreApplication::processEvents();
    QCOMPARE(m_outcome, Outcome::waiting);
    m_stop.request_stop();
    QCOMPARE(m_outcome, Outcome::waiting); // Not inside the request, whose caller may not expect it.
    QCoreApplication::processEvents();
    QCOMPARE(m_outcome, Outcome::stopped);
}

void LinuxClockTest::aStopBeforehandMeansNoWait_data()
{
    addWaits();
}

void LinuxClockTest::aStopBeforehandMeansNoWait()
{
    QFETCH(Wait, wait);
    m_stop.request_stop();
    await(&m_clock, wait, 3600, m_stop.get_token(), &m_outcome);
    QTRY_COMPARE(m_outcome, Outcome::stopped);
}

void LinuxClockTest::uptimeCountsAPause()
{
    const auto before = m_clock.uptime();
    await(&m_clock, Wait(&Clock::pauseFor), 0.01, m_stop.get_token(), &m_outcome);
    QTRY_COMPARE(m_outcome, Outcome::passed);
    QVERIFY((m_clock.uptime() - before).count() >= 0.01);
}

void LinuxClockTest::waitsDoNotDisturbEachOther()
{
    std::stop_source otherStop;
    Outcome longOne = Outcome::waiting;
    Outcome stoppedOne = Outcome::waiting;
    Outcome unstoppable = Outcome::waiting;
    await(&m_clock, &Clock::sleepFor, 3600, m_stop.get_token(), &longOne);
    await(&m_clock, &Clock::sleepFor, 3600, otherStop.get_token(), &stoppedOne);
    await(&m_clock, &Clock::pauseFor, 0.01, {}, &unstoppable);
    otherStop.request_stop();
    QTRY_COMPARE(stoppedOne, Outcome::stopped);
    QTRY_COMPARE(unstoppable, Outcome::passed);
    QCOMPARE(longOne, Outcome::waiting);
    m_stop.request_stop();
    QTRY_COMPARE(longOne, Outcome::stopped);
}

void LinuxClockTest::aWaitOutlivesItsClock()
{
    auto clock = std::make_unique<LinuxClock>();
    await(clock.get(), &Clock::sleepFor, 0.01, m_stop.get_token(), &m_outcome);
    clock.reset();
    QTRY_COMPARE(m_outcome, Outcome::passed);
}

void LinuxClockTest::sleepsCountSuspensionAndPausesDoNot()
{
    const auto idOf = [this](Wait wait) {
        std::stop_source stop;
        Outcome outcome = Outcome::waiting;
        auto before = kernelTimers();
        await(&m_clock, wait, 3600, stop.get_token(), &outcome);
        QString id;
        for (const auto &timer : kernelTimers()) {
            const auto first = timer.split(u'\n').filter(u"clockid:"_s).value(0).section(u':', 1).trimmed();
            if (timer.contains("it_value: (3"_L1)) // An hour, or nearly.
                id = first;
        }
        stop.request_stop();
        QCoreApplication::processEvents();
        return id;
    };
    QCOMPARE(idOf(&Clock::sleepFor), QString::number(CLOCK_BOOTTIME));
    QCOMPARE(idOf(&Clock::pauseFor), QString::number(CLOCK_MONOTONIC));
}

void LinuxClockTest::withoutAFreeDescriptorAWaitStillPasses_data()
{
    QTest::addColumn<double>("seconds");
    QTest::newRow("a while") << 0.01;
    QTest::newRow("nothing") << 0.0;
    QTest::newRow("less than nothing") << -1.0;
    QTest::newRow("what is not a number") << std::nan("");
}

void LinuxClockTest::withoutAFreeDescriptorAWaitStillPasses()
{
    QFETCH(double, seconds);
    {
        const NoDescriptors none;
        await(&m_clock, &Clock::sleepFor, seconds, m_stop.get_token(), &m_outcome);
    }
    QCOMPARE(kernelTimers().size(), m_timersBefore);
    QCOMPARE(m_outcome, Outcome::waiting);
    QTRY_COMPARE(m_outcome, Outcome::passed);
}

void LinuxClockTest::withoutAFreeDescriptorAStopStillEndsAWait()
{
    {
        const NoDescriptors none;
        await(&m_clock, &Clock::sleepFor, std::numeric_limits<double>::infinity(), m_stop.get_token(), &m_outcome);
    }
    QCoreApplication::processEvents();
    QCOMPARE(m_outcome, Outcome::waiting);
    m_stop.request_stop();
    QTRY_COMPARE(m_outcome, Outcome::stopped);
}

QTEST_GUILESS_MAIN(LinuxClockTest)

#include "LinuxClockTest.moc"
