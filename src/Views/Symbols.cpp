#include "Views/Symbols.h"

#include <QPainter>
#include <QPainterPath>
#include <QPen>

#include <algorithm>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

// Every symbol is drawn on a grid of 18 by 18 and scaled from there.
constexpr double grid = 18;
constexpr int sixteenths = 16;

/// A dial with its crown, a gap at the upper left and a hand that points there.
void drawTimer(QPainter &painter, QPen pen)
{
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const QRectF dial(2.5, 2.5, 13, 13);
    painter.drawArc(dial, 90 * sixteenths, -315 * sixteenths); // From twelve o'clock clockwise to half past ten.
    painter.drawLine(QPointF(9, 2.5), QPointF(9, 4.9));
    painter.drawLine(QPointF(9, 9), QPointF(5.7, 5.7));
    painter.setPen(Qt::NoPen);
    painter.setBrush(pen.color());
    painter.drawEllipse(QPointF(9, 9), 1.4, 1.4);
}

/// Three waves over a dot, and an exclamation mark at the lower right.
void drawWifiExclamationmark(QPainter &painter, QPen pen)
{
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const QPointF source(7.5, 14);
    for (const double radius : {10.2, 6.8, 3.4}) {
        const QRectF wave(source.x() - radius, source.y() - radius, 2 * radius, 2 * radius);
        painter.drawArc(wave, 58 * sixteenths, 76 * sixteenths); // Room for the mark at the right.
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(pen.color());
    painter.drawEllipse(source, 1.2, 1.2);
    painter.drawRoundedRect(QRectF(14.4, 7.6, 1.8, 5.2), 0.9, 0.9);
    painter.drawEllipse(QPointF(15.3, 14.9), 1.1, 1.1);
}

QString nameOf(Symbol symbol)
{
    switch (symbol) {
    case Symbol::timer:
        return u"timer"_s;
    case Symbol::wifiExclamationmark:
        return u"wifi.exclamationmark"_s;
    }
    return {};
}

} // namespace

void drawSymbol(QPainter &painter, const QRectF &rect, Symbol symbol, const QColor &color)
{
    const double side = std::min(rect.width(), rect.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center() - QPointF(side / 2, side / 2));
    painter.scale(side / grid, side / grid);
    const QPen pen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    switch (symbol) {
    case Symbol::timer:
        drawTimer(painter, pen);
        break;
    case Symbol::wifiExclamationmark:
        drawWifiExclamationmark(painter, pen);
        break;
    }
    painter.restore();
}

StatusImage makeSymbolImage(Symbol symbol, const QString &description)
{
    return {
        .key = u"symbol "_s + nameOf(symbol),
        .description = description,
        .size = {grid, grid},
        .draw
        = [symbol](QPainter &painter,
                   const QSizeF &size) { drawSymbol(painter, QRectF(QPointF(), size), symbol, painter.pen().color()); },
        .isTemplate = true,
    };
}

} // namespace korvo
