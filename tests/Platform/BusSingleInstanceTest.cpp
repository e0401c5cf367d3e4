#include "Platform/Freedesktop/BusSingleInstance.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const auto name = u"com.korvo.app"_s;

QDBusMessage call(const QString &member, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(name, u"/com/korvo/app"_s, u"org.freedesktop.Application"_s, member);
    message.setArguments(arguments);
    return message;
}

bool isTaken()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(name);
}

} // namespace

/// Each claim is one of another process: this program run once more, with "claim" as its argument.
class BusSingleInstanceTest : public QObject {
    Q_OBJECT
private slots:
    void cleanup();

    void theFirstIsTheOnlyOne();
    void theFirstStaysTheOnlyOneWhenItAsksAgain();
    void theSecondIsToldSoAndTheFirstHearsIt();
    void theNameIsFreeAfterADeath();
    void theNameIsFreeOnceTheObjectHasGone();
    void afterAReleaseTheNextProcessIsTheOnlyOne();
    void aReleaseIsFreeWithoutAClaimAndTheClaimCanBeRepeated();
    void theObjectIsGoneAfterARelease();
    void anActivationMayLeadToARelease();
    void aFirstThatHangsIsStillTheFirst();
    void theDesktopMayActivateIt();
    void filesAndActionsAreRefused_data();
    void filesAndActionsAreRefused();
    void withoutABusEverybodyIsTheOnlyOne();
    void aBusThatDiesCrashesNothing();

private:
    /// Whether the process says that it is the only one; nothing if it doesn't answer.
    static std::optional<bool> answerOf(QProcess &process);
    static void start(QProcess &process) { process.start(QCoreApplication::applicationFilePath(), {u"claim"_s}); }
};

void BusSingleInstanceTest::cleanup()
{
    QTRY_VERIFY(!isTaken());
}

std::optional<bool> BusSingleInstanceTest::answerOf(QProcess &process)
{
    if (!QTest::qWaitFor([&] { return process.canReadLine(); }))
        return std::nullopt;
    return process.readLine().trimmed() == "only";
}

void BusSingleInstanceTest::theFirstIsTheOnlyOne()
{
    QVERIFY(!isTaken());
    BusSingleInstance instance;
    QVERIFY(!isTaken()); // Before it is asked it does nothing.
    QVERIFY(instance.claim());
    QVERIFY(isTaken());
}

void BusSingleInstanceTest::theFirstStaysTheOnlyOneWhenItAsksAgain()
{
    BusSingleInstance instance;
    QSignalSpy requested(&instance, &SingleInstance::activationRequested);
    QVERIFY(instance.claim());
    QVERIFY(instance.claim());
    QCOMPARE(requested.count(), 0);
}

void BusSingleInstanceTest::theSecondIsToldSoAndTheFirstHearsIt()
{
    BusSingleInstance instance;
    QSignalSpy requested(&instance, &SingleInstance::activationRequested);
    QVERIFY(instance.claim());
    for (int count = 1; count <= 2; ++count) {
        QProcess second;
        start(second);
        QCOMPARE(answerOf(second), false);
        QCOMPARE(requested.count(), count);
        QTRY_COMPARE(second.state(), QProcess::NotRunning);
    }
}

void BusSingleInstanceTest::theNameIsFreeAfterADeath()
{
    QProcess first;
    start(first);
    QCOMPARE(answerOf(first), true);
    QVERIFY(isTaken());
    first.kill();
    QVERIFY(first.waitForFinished());
    QTRY_VERIFY(!isTaken());
    BusSingleInstance instance;
    QVERIFY(instance.claim());
}

void BusSingleInstanceTest::theNameIsFreeOnceTheObjectHasGone()
{
    {
        BusSingleInstance instance;
        QVERIFY(instance.claim());
    }
    QVERIFY(!isTaken());
    BusSingleInstance instance;
    QVERIFY(instance.claim());
}

void BusSingleInstanceTest::afterAReleaseTheNextProcessIsTheOnlyOne()
{
    BusSingleInstance instance;
    QSignalSpy requested(&instance, &SingleInstance::activationRequested);
    QVERIFY(instance.claim());
    instance.release();
    QProcess next;
    start(next);
    QCOMPARE(answerOf(next), true);
    QCOMPARE(requested.count(), 0);
    QVERIFY(!instance.claim()); // It is the other's now.
    next.kill();
    QVERIFY(next.waitForFinished());
}

void BusSingleInstanceTest::aReleaseIsFreeWithoutAClaimAndTheClaimCanBeRepeated()
{
    BusSingleInstance instance;
    instance.release();
    QVERIFY(!isTaken());
    QVERIFY(instance.claim());
    instance.release();
    instance.release();
    QVERIFY(!isTaken());
    QVERIFY(instance.claim());
    QVERIFY(isTaken());
    QSignalSpy requested(&instance, &SingleInstance::activationRequested);
    QProcess second;
    start(second);
    QCOMPARE(answerOf(second), false);
    QCOMPARE(requested.count(), 1); // The object of the second claim has its path.
    QTRY_COMPARE(second.state(), QProcess::NotRunning);
}

void BusSingleInstanceTest::theObjectIsGoneAfterARelease()
{
    BusSingleInstance instance;
    QVERIFY(instance.claim());
    instance.release();
    const auto bus = QDBusConnection::sessionBus();
    auto message = QDBusMessage::createMethodCall(bus.baseService(), u"/com/korvo/app"_s,
                                                  u"org.freedesktop.Application"_s, u"Activate"_s);
    message << QVariantMap();
    QDBusPendingCallWatcher asked(bus.asyncCall(message));
    QTRY_VERIFY(asked.isFinished());
    QVERIFY(asked.isError());
}

void BusSingleInstanceTest::anActivationMayLeadToARelease()
{
    BusSingleInstance instance;
    connect(&instance, &SingleInstance::activationRequested, &instance, &SingleInstance::release);
    QVERIFY(instance.claim());
    QProcess second;
    start(second);
    QCOMPARE(answerOf(second), false);
    QTRY_COMPARE(second.state(), QProcess::NotRunning);
    QTRY_VERIFY(!isTaken());
}

void BusSingleInstanceTest::aFirstThatHangsIsStillTheFirst()
{
    QProcess first;
    start(first);
    QCOMPARE(answerOf(first), true);
    QCOMPARE(::kill(pid_t(first.processId()), SIGSTOP), 0);
    BusSingleInstance instance;
    QVERIFY(!instance.claim());
    first.kill();
    QVERIFY(first.waitForFinished());
}

void BusSingleInstanceTest::theDesktopMayActivateIt()
{
    BusSingleInstance instance;
    QSignalSpy requested(&instance, &SingleInstance::activationRequested);
    QVERIFY(instance.claim());
    const QVariantMap platformData{{u"desktop-startup-id"_s, u"token"_s}};
    const QDBusPendingReply<> reply = QDBusConnection::sessionBus().asyncCall(call(u"Activate"_s, {platformData}));
    QTRY_VERIFY(reply.isFinished());
    QVERIFY(!reply.isError());
    QTRY_COMPARE(requested.count(), 1);
}

void BusSingleInstanceTest::filesAndActionsAreRefused_data()
{
    QTest::addColumn<QDBusMessage>("question");
    QTest::addColumn<QString>("error");
    const auto unsupported = u"org.freedesktop.DBus.Error.NotSupported"_s;
    const auto unknown = u"org.freedesktop.DBus.Error.UnknownMethod"_s;
    QTest::newRow("files") << call(u"Open"_s, {QStringList(u"file:///tmp"_s), QVariantMap()}) << unsupported;
    QTest::newRow("an action") << call(u"ActivateAction"_s, {u"stop"_s, QVariantList(), QVariantMap()}) << unsupported;
    QTest::newRow("another method") << call(u"Explode"_s, {}) << unknown;
    QTest::newRow("the wrong arguments") << call(u"Activate"_s, {7}) << unknown;
}

void BusSingleInstanceTest::filesAndActionsAreRefused()
{
    QFETCH(QDBusMessage, question);
    BusSingleInstance instance;
    QSignalSpy requested(&instance, &SingleInstance::activationRequested);
    QVERIFY(instance.claim());
    const QDBusPendingReply<> reply = QDBusConnection::sessionBus().asyncCall(question);
    QTRY_VERIFY(reply.isFinished());
    QTEST(reply.error().name(), "error");
    QCOMPARE(requested.count(), 0);
}

void BusSingleInstanceTest::withoutABusEverybodyIsTheOnlyOne()
{
    const auto nowhere = [] { return QDBusConnection::connectToBus(u"unix:path=/nonexistent"_s, u"none"_s); };
    BusSingleInstance one(nowhere);
    BusSingleInstance other(nowhere);
    QVERIFY(one.claim());
    QVERIFY(other.claim());
    QDBusConnection::disconnectFromBus(u"none"_s);
}

void BusSingleInstanceTest::aBusThatDiesCrashesNothing()
{
    const QTemporaryDir folder;
    QProcess daemon;
    daemon.start(u"dbus-daemon"_s,
                 {u"--session"_s, u"--nofork"_s, u"--print-address"_s, u"--address=unix:dir="_s + folder.path()});
    QVERIFY(daemon.waitForReadyRead());
    const auto address = QString::fromLatin1(daemon.readLine().trimmed());
    QVERIFY(QDBusConnection::connectToBus(address, u"dying"_s).isConnected());
    {
        BusSingleInstance instance([] { return QDBusConnection(u"dying"_s); });
        QVERIFY(instance.claim());
        daemon.kill();
        QVERIFY(daemon.waitForFinished());
        QTRY_VERIFY(!QDBusConnection(u"dying"_s).isConnected());
        QVERIFY(instance.claim());
    }
    BusSingleInstance late([] { return QDBusConnection(u"dying"_s); });
    QVERIFY(late.claim());
    QDBusConnection::disconnectFromBus(u"dying"_s);
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (application.arguments().value(1) == u"claim"_s) {
        BusSingleInstance instance;
        const bool isOnly = instance.claim();
        std::puts(isOnly ? "only" : "second");
        std::fflush(stdout);
        return isOnly ? QCoreApplication::exec() : 0;
    }
    BusSingleInstanceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "BusSingleInstanceTest.moc"
