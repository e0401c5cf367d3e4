#pragma once

#include <QString>

#include <optional>

namespace korvo {

/// What is written on the keys: the keyboard layout in force at the moment.
class KeyboardLayout {
public:
    virtual ~KeyboardLayout() = default;

    /// Whether there is a layout at all. Without one no key has a character.
    virtual bool isKnown() const = 0;

    /// What the key of a virtual key code types without any modifier; a dead key its mark standing alone. None if the
    /// key is unknown or types no character that can be seen.
    virtual std::optional<QString> unshiftedCharacter(quint32 keyCode) const = 0;

    /// The virtual key code of a key by the number that the window system gives it in its events, whatever the layout.
    virtual std::optional<quint32> keyCode(quint32 nativeScanCode) const = 0;

    /// The layout of the process. The platform sets it before anything else runs.
    static const KeyboardLayout &shared();
    static void setShared(const KeyboardLayout *layout); ///< Must outlive its use; not owned.
};

} // namespace korvo
