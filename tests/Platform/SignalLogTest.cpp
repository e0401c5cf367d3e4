#include "Platform/Linux/SignalLog.h"

#include <QProcess>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

void say(const char *text)
{
    (void)!::write(STDOUT_FILENO, text, qstrlen(text));
}

/// Tells the number, and leaves `errno` in disorder as a handler that writes a log may.
void tell(int signal)
{
    const char text[] = {'S', char('0' + signal / 10), char('0' + signal % 10), '\n', '\0'};
    say(text);
    errno = ENOTTY;
}

/// A program that has installed a handler. It answers each line that it reads with what came of it.
int runChild(const QString &mode)
{
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    SignalLog::install(tell);
    if (mode == "abort"_L1)
        std::abort();
    if (mode == "errno"_L1) {
        errno = EDOM;
        std::raise(SIGTERM);
        say(errno == EDOM ? "errno kept\n" : "errno lost\n");
        return 0;
    }
    say("ready\n");
    char line[8];
    while (true) {
        const auto count = ::read(STDIN_FILENO, line, sizeof line);
        if (count < 0)
            say("interrupted\n"); // A handler without SA_RESTART would have this happen.
        if (count <= 0)
            break;
        say("alive\n");
    }
    return 0;
}

} // namespace

class SignalLogTest : public QObject {
    Q_OBJECT
private slots:
    void aSignalIsHandledAndTheProgramGoesOn_data();
    void aSignalIsHandledAndTheProgramGoesOn();
    void anAbortIsHandledAndEndsTheProgram();
    void whatWasInterruptedFindsItsErrorNumber();
    void otherSignalsKeepTheirEffect();
};

void SignalLogTest::aSignalIsHandledAndTheProgramGoesOn_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<QByteArray>("told");
    QTest::newRow("SIGTERM") << SIGTERM << "S15\n"_ba;
    QTest::newRow("SIGINT") << SIGINT << "S02\n"_ba;
    QTest::newRow("SIGABRT from elsewhere") << SIGABRT << "S06\n"_ba;
}

void SignalLogTest::aSignalIsHandledAndTheProgramGoesOn()
{
    QFETCH(int, signal);
    QFETCH(QByteArray, told);
    QProcess child;
    QByteArray output;
    connect(&child, &QProcess::readyReadStandardOutput, this, [&] { output += child.readAllStandardOutput(); });
    child.start(QCoreApplication::applicationFilePath(), {u"--signals"_s, u"wait"_s});
    QTRY_COMPARE(output, "ready\n"_ba);
    for (int time = 1; time <= 2; ++time) { // The handler stays.
        output.clear();
        QCOMPARE(::kill(pid_t(child.processId()), signal), 0);
        QTRY_COMPARE(output, told);
        child.write("\n");
        QTRY_COMPARE(output, told + "alive\n"_ba);
    }
    child.closeWriteChannel();
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), 0);
    QCOMPARE(output, told + "alive\n"_ba);
}

void SignalLogTest::anAbortIsHandledAndEndsTheProgram()
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--signals"_s, u"abort"_s});
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.readAllStandardOutput(), "S06\n"_ba);
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    QCOMPARE(child.exitCode(), SIGABRT);
}

void SignalLogTest::whatWasInterruptedFindsItsErrorNumber()
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--signals"_s, u"errno"_s});
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.readAllStandardOutput(), "S15\nerrno kept\n"_ba);
}

void SignalLogTest::otherSignalsKeepTheirEffect()
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--signals"_s, u"wait"_s});
    QVERIFY(child.waitForReadyRead());
    QCOMPARE(::kill(pid_t(child.processId()), SIGHUP), 0);
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    QCOMPARE(child.exitCode(), SIGHUP);
    QCOMPARE(child.readAllStandardOutput(), "ready\n"_ba);
}

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    if (app.arguments().value(1) == "--signals"_L1)
        return runChild(app.arguments().at(2));
    SignalLogTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "SignalLogTest.moc"
