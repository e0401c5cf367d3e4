#pragma once

#include "Platform/Freedesktop/SessionBus.h"
#include "Platform/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>

#include <memory>

namespace korvo {

/// One running program to a session bus: whoever has the name com.korvo.app. It answers the interface
/// org.freedesktop.Application there, by which a second start, or the desktop, asks it to show itself. Without a bus
/// everybody is the only one. Source: Desktop Entry Specification 1.5, D-Bus Activation.
class BusSingleInstance final : public SingleInstance {
    Q_OBJECT
public:
    using Bus = QDBusConnection (*)();

    /// Asks for the bus when it is first needed, since there may be no application object before.
    explicit BusSingleInstance(Bus bus = &currentSessionBus, QObject *parent = nullptr);
    ~BusSingleInstance() override;

    bool claim() override;
    void release() override;

    /// Takes the name again, if it was this program's, on a bus that has come in the place of the former one.
    void claimAgain();

private:
    class Object;

    const Bus m_bus;
    std::unique_ptr<Object> m_object; ///< Present while the name is ours.
};

} // namespace korvo
