#pragma once

#include "Platform/Linux/NotchInset.h"
#include "Platform/Screens.h"

#include <QRect>

#include <QTimer>
#include <functional>

class QScreen;

namespace korvo {

/// The screens that Qt knows, the primary one first. They are watched from the first listener on, which needs the
/// application object.
class QtScreens final : public Screens {
    Q_OBJECT
public:
    /// Where the window is that has the keyboard, in device pixels of the whole desktop; none if nobody knows.
    using ActiveWindow = std::function<std::optional<QRect>()>;

    /// Whether the toolkit's place of the pointer is where it is.
    using PointerCheck = std::function<bool()>;

    /// `machine` as for `notchInset`.
    explicit QtScreens(QStringList machine = deviceTreeCompatible(), ActiveWindow activeWindow = {},
                       PointerCheck isPointerKnown = {});

    QList<Screen> screens() const override;
    std::optional<Screen> mainScreen() const override;
    std::optional<QPointF> pointerPosition() const override;

protected:
    void connectNotify(const QMetaMethod &signal) override;

private:
    Screen describe(const QScreen &screen) const;
    void watch();
    void watchScreen(const QScreen *screen);

    QStringList m_machine;
    ActiveWindow m_activeWindow;
    PointerCheck m_isPointerKnown;
    QTimer m_settled; ///< Runs since something has changed.
    bool m_isWatching = false;
};

} // namespace korvo
