#include "Platform/Freedesktop/StatusPicture.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>

#include <algorithm>
#include <functional>
#include <numeric>
#include <vector>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr QColor lightInk(0xf2, 0xf2, 0xf2);
constexpr QColor darkInk(0x30, 0x30, 0x30);
constexpr double rimOpacity = 0.4; // Of each of the shifted copies: where two of them meet it is nearly opaque.
constexpr int bandHeight = 4;      // In pixels.

/// Calls `draw` for one band of `picture` after the other, with a painter that is confined to it. Qt's raster engine
/// gives a translucent fill of 96 spans and more to a pool of threads, and a picture for the tray is not worth waking
/// any.
void paintInBands(QImage &picture, const std::function<void(QPainter &)> &draw)
{
    for (int y = 0; y < picture.height(); y += bandHeight) {
        QPainter painter(&picture);
        painter.setClipRect(0, y, picture.width(), bandHeight);
        draw(painter);
    }
}

/// The shape that `draw` leaves on a transparent picture, all of it in `color`.
QImage shapeOf(const QSize &size, double ratio, const QColor &color, const std::function<void(QPainter &)> &draw)
{
    QImage shape(size, QImage::Format_ARGB32_Premultiplied);
    shape.setDevicePixelRatio(ratio);
    shape.fill(Qt::transparent);
    QPainter painter(&shape);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRectF(QPointF(), QSizeF(size) / ratio), color);
    return shape;
}

/// Paints the shape of what `draw` paints into the box of `target`'s size, in an ink that reads on `backdrop`.
void paintInked(QPainter &painter, const QRectF &target, Backdrop backdrop, const std::function<void(QPainter &)> &draw)
{
    const double ratio = painter.device()->devicePixelRatioF();
    const QSize size = (target.size() * ratio).toSize().expandedTo({1, 1});
    if (backdrop == Backdrop::unknown) {
        const QImage rim = shapeOf(size, ratio, darkInk, draw);
        const double step = 1 / ratio;
        painter.save();
        painter.setOpacity(rimOpacity);
        for (const QPointF &way : {QPointF(-1, 0), QPointF(1, 0), QPointF(0, -1), QPointF(0, 1), QPointF(-0.7, -0.7),
                                   QPointF(0.7, -0.7), QPointF(-0.7, 0.7), QPointF(0.7, 0.7)})
            painter.drawImage(target.topLeft() + way * step, rim);
        painter.restore();
    }
    const QColor ink = backdrop == Backdrop::light ? darkInk : lightInk;
    painter.drawImage(target.topLeft(), shapeOf(size, ratio, ink, draw));
}

/// The room of each character: in many fonts a 1 is narrower than the other digits, here it is not.
QList<double> cellWidths(const QFont &font, const QString &text)
{
    const QFontMetricsF metrics(font);
    double widest = 0;
    for (const QChar digit : u"0123456789"_s)
        widest = std::max(widest, metrics.horizontalAdvance(digit));
    QList<double> widths;
    for (const QChar character : text)
        widths.append(character.isDigit() ? widest : metrics.horizontalAdvance(character));
    return widths;
}

} // namespace

Backdrop backdropOf(const QImage &sample)
{
    std::vector<int> lights;
    lights.reserve(size_t(sample.width()) * size_t(sample.height()));
    for (int y = 0; y < sample.height(); ++y) {
        for (int x = 0; x < sample.width(); ++x)
            lights.push_back(qGray(sample.pixel(x, y)));
    }
    if (std::ranges::all_of(lights, [](int light) { return light == 0; }))
        return Backdrop::unknown;
    const auto middle = lights.begin() + std::ssize(lights) / 2;
    std::ranges::nth_element(lights, middle);
    return *middle < 128 ? Backdrop::dark : Backdrop::light;
}

void paintStatusImage(QPainter &painter, const QRectF &target, const StatusImage &image, Backdrop backdrop)
{
    if (!image.draw || image.size.isEmpty() || target.isEmpty())
        return;
    const double scale = qMin(target.width() / image.size.width(), target.height() / image.size.height());
    QRectF place(QPointF(), image.size * scale);
    place.moveCenter(target.center());
    const auto draw = [&image, scale](QPainter &on) {
        on.scale(scale, scale);
        image.draw(on, image.size);
    };

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (image.isTemplate) {
        paintInked(painter, place, backdrop, draw);
    } else {
        painter.translate(place.topLeft());
        draw(painter);
    }
    painter.restore();
}

QImage renderStatusImage(const StatusImage &image, int side, Backdrop backdrop)
{
    QImage picture(side, side, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    if (image.isTemplate) {
        QPainter painter(&picture);
        paintStatusImage(painter, picture.rect(), image, backdrop);
    } else {
        paintInBands(picture,
                     [&](QPainter &painter) { paintStatusImage(painter, QRectF(0, 0, side, side), image, backdrop); });
    }
    return picture;
}

double statusTextWidth(const QFont &font, const QString &text)
{
    const auto widths = cellWidths(font, text);
    return std::accumulate(widths.begin(), widths.end(), 0.0);
}

void paintStatusText(QPainter &painter, const QRectF &target, const QString &text, Backdrop backdrop)
{
    const QFont font = painter.font();
    const auto widths = cellWidths(font, text);
    paintInked(painter, target, backdrop, [&](QPainter &on) {
        on.setFont(font);
        double x = 0;
        for (qsizetype i = 0; i < text.size(); ++i) {
            on.drawText(QRectF(x, 0, widths[i], target.height()),
                        Qt::AlignCenter | Qt::TextSingleLine | Qt::TextDontClip, text.mid(i, 1));
            x += widths[i];
        }
    });
}

} // namespace korvo
