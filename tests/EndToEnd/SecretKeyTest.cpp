#include "EndToEnd/AttachedKorvo.h"
#include "EndToEnd/TrayLookUp.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <memory>
#include <signal.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = AttachedKorvo::patience;

/// All that is said on the session's bus, as text.
class BusRecord {
public:
    BusRecord()
    {
        m_monitor.setProcessChannelMode(QProcess::MergedChannels);
        m_monitor.start(u"dbus-monitor"_s, {});
    }
    ~BusRecord()
    {
        m_monitor.kill();
        m_monitor.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(BusRecord)

    QByteArray text()
    {
        m_monitor.waitForReadyRead(0);
        m_text += m_monitor.readAll();
        return m_text;
    }

private:
    QProcess m_monitor;
    QByteArray m_text;
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// The key to the user's workspace stands in the file of the settings and in requests, and nowhere else.
class SecretKeyTest : public QObject {
    Q_OBJECT
private slots:
    void theKeyIsInNothingThatOthersSee_data();
    void theKeyIsInNothingThatOthersSee();
    void onlyItsUserCanReadWhatIsKept();
};

void SecretKeyTest::theKeyIsInNothingThatOthersSee_data()
{
    QTest::addColumn<QJsonObject>("fault");
    QTest::addColumn<QString>("told"); // In the tool tip, when all of it has happened.
    QTest::newRow("while all is well") << QJsonObject() << u"Home page layout"_s;
    QTest::newRow("when the API refuses it")
        << QJsonObject{{u"kind"_s, u"html"_s}, {u"status"_s, 401}, {u"times"_s, -1}, {u"path"_s, u"/v1"_s}}
        << u"Invalid API key"_s;
    QTest::newRow("when the API fails") << QJsonObject{{u"kind"_s, u"html"_s},
                                                       {u"status"_s, 403},
                                                       {u"times"_s, -1},
                                                       {u"path"_s, u"/v1"_s}}
                                        << u"Server error 403"_s;
}

void SecretKeyTest::theKeyIsInNothingThatOthersSee()
{
    QFETCH(const QJsonObject, fault);
    QFETCH(const QString, told);
    AttachedKorvo world;
    BusRecord bus;
    QTRY_VERIFY_WITH_TIMEOUT(!bus.text().isEmpty(), patience);
    QVERIFY(world.startWorkspace());
    const auto key = world.workspace()["apiKey"_L1].toString().toUtf8();
    QVERIFY(key.size() > 8);
    if (!fault.isEmpty()) {
        world.control("POST", u"stop-timers"_s);
        world.control("POST", u"faults"_s, fault);
    }
    QVERIFY(world.startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(world.property(u"Title"_s).contains(told), patience);
    QTRY_VERIFY_WITH_TIMEOUT(bus.text().contains("StatusNotifierItem"), patience);

    const auto process = u"/proc/%1/"_s.arg(world.process().processId());
    QVERIFY(!contentOf(process + u"cmdline"_s).contains(key));
    QVERIFY(!contentOf(process + u"comm"_s).contains(key));
    QVERIFY(!contentOf(process + u"environ"_s).contains(key));
    QCOMPARE(::kill(pid_t(world.process().processId()), SIGABRT), 0); // It tells of what could be a crash.
    QTRY_VERIFY_WITH_TIMEOUT(world.log().contains(u"Received signal 6"_s), patience);
    QVERIFY(!world.log().toUtf8().contains(key));
    QVERIFY(!world.process().readAllStandardError().contains(key));
    QVERIFY(!bus.text().contains(key));
}

void SecretKeyTest::onlyItsUserCanReadWhatIsKept()
{
    AttachedKorvo world;
    QVERIFY(world.startWorkspace());
    QVERIFY(world.startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(world.seconds() > 0, patience);
    int files = 0;
    QDirIterator found(world.filePath(QString()), {u"korvo.log"_s, u"defaults.json*"_s}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (found.hasNext()) {
        const QFileInfo file(found.next());
        const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QVERIFY2((file.permissions() & others) == 0, qPrintable(file.filePath()));
        ++files;
    }
    QVERIFY(files > 0);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    SecretKeyTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "SecretKeyTest.moc"
