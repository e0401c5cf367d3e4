#pragma once

#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>

#include <xcb/xcb.h>

class QSocketNotifier;

namespace korvo {

/// Keeps the windows of the visible panels above all that a window manager has. It has no say in them, but some put the
/// windows in their care above such ones whenever these change their order or fill the screen. A window outside of its
/// care that comes over a panel above everything, as that of a dock or a notification, is answered once, when it appears:
/// if it raises itself again it stays, so that nobody fights. Menus, tool tips and the like, and locked screens, stay
/// above at any rate. Listens over a connection of its own, while there are panels.
class PanelStack final : public QObject {
    Q_OBJECT
public:
    /// The one stack of the program, for as long as somebody holds it.
    static std::shared_ptr<PanelStack> shared();

    PanelStack();
    ~PanelStack() override;

    /// Puts a window above the others, but below those that are above everything unless it is one of them. Does nothing
    /// if it is there already.
    void raise(xcb_window_t window, bool isAboveEverything);
    void remove(xcb_window_t window);

private:
    struct Entry {
        xcb_window_t window = XCB_WINDOW_NONE;
        bool isAboveEverything = false;
    };
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    void listen();
    void receive();
    void restore();
    bool isManaged(xcb_window_t window) const;
    bool isNewcomerOver(const QList<xcb_window_t> &all) const;
    void raiseFrom(qsizetype first) const;

    QList<Entry> m_windows; ///< From the bottom up.
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QList<xcb_window_t> m_newcomers;           ///< Appeared outside of the window manager's care since the last look.
    xcb_atom_t m_managedState = XCB_ATOM_NONE; ///< Window managers give it to all that they manage.
    QTimer m_settled;                          ///< Runs since windows have changed.
};

} // namespace korvo
