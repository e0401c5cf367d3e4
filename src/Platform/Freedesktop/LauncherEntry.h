#pragma once

#include "Platform/DockTile.h"

#include <QDBusConnection>
#include <QVariantMap>

namespace korvo {

/// The number and the bar on the program's icon, in docks that have such. Says nothing until there is something to show,
/// and nothing twice. Source: the Launcher API of Unity, which KDE Plasma and Dash to Dock read too.
class LauncherEntry {
public:
    using Bus = QDBusConnection (*)();

    explicit LauncherEntry(Bus bus) : m_bus(bus) { }

    void show(const std::optional<DockTileContent> &content);

private:
    const Bus m_bus;
    QVariantMap m_told;
};

} // namespace korvo
