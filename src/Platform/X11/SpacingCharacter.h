#pragma once

#include <QString>

namespace korvo {

/// The character of an X keysym as it stands alone on a key: of a dead key its mark. Empty for what can't be seen, such
/// as a function key, Return or a mark that has no character of its own.
QString spacingCharacter(quint32 keysym);

} // namespace korvo
