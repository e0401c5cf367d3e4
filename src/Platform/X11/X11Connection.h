#pragma once

struct xcb_connection_t;

namespace korvo {

/// The application's connection with its X server, as the toolkit set it up, the keyboard extension included. Null if
/// it runs on something else. Not owned.
xcb_connection_t *x11Connection();

} // namespace korvo
