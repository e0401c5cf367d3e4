#pragma once

#include <QList>
#include <QRectF>

#include <optional>

namespace korvo {

/// One screen of the desktop, in logical pixels.
struct Screen {
    QRectF geometry;
    double topSafeAreaInset = 0; ///< Height of the strip beside a camera housing; 0 where there is none.
    QRectF available = {};       ///< What the desktop's bars leave of it.

    bool operator==(const Screen &) const = default;
};

/// The screens that the desktop has at the moment.
class Screens {
public:
    virtual ~Screens() = default;

    /// All screens, the one that holds the desktop's bar first; empty if there is none.
    virtual QList<Screen> screens() const = 0;

    /// The screen where the user works: that of the window which has the keyboard, of whatever program, else that of the
    /// pointer, else the first. None if there is no screen.
    virtual std::optional<Screen> mainScreen() const = 0;
};

} // namespace korvo
