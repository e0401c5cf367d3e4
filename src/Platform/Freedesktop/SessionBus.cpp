#include "Platform/Freedesktop/SessionBus.h"

#include <QString>

using namespace Qt::StringLiterals;

namespace korvo {

QDBusConnection currentSessionBus()
{
    const auto first = QDBusConnection::sessionBus();
    if (first.isConnected() || first.baseService().isEmpty())
        return first; // In the latter case there was no bus when the program started, so none is to be expected.
    const auto name = u"korvo-session-bus"_s;
    const QDBusConnection later(name);
    if (later.isConnected())
        return later;
    QDBusConnection::disconnectFromBus(name); // That one has died too.
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
}

} // namespace korvo
