#pragma once

#include <QtGlobal>

#include <xcb/xcb.h>

namespace korvo {

/// Which bits of an X key event's state stand for which key, as the server has it at one moment.
struct ModifierMap {
    quint16 super = XCB_MOD_MASK_4;
    quint16 alt = XCB_MOD_MASK_1;
    quint16 locks = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2; ///< Caps Lock, Num Lock, and Scroll Lock if it has a bit.

    /// Asks the server. What it doesn't tell stays as above, the way it is nearly everywhere.
    static ModifierMap read(xcb_connection_t *connection);

    /// The bits of modifiers as the settings store them.
    quint16 mask(quint32 modifiers) const;
};

} // namespace korvo
