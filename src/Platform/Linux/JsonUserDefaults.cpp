#include "Platform/Linux/JsonUserDefaults.h"

#include "Utilities/JsonText.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QLockFile>
#include <QSaveFile>
#include <QThread>

#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace korvo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint64 maximumSize = qint64{64} * 1024 * 1024; // What is larger was not written by us.
constexpr auto lockPatience = 2s;                        // A write takes milliseconds.
constexpr auto base64Key = "base64"_L1;

const QFile::Permissions readAndWrite = QFile::ReadOwner | QFile::WriteOwner;

/// Nothing for a number that is not finite, which JSON has no way to write.
std::optional<QJsonValue> jsonOf(const UserDefaults::Value &value)
{
    if (const auto *number = std::get_if<double>(&value)) {
        if (!std::isfinite(*number))
            return std::nullopt;
        return *number;
    }
    if (const auto *bytes = std::get_if<QByteArray>(&value))
        return QJsonObject{{base64Key, QString::fromLatin1(bytes->toBase64())}};
    if (const auto *text = std::get_if<QString>(&value))
        return *text;
    if (const auto *isTrue = std::get_if<bool>(&value))
        return *isTrue;
    return std::get<qint64>(value);
}

/// The file that a path leads to when it is a symbolic link, also if that file does not exist yet.
QString followLinks(const QString &path)
{
    constexpr int maximumLinks = 40; // As many as the kernel follows.
    std::filesystem::path target(QFile::encodeName(path).toStdString());
    for (int links = 0; links < maximumLinks; ++links) {
        std::error_code error;
        const auto link = std::filesystem::read_symlink(target, error);
        if (error)
            break;
        target = target.parent_path() / link;
    }
    return QFile::decodeName(target.c_str());
}

struct Contents {
    enum class State { missing, readable, corrupt, unreadable };
    State state;
    JsonMembers members = {};
};

/// There is a key in it, and it may come from a backup that did not keep its mode. What belongs to somebody else stays.
void closeToOthers(int descriptor, mode_t mode)
{
    if ((mode & (S_IRWXG | S_IRWXO)) != 0)
        ::fchmod(descriptor, mode & (S_IRUSR | S_IWUSR));
}

Contents contentsOf(const QString &path)
{
    using enum Contents::State;
    // Without waiting for a writer, should a pipe stand there.
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return {errno == ENOENT ? missing : unreadable};
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly, QFile::AutoCloseHandle)) {
        ::close(descriptor);
        return {unreadable};
    }
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return {unreadable};
    closeToOthers(descriptor, status.st_mode);
    if (status.st_size > maximumSize)
        return {unreadable};
    const QByteArray json = file.readAll();
    if (file.error() != QFile::NoError || json.size() != status.st_size)
        return {unreadable};
    auto members = JsonMembers::parse(json);
    return members ? Contents{readable, std::move(*members)} : Contents{corrupt};
}

/// Renames a broken file, so that a person can still save what is in it. False if it is still in its place.
bool setAside(const QString &path)
{
    constexpr int maximumNumber = 1000;
    for (int number = 1; number <= maximumNumber; ++number) {
        const QString aside = path + (number == 1 ? u".corrupt"_s : u".corrupt.%1"_s.arg(number));
        if (QFileInfo::exists(aside) || QFileInfo(aside).isSymLink())
            continue;
        if (!QFile::rename(path, aside))
            return false;
        QFile::setPermissions(aside, readAndWrite);
        return true;
    }
    return false;
}

/// Makes a folder that its user alone may enter, and those above it.
void makeFolder(const QString &path)
{
    if (QFileInfo::exists(path))
        return;
    makeFolder(QFileInfo(path).path());
    const QFile::Permissions permissions = readAndWrite | QFile::ExeOwner;
    if (QDir().mkdir(path, permissions))
        QFile::setPermissions(path, permissions); // Whatever the umask took away.
}

/// Brings what was written to the disk. False if it had no room or broke; a file system that has no such call is fine.
bool isFlushed(QSaveFile &file)
{
    return file.flush() && (::fsync(file.handle()) == 0 || (errno != ENOSPC && errno != EDQUOT && errno != EIO));
}

/// Puts a new file in the place of the old one, or leaves that as it is and gives false.
bool replace(const QString &path, const QByteArray &json)
{
    if (json.size() > maximumSize)
        return false;
    // The new file takes over what the old one allows, before there is anything in it. A file that its owner may not
    // write stays so: somebody wants it to be as it is.
    if (QFileInfo::exists(path)) {
        const QFile::Permissions permissions = QFile::permissions(path);
        if (!permissions.testFlag(QFile::WriteOwner))
            return false;
        QFile::setPermissions(path, permissions & readAndWrite);
    }
    QSaveFile file(path);
    const auto formerMask = ::umask(S_IRWXG | S_IRWXO);
    const bool isOpen = file.open(QIODevice::WriteOnly);
    ::umask(formerMask);
    // A commit alone would say yes to a file that a full disk has cut short.
    return isOpen && file.setPermissions(readAndWrite) && file.write(json) == json.size() && isFlushed(file)
        && file.commit();
}

} // namespace

JsonUserDefaults::JsonUserDefaults(const QString &path) : m_path(path), m_lockPatience(lockPatience)
{
    load();
}

JsonUserDefaults::~JsonUserDefaults()
{
    if (!m_isStored) {
        m_lockPatience = 0ms;
        store();
    }
}

QString JsonUserDefaults::defaultPath()
{
    const QString folder = QFile::decodeName(qgetenv("XDG_CONFIG_HOME"));
    const bool isAbsolute = folder.startsWith(u'/'); // Others are invalid, and to be ignored.
    return (isAbsolute ? folder : QDir::homePath() + "/.config"_L1) + "/Korvo/defaults.json"_L1;
}

bool JsonUserDefaults::contains(const QString &key) const
{
    return m_view.contains(key);
}

std::optional<QString> JsonUserDefaults::string(const QString &key) const
{
    const QJsonValue value = m_view.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<double> JsonUserDefaults::number(const QString &key) const
{
    const QJsonValue value = m_view.value(key);
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<bool> JsonUserDefaults::boolean(const QString &key) const
{
    const QJsonValue value = m_view.value(key);
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<qint64> JsonUserDefaults::integer(const QString &key) const
{
    const QJsonValue value = m_view.value(key);
    if (!value.isDouble())
        return std::nullopt;
    const qint64 whole = value.toInteger(0);
    if (whole == value.toInteger(1)) // Not the default.
        return whole;
    const double number = value.toDouble();
    if (std::trunc(number) != number)
        return std::nullopt;
    return number > 0 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
}

std::optional<QByteArray> JsonUserDefaults::data(const QString &key) const
{
    const QJsonObject object = m_view.value(key).toObject();
    const QJsonValue base64 = object.value(base64Key);
    if (object.size() != 1 || !base64.isString())
        return std::nullopt;
    const auto bytes
        = QByteArray::fromBase64Encoding(base64.toString().toUtf8(), QByteArray::AbortOnBase64DecodingErrors);
    return bytes ? std::optional(bytes.decoded) : std::nullopt;
}

void JsonUserDefaults::registerDefaults(const QList<std::pair<QString, Value>> &values)
{
    for (const auto &[key, value] : values) {
        if (const auto json = jsonOf(value))
            m_defaults.insert(key, {*json, m_view.text(key)});
    }
}

void JsonUserDefaults::set(const QList<std::pair<QString, Value>> &values)
{
    for (const auto &[key, value] : values) {
        const auto json = jsonOf(value);
        if (!json)
            continue;
        const Default former = m_defaults.take(key);
        if (m_view.value(key) == *json)
            continue;
        // Nobody chose a default: it takes the place of what it stands in for, and of nothing else.
        if (former.value == *json)
            m_replaced.insert(key, former.found);
        else
            m_changed.insert(key);
        m_view.set(key, jsonText(*json));
    }
    m_isStored = store();
}

/// Reads the file at the start. A broken one is set aside at once, unless another process is writing.
void JsonUserDefaults::load()
{
    const QString path = followLinks(m_path);
    Contents contents = contentsOf(path);
    if (contents.state == Contents::State::corrupt) {
        QLockFile lock(m_path + ".lock"_L1);
        if (lock.tryLock(0)) {
            contents = contentsOf(path); // Another process may have been faster.
            if (contents.state == Contents::State::corrupt)
                setAside(path);
        }
    }
    m_view = std::move(contents.members);
}

/// Merges what this process sees into the file. False if that cannot be done now.
bool JsonUserDefaults::store()
{
    makeFolder(QFileInfo(m_path).path());
    QLockFile lock(m_path + ".lock"_L1);
    if (!acquire(lock))
        return false;

    const QString path = followLinks(m_path);
    const Contents contents = contentsOf(path);
    if (contents.state == Contents::State::unreadable)
        return false;
    if (contents.state == Contents::State::corrupt && !setAside(path))
        return false;

    // What the file lacks comes back: somebody may have removed or broken it while this process ran.
    JsonMembers merged = contents.members;
    for (const QString &key : m_view.keys()) {
        const bool isToBeReplaced = m_replaced.contains(key) && m_replaced.value(key) == merged.text(key);
        if (m_changed.contains(key) || isToBeReplaced || !merged.contains(key))
            merged.set(key, m_view.text(key));
    }
    const bool isNew = contents.state != Contents::State::readable || merged != contents.members;
    if (isNew && !replace(path, merged.toJson()))
        return false;

    m_changed.clear();
    m_replaced.clear();
    for (const QString &key : merged.keys()) {
        if (!m_view.contains(key))
            m_view.set(key, merged.text(key));
    }
    return true;
}

/// Waits for the lock for a moment. When that was in vain, the next writes do not wait until one has had it again, so
/// that a holder which hangs does not slow down each of them.
bool JsonUserDefaults::acquire(QLockFile &lock)
{
    const QDeadlineTimer deadline(m_lockPatience);
    while (!lock.tryLock(0)) {
        if (lock.error() != QLockFile::LockFailedError)
            return false;
        if (deadline.hasExpired()) {
            m_lockPatience = 0ms;
            return false;
        }
        QThread::msleep(10);
    }
    m_lockPatience = lockPatience;
    return true;
}

} // namespace korvo
