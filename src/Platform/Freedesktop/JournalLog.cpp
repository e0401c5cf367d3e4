#include "Platform/Freedesktop/JournalLog.h"

#include <QtEndian>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

// libsystemd would do the same, but has the address of the socket built in, so that no test could stand at its other end.

namespace korvo {

namespace {

constexpr const char *identifier = "com.korvo.app";

int priorityOf(SystemLog::Level level)
{
    switch (level) {
    case SystemLog::Level::info:
        return LOG_INFO;
    case SystemLog::Level::error:
        return LOG_ERR;
    case SystemLog::Level::fault:
        return LOG_CRIT;
    }
    Q_UNREACHABLE();
}

/// "NAME=value", or with the value's length before it if it has more than one line.
void appendField(QByteArray &record, const char *name, const QByteArray &value)
{
    record += name;
    if (value.contains('\n')) {
        const auto size = qToLittleEndian(quint64(value.size()));
        char bytes[sizeof size];
        std::memcpy(bytes, &size, sizeof size);
        record += '\n';
        record.append(bytes, sizeof bytes);
    } else {
        record += '=';
    }
    record += value;
    record += '\n';
}

QByteArray recordOf(int priority, const QByteArray &message)
{
    QByteArray record;
    record.reserve(message.size() + 128);
    appendField(record, "MESSAGE", message);
    appendField(record, "PRIORITY", QByteArray::number(priority));
    appendField(record, "SYSLOG_IDENTIFIER", identifier);
    appendField(record, "KORVO_CATEGORY", "general");
    return record;
}

/// Sends a datagram that holds `payload` and, if there is one, an open file. False with `errno` set if it can't.
bool sendDatagram(int socket, const QByteArray &path, const QByteArray &payload, int file = -1)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (size_t(path.size()) >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));

    iovec content{const_cast<char *>(payload.constData()), size_t(payload.size())};
    msghdr header{};
    header.msg_name = &address;
    header.msg_namelen = sizeof address;
    header.msg_iov = &content;
    header.msg_iovlen = payload.isEmpty() ? 0 : 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof file)] = {};
    if (file >= 0) {
        header.msg_control = control;
        header.msg_controllen = sizeof control;
        auto *const rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(sizeof file);
        std::memcpy(CMSG_DATA(rights), &file, sizeof file);
    }
    return ::sendmsg(socket, &header, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0;
}

/// For what is too large for a datagram: a file in memory that no one can change any more.
bool sendAsFile(int socket, const QByteArray &path, const QByteArray &record)
{
    const int file = ::memfd_create("korvo-log", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file < 0)
        return false;
    const bool isSent = ::write(file, record.constData(), size_t(record.size())) == record.size()
        && ::fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) == 0
        && sendDatagram(socket, path, {}, file);
    ::close(file);
    return isSent;
}

} // namespace

JournalLog::JournalLog(const QByteArray &socketPath, Syslog syslog) :
    m_socketPath(socketPath),
    m_syslog(syslog),
    m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
}

JournalLog::~JournalLog()
{
    if (m_socket >= 0)
        ::close(m_socket);
}

void JournalLog::write(Level level, const QByteArray &message)
{
    const int priority = priorityOf(level);
    const auto record = recordOf(priority, message);
    bool isSent = sendDatagram(m_socket, m_socketPath, record);
    if (!isSent && (errno == EMSGSIZE || errno == ENOBUFS))
        isSent = sendAsFile(m_socket, m_socketPath, record);
    if (!isSent && errno != EAGAIN) {
        auto text = message;
        text.replace('\0', "\xe2\x90\x80"); // U+2400, the picture of a NUL, which would end the line.
        m_syslog(priority, text.constData());
    }
}

void JournalLog::writeToSyslog(int priority, const char *message)
{
    static const bool isOpen = (::openlog(identifier, LOG_PID, LOG_USER), true);
    Q_UNUSED(isOpen)
    ::syslog(priority, "%s", message);
}

} // namespace korvo
