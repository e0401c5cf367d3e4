#include "Utilities/DiagnosticLogger.h"

#include "Utilities/LogFile.h"
#include "Utilities/SystemLog.h"

#include <atomic>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

std::atomic<SystemLog *> sharedSystemLog = nullptr;

/// Made by the first message and never destroyed, since the last message may come after everything else has gone.
LogFile &logFile()
{
    static auto *const file = new LogFile(LogFile::standardPath());
    return *file;
}

void write(SystemLog::Level level, const QString &word, const QString &message)
{
    // Logging is never what ends the program, not even without memory.
    try {
        if (auto *const systemLog = sharedSystemLog.load())
            systemLog->write(level, message.toUtf8());
    } catch (...) {
    }
    try {
        logFile().append(word, message);
    } catch (...) {
    }
}

} // namespace

void Log::info(const QString &message)
{
    write(SystemLog::Level::info, u"INFO"_s, message);
}

void Log::error(const QString &message)
{
    write(SystemLog::Level::error, u"ERROR"_s, message);
}

void Log::fault(const QString &message)
{
    write(SystemLog::Level::fault, u"FAULT"_s, message);
}

void Log::setSystemLog(SystemLog *systemLog)
{
    sharedSystemLog = systemLog;
}

} // namespace korvo
