#pragma once

namespace korvo {

/// Whether the place that the X server has for the pointer is where it is. Under XWayland it is the last one over any X
/// window while the pointer is over windows of other programs or the bare desktop. True without X11.
bool isX11PointerKnown();

} // namespace korvo
