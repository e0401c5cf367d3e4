#pragma once

#include <QColor>
#include <QSizeF>
#include <QString>

class QPainter;

namespace korvo {

/// The size of the tile that stands for the program in a dock while a timer runs, in points.
inline constexpr QSizeF dockIconSize{128, 128};

/// Draws the tile: `text` on dark ground in a ring that shows the position of `elapsed`, in seconds, within its hour.
void drawDockIcon(QPainter &painter, const QSizeF &size, const QString &text, const QColor &ringColor, double elapsed);

} // namespace korvo
