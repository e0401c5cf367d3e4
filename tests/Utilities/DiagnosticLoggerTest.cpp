#include "Utilities/DiagnosticLogger.h"

#include "Utilities/SystemLog.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <new>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

/// Prints what it is given, and whether there is a log file yet.
class PrintingSystemLog final : public SystemLog {
public:
    void write(Level level, const QByteArray &message) override
    {
        const auto path = qEnvironmentVariable("XDG_STATE_HOME") + u"/Korvo/korvo.log"_s;
        std::printf("%d %s %lld\n", int(level), message.constData(), qlonglong(QFileInfo(path).size()));
        std::fflush(stdout);
    }
};

class ThrowingSystemLog final : public SystemLog {
public:
    void write(Level, const QByteArray &) override { throw std::bad_alloc(); }
};

int logInChild(const QStringList &arguments)
{
    PrintingSystemLog printing;
    ThrowingSystemLog throwing;
    for (const auto &argument : arguments) {
        if (argument == "--system-log"_L1)
            Log::setSystemLog(&printing);
        else if (argument == "--throwing-system-log"_L1)
            Log::setSystemLog(&throwing);
        else if (argument == "--no-system-log"_L1)
            Log::setSystemLog(nullptr);
        else if (argument.startsWith("i:"_L1))
            Log::info(argument.mid(2));
        else if (argument.startsWith("e:"_L1))
            Log::error(argument.mid(2));
        else if (argument.startsWith("f:"_L1))
            Log::fault(argument.mid(2));
        else if (argument.startsWith("cd:"_L1))
            QDir::setCurrent(argument.mid(3));
        else if (argument.startsWith("state:"_L1))
            qputenv("XDG_STATE_HOME", argument.mid(6).toUtf8());
    }
    return 0;
}

} // namespace

class DiagnosticLoggerTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void eachLevelHasItsWordInTheFileAndItsLevelInTheSystemLog();
    void theSystemLogComesFirst();
    void withoutASystemLogThereIsTheFile();
    void aFileThatCannotBeMadeLeavesTheSystemLog();
    void aSystemLogThatThrowsLeavesTheFile();
    void thePathIsWorkedOutOnce();
    void aRelativeStateFolderIsIgnored();
    void theFileHasEuropeanDigitsInAnyLocale_data();
    void theFileHasEuropeanDigitsInAnyLocale();

private:
    /// Lets a process of its own log, and gives what it prints.
    QByteArray run(const QStringList &arguments, const QString &stateHome, const QString &locale = u"C.UTF-8"_s);
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QByteArray logIn(const QString &folder) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void DiagnosticLoggerTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

QByteArray DiagnosticLoggerTest::run(const QStringList &arguments, const QString &stateHome, const QString &locale)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_STATE_HOME"_s, stateHome);
    environment.insert(u"HOME"_s, path(u"home"_s));
    environment.insert(u"LC_ALL"_s, locale);
    QProcess child;
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), QStringList{u"--log"_s} + arguments);
    if (!child.waitForFinished() || child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0)
        return "the process failed"_ba;
    return child.readAllStandardOutput();
}

QByteArray DiagnosticLoggerTest::logIn(const QString &folder) const
{
    QFile file(folder + u"/Korvo/korvo.log"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "no such file"_ba;
}

void DiagnosticLoggerTest::eachLevelHasItsWordInTheFileAndItsLevelInTheSystemLog()
{
    const auto printed = run({u"--system-log"_s, u"i:eins"_s, u"e:zwei"_s, u"f:drei"_s}, path(u"state"_s));
    const auto lines = logIn(path(u"state"_s)).split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0].mid(25), " [INFO] eins"_ba);
    QCOMPARE(lines[1].mid(25), " [ERROR] zwei"_ba);
    QCOMPARE(lines[2].mid(25), " [FAULT] drei"_ba);
    QVERIFY(printed.contains("0 eins"));
    QVERIFY(printed.contains("1 zwei"));
    QVERIFY(printed.contains("2 drei"));
}

void DiagnosticLoggerTest::theSystemLogComesFirst()
{
    const auto printed = run({u"--system-log"_s, u"i:a"_s, u"i:b"_s}, path(u"state"_s));
    QCOMPARE(printed, "0 a 0\n0 b 35\n"_ba);
}

void DiagnosticLoggerTest::withoutASystemLogThereIsTheFile()
{
    QCOMPARE(run({u"i:a"_s, u"--system-log"_s, u"--no-system-log"_s, u"i:b"_s}, path(u"state"_s)), QByteArray());
    QCOMPARE(logIn(path(u"state"_s)).count('\n'), 2);
}

void DiagnosticLoggerTest::aFileThatCannotBeMadeLeavesTheSystemLog()
{
    QFile inTheWay(path(u"state"_s));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    QCOMPARE(run({u"--system-log"_s, u"i:a"_s, u"f:b"_s}, path(u"state"_s)), "0 a 0\n2 b 0\n"_ba);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{u"state"_s});
}

void DiagnosticLoggerTest::aSystemLogThatThrowsLeavesTheFile()
{
    QCOMPARE(run({u"--throwing-system-log"_s, u"i:a"_s}, path(u"state"_s)), QByteArray());
    QVERIFY(logIn(path(u"state"_s)).endsWith("] [INFO] a\n"));
}

void DiagnosticLoggerTest::thePathIsWorkedOutOnce()
{
    run({u"i:a"_s, u"state:"_s + path(u"other"_s), u"i:b"_s}, path(u"state"_s));
    QCOMPARE(logIn(path(u"state"_s)).count('\n'), 2);
    QVERIFY(!QFile::exists(path(u"other"_s)));
}

void DiagnosticLoggerTest::aRelativeStateFolderIsIgnored()
{
    run({u"cd:"_s + m_folder->path(), u"i:a"_s}, u"state"_s);
    QVERIFY(logIn(path(u"home/.local/state"_s)).endsWith("] [INFO] a\n"));
    QVERIFY(!QFile::exists(path(u"state"_s)));
}

void DiagnosticLoggerTest::theFileHasEuropeanDigitsInAnyLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::newRow("Persian") << u"fa_IR.UTF-8"_s;
    QTest::newRow("Egyptian Arabic") << u"ar_EG.UTF-8"_s;
    QTest::newRow("Thai") << u"th_TH.UTF-8"_s;
}

void DiagnosticLoggerTest::theFileHasEuropeanDigitsInAnyLocale()
{
    QFETCH(QString, locale);
    const auto yearBefore = QDate::currentDate().year();
    run({u"i:a"_s}, path(u"state"_s), locale);
    const auto log = QString::fromUtf8(logIn(path(u"state"_s)));
    const QRegularExpression form(
        u"^\\[([0-9]{4})-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}\\] \\[INFO\\] a\n$"_s);
    const auto match = form.match(log);
    QVERIFY2(match.hasMatch(), qPrintable(log));
    const auto year = match.captured(1).toInt();
    QVERIFY(year >= yearBefore && year <= QDate::currentDate().year());
}

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    if (app.arguments().value(1) == "--log"_L1)
        return logInChild(app.arguments().sliced(2));
    DiagnosticLoggerTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "DiagnosticLoggerTest.moc"
