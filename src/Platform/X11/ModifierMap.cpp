#include "Platform/X11/ModifierMap.h"

#include "Platform/HotkeyModifiers.h"
#include "Platform/X11/XkbKeymap.h"

#include <cstdlib>
#include <initializer_list>
#include <memory>

namespace korvo {

namespace {

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

using ModifierReply = std::unique_ptr<xcb_get_modifier_mapping_reply_t, Free>;

/// The first of the five free modifiers that some key with one of the keysyms sets; 0 if none does.
quint16 bitOf(const ModifierReply &reply, const XkbKeymap &keymap, std::initializer_list<xkb_keysym_t> keysyms)
{
    const auto *const keys = xcb_get_modifier_mapping_keycodes(reply.get());
    const int width = reply->keycodes_per_modifier;
    for (int modifier = XCB_MAP_INDEX_1; modifier <= XCB_MAP_INDEX_5; ++modifier) {
        for (int i = modifier * width; i < (modifier + 1) * width; ++i) {
            for (const auto keysym : keysyms) {
                if (keys[i] != 0 && keymap.gives(keys[i], keysym))
                    return quint16(1 << modifier);
            }
        }
    }
    return 0;
}

} // namespace

ModifierMap ModifierMap::read(xcb_connection_t *connection)
{
    ModifierMap map;
    const auto cookie = xcb_get_modifier_mapping(connection);
    const XkbKeymap keymap(connection);
    const ModifierReply reply(xcb_get_modifier_mapping_reply(connection, cookie, nullptr));
    if (!reply || keymap.isEmpty())
        return map;
    if (const auto super = bitOf(reply, keymap, {XKB_KEY_Super_L, XKB_KEY_Super_R}))
        map.super = super;
    if (const auto alt = bitOf(reply, keymap, {XKB_KEY_Alt_L, XKB_KEY_Alt_R}))
        map.alt = alt;
    map.locks
        = XCB_MOD_MASK_LOCK | bitOf(reply, keymap, {XKB_KEY_Num_Lock}) | bitOf(reply, keymap, {XKB_KEY_Scroll_Lock});
    return map;
}

quint16 ModifierMap::mask(quint32 modifiers) const
{
    quint16 mask = 0;
    if (modifiers & hotkeyModifier::command)
        mask |= super;
    if (modifiers & hotkeyModifier::shift)
        mask |= XCB_MOD_MASK_SHIFT;
    if (modifiers & hotkeyModifier::option)
        mask |= alt;
    if (modifiers & hotkeyModifier::control)
        mask |= XCB_MOD_MASK_CONTROL;
    return mask;
}

} // namespace korvo
