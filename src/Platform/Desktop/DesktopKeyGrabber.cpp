#include "Platform/Desktop/DesktopKeyGrabber.h"

#include "Platform/Freedesktop/PortalKeyGrabber.h"
#include "Platform/X11/X11KeyGrabber.h"
#include "Platform/X11/XkbKeyboardLayout.h"

namespace korvo {

bool isWaylandSession()
{
    return qgetenv("XDG_SESSION_TYPE") == "wayland" || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

std::unique_ptr<KeyGrabber> makeDesktopKeyGrabber()
{
    if (!isWaylandSession())
        return std::make_unique<X11KeyGrabber>();
    return std::make_unique<PortalKeyGrabber>([](quint32 keyCode) { return XkbKeyboardLayout().keysymName(keyCode); });
}

} // namespace korvo
