#include "Views/DockIcon.h"

#include "Views/Theme.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPen>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace korvo {

using namespace Qt::StringLiterals;

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

/// Every digit in the room of the widest one, so that the text keeps its width while the minutes pass.
void drawInCells(QPainter &painter, const QRectF &area, const QString &text)
{
    const QFontMetricsF metrics(painter.font(), painter.device());
    double cell = 0;
    for (const auto digit : u"0123456789"_s)
        cell = std::max(cell, metrics.horizontalAdvance(digit));
    const auto widthOf
        = [&](QChar character) { return character.isDigit() ? cell : metrics.horizontalAdvance(character); };
    const double width = std::accumulate(text.begin(), text.end(), 0.0,
                                         [&](double sum, QChar character) { return sum + widthOf(character); });
    double x = area.center().x() - width / 2;
    for (const auto character : text) {
        painter.drawText(QRectF(x, area.top(), widthOf(character), area.height()), Qt::AlignCenter | Qt::TextDontClip,
                         QString(character));
        x += widthOf(character);
    }
}

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
    drawInCells(painter, all, text);
}

} // namespace korvo
