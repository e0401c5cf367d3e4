#include "Views/ShortcutField.h"

#include "Views/Theme.h"

#include <QAccessible>
#include <QPainter>
#include <QPen>

#include <algorithm>

namespace korvo {

namespace {

constexpr int horizontalPadding = 10;
constexpr int verticalPadding = 6;
constexpr int leastWidth = 100;
constexpr double radius = 6;
constexpr double accentOpacity = 0.1;

} // namespace

ShortcutField::ShortcutField(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ShortcutField::setHighlighted(bool isHighlighted)
{
    if (isHighlighted == m_isHighlighted)
        return;
    m_isHighlighted = isHighlighted;
    update();
    QAccessibleEvent event(this, QAccessible::Alert); // What it says now is to be read out.
    QAccessible::updateAccessibility(&event);
}

QSize ShortcutField::sizeHint() const
{
    const auto metrics = fontMetrics();
    return {std::max(leastWidth, metrics.horizontalAdvance(text()) + 2 * horizontalPadding),
            metrics.height() + 2 * verticalPadding};
}

void ShortcutField::paintEvent(QPaintEvent *)
{
    const auto accent = palette().color(QPalette::Active, QPalette::Highlight);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(m_isHighlighted ? theme::faded(accent, accentOpacity)
                                     : palette().color(QPalette::Active, QPalette::Base));
    painter.setPen(QPen(m_isHighlighted ? accent : theme::separatorOn(palette()), 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setPen(m_isHighlighted ? accent : palette().color(QPalette::Active, QPalette::WindowText));
    painter.drawText(rect().adjusted(horizontalPadding, 0, -horizontalPadding, 0),
                     int(Qt::AlignLeading | Qt::AlignVCenter), text());
}

} // namespace korvo
