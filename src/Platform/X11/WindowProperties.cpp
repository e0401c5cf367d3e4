#include "Platform/X11/WindowProperties.h"

#include "Platform/X11/X11Connection.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include <xcb/xcb.h>

namespace korvo {

namespace {

constexpr quint32 mostNumbers = 1024; // More than any property has that is asked for.

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

template <typename T> using Reply = std::unique_ptr<T, Free>;

} // namespace

quint32 x11Atom(const char *name)
{
    auto *const connection = x11Connection();
    if (!connection)
        return XCB_ATOM_NONE;
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, false, quint16(std::strlen(name)), name), nullptr));
    return reply ? reply->atom : quint32(XCB_ATOM_NONE);
}

QList<quint32> x11Numbers(quint32 window, const char *property)
{
    auto *const connection = x11Connection();
    if (!connection || window == XCB_WINDOW_NONE)
        return {};
    const auto cookie = xcb_get_property(connection, false, window, x11Atom(property), XCB_ATOM_ANY, 0, mostNumbers);
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto *const first = static_cast<const quint32 *>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

} // namespace korvo
