#pragma once

#include "Models/FieldMapping.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>

namespace korvo {

/// The properties of each write to the workspace, keyed by the mapped names.
namespace NotionWrites {

/// Ends a time entry: the stopped status, and the end if its property is mapped.
QJsonObject closingOfEntry(const FieldMapping &mapping, const QDateTime &end);

/// Begins a time entry for a task: the running status, the start, and the relation to the task.
QJsonObject openingOfEntry(const FieldMapping &mapping, const QDateTime &start, const QString &taskId);

/// Gives a task the timer status `option`; empty, so that nothing is to be written, unless both names are mapped.
QJsonObject timerStatusOfTask(const FieldMapping &mapping, const QString &option);

/// A new task: its title, its date if that is mapped, and the running status if both its names are mapped.
QJsonObject newTask(const FieldMapping &mapping, const QString &name, const QDateTime &date);

/// The parent of a new row of a database.
QJsonObject parentDatabase(const QString &id);

} // namespace NotionWrites

} // namespace korvo
