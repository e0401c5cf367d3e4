#pragma once

#include <QPointF>

namespace korvo {

/// How far a movement is at a given part of its time: a cubic Bézier curve from (0, 0) to (1, 1) with time as x and way
/// as y. The control points' x are from 0 to 1.
struct TimingCurve {
    QPointF first;
    QPointF second;

    /// The part of the way at a part of the time, which is taken as 0 below 0 and as 1 above 1.
    double at(double time) const;
};

} // namespace korvo
