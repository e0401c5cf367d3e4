#include "Platform/Freedesktop/StatusButton.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

namespace korvo {

namespace {

constexpr int usualThickness = 24; // Of a bar that reserves no room, as one that hides itself.
constexpr int nearDistance = 48;   // Of a hint that can mean the button under the pointer.

/// The bar of a screen against one of its edges.
struct Bar {
    QRect area;
    bool isUpright = false;
};

QList<Bar> reservedBars(const BarScreen &screen)
{
    const QRect &all = screen.geometry;
    const QRect rest = screen.available & all;
    if (rest.isEmpty())
        return {};
    QList<Bar> bars;
    if (rest.top() > all.top())
        bars.append({QRect(all.left(), all.top(), all.width(), rest.top() - all.top()), false});
    if (rest.bottom() < all.bottom())
        bars.append({QRect(all.left(), rest.bottom() + 1, all.width(), all.bottom() - rest.bottom()), false});
    if (rest.left() > all.left())
        bars.append({QRect(all.left(), all.top(), rest.left() - all.left(), all.height()), true});
    if (rest.right() < all.right())
        bars.append({QRect(rest.right() + 1, all.top(), all.right() - rest.right(), all.height()), true});
    return bars;
}

/// A bar of the usual thickness at each edge.
QList<Bar> possibleBars(const QRect &all)
{
    const int thickness = usualThickness;
    return {{QRect(all.left(), all.top(), all.width(), thickness), false},
            {QRect(all.left(), all.bottom() + 1 - thickness, all.width(), thickness), false},
            {QRect(all.left(), all.top(), thickness, all.height()), true},
            {QRect(all.right() + 1 - thickness, all.top(), thickness, all.height()), true}};
}

std::optional<Bar> barAt(const QPoint &point, const QList<BarScreen> &screens)
{
    for (const BarScreen &screen : screens) {
        if (!screen.geometry.contains(point))
            continue;
        for (const auto &bars : {reservedBars(screen), possibleBars(screen.geometry)}) {
            for (const Bar &bar : bars) {
                if (bar.area.contains(point))
                    return bar;
            }
        }
    }
    return std::nullopt;
}

QRect squareOn(const Bar &bar, const QPoint &middle)
{
    const QRect &area = bar.area;
    if (bar.isUpright) {
        const int side = area.width();
        const int top = qBound(area.top(), middle.y() - side / 2, qMax(area.top(), area.bottom() + 1 - side));
        return {area.left(), top, side, side};
    }
    const int side = area.height();
    const int left = qBound(area.left(), middle.x() - side / 2, qMax(area.left(), area.right() + 1 - side));
    return {left, area.top(), side, side};
}

} // namespace

QRect statusButton(const std::optional<QPoint> &hint, const QPoint &pointer, const QList<BarScreen> &screens)
{
    if (screens.isEmpty())
        return {pointer, QSize(1, 1)};
    if (hint) {
        const QPoint point = toLogical(*hint, screens);
        const QPoint away = point - pointer;
        if (qMax(qAbs(away.x()), qAbs(away.y())) <= nearDistance) {
            if (const auto bar = barAt(point, screens))
                return squareOn(*bar, point);
        }
    }
    if (const auto bar = barAt(pointer, screens))
        return squareOn(*bar, pointer);

    const BarScreen &first = screens.first();
    const auto bars = reservedBars(first);
    const Bar bar = bars.isEmpty() ? possibleBars(first.geometry).first() : bars.first();
    return squareOn(bar, bar.area.bottomRight());
}

QRect statusButton(const std::optional<QPoint> &hint)
{
    return statusButton(hint, QCursor::pos(), barScreens());
}

QPoint toLogical(const QPoint &native, const QList<BarScreen> &screens)
{
    for (const BarScreen &screen : screens) {
        const QRect device(screen.geometry.topLeft(), screen.geometry.size() * screen.scale);
        if (device.contains(native))
            return device.topLeft() + (native - device.topLeft()) / screen.scale;
    }
    return native;
}

std::optional<QRect> desktopBar(const QList<BarScreen> &screens)
{
    for (const BarScreen &screen : screens) {
        const auto bars = reservedBars(screen);
        if (!bars.isEmpty())
            return bars.first().area;
    }
    return std::nullopt;
}

QList<BarScreen> barScreens()
{
    QList<BarScreen> screens;
    for (const QScreen *screen : QGuiApplication::screens()) {
        const BarScreen one{screen->geometry(), screen->availableGeometry(), screen->devicePixelRatio()};
        screen == QGuiApplication::primaryScreen() ? screens.prepend(one) : screens.append(one);
    }
    return screens;
}

} // namespace korvo
