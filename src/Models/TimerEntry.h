#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>

#include <optional>

namespace korvo {

/// One row of the Time Tracker database together with what was gathered about its task. Data only.
struct TimerEntry {
    enum class TimerStatus { running, stopped };

    /// The case with exactly that raw value, "running" or "stopped"; none for any other text.
    static std::optional<TimerStatus> timerStatusFromRawValue(QStringView rawValue);
    static QString rawValue(TimerStatus status);

    QString id; ///< Page identifier, the identity in lists.
    QDateTime startTime;
    std::optional<QDateTime> endTime = std::nullopt; ///< None while running.
    std::optional<QString> taskId;                   ///< Page identifier of the related task.
    QString taskName;
    TimerStatus status = TimerStatus::stopped;
    std::optional<QString> projectName = std::nullopt;
    std::optional<QString> clientName = std::nullopt;
    std::optional<double> totalTime = std::nullopt; ///< Seconds tracked on the task in all.

    bool operator==(const TimerEntry &) const = default;
};

} // namespace korvo
