#pragma once

#include "Utilities/DiagnosticLogger.h"
#include "Utilities/SystemLog.h"

#include <QStringList>

namespace korvo {

/// Keeps what the program logs while it lives, as "ERROR Poll failed: …".
class FakeSystemLog final : public SystemLog {
public:
    FakeSystemLog() { Log::setSystemLog(this); }
    ~FakeSystemLog() override { Log::setSystemLog(nullptr); }
    FakeSystemLog(const FakeSystemLog &) = delete;
    FakeSystemLog &operator=(const FakeSystemLog &) = delete;

    void write(Level level, const QByteArray &message) override
    {
        const auto word = level == Level::info ? QStringLiteral("INFO ")
            : level == Level::error            ? QStringLiteral("ERROR ")
                                               : QStringLiteral("FAULT ");
        lines.append(word + QString::fromUtf8(message));
    }

    QStringList lines;
};

} // namespace korvo
