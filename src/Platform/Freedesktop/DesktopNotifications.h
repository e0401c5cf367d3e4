#pragma once

#include "Platform/Freedesktop/SessionBus.h"
#include "Platform/NotificationCenter.h"

#include <QDBusConnection>
#include <QObject>

namespace korvo {

/// Bubbles of the desktop's notification service, or of the portal where there is no such service; nothing where there
/// is neither. All of it goes its way by itself: nobody waits for an answer, and a failure ends in silence. Sources:
/// Desktop Notifications Specification 1.2, org.freedesktop.portal.Notification.
class DesktopNotifications final : public QObject, public NotificationCenter {
    Q_OBJECT
public:
    using Bus = QDBusConnection (*)();

    /// Asks for the bus when it is first needed, since there may be no application object before.
    explicit DesktopNotifications(Bus bus = &currentSessionBus, QObject *parent = nullptr);

    /// Nothing to ask on these desktops: whoever wants no notifications tells the desktop so.
    void requestAuthorization() override { }

    void add(const Notification &notification) override;

private:
    void notify(const QDBusConnection &bus, const Notification &notification, bool hasBodyMarkup);
    static void addToPortal(const QDBusConnection &bus, const Notification &notification);

    const Bus m_bus;
};

} // namespace korvo
