#pragma once

#include "Platform/Linux/NotchInset.h"
#include "Platform/Screens.h"

namespace korvo {

/// The screens that Qt knows, the primary one first.
class QtScreens final : public Screens {
public:
    /// `machine` as for `notchInset`.
    explicit QtScreens(QStringList machine = deviceTreeCompatible()) : m_machine(std::move(machine)) { }

    QList<Screen> screens() const override;

private:
    QStringList m_machine;
};

} // namespace korvo
