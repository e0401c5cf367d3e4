#include "Platform/X11/XkbKeyboardLayout.h"

#include "Platform/X11/MacKeyCodes.h"
#include "Platform/X11/SpacingCharacter.h"
#include "Platform/X11/X11Connection.h"
#include "Platform/X11/XkbKeymap.h"

#include <utility>

namespace korvo {

namespace {

constexpr quint32 firstKey = 8; // X, and Wayland's keymaps too, count so much higher than the kernel.
constexpr xkb_level_index_t unshifted = 0;
constexpr xkb_level_index_t withNumLock = 1;

/// The keysym of a key that a label can be made of. A digit of the keypad is one without Num Lock too, as on the Mac.
xkb_keysym_t keysymOf(quint32 macKeyCode)
{
    const auto evdev = evdevKeyCode(macKeyCode);
    if (!evdev)
        return XKB_KEY_NoSymbol;
    const auto key = *evdev + firstKey;
    const XkbKeymap keymap(x11Connection());
    const auto keysym = keymap.keysym(key, unshifted);
    if (keysym >= XKB_KEY_KP_Home && keysym <= XKB_KEY_KP_Delete)
        return keymap.keysym(key, withNumLock);
    return keysym;
}

} // namespace

bool XkbKeyboardLayout::isKnown() const
{
    return !XkbKeymap(x11Connection()).isEmpty();
}

std::optional<QString> XkbKeyboardLayout::unshiftedCharacter(quint32 keyCode) const
{
    auto character = spacingCharacter(keysymOf(keyCode));
    return character.isEmpty() ? std::nullopt : std::optional(std::move(character));
}

std::optional<quint32> XkbKeyboardLayout::keyCode(quint32 nativeScanCode) const
{
    return nativeScanCode < firstKey ? std::nullopt : macKeyCode(nativeScanCode - firstKey);
}

QString XkbKeyboardLayout::keysymName(quint32 keyCode) const
{
    const auto keysym = keysymOf(keyCode);
    if (keysym == XKB_KEY_NoSymbol)
        return {};
    char name[64];
    return xkb_keysym_get_name(keysym, name, sizeof name) > 0 ? QString::fromLatin1(name) : QString();
}

} // namespace korvo
