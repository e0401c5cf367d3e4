#include "EndToEnd/ShippedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Platform/TrayOnScreen.h"

#include <QFile>
#include <QProcess>
#include <QTest>

#include <filesystem>
#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = ShippedKorvo::patience;

/// The sockets of the Internet that a process has, by the kernel's numbers for them.
QStringList internetSockets(qint64 pid)
{
    QStringList known;
    for (const auto &table : {u"tcp"_s, u"tcp6"_s, u"udp"_s, u"udp6"_s}) {
        QFile file(u"/proc/%1/net/%2"_s.arg(pid).arg(table));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const auto lines = QString::fromLatin1(file.readAll()).split(u'\n').mid(1);
        for (const auto &line : lines)
            known.append(line.simplified().section(u' ', 9, 9));
    }
    QStringList sockets;
    for (const auto &descriptor : std::filesystem::directory_iterator(u"/proc/%1/fd"_s.arg(pid).toStdString())) {
        std::error_code hasGone;
        const auto target = QString::fromStdString(std::filesystem::read_symlink(descriptor.path(), hasGone).string());
        if (target.startsWith(u"socket:["_s) && known.contains(target.sliced(8).chopped(1)))
            sockets.append(target);
    }
    return sockets;
}

} // namespace

/// Korvo as a user first has it: in a real tray, with a home folder in which there is nothing.
class UnconfiguredTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { QVERIFY(m_korvo->end()); }

    void theItemSaysThatNoTimerIsRunning();
    void launchIsLoggedInOrderAndNothingIsPolled();
    void quitFromTheMenuEndsWithStatusZero();
    void aSecondStartOpensThePanelOfTheFirstOneAndLeaves();

private:
    std::unique_ptr<ShippedKorvo> m_korvo;
};

void UnconfiguredTest::init()
{
    m_korvo = std::make_unique<ShippedKorvo>();
    QVERIFY(m_korvo->start());
}

void UnconfiguredTest::theItemSaysThatNoTimerIsRunning()
{
    QCOMPARE(trayItemProperty(m_korvo->item(), u"Title"_s), u"Korvo, No timer running"_s);
    QCOMPARE(trayItemProperty(m_korvo->item(), u"XAyatanaLabel"_s), QString());
}

void UnconfiguredTest::launchIsLoggedInOrderAndNothingIsPolled()
{
    const auto messages = m_korvo->log();
    const auto launched = messages.indexOf(u"[INFO] App launched — applicationDidFinishLaunching"_s);
    const auto created = messages.indexOf(u"[INFO] Status item created"_s);
    const auto complete = messages.indexOf(u"[INFO] App launch complete"_s);
    QCOMPARE(launched, 0);
    QVERIFY(launched < created && created < complete);
    QVERIFY(messages.filter(u"Poll"_s).isEmpty());
    QCOMPARE(internetSockets(m_korvo->process().processId()), QStringList());
}

void UnconfiguredTest::quitFromTheMenuEndsWithStatusZero()
{
    QVERIFY(clickTrayMenu(m_korvo->item(), u"Quit"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_korvo->process().state(), QProcess::NotRunning, patience);
    QCOMPARE(m_korvo->process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_korvo->process().exitCode(), 0);
    const auto messages = m_korvo->log();
    QVERIFY(messages.contains(u"[INFO] App terminating — applicationWillTerminate"_s));
    QVERIFY(!messages.contains(u"[INFO] Polling started"_s));
    QVERIFY(messages.filter(u"[ERROR]"_s).isEmpty());
}

void UnconfiguredTest::aSecondStartOpensThePanelOfTheFirstOneAndLeaves()
{
    const QColor panelGround(20, 20, 20);
    QVERIFY(findOnScreen(panelGround).width() < 300);
    QProcess second;
    second.setProcessEnvironment(m_korvo->environment());
    second.start(qEnvironmentVariable("KORVO"), QStringList());
    QTRY_COMPARE_WITH_TIMEOUT(second.state(), QProcess::NotRunning, patience);
    QCOMPARE(second.exitStatus(), QProcess::NormalExit);
    QCOMPARE(second.exitCode(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(findOnScreen(panelGround).width() >= 300, patience);
    QCOMPARE(m_korvo->process().state(), QProcess::Running);
    QCOMPARE(m_korvo->log().count(u"[INFO] App launch complete"_s), 1);
}

QTEST_MAIN(UnconfiguredTest)
#include "UnconfiguredTest.moc"
