#pragma once

#include "Platform/StatusItem.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>

#include <optional>

namespace korvo {

/// A menu that the desktop's tray shows: the interface com.canonical.dbusmenu, one level deep. Entry n has the
/// identifier n + 1; 0 is the menu itself.
class DBusMenu final : public QDBusVirtualObject {
    Q_OBJECT
public:
    /// Answers on `connection` at `path` as long as it lives.
    DBusMenu(QDBusConnection connection, QString path, QObject *parent = nullptr);
    ~DBusMenu() override;

    /// Shows `entries` from now on. Readers are told, and the revision rises, only if a person would see a difference.
    void setEntries(const QList<StatusMenuEntry> &entries);

    /// Whether a tray is there that should be told of changes.
    void setAnnouncing(bool isAnnouncing);

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

signals:
    /// A tray is about to show the menu, or says that it does.
    void opened();

private:
    QDBusMessage answer(const QDBusMessage &call);
    QDBusMessage property(const QDBusMessage &call) const;
    bool receiveEvent(int id, const QString &event);
    bool isKnown(int id) const { return id >= 0 && id <= m_entries.size(); }
    QVariantMap propertiesOf(int id) const;
    void announceLayout();

    QDBusConnection m_connection;
    QString m_path;
    QList<StatusMenuEntry> m_entries;
    uint m_revision = 1;
    std::optional<uint> m_toldRevision; ///< What readers know; none until somebody has read the menu.
    bool m_isAnnouncing = false;
};

} // namespace korvo
