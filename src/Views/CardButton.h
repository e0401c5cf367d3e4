#pragma once

#include "Views/PlainButton.h"
#include "Views/Symbols.h"
#include "Views/TextStyle.h"

namespace korvo {

class BusyIndicator;
class SymbolIcon;

/// What a button of a card shows, and how large.
struct CardButtonStyle {
    QColor foreground;
    QColor background;
    QColor stroke;
    double radius;
    int minimumHeight;
    TextStyle text{.size = 12, .weight = QFont::DemiBold};
    int symbolSize = 10;
    int spacing = 5;
};

/// A button of a card: a symbol and a text in the middle of a rounded box. It takes an equal share of its row.
class CardButton : public PlainButton {
    Q_OBJECT
public:
    CardButton(Symbol symbol, const QString &text, const CardButtonStyle &style, QWidget *parent = nullptr);

    /// Puts a busy indicator in the symbol's place, or the symbol back.
    void setBusy(bool isBusy);

private:
    SymbolIcon *m_icon;
    BusyIndicator *m_indicator;
};

// Buttons without a box are laid out as `Overflowing{button, bareButtonMargin}`: there is more to hit than to see.
inline constexpr int bareButtonMargin = 6;

/// A button that is only a symbol. `tint` is laid thinly over its place under the pointer.
PlainButton *makeIconButton(Symbol symbol, int size, const QColor &color, const QString &name,
                            const QColor &tint = Qt::white);

/// A button that is only a text.
PlainButton *makeTextButton(const QString &text, const TextStyle &style, const QColor &color);

/// A button that asks to be pressed: white on a strong colour.
PlainButton *makeProminentButton(const QString &text, const QColor &tint);

} // namespace korvo
