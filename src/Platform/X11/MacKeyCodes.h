#pragma once

#include <QtGlobal>

#include <optional>

namespace korvo {

/// The Mac's virtual key code of an evdev key code (an X key code is 8 more), none for a key without one. Keys that the
/// Mac doesn't know, such as Print, have numbers beyond the Mac's own: 0x100 and the evdev code.
std::optional<quint32> macKeyCode(quint32 evdevKeyCode);

/// The evdev key code of a virtual key code of the Mac, the reverse of `macKeyCode`.
std::optional<quint32> evdevKeyCode(quint32 macKeyCode);

} // namespace korvo
