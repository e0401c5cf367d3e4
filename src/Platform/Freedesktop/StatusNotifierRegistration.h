#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QObject>
#include <QStringList>

namespace korvo {

/// Keeps one item registered with the desktop's org.kde.StatusNotifierWatcher, and again whenever another program
/// becomes it. All calls are asynchronous: some watchers call back before they answer.
class StatusNotifierRegistration final : public QObject {
    Q_OBJECT
public:
    enum class State {
        asking,  ///< No answer yet.
        absent,  ///< There is no watcher, or it has nobody that shows items.
        refused, ///< The watcher doesn't take the item.
        shown,
    };

    /// Registers the item of the bus name `itemName` on `connection`, which may be a dead one.
    StatusNotifierRegistration(QDBusConnection connection, QString itemName, QObject *parent = nullptr);

    State state() const { return m_state; }

    /// The unique bus names of the indicator services of Ayatana and Canonical, which show pictures from files only.
    QStringList indicatorServices() const { return m_indicators.values(); }

signals:
    void stateChanged();
    void disconnected(); ///< The bus has gone; this connection will never see it again.
    void indicatorServicesChanged();

private slots:
    void receiveDisconnected();
    void askForHost();

private:
    template <typename Receive> void ask(const QDBusMessage &call, Receive receive);
    void setWatcher(const QString &owner);
    void setIndicator(const QString &name, const QString &owner);
    void registerItem();
    void update();

    QDBusConnection m_connection;
    QString m_itemName;
    QString m_watcher;                   ///< The unique bus name of the watcher; empty if there is none.
    QMap<QString, QString> m_indicators; ///< By well-known name, the unique name of who has it.
    bool m_isWatcherKnown = false;
    bool m_isRegistered = false;
    bool m_isRefused = false;
    bool m_isHostKnown = false;
    bool m_hasHost = false;
    State m_state = State::asking;
};

} // namespace korvo
