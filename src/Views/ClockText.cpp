#include "Views/ClockText.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace korvo {

using namespace Qt::StringLiterals;

// QLabel for its role of a static text; its own text would be laid out at each change.
ClockText::ClockText(const QFont &font, const QColor &color, QWidget *parent) : QLabel(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFont(font);
    setInk(*this, color);
}

void ClockText::setTime(const QString &time)
{
    if (time == m_time)
        return;
    const bool isOfOtherLength = time.size() != m_time.size();
    m_time = time;
    setAccessibleName(time);
    if (isOfOtherLength)
        updateGeometry();
    update();
}

double ClockText::cellWidth(QChar character) const
{
    const QFontMetricsF metrics(font());
    if (!character.isDigit())
        return metrics.horizontalAdvance(character);
    double widest = 0;
    for (const auto digit : u"0123456789"_s)
        widest = std::max(widest, metrics.horizontalAdvance(digit));
    return widest;
}

QSize ClockText::sizeHint() const
{
    double width = 0;
    for (const auto character : m_time)
        width += cellWidth(character);
    return {int(std::ceil(width)), int(std::ceil(QFontMetricsF(font()).height()))};
}

void ClockText::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    double x = 0;
    for (const auto character : m_time) {
        const double width = cellWidth(character);
        painter.drawText(QRectF(x, 0, width, height()), Qt::AlignCenter | Qt::TextDontClip, QString(character));
        x += width;
    }
}

} // namespace korvo
