#include "Platform/X11/WindowShape.h"

#include "Platform/X11/X11Connection.h"

#include <QImage>
#include <QPainter>
#include <QTransform>
#include <QWidget>

#include <algorithm>
#include <vector>

#include <xcb/shape.h>

namespace korvo {

namespace {

/// The pixels of which `shape` covers the greater part, as far as they are in a window of `size`, in bands of equal rows.
std::vector<xcb_rectangle_t> rectanglesOf(const QPainterPath &shape, const QSize &size)
{
    QImage coverage(size, QImage::Format_Alpha8);
    coverage.fill(0);
    QPainter painter(&coverage);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(shape, Qt::black);
    painter.end();

    std::vector<xcb_rectangle_t> rectangles;
    std::vector<xcb_rectangle_t> band; // The rectangles of the rows above that are alike.
    for (int y = 0; y < coverage.height(); ++y) {
        const uchar *const line = coverage.constScanLine(y);
        std::vector<xcb_rectangle_t> row;
        for (int x = 0; x < coverage.width(); ++x) {
            if (line[x] < 128)
                continue;
            const int first = x;
            while (x < coverage.width() && line[x] >= 128)
                ++x;
            row.push_back({qint16(first), qint16(y), quint16(x - first), 1});
        }
        const bool isAlike = std::ranges::equal(
            row, band, [](const auto &one, const auto &other) { return one.x == other.x && one.width == other.width; });
        if (isAlike) {
            for (auto &one : band)
                ++one.height;
        } else {
            rectangles.insert(rectangles.end(), band.begin(), band.end());
            band = std::move(row);
        }
    }
    rectangles.insert(rectangles.end(), band.begin(), band.end());
    return rectangles;
}

} // namespace

void setWindowShape(const QWidget &window, const QPainterPath &shape, bool isCut)
{
    auto *const connection = x11Connection();
    if (!connection || !window.internalWinId())
        return;
    const auto id = xcb_window_t(window.internalWinId());
    const double scale = window.devicePixelRatioF();
    const auto rectangles
        = rectanglesOf(QTransform::fromScale(scale, scale).map(shape), (QSizeF(window.size()) * scale).toSize());
    const auto set = [&](xcb_shape_kind_t kind) {
        xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_UNSORTED, id, 0, 0,
                             quint32(rectangles.size()), rectangles.data());
    };
    set(XCB_SHAPE_SK_INPUT);
    if (isCut)
        set(XCB_SHAPE_SK_BOUNDING);
    else
        xcb_shape_mask(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, id, 0, 0, XCB_PIXMAP_NONE);
    xcb_flush(connection);
}

} // namespace korvo
