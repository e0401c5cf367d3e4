#pragma once

#include <QString>

namespace korvo::sandbox {

class Workspace;

/// The ids of the properties that this library itself reads or writes; they stay when a column is renamed.
namespace sampleproperty {
extern const QString entryTask;
extern const QString entryStart;
extern const QString entryEnd;
extern const QString entryStatus;
extern const QString taskDate;
extern const QString taskTimer;
} // namespace sampleproperty

/// Adds the databases Clients, Projects, Tasks and Time Tracker, which hold a property of every type between them.
void addSampleDatabases(Workspace &workspace);

} // namespace korvo::sandbox
