#include "Platform/Linux/JsonUserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <csignal>
#include <limits>
#include <linux/capability.h>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace korvo;
using namespace Qt::StringLiterals;
using Value = UserDefaults::Value;

class JsonUserDefaultsTest : public QObject {
    Q_OBJECT

    QString path() const { return m_folder->filePath(u"Korvo/defaults.json"_s); }
    void writeFile(const QByteArray &content) const;
    QByteArray file() const;
    QJsonObject object() const;

    std::unique_ptr<QTemporaryDir> m_folder;

private slots:
    void init();

    void anEmptyStoreHasNothing();
    void valuesOfEachTypeSurviveARestart_data();
    void valuesOfEachTypeSurviveARestart();
    void readingIsStrictAboutTypes_data();
    void readingIsStrictAboutTypes();
    void theFileIsOneFlatObject();
    void aNumberThatIsNotFiniteLeavesTheFormer();
    void unknownMembersStayLetterByLetter();
    void theFileIsForItsUserAlone_data();
    void theFileIsForItsUserAlone();
    void aFileThatOthersCanReadIsClosedByLoadingAlone_data();
    void aFileThatOthersCanReadIsClosedByLoadingAlone();
    void aFileOpenedToOthersMeanwhileIsClosedByAnEqualValue();
    void theDefaultPathFollowsTheStandard_data();
    void theDefaultPathFollowsTheStandard();

    void aBrokenFileIsSetAside_data();
    void aBrokenFileIsSetAside();
    void anOlderBrokenFileIsNotOverwritten();
    void aBrokenFileThatAnotherProcessIsMendingIsLeftToIt();
    void aFileBrokenMeanwhileComesBackWhole();
    void aFileRemovedMeanwhileComesBackWhole();

    void aFullDiskLosesNothing();
    void aDiskTooFullForALockLosesNothing();
    void aReadOnlyFolderLosesNothing();
    void aFileThatItsOwnerMayNotWriteStays();
    void aFolderThatCannotBeMadeIsNoHarm();
    void anUnreadableFileIsLeftAlone();
    void whatIsNoFileIsLeftAlone_data();
    void whatIsNoFileIsLeftAlone();
    void defaultsSetForAnUnreadableFileGiveWayToIt();
    void changesOfAnUnreadableFileReachItLater();
    void whatCouldNotBeWrittenIsTriedAgainAtTheEnd();

    void aLinkIsWrittenThrough_data();
    void aLinkIsWrittenThrough();
    void aLinkThatLeadsNowhereMakesItsFile();
    void aLinkToItselfIsNoHarm();

    void keysOfOthersStay();
    void aValueAlreadySeenDoesNotOverwriteThatOfAnother();
    void aChangeOverwritesTheValueOfAnother();
    void aDefaultIsNotStoredUntilItIsSet();
    void aDefaultDoesNotOverwriteTheValueOfAnother();
    void aDefaultThatIsChangedOverwritesTheValueOfAnother();
    void aDefaultSetAgainAfterAChangeIsAChange();
    void aDefaultReplacesWhatItStandsInFor();
    void aDefaultDoesNotReplaceWhatAnotherHasMended();
    void twoProcessesWriteAtOnce();
    void aLockThatIsHeldDelaysTheWrite();
    void theLockOfACrashedProcessIsBroken();
};

namespace {

/// Lets no file of this process grow past a size, as if the disk were full there.
class FullDisk {
public:
    explicit FullDisk(rlim_t size)
    {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit = {size, m_former.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_handler);
    }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    rlimit m_former = {};
    void (*m_handler)(int) = nullptr;
};

/// Makes the modes of files count for root, too.
class OrdinaryUser {
public:
    OrdinaryUser()
    {
        read(m_former);
        auto ordinary = m_former;
        constexpr auto overriding = (1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH) | (1U << CAP_FOWNER);
        ordinary[0].effective &= ~overriding;
        write(ordinary);
    }
    ~OrdinaryUser() { write(m_former); }
    Q_DISABLE_COPY_MOVE(OrdinaryUser)

private:
    using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

    static void read(Capabilities &capabilities)
    {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        ::syscall(SYS_capget, &header, capabilities.data());
    }
    static void write(const Capabilities &capabilities)
    {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        ::syscall(SYS_capset, &header, capabilities.data());
    }

    Capabilities m_former = {};
};

constexpr int keysOfEach = 60;

/// In a child process: writes many keys, one by one.
int writeMany(const QString &path, const QString &prefix)
{
    JsonUserDefaults defaults(path);
    for (int number = 0; number < keysOfEach; ++number)
        defaults.set({{prefix + QString::number(number), qint64{number}}});
    return 0;
}

/// In a child process: takes the lock of a store and ends without giving it back.
[[noreturn]] void crashWithLock(const QString &path)
{
    QLockFile lock(path + u".lock"_s);
    ::_exit(lock.tryLock(0) ? 0 : 1);
}

mode_t modeOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

void setMode(const QString &path, mode_t mode)
{
    QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode), 0);
}

} // namespace

void JsonUserDefaultsTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void JsonUserDefaultsTest::writeFile(const QByteArray &content) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path()).path()));
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(content), content.size());
}

QByteArray JsonUserDefaultsTest::file() const
{
    QFile file(path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject JsonUserDefaultsTest::object() const
{
    return QJsonDocument::fromJson(file()).object();
}

void JsonUserDefaultsTest::anEmptyStoreHasNothing()
{
    const JsonUserDefaults defaults(path());
    QVERIFY(!defaults.contains(u"apiKey"_s));
    QVERIFY(!defaults.string(u"apiKey"_s));
    QVERIFY(!defaults.number(u"apiKey"_s));
    QVERIFY(!defaults.boolean(u"apiKey"_s));
    QVERIFY(!defaults.integer(u"apiKey"_s));
    QVERIFY(!defaults.data(u"apiKey"_s));
    QVERIFY2(!QFileInfo::exists(QFileInfo(path()).path()), "Reading makes no folder");
}

void JsonUserDefaultsTest::valuesOfEachTypeSurviveARestart_data()
{
    QTest::addColumn<Value>("value");
    QTest::newRow("text") << Value(u"ntn_123"_s);
    QTest::newRow("an empty text") << Value(u""_s);
    QTest::newRow("quotes, backslashes, line feeds") << Value(u"\"a\\b\"\n\r\t/"_s);
    QTest::newRow("text of other scripts") << Value(u"Zeit für 時間 ⏱ 🕐"_s);
    QTest::newRow("a NUL character") << Value(QString(u"a\0b"_s));
    QTest::newRow("half a surrogate pair") << Value(QString(u"a"_s + QChar(0xdc00) + QChar(0xd83d)));
    QTest::newRow("text that looks like JSON") << Value(u"{\"base64\":\"AA==\"}"_s);
    QTest::newRow("a whole number") << Value(30.0);
    QTest::newRow("zero") << Value(0.0);
    QTest::newRow("a fraction") << Value(0.1);
    QTest::newRow("the smallest double") << Value(std::numeric_limits<double>::denorm_min());
    QTest::newRow("the largest double") << Value(std::numeric_limits<double>::max());
    QTest::newRow("true") << Value(true);
    QTest::newRow("false") << Value(false);
    QTest::newRow("an integer") << Value(qint64{45});
    QTest::newRow("an integer that is zero") << Value(qint64{0});
    QTest::newRow("the largest of 32 bits") << Value(qint64{0xffffffff});
    QTest::newRow("one that no double holds") << Value(qint64{9007199254740993});
    QTest::newRow("the smallest of 64 bits") << Value(std::numeric_limits<qint64>::min());
    QTest::newRow("the largest of 64 bits") << Value(std::numeric_limits<qint64>::max());
    QTest::newRow("bytes") << Value("{\"a\":1}"_ba);
    QTest::newRow("no bytes") << Value(""_ba);
    QTest::newRow("bytes that are no text") << Value("\0\xff\n\xc3"_ba);
}

void JsonUserDefaultsTest::valuesOfEachTypeSurviveARestart()
{
    QFETCH(Value, value);
    const auto check = [&value](const UserDefaults &defaults) {
        const QString key = u"key"_s;
        QVERIFY(defaults.contains(key));
        if (const auto *text = std::get_if<QString>(&value))
            QCOMPARE(defaults.string(key), std::optional(*text));
        else if (const auto *number = std::get_if<double>(&value))
            QCOMPARE(defaults.number(key).value_or(-1), *number);
        else if (const auto *isTrue = std::get_if<bool>(&value))
            QCOMPARE(defaults.boolean(key), std::optional(*isTrue));
        else if (const auto *integer = std::get_if<qint64>(&value))
            QCOMPARE(defaults.integer(key), std::optional(*integer));
        else
            QCOMPARE(defaults.data(key), std::optional(std::get<QByteArray>(value)));
    };
    {
        JsonUserDefaults defaults(path());
        defaults.set({{u"key"_s, value}});
        check(defaults);
    }
    check(JsonUserDefaults(path()));
    QCOMPARE(object().keys(), QStringList{u"key"_s});
}

namespace {

/// What each reader gives for one value.
struct Readings {
    std::optional<QString> string = std::nullopt;
    std::optional<double> number = std::nullopt;
    std::optional<bool> boolean = std::nullopt;
    std::optional<qint64> integer = std::nullopt;
    std::optional<QByteArray> data = std::nullopt;
    bool operator==(const Readings &) const = default;
};

} // namespace

void JsonUserDefaultsTest::readingIsStrictAboutTypes_data()
{
    constexpr auto largest = std::numeric_limits<qint64>::max();
    constexpr auto smallest = std::numeric_limits<qint64>::min();
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<Readings>("readings");
    QTest::newRow("text") << R"("45")"_ba << Readings{.string = u"45"_s};
    QTest::newRow("an integer is a number too") << "45"_ba << Readings{.number = 45.0, .integer = 45};
    QTest::newRow("a whole number is an integer too") << "45.0"_ba << Readings{.number = 45.0, .integer = 45};
    QTest::newRow("a fraction is no integer") << "45.5"_ba << Readings{.number = 45.5};
    QTest::newRow("an exponent") << "1e2"_ba << Readings{.number = 100.0, .integer = 100};
    QTest::newRow("an integer past 64 bits")
        << "18446744073709551616"_ba << Readings{.number = 18446744073709551616.0, .integer = largest};
    QTest::newRow("a negative one past 64 bits") << "-1e300"_ba << Readings{.number = -1e300, .integer = smallest};
    QTest::newRow("true is no number") << "true"_ba << Readings{.boolean = true};
    QTest::newRow("zero is not false") << "0"_ba << Readings{.number = 0.0, .integer = 0};
    QTest::newRow("one is not true") << "1"_ba << Readings{.number = 1.0, .integer = 1};
    QTest::newRow("null is nothing") << "null"_ba << Readings{};
    QTest::newRow("bytes") << R"({"base64": "AAE="})"_ba << Readings{.data = "\0\1"_ba};
    QTest::newRow("bytes that are not Base64") << R"({"base64": "A*E="})"_ba << Readings{};
    QTest::newRow("bytes with an accent") << R"({"base64": "é"})"_ba << Readings{};
    QTest::newRow("bytes that are a number") << R"({"base64": 1})"_ba << Readings{};
    QTest::newRow("bytes with something beside") << R"({"base64": "AAE=", "type": 1})"_ba << Readings{};
    QTest::newRow("another object") << R"({"a": "AAE="})"_ba << Readings{};
    QTest::newRow("an array") << R"(["AAE="])"_ba << Readings{};
}

void JsonUserDefaultsTest::readingIsStrictAboutTypes()
{
    QFETCH(QByteArray, json);
    QFETCH(Readings, readings);
    writeFile("{\"key\": " + json + "}");
    const JsonUserDefaults defaults(path());
    const QString key = u"key"_s;
    QVERIFY(defaults.contains(key));
    QCOMPARE(defaults.string(key), readings.string);
    QCOMPARE(defaults.number(key), readings.number);
    QCOMPARE(defaults.boolean(key), readings.boolean);
    QCOMPARE(defaults.integer(key), readings.integer);
    QCOMPARE(defaults.data(key), readings.data);
}

void JsonUserDefaultsTest::theFileIsOneFlatObject()
{
    JsonUserDefaults defaults(path());
    defaults.set({{u"apiKey"_s, u"ntn"_s}, {u"reminderHours"_s, 8.5}, {u"quickAddKeyCode"_s, qint64{45}}});
    defaults.set({{u"showDockIcon"_s, true}, {u"fieldMapping"_s, "{}"_ba}, {u"apiKey"_s, u"new"_s}});
    QCOMPARE(file(), R"({
  "apiKey": "new",
  "reminderHours": 8.5,
  "quickAddKeyCode": 45,
  "showDockIcon": true,
  "fieldMapping": {"base64":"e30="}
}
)"_ba);
}

void JsonUserDefaultsTest::aNumberThatIsNotFiniteLeavesTheFormer()
{
    JsonUserDefaults defaults(path());
    defaults.set({{u"a"_s, 1.5}});
    defaults.set({{u"a"_s, std::numeric_limits<double>::infinity()},
                  {u"b"_s, std::numeric_limits<double>::quiet_NaN()},
                  {u"c"_s, 2.5}});
    QCOMPARE(defaults.number(u"a"_s), std::optional(1.5));
    QVERIFY(!defaults.contains(u"b"_s));
    QCOMPARE(object(), (QJsonObject{{u"a"_s, 1.5}, {u"c"_s, 2.5}}));
}

void JsonUserDefaultsTest::unknownMembersStayLetterByLetter()
{
    writeFile(R"({"big":12345678901234567890123, "whole": 30.0, "nested" : {"z":[1.50, null, "\u00e9"], "a":{}},)"
              R"("text":"\ud83d", "key":"old", "none": null, "exact":0.10000000000000000000001})");
    JsonUserDefaults defaults(path());
    defaults.set({{u"key"_s, u"new"_s}});
    QCOMPARE(file(), R"({
  "big": 12345678901234567890123,
  "whole": 30.0,
  "nested": {"z":[1.50, null, "\u00e9"], "a":{}},
  "text": "\ud83d",
  "key": "new",
  "none": null,
  "exact": 0.10000000000000000000001
}
)"_ba);
}

void JsonUserDefaultsTest::theFileIsForItsUserAlone_data()
{
    QTest::addColumn<uint>("mask");
    QTest::newRow("umask 000") << 0U;
    QTest::newRow("umask 022") << 022U;
    QTest::newRow("umask 077") << 077U;
    QTest::newRow("umask 777") << 0777U;
}

void JsonUserDefaultsTest::theFileIsForItsUserAlone()
{
    QFETCH(uint, mask);
    const QString deepPath = m_folder->filePath(u"config/Korvo/defaults.json"_s);
    const mode_t formerMask = ::umask(mask);
    {
        JsonUserDefaults defaults(deepPath);
        defaults.set({{u"apiKey"_s, u"ntn"_s}});
    }
    const mode_t maskAfterwards = ::umask(formerMask);
    QCOMPARE(maskAfterwards, mode_t(mask));
    QCOMPARE(modeOf(deepPath), mode_t(0600));
    QCOMPARE(modeOf(m_folder->filePath(u"config/Korvo"_s)), mode_t(0700));
    QCOMPARE(modeOf(m_folder->filePath(u"config"_s)), mode_t(0700));
}

void JsonUserDefaultsTest::aFileThatOthersCanReadIsClosedByLoadingAlone_data()
{
    QTest::addColumn<uint>("mode");
    QTest::addColumn<uint>("expected");
    QTest::newRow("for all to read") << 0644U << 0600U;
    QTest::newRow("for a group to write") << 0664U << 0600U;
    QTest::newRow("for all to enter") << 0711U << 0600U;
    QTest::newRow("that nobody may write") << 0444U << 0400U;
}

void JsonUserDefaultsTest::aFileThatOthersCanReadIsClosedByLoadingAlone()
{
    QFETCH(uint, mode);
    QFETCH(uint, expected);
    writeFile(R"({"apiKey": "ntn"})");
    setMode(path(), mode);
    const JsonUserDefaults defaults(path());
    QCOMPARE(modeOf(path()), mode_t(expected));
    QCOMPARE(defaults.string(u"apiKey"_s), std::optional(u"ntn"_s));
    QCOMPARE(file(), R"({"apiKey": "ntn"})"_ba);
}

void JsonUserDefaultsTest::aFileOpenedToOthersMeanwhileIsClosedByAnEqualValue()
{
    writeFile(R"({"apiKey": "ntn"})");
    JsonUserDefaults defaults(path());
    setMode(path(), 0644);
    defaults.set({{u"apiKey"_s, u"ntn"_s}});
    QCOMPARE(modeOf(path()), mode_t(0600));
    QCOMPARE(file(), R"({"apiKey": "ntn"})"_ba);
}

void JsonUserDefaultsTest::theDefaultPathFollowsTheStandard_data()
{
    QTest::addColumn<QByteArray>("configHome");
    QTest::addColumn<QString>("expected");
    const QString inHome = QDir::homePath() + u"/.config/Korvo/defaults.json"_s;
    QTest::newRow("not set") << QByteArray() << inHome;
    QTest::newRow("set but empty") << ""_ba << inHome;
    QTest::newRow("a relative path is ignored") << "config"_ba << inHome;
    QTest::newRow("another relative path is ignored") << "./config"_ba << inHome;
    QTest::newRow("an absolute path") << "/srv/config"_ba << u"/srv/config/Korvo/defaults.json"_s;
}

void JsonUserDefaultsTest::theDefaultPathFollowsTheStandard()
{
    QFETCH(QByteArray, configHome);
    QFETCH(QString, expected);
    const bool wasSet = qEnvironmentVariableIsSet("XDG_CONFIG_HOME");
    const QByteArray former = qgetenv("XDG_CONFIG_HOME");
    const auto restore
        = qScopeGuard([&] { wasSet ? qputenv("XDG_CONFIG_HOME", former) : qunsetenv("XDG_CONFIG_HOME"); });
    if (configHome.isNull())
        qunsetenv("XDG_CONFIG_HOME");
    else
        qputenv("XDG_CONFIG_HOME", configHome);
    QCOMPARE(JsonUserDefaults::defaultPath(), expected);
}

void JsonUserDefaultsTest::aBrokenFileIsSetAside_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing in it") << ""_ba;
    QTest::newRow("no JSON") << "apiKey = ntn"_ba;
    QTest::newRow("cut short") << R"({"apiKey": "ntn", "reminder)"_ba;
    QTest::newRow("an array") << R"([{"apiKey": "ntn"}])"_ba;
    QTest::newRow("a bare text") << R"("ntn")"_ba;
    QTest::newRow("two objects") << R"({"apiKey": "ntn"}{})"_ba;
    QTest::newRow("invalid UTF-8") << "{\"apiKey\": \"\xff\"}"_ba;
    QTest::newRow("all NUL, as after a power cut") << QByteArray(512, '\0');
    QTest::newRow("nested too deeply") << QByteArray(100000, '[');
}

void JsonUserDefaultsTest::aBrokenFileIsSetAside()
{
    QFETCH(QByteArray, content);
    writeFile(content);
    JsonUserDefaults defaults(path());
    QVERIFY(!defaults.contains(u"apiKey"_s));
    QFile aside(path() + u".corrupt"_s);
    QVERIFY(aside.open(QIODevice::ReadOnly));
    QCOMPARE(aside.readAll(), content);
    QCOMPARE(modeOf(aside.fileName()), mode_t(0600)); // There may be a key in it.
    QVERIFY(!QFileInfo::exists(path()));

    defaults.set({{u"apiKey"_s, u"new"_s}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"new"_s}}));
}

void JsonUserDefaultsTest::anOlderBrokenFileIsNotOverwritten()
{
    for (const char *content : {"first", "second", "third"}) {
        writeFile(content);
        const JsonUserDefaults defaults(path());
    }
    const auto contentOf = [this](const QString &suffix) {
        QFile file(path() + suffix);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    QCOMPARE(contentOf(u".corrupt"_s), "first"_ba);
    QCOMPARE(contentOf(u".corrupt.2"_s), "second"_ba);
    QCOMPARE(contentOf(u".corrupt.3"_s), "third"_ba);
}

void JsonUserDefaultsTest::aBrokenFileThatAnotherProcessIsMendingIsLeftToIt()
{
    writeFile("{\"apiKey\": \"nt");
    auto other = std::make_unique<QLockFile>(path() + u".lock"_s);
    QVERIFY(other->tryLock());
    JsonUserDefaults defaults(path());
    defaults.registerDefaults({{u"apiKey"_s, u""_s}, {u"reminderHours"_s, 8.0}});
    QVERIFY(!defaults.contains(u"apiKey"_s));
    QVERIFY(QFileInfo::exists(path()));
    writeFile(R"({"apiKey": "ntn"})");
    other.reset();

    defaults.set({{u"apiKey"_s, u""_s}, {u"reminderHours"_s, 4.0}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"ntn"_s}, {u"reminderHours"_s, 4}}));
    QVERIFY(!QFileInfo::exists(path() + u".corrupt"_s));
}

void JsonUserDefaultsTest::aFileBrokenMeanwhileComesBackWhole()
{
    writeFile(R"({"read": 1, "unknown": [1, 2]})");
    JsonUserDefaults defaults(path());
    defaults.set({{u"written"_s, u"before"_s}});
    writeFile("{\"read\": 1, \"unkn");
    defaults.set({{u"new"_s, true}});
    const QJsonObject expected{
        {u"read"_s, 1}, {u"unknown"_s, QJsonArray{1, 2}}, {u"written"_s, u"before"_s}, {u"new"_s, true}};
    QCOMPARE(object(), expected);
    QVERIFY(QFileInfo::exists(path() + u".corrupt"_s));
}

void JsonUserDefaultsTest::aFileRemovedMeanwhileComesBackWhole()
{
    JsonUserDefaults defaults(path());
    defaults.set({{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}});
    QVERIFY(QDir(QFileInfo(path()).path()).removeRecursively());
    defaults.set({{u"a"_s, u"1"_s}});
    QCOMPARE(object(), (QJsonObject{{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}}));
}

void JsonUserDefaultsTest::aFullDiskLosesNothing()
{
    JsonUserDefaults defaults(path());
    defaults.set({{u"apiKey"_s, u"ntn"_s}, {u"other"_s, qint64{1}}});
    const QByteArray before = file();
    const QString longText(5000, u'x');
    {
        const FullDisk disk(2000); // The lock has room, the file has not.
        defaults.set({{u"apiKey"_s, longText}});
    }
    QCOMPARE(file(), before);
    QCOMPARE(defaults.string(u"apiKey"_s), std::optional(longText));
    QCOMPARE(QDir(QFileInfo(path()).path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"defaults.json"_s});

    defaults.set({{u"another"_s, true}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, longText}, {u"other"_s, 1}, {u"another"_s, true}}));
}

void JsonUserDefaultsTest::aDiskTooFullForALockLosesNothing()
{
    JsonUserDefaults defaults(path());
    defaults.set({{u"apiKey"_s, u"ntn"_s}});
    const QByteArray before = file();
    {
        const FullDisk disk(0);
        defaults.set({{u"apiKey"_s, u"new"_s}});
    }
    QCOMPARE(file(), before);
    QCOMPARE(defaults.string(u"apiKey"_s), std::optional(u"new"_s));
    defaults.set({});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"new"_s}}));
}

void JsonUserDefaultsTest::aReadOnlyFolderLosesNothing()
{
    JsonUserDefaults defaults(path());
    defaults.set({{u"apiKey"_s, u"ntn"_s}});
    const QByteArray before = file();
    const QString folder = QFileInfo(path()).path();
    setMode(folder, 0500);
    {
        const OrdinaryUser user;
        defaults.set({{u"apiKey"_s, u"new"_s}});
    }
    QCOMPARE(file(), before);
    QCOMPARE(defaults.string(u"apiKey"_s), std::optional(u"new"_s));
    setMode(folder, 0700);
    defaults.set({{u"other"_s, qint64{1}}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"new"_s}, {u"other"_s, 1}}));
}

void JsonUserDefaultsTest::aFileThatItsOwnerMayNotWriteStays()
{
    writeFile(R"({"apiKey": "ntn"})");
    const QByteArray before = file();
    setMode(path(), 0400);
    const OrdinaryUser user;
    JsonUserDefaults defaults(path());
    defaults.set({{u"apiKey"_s, u"new"_s}});
    QCOMPARE(file(), before);
    QCOMPARE(modeOf(path()), mode_t(0400));
    QCOMPARE(defaults.string(u"apiKey"_s), std::optional(u"new"_s));
}

void JsonUserDefaultsTest::aFolderThatCannotBeMadeIsNoHarm()
{
    QFile inTheWay(QFileInfo(path()).path());
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    JsonUserDefaults defaults(path());
    defaults.set({{u"apiKey"_s, u"ntn"_s}});
    QCOMPARE(defaults.string(u"apiKey"_s), std::optional(u"ntn"_s));
    QVERIFY(inTheWay.remove());
    defaults.set({{u"other"_s, qint64{1}}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"ntn"_s}, {u"other"_s, 1}}));
}

void JsonUserDefaultsTest::anUnreadableFileIsLeftAlone()
{
    writeFile(R"({"apiKey": "ntn", "other": 1})");
    setMode(path(), 0);
    {
        const OrdinaryUser user;
        JsonUserDefaults defaults(path());
        QVERIFY(!defaults.contains(u"apiKey"_s));
        defaults.set({{u"apiKey"_s, u""_s}});
        QCOMPARE(defaults.string(u"apiKey"_s), std::optional(u""_s));
    }
    setMode(path(), 0600);
    QCOMPARE(file(), R"({"apiKey": "ntn", "other": 1})"_ba);
    QCOMPARE(QDir(QFileInfo(path()).path()).entryList(QDir::Files), QStringList{u"defaults.json"_s});
}

void JsonUserDefaultsTest::whatIsNoFileIsLeftAlone_data()
{
    QTest::addColumn<mode_t>("type");
    QTest::newRow("a folder") << mode_t(S_IFDIR);
    QTest::newRow("a pipe that nobody writes to") << mode_t(S_IFIFO);
}

void JsonUserDefaultsTest::whatIsNoFileIsLeftAlone()
{
    QFETCH(mode_t, type);
    QVERIFY(QDir().mkpath(QFileInfo(path()).path()));
    const QByteArray name = QFile::encodeName(path());
    QCOMPARE(type == S_IFDIR ? ::mkdir(name.constData(), 0700) : ::mkfifo(name.constData(), 0600), 0);
    JsonUserDefaults defaults(path());
    defaults.set({{u"apiKey"_s, u"ntn"_s}});
    QCOMPARE(defaults.string(u"apiKey"_s), std::optional(u"ntn"_s));
    struct stat status = {};
    QCOMPARE(::stat(name.constData(), &status), 0);
    QCOMPARE(status.st_mode & S_IFMT, type);
}

void JsonUserDefaultsTest::defaultsSetForAnUnreadableFileGiveWayToIt()
{
    writeFile(R"({"apiKey": "ntn", "pollIntervalIdle": 90})");
    setMode(path(), 0);
    const OrdinaryUser user;
    JsonUserDefaults defaults(path());
    // A program that finds nothing saves its defaults, for all it knows.
    const QList<std::pair<QString, Value>> values{
        {u"apiKey"_s, u""_s}, {u"pollIntervalIdle"_s, 60.0}, {u"showDockIcon"_s, true}};
    defaults.registerDefaults(values);
    defaults.set(values);
    setMode(path(), 0600);
    defaults.set(values);
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"ntn"_s}, {u"pollIntervalIdle"_s, 90}, {u"showDockIcon"_s, true}}));
}

void JsonUserDefaultsTest::changesOfAnUnreadableFileReachItLater()
{
    writeFile(R"({"apiKey": "ntn", "pollIntervalIdle": 90})");
    setMode(path(), 0);
    const OrdinaryUser user;
    JsonUserDefaults defaults(path());
    defaults.registerDefaults({{u"apiKey"_s, u""_s}, {u"pollIntervalIdle"_s, 60.0}});
    defaults.set({{u"apiKey"_s, u""_s}, {u"pollIntervalIdle"_s, 120.0}}); // The first write is a change already.
    QCOMPARE(defaults.number(u"pollIntervalIdle"_s), std::optional(120.0));
    setMode(path(), 0600);
    defaults.set({{u"apiKey"_s, u""_s}, {u"pollIntervalIdle"_s, 120.0}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"ntn"_s}, {u"pollIntervalIdle"_s, 120}}));
}

void JsonUserDefaultsTest::whatCouldNotBeWrittenIsTriedAgainAtTheEnd()
{
    {
        JsonUserDefaults defaults(path());
        defaults.set({{u"apiKey"_s, u"ntn"_s}});
        const FullDisk disk(0);
        defaults.set({{u"apiKey"_s, u"new"_s}});
        // The disk has room again before the store goes.
    }
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"new"_s}}));
}

void JsonUserDefaultsTest::aLinkIsWrittenThrough_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("an absolute link") << u"/"_s;
    QTest::newRow("a relative link") << u"../dotfiles/korvo.json"_s;
    QTest::newRow("a link to a link") << u"../dotfiles/link.json"_s;
}

void JsonUserDefaultsTest::aLinkIsWrittenThrough()
{
    QFETCH(QString, target);
    QVERIFY(QDir(m_folder->path()).mkpath(u"dotfiles"_s));
    QVERIFY(QDir(m_folder->path()).mkpath(u"Korvo"_s));
    const QString realPath = m_folder->filePath(u"dotfiles/korvo.json"_s);
    QVERIFY(QFile::link(u"korvo.json"_s, m_folder->filePath(u"dotfiles/link.json"_s)));
    QVERIFY(QFile::link(target == u"/"_s ? realPath : target, path()));
    QFile realFile(realPath);
    QVERIFY(realFile.open(QIODevice::WriteOnly));
    QCOMPARE(realFile.write(R"({"a": 1})"), 8);
    realFile.close();

    JsonUserDefaults defaults(path());
    QCOMPARE(defaults.integer(u"a"_s), std::optional(qint64{1}));
    defaults.set({{u"b"_s, qint64{2}}});
    QVERIFY(QFileInfo(path()).isSymLink());
    QVERIFY(!QFileInfo(realPath).isSymLink());
    QVERIFY(realFile.open(QIODevice::ReadOnly));
    QCOMPARE(QJsonDocument::fromJson(realFile.readAll()).object(), (QJsonObject{{u"a"_s, 1}, {u"b"_s, 2}}));
}

void JsonUserDefaultsTest::aLinkThatLeadsNowhereMakesItsFile()
{
    QVERIFY(QDir(m_folder->path()).mkpath(u"Korvo"_s));
    QVERIFY(QFile::link(u"later.json"_s, path()));
    JsonUserDefaults defaults(path());
    defaults.set({{u"a"_s, qint64{1}}});
    QVERIFY(QFileInfo(path()).isSymLink());
    QVERIFY(QFileInfo::exists(m_folder->filePath(u"Korvo/later.json"_s)));
    QCOMPARE(object(), (QJsonObject{{u"a"_s, 1}}));
    QCOMPARE(modeOf(path()), mode_t(0600));
}

void JsonUserDefaultsTest::aLinkToItselfIsNoHarm()
{
    QVERIFY(QDir(m_folder->path()).mkpath(u"Korvo"_s));
    QVERIFY(QFile::link(u"defaults.json"_s, path()));
    JsonUserDefaults defaults(path());
    defaults.set({{u"a"_s, qint64{1}}});
    QCOMPARE(defaults.integer(u"a"_s), std::optional(qint64{1}));
    QVERIFY(QFileInfo(path()).isSymLink());
}

void JsonUserDefaultsTest::keysOfOthersStay()
{
    JsonUserDefaults one(path());
    JsonUserDefaults other(path());
    one.set({{u"ofOne"_s, u"1"_s}});
    other.set({{u"ofOther"_s, u"2"_s}});
    one.set({{u"ofOne"_s, u"3"_s}});
    QCOMPARE(object(), (QJsonObject{{u"ofOne"_s, u"3"_s}, {u"ofOther"_s, u"2"_s}}));
    QCOMPARE(one.string(u"ofOther"_s), std::optional(u"2"_s));
}

void JsonUserDefaultsTest::aValueAlreadySeenDoesNotOverwriteThatOfAnother()
{
    writeFile(R"({"apiKey": "ntn", "reminderHours": 8})");
    JsonUserDefaults one(path());
    JsonUserDefaults other(path());
    other.set({{u"apiKey"_s, u"new"_s}});
    for (const double hours : {4.0, 5.0}) {
        // All values, of which one is changed.
        one.set({{u"apiKey"_s, u"ntn"_s}, {u"reminderHours"_s, hours}});
        QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"new"_s}, {u"reminderHours"_s, hours}}));
        QCOMPARE(one.string(u"apiKey"_s), std::optional(u"ntn"_s)); // What it set, it sees.
    }
}

void JsonUserDefaultsTest::aChangeOverwritesTheValueOfAnother()
{
    writeFile(R"({"apiKey": "ntn"})");
    JsonUserDefaults one(path());
    JsonUserDefaults other(path());
    other.set({{u"apiKey"_s, u"ofOther"_s}});
    one.set({{u"apiKey"_s, u"ofOne"_s}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"ofOne"_s}}));
}

void JsonUserDefaultsTest::aDefaultIsNotStoredUntilItIsSet()
{
    JsonUserDefaults defaults(path());
    defaults.registerDefaults({{u"apiKey"_s, u""_s}, {u"reminderHours"_s, 8.0}});
    QVERIFY(!defaults.contains(u"apiKey"_s));
    QVERIFY(!defaults.string(u"apiKey"_s));
    QVERIFY(!defaults.number(u"reminderHours"_s));
    defaults.set({{u"other"_s, true}});
    QCOMPARE(object(), (QJsonObject{{u"other"_s, true}}));

    defaults.set({{u"apiKey"_s, u""_s}});
    QCOMPARE(object(), (QJsonObject{{u"other"_s, true}, {u"apiKey"_s, u""_s}}));
    QCOMPARE(defaults.string(u"apiKey"_s), std::optional(u""_s));
}

void JsonUserDefaultsTest::aDefaultDoesNotOverwriteTheValueOfAnother()
{
    JsonUserDefaults one(path());
    JsonUserDefaults other(path());
    other.registerDefaults({{u"apiKey"_s, u""_s}});
    one.set({{u"apiKey"_s, u"ntn"_s}});
    for (const double hours : {4.0, 5.0}) {
        other.set({{u"apiKey"_s, u""_s}, {u"reminderHours"_s, hours}});
        QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"ntn"_s}, {u"reminderHours"_s, hours}}));
        QCOMPARE(other.string(u"apiKey"_s), std::optional(u""_s)); // What it set, it sees.
    }
}

void JsonUserDefaultsTest::aDefaultThatIsChangedOverwritesTheValueOfAnother()
{
    JsonUserDefaults one(path());
    JsonUserDefaults other(path());
    other.registerDefaults({{u"apiKey"_s, u""_s}});
    one.set({{u"apiKey"_s, u"ofOne"_s}});
    other.set({{u"apiKey"_s, u"ofOther"_s}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"ofOther"_s}}));
}

void JsonUserDefaultsTest::aDefaultSetAgainAfterAChangeIsAChange()
{
    JsonUserDefaults one(path());
    JsonUserDefaults other(path());
    other.registerDefaults({{u"apiKey"_s, u""_s}});
    other.set({{u"apiKey"_s, u"ofOther"_s}});
    one.set({{u"apiKey"_s, u"ofOne"_s}});
    other.set({{u"apiKey"_s, u""_s}}); // A user has emptied it.
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u""_s}}));
}

void JsonUserDefaultsTest::aDefaultReplacesWhatItStandsInFor()
{
    writeFile(R"({"apiKey": 1, "reminderHours": "eight"})");
    JsonUserDefaults defaults(path());
    defaults.registerDefaults({{u"apiKey"_s, u""_s}, {u"reminderHours"_s, 8.0}});
    QVERIFY(defaults.contains(u"apiKey"_s));
    defaults.set({{u"apiKey"_s, u""_s}, {u"reminderHours"_s, 8.0}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u""_s}, {u"reminderHours"_s, 8}}));
}

void JsonUserDefaultsTest::aDefaultDoesNotReplaceWhatAnotherHasMended()
{
    writeFile(R"({"apiKey": 1})");
    JsonUserDefaults one(path());
    JsonUserDefaults other(path());
    other.registerDefaults({{u"apiKey"_s, u""_s}});
    one.set({{u"apiKey"_s, u"ntn"_s}});
    other.set({{u"apiKey"_s, u""_s}, {u"reminderHours"_s, 4.0}});
    QCOMPARE(object(), (QJsonObject{{u"apiKey"_s, u"ntn"_s}, {u"reminderHours"_s, 4}}));
}

void JsonUserDefaultsTest::twoProcessesWriteAtOnce()
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--write-many"_s, path(), u"child"_s});
    QVERIFY(child.waitForStarted());
    {
        JsonUserDefaults defaults(path());
        for (int number = 0; number < keysOfEach; ++number)
            defaults.set({{u"parent"_s + QString::number(number), qint64{number}}});
        QVERIFY(child.waitForFinished(60000));
    }
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), 0);

    const JsonUserDefaults defaults(path());
    for (int number = 0; number < keysOfEach; ++number) {
        QCOMPARE(defaults.integer(u"parent"_s + QString::number(number)), std::optional(qint64{number}));
        QCOMPARE(defaults.integer(u"child"_s + QString::number(number)), std::optional(qint64{number}));
    }
    QCOMPARE(QDir(QFileInfo(path()).path()).entryList(QDir::Files), QStringList{u"defaults.json"_s});
}

void JsonUserDefaultsTest::aLockThatIsHeldDelaysTheWrite()
{
    JsonUserDefaults defaults(path());
    defaults.set({{u"a"_s, qint64{1}}});
    const QByteArray before = file();
    {
        QLockFile holder(path() + u".lock"_s);
        QVERIFY(holder.tryLock());
        defaults.set({{u"a"_s, qint64{2}}});
        defaults.set({{u"b"_s, qint64{3}}});
        QCOMPARE(file(), before);
        QCOMPARE(defaults.integer(u"a"_s), std::optional(qint64{2}));
    }
    defaults.set({{u"c"_s, qint64{4}}});
    QCOMPARE(object(), (QJsonObject{{u"a"_s, 2}, {u"b"_s, 3}, {u"c"_s, 4}}));
}

void JsonUserDefaultsTest::theLockOfACrashedProcessIsBroken()
{
    writeFile("{}");
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--crash-with-lock"_s, path()});
    QVERIFY(child.waitForFinished(60000));
    QCOMPARE(child.exitCode(), 0);
    QVERIFY(QFileInfo::exists(path() + u".lock"_s));

    JsonUserDefaults defaults(path());
    defaults.set({{u"a"_s, qint64{1}}});
    QCOMPARE(object(), (QJsonObject{{u"a"_s, 1}}));
}

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments.at(1) == "--write-many"_L1)
        return writeMany(arguments.at(2), arguments.at(3));
    if (arguments.size() == 3 && arguments.at(1) == "--crash-with-lock"_L1)
        crashWithLock(arguments.at(2));
    JsonUserDefaultsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "JsonUserDefaultsTest.moc"
