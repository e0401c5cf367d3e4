#include "Views/BusyIndicator.h"

#include "Views/Theme.h"

#include <QPainter>
#include <QPen>

#include <chrono>

namespace korvo {

using namespace std::chrono_literals;

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
    m_timer.setInterval(100ms); // A turn in 0.8 seconds.
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % spokes;
        update();
    });
}

void BusyIndicator::showEvent(QShowEvent *)
{
    m_timer.start();
}

void BusyIndicator::hideEvent(QHideEvent *)
{
    m_timer.stop();
}

void BusyIndicator::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    painter.rotate(360.0 / spokes * m_step);
    for (int i = 0; i < spokes; ++i) {
        painter.rotate(360.0 / spokes);
        const double opacity = palest + (1 - palest) * i / (spokes - 1);
        painter.setPen(QPen(theme::faded(m_color, opacity), m_size / 10.0, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -0.22 * m_size), QPointF(0, -0.4 * m_size));
    }
}

} // namespace korvo
