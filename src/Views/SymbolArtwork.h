#pragma once

#include "Views/Symbols.h"

#include <QPainterPath>

namespace korvo {

inline constexpr double symbolGrid = 18; ///< Side of the square on which every outline stands.

/// The outline of a symbol, to be filled in one go, so that nothing shows twice in a translucent colour. Our own
/// drawings.
QPainterPath symbolArtwork(Symbol symbol);

} // namespace korvo
