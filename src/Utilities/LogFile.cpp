#include "Utilities/LogFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUtf8StringView>

#include <cerrno>
#include <cstdio>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// The calls of the kernel and not QFile: QFile has no way to open a FIFO without waiting for its reader, prints warnings
// of its own, and makes files and folders that others may read.

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr mode_t ownFolder = 0700;
constexpr mode_t ownFile = 0600;

/// An open file that closes with its scope.
class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) { }
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)

    explicit operator bool() const { return m_fd >= 0; }
    operator int() const { return m_fd; }

private:
    int m_fd;
};

void makeFolder(const QByteArray &path)
{
    for (qsizetype slash = path.indexOf('/', 1); slash >= 0; slash = path.indexOf('/', slash + 1))
        ::mkdir(path.first(slash).constData(), ownFolder);
    ::mkdir(path.constData(), ownFolder);
}

bool writeAll(int fd, const QByteArray &bytes)
{
    qsizetype written = 0;
    while (written < bytes.size()) {
        const auto count = ::write(fd, bytes.constData() + written, size_t(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

/// The size of a regular file; none of anything else.
std::optional<off_t> sizeOf(int fd)
{
    struct stat status;
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return status.st_size;
}

/// Appends `bytes` to a regular file as a whole or, on a full disk say, not at all. The size after that; none if there
/// was nothing to append to.
std::optional<off_t> appendWhole(int fd, const QByteArray &bytes)
{
    const auto before = sizeOf(fd);
    if (!before)
        return std::nullopt;
    if (!writeAll(fd, bytes)) {
        (void)!::ftruncate(fd, *before);
        return std::nullopt;
    }
    return sizeOf(fd);
}

std::optional<QByteArray> readAll(const QByteArray &path)
{
    const Descriptor file(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    const auto size = file ? sizeOf(file) : std::nullopt;
    if (!size)
        return std::nullopt;
    QByteArray bytes(qsizetype(*size), Qt::Uninitialized);
    qsizetype filled = 0;
    while (filled < bytes.size()) {
        const auto count = ::read(file, bytes.data() + filled, size_t(bytes.size() - filled));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return std::nullopt;
        filled += count;
    }
    return bytes;
}

/// What stands behind the first `count` line feeds.
QByteArray withoutLines(const QByteArray &text, qsizetype count)
{
    qsizetype start = 0;
    for (; count > 0; --count)
        start = text.indexOf('\n', start) + 1;
    return text.sliced(start);
}

} // namespace

LogFile::LogFile(const QString &path) : m_path(QFile::encodeName(path))
{
    makeFolder(QFile::encodeName(QFileInfo(path).path()));
}

QString LogFile::standardPath()
{
    auto state = qEnvironmentVariable("XDG_STATE_HOME");
    if (!state.startsWith(u'/'))
        state = QDir::homePath() + u"/.local/state"_s;
    return QDir::cleanPath(state + u"/Korvo/korvo.log"_s);
}

void LogFile::append(const QString &level, const QString &message, const QDateTime &time)
{
    // This toString() knows the C locale and the Gregorian calendar only, which is what is wanted.
    const auto line
        = u'[' + time.toLocalTime().toString(u"yyyy-MM-dd HH:mm:ss.zzz") + u"] ["_s + level + u"] "_s + message + u'\n';
    const auto bytes = line.toUtf8();

    constexpr int flags = O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    std::optional<off_t> size;
    if (const Descriptor file(::open(m_path.constData(), flags)); file)
        size = appendWhole(file, bytes);
    else if (const Descriptor created(::open(m_path.constData(), flags | O_CREAT, ownFile)); created)
        appendWhole(created, bytes); // The first line may have any size.
    if (size > maxSize)
        rotate();
}

/// Keeps the later half of the lines, by count.
void LogFile::rotate()
{
    const auto text = readAll(m_path);
    if (!text || !QUtf8StringView(*text).isValidUtf8())
        return;
    const auto pieces = text->count('\n') + 1; // The empty one after the last line feed is one, too.
    const auto kept = withoutLines(*text, pieces - pieces / 2);

    // Written beside the file, which may be linked from elsewhere, and put in its place when it is whole.
    const auto target = QFile::encodeName(QFileInfo(QFile::decodeName(m_path)).canonicalFilePath());
    auto beside = target + ".XXXXXX";
    const int fd = ::mkostemp(beside.data(), O_CLOEXEC); // Mode 0600.
    if (fd < 0)
        return;
    bool isWhole = writeAll(fd, kept);
    isWhole = ::close(fd) == 0 && isWhole;
    if (!isWhole || ::rename(beside.constData(), target.constData()) != 0)
        ::unlink(beside.constData());
}

} // namespace korvo
