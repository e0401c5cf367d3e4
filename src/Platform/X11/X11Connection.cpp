#include "Platform/X11/X11Connection.h"

#include <QGuiApplication>

#include <cstdlib>

#include <xcb/xcb.h>

namespace korvo {

xcb_connection_t *x11Connection()
{
    const auto *const application = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    if (!application)
        return nullptr;
    const auto *const x11 = application->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

int x11ScreenNumber()
{
    char *host = nullptr;
    int display = 0;
    int screen = 0;
    if (!xcb_parse_display(nullptr, &host, &display, &screen))
        return 0;
    std::free(host);
    return screen;
}

quint32 x11RootWindow()
{
    auto *const connection = x11Connection();
    if (!connection)
        return XCB_WINDOW_NONE;
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int number = x11ScreenNumber(); number > 0 && screen.rem > 1; --number)
        xcb_screen_next(&screen);
    return screen.data->root;
}

} // namespace korvo
