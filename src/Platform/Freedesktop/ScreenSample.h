#pragma once

#include "Platform/Freedesktop/StatusPicture.h"

#include <QRect>

namespace korvo {

/// What is on the screen in `area`, in logical pixels, is dark or light: unknown where programs cannot see the screen.
Backdrop backdropAt(const QRect &area);

/// The same for the desktop's bar: no tray tells its colours. Unknown where no bar can be made out.
Backdrop backdropOfBar();

} // namespace korvo
