#pragma once

#include <QtGlobal>

struct xcb_connection_t;

namespace korvo {

/// The application's connection with its X server, as the toolkit set it up, the keyboard extension included. Null if
/// it runs on something else. Not owned.
xcb_connection_t *x11Connection();

/// The number of the X screen that DISPLAY names, which is the application's.
int x11ScreenNumber();

/// The root window of that screen; 0 without X11.
quint32 x11RootWindow();

} // namespace korvo
