#include "Platform/X11/MacKeyCodes.h"

#include <array>

#include <linux/input-event-codes.h>

namespace korvo {

namespace {

struct Key {
    quint32 mac;
    quint32 evdev;
};

// What the two systems call one and the same key of a USB keyboard: what they make of its HID usage. So 0x32 is the key
// to the left of 1 and 0x0a the one beside the left Shift of ISO keyboards. Apple's own ISO keyboards send the two
// crosswise; the kernel's driver for them (hid_apple) sets that right before anyone sees it.
constexpr std::array keys = std::to_array<Key>({
    // Letters, digits and punctuation, by their place on the US keyboard.
    {0x00, KEY_A},
    {0x01, KEY_S},
    {0x02, KEY_D},
    {0x03, KEY_F},
    {0x04, KEY_H},
    {0x05, KEY_G},
    {0x06, KEY_Z},
    {0x07, KEY_X},
    {0x08, KEY_C},
    {0x09, KEY_V},
    {0x0a, KEY_102ND},
    {0x0b, KEY_B},
    {0x0c, KEY_Q},
    {0x0d, KEY_W},
    {0x0e, KEY_E},
    {0x0f, KEY_R},
    {0x10, KEY_Y},
    {0x11, KEY_T},
    {0x12, KEY_1},
    {0x13, KEY_2},
    {0x14, KEY_3},
    {0x15, KEY_4},
    {0x16, KEY_6},
    {0x17, KEY_5},
    {0x18, KEY_EQUAL},
    {0x19, KEY_9},
    {0x1a, KEY_7},
    {0x1b, KEY_MINUS},
    {0x1c, KEY_8},
    {0x1d, KEY_0},
    {0x1e, KEY_RIGHTBRACE},
    {0x1f, KEY_O},
    {0x20, KEY_U},
    {0x21, KEY_LEFTBRACE},
    {0x22, KEY_I},
    {0x23, KEY_P},
    {0x25, KEY_L},
    {0x26, KEY_J},
    {0x27, KEY_APOSTROPHE},
    {0x28, KEY_K},
    {0x29, KEY_SEMICOLON},
    {0x2a, KEY_BACKSLASH},
    {0x2b, KEY_COMMA},
    {0x2c, KEY_SLASH},
    {0x2d, KEY_N},
    {0x2e, KEY_M},
    {0x2f, KEY_DOT},
    {0x32, KEY_GRAVE},
    // The keys around them.
    {0x24, KEY_ENTER},
    {0x30, KEY_TAB},
    {0x31, KEY_SPACE},
    {0x33, KEY_BACKSPACE},
    {0x35, KEY_ESC},
    {0x36, KEY_RIGHTMETA},
    {0x37, KEY_LEFTMETA},
    {0x38, KEY_LEFTSHIFT},
    {0x39, KEY_CAPSLOCK},
    {0x3a, KEY_LEFTALT},
    {0x3b, KEY_LEFTCTRL},
    {0x3c, KEY_RIGHTSHIFT},
    {0x3d, KEY_RIGHTALT},
    {0x3e, KEY_RIGHTCTRL},
    {0x3f, KEY_FN},
    {0x6e, KEY_COMPOSE},
    // Keypad. Num Lock is the Mac's Clear.
    {0x41, KEY_KPDOT},
    {0x43, KEY_KPASTERISK},
    {0x45, KEY_KPPLUS},
    {0x47, KEY_NUMLOCK},
    {0x4b, KEY_KPSLASH},
    {0x4c, KEY_KPENTER},
    {0x4e, KEY_KPMINUS},
    {0x51, KEY_KPEQUAL},
    {0x52, KEY_KP0},
    {0x53, KEY_KP1},
    {0x54, KEY_KP2},
    {0x55, KEY_KP3},
    {0x56, KEY_KP4},
    {0x57, KEY_KP5},
    {0x58, KEY_KP6},
    {0x59, KEY_KP7},
    {0x5b, KEY_KP8},
    {0x5c, KEY_KP9},
    // Function keys. (The Mac takes Print, Scroll Lock and Pause for F13 to F15; here they stay keys of their own.)
    {0x7a, KEY_F1},
    {0x78, KEY_F2},
    {0x63, KEY_F3},
    {0x76, KEY_F4},
    {0x60, KEY_F5},
    {0x61, KEY_F6},
    {0x62, KEY_F7},
    {0x64, KEY_F8},
    {0x65, KEY_F9},
    {0x6d, KEY_F10},
    {0x67, KEY_F11},
    {0x6f, KEY_F12},
    {0x69, KEY_F13},
    {0x6b, KEY_F14},
    {0x71, KEY_F15},
    {0x6a, KEY_F16},
    {0x40, KEY_F17},
    {0x4f, KEY_F18},
    {0x50, KEY_F19},
    {0x5a, KEY_F20},
    // Moving about. The Mac's Help stands in the place of Insert.
    {0x72, KEY_INSERT},
    {0x73, KEY_HOME},
    {0x74, KEY_PAGEUP},
    {0x75, KEY_DELETE},
    {0x77, KEY_END},
    {0x79, KEY_PAGEDOWN},
    {0x7b, KEY_LEFT},
    {0x7c, KEY_RIGHT},
    {0x7d, KEY_DOWN},
    {0x7e, KEY_UP},
    // Sound.
    {0x48, KEY_VOLUMEUP},
    {0x49, KEY_VOLUMEDOWN},
    {0x4a, KEY_MUTE},
    // Japanese keyboards. Eisu and Kana are the second and first language key.
    {0x5d, KEY_YEN},
    {0x5e, KEY_RO},
    {0x5f, KEY_KPCOMMA},
    {0x66, KEY_HANJA},
    {0x68, KEY_HANGEUL},
});

/// Where the numbers for keys begin that the Mac doesn't know: beyond the 8 bits of its own.
constexpr quint32 foreignKeys = 0x100;

/// X11 has 8 bits for a key code, and evdev's begin at 8.
constexpr quint32 lastForeignEvdev = 255 - 8;

const Key *findEvdev(quint32 evdev)
{
    for (const auto &key : keys) {
        if (key.evdev == evdev)
            return &key;
    }
    return nullptr;
}

} // namespace

std::optional<quint32> macKeyCode(quint32 evdevKeyCode)
{
    if (const auto *const key = findEvdev(evdevKeyCode))
        return key->mac;
    if (evdevKeyCode > KEY_RESERVED && evdevKeyCode <= lastForeignEvdev)
        return foreignKeys + evdevKeyCode;
    return std::nullopt;
}

std::optional<quint32> evdevKeyCode(quint32 macKeyCode)
{
    for (const auto &key : keys) {
        if (key.mac == macKeyCode)
            return key.evdev;
    }
    const auto foreign = macKeyCode - foreignKeys;
    if (macKeyCode > foreignKeys && foreign <= lastForeignEvdev && !findEvdev(foreign))
        return foreign;
    return std::nullopt;
}

} // namespace korvo
