#pragma once

#include <QString>

namespace korvo {

class SystemLog;

/// The program's one logging facility: each message goes to the system's log and to the log file. Nothing here fails
/// outwards. Never hand it a key.
namespace Log {

void info(const QString &message);  ///< A life-cycle event of the program.
void error(const QString &message); ///< A failure that the program goes on from.
void fault(const QString &message); ///< The last words of a crash.

/// Where messages go besides the file; none until the platform has set it. Not owned.
void setSystemLog(SystemLog *systemLog);

} // namespace Log

} // namespace korvo
