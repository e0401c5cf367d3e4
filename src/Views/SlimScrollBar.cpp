#include "Views/SlimScrollBar.h"

#include "Views/Theme.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace korvo {

namespace {

constexpr double margin = 2;
constexpr double leastLength = 24;

} // namespace

SlimScrollBar::SlimScrollBar(QScrollBar &steered, QWidget *parent) : QWidget(parent), m_steered(steered)
{
    setAttribute(Qt::WA_Hover);
    connect(&steered, &QScrollBar::valueChanged, this, qOverload<>(&QWidget::update));
    connect(&steered, &QScrollBar::rangeChanged, this, &SlimScrollBar::follow);
    follow();
}

void SlimScrollBar::follow()
{
    setVisible(m_steered.maximum() > 0);
    update();
}

QRectF SlimScrollBar::thumb() const
{
    const double room = height() - 2 * margin;
    const double whole = m_steered.maximum() + m_steered.pageStep();
    const double length = std::min(room, std::max(leastLength, room * m_steered.pageStep() / whole));
    const double top = margin + (room - length) * m_steered.value() / std::max(1, m_steered.maximum());
    return {margin, top, SlimScrollBar::width - 2 * margin, length};
}

void SlimScrollBar::mousePressEvent(QMouseEvent *event)
{
    const auto place = thumb();
    const double y = event->position().y();
    if (y < place.top())
        m_steered.triggerAction(QAbstractSlider::SliderPageStepSub);
    else if (y > place.bottom())
        m_steered.triggerAction(QAbstractSlider::SliderPageStepAdd);
    else
        m_grip = y - place.top();
}

void SlimScrollBar::mouseMoveEvent(QMouseEvent *event)
{
    const double travel = height() - 2 * margin - thumb().height();
    if (!m_grip || travel <= 0)
        return;
    const double top = event->position().y() - *m_grip - margin;
    m_steered.setValue(int(std::lround(top / travel * m_steered.maximum())));
}

void SlimScrollBar::mouseReleaseEvent(QMouseEvent *)
{
    m_grip.reset();
    update();
}

void SlimScrollBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme::white(m_grip || underMouse() ? 0.4 : 0.2));
    const auto place = thumb();
    painter.drawRoundedRect(place, place.width() / 2, place.width() / 2);
}

} // namespace korvo
