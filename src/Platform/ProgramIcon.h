#pragma once

#include <QImage>

namespace korvo {

/// The program's own picture with sides of `side` pixels: as drawn for that size where there is one, else a larger one
/// made smaller. It travels within the program, so that nothing has to be installed for it.
QImage programIcon(int side);

} // namespace korvo
