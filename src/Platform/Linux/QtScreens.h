#pragma once

#include "Platform/Linux/NotchInset.h"
#include "Platform/Screens.h"

#include <QTimer>

class QScreen;

namespace korvo {

/// The screens that Qt knows, the primary one first. They are watched from the first listener on, which needs the
/// application object.
class QtScreens final : public Screens {
    Q_OBJECT
public:
    /// `machine` as for `notchInset`.
    explicit QtScreens(QStringList machine = deviceTreeCompatible());

    QList<Screen> screens() const override;
    QPointF pointerPosition() const override;

protected:
    void connectNotify(const QMetaMethod &signal) override;

private:
    void watch();
    void watchScreen(const QScreen *screen);

    QStringList m_machine;
    QTimer m_settled; ///< Runs since something has changed.
    bool m_isWatching = false;
};

} // namespace korvo
