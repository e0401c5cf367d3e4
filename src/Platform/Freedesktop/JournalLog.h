#pragma once

#include "Utilities/SystemLog.h"

namespace korvo {

/// The systemd journal through its native protocol, else syslog. Messages stand in the journal under
/// SYSLOG_IDENTIFIER=com.korvo.app and KORVO_CATEGORY=general, with priority 6 (info), 3 (error) or 2 (fault).
/// Source: systemd's JOURNAL_NATIVE_PROTOCOL, syslog(3).
class JournalLog final : public SystemLog {
public:
    /// Takes a message, ended by a zero byte, with its priority.
    using Syslog = void (*)(int priority, const char *message);

    /// A journal that listens at `socketPath`. Where none does, messages go to `syslog`.
    explicit JournalLog(const QByteArray &socketPath = "/run/systemd/journal/socket", Syslog syslog = writeToSyslog);
    ~JournalLog() override;
    Q_DISABLE_COPY_MOVE(JournalLog)

    /// Sends without waiting: a journal that is too busy to take the message loses it.
    void write(Level level, const QByteArray &message) override;

    static void writeToSyslog(int priority, const char *message);

private:
    const QByteArray m_socketPath;
    const Syslog m_syslog;
    const int m_socket;
};

} // namespace korvo
