#pragma once

#include "Platform/StatusItem.h"

#include <QAbstractNativeEventFilter>
#include <QMenu>
#include <QSystemTrayIcon>
#include <QTimer>

#include <memory>

class QWidget;

namespace korvo {

/// The status item of X11 trays of the older kind, which take in a small window. There is no label: where the tray
/// gives it the room, the window shows the title beside the picture, else the tool tip has it. If there is no tray, the
/// item shows as soon as one comes.
class XEmbedStatusItem final : public StatusItem, private QAbstractNativeEventFilter {
    Q_OBJECT
public:
    /// Only while no org.kde.StatusNotifierWatcher has a host: else Qt's icon would take that way on its own.
    explicit XEmbedStatusItem(QObject *parent = nullptr);
    ~XEmbedStatusItem() override;

    void setImage(const StatusImage &image) override;
    void setTitle(const QString &title) override;
    void setToolTip(const QString &headline, const QString &text) override;
    void setMenu(const QList<StatusMenuEntry> &menu) override;
    QRect button() const override { return place(); }
    bool isShown() const override { return m_isShown; }

private:
    struct Face;
    class Engine;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    void receiveClick(QSystemTrayIcon::ActivationReason reason);
    void repaint();
    QWidget *window() const;
    QRect place() const;
    void claimWidth();
    void updateToolTip();
    void updateShown();
    void look();

    std::shared_ptr<Face> m_face; ///< Shared with the icon's engines, which may outlive this object.
    QString m_headline;
    QString m_text;
    QMenu m_menu;
    QSystemTrayIcon m_icon;
    QTimer m_settled; ///< Runs since a tray has taken in the window, or gives it another size.
    bool m_isShown = false;
};

} // namespace korvo
