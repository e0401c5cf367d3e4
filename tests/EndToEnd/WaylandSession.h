#pragma once

#include <QColor>
#include <QProcess>
#include <QRect>
#include <QString>
#include <QStringList>

namespace korvo {

/// A window of the compositor's, as it tells of it.
struct WaylandWindow {
    QString name;
    QString appId; ///< Empty for a window of XWayland's.
    QRect place;
};

/// The windows of process `pid` that the compositor has placed. Those that place themselves under X11 are not among them.
QList<WaylandWindow> waylandWindows(qint64 pid);

/// Where in what the compositor shows that colour is, as far as it goes; empty if it is nowhere.
QRect findOnOutput(const QColor &color);

/// Has the compositor do something, by one of its commands. False if it refuses.
bool tellCompositor(const QStringList &command);

/// A keyboard, which the session has none of before. A compositor gives no window the focus without one.
class WaylandKeyboard {
public:
    ~WaylandKeyboard();

    bool plugIn(); ///< False if that fails.

    /// Types text to the window that has the focus, and then Return. False if that fails.
    static bool enter(const QString &text);

private:
    QProcess m_process;
};

} // namespace korvo
