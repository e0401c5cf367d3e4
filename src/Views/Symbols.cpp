#include "Views/Symbols.h"

#include "Views/SymbolArtwork.h"

#include <QHash>
#include <QPainter>

#include <algorithm>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

/// Outlines are united from several strokes, so each is made once.
const QPainterPath &outlineOf(Symbol symbol)
{
    static QHash<Symbol, QPainterPath> outlines;
    auto found = outlines.find(symbol);
    if (found == outlines.end())
        found = outlines.insert(symbol, symbolArtwork(symbol));
    return *found;
}

} // namespace

QString symbolName(Symbol symbol)
{
    switch (symbol) {
    case Symbol::timer:
        return u"timer"_s;
    case Symbol::wifiExclamationmark:
        return u"wifi.exclamationmark"_s;
    case Symbol::stopFill:
        return u"stop.fill"_s;
    case Symbol::arrowUpRightSquare:
        return u"arrow.up.right.square"_s;
    case Symbol::gear:
        return u"gear"_s;
    case Symbol::gearBadge:
        return u"gear.badge"_s;
    case Symbol::power:
        return u"power"_s;
    case Symbol::playFill:
        return u"play.fill"_s;
    case Symbol::stopCircleFill:
        return u"stop.circle.fill"_s;
    case Symbol::playCircle:
        return u"play.circle"_s;
    case Symbol::network:
        return u"network"_s;
    case Symbol::clock:
        return u"clock"_s;
    case Symbol::checklist:
        return u"checklist"_s;
    case Symbol::gearshape:
        return u"gearshape"_s;
    case Symbol::checkmarkCircleFill:
        return u"checkmark.circle.fill"_s;
    case Symbol::xmarkCircleFill:
        return u"xmark.circle.fill"_s;
    case Symbol::plusCircle:
        return u"plus.circle"_s;
    }
    return {};
}

void drawSymbol(QPainter &painter, const QRectF &rect, Symbol symbol, const QColor &color)
{
    const double side = std::min(rect.width(), rect.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center() - QPointF(side / 2, side / 2));
    painter.scale(side / symbolGrid, side / symbolGrid);
    painter.fillPath(outlineOf(symbol), color);
    painter.restore();
}

StatusImage makeSymbolImage(Symbol symbol, const QString &description)
{
    return {
        .key = u"symbol "_s + symbolName(symbol),
        .description = description,
        .size = {18, 18},
        .draw
        = [symbol](QPainter &painter,
                   const QSizeF &size) { drawSymbol(painter, QRectF(QPointF(), size), symbol, painter.pen().color()); },
        .isTemplate = true,
    };
}

} // namespace korvo
