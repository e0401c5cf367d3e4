#pragma once

#include "Platform/StatusImage.h"

#include <QImage>
#include <QList>
#include <QRectF>

class QFont;
class QPainter;

namespace korvo {

/// The side lengths in pixels at which trays show their items.
inline const QList<int> statusPictureSizes{16, 22, 24, 32, 48};

/// What lies behind a picture, as far as that is known.
enum class Backdrop { unknown, dark, light };

/// Whether most of `sample`, a piece of the screen, is dark or light. Nothing at all, and nothing but black, is what
/// comes back where programs may not see the screen: unknown.
Backdrop backdropOf(const QImage &sample);

/// Paints `image` as large as it fits into `target`, in the middle of it. A template is drawn in near white on a dark
/// backdrop, in near black on a light one, and in near white with a dark rim, which reads on both, if it isn't known.
void paintStatusImage(QPainter &painter, const QRectF &target, const StatusImage &image, Backdrop backdrop);

/// `image` in a square of `side` pixels; transparent where it draws nothing.
QImage renderStatusImage(const StatusImage &image, int side, Backdrop backdrop);

/// The width in pixels that `paintStatusText` takes for a running time. All digits have the same room, so that it
/// depends on how many there are and nothing moves while the time counts.
double statusTextWidth(const QFont &font, const QString &text);

/// A running time, as " 0:12:34", in the manner of a template, in the painter's font, left-aligned and vertically
/// centred in `target`.
void paintStatusText(QPainter &painter, const QRectF &target, const QString &text, Backdrop backdrop);

} // namespace korvo
