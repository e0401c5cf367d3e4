#pragma once

#include <QFont>

namespace korvo {

/// A font for times in which 1 is half as wide as the other digits, which in most fonts are all of one width. Its
/// characters are solid blocks: at `pixelSize` 20 they are 12 pixels apart, 6 after a 1, 5 after a blank, 4 after a
/// colon, and 2 of these are free. To be called with an application object there.
QFont proportionalFont(int pixelSize);

} // namespace korvo
