#pragma once

#include <QDateTime>
#include <QObject>
#include <QTimer>

class QWidget;

namespace korvo {

class Clock;

/// The one-second schedule of a view, for all that ticks in it: the seconds count from the moment at which it began. It
/// rests while the view is hidden and ticks at once when that is shown again.
class Timeline : public QObject {
    Q_OBJECT
public:
    /// A child of `view`. The clock must outlive it.
    Timeline(QWidget &view, Clock &clock);

    /// Begins a new schedule at this moment, with its first tick.
    void begin();
    /// Ends it.
    void end();

    bool isTicking() const { return m_timer.isActive(); }

signals:
    /// `date` is the moment that the schedule meant, whatever the timer's delay was, so no second is left out.
    void ticked(const QDateTime &date);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void tick();

    QWidget &m_view;
    Clock &m_clock;
    QDateTime m_anchor; ///< Null while there is no schedule.
    QTimer m_timer;
};

} // namespace korvo
