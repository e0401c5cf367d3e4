#include "Platform/X11/XkbKeymap.h"

#include <xkbcommon/xkbcommon-x11.h>

namespace korvo {

XkbKeymap::XkbKeymap(xcb_connection_t *connection) :
    m_context(xkb_context_new(xkb_context_flags(XKB_CONTEXT_NO_DEFAULT_INCLUDES | XKB_CONTEXT_NO_ENVIRONMENT_NAMES)))
{
    if (!connection || !m_context)
        return;
    const auto device = xkb_x11_get_core_keyboard_device_id(connection);
    if (device < 0)
        return;
    m_keymap.reset(xkb_x11_keymap_new_from_device(m_context.get(), connection, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!m_keymap)
        return;
    if (auto *const state = xkb_x11_state_new_from_device(m_keymap.get(), connection, device)) {
        m_group = xkb_state_serialize_layout(state, XKB_STATE_LAYOUT_EFFECTIVE);
        xkb_state_unref(state);
    }
}

xkb_keysym_t XkbKeymap::keysym(xkb_keycode_t key, xkb_level_index_t level) const
{
    if (!m_keymap)
        return XKB_KEY_NoSymbol;
    const xkb_keysym_t *keysyms = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(m_keymap.get(), key, m_group, level, &keysyms);
    return count == 1 ? keysyms[0] : XKB_KEY_NoSymbol;
}

bool XkbKeymap::gives(xkb_keycode_t key, xkb_keysym_t keysym) const
{
    if (!m_keymap)
        return false;
    const auto groups = xkb_keymap_num_layouts_for_key(m_keymap.get(), key);
    for (xkb_layout_index_t group = 0; group < groups; ++group) {
        const auto levels = xkb_keymap_num_levels_for_key(m_keymap.get(), key, group);
        for (xkb_level_index_t level = 0; level < levels; ++level) {
            const xkb_keysym_t *keysyms = nullptr;
            const int count = xkb_keymap_key_get_syms_by_level(m_keymap.get(), key, group, level, &keysyms);
            for (int i = 0; i < count; ++i) {
                if (keysyms[i] == keysym)
                    return true;
            }
        }
    }
    return false;
}

} // namespace korvo
