#include "Platform/Freedesktop/JournalLog.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <cstring>
#include <optional>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

/// The journal's end of its socket.
class FakeJournal {
public:
    explicit FakeJournal(const QByteArray &path) : m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
        isListening = ::bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }
    ~FakeJournal() { ::close(m_socket); }
    Q_DISABLE_COPY_MOVE(FakeJournal)

    /// The next record, from the datagram or from the file that came with it; none if none has come.
    std::optional<QByteArray> receive()
    {
        QByteArray payload(1 << 20, Qt::Uninitialized);
        iovec content{payload.data(), size_t(payload.size())};
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
        msghdr header{};
        header.msg_iov = &content;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof control;
        const auto size = ::recvmsg(m_socket, &header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
        if (size < 0)
            return std::nullopt;
        payload.truncate(size);
        seals.reset();
        if (const auto *rights = CMSG_FIRSTHDR(&header); rights && rights->cmsg_type == SCM_RIGHTS) {
            int file = -1;
            std::memcpy(&file, CMSG_DATA(rights), sizeof file);
            seals = ::fcntl(file, F_GET_SEALS);
            struct stat status { };
            ::fstat(file, &status);
            payload.resize(status.st_size);
            if (::pread(file, payload.data(), size_t(payload.size()), 0) != payload.size())
                payload = "unreadable"_ba;
            ::close(file);
        }
        return payload;
    }

    bool isListening = false;
    std::optional<int> seals; ///< Of the file that the last record came in, if it did.

private:
    const int m_socket;
};

QList<std::pair<int, QByteArray>> syslogged;

void fakeSyslog(int priority, const char *message)
{
    syslogged.append({priority, message});
}

const auto tail = "SYSLOG_IDENTIFIER=com.korvo.app\nKORVO_CATEGORY=general\n"_ba;

} // namespace

class JournalLogTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void aMessageHasItsFields_data();
    void aMessageHasItsFields();
    void aMessageWithLineFeedsTellsItsLength();
    void aMessageWithAnEqualsSignIsKept();
    void anEmptyMessageIsSent();
    void aZeroByteIsKept();
    void aLargeMessageGoesAsASealedFile();
    void aBusyJournalLosesTheMessageWithoutWaiting();
    void aJournalThatStartsAgainIsFound();
    void withoutAJournalMessagesGoToSyslog_data();
    void withoutAJournalMessagesGoToSyslog();
    void aZeroByteReachesSyslogAsItsPicture();
    void aJournalThatNoOneListensToIsNone();
    void aPathThatIsTooLongIsNoJournal();
    void aFileInPlaceOfTheSocketIsNoJournal();
    void theRealSyslogIsReachedWithoutAFailure();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_path;
};

void JournalLogTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_path = QFile::encodeName(m_folder->filePath(u"socket"_s));
    syslogged.clear();
}

void JournalLogTest::aMessageHasItsFields_data()
{
    QTest::addColumn<SystemLog::Level>("level");
    QTest::addColumn<QByteArray>("priority");
    QTest::newRow("info") << SystemLog::Level::info << "6"_ba;
    QTest::newRow("error") << SystemLog::Level::error << "3"_ba;
    QTest::newRow("fault") << SystemLog::Level::fault << "2"_ba;
}

void JournalLogTest::aMessageHasItsFields()
{
    QFETCH(SystemLog::Level, level);
    QFETCH(QByteArray, priority);
    FakeJournal journal(m_path);
    QVERIFY(journal.isListening);
    JournalLog(m_path, fakeSyslog).write(level, "Gr\xC3\xB6\xC3\x9F"_ba);
    QCOMPARE(journal.receive(), "MESSAGE=Gr\xC3\xB6\xC3\x9F\nPRIORITY="_ba + priority + '\n' + tail);
    QVERIFY(!journal.receive());
    QVERIFY(syslogged.isEmpty());
}

void JournalLogTest::aMessageWithLineFeedsTellsItsLength()
{
    FakeJournal journal(m_path);
    JournalLog(m_path, fakeSyslog).write(SystemLog::Level::fault, "Stack trace: a\nb"_ba);
    QCOMPARE(journal.receive(), QByteArray("MESSAGE\n\x10\0\0\0\0\0\0\0Stack trace: a\nb\nPRIORITY=2\n", 44) + tail);
}

void JournalLogTest::aMessageWithAnEqualsSignIsKept()
{
    FakeJournal journal(m_path);
    JournalLog(m_path, fakeSyslog).write(SystemLog::Level::info, "PRIORITY=0"_ba);
    QCOMPARE(journal.receive(), "MESSAGE=PRIORITY=0\nPRIORITY=6\n"_ba + tail);
}

void JournalLogTest::anEmptyMessageIsSent()
{
    FakeJournal journal(m_path);
    JournalLog(m_path, fakeSyslog).write(SystemLog::Level::info, {});
    QCOMPARE(journal.receive(), "MESSAGE=\nPRIORITY=6\n"_ba + tail);
}

void JournalLogTest::aZeroByteIsKept()
{
    FakeJournal journal(m_path);
    JournalLog(m_path, fakeSyslog).write(SystemLog::Level::info, QByteArray("a\0b", 3));
    QCOMPARE(journal.receive(), QByteArray("MESSAGE=a\0b\nPRIORITY=6\n", 23) + tail);
}

void JournalLogTest::aLargeMessageGoesAsASealedFile()
{
    FakeJournal journal(m_path);
    const QByteArray message(4 << 20, 'x');
    JournalLog(m_path, fakeSyslog).write(SystemLog::Level::error, message);
    QCOMPARE(journal.receive(), "MESSAGE="_ba + message + "\nPRIORITY=3\n"_ba + tail);
    QCOMPARE(journal.seals, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL);
    QVERIFY(syslogged.isEmpty());
}

void JournalLogTest::aBusyJournalLosesTheMessageWithoutWaiting()
{
    FakeJournal journal(m_path);
    JournalLog log(m_path, fakeSyslog);
    for (int message = 0; message < 5000; ++message) // More than any queue of datagrams takes.
        log.write(SystemLog::Level::info, QByteArray::number(message));
    int received = 0;
    while (journal.receive())
        ++received;
    QVERIFY(received > 0 && received < 5000);
    QVERIFY(syslogged.isEmpty());

    log.write(SystemLog::Level::info, "again"_ba);
    QCOMPARE(journal.receive(), "MESSAGE=again\nPRIORITY=6\n"_ba + tail);
}

void JournalLogTest::aJournalThatStartsAgainIsFound()
{
    JournalLog log(m_path, fakeSyslog);
    {
        FakeJournal journal(m_path);
        log.write(SystemLog::Level::info, "a"_ba);
        QCOMPARE(journal.receive(), "MESSAGE=a\nPRIORITY=6\n"_ba + tail);
    }
    QVERIFY(QFile::remove(QFile::decodeName(m_path)));
    FakeJournal journal(m_path);
    log.write(SystemLog::Level::info, "b"_ba);
    QCOMPARE(journal.receive(), "MESSAGE=b\nPRIORITY=6\n"_ba + tail);
}

void JournalLogTest::withoutAJournalMessagesGoToSyslog_data()
{
    QTest::addColumn<SystemLog::Level>("level");
    QTest::addColumn<int>("priority");
    QTest::newRow("info") << SystemLog::Level::info << LOG_INFO;
    QTest::newRow("error") << SystemLog::Level::error << LOG_ERR;
    QTest::newRow("fault") << SystemLog::Level::fault << LOG_CRIT;
}

void JournalLogTest::withoutAJournalMessagesGoToSyslog()
{
    QFETCH(SystemLog::Level, level);
    QFETCH(int, priority);
    JournalLog(m_path, fakeSyslog).write(level, "100 %s\nb"_ba);
    QCOMPARE(syslogged.size(), 1);
    QCOMPARE(syslogged.first().first, priority);
    QCOMPARE(syslogged.first().second, "100 %s\nb"_ba);
}

void JournalLogTest::aZeroByteReachesSyslogAsItsPicture()
{
    JournalLog(m_path, fakeSyslog).write(SystemLog::Level::info, QByteArray("a\0b\0", 4));
    QCOMPARE(syslogged.size(), 1);
    QCOMPARE(syslogged.first().second, u"a\u2400b\u2400"_s.toUtf8());
}

void JournalLogTest::aJournalThatNoOneListensToIsNone()
{
    {
        const FakeJournal journal(m_path);
        QVERIFY(journal.isListening);
    }
    QVERIFY(QFile::exists(QFile::decodeName(m_path)));
    JournalLog(m_path, fakeSyslog).write(SystemLog::Level::info, "a"_ba);
    QCOMPARE(syslogged.size(), 1);
}

void JournalLogTest::aPathThatIsTooLongIsNoJournal()
{
    JournalLog("/" + QByteArray(200, 'x'), fakeSyslog).write(SystemLog::Level::info, "a"_ba);
    QCOMPARE(syslogged.size(), 1);
}

void JournalLogTest::aFileInPlaceOfTheSocketIsNoJournal()
{
    QFile file(QFile::decodeName(m_path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    JournalLog(m_path, fakeSyslog).write(SystemLog::Level::info, "a"_ba);
    QCOMPARE(syslogged.size(), 1);
    QCOMPARE(file.size(), 0);
}

void JournalLogTest::theRealSyslogIsReachedWithoutAFailure()
{
    // Nothing tells whether a message got there; a machine without syslog must not mind.
    JournalLog(m_path).write(SystemLog::Level::info, "A message of a test: 100 %s %n"_ba);
}

QTEST_GUILESS_MAIN(JournalLogTest)

#include "JournalLogTest.moc"
