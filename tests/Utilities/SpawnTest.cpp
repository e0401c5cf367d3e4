#include "Utilities/Spawn.h"

#include "Utilities/Completion.h"
#include "Utilities/DiagnosticLogger.h"
#include "Utilities/SystemLog.h"

#include <QTest>

#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

class FakeSystemLog final : public SystemLog {
public:
    void write(Level level, const QByteArray &message) override { messages.append({level, message}); }

    QList<std::pair<Level, QByteArray>> messages;
};

QCoro::Task<> doNothing()
{
    co_return;
}

QCoro::Task<> waitFor(Completion<bool> completion)
{
    co_await completion;
}

QCoro::Task<> failAfter(Completion<bool> completion)
{
    co_await completion;
    throw std::runtime_error("out of ink");
}

QCoro::Task<> failAtOnce()
{
    throw 7;
    co_return;
}

} // namespace

class SpawnTest : public QObject {
    Q_OBJECT
private slots:
    void init() { Log::setSystemLog(&m_systemLog); }
    void cleanup();
    void aTaskThatDoesNotWaitIsOverAtOnce();
    void tasksAreCountedWhileTheyRun();
    void anExceptionAfterAWaitIsLogged();
    void anExceptionOfAnyKindIsLogged();
    void finishSpawnedTurnsTheEventLoopUntilAllHaveEnded();
    void finishSpawnedGivesUpOnATaskThatDoesNotEnd();

private:
    FakeSystemLog m_systemLog;
};

void SpawnTest::cleanup()
{
    Log::setSystemLog(nullptr);
    m_systemLog.messages.clear();
    QCOMPARE(spawnedCount(), 0);
}

void SpawnTest::aTaskThatDoesNotWaitIsOverAtOnce()
{
    spawn(doNothing());
    QCOMPARE(spawnedCount(), 0);
    QVERIFY(finishSpawned(0));
}

void SpawnTest::tasksAreCountedWhileTheyRun()
{
    const Completion<bool> first;
    const Completion<bool> second;
    spawn(waitFor(first));
    spawn(waitFor(second));
    QCOMPARE(spawnedCount(), 2);
    second.complete(true);
    QTRY_COMPARE(spawnedCount(), 1);
    first.complete(true);
    QTRY_COMPARE(spawnedCount(), 0);
}

void SpawnTest::anExceptionAfterAWaitIsLogged()
{
    const Completion<bool> completion;
    spawn(failAfter(completion));
    QCOMPARE(spawnedCount(), 1);
    completion.complete(true);
    QTRY_COMPARE(spawnedCount(), 0);
    QCOMPARE(m_systemLog.messages.size(), 1);
    QCOMPARE(m_systemLog.messages.first().first, SystemLog::Level::error);
    QCOMPARE(m_systemLog.messages.first().second, "A task ended by an exception: out of ink"_ba);
}

void SpawnTest::anExceptionOfAnyKindIsLogged()
{
    spawn(failAtOnce());
    QCOMPARE(spawnedCount(), 0);
    QCOMPARE(m_systemLog.messages.size(), 1);
    QCOMPARE(m_systemLog.messages.first().second, "A task ended by an exception of unknown kind"_ba);
}

void SpawnTest::finishSpawnedTurnsTheEventLoopUntilAllHaveEnded()
{
    const Completion<bool> first;
    const Completion<bool> second;
    spawn(waitFor(first));
    spawn(waitFor(second));
    QMetaObject::invokeMethod(
        qApp,
        [=] {
            first.complete(true);
            QMetaObject::invokeMethod(
                qApp, [=] { second.complete(true); }, Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
    QVERIFY(finishSpawned(60000));
}

void SpawnTest::finishSpawnedGivesUpOnATaskThatDoesNotEnd()
{
    const Completion<bool> completion;
    spawn(waitFor(completion));
    QVERIFY(!finishSpawned(10));
    QCOMPARE(spawnedCount(), 1);
    completion.complete(true);
    QVERIFY(finishSpawned(60000));
}

QTEST_GUILESS_MAIN(SpawnTest)

#include "SpawnTest.moc"
