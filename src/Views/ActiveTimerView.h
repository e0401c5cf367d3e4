#pragma once

#include "Utilities/Clock.h"

#include <QWidget>

namespace korvo {

class CardButton;
class ClockText;
class ElidedLabel;
class Timeline;
class TimerViewModel;

/// The running timer in the desktop's own fonts and colours, for any host: status, clock, task and a stop button. With
/// no timer it is empty. The host gives it padding and a background.
class ActiveTimerView : public QWidget {
    Q_OBJECT
public:
    /// Both references must outlive it.
    explicit ActiveTimerView(TimerViewModel &timerVM, Clock &clock = Clock::shared(), QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void changeEvent(QEvent *event) override;

private:
    void build();
    void showTimer();
    void showLoading();
    void tick(const QDateTime &date);

    TimerViewModel &m_timerVM;
    Timeline *m_timeline;
    QWidget *m_content = nullptr; ///< Null without a timer; the rest of the parts only count with it.
    ClockText *m_clock = nullptr;
    ElidedLabel *m_taskName = nullptr;
    ElidedLabel *m_started = nullptr;
    CardButton *m_stop = nullptr;
};

} // namespace korvo
