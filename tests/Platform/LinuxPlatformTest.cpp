#include "Platform/Platform.h"

#include "Platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdio>
#include <stdexcept>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

void tellException(const UncaughtException &exception)
{
    std::printf("%s|%s\n", qPrintable(exception.name), qPrintable(exception.reason.value_or(u"none"_s)));
    std::fflush(stdout);
}

void tellSignal(int signal)
{
    std::printf("signal %d\n", signal);
}

/// A program that makes the platform as `main` does, and tells one thing of it.
int runChild(const QString &mode)
{
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    std::signal(SIGPIPE, SIG_DFL); // Whoever started this may have had it ignored.
    const auto platform = Platform::create();
    if (mode == "broken pipe"_L1) {
        struct sigaction action { };
        ::sigaction(SIGPIPE, nullptr, &action);
        std::puts(action.sa_handler == SIG_IGN ? "ignored" : "fatal");
    } else if (mode == "exception"_L1) {
        platform->setExceptionHandler(tellException);
        throw std::runtime_error("out of tea");
    } else if (mode == "signal"_L1) {
        platform->setSignalHandler(tellSignal);
        std::raise(SIGTERM);
    } else if (mode == "window system"_L1) {
        std::puts(qgetenv("QT_QPA_PLATFORM").constData());
    } else if (mode == "settings"_L1) {
        platform->userDefaults().set({{u"apiKey"_s, u"ntn_test"_s}});
    }
    return 0;
}

struct Ended {
    QByteArray output;
    QProcess::ExitStatus status;
};

Ended run(const QString &mode, const QList<std::pair<QString, std::optional<QString>>> &variables = {})
{
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const auto &[name, value] : variables) {
        if (value)
            environment.insert(name, *value);
        else
            environment.remove(name);
    }
    QProcess child;
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {u"--child"_s, mode});
    child.waitForFinished();
    return {child.readAllStandardOutput(), child.exitStatus()};
}

} // namespace

/// What the platform of a Linux desktop is put together from, seen from outside of a program that has made it.
class LinuxPlatformTest : public QObject {
    Q_OBJECT
private slots:
    void aBrokenPipeDoesNotEndTheProgram();
    void anUncaughtExceptionReachesTheHandlerAndEndsTheProgram();
    void aSignalReachesTheHandlerAndTheProgramGoesOn();
    void theWindowSystemIsX11WhereThereIsADisplay_data();
    void theWindowSystemIsX11WhereThereIsADisplay();
    void settingsStandInTheUsersConfigurationFolder_data();
    void settingsStandInTheUsersConfigurationFolder();
};

void LinuxPlatformTest::aBrokenPipeDoesNotEndTheProgram()
{
    QCOMPARE(run(u"broken pipe"_s).output, "ignored\n"_ba);
}

void LinuxPlatformTest::anUncaughtExceptionReachesTheHandlerAndEndsTheProgram()
{
    const auto ended = run(u"exception"_s);
    QCOMPARE(ended.output, "std::runtime_error|out of tea\n"_ba);
    QCOMPARE(ended.status, QProcess::CrashExit);
}

void LinuxPlatformTest::aSignalReachesTheHandlerAndTheProgramGoesOn()
{
    const auto ended = run(u"signal"_s);
    QCOMPARE(ended.output, "signal 15\n"_ba);
    QCOMPARE(ended.status, QProcess::NormalExit);
}

void LinuxPlatformTest::theWindowSystemIsX11WhereThereIsADisplay_data()
{
    QTest::addColumn<QString>("display");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QByteArray>("platform");
    QTest::newRow("a display") << u":7"_s << QString() << "xcb;wayland\n"_ba;
    QTest::newRow("a display, and the user says otherwise") << u":7"_s << u"wayland"_s << "wayland\n"_ba;
    QTest::newRow("no display") << QString() << QString() << "\n"_ba;
}

void LinuxPlatformTest::theWindowSystemIsX11WhereThereIsADisplay()
{
    QFETCH(QString, display);
    QFETCH(QString, chosen);
    QTEST(run(u"window system"_s, {{u"DISPLAY"_s, display}, {u"QT_QPA_PLATFORM"_s, chosen}}).output, "platform");
}

void LinuxPlatformTest::settingsStandInTheUsersConfigurationFolder_data()
{
    QTest::addColumn<std::optional<QString>>("configuration"); // Below the home folder.
    QTest::addColumn<QString>("path");
    QTest::newRow("where there is no other") << std::optional<QString>() << u".config/Korvo/defaults.json"_s;
    QTest::newRow("where the user has another") << std::optional(u"settings"_s) << u"settings/Korvo/defaults.json"_s;
}

void LinuxPlatformTest::settingsStandInTheUsersConfigurationFolder()
{
    QFETCH(std::optional<QString>, configuration);
    QFETCH(QString, path);
    const QTemporaryDir home;
    if (configuration)
        configuration = home.filePath(*configuration);
    run(u"settings"_s, {{u"HOME"_s, home.path()}, {u"XDG_CONFIG_HOME"_s, configuration}});
    QFile file(home.filePath(path));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("ntn_test"));
}

int main(int argc, char **argv)
{
    if (argc > 2 && qstrcmp(argv[1], "--child") == 0)
        return runChild(QString::fromLocal8Bit(argv[2]));
    QCoreApplication app(argc, argv);
    LinuxPlatformTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "LinuxPlatformTest.moc"
