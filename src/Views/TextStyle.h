#pragma once

#include <QColor>
#include <QFont>

class QWidget;

namespace korvo {

/// How a text of the dark cards is set.
struct TextStyle {
    int size; ///< In points of the design, which are logical pixels.
    QFont::Weight weight = QFont::Normal;
    bool isMonospaced = false;
    double tracking = 0; ///< Logical pixels between letters, beyond what the font has.
};

/// The font of a style, from the families of the desktop.
QFont makeFont(const TextStyle &style);

/// Text styles of the system, in proportion to the desktop's own text size.
enum class SystemText { caption, subheadline, callout, body, title3, title2 };
QFont makeFont(SystemText style, QFont::Weight weight = QFont::Normal, bool isMonospaced = false);

/// Sets the colour in which a text or a symbol is drawn. It pales by itself while the widget is disabled.
void setInk(QWidget &widget, const QColor &color);

} // namespace korvo
