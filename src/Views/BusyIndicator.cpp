#include "Views/BusyIndicator.h"

#include "Views/Theme.h"

#include <QPainter>
#include <QPen>

#include <algorithm>

namespace korvo {

namespace {

constexpr int spokes = 8;
constexpr double palest = 0.2;

} // namespace

BusyIndicator::BusyIndicator(const QColor &color, int size, QWidget *parent) :
    QWidget(parent),
    m_color(color),
    m_size(size)
{
    setFixedSize(size, size);
    setAccessibleName(tr("Busy"));
    m_timer.setInterval(spokeInterval);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % spokes;
        update();
    });
}

void BusyIndicator::showEvent(QShowEvent *)
{
    m_step = 0;
    m_timer.start();
}

void BusyIndicator::hideEvent(QHideEvent *)
{
    m_timer.stop();
}

void BusyIndicator::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawSpokes(painter, rect(), m_color.isValid() ? m_color : palette().color(QPalette::Active, QPalette::WindowText),
               m_step);
}

void drawSpokes(QPainter &painter, const QRectF &rect, const QColor &color, int step)
{
    const double size = std::min(rect.width(), rect.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center());
    painter.rotate(360.0 / spokes * (step % spokes));
    for (int i = 0; i < spokes; ++i) {
        painter.rotate(360.0 / spokes);
        const double opacity = palest + (1 - palest) * i / (spokes - 1);
        painter.setPen(QPen(theme::faded(color, opacity), size / 10.0, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -0.22 * size), QPointF(0, -0.4 * size));
    }
    painter.restore();
}

} // namespace korvo
