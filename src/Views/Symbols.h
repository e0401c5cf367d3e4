#pragma once

#include "Platform/StatusImage.h"

#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;

namespace korvo {

/// The symbols that the program shows, by the names that the design gives them.
enum class Symbol {
    timer,
    wifiExclamationmark,
    stopFill,
    arrowUpRightSquare,
    gear,
    gearBadge,
    power,
    playFill,
    stopCircleFill,
    playCircle,
    network,
    clock,
    checklist,
    gearshape,
    checkmarkCircleFill,
    xmarkCircleFill,
    plusCircle,
};

/// The design's name, as "stop.circle.fill".
QString symbolName(Symbol symbol);

/// Draws a symbol into the largest square in the middle of `rect`, in one colour.
void drawSymbol(QPainter &painter, const QRectF &rect, Symbol symbol, const QColor &color);

/// A symbol for the status item, 18 by 18 points, in the colour of the desktop's bar.
StatusImage makeSymbolImage(Symbol symbol, const QString &description);

} // namespace korvo
