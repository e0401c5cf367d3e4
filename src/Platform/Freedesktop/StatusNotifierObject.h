#pragma once

#include "Platform/Freedesktop/StatusIconFile.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QList>
#include <QPoint>
#include <QStringList>

#include <optional>

namespace korvo {

/// A picture as the interface hands it over: ARGB with eight bits each, the bytes in this order, not premultiplied.
struct StatusPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;
};

/// The object behind a tray's item: the interface org.kde.StatusNotifierItem. It draws nothing before a reader asks for
/// it, and tells readers of nothing that they know already or have never asked for.
class StatusNotifierObject final : public QDBusVirtualObject {
    Q_OBJECT
public:
    /// Answers on `connection` at `path` as long as it lives. `menuPath` is where the item's menu answers.
    StatusNotifierObject(QDBusConnection connection, QString path, QString menuPath, QObject *parent = nullptr);
    ~StatusNotifierObject() override;

    /// Call it regularly, also with the image it has: for the first few calls after a tray has come the item looks
    /// whether a template still reads on the bar.
    void setImage(const StatusImage &image);
    void setLabel(const QString &label);
    void setToolTip(const QString &headline, const QString &text);

    /// The unique bus names of readers that get the picture as the name of a file; all others get pixels.
    void setFileReaders(const QStringList &names) { m_fileReaders = names; }

    /// Whether a tray is there that should be told of changes. What it missed, it is told now.
    void setAnnouncing(bool isAnnouncing);

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

signals:
    /// The tray's item was clicked, at a place that the tray tells as it sees fit.
    void activateRequested(const QPoint &hint);
    void contextMenuRequested(const QPoint &hint);

private:
    /// What readers have been told; none of what nobody has asked for.
    struct Told {
        std::optional<QString> picture;
        std::optional<QString> label;
        std::optional<QString> title;
        std::optional<QString> toolTip;
    };

    QDBusMessage answer(const QDBusMessage &call);
    QDBusMessage property(const QDBusMessage &call);
    QVariant valueOf(const QString &name, const QString &reader);
    QString pictureId() const;
    QString title() const;
    QString toolTipId() const;
    Backdrop look();
    void lookAgain();
    const QList<StatusPixmap> &pixmaps(Backdrop backdrop);
    void announceChanges();
    void announce(std::optional<QString> &told, const QString &now, const QString &signal,
                  const QVariantList &arguments = {});

    QDBusConnection m_connection;
    QString m_path;
    QString m_menuPath;
    StatusImage m_image;
    QString m_label;
    QString m_headline;
    QString m_text;
    bool m_isAnnouncing = false;
    Told m_told;
    QStringList m_fileReaders;
    StatusIconFile m_iconFile{StatusIconFile::sessionFolder()};
    Backdrop m_backdrop = Backdrop::unknown; ///< What was behind the last template that was looked at.
    int m_looksLeft = 0;                 ///< At the bar since the item was registered, before it is taken as painted.
    std::optional<QString> m_pixmapsKey; ///< Of which image `m_pixmaps` are.
    Backdrop m_pixmapsBackdrop = Backdrop::unknown;
    QList<StatusPixmap> m_pixmaps;
};

} // namespace korvo
