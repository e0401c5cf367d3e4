#include "Platform/Linux/AutostartLoginItem.h"

#include "Fakes/OutputOf.h"
#include "Fakes/TestSettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

using Status = LoginItem::Status;

Q_DECLARE_METATYPE(korvo::LoginItem::Status)

class AutostartLoginItemTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup()
    {
        m_folder.reset();
        qunsetenv("XDG_CURRENT_DESKTOP");
    }

    void registeringWritesTheEntry();
    void registeringTwiceChangesNothing();
    void registeringMakesTheFolders();
    void oddPathsOfTheProgram_data();
    void oddPathsOfTheProgram();
    void aPathWithALineFeedIsRefused();
    void theRunningProgramIsTheDefault();
    void theFolderIsTheUsersConfiguration_data();
    void theFolderIsTheUsersConfiguration();

    void withoutAnEntryItIsNotRegistered();
    void statusOfAnEntry_data();
    void statusOfAnEntry();
    void entriesMayBeForSomeDesktopsOnly_data();
    void entriesMayBeForSomeDesktopsOnly();
    void aMovedProgramIsNotFound();
    void aLinkToTheProgramIsTheProgram();
    void registeringMendsWhatKeepsItFromStarting_data();
    void registeringMendsWhatKeepsItFromStarting();
    void whatTheUserAddedStays();

    void unregisteringTakesTheEntryAway();
    void unregisteringNothingIsFine();
    void aLinkIsWrittenThrough_data();
    void aLinkIsWrittenThrough();
    void unregisteringLeavesWhatALinkLeadsTo();

    void aFolderThatTakesNoEntryIsAFailure_data();
    void aFolderThatTakesNoEntryIsAFailure();
    void anEntryThatIsALinkToItselfGivesWay();
    void theSettingOutlivesAFolderThatTakesNoEntry();
    void anEntryThatIsNoFileIsAFailure_data();
    void anEntryThatIsNoFileIsAFailure();
    void aFullDiskLeavesTheFormerEntry();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString entryPath() const { return path(u"config/autostart/com.korvo.app.desktop"_s); }
    QByteArray entry() const { return read(entryPath()); }
    void writeEntry(const QByteArray &text) const;
    AutostartLoginItem item() const { return AutostartLoginItem(path(u"config"_s), m_program); }
    /// A file that may be run, in a folder that is made for it.
    static bool makeProgram(const QString &path);
    static QByteArray read(const QString &path);
    static bool write(const QString &path, const QByteArray &text);

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_program;
};

bool AutostartLoginItemTest::write(const QString &path, const QByteArray &text)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

QByteArray AutostartLoginItemTest::read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "(unreadable)"_ba;
}

bool AutostartLoginItemTest::makeProgram(const QString &path)
{
    return write(path, "#!/bin/true\n"_ba) && QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
}

void AutostartLoginItemTest::writeEntry(const QByteArray &text) const
{
    QVERIFY(write(entryPath(), text));
}

void AutostartLoginItemTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_program = path(u"bin/korvo"_s);
    qunsetenv("XDG_CURRENT_DESKTOP");
    QVERIFY(makeProgram(m_program));
}

void AutostartLoginItemTest::registeringWritesTheEntry()
{
    QCOMPARE(item().registerItem(), std::nullopt);
    QCOMPARE(entry(),
             "[Desktop Entry]\nType=Application\nName=Korvo\nExec=" + m_program.toUtf8()
                 + "\nTryExec=" + m_program.toUtf8() + "\nIcon=com.korvo.app\nX-GNOME-Autostart-enabled=true\n");
    QVERIFY(item().status() == Status::enabled);
}

void AutostartLoginItemTest::registeringTwiceChangesNothing()
{
    QCOMPARE(item().registerItem(), std::nullopt);
    const auto first = entry();
    QCOMPARE(item().registerItem(), std::nullopt);
    QCOMPARE(entry(), first);
    const auto files
        = QDir(QFileInfo(entryPath()).path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    QCOMPARE(files, QStringList{u"com.korvo.app.desktop"_s}); // No half-written one is left.
}

void AutostartLoginItemTest::registeringMakesTheFolders()
{
    AutostartLoginItem deep(path(u"a/b/c"_s), m_program);
    QCOMPARE(deep.registerItem(), std::nullopt);
    QVERIFY(QFileInfo(path(u"a/b/c/autostart/com.korvo.app.desktop"_s)).isFile());
}

void AutostartLoginItemTest::oddPathsOfTheProgram_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QByteArray>("inFile");
    QTest::newRow("a blank") << u"my tools"_s << "my tools"_ba;
    QTest::newRow("a double quote") << u"a\"b"_s << R"(a\\"b)"_ba;
    QTest::newRow("a single quote") << u"a'b"_s << "a'b"_ba;
    QTest::newRow("a dollar sign") << u"$HOME"_s << R"(\\$HOME)"_ba;
    QTest::newRow("backticks") << u"`id`"_s << R"(\\`id\\`)"_ba;
    QTest::newRow("a backslash") << uR"(a\b)"_s << R"(a\\\\b)"_ba;
    QTest::newRow("a percent sign") << u"5 %f"_s << "5 %%f"_ba;
    QTest::newRow("other letters than Latin ones") << u"мой жук"_s << "мой жук"_ba;
}

void AutostartLoginItemTest::oddPathsOfTheProgram()
{
    QFETCH(QString, folder);
    QFETCH(QByteArray, inFile);
    m_program = path(folder + u"/korvo"_s);
    QVERIFY(makeProgram(m_program));
    QCOMPARE(item().registerItem(), std::nullopt);
    QVERIFY2(entry().contains("\nExec=\"" + m_folder->path().toUtf8() + '/' + inFile + "/korvo\"\n"), entry());
    QVERIFY(item().status() == Status::enabled);
}

void AutostartLoginItemTest::aPathWithALineFeedIsRefused()
{
    m_program = path(u"a\nb"_s);
    QVERIFY(makeProgram(m_program));
    QCOMPARE(item().registerItem(), m_program + u": An autostart entry cannot name a program of this path"_s);
    QVERIFY(!QFileInfo::exists(entryPath()));
}

void AutostartLoginItemTest::theRunningProgramIsTheDefault()
{
    AutostartLoginItem own(path(u"config"_s));
    QCOMPARE(own.registerItem(), std::nullopt);
    QVERIFY2(entry().contains(QFile::encodeName(QCoreApplication::applicationFilePath())), entry());
    QVERIFY(own.status() == Status::enabled);
}

void AutostartLoginItemTest::theFolderIsTheUsersConfiguration_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QString>("folder");
    QTest::newRow("as the variable says") << "/somewhere/else"_ba << u"/somewhere/else"_s;
    QTest::newRow("a relative path is ignored") << "somewhere"_ba << QDir::homePath() + u"/.config"_s;
    QTest::newRow("without the variable") << QByteArray() << QDir::homePath() + u"/.config"_s;
}

void AutostartLoginItemTest::theFolderIsTheUsersConfiguration()
{
    QFETCH(QByteArray, variable);
    const auto former = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", variable);
    const auto folder = AutostartLoginItem::defaultConfigFolder();
    qputenv("XDG_CONFIG_HOME", former);
    QTEST(folder, "folder");
}

void AutostartLoginItemTest::withoutAnEntryItIsNotRegistered()
{
    QVERIFY(item().status() == Status::notRegistered);
}

void AutostartLoginItemTest::statusOfAnEntry_data()
{
    QTest::addColumn<QByteArray>("text"); // %P stands for the program.
    QTest::addColumn<Status>("status");
    const auto plain = "[Desktop Entry]\nType=Application\nExec=%P\n"_ba;
    QTest::newRow("the least it needs") << plain << Status::enabled;
    QTest::newRow("with arguments") << "[Desktop Entry]\nType=Application\nExec=%P --quiet\n"_ba << Status::enabled;
    QTest::newRow("switched off by most desktops") << plain + "Hidden=true\n" << Status::disabled;
    QTest::newRow("not hidden") << plain + "Hidden=false\n" << Status::enabled;
    QTest::newRow("switched off by GNOME") << plain + "X-GNOME-Autostart-enabled=false\n" << Status::disabled;
    QTest::newRow("switched off by MATE") << plain + "X-MATE-Autostart-enabled=false\n" << Status::disabled;
    QTest::newRow("switched on by MATE") << plain + "X-MATE-Autostart-enabled=true\n" << Status::enabled;
    QTest::newRow("switched on by GNOME") << plain + "X-GNOME-Autostart-enabled=true\n" << Status::enabled;
    QTest::newRow("hidden in another group") << plain + "[Other]\nHidden=true\n" << Status::enabled;
    QTest::newRow("with a check that finds the program") << plain + "TryExec=%P\n" << Status::enabled;
    QTest::newRow("with a check that fails") << plain + "TryExec=/nonexistent/korvo\n" << Status::notFound;
    QTest::newRow("of another program") << "[Desktop Entry]\nType=Application\nExec=/bin/sh\n"_ba << Status::notFound;
    QTest::newRow("of a program that is gone")
        << "[Desktop Entry]\nType=Application\nExec=/nonexistent/korvo\n"_ba << Status::notFound;
    QTest::newRow("of no program") << "[Desktop Entry]\nType=Application\n"_ba << Status::notFound;
    QTest::newRow("of another type") << "[Desktop Entry]\nType=Link\nExec=%P\n"_ba << Status::notFound;
    QTest::newRow("an empty file") << QByteArray() << Status::notFound;
    QTest::newRow("no entry at all") << "\xff\xfe no text"_ba << Status::notFound;
    QTest::newRow("far too large") << plain + '#' + QByteArray(1024 * 1024, 'x') << Status::notFound;
}

void AutostartLoginItemTest::statusOfAnEntry()
{
    QFETCH(QByteArray, text);
    QFETCH(Status, status);
    writeEntry(text.replace("%P", m_program.toUtf8()));
    QCOMPARE(int(item().status()), int(status));
}

void AutostartLoginItemTest::entriesMayBeForSomeDesktopsOnly_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QByteArray>("desktop");
    QTest::addColumn<bool>("isEnabled");
    QTest::addColumn<QByteArray>("keysAfterwards"); // Once it has been registered.
    const auto row = [](const char *name, const QByteArray &keys, const QByteArray &desktop, bool isEnabled,
                        const QByteArray &keysAfterwards) {
        QTest::newRow(name) << keys << desktop << isEnabled << keysAfterwards;
    };
    const auto only = "OnlyShowIn=MATE;XFCE;\n"_ba;
    const auto never = "NotShowIn=KDE;GNOME;\n"_ba;
    row("for this one", only, "XFCE", true, only);
    row("for this one, without a last semicolon", "OnlyShowIn=XFCE\n", "XFCE", true, "OnlyShowIn=XFCE\n");
    row("for others", only, "KDE", false, {});
    row("for one of its further names", only, "X-Mine:MATE", true, only);
    row("for this one in other capitals", only, "xfce", false, {});
    row("for others, where the desktop has no name", only, {}, false, {});
    row("for others, where the name is empty", only, ":", false, {});
    row("for none", "OnlyShowIn=\n", "XFCE", false, {});
    row("not for this one", never, "GNOME", false, {});
    row("not for one of its further names", never, "ubuntu:GNOME", false, {});
    row("not for others", never, "XFCE", true, never);
    row("not for this one in other capitals", never, "gnome", true, never);
    row("not for others, where the desktop has no name", never, {}, true, never);
    row("only for its first name, but not for its second", only + "NotShowIn=GNOME;\n", "MATE:GNOME", true,
        only + "NotShowIn=GNOME;\n");
    row("not for its first name, but for its second", only + "NotShowIn=GNOME;\n", "GNOME:MATE", false, only);
    row("for others and not for this one", only + never, "GNOME", false, {});
}

void AutostartLoginItemTest::entriesMayBeForSomeDesktopsOnly()
{
    QFETCH(QByteArray, keys);
    QFETCH(QByteArray, desktop);
    QFETCH(bool, isEnabled);
    QFETCH(QByteArray, keysAfterwards);
    if (!desktop.isEmpty())
        qputenv("XDG_CURRENT_DESKTOP", desktop);
    const auto start = "[Desktop Entry]\nType=Application\nName=Korvo\nExec=" + m_program.toUtf8()
        + "\nTryExec=" + m_program.toUtf8() + "\nIcon=com.korvo.app\nX-GNOME-Autostart-enabled=true\n";
    writeEntry(start + keys);
    QCOMPARE(int(item().status()), int(isEnabled ? Status::enabled : Status::disabled));
    QCOMPARE(item().registerItem(), std::nullopt);
    QCOMPARE(entry(), start + keysAfterwards);
    QVERIFY(item().status() == Status::enabled);
}

void AutostartLoginItemTest::aMovedProgramIsNotFound()
{
    QCOMPARE(item().registerItem(), std::nullopt);
    const auto former = m_program;
    m_program = path(u"moved/korvo"_s);
    QVERIFY(QDir().mkpath(path(u"moved"_s)) && QFile::rename(former, m_program));
    QVERIFY(item().status() == Status::notFound);
    QCOMPARE(item().registerItem(), std::nullopt);
    QVERIFY(item().status() == Status::enabled);
}

void AutostartLoginItemTest::aLinkToTheProgramIsTheProgram()
{
    const auto link = path(u"link"_s);
    QVERIFY(QFile::link(m_program, link));
    AutostartLoginItem linked(path(u"config"_s), link);
    QCOMPARE(linked.registerItem(), std::nullopt);
    QVERIFY(item().status() == Status::enabled);
}

void AutostartLoginItemTest::registeringMendsWhatKeepsItFromStarting_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("hidden") << "[Desktop Entry]\nHidden=true\n"_ba;
    QTest::newRow("switched off by MATE") << "[Desktop Entry]\nX-MATE-Autostart-enabled=false\n"_ba;
    QTest::newRow("for another desktop only") << "[Desktop Entry]\nOnlyShowIn=Other;\n"_ba;
    QTest::newRow("switched off by GNOME") << "[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n"_ba;
    QTest::newRow("a check that fails") << "[Desktop Entry]\nTryExec=/nonexistent/korvo\n"_ba;
    QTest::newRow("another program") << "[Desktop Entry]\nExec=/bin/sh\n"_ba;
    QTest::newRow("another type") << "[Desktop Entry]\nType=Link\n"_ba;
    QTest::newRow("no entry at all") << "\xff\xfe no text"_ba;
    QTest::newRow("an empty file") << QByteArray();
}

void AutostartLoginItemTest::registeringMendsWhatKeepsItFromStarting()
{
    QFETCH(QByteArray, text);
    writeEntry(text);
    QVERIFY(item().status() != Status::enabled);
    QCOMPARE(item().registerItem(), std::nullopt);
    QVERIFY(item().status() == Status::enabled);
}

void AutostartLoginItemTest::whatTheUserAddedStays()
{
    qputenv("XDG_CURRENT_DESKTOP", "MATE");
    writeEntry("# Mine\n[Desktop Entry]\nType=Application\nName=Time\nName[de]=Zeit\nExec=/old/korvo\n"
               "X-GNOME-Autostart-Delay=10\nOnlyShowIn=MATE;\n\n[Desktop Action new]\nExec=new\n"_ba);
    QCOMPARE(item().registerItem(), std::nullopt);
    QCOMPARE(entry(),
             "# Mine\n[Desktop Entry]\nType=Application\nName=Korvo\nName[de]=Zeit\nExec=" + m_program.toUtf8()
                 + "\nX-GNOME-Autostart-Delay=10\nOnlyShowIn=MATE;\nTryExec=" + m_program.toUtf8()
                 + "\nIcon=com.korvo.app\n"
                   "X-GNOME-Autostart-enabled=true\n\n[Desktop Action new]\nExec=new\n");
}

void AutostartLoginItemTest::unregisteringTakesTheEntryAway()
{
    QCOMPARE(item().registerItem(), std::nullopt);
    QCOMPARE(item().unregisterItem(), std::nullopt);
    QVERIFY(!QFileInfo::exists(entryPath()));
    QVERIFY(item().status() == Status::notRegistered);
}

void AutostartLoginItemTest::unregisteringNothingIsFine()
{
    QCOMPARE(item().unregisterItem(), std::nullopt);
    QVERIFY(!QFileInfo::exists(path(u"config"_s)));
}

void AutostartLoginItemTest::aLinkIsWrittenThrough_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("isThere");
    QTest::newRow("an absolute link") << u"%1/dotfiles/entry"_s << true; // %1 is the folder of the test.
    QTest::newRow("a relative link") << u"../../dotfiles/entry"_s << true;
    QTest::newRow("a link to a file that is still to come") << u"../../dotfiles/entry"_s << false;
}

void AutostartLoginItemTest::aLinkIsWrittenThrough()
{
    QFETCH(QString, target);
    QFETCH(bool, isThere);
    const auto real = path(u"dotfiles/entry"_s);
    QVERIFY(write(real, "[Desktop Entry]\nX-Mine=1\n"_ba));
    if (!isThere)
        QVERIFY(QFile::remove(real));
    QVERIFY(QDir().mkpath(QFileInfo(entryPath()).path()));
    QVERIFY(QFile::link(target.replace(u"%1"_s, m_folder->path()), entryPath()));
    QCOMPARE(item().registerItem(), std::nullopt);
    QVERIFY(QFileInfo(entryPath()).isSymLink());
    QVERIFY(!QFileInfo(real).isSymLink());
    QVERIFY(read(real).contains("Exec=" + m_program.toUtf8()));
    QCOMPARE(read(real).contains("X-Mine=1"), isThere);
    QVERIFY(item().status() == Status::enabled);
}

void AutostartLoginItemTest::unregisteringLeavesWhatALinkLeadsTo()
{
    const auto real = path(u"dotfiles/entry"_s);
    QVERIFY(write(real, "[Desktop Entry]\n"_ba));
    QVERIFY(QDir().mkpath(QFileInfo(entryPath()).path()));
    QVERIFY(QFile::link(real, entryPath()));
    QCOMPARE(item().unregisterItem(), std::nullopt);
    QVERIFY(!QFileInfo(entryPath()).isSymLink());
    QCOMPARE(read(real), "[Desktop Entry]\n"_ba);
}

void AutostartLoginItemTest::aFolderThatTakesNoEntryIsAFailure_data()
{
    // What stands in the way, under the folder of the test: a file if `target` is empty, else a link that leads there.
    QTest::addColumn<QString>("obstacle");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("failedPath"); // Of what the failure tells.
    QTest::addColumn<QString>("reason");     // Empty if it is in the system's words.
    const auto cannotBeMade = u"The folder cannot be made"_s;
    const auto config = u"config"_s;
    const auto autostart = u"config/autostart"_s;
    const auto entry = u"config/autostart/com.korvo.app.desktop"_s;
    const auto row = [](const char *name, const QString &obstacle, const QString &target, const QString &failedPath,
                        const QString &reason) { QTest::newRow(name) << obstacle << target << failedPath << reason; };
    // Nobody makes a file in /proc, not even root, whom no permission holds back.
    row("the configuration folder is a file", config, {}, autostart, cannotBeMade);
    row("the configuration folder is a link that leads nowhere", config, u"nowhere"_s, autostart, cannotBeMade);
    row("the configuration folder takes no folder", config, u"/proc/self"_s, autostart, cannotBeMade);
    row("the autostart folder is a file", autostart, {}, autostart, cannotBeMade);
    row("the autostart folder is a link that leads nowhere", autostart, u"nowhere"_s, autostart, cannotBeMade);
    row("the autostart folder is a link to itself", autostart, u"autostart"_s, autostart, cannotBeMade);
    row("the autostart folder takes no file", autostart, u"/proc/self"_s, entry, {});
    row("the entry is a link into a folder that is missing", entry, u"../../missing/entry"_s, entry, {});
    row("the entry is a link into a folder that takes no file", entry, u"/proc/self/entry"_s, entry, {});
}

void AutostartLoginItemTest::aFolderThatTakesNoEntryIsAFailure()
{
    QFETCH(QString, obstacle);
    QFETCH(QString, target);
    QFETCH(QString, failedPath);
    QFETCH(QString, reason);
    const auto text = "A file in the place of the folder"_ba;
    QVERIFY(QDir().mkpath(QFileInfo(path(obstacle)).path()));
    QVERIFY(target.isEmpty() ? write(path(obstacle), text) : QFile::link(target, path(obstacle)));
    const bool isEntry = path(obstacle) == entryPath();
    const auto status = isEntry ? Status::notFound : Status::notRegistered;
    QVERIFY(item().status() == status);
    for (int i = 0; i < 2; ++i) { // The first attempt leaves nothing behind that would make the second another.
        const auto failure = item().registerItem();
        QVERIFY(failure);
        QVERIFY2(failure->startsWith(path(failedPath) + u": "_s), qPrintable(*failure));
        if (reason.isEmpty())
            QVERIFY2(failure->size() > path(failedPath).size() + 2, qPrintable(*failure));
        else
            QCOMPARE(*failure, path(failedPath) + u": "_s + reason);
        QVERIFY(item().status() == status);
    }
    if (target.isEmpty())
        QCOMPARE(read(path(obstacle)), text);
    else
        QVERIFY(QFileInfo(path(obstacle)).isSymLink());
    QCOMPARE(item().unregisterItem(), std::nullopt); // Of the entry the link itself is taken away.
    QVERIFY(item().status() == Status::notRegistered);
    QCOMPARE(QFileInfo(path(obstacle)).isSymLink(), !target.isEmpty() && !isEntry);
}

void AutostartLoginItemTest::anEntryThatIsALinkToItselfGivesWay()
{
    QVERIFY(QDir().mkpath(QFileInfo(entryPath()).path()));
    QVERIFY(QFile::link(u"com.korvo.app.desktop"_s, entryPath()));
    QVERIFY(item().status() == Status::notFound);
    QCOMPARE(item().registerItem(), std::nullopt);
    QVERIFY(!QFileInfo(entryPath()).isSymLink());
    QVERIFY(item().status() == Status::enabled);
}

/// The setting stays as the user chose it, and the words go to the standard output.
void AutostartLoginItemTest::theSettingOutlivesAFolderThatTakesNoEntry()
{
    QVERIFY(write(path(u"config/autostart"_s), {}));
    auto broken = item();
    LoginItem::setShared(&broken);
    TestSettings test;
    const auto output = outputOf([&test] { test.settings.setLaunchAtLogin(true); });
    LoginItem::setShared(nullptr);
    QCOMPARE(output,
             "Launch at login error: " + path(u"config/autostart"_s).toUtf8() + ": The folder cannot be made\n");
    QVERIFY(test.settings.launchAtLogin());
    QVERIFY(TestSettings(test.defaults.values).settings.launchAtLogin()); // After a restart.
}

void AutostartLoginItemTest::anEntryThatIsNoFileIsAFailure_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::newRow("a folder") << true;
    QTest::newRow("a link to a device") << false;
}

void AutostartLoginItemTest::anEntryThatIsNoFileIsAFailure()
{
    QFETCH(bool, isFolder);
    QVERIFY(QDir().mkpath(isFolder ? entryPath() : QFileInfo(entryPath()).path()));
    if (!isFolder)
        QVERIFY(QFile::link(u"/dev/null"_s, entryPath()));
    QCOMPARE(item().registerItem(), entryPath() + u": There is something that is no autostart entry"_s);
    QVERIFY(item().status() == Status::notFound);
    const auto failure = item().unregisterItem();
    QCOMPARE(failure.has_value(), isFolder);
    if (isFolder)
        QVERIFY(failure->startsWith(entryPath() + u": "_s));
}

void AutostartLoginItemTest::aFullDiskLeavesTheFormerEntry()
{
    const auto former = "[Desktop Entry]\nX-Mine=1\n"_ba;
    writeEntry(former);
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight = {10, limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &tight);
    const auto failure = item().registerItem();
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, formerHandler);
    QVERIFY(failure);
    QVERIFY2(failure->startsWith(entryPath() + u": "_s), qPrintable(*failure));
    QCOMPARE(entry(), former);
}

QTEST_GUILESS_MAIN(AutostartLoginItemTest)
#include "AutostartLoginItemTest.moc"
