#pragma once

#include "Views/Symbols.h"

#include <QWidget>

namespace korvo {

/// A symbol in the size that goes with a text of `size` points.
class SymbolIcon : public QWidget {
    Q_OBJECT
public:
    SymbolIcon(Symbol symbol, int size, const QColor &color, QWidget *parent = nullptr);

    Symbol symbol() const { return m_symbol; }
    int textSize() const { return m_size; } ///< Of the text that it goes with, in points.
    void setSymbol(Symbol symbol, int size, const QColor &color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Symbol m_symbol;
    int m_size;
};

} // namespace korvo
