#pragma once

#include "Controllers/TimingCurve.h"
#include "Utilities/Clock.h"

#include <QRect>

#include <functional>
#include <stop_token>

namespace korvo {

/// Moves a frame from one place to another, 60 times a second on the clock's uptime. Nothing runs while nothing moves.
class FrameAnimation {
public:
    using Step = std::function<void(const QRect &frame)>;

    /// `onStep` takes each frame on the way; the last one is the target. The clock must outlive this.
    FrameAnimation(Clock &clock, Step onStep);
    ~FrameAnimation() { stop(); }
    Q_DISABLE_COPY_MOVE(FrameAnimation)

    /// Gives up whatever runs and moves from here to there. Does nothing if that is no way, or is under way already.
    void start(const QRect &from, const QRect &to, Clock::Seconds duration, const TimingCurve &curve);
    void stop();
    bool isRunning() const { return m_isRunning; }

private:
    /// `self` is there as long as nobody has requested the stop.
    static QCoro::Task<> run(FrameAnimation *self, Clock &clock, std::stop_token stop);
    void step();

    Clock &m_clock;
    Step m_onStep;
    QRect m_from;
    QRect m_to;
    double m_begin = 0; ///< On the clock's uptime, in seconds.
    double m_duration = 0;
    TimingCurve m_curve;
    bool m_isRunning = false;
    std::stop_source m_stop;
};

} // namespace korvo
