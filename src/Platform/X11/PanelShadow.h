#pragma once

#include <QImage>
#include <QMargins>
#include <QPainterPath>
#include <QSize>

namespace korvo {

/// How far a panel's shadow reaches past its shape, in logical pixels: multiples of four, which are whole device pixels
/// at every usual scale.
inline constexpr QMargins panelShadowMargins(24, 16, 24, 32);

/// The soft shadow of `shape`, in a picture of `size` logical pixels at `scale` device pixels each. There is nothing
/// under the shape itself, so that it can be added to what the shape shows.
QImage panelShadow(const QPainterPath &shape, const QSize &size, double scale);

} // namespace korvo
