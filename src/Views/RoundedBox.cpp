#include "Views/RoundedBox.h"

#include "Views/Stack.h"

#include <QPainter>

namespace korvo {

RoundedBox::RoundedBox(const QColor &color, double radius, QWidget *parent) :
    QWidget(parent),
    m_color(color),
    m_radius(radius)
{
}

void RoundedBox::setColor(const QColor &color)
{
    if (color == m_color)
        return;
    m_color = color;
    update();
}

void RoundedBox::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_color);
    painter.drawRoundedRect(rect(), m_radius, m_radius);
}

RoundedBox *makeDot(int diameter, const QColor &color)
{
    auto *dot = new RoundedBox(color, diameter / 2.0);
    dot->setFixedSize(diameter, diameter);
    return dot;
}

QWidget *makeRule(const QColor &color, int horizontalPadding)
{
    auto *line = new RoundedBox(color);
    line->setFixedHeight(1);
    return section(QStringLiteral("rule"), vstack({.spacing = 0, .padding = padding(horizontalPadding, 0)}, line));
}

} // namespace korvo
