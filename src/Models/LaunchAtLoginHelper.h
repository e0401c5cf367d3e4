#pragma once

namespace korvo {

/// Carries the setting "launch at login" to the desktop's login items. Without a login item for the process nothing
/// happens.
namespace LaunchAtLoginHelper {

/// Registers or unregisters the program, whatever its present state. A failure is written to the standard output, and
/// that is all that comes of it.
void setEnabled(bool isWanted);

/// Whether the desktop will really start the program at login.
bool isEnabled();

} // namespace LaunchAtLoginHelper

} // namespace korvo
