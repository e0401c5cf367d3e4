#pragma once

#include <memory>

namespace korvo {

class KeyGrabber;

/// Whether the session's display server is a Wayland compositor, where grabs of X11 only see the keys of X11 windows.
bool isWaylandSession();

/// What holds system-wide keys in this session: the desktop portal under Wayland, else grabs of X11.
std::unique_ptr<KeyGrabber> makeDesktopKeyGrabber();

} // namespace korvo
