#pragma once

#include <QPainterPath>
#include <QRectF>

namespace korvo {

/// The outline of the panel around the camera notch: at the top it flares out into two concave ears, where it meets the
/// upper edge of the screen, at the bottom its corners are round. In points.
struct NotchShape {
    double cornerRadius;  ///< Of the two bottom corners.
    double earRadius = 8; ///< Size of the ears in both directions.
    double overflow = 10; ///< Height of the strip above the ears, which lies above the screen's edge.

    /// The outline in a rectangle at the origin. One narrower than twice ear and corner, or lower than the strip, ear and
    /// corner, gives a path that crosses itself.
    QPainterPath path(const QRectF &rect) const;

    bool operator==(const NotchShape &) const = default;
};

} // namespace korvo
