#include "Views/ProgressRing.h"

#include "Views/Theme.h"
#include "Views/TimerFigures.h"

#include <QPainter>
#include <QPen>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvo {

namespace {

constexpr double trackOpacity = 0.15;
constexpr double glowOpacity = 0.5;
constexpr double glowRadius = 3;
constexpr int glowSteps = 4;
constexpr int sixteenths = 16; // The unit of QPainter's angles.

} // namespace

ProgressRing::ProgressRing(double size, double lineWidth, QWidget *parent) :
    QWidget(parent),
    m_size(size),
    m_lineWidth(lineWidth),
    m_overflow(int(std::ceil(lineWidth / 2 + glowRadius))),
    m_color(ringColor(0))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize ProgressRing::sizeHint() const
{
    const int side = int(std::ceil(m_size)) + 2 * m_overflow;
    return {side, side};
}

void ProgressRing::setElapsed(double elapsed)
{
    m_progress = std::clamp(hourProgress(elapsed), 0.0, 1.0);
    const auto color = ringColor(elapsed);
    const double quarterPixels = 4 * std::numbers::pi * m_size * devicePixelRatioF();
    // At the least a step of 1, so that the first moment of an hour differs from an empty ring.
    const int step = m_progress > 0 ? 1 + int(m_progress * quarterPixels) : 0;
    if (step == m_shownStep && color == m_color)
        return;
    m_shownStep = step;
    m_color = color;
    update();
}

void ProgressRing::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF centre(width() / 2.0, height() / 2.0);
    const QRectF circle(centre.x() - m_size / 2, centre.y() - m_size / 2, m_size, m_size);

    painter.setPen(QPen(theme::faded(m_color, trackOpacity), m_lineWidth));
    painter.drawEllipse(circle);
    if (m_progress <= 0)
        return;

    const auto drawArc = [&](const QColor &color, double lineWidth) {
        painter.setPen(QPen(color, lineWidth, Qt::SolidLine, Qt::RoundCap));
        // A length of nothing would be the whole circle to no one, but draws no cap either.
        const int length = std::max(1, int(std::lround(m_progress * 360 * sixteenths)));
        painter.drawArc(circle, 90 * sixteenths, -length);
    };
    // Translucent lines of falling width stand for a blurred copy.
    for (int i = glowSteps; i > 0; --i)
        drawArc(theme::faded(m_color, glowOpacity / (2 * glowSteps)), m_lineWidth + 2 * glowRadius * i / glowSteps);
    drawArc(m_color, m_lineWidth);
}

} // namespace korvo
