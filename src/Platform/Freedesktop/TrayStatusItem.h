#pragma once

#include "Platform/StatusItem.h"

#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

namespace korvo {

class StatusNotifierItem;

/// The status item of this desktop, whatever tray it has: a StatusNotifierItem where a watcher of these has a host, else
/// an XEmbed icon, which waits for a tray if there is none. Moves from one to the other as trays come and go, and looks
/// for the session bus again if that is started anew.
class TrayStatusItem final : public StatusItem {
    Q_OBJECT
public:
    using MakeItem = std::function<std::unique_ptr<StatusItem>()>;

    /// How long a tray that went may stay away, as one does that is started anew, before another one is looked for.
    static constexpr std::chrono::milliseconds patience{1500};

    /// How often a session bus that died is looked for.
    static constexpr std::chrono::milliseconds reconnectInterval{3000};

    explicit TrayStatusItem(QObject *parent = nullptr); ///< Falls back on XEmbed.
    explicit TrayStatusItem(MakeItem makeFallback, QObject *parent = nullptr);
    ~TrayStatusItem() override;

    void setImage(const StatusImage &image) override;
    void setTitle(const QString &title) override;
    void setToolTip(const QString &headline, const QString &text) override;
    void setMenu(const QList<StatusMenuEntry> &menu) override;
    QRect button() const override;
    bool isShown() const override { return m_isShown; }

signals:
    /// A session bus has come in the place of the one that died.
    void busReturned();

private:
    void listenToNotifier();
    void followNotifier();
    void reconnect();
    void fallBack();
    void updateShown();

    MakeItem m_makeFallback;
    std::unique_ptr<StatusNotifierItem> m_notifier;
    std::unique_ptr<StatusItem> m_fallback;
    QTimer m_patience;
    QTimer m_reconnect; ///< Runs while the bus is lost.
    bool m_wasShownByNotifier = false;
    bool m_isShown = false;

    StatusImage m_image;
    QString m_title;
    QString m_headline;
    QString m_text;
    QList<StatusMenuEntry> m_menu;
};

} // namespace korvo
