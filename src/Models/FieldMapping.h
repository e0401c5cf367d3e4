#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace korvo {

/// Which Notion property plays which role, by the property's name, and which options mean running and stopped. An empty
/// string leaves a role unassigned.
struct FieldMapping {
    QString ttTaskRelation = {};         ///< Relation from an entry to its task.
    QString ttStartTime = {};            ///< Start of an entry.
    QString ttEndTime = {};              ///< End of an entry.
    QString ttStatus = {};               ///< Timer status of an entry.
    QString ttStatusRunning = {};        ///< Its option for a running timer.
    QString ttStatusStopped = {};        ///< Its option for a stopped timer.
    QString taskName = {};               ///< Title of a task.
    QString taskDate = {};               ///< Date of a task.
    QString taskTimerStatus = {};        ///< Timer status of a task.
    QString taskTimerStatusRunning = {}; ///< Its option for a running timer.
    QString taskTimerStatusStopped = {}; ///< Its option for a stopped timer.
    QString taskProjectRelation = {};    ///< Relation from a task to its project.
    QString projectClientRelation = {};  ///< Relation from a project to its client.
    QString taskTotalTimeRollup = {};    ///< Rollup of a task's tracked time, in minutes.

    bool operator==(const FieldMapping &) const = default;

    /// One flat JSON object of the fourteen fields in declared order, in UTF-8.
    QByteArray toJson() const;

    /// Reads what `toJson` wrote. None unless all fourteen keys are there and hold strings; other keys are ignored.
    static std::optional<FieldMapping> fromJson(const QByteArray &json);
};

} // namespace korvo
