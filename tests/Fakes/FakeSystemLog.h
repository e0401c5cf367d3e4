#pragma once

#include "Utilities/DiagnosticLogger.h"
#include "Utilities/SystemLog.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace korvo {

/// Collects what is logged as long as it lives.
class FakeSystemLog final : public SystemLog {
public:
    struct Line {
        Level level;
        QString message;
        bool operator==(const Line &) const = default;
    };

    FakeSystemLog() { Log::setSystemLog(this); }
    ~FakeSystemLog() override { Log::setSystemLog(nullptr); }
    Q_DISABLE_COPY_MOVE(FakeSystemLog)

    void write(Level level, const QByteArray &message) override { lines.append({level, QString::fromUtf8(message)}); }

    /// The messages of one level, in order.
    QStringList messages(Level level) const
    {
        QStringList found;
        for (const auto &line : lines) {
            if (line.level == level)
                found.append(line.message);
        }
        return found;
    }

    QList<Line> lines;
};

} // namespace korvo
