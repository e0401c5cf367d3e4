#pragma once

#include <QList>
#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <optional>

namespace korvo {

/// One screen of the desktop, in logical pixels.
struct Screen {
    QRectF geometry;
    double topSafeAreaInset = 0; ///< Height of the strip beside a camera housing; 0 where there is none.
    QRectF available = {};       ///< What the desktop's bars leave of it.
    QString name = {};           ///< Of its output or monitor, the same wherever it stands.

    bool operator==(const Screen &) const = default;
};

/// The screens that the desktop has at the moment.
class Screens : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// All screens, the one that holds the desktop's bar first; empty if there is none.
    virtual QList<Screen> screens() const = 0;

    /// The screen where the user works: that of the window which has the keyboard, of whatever program, else that of the
    /// pointer, else the first. None if there is no screen.
    virtual std::optional<Screen> mainScreen() const = 0;

    /// Where the pointer is, in the same coordinates. None where nobody can tell, as over windows of another window system.
    virtual std::optional<QPointF> pointerPosition() const = 0;

signals:
    /// Screens have come, gone, moved, or got another size, scale or order, and the desktop has settled since. A change
    /// of its bars alone doesn't count.
    void changed();
};

} // namespace korvo
