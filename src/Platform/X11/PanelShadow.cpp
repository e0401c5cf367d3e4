#include "Platform/X11/PanelShadow.h"

#include "Utilities/BoxBlur.h"

#include <QPainter>

namespace korvo {

namespace {

constexpr double opacity = 0.42;
constexpr double drop = 8;       // How much lower than the shape the shadow lies.
constexpr double blurRadius = 7; // Of each pass; three of them are close to a Gaussian, and reach three times as far.

} // namespace

QImage panelShadow(const QPainterPath &shape, const QSize &size, double scale)
{
    QImage alpha((QSizeF(size) * scale).toSize(), QImage::Format_Alpha8);
    if (alpha.isNull())
        return {};
    alpha.setDevicePixelRatio(scale);
    alpha.fill(0);
    {
        QPainter painter(&alpha);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillPath(shape.translated(0, drop), QColor::fromRgbF(0, 0, 0, float(opacity)));
    }
    boxBlur(alpha.bits(), alpha.width(), alpha.height(), alpha.bytesPerLine(), qRound(blurRadius * scale));
    QPainter painter(&alpha);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.fillPath(shape, Qt::black);
    painter.end();
    return alpha;
}

} // namespace korvo
