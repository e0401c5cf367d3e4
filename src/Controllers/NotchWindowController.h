#pragma once

#include "Controllers/FrameAnimation.h"
#include "Platform/Screens.h"
#include "Views/NotchState.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>
#include <stop_token>

namespace korvo {

class AppSettings;
class NotchContentView;
class Panel;
class Platform;
class TimerViewModel;

/// The panel around the camera notch of the first screen: black at rest, a strip while a timer runs, a card while the
/// pointer is over it. Decides where it stands, when it changes and how that moves; what is drawn is `NotchContentView`.
/// A movement that is on its way to the same frame isn't begun anew, and an equal content isn't made anew, so that the
/// tick of each second costs nothing and doesn't hold up the folding.
class NotchWindowController : public QObject {
    Q_OBJECT
public:
    using NotchState = korvo::NotchState;

    /// Makes no panel yet. All references must outlive it.
    NotchWindowController(TimerViewModel &timerVM, Platform &platform, AppSettings &settings);
    ~NotchWindowController() override;

    /// Makes the panel, in place of a former one, and shows it at rest; `state` stays what it is.
    void setup();

    NotchState state() const { return m_state; }
    /// Moves to a state: the content changes now, the frame from now on. Called with the present state it only makes up
    /// for what differs from it.
    void setState(NotchState state);

    /// Follows the timer: to be called each second. An open card stays.
    void updateForTimerState();

    /// Brings the panel to the front, or takes it off the screen, if there is one.
    void show();
    void hide();

private:
    QRect notchRect(NotchState state) const;
    QRect notchRoom() const;
    void setFrame(const QRect &frame);
    void expand();
    void collapse();
    void cancelCollapse();
    static QCoro::Task<> runCollapse(QPointer<NotchWindowController> self, Clock &clock, NotchState target,
                                     std::stop_token stop);
    void finishCollapse(NotchState target);
    std::unique_ptr<NotchContentView> makeContentView();
    void updateContent();
    Screen menuBarScreen() const;
    bool hasNotch() const;

    Platform &m_platform;
    AppSettings &m_settings;
    Clock &m_clock;
    std::unique_ptr<Panel> m_panel;
    QPointer<NotchContentView> m_hostingView; ///< The panel's content.
    TimerViewModel &m_timerVM;
    std::optional<std::stop_source> m_collapseWorkItem; ///< Cancels the delayed collapse that is pending or last ran.
    NotchState m_state = NotchState::idle;
    QDateTime m_lastExpandTime; ///< Of the last step to the card.
    QRect m_frame;              ///< Where the panel stands at the moment.
    FrameAnimation m_animation;
};

} // namespace korvo
