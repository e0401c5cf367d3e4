#pragma once

#include "Platform/MouseMonitor.h"

#include <QList>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>

#include <xcb/xcb.h>

class QSocketNotifier;

namespace korvo {

/// Listens to the raw events of the X server, over a connection of its own, so that nothing is sent to the program while
/// there is no monitor. They come whoever has grabbed the pointer. Under Wayland XWayland only tells of presses in X11
/// windows, and without X11 there are none.
///
/// Who has been clicked on a desktop's bar only the bar knows. So a press there is told when the button has been up for
/// a moment in which the bar said nothing of the program's status item.
class X11MouseMonitor final : public MouseMonitor {
    Q_OBJECT
public:
    /// How long after the release the bar may take to tell that the status item was meant.
    static constexpr std::chrono::milliseconds patience{250};

    explicit X11MouseMonitor(QObject *parent = nullptr);
    ~X11MouseMonitor() override;

    /// The status item was used: if a press on a bar has not been told yet, it never will be.
    void forgetPressOnBar();

private:
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };
    struct Target {
        bool isOwn = false;
        bool isBar = false;
    };
    /// One that went to another program, as far as the place of the pointer tells.
    struct Press {
        quint32 button = 0;
        quint32 time = 0;
        bool isOnBar = false;
        bool isReleased = false;
    };

    bool eventFilter(QObject *watched, QEvent *event) override;
    bool selectEvents();
    void receive();
    void handlePress(quint32 button, quint32 time);
    void handleRelease(quint32 button);
    void judge();
    Target targetAtPointer();
    bool isDock(xcb_window_t window) const;
    xcb_atom_t atom(const char *name) const;

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    std::unique_ptr<QSocketNotifier> m_notifier;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    quint8 m_extension = 0; ///< The opcode of the input extension.
    xcb_atom_t m_windowType = XCB_ATOM_NONE;
    xcb_atom_t m_dockType = XCB_ATOM_NONE;
    QList<quint32> m_ownPresses;          ///< The times of the last presses that the toolkit got for windows of ours.
    QList<Press> m_presses;               ///< Of which the toolkit may hear yet.
    QTimer m_judgement;                   ///< Runs since the first of them.
    std::optional<quint32> m_buttonOnBar; ///< Of the press on a bar that waits.
    QTimer m_patience;                    ///< Runs since its release.
};

} // namespace korvo
