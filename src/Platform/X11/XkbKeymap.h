#pragma once

#include <memory>

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon.h>

namespace korvo {

/// The X server's keymap and the group in force, as they are at one moment. Keys are X key codes.
class XkbKeymap {
public:
    /// Asks the server, which takes about a millisecond. Without a connection or a keyboard it knows no key.
    explicit XkbKeymap(xcb_connection_t *connection);

    bool isEmpty() const { return !m_keymap; }

    /// What a key gives in the group in force, at shift level `level`; no symbol if it gives nothing there, or several.
    xkb_keysym_t keysym(xkb_keycode_t key, xkb_level_index_t level) const;

    /// Whether a key gives a symbol in any group, at any level.
    bool gives(xkb_keycode_t key, xkb_keysym_t keysym) const;

private:
    struct Unref {
        void operator()(xkb_context *context) const { xkb_context_unref(context); }
        void operator()(xkb_keymap *keymap) const { xkb_keymap_unref(keymap); }
    };

    std::unique_ptr<xkb_context, Unref> m_context;
    std::unique_ptr<xkb_keymap, Unref> m_keymap;
    xkb_layout_index_t m_group = 0;
};

} // namespace korvo
