#pragma once

#include <QString>

namespace korvo {

/// The bus name of the item that process `pid` has registered with the session's tray; empty if there is none.
QString findTrayItem(qint64 pid);

/// A property of that item as text, object paths included; empty if it cannot be read.
QString trayItemProperty(const QString &item, const QString &name);

/// Clicks an entry of the item's menu. False if no entry has that label.
bool clickTrayMenu(const QString &item, const QString &label);

} // namespace korvo
