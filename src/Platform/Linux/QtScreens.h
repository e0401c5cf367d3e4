#pragma once

#include "Platform/Linux/NotchInset.h"
#include "Platform/Screens.h"

#include <QRect>

#include <functional>

class QScreen;

namespace korvo {

/// The screens that Qt knows, the primary one first.
class QtScreens final : public Screens {
public:
    /// Where the window is that has the keyboard, in device pixels of the whole desktop; none if nobody knows.
    using ActiveWindow = std::function<std::optional<QRect>()>;

    /// `machine` as for `notchInset`.
    explicit QtScreens(QStringList machine = deviceTreeCompatible(), ActiveWindow activeWindow = {}) :
        m_machine(std::move(machine)),
        m_activeWindow(std::move(activeWindow))
    {
    }

    QList<Screen> screens() const override;
    std::optional<Screen> mainScreen() const override;

private:
    Screen describe(const QScreen &screen) const;

    QStringList m_machine;
    ActiveWindow m_activeWindow;
};

} // namespace korvo
