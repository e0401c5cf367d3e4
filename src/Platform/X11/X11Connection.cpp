#include "Platform/X11/X11Connection.h"

#include <QGuiApplication>

namespace korvo {

xcb_connection_t *x11Connection()
{
    const auto *const application = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    if (!application)
        return nullptr;
    const auto *const x11 = application->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

} // namespace korvo
