#pragma once

#include "Models/TimerEntry.h"

#include <QWidget>

namespace korvo {

class CardButton;
class ClockText;
class ElidedLabel;
class ProgressRing;
class StatItem;
class Timeline;
class TimerViewModel;

/// The measures in which the cards of a running timer differ, in points.
struct TimerCardStyle {
    int horizontalPadding;
    int headerTop;
    int headerBottom;
    int nameLines;
    double ringSize;
    double ringLineWidth;
    int ringSpacing; ///< From the ring to the clock.
    int clockSize;
    double statsBackground; ///< Opacity of white.
    double statsRadius;
    int statsBottom;
    int buttonHeight;
    double buttonRadius;
    int buttonsBottom;
    bool isBusyWhileLoading; ///< Whether the stop button shows an action in progress and locks.
};

/// The card of a running timer: task and clock, what is known of the task, and the two buttons.
class TimerCard : public QWidget {
    Q_OBJECT
public:
    /// The view model and the timeline must outlive it.
    TimerCard(TimerViewModel &timerVM, Timeline &timeline, const TimerEntry &timer, const TimerCardStyle &style,
              QWidget *parent = nullptr);

    /// Shows this entry from now on; clock and ring follow with the next tick.
    void setTimer(const TimerEntry &timer);

private:
    QWidget *header(const TimerCardStyle &style);
    QWidget *stats(const TimerCardStyle &style);
    QWidget *buttons(const TimerCardStyle &style);
    void showLoading();
    void tick(const QDateTime &date);

    TimerViewModel &m_timerVM;
    TimerEntry m_timer;
    ElidedLabel *m_taskName;
    ElidedLabel *m_started;
    ProgressRing *m_ring;
    ClockText *m_clock;
    StatItem *m_project;
    StatItem *m_client;
    StatItem *m_total;
    CardButton *m_stop;
};

} // namespace korvo
