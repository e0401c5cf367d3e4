#pragma once

#include "Platform/DockTile.h"
#include "Platform/Freedesktop/LauncherEntry.h"
#include "Platform/Freedesktop/SessionBus.h"

#include <QPointer>
#include <QTimer>

namespace korvo {

/// The program's place in a task bar or dock: a window that is always minimised, so that all there is of it is its icon
/// and its name. Whoever opens it asks for the program; whoever closes it ends the program. Docks that show a number on
/// their icons are told it besides. The window comes a moment after it is asked for, so that a launch brings the
/// program into the tray first. Where the desktop's window manager can't minimise windows, and under Wayland without X11,
/// there is none: docks are told, and that is all.
class TaskBarTile final : public DockTile {
    Q_OBJECT
public:
    /// Makes nothing before it is to be present, since there may be no application object.
    explicit TaskBarTile(LauncherEntry::Bus bus = &currentSessionBus, QObject *parent = nullptr);
    ~TaskBarTile() override;

    void setPresent(bool isPresent) override;
    void setContent(const std::optional<DockTileContent> &content) override;

private:
    class Window;

    void showWindow();
    void updateIcon();

    std::optional<DockTileContent> m_content;
    LauncherEntry m_launcherEntry;
    bool m_isPresent = false;
    QTimer m_windowComes;
    QPointer<Window> m_window; ///< Since a moment after the program is present.
};

} // namespace korvo
