#include "Views/SymbolArtwork.h"

#include <QLineF>
#include <QPainterPathStroker>
#include <QTransform>

#include <cmath>
#include <initializer_list>
#include <numbers>

namespace korvo {

namespace {

constexpr double lineWidth = 1.6;
constexpr QPointF middle(9, 9);

// Pieces all run the same way round and are filled by winding: where two of them meet they are one, and a piece that
// runs the other way is a hole. Uniting them instead would take milliseconds and turn their curves into lines.

bool runsClockwise(const QPainterPath &piece)
{
    double area = 0;
    const auto outline = piece.toSubpathPolygons();
    for (const auto &polygon : outline) {
        for (int i = 0; i < polygon.size(); ++i) {
            const auto &from = polygon.at(i);
            const auto &to = polygon.at((i + 1) % polygon.size());
            area += from.x() * to.y() - to.x() * from.y();
        }
    }
    return area > 0;
}

QPainterPath clockwise(const QPainterPath &piece)
{
    return runsClockwise(piece) ? piece : piece.toReversed();
}

QPainterPath joined(std::initializer_list<QPainterPath> pieces, const QPainterPath &hole = {})
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    for (const auto &piece : pieces)
        path.addPath(clockwise(piece));
    if (!hole.isEmpty())
        path.addPath(clockwise(hole).toReversed());
    return path;
}

QPainterPath stroked(const QPainterPath &line, double width = lineWidth)
{
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCurveThreshold(0.01);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(line);
}

QPainterPath line(std::initializer_list<QPointF> points)
{
    QPainterPath path;
    for (const auto &point : points) {
        if (path.isEmpty() && path.elementCount() == 0)
            path.moveTo(point);
        else
            path.lineTo(point);
    }
    return path;
}

QPainterPath disc(const QPointF &centre, double radius)
{
    QPainterPath path;
    path.addEllipse(centre, radius, radius);
    return path;
}

QPainterPath roundedRect(const QRectF &rect, double radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

QPainterPath roundedSquare(const QPointF &centre, double side, double radius)
{
    return roundedRect({centre.x() - side / 2, centre.y() - side / 2, side, side}, radius);
}

/// Degrees counter-clockwise from three o'clock.
QPainterPath arc(const QPointF &centre, double radius, double start, double length)
{
    const QRectF circle(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    QPainterPath path;
    path.arcMoveTo(circle, start);
    path.arcTo(circle, start, length);
    return path;
}

/// A triangle that points to the right, with soft corners.
QPainterPath triangle(const QPointF &centre, double size)
{
    QPainterPath path = line(
        {centre + QPointF(-0.42, -0.5) * size, centre + QPointF(0.5, 0) * size, centre + QPointF(-0.42, 0.5) * size});
    path.closeSubpath();
    return joined({path, stroked(path, 0.2 * size)});
}

/// A dial with its crown, a gap at the upper left and a hand that points there.
QPainterPath timer()
{
    const auto dial = stroked(arc(middle, 6.5, 90, -315)); // From twelve o'clock clockwise to half past ten.
    return joined({dial, stroked(line({{9, 2.5}, {9, 4.9}})), stroked(line({{9, 9}, {5.7, 5.7}})), disc(middle, 1.4)});
}

/// Three waves over a dot, and an exclamation mark at the lower right.
QPainterPath wifiExclamationmark()
{
    const QPointF source(8, 14);
    const auto wave = [source](double radius) { return stroked(arc(source, radius, 58, 76)); }; // Leaves the mark room.
    return joined({wave(9.6), wave(6.5), wave(3.4), disc(source, 1.2), roundedRect({14.4, 7.6, 1.8, 5.2}, 0.9),
                   disc({15.3, 14.9}, 1.1)});
}

/// A square with a gap at its upper right, through which an arrow leaves.
QPainterPath arrowUpRightSquare()
{
    QPainterPath frame(QPointF(9.2, 3.4));
    frame.lineTo(5.4, 3.4);
    frame.quadTo(2.8, 3.4, 2.8, 6);
    frame.lineTo(2.8, 12.6);
    frame.quadTo(2.8, 15.2, 5.4, 15.2);
    frame.lineTo(12, 15.2);
    frame.quadTo(14.6, 15.2, 14.6, 12.6);
    frame.lineTo(14.6, 8.8);
    return joined({stroked(frame), stroked(line({{8.2, 9.8}, {15.4, 2.6}})),
                   stroked(line({{11.4, 2.6}, {15.4, 2.6}, {15.4, 6.6}}))});
}

/// A wheel of eight teeth with soft corners. Softened by a stroke it would get bolder in small sizes.
QPainterPath outlineOfGear(const QPointF &centre, double radius)
{
    constexpr int teeth = 8;
    constexpr double corners[]
        = {-0.31, -0.19, 0.19, 0.31}; // Parts of a tooth's angle: foot, shoulder, shoulder, foot.
    constexpr double softness = 0.07;
    const auto cornerAt = [&](int index) {
        const double angle = 2 * std::numbers::pi * (index / 4 + corners[index % 4]) / teeth;
        const double reach = index % 4 == 1 || index % 4 == 2 ? radius : 0.76 * radius;
        return centre + reach * QPointF(std::sin(angle), -std::cos(angle));
    };
    const auto towards = [&](const QPointF &from, const QPointF &to) {
        const QLineF way(from, to);
        return way.pointAt(softness * radius / way.length());
    };
    constexpr int count = 4 * teeth;
    QPainterPath outline(towards(cornerAt(0), cornerAt(count - 1)));
    for (int i = 0; i < count; ++i) {
        outline.lineTo(towards(cornerAt(i), cornerAt((i + count - 1) % count)));
        outline.quadTo(cornerAt(i), towards(cornerAt(i), cornerAt((i + 1) % count)));
    }
    outline.closeSubpath();
    return outline;
}

QPainterPath gear(const QPointF &centre, double radius)
{
    return joined({outlineOfGear(centre, radius)}, disc(centre, 0.4 * radius));
}

/// The same wheel, cut out around a dot at its upper right.
QPainterPath gearBadge()
{
    constexpr double fineness = 64; // The cut turns curves into lines, too short to be seen at this size.
    const auto larger = QTransform::fromScale(fineness, fineness);
    const QPointF badge(14.4, 3.9);
    const auto wheel = larger.map(gear({8.4, 9.6}, 7.2)).subtracted(larger.map(disc(badge, 4.1)));
    auto path = larger.inverted().map(wheel);
    path.addPath(disc(badge, 2.9)); // Apart from the wheel, so the way it runs is of no matter.
    return path;
}

/// A ring, open at the top, and a stroke through the opening.
QPainterPath power()
{
    return joined({stroked(arc({9, 9.8}, 6.2, 90 - 38, -284)), stroked(line({{9, 2.2}, {9, 9}}))});
}

QPainterPath ellipse(const QPointF &centre, double radiusX, double radiusY)
{
    QPainterPath path;
    path.addEllipse(centre, radiusX, radiusY);
    return path;
}

/// A band along an ellipse, without the seam that a stroke has.
QPainterPath band(const QPointF &centre, double radiusX, double radiusY, double width)
{
    const double half = width / 2;
    return joined({ellipse(centre, radiusX + half, radiusY + half)}, ellipse(centre, radiusX - half, radiusY - half));
}

/// Pieces that are bands already keep their own holes.
QPainterPath together(std::initializer_list<QPainterPath> pieces)
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    for (const auto &piece : pieces)
        path.addPath(piece);
    return path;
}

/// A globe: its outline, a meridian, the axis and the equator.
QPainterPath network()
{
    constexpr double thin = 1.3;
    return together({band(middle, 6.9, 6.9, thin), band(middle, 3.0, 6.9, thin),
                     clockwise(stroked(line({{9, 2.4}, {9, 15.6}}), thin)),
                     clockwise(stroked(line({{2.4, 9}, {15.6, 9}}), thin))});
}

/// A dial with its hands at three o'clock.
QPainterPath clock()
{
    return together({band(middle, 6.8, 6.8, 1.5), clockwise(stroked(line({{9, 5}, {9, 9}, {12.4, 9}}), 1.5))});
}

/// Two lines with a tick before each.
QPainterPath checklist()
{
    const auto tick = [](double y) { return stroked(line({{1.9, y}, {3.4, y + 1.6}, {6.3, y - 2}}), 1.5); };
    const auto words = [](double y) { return stroked(line({{9, y}, {16, y}})); };
    return joined({tick(5), words(5), tick(13), words(13)});
}

/// A wheel of eight teeth in outline, and its hub.
QPainterPath gearshape()
{
    const auto wheel = stroked(outlineOfGear(middle, 7.1), 1.4);
    return together({wheel, band(middle, 2.5, 2.5, 1.4)});
}

/// The corners of a line of that width, to be cut out of something: a stroke with round ends would lie on itself.
QPainterPath tickShape(double width)
{
    const QPointF from(5.5, 9.3);
    const QPointF turn(8, 11.8);
    const QPointF to(12.6, 6.4);
    const auto across = [width](const QPointF &a, const QPointF &b) {
        const QLineF way(a, b);
        return QPointF(-way.dy(), way.dx()) / way.length() * width / 2;
    };
    const auto first = across(from, turn);
    const auto second = across(turn, to);
    // Where the two edges meet, on either side of the turn.
    const auto corner = [&](double side) {
        QPointF meeting;
        QLineF(from + side * first, turn + side * first)
            .intersects(QLineF(turn + side * second, to + side * second), &meeting);
        return meeting;
    };
    auto path = line({from + first, corner(1), to + second, to - second, corner(-1), from - first});
    path.closeSubpath();
    return path;
}

QPainterPath crossShape(double reach, double width)
{
    const double half = width / 2;
    const auto path = line({{-half, -reach},
                            {half, -reach},
                            {half, -half},
                            {reach, -half},
                            {reach, half},
                            {half, half},
                            {half, reach},
                            {-half, reach},
                            {-half, half},
                            {-reach, half},
                            {-reach, -half},
                            {-half, -half}});
    auto closed = path;
    closed.closeSubpath();
    return QTransform::fromTranslate(middle.x(), middle.y()).rotate(45).map(closed);
}

/// A ring around a plus sign.
QPainterPath plusCircle()
{
    constexpr double reach = 3.4;
    return joined({stroked(arc(middle, 7, 0, 360)), stroked(line({{9 - reach, 9}, {9 + reach, 9}})),
                   stroked(line({{9, 9 - reach}, {9, 9 + reach}}))});
}

} // namespace

QPainterPath symbolArtwork(Symbol symbol)
{
    switch (symbol) {
    case Symbol::timer:
        return timer();
    case Symbol::wifiExclamationmark:
        return wifiExclamationmark();
    case Symbol::stopFill:
        return roundedSquare(middle, 13, 2.4);
    case Symbol::arrowUpRightSquare:
        return arrowUpRightSquare();
    case Symbol::gear:
        return gear(middle, 7.8);
    case Symbol::gearBadge:
        return gearBadge();
    case Symbol::power:
        return power();
    case Symbol::playFill:
        return triangle({9, 9}, 12);
    case Symbol::stopCircleFill:
        return joined({disc(middle, 7.8)}, roundedSquare(middle, 5.6, 1));
    case Symbol::playCircle:
        return joined({stroked(arc(middle, 7, 0, 360)), triangle({9.3, 9}, 5.6)});
    case Symbol::network:
        return network();
    case Symbol::clock:
        return clock();
    case Symbol::checklist:
        return checklist();
    case Symbol::gearshape:
        return gearshape();
    case Symbol::checkmarkCircleFill:
        return joined({disc(middle, 7.8)}, tickShape(1.7));
    case Symbol::xmarkCircleFill:
        return joined({disc(middle, 7.8)}, crossShape(4.1, 1.7));
    case Symbol::plusCircle:
        return plusCircle();
    }
    return {};
}

} // namespace korvo
