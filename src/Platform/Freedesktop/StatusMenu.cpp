#include "Platform/Freedesktop/StatusMenu.h"

#include <QMenu>

using namespace Qt::StringLiterals;

namespace korvo {

void fillStatusMenu(QMenu &menu, const QList<StatusMenuEntry> &entries)
{
    menu.clear();
    for (const StatusMenuEntry &entry : entries) {
        if (entry.label.isEmpty()) {
            menu.addSeparator();
            continue;
        }
        QString label = entry.label;
        QAction *action = menu.addAction(label.replace(u'&', "&&"_L1)); // One alone would mark a key for the entry.
        action->setEnabled(entry.isEnabled);
        if (entry.action) // Queued, for it may fill this menu anew.
            QObject::connect(
                action, &QAction::triggered, &menu, [run = entry.action] { run(); }, Qt::QueuedConnection);
    }
}

} // namespace korvo
