#include "Controllers/FrameAnimation.h"

#include "Utilities/Spawn.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace korvo {

namespace {

constexpr double framesPerSecond = 60;
constexpr double hair = 1e-6; // A timer that is so early is on time.

double between(double from, double to, double way)
{
    return from + (to - from) * way;
}

} // namespace

FrameAnimation::FrameAnimation(Clock &clock, Step onStep) : m_clock(clock), m_onStep(std::move(onStep)) { }

void FrameAnimation::start(const QRect &from, const QRect &to, Clock::Seconds duration, const TimingCurve &curve)
{
    if (m_isRunning && to == m_to)
        return;
    stop();
    if (from == to)
        return;
    m_from = from;
    m_to = to;
    m_begin = m_clock.uptime().count();
    m_duration = duration.count();
    m_curve = curve;
    m_isRunning = true;
    m_stop = std::stop_source();
    spawn(run(this, m_clock, m_stop.get_token()));
}

void FrameAnimation::stop()
{
    m_stop.request_stop();
    m_isRunning = false;
}

QCoro::Task<> FrameAnimation::run(FrameAnimation *self, Clock &clock, std::stop_token stop)
{
    while (!stop.stop_requested() && self->m_isRunning) {
        const double elapsed = clock.uptime().count() - self->m_begin;
        const double nextFrame = (std::floor(elapsed * framesPerSecond + hair) + 1) / framesPerSecond;
        const Clock::Seconds pause(std::min(nextFrame, self->m_duration) - elapsed);
        co_await clock.pauseFor(pause, stop);
        if (!stop.stop_requested())
            self->step();
    }
}

void FrameAnimation::step()
{
    const double time = (m_clock.uptime().count() - m_begin) / m_duration;
    if (time >= 1 - hair) {
        m_isRunning = false;
        m_onStep(m_to);
        return;
    }
    // The edges go outwards to whole pixels, so that what is centred stays so.
    const double way = m_curve.at(time);
    const auto left = int(std::floor(between(m_from.x(), m_to.x(), way)));
    const auto right = int(std::ceil(between(m_from.x() + m_from.width(), m_to.x() + m_to.width(), way)));
    const auto top = int(std::lround(between(m_from.y(), m_to.y(), way)));
    const auto bottom = int(std::lround(between(m_from.y() + m_from.height(), m_to.y() + m_to.height(), way)));
    m_onStep(QRect(left, top, right - left, bottom - top));
}

} // namespace korvo
