#include "Views/ActivityRing.h"

#include <QPainter>
#include <QPen>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr QSizeF ringSize{18, 18};
constexpr double radius = 6.5;
constexpr double lineWidth = 2.5;
constexpr double trackAlpha = 0.2;
constexpr double dotDiameter = 3;
constexpr double leastProgress = 0.01;
constexpr int sixteenths = 16; // The unit of QPainter's angles.

// The tip moves a pixel in 33 to 88 seconds, by the size of the tray: nobody sees a step of 10 seconds, one degree.
constexpr int stepsPerHour = 360;

void drawRing(QPainter &painter, const QSizeF &size, double progress, const QColor &color)
{
    const QPointF centre(size.width() / 2, size.height() / 2);
    const QRectF circle(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    const double endAngle = 90 - 360 * progress; // Degrees, counter-clockwise from three o'clock.

    QColor track = color;
    track.setAlphaF(float(trackAlpha));
    QPen pen(track, lineWidth, Qt::SolidLine, Qt::RoundCap);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(pen);
    painter.drawEllipse(circle);

    pen.setColor(color);
    painter.setPen(pen);
    painter.drawArc(circle, 90 * sixteenths, int(std::lround(-360 * progress * sixteenths)));

    const double radians = endAngle * std::numbers::pi / 180;
    const QPointF tip = centre + radius * QPointF(std::cos(radians), -std::sin(radians));
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(tip, dotDiameter / 2, dotDiameter / 2);
}

} // namespace

StatusImage makeActivityRingImage(double progress, const QColor &color)
{
    const double shown = std::clamp(progress, leastProgress, 1.0);
    const auto step = int(std::lround(shown * stepsPerHour));
    return {
        .key = u"ring %1 %2"_s.arg(color.name()).arg(step),
        .description = {},
        .size = ringSize,
        .draw = [shown, color](QPainter &painter, const QSizeF &size) { drawRing(painter, size, shown, color); },
    };
}

} // namespace korvo
