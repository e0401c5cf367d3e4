#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

namespace korvo {

/// Height in logical pixels of the strip beside the camera housing, or 0. The panel of an Apple laptop with a housing
/// is 16:10 plus that strip, and the strip is there only in a mode that shows the full panel. `machine` holds the
/// device tree's "compatible" strings, `output` is the screen's name, `nativeSize` its size in device pixels, `scale`
/// how many of these make a logical pixel.
double notchInset(const QStringList &machine, const QString &output, const QSize &nativeSize, double scale);

/// The "compatible" strings of the device tree's root in the file `path`; empty where there is no device tree.
QStringList deviceTreeCompatible(const QString &path = QStringLiteral("/sys/firmware/devicetree/base/compatible"));

} // namespace korvo
