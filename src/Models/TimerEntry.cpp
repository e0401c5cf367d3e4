#include "Models/TimerEntry.h"

namespace korvo {

using namespace Qt::StringLiterals;

std::optional<TimerEntry::TimerStatus> TimerEntry::timerStatusFromRawValue(QStringView rawValue)
{
    if (rawValue == "running"_L1)
        return TimerStatus::running;
    if (rawValue == "stopped"_L1)
        return TimerStatus::stopped;
    return std::nullopt;
}

QString TimerEntry::rawValue(TimerStatus status)
{
    switch (status) {
    case TimerStatus::running:
        return u"running"_s;
    case TimerStatus::stopped:
        return u"stopped"_s;
    }
    Q_UNREACHABLE();
}

} // namespace korvo
