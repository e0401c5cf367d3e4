#include "Views/DockIcon.h"

#include "Views/Theme.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
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

/// The outlines of `text` around `centre`, every digit in the room of the widest one, so that the text keeps its width
/// while the minutes pass. Outlines of one size serve all sizes of the icon: a font of its own for each would stay in
/// memory.
QPainterPath outlineInCells(const QPointF &centre, const QString &text, const QFont &font)
{
    const QFontMetricsF metrics(font);
    double cell = 0;
    for (const auto digit : u"0123456789"_s)
        cell = std::max(cell, metrics.horizontalAdvance(digit));
    const auto widthOf
        = [&](QChar character) { return character.isDigit() ? cell : metrics.horizontalAdvance(character); };
    const double width = std::accumulate(text.begin(), text.end(), 0.0,
                                         [&](double sum, QChar character) { return sum + widthOf(character); });
    const double baseline = centre.y() - metrics.height() / 2 + metrics.ascent();
    double x = centre.x() - width / 2;
    QPainterPath outline;
    outline.setFillRule(Qt::WindingFill);
    for (const auto character : text) {
        const double margins = widthOf(character) - metrics.horizontalAdvance(character);
        outline.addText(x + margins / 2, baseline, font, QString(character));
        x += widthOf(character);
    }
    return outline;
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

    QFont font;
    font.setPixelSize(textSize);
    font.setWeight(QFont::Bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    painter.fillPath(outlineInCells(centre, text, font), Qt::white);
}

} // namespace korvo
