#include "EndToEnd/TrayLookUp.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr int answerMilliseconds = 5000;
constexpr int mostEntries = 50; ///< More than any menu has.

QDBusMessage call(const QString &item, const QString &path, const QString &interface, const QString &member,
                  const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(item, path, interface, member);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message, QDBus::Block, answerMilliseconds);
}

QVariant firstOf(const QDBusMessage &reply)
{
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

} // namespace

QString findTrayItem(qint64 pid)
{
    const auto watcher = u"org.kde.StatusNotifierWatcher"_s;
    const auto items = firstOf(call(watcher, u"/StatusNotifierWatcher"_s, u"org.freedesktop.DBus.Properties"_s,
                                    u"Get"_s, {watcher, u"RegisteredStatusNotifierItems"_s}))
                           .toStringList();
    for (const auto &item : items) {
        // A tray tells the bus name of an item, some with its path behind.
        const auto service = item.section(u'/', 0, 0);
        const QDBusReply<uint> owner = QDBusConnection::sessionBus().interface()->servicePid(service);
        if (owner.isValid() && owner.value() == uint(pid))
            return service;
    }
    return {};
}

QString trayItemProperty(const QString &item, const QString &name)
{
    const auto value = firstOf(call(item, u"/StatusNotifierItem"_s, u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                                    {u"org.kde.StatusNotifierItem"_s, name}));
    return value.userType() == qMetaTypeId<QDBusObjectPath>() ? value.value<QDBusObjectPath>().path()
                                                              : value.toString();
}

bool clickTrayMenu(const QString &item, const QString &label)
{
    const auto path = trayItemProperty(item, u"Menu"_s);
    const auto interface = u"com.canonical.dbusmenu"_s;
    for (int id = 1; id < mostEntries; ++id) {
        if (firstOf(call(item, path, interface, u"GetProperty"_s, {id, u"label"_s})) != label)
            continue;
        call(item, path, interface, u"Event"_s, {id, u"clicked"_s, QVariant::fromValue(QDBusVariant(QString())), 0U});
        return true;
    }
    return false;
}

} // namespace korvo
