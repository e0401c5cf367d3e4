#pragma once

#include <QByteArray>
#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

#include <xcb/xcb.h>

namespace korvo {

/// The modifier bits of X key events that the tests use.
namespace xmod {
inline constexpr quint16 none = 0;
inline constexpr quint16 shift = XCB_MOD_MASK_SHIFT;
inline constexpr quint16 capsLock = XCB_MOD_MASK_LOCK;
inline constexpr quint16 control = XCB_MOD_MASK_CONTROL;
inline constexpr quint16 alt = XCB_MOD_MASK_1;
inline constexpr quint16 numLock = XCB_MOD_MASK_2;
inline constexpr quint16 unused = XCB_MOD_MASK_3; ///< No key sets it until a test has one do so.
inline constexpr quint16 super = XCB_MOD_MASK_4;
} // namespace xmod

/// Another program on the X server of a test: a connection of its own, with a window that may have the focus.
class XClient {
public:
    XClient();
    ~XClient();
    Q_DISABLE_COPY_MOVE(XClient)

    /// Grabs a key on the root window; 0 or the X error code.
    int grab(quint8 key, quint16 modifiers);
    void ungrab(quint8 key, quint16 modifiers);

    /// Shows a window and gives it the focus. False if that doesn't come to pass.
    bool showFocusedWindow(const QRect &place = {100, 100, 300, 200});
    bool hasFocus() const;
    quint32 window() const { return m_window; }

    /// Shows a window that the window manager has no say in, of that type or of none, and on top of all others.
    void showUnmanagedWindow(const QRect &place, const QByteArray &type = {}, bool isSavingUnder = false);
    void raiseUnmanagedWindow();

    /// Has the window manager make the window as large as the screen, above all others. False if it doesn't.
    bool makeFullScreen();

    /// Has the window manager raise the window above others.
    void raise();

    /// X key codes that went down in its window since the last call.
    QList<quint8> takePresses();

    /// How many mouse buttons went down in its window.
    int clickCount();

    /// Takes the selection of that name, until it goes.
    void own(const char *selection);

    /// Locks modifiers and the keyboard group, in place of those that are locked.
    void lock(quint16 modifiers, quint8 group = 0);

    /// The name that the window manager gives itself.
    QByteArray windowManager() const;

    /// Sets how many workspaces there are, or goes to one of them. False if that doesn't come to pass.
    bool setWorkspaceCount(quint32 count);
    bool goToWorkspace(quint32 number);

    /// The windows that the window manager has, as task lists show them.
    QList<quint32> managedWindows() const;

    /// The same, from the bottom up.
    QList<quint32> stacking() const;

    /// The numbers that a property of a window consists of.
    QList<quint32> numbers(quint32 window, const char *name) const;

    /// The managed window of that title; 0 if there is none.
    quint32 windowOfTitle(const QByteArray &title) const;

    xcb_atom_t atom(const char *name) const;
    QByteArray property(xcb_window_t window, const char *name) const;

    /// Asks the window manager for something, as pagers and task lists do.
    void ask(quint32 window, const char *what, const QList<quint32> &data);

private:
    void receive();

    xcb_connection_t *m_connection;
    xcb_window_t m_root = 0;
    xcb_window_t m_window = 0;
    QList<quint8> m_presses;
    int m_clickCount = 0;
};

/// Runs a program to its end; false if it fails.
bool run(const QString &program, const QStringList &arguments);

/// Presses and releases keys by XTEST, as in "super+shift+n", where a number of two digits or more is an X key code.
bool typeKeys(const QString &keys);
bool holdKeys(const QString &keys);
bool releaseKeys(const QString &keys);

/// Sets the keyboard layouts, as in "us,ru", and nothing besides.
bool setLayout(const QString &layout);

} // namespace korvo
