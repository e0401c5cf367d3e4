#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;

/// The program korvo-sandbox, whose path the build gives.
class SandboxProgramTest : public QObject {
    Q_OBJECT
private slots:
    void itTellsWhereItServesAndEndsWhenAsked();
    void itExplainsItself();
    void aWrongPortIsRefused();
};

void SandboxProgramTest::itTellsWhereItServesAndEndsWhenAsked()
{
    QProcess process;
    process.start(QStringLiteral(KORVO_SANDBOX_PROGRAM), {u"--key"_s, u"secret"_s});
    QTRY_VERIFY(process.canReadLine());
    const QJsonObject info = QJsonDocument::fromJson(process.readLine()).object();
    QCOMPARE(info.value(u"apiKey"_s), u"secret"_s);
    QVERIFY(QFile::exists(info.value(u"caFile"_s).toString()));
    QCOMPARE(info[u"fieldMapping"_s].toObject().size(), 14);
    for (const QString &key : {u"timeTrackerDBId"_s, u"tasksDBId"_s, u"projectsDBId"_s, u"clientsDBId"_s})
        QCOMPARE(info.value(key).toString().size(), 36);
    QTcpSocket socket;
    socket.connectToHost(u"127.0.0.1"_s, static_cast<quint16>(info.value(u"port"_s).toInt()));
    QTRY_COMPARE(socket.state(), QAbstractSocket::ConnectedState);
    process.terminate();
    QTRY_COMPARE(process.state(), QProcess::NotRunning);
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(!QFile::exists(info.value(u"caFile"_s).toString()));
}

void SandboxProgramTest::itExplainsItself()
{
    QProcess process;
    process.start(QStringLiteral(KORVO_SANDBOX_PROGRAM), {u"--help"_s});
    QTRY_COMPARE(process.state(), QProcess::NotRunning);
    const QByteArray text = process.readAllStandardOutput();
    QVERIFY(text.contains("--port"));
    QVERIFY(text.contains("POST   /sandbox/faults"));
    QVERIFY(text.contains("close-without-answer"));
}

void SandboxProgramTest::aWrongPortIsRefused()
{
    QProcess process;
    process.start(QStringLiteral(KORVO_SANDBOX_PROGRAM), {u"--port"_s, u"70000"_s});
    QTRY_COMPARE(process.state(), QProcess::NotRunning);
    QCOMPARE(process.exitCode(), 2);
    QVERIFY(!process.readAllStandardError().isEmpty());
}

QTEST_GUILESS_MAIN(SandboxProgramTest)
#include "SandboxProgramTest.moc"
