#pragma once

#include "Platform/KeyGrabber.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QPointer>
#include <QVariantMap>

#include <functional>

namespace korvo {

class PortalRequest;

/// A shortcut of the desktop portal, which Wayland desktops offer in place of grabs. The user may refuse it or choose
/// another key. Statuses besides those of `KeyGrabber` are the portal's: 1 for a refusal, 2 for another end. Source:
/// org.freedesktop.portal.GlobalShortcuts.
class PortalKeyGrabber final : public KeyGrabber {
    Q_OBJECT
public:
    /// Gives the xkb keysym name of a virtual key code, empty if it has none.
    using KeysymName = std::function<QString(quint32 keyCode)>;

    explicit PortalKeyGrabber(KeysymName keysymName, const QDBusConnection &bus = QDBusConnection::sessionBus(),
                              QObject *parent = nullptr);
    ~PortalKeyGrabber() override;

    int install() override;
    void uninstall() override;
    int grab(quint32 keyCode, quint32 modifiers) override; ///< 0 wherever there is a bus: the portal answers later.
    void ungrab() override;

    /// A shortcut as portals spell it, as in "LOGO+SHIFT+n"; empty without a keysym.
    static QString trigger(quint32 modifiers, const QString &keysym);

private:
    Q_SLOT void handleActivated(const QDBusObjectPath &session, const QString &id, qulonglong timestamp,
                                const QVariantMap &options);
    Q_SLOT void handleClosed();
    Q_SLOT void handleDisconnected();

    using Answer = void (PortalKeyGrabber::*)(uint code, const QVariantMap &results);

    void fail(int status);
    void lose();
    void createSession();
    void handleSession(uint code, const QVariantMap &results);
    void bindShortcuts();
    void handleShortcuts(uint code, const QVariantMap &results);
    void handleOwner(const QString &oldOwner, const QString &newOwner);
    PortalRequest *newRequest(Answer answer);
    void dropRequest();
    void forgetSession();
    void closeSession();

    const KeysymName m_keysymName;
    QDBusConnection m_bus;
    QDBusServiceWatcher m_portal;
    bool m_isInstalled = false;
    bool m_isWanted = false;  ///< From `grab` on, until the key is given back or the portal has said no.
    bool m_hasFailed = false; ///< Since `grab`, or since it was bound again.
    quint32 m_keyCode = 0;
    quint32 m_modifiers = 0;
    QPointer<PortalRequest> m_request; ///< The question that is open.
    QString m_session;                 ///< The path of the session, from the question for it on; empty without one.
};

} // namespace korvo
