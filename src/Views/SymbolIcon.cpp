#include "Views/SymbolIcon.h"

#include "Views/TextStyle.h"

#include <QPainter>

namespace korvo {

SymbolIcon::SymbolIcon(Symbol symbol, int size, const QColor &color, QWidget *parent) :
    QWidget(parent),
    m_symbol(symbol),
    m_size(size)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setInk(*this, color);
}

void SymbolIcon::setSymbol(Symbol symbol, int size, const QColor &color)
{
    setInk(*this, color);
    if (symbol == m_symbol && size == m_size)
        return;
    m_symbol = symbol;
    m_size = size;
    updateGeometry();
    update();
}

QSize SymbolIcon::sizeHint() const
{
    const int side = m_size + (m_size + 3) / 4; // A symbol is higher than the capitals of its size.
    return {side, side};
}

void SymbolIcon::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawSymbol(painter, rect(), m_symbol, palette().color(QPalette::WindowText));
}

} // namespace korvo
