#pragma once

#include <QList>
#include <QPoint>
#include <QRect>

#include <optional>

namespace korvo {

/// A screen as the placing of the status item's button needs it: logical pixels, but the origin as the X server has it.
struct BarScreen {
    QRect geometry;
    QRect available;  ///< What the desktop's bars leave of it.
    double scale = 1; ///< Device pixels per logical pixel.
};

/// The place of the status item's button in logical pixels: a square as high as the desktop's bar (as wide, if the bar
/// stands upright), against the edge of the screen. The middle is `hint`, in device pixels, if that is near `pointer`,
/// for trays tell anything there; else `pointer` if it is on a bar; else it is the end of the first screen's bar.
QRect statusButton(const std::optional<QPoint> &hint, const QPoint &pointer, const QList<BarScreen> &screens);

/// The same for the pointer and the screens as they are.
QRect statusButton(const std::optional<QPoint> &hint);

/// A position in device pixels, as the X server and the trays count, in logical pixels.
QPoint toLogical(const QPoint &native, const QList<BarScreen> &screens);

/// The bar of the first screen that has one, in logical pixels; none if no bar reserves room.
std::optional<QRect> desktopBar(const QList<BarScreen> &screens);

/// The screens of the desktop, the primary one first.
QList<BarScreen> barScreens();

} // namespace korvo
