#pragma once

namespace korvo::sandbox {

class Workspace;

/// Fills the sample databases: clients, their projects, tasks of which most are for today, the time that was tracked on
/// them, and one timer that has been running for 42 minutes.
void addSampleRows(Workspace &workspace);

} // namespace korvo::sandbox
