#include "Platform/Linux/ExceptionLog.h"

#include <QProcess>
#include <QTest>

#include <cstdio>
#include <stdexcept>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

void tell(const UncaughtException &exception)
{
    std::printf("%s|%s|%s\n", qPrintable(exception.name), qPrintable(exception.reason.value_or(u"none"_s)),
                exception.callStack.isEmpty() ? "no stack" : "a stack");
    std::fflush(stdout);
}

struct Silent : std::exception {
    const char *what() const noexcept override { return ""; }
};

/// A program that fails in one way.
int runChild(const QString &mode)
{
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    ExceptionLog::install(tell);
    if (mode == "reason"_L1)
        throw std::runtime_error("out of tea");
    if (mode == "silent"_L1)
        throw Silent();
    throw 5;
}

} // namespace

class ExceptionLogTest : public QObject {
    Q_OBJECT
private slots:
    void anUncaughtExceptionIsToldAndEndsTheProgram_data();
    void anUncaughtExceptionIsToldAndEndsTheProgram();
};

void ExceptionLogTest::anUncaughtExceptionIsToldAndEndsTheProgram_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QByteArray>("told");
    QTest::newRow("with a reason") << u"reason"_s << "std::runtime_error|out of tea|a stack\n"_ba;
    QTest::newRow("without a reason") << u"silent"_s << "(anonymous namespace)::Silent|none|a stack\n"_ba;
    QTest::newRow("of no standard kind") << u"number"_s << "int|none|a stack\n"_ba;
}

void ExceptionLogTest::anUncaughtExceptionIsToldAndEndsTheProgram()
{
    QFETCH(QString, mode);
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--child"_s, mode});
    QVERIFY(child.waitForFinished());
    QTEST(child.readAllStandardOutput(), "told");
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
}

int main(int argc, char **argv)
{
    if (argc > 2 && qstrcmp(argv[1], "--child") == 0)
        return runChild(QString::fromLocal8Bit(argv[2]));
    QCoreApplication app(argc, argv);
    ExceptionLogTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ExceptionLogTest.moc"
