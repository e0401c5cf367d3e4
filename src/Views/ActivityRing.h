#pragma once

#include "Platform/StatusImage.h"

#include <QColor>

namespace korvo {

/// The ring that stands in the status item: 18 by 18 points, a track, an arc from twelve o'clock clockwise and a white
/// dot at its tip. `progress` is the part of the hour that has passed; below 0.01 it is drawn as 0.01, above 1 as 1.
StatusImage makeActivityRingImage(double progress, const QColor &color);

} // namespace korvo
