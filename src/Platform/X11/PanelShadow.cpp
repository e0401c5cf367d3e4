#include "Platform/X11/PanelShadow.h"

#include <QPainter>

#include <algorithm>
#include <vector>

namespace korvo {

namespace {

constexpr double opacity = 0.42;
constexpr double drop = 8;       // How much lower than the shape the shadow lies.
constexpr double blurRadius = 7; // Of each pass; three of them are close to a Gaussian, and reach three times as far.
constexpr int passCount = 3;

/// Replaces each of `count` values, `step` bytes apart, by the mean of those up to `radius` away.
void blurLine(uchar *line, int count, qsizetype step, int radius, std::vector<uchar> &former)
{
    for (int i = 0; i < count; ++i)
        former[size_t(i)] = line[i * step];
    const int width = 2 * radius + 1;
    int sum = 0;
    for (int i = 0; i < qMin(radius, count); ++i)
        sum += former[size_t(i)];
    for (int i = 0; i < count; ++i) {
        if (i + radius < count)
            sum += former[size_t(i + radius)];
        if (i - radius - 1 >= 0)
            sum -= former[size_t(i - radius - 1)];
        line[i * step] = uchar(sum / width);
    }
}

void blur(QImage &alpha, int radius)
{
    std::vector<uchar> former(size_t(std::max(alpha.width(), alpha.height())));
    for (int pass = 0; pass < passCount; ++pass) {
        for (int y = 0; y < alpha.height(); ++y)
            blurLine(alpha.scanLine(y), alpha.width(), 1, radius, former);
        for (int x = 0; x < alpha.width(); ++x)
            blurLine(alpha.bits() + x, alpha.height(), alpha.bytesPerLine(), radius, former);
    }
}

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
    blur(alpha, qRound(blurRadius * scale));
    QPainter painter(&alpha);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.fillPath(shape, Qt::black);
    painter.end();
    return alpha;
}

} // namespace korvo
