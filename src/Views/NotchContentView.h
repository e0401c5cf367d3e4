#pragma once

#include "Views/NotchState.h"

#include <QPainterPath>
#include <QWidget>

#include <functional>

namespace korvo {

class AppSettings;
class Clock;
class ClockText;
class ProgressRing;
class Timeline;
class TimerCard;
class TimerViewModel;

/// What the panel around the camera notch shows: black alone, ring and clock, or the card. The size and the moment of a
/// change come from outside; while the panel grows, the card slides out from under its upper edge and fades in.
class NotchContentView : public QWidget {
    Q_OBJECT
public:
    using HoverHandler = std::function<void()>;

    /// All references must outlive it. The handlers are called when the pointer comes to what is seen of the view, and
    /// leaves it.
    NotchContentView(TimerViewModel &timerVM, NotchState state, HoverHandler onHoverEnter, HoverHandler onHoverExit,
                     AppSettings &settings, Clock &clock, QWidget *parent = nullptr);

    NotchState state() const { return m_state; }
    /// Shows the content of another state at once. The present one is left alone.
    void setState(NotchState state);

    /// Tells whether the pointer is there, which the window knows better than any widget.
    void setHovered(bool isHovered);

    /// What is to be seen of the view at its present size.
    QPainterPath outline() const;

signals:
    void outlineChanged(const QPainterPath &outline);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showTimer();
    void replaceContent();
    void arrange();
    void tick(const QDateTime &date);
    QWidget *compactView();
    QWidget *expandedView();
    QWidget *timerCard();
    QWidget *emptyCard();

    TimerViewModel &m_timerVM;
    NotchState m_state;
    HoverHandler m_onHoverEnter;
    HoverHandler m_onHoverExit;
    AppSettings &m_settings;
    Timeline *m_timeline;
    QWidget *m_content = nullptr;   ///< Of the state; null for black alone.
    TimerCard *m_card = nullptr;    ///< In an expanded view with a timer.
    ProgressRing *m_ring = nullptr; ///< In a compact view.
    ClockText *m_clock = nullptr;   ///< In a compact view with a timer.
};

} // namespace korvo
