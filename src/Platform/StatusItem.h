#pragma once

#include "Platform/StatusImage.h"

#include <QList>
#include <QObject>
#include <QRect>
#include <QString>

#include <functional>

namespace korvo {

/// One line of the status item's menu.
struct StatusMenuEntry {
    QString label; ///< Plain text as it stands; empty makes a separator.
    bool isEnabled = true;
    std::function<void()> action;
};

/// The program's permanent place in the desktop's tray: a picture, a text beside it where the desktop shows one, a tool
/// tip, a menu for desktops that open one, and the click. The same values again are free: the adapter compares with
/// what it last sent. The tray may come, go and come back at any time.
class StatusItem : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    virtual void setImage(const StatusImage &image) = 0;

    /// The text beside the picture, with a leading blank if it is not empty, as in " 0:12:34".
    virtual void setTitle(const QString &title) = 0;

    /// What the pointer reads out: a first line in bold and a second line. It is also the accessible title. An adapter
    /// may add the title where the desktop has no place for it.
    virtual void setToolTip(const QString &headline, const QString &text) = 0;

    virtual void setMenu(const QList<StatusMenuEntry> &menu) = 0;

    /// The item's place on the screen in logical pixels, as near as the desktop tells.
    virtual QRect button() const = 0;

    /// True while some tray shows the item.
    virtual bool isShown() const = 0;

signals:
    /// A click, with the item's place.
    void activated(const QRect &button);
    /// Somebody is about to see the menu.
    void menuOpened();
    void isShownChanged();
};

} // namespace korvo
