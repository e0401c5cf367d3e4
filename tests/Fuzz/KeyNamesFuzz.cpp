// Numbers of keys and modifiers, and the names of shortcuts.

#include "Fakes/FakeKeyboardLayout.h"
#include "Fuzz.h"
#include "Platform/X11/MacKeyCodes.h"
#include "Services/GlobalHotkeyService.h"

#include <cstring>

using namespace korvo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    quint32 numbers[3] = {};
    std::memcpy(numbers, data, std::min(size, sizeof numbers));
    static FakeKeyboardLayout layout;
    layout.hasLayout = numbers[2] & 1;
    // One that doesn't fit ends the program where there is a layout, by design.
    const quint32 keyCode = layout.hasLayout ? numbers[0] & 0xffff : numbers[0];
    fuzz::require(!GlobalHotkeyService::keyName(keyCode).isEmpty(), "every key has a name");
    fuzz::require(
        GlobalHotkeyService::displayString(keyCode, numbers[1]).endsWith(GlobalHotkeyService::keyName(keyCode)),
        "a shortcut ends with its key");
    GlobalHotkeyService::carbonModifiers(quint64(numbers[1]) << 32 | numbers[2]);
    if (const auto mac = macKeyCode(numbers[0]))
        fuzz::require(evdevKeyCode(*mac) == numbers[0], "there and back is the same key");
    if (const auto evdev = evdevKeyCode(numbers[0]))
        fuzz::require(macKeyCode(*evdev) == numbers[0], "back and there is the same key");
    return 0;
}
