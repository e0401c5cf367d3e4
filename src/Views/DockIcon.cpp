#include "Views/DockIcon.h"

#include "Views/Theme.h"

#include <QFont>
#include <QPainter>
#include <QPen>

#include <algorithm>
#include <cmath>

namespace korvo {

namespace {

constexpr double margin = 12;
constexpr double cornerRadius = 22;
constexpr double groundLevel = 0.08;
constexpr double ringRadius = 38;
constexpr double ringWidth = 5;
constexpr double trackAlpha = 0.2;
constexpr int textSize = 22;
constexpr double secondsPerHour = 3600;
constexpr double leastProgress = 0.01;
constexpr int sixteenths = 16; // The unit of QPainter's angles.

} // namespace

void drawDockIcon(QPainter &painter, const QSizeF &size, const QString &text, const QColor &ringColor, double elapsed)
{
    const QRectF all(QPointF(), size);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgbF(float(groundLevel), float(groundLevel), float(groundLevel)));
    painter.drawRoundedRect(all.adjusted(margin, margin, -margin, -margin), cornerRadius, cornerRadius);

    const QPointF centre = all.center();
    const QRectF circle(centre.x() - ringRadius, centre.y() - ringRadius, 2 * ringRadius, 2 * ringRadius);
    QColor track = ringColor;
    track.setAlphaF(float(trackAlpha));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(track, ringWidth));
    painter.drawEllipse(circle);

    const double progress = std::clamp(std::fmod(elapsed, secondsPerHour) / secondsPerHour, leastProgress, 1.0);
    painter.setPen(QPen(ringColor, ringWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(circle, 90 * sixteenths, int(std::lround(-360 * progress * sixteenths)));

    QFont font = painter.font();
    font.setPixelSize(textSize);
    font.setWeight(QFont::Bold);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(all, Qt::AlignCenter | Qt::TextSingleLine, text);
}

} // namespace korvo
