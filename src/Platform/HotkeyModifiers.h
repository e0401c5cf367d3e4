#pragma once

#include <QtGlobal>

/// The modifier bits of a shortcut, in the Mac's Carbon numbering, as the settings store them.
namespace korvo::hotkeyModifier {

inline constexpr quint32 command = 0x100;
inline constexpr quint32 shift = 0x200;
inline constexpr quint32 option = 0x800;
inline constexpr quint32 control = 0x1000;

} // namespace korvo::hotkeyModifier
