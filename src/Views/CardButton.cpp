#include "Views/CardButton.h"

#include "Views/BusyIndicator.h"
#include "Views/ElidedLabel.h"
#include "Views/Stack.h"
#include "Views/SymbolIcon.h"
#include "Views/Theme.h"

namespace korvo {

namespace {

QLayout *bareLabel(QWidget *content)
{
    return hstack({.spacing = 0, .padding = padding(bareButtonMargin, bareButtonMargin)}, content);
}

} // namespace

CardButton::CardButton(Symbol symbol, const QString &text, const CardButtonStyle &style, QWidget *parent) :
    PlainButton(text,
                hstack({.spacing = 0}, Spacer(),
                       hstack({.spacing = style.spacing}, new SymbolIcon(symbol, style.symbolSize, style.foreground),
                              new BusyIndicator(style.foreground), new ElidedLabel(text, style.text, style.foreground)),
                       Spacer()),
                {.background = style.background, .stroke = style.stroke, .radius = style.radius}, parent),
    m_icon(findChild<SymbolIcon *>()),
    m_indicator(findChild<BusyIndicator *>())
{
    setMinimumHeight(style.minimumHeight);
    m_indicator->hide();
}

void CardButton::setBusy(bool isBusy)
{
    m_icon->setVisible(!isBusy);
    m_indicator->setVisible(isBusy);
}

PlainButton *makeIconButton(Symbol symbol, int size, const QColor &color, const QString &name, const QColor &tint)
{
    auto *button = new PlainButton(
        name, bareLabel(new SymbolIcon(symbol, size, color)),
        {.radius = bareButtonMargin, .hover = theme::faded(tint, 0.07), .pressed = theme::faded(tint, 0.14)});
    button->setToolTip(name);
    return button;
}

PlainButton *makeTextButton(const QString &text, const TextStyle &style, const QColor &color)
{
    return new PlainButton(text, bareLabel((new ElidedLabel(text, style, color))->keptWhole()),
                           {.radius = bareButtonMargin});
}

PlainButton *makeProminentButton(const QString &text, const QColor &tint)
{
    const TextStyle style{.size = 13, .weight = QFont::Medium};
    auto *label = (new ElidedLabel(text, style, Qt::white))->keptWhole();
    return new PlainButton(
        text, hstack({.spacing = 0, .padding = padding(12, 5)}, label),
        {.background = tint, .radius = 6, .hover = theme::white(0.1), .pressed = QColor(0, 0, 0, 40)});
}

} // namespace korvo
