#pragma once

#include "Platform/Freedesktop/StatusNotifierRegistration.h"
#include "Platform/StatusItem.h"

#include <memory>
#include <optional>

class QMenu;

namespace korvo {

class DBusMenu;
class StatusNotifierObject;

/// The status item of desktops whose tray speaks org.kde.StatusNotifierItem, over a connection of its own to the
/// session bus. While no tray shows it, nothing is drawn and nothing sent.
class StatusNotifierItem final : public StatusItem {
    Q_OBJECT
public:
    explicit StatusNotifierItem(QObject *parent = nullptr);
    ~StatusNotifierItem() override;

    void setImage(const StatusImage &image) override;
    void setTitle(const QString &title) override;
    void setToolTip(const QString &headline, const QString &text) override;
    void setMenu(const QList<StatusMenuEntry> &menu) override;
    QRect button() const override;
    bool isShown() const override;

    /// What became of the item's registration.
    StatusNotifierRegistration::State state() const;

    /// False where there is no session bus, or no longer the one that there was when the item was made.
    bool isConnected() const;

signals:
    void stateChanged();
    void disconnected();

private:
    void followState();
    void openMenu(const QPoint &hint);

    struct Bus;
    std::unique_ptr<Bus> m_bus;
    std::unique_ptr<QMenu> m_popup;
    QList<StatusMenuEntry> m_menu;
    std::optional<QRect> m_lastButton; ///< As the last click told it.
    bool m_wasShown = false;
};

} // namespace korvo
