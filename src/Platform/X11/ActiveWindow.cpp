#include "Platform/X11/ActiveWindow.h"

#include "Platform/X11/WindowProperties.h"
#include "Platform/X11/X11Connection.h"

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace korvo {

namespace {

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

template <typename T> using Reply = std::unique_ptr<T, Free>;

} // namespace

std::optional<QRect> x11ActiveWindowGeometry()
{
    auto *const connection = x11Connection();
    const xcb_window_t window = x11Numbers(x11RootWindow(), "_NET_ACTIVE_WINDOW").value(0);
    if (!connection || window == XCB_WINDOW_NONE)
        return std::nullopt;
    if (x11Numbers(window, "_NET_WM_WINDOW_TYPE").contains(x11Atom("_NET_WM_WINDOW_TYPE_DESKTOP")))
        return std::nullopt; // It is on all screens.
    const auto sizeCookie = xcb_get_geometry(connection, window);
    const auto placeCookie = xcb_translate_coordinates(connection, window, x11RootWindow(), 0, 0);
    const Reply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(connection, sizeCookie, nullptr));
    const Reply<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(connection, placeCookie, nullptr));
    if (!size || !place)
        return std::nullopt;
    return QRect(place->dst_x, place->dst_y, size->width, size->height);
}

} // namespace korvo
