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

    /// `machine` as for `notchInset`.
    explicit QtScreens(QStringList machine = deviceTreeCompatible(), ActiveWindow activeWindow = {});

    QList<Screen> screens() const override;
    std::optional<Screen> mainScreen() const override;
    QPointF pointerPosition() const override;

protected:
    void connectNotify(const QMetaMethod &signal) override;

private:
    Screen describe(const QScreen &screen) const;
    void watch();
    void watchScreen(const QScreen *screen);

    QStringList m_machine;
    ActiveWindow m_activeWindow;
    QTimer m_settled; ///< Runs since something has changed.
    bool m_isWatching = false;
};

} // namespace korvo
