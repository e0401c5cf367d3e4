#include "Utilities/LogFile.h"

#include "Fakes/LocalZone.h"

#include <QDir>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QDateTime morning(QDate(2024, 5, 1), QTime(9, 30, 12, 345));

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "no such file"_ba;
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

int modeOf(const QString &path)
{
    struct stat status;
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? int(status.st_mode & 07777) : -1;
}

/// Lines of 100 bytes each, numbered from 0, `size` bytes in all.
QByteArray numberedLines(qint64 size)
{
    QByteArray text;
    for (int line = 0; text.size() < size; ++line)
        text += QByteArray::number(line).leftJustified(99, '.') + '\n';
    text.truncate(size);
    text.back() = '\n';
    return text;
}

/// Without the rights of the administrator, who may write anywhere, for as long as it lives.
class OrdinaryUser {
public:
    OrdinaryUser() : m_before(::geteuid())
    {
        if (m_before == 0)
            m_isGood = ::seteuid(65534) == 0;
    }
    ~OrdinaryUser() { m_isGood = ::seteuid(m_before) == 0; }
    Q_DISABLE_COPY_MOVE(OrdinaryUser)

    bool isGood() const { return m_isGood; }

private:
    const uid_t m_before;
    bool m_isGood = true;
};

} // namespace

class LogFileTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void theFirstMessageMakesFolderAndFileForTheUserAlone();
    void theSecondMessageIsAppended();
    void aNewRunAppendsToWhatTheLastOneLeft();
    void aFolderThatIsThereKeepsItsMode();
    void nonAsciiTextIsWrittenAsUtf8();
    void aLineFeedIsWrittenAsItIs();
    void theTimeIsOfTheLocalZone();
    void theTimeHasEuropeanDigitsInAnyLocale_data();
    void theTimeHasEuropeanDigitsInAnyLocale();
    void theTimeIsThePresentOne();

    void aFileOfTheGreatestSizeIsNotCut();
    void oneByteMoreIsCutToTheLaterHalfOfItsLines();
    void fourLinesAreFivePiecesOfWhichTheLastTwoStay();
    void aFileWithoutALineFeedAtItsEndIsCutByCount();
    void aFileThatIsNotUtf8IsNeverCut();
    void aFileOfOneLongLineIsLeftEmpty();
    void theSizeDoesNotMatterForTheFirstLine();
    void manyLinesKeepTheFileBetweenHalfAndAll();
    void aCutFileIsForTheUserAlone();
    void aCutLeavesNothingElseInTheFolder();
    void aLinkStaysALinkWhenItsFileIsCut();
    void aFileThatCannotBeCutStaysAsItWas();

    void aFolderThatCannotBeMadeLosesTheLine();
    void aReadOnlyFolderLosesTheLine();
    void aReadOnlyFileLosesTheLineAndKeepsWhatItHolds();
    void aVanishedFolderLosesTheLine();
    void aVanishedFileIsMadeAgain();
    void aFolderInPlaceOfTheFileLosesTheLine();
    void aPipeInPlaceOfTheFileDoesNotBlock();
    void aPipeWithAReaderGetsNothing();
    void aDeviceInPlaceOfTheFileGetsNothing();
    void aFullDiskLosesTheWholeLine();
    void aFullDiskLosesTheWholeFirstLine();

    void standardPathFollowsTheStateFolder_data();
    void standardPathFollowsTheStateFolder();

private:
    QStringList namesInFolder() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

void LogFileTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_path = m_folder->filePath(u"korvo.log"_s);
}

void LogFileTest::cleanup()
{
    ::chmod(QFile::encodeName(m_folder->path()).constData(), 0700);
    m_folder.reset();
}

QStringList LogFileTest::namesInFolder() const
{
    return QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

void LogFileTest::theFirstMessageMakesFolderAndFileForTheUserAlone()
{
    const auto state = m_folder->filePath(u"state"_s);
    const auto path = state + u"/Korvo/korvo.log"_s;
    const auto umaskBefore = ::umask(0);
    LogFile file(path);
    QVERIFY(!QFile::exists(path));
    file.append(u"INFO"_s, u"Polling started"_s, morning);
    ::umask(umaskBefore);

    QCOMPARE(contentOf(path), "[2024-05-01 09:30:12.345] [INFO] Polling started\n"_ba);
    QCOMPARE(modeOf(state), 0700);
    QCOMPARE(modeOf(state + u"/Korvo"_s), 0700);
    QCOMPARE(modeOf(path), 0600);
}

void LogFileTest::theSecondMessageIsAppended()
{
    LogFile file(m_path);
    file.append(u"INFO"_s, u"a"_s, morning);
    file.append(u"FAULT"_s, u"b"_s, morning.addMSecs(655));
    QCOMPARE(contentOf(m_path), "[2024-05-01 09:30:12.345] [INFO] a\n[2024-05-01 09:30:13.000] [FAULT] b\n"_ba);
}

void LogFileTest::aNewRunAppendsToWhatTheLastOneLeft()
{
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    LogFile(m_path).append(u"INFO"_s, u"b"_s, morning);
    QCOMPARE(contentOf(m_path).count('\n'), 2);
}

void LogFileTest::aFolderThatIsThereKeepsItsMode()
{
    QCOMPARE(::chmod(QFile::encodeName(m_folder->path()).constData(), 0750), 0);
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    QCOMPARE(modeOf(m_folder->path()), 0750);
}

void LogFileTest::nonAsciiTextIsWrittenAsUtf8()
{
    LogFile(m_path).append(u"INFO"_s, u"Größe — 日本 😀"_s, morning);
    QCOMPARE(contentOf(m_path),
             "[2024-05-01 09:30:12.345] [INFO] Gr\xC3\xB6\xC3\x9F"
             "e \xE2\x80\x94 \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80\n"_ba);
}

void LogFileTest::aLineFeedIsWrittenAsItIs()
{
    LogFile(m_path).append(u"FAULT"_s, u"Stack trace: 0 main\n1 start"_s, morning);
    QCOMPARE(contentOf(m_path), "[2024-05-01 09:30:12.345] [FAULT] Stack trace: 0 main\n1 start\n"_ba);
}

void LogFileTest::theTimeIsOfTheLocalZone()
{
    const LocalZone zone("Asia/Tokyo");
    LogFile(m_path).append(u"INFO"_s, u"a"_s, QDateTime(QDate(2024, 4, 30), QTime(20, 0), Qt::UTC));
    QCOMPARE(contentOf(m_path), "[2024-05-01 05:00:00.000] [INFO] a\n"_ba);
}

void LogFileTest::theTimeHasEuropeanDigitsInAnyLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::newRow("Persian") << u"fa_IR"_s;
    QTest::newRow("Egyptian Arabic") << u"ar_EG"_s;
}

void LogFileTest::theTimeHasEuropeanDigitsInAnyLocale()
{
    QFETCH(QString, locale);
    const QLocale before;
    QLocale::setDefault(QLocale(locale));
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    QLocale::setDefault(before);
    QCOMPARE(contentOf(m_path), "[2024-05-01 09:30:12.345] [INFO] a\n"_ba);
}

void LogFileTest::theTimeIsThePresentOne()
{
    const auto before = QDateTime::currentDateTime();
    LogFile(m_path).append(u"INFO"_s, u"a"_s);
    const auto after = QDateTime::currentDateTime();
    const auto text = QString::fromUtf8(contentOf(m_path).mid(1, 23));
    const auto written = QDateTime::fromString(text, u"yyyy-MM-dd HH:mm:ss.zzz"_s);
    QVERIFY2(before <= written && written <= after, qPrintable(text));
}

void LogFileTest::aFileOfTheGreatestSizeIsNotCut()
{
    const QByteArray line = "[2024-05-01 09:30:12.345] [INFO] a\n"_ba;
    const auto before = numberedLines(LogFile::maxSize - line.size());
    writeFile(m_path, before);
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    QCOMPARE(contentOf(m_path).size(), 1048576);
    QCOMPARE(contentOf(m_path), before + line);
}

void LogFileTest::oneByteMoreIsCutToTheLaterHalfOfItsLines()
{
    const QByteArray line = "[2024-05-01 09:30:12.345] [INFO] a\n"_ba;
    const auto before = numberedLines(LogFile::maxSize - line.size() + 1);
    writeFile(m_path, before);
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);

    auto pieces = (before + line).split('\n');
    pieces = pieces.sliced(pieces.size() - pieces.size() / 2);
    QCOMPARE(contentOf(m_path), pieces.join('\n'));
    QVERIFY(contentOf(m_path).endsWith(line));
}

void LogFileTest::fourLinesAreFivePiecesOfWhichTheLastTwoStay()
{
    // The fourth line makes the file too large. It stays, with the empty piece behind its line feed.
    writeFile(m_path, "a\nb\nc\n"_ba);
    const QString longText(LogFile::maxSize, u'd');
    LogFile(m_path).append(u"INFO"_s, longText, morning);
    QCOMPARE(contentOf(m_path), "[2024-05-01 09:30:12.345] [INFO] "_ba + longText.toUtf8() + '\n');
}

void LogFileTest::aFileWithoutALineFeedAtItsEndIsCutByCount()
{
    const QByteArray longText(LogFile::maxSize, 'd');
    writeFile(m_path, "a\nb\n" + longText); // The new line goes on where this one stops.
    LogFile(m_path).append(u"INFO"_s, u"e"_s, morning);
    QCOMPARE(contentOf(m_path), longText + "[2024-05-01 09:30:12.345] [INFO] e\n"_ba);
}

void LogFileTest::aFileThatIsNotUtf8IsNeverCut()
{
    const auto before = "\xC3\n"_ba + numberedLines(LogFile::maxSize);
    writeFile(m_path, before);
    LogFile file(m_path);
    file.append(u"INFO"_s, u"a"_s, morning);
    file.append(u"INFO"_s, u"b"_s, morning);
    QCOMPARE(contentOf(m_path), before + "[2024-05-01 09:30:12.345] [INFO] a\n[2024-05-01 09:30:12.345] [INFO] b\n"_ba);
}

void LogFileTest::aFileOfOneLongLineIsLeftEmpty()
{
    writeFile(m_path, {});
    LogFile(m_path).append(u"INFO"_s, QString(LogFile::maxSize, u'a'), morning);
    QCOMPARE(contentOf(m_path), QByteArray());
    QVERIFY(QFile::exists(m_path));
}

void LogFileTest::theSizeDoesNotMatterForTheFirstLine()
{
    LogFile file(m_path);
    file.append(u"INFO"_s, QString(LogFile::maxSize, u'a'), morning);
    QVERIFY(contentOf(m_path).size() > LogFile::maxSize);
    file.append(u"INFO"_s, u"b"_s, morning); // Three pieces, of which the last one stays.
    QCOMPARE(contentOf(m_path), QByteArray());
}

void LogFileTest::manyLinesKeepTheFileBetweenHalfAndAll()
{
    LogFile file(m_path);
    const QString text(10000, u'x');
    for (int line = 0; line < 500; ++line) {
        file.append(u"INFO"_s, text, morning);
        const auto size = QFileInfo(m_path).size();
        QVERIFY(size <= LogFile::maxSize);
        QVERIFY(line < 110 || size > LogFile::maxSize / 2 - 2 * text.size());
    }
    const auto lines = contentOf(m_path).split('\n');
    for (const auto &line : lines.first(lines.size() - 1))
        QCOMPARE(line.size(), "[2024-05-01 09:30:12.345] [INFO] "_ba.size() + text.size());
    QCOMPARE(lines.last(), QByteArray());
}

void LogFileTest::aCutFileIsForTheUserAlone()
{
    writeFile(m_path, numberedLines(LogFile::maxSize));
    const auto umaskBefore = ::umask(0);
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    ::umask(umaskBefore);
    QVERIFY(QFileInfo(m_path).size() < LogFile::maxSize);
    QCOMPARE(modeOf(m_path), 0600);
}

void LogFileTest::aCutLeavesNothingElseInTheFolder()
{
    writeFile(m_path, numberedLines(LogFile::maxSize));
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    QVERIFY(QFileInfo(m_path).size() < LogFile::maxSize);
    QCOMPARE(namesInFolder(), QStringList{u"korvo.log"_s});
}

void LogFileTest::aLinkStaysALinkWhenItsFileIsCut()
{
    QVERIFY(QDir(m_folder->path()).mkdir(u"elsewhere"_s));
    const auto target = m_folder->filePath(u"elsewhere/log"_s);
    writeFile(target, numberedLines(LogFile::maxSize));
    QVERIFY(QFile::link(target, m_path));
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    QVERIFY(QFileInfo(m_path).isSymLink());
    QVERIFY(QFileInfo(target).size() < LogFile::maxSize);
    QVERIFY(contentOf(target).endsWith("[INFO] a\n"_ba));
}

void LogFileTest::aFileThatCannotBeCutStaysAsItWas()
{
    const auto before = numberedLines(LogFile::maxSize);
    writeFile(m_path, before);
    QCOMPARE(::chmod(QFile::encodeName(m_path).constData(), 0666), 0);
    QCOMPARE(::chmod(QFile::encodeName(m_folder->path()).constData(), 0555), 0);
    {
        const OrdinaryUser user;
        QVERIFY(user.isGood());
        LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    }
    QCOMPARE(contentOf(m_path), before + "[2024-05-01 09:30:12.345] [INFO] a\n"_ba);
    QCOMPARE(namesInFolder(), QStringList{u"korvo.log"_s});
}

void LogFileTest::aFolderThatCannotBeMadeLosesTheLine()
{
    writeFile(m_folder->filePath(u"state"_s), "no folder"_ba);
    LogFile(m_folder->filePath(u"state/Korvo/korvo.log"_s)).append(u"INFO"_s, u"a"_s, morning);
    QCOMPARE(namesInFolder(), QStringList{u"state"_s});
    QCOMPARE(contentOf(m_folder->filePath(u"state"_s)), "no folder"_ba);
}

void LogFileTest::aReadOnlyFolderLosesTheLine()
{
    QCOMPARE(::chmod(QFile::encodeName(m_folder->path()).constData(), 0555), 0);
    {
        const OrdinaryUser user;
        QVERIFY(user.isGood());
        LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    }
    QCOMPARE(namesInFolder(), QStringList());
}

void LogFileTest::aReadOnlyFileLosesTheLineAndKeepsWhatItHolds()
{
    writeFile(m_path, "before\n"_ba);
    QCOMPARE(::chmod(QFile::encodeName(m_path).constData(), 0444), 0);
    QCOMPARE(::chmod(QFile::encodeName(m_folder->path()).constData(), 0777), 0);
    {
        const OrdinaryUser user;
        QVERIFY(user.isGood());
        LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    }
    QCOMPARE(contentOf(m_path), "before\n"_ba);
}

void LogFileTest::aVanishedFolderLosesTheLine()
{
    const auto folder = m_folder->filePath(u"Korvo"_s);
    LogFile file(folder + u"/korvo.log"_s);
    file.append(u"INFO"_s, u"a"_s, morning);
    QVERIFY(QDir(folder).removeRecursively());
    file.append(u"INFO"_s, u"b"_s, morning);
    QCOMPARE(namesInFolder(), QStringList());
}

void LogFileTest::aVanishedFileIsMadeAgain()
{
    LogFile file(m_path);
    file.append(u"INFO"_s, u"a"_s, morning);
    QVERIFY(QFile::remove(m_path));
    file.append(u"INFO"_s, u"b"_s, morning);
    QCOMPARE(contentOf(m_path), "[2024-05-01 09:30:12.345] [INFO] b\n"_ba);
}

void LogFileTest::aFolderInPlaceOfTheFileLosesTheLine()
{
    QVERIFY(QDir(m_folder->path()).mkdir(u"korvo.log"_s));
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    QVERIFY(QFileInfo(m_path).isDir());
    QVERIFY(QDir(m_path).isEmpty());
}

void LogFileTest::aPipeInPlaceOfTheFileDoesNotBlock()
{
    QCOMPARE(::mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    QCOMPARE(namesInFolder(), QStringList{u"korvo.log"_s});
}

void LogFileTest::aPipeWithAReaderGetsNothing()
{
    QCOMPARE(::mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
    const int reader = ::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QVERIFY(reader >= 0);
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    char byte = 0;
    const auto count = ::read(reader, &byte, 1);
    ::close(reader);
    QCOMPARE(count, ssize_t(0));
}

void LogFileTest::aDeviceInPlaceOfTheFileGetsNothing()
{
    QVERIFY(QFile::link(u"/dev/full"_s, m_path));
    LogFile(m_path).append(u"INFO"_s, u"a"_s, morning);
    QVERIFY(QFileInfo(m_path).isSymLink());
}

/// Files can hold 20 bytes and no more: what fits of a longer text is written, as on a disk that fills up.
class SmallDisk {
public:
    SmallDisk() : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{20, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    Q_DISABLE_COPY_MOVE(SmallDisk)

private:
    rlimit m_before{};
    void (*const m_handler)(int);
};

void LogFileTest::aFullDiskLosesTheWholeLine()
{
    writeFile(m_path, "before\n"_ba);
    LogFile file(m_path);
    {
        const SmallDisk disk;
        file.append(u"INFO"_s, u"a"_s, morning);
    }
    QCOMPARE(contentOf(m_path), "before\n"_ba);
    file.append(u"INFO"_s, u"b"_s, morning);
    QCOMPARE(contentOf(m_path), "before\n[2024-05-01 09:30:12.345] [INFO] b\n"_ba);
}

void LogFileTest::aFullDiskLosesTheWholeFirstLine()
{
    LogFile file(m_path);
    {
        const SmallDisk disk;
        file.append(u"INFO"_s, u"a"_s, morning);
    }
    QCOMPARE(contentOf(m_path), QByteArray());
    file.append(u"INFO"_s, u"b"_s, morning);
    QCOMPARE(contentOf(m_path), "[2024-05-01 09:30:12.345] [INFO] b\n"_ba);
}

void LogFileTest::standardPathFollowsTheStateFolder_data()
{
    QTest::addColumn<QByteArray>("stateHome");
    QTest::addColumn<QString>("path");
    const auto usual = QDir::homePath() + u"/.local/state/Korvo/korvo.log"_s;
    QTest::newRow("not set") << QByteArray() << usual;
    QTest::newRow("empty") << ""_ba << usual;
    QTest::newRow("relative is ignored") << "state"_ba << usual;
    QTest::newRow("absolute") << "/srv/state"_ba << u"/srv/state/Korvo/korvo.log"_s;
    QTest::newRow("absolute with a slash at its end") << "/srv/state/"_ba << u"/srv/state/Korvo/korvo.log"_s;
}

void LogFileTest::standardPathFollowsTheStateFolder()
{
    QFETCH(QByteArray, stateHome);
    const auto before = qgetenv("XDG_STATE_HOME");
    if (stateHome.isNull())
        qunsetenv("XDG_STATE_HOME");
    else
        qputenv("XDG_STATE_HOME", stateHome);
    const auto path = LogFile::standardPath();
    if (before.isNull())
        qunsetenv("XDG_STATE_HOME");
    else
        qputenv("XDG_STATE_HOME", before);
    QTEST(path, "path");
}

QTEST_GUILESS_MAIN(LogFileTest)

#include "LogFileTest.moc"
