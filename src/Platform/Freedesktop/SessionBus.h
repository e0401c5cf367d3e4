#pragma once

#include <QDBusConnection>

namespace korvo {

/// The session bus as it is now. The connection that Qt keeps for a program never comes back once its bus has died; if
/// another bus runs at the same address since, this is a connection to that one. For the main thread.
QDBusConnection currentSessionBus();

} // namespace korvo
