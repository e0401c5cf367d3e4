#pragma once

#include "Platform/KeyboardLayout.h"

namespace korvo {

/// The keyboard layout of the X server and the group in force, read anew at each question, which takes about a
/// millisecond. On other window systems no key has a character.
class XkbKeyboardLayout final : public KeyboardLayout {
public:
    bool isKnown() const override;
    std::optional<QString> unshiftedCharacter(quint32 keyCode) const override;

    std::optional<quint32> keyCode(quint32 nativeScanCode) const override;

    /// The X name of what the key gives without any modifier, such as "n", "space" or "F5"; empty if it gives nothing.
    /// Source: the keysym names of xkbcommon, which the shortcuts of portals are written in too.
    QString keysymName(quint32 keyCode) const;
};

} // namespace korvo
