#include "Controllers/TimingCurve.h"

namespace korvo {

namespace {

constexpr int halvings = 24; // To less than a ten millionth.

/// One coordinate of the curve at its parameter `t`.
double coordinate(double first, double second, double t)
{
    const double rest = 1 - t;
    return 3 * rest * rest * t * first + 3 * rest * t * t * second + t * t * t;
}

} // namespace

double TimingCurve::at(double time) const
{
    if (time <= 0)
        return 0;
    if (time >= 1)
        return 1;
    double low = 0;
    double high = 1;
    for (int i = 0; i < halvings; ++i) {
        const double middle = (low + high) / 2;
        (coordinate(first.x(), second.x(), middle) < time ? low : high) = middle;
    }
    return coordinate(first.y(), second.y(), (low + high) / 2);
}

} // namespace korvo
