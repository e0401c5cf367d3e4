#pragma once

#include "Fakes/EventList.h"
#include "Utilities/DiagnosticLogger.h"
#include "Utilities/SystemLog.h"

#include <QString>
#include <QStringList>

namespace korvo {

/// Keeps what the program logs while it lives, as "ERROR Poll failed: …".
class FakeSystemLog final : public SystemLog {
public:
    FakeSystemLog() { Log::setSystemLog(this); }
    ~FakeSystemLog() override { Log::setSystemLog(nullptr); }
    Q_DISABLE_COPY_MOVE(FakeSystemLog)

    void write(Level level, const QByteArray &message) override
    {
        note(events, word(level) + QString::fromUtf8(message));
        lines.append(word(level) + QString::fromUtf8(message));
    }

    /// The messages of one level, in order, without its word.
    QStringList messages(Level level) const
    {
        QStringList found;
        for (const auto &line : lines) {
            if (line.startsWith(word(level)))
                found.append(line.mid(word(level).size()));
        }
        return found;
    }

    QStringList lines;
    std::shared_ptr<EventList> events; ///< Shared with the other fakes, if at all.

private:
    static QString word(Level level)
    {
        switch (level) {
        case Level::info:
            return QStringLiteral("INFO ");
        case Level::error:
            return QStringLiteral("ERROR ");
        case Level::fault:
            return QStringLiteral("FAULT ");
        }
        return {};
    }
};

} // namespace korvo
