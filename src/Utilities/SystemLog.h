#pragma once

#include <QByteArray>

namespace korvo {

/// Where the operating system keeps the messages of programs: an adapter of the platform.
class SystemLog {
public:
    enum class Level { info, error, fault };

    virtual ~SystemLog() = default;

    /// Hands over one message in UTF-8, kept in clear. Never fails outwards and never blocks for long; may be called on
    /// any thread and from a signal handler's late life.
    virtual void write(Level level, const QByteArray &message) = 0;
};

} // namespace korvo
