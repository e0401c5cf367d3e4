#include "Platform/X11/KnownPointer.h"

#include "Platform/X11/X11Connection.h"

#include <QByteArrayView>

#include <cstdlib>
#include <memory>

#include <xcb/xinput.h>

namespace korvo {

namespace {

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

template <typename T> using Reply = std::unique_ptr<T, Free>;

/// Older servers have no extension that says so, but all name their devices alike. They come with the compositor's seat,
/// so this is asked each time.
bool isXWayland(xcb_connection_t *connection)
{
    const auto *const input = xcb_get_extension_data(connection, &xcb_input_id);
    if (!input || !input->present)
        return false;
    // The server answers only those who have told what they know.
    const Reply<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(connection, xcb_input_xi_query_version(connection, 2, 2), nullptr));
    const Reply<xcb_input_xi_query_device_reply_t> devices(xcb_input_xi_query_device_reply(
        connection, xcb_input_xi_query_device(connection, XCB_INPUT_DEVICE_ALL), nullptr));
    if (!devices)
        return false;
    for (auto device = xcb_input_xi_query_device_infos_iterator(devices.get()); device.rem > 0;
         xcb_input_xi_device_info_next(&device)) {
        const QByteArrayView name(xcb_input_xi_device_info_name(device.data),
                                  xcb_input_xi_device_info_name_length(device.data));
        if (name.startsWith("xwayland-pointer"))
            return true;
    }
    return false;
}

} // namespace

bool isX11PointerKnown()
{
    auto *const connection = x11Connection();
    if (!connection || !isXWayland(connection))
        return true;
    // Nobody sees the root window there: over it the pointer has left all X windows.
    const Reply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, x11RootWindow()), nullptr));
    return pointer && pointer->child != XCB_WINDOW_NONE;
}

} // namespace korvo
