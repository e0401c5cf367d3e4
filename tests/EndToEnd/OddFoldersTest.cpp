#include "EndToEnd/ShippedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Platform/TrayOnScreen.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = ShippedKorvo::patience;
constexpr QColor panelGround(20, 20, 20);
constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

QString contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

/// The program as it is installed, where the folders of the session are not where they usually are.
class OddFoldersTest : public QObject {
    Q_OBJECT
private slots:
    void init();

    void foldersAreWhereTheSessionSays_data();
    void foldersAreWhereTheSessionSays();
    void foldersThatCannotBeUsedAreDoneWithout_data();
    void foldersThatCannotBeUsedAreDoneWithout();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    void useFolders(const QString &config, const QString &state, const QString &runtime);

    /// Whether its item is in the tray, opens the panel and ends the program.
    bool worksFromTheTray();

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ShippedKorvo> m_korvo;
};

void OddFoldersTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_korvo = std::make_unique<ShippedKorvo>();
}

void OddFoldersTest::useFolders(const QString &config, const QString &state, const QString &runtime)
{
    m_korvo->setVariable(u"XDG_CONFIG_HOME"_s, config);
    m_korvo->setVariable(u"XDG_STATE_HOME"_s, state);
    m_korvo->setVariable(u"XDG_RUNTIME_DIR"_s, runtime);
}

bool OddFoldersTest::worksFromTheTray()
{
    const auto isOpen = [] { return findOnScreen(panelGround).width() >= 340; };
    const auto hasEnded = [this] { return m_korvo->process().state() == QProcess::NotRunning; };
    return trayItemProperty(m_korvo->item(), u"Title"_s) == u"Korvo, No timer running"_s
        && clickTrayMenu(m_korvo->item(), u"Open"_s) && QTest::qWaitFor(isOpen, patience)
        && clickTrayMenu(m_korvo->item(), u"Quit"_s) && QTest::qWaitFor(hasEnded, patience)
        && m_korvo->process().exitStatus() == QProcess::NormalExit && m_korvo->process().exitCode() == 0;
}

void OddFoldersTest::foldersAreWhereTheSessionSays_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("with spaces") << u"a folder with  spaces "_s;
    QTest::newRow("with letters of other languages") << u"Übergrößen 設定 ملف"_s;
    QTest::newRow("with characters of shells and of addresses") << u"50% 'of' #1 & \"so\" $HOME;%20"_s;
    QTest::newRow("deep, and not there yet") << u"one/two/three/four"_s;
}

void OddFoldersTest::foldersAreWhereTheSessionSays()
{
    QFETCH(const QString, name);
    const auto config = path(name) + u"/config"_s;
    const auto state = path(name) + u"/state"_s;
    const auto runtime = path(name) + u"/run"_s;
    QVERIFY(QDir().mkpath(runtime) && QFile::setPermissions(runtime, ownerOnly));
    useFolders(config, state, runtime);
    m_korvo->setLogFolder(state);
    QVERIFY(m_korvo->start());
    QVERIFY(worksFromTheTray());
    QVERIFY(m_korvo->log().contains(u"[INFO] App terminating — applicationWillTerminate"_s));
    QVERIFY(!contentOf(config + u"/Korvo/defaults.json"_s).isEmpty());
}

void OddFoldersTest::foldersThatCannotBeUsedAreDoneWithout_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("hasLogAtHome"); // Else there is no place for it.
    QTest::newRow("empty") << QString() << true;
    QTest::newRow("relative ones, which don't count") << u"some/where"_s << true;
    QTest::newRow("read-only, even for root") << u"/proc/self"_s << false;
    QTest::newRow("a file instead of a folder") << u"/etc/passwd"_s << false;
    QTest::newRow("a device that is full") << u"/dev/full"_s << false;
}

void OddFoldersTest::foldersThatCannotBeUsedAreDoneWithout()
{
    QFETCH(const QString, folder);
    QFETCH(const bool, hasLogAtHome);
    useFolders(folder, folder, folder);
    if (!hasLogAtHome)
        m_korvo->setLogFolder({});
    QVERIFY(m_korvo->start());
    QVERIFY(worksFromTheTray());
    QVERIFY(!QFile::exists(QDir::current().filePath(folder + u"/Korvo"_s)));
}

QTEST_MAIN(OddFoldersTest)
#include "OddFoldersTest.moc"
