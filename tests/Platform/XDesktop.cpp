#include "XDesktop.h"

#include <QProcess>
#include <QTest>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

// A field of the header is called so.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

template <typename T> using Reply = std::unique_ptr<T, Free>;

} // namespace

XClient::XClient() : m_connection(xcb_connect(nullptr, nullptr))
{
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    const Reply<xcb_xkb_use_extension_reply_t> xkb(
        xcb_xkb_use_extension_reply(m_connection, xcb_xkb_use_extension(m_connection, 1, 0), nullptr));
}

XClient::~XClient()
{
    xcb_disconnect(m_connection);
}

int XClient::grab(quint8 key, quint16 modifiers)
{
    const auto cookie
        = xcb_grab_key_checked(m_connection, false, m_root, modifiers, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const Reply<xcb_generic_error_t> error(xcb_request_check(m_connection, cookie));
    return error ? error->error_code : 0;
}

void XClient::ungrab(quint8 key, quint16 modifiers)
{
    const auto cookie = xcb_ungrab_key_checked(m_connection, key, m_root, modifiers);
    const Reply<xcb_generic_error_t> error(xcb_request_check(m_connection, cookie)); // It has been done.
}

bool XClient::showFocusedWindow(const QRect &place)
{
    m_window = xcb_generate_id(m_connection);
    constexpr quint32 white = 0xffffff;
    const quint32 values[]{white, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_BUTTON_PRESS};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, m_root, qint16(place.x()), qint16(place.y()),
                      quint16(place.width()), quint16(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    // Else the window manager looks for a place of its own.
    constexpr quint32 userPosition = 1;
    const quint32 hints[18]{userPosition};
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
                        32, 18, hints);
    return QTest::qWaitFor([this] {
        // A window manager that is still starting may miss the first request, and a hidden window gets no focus.
        xcb_map_window(m_connection, m_window);
        // Once the window goes, the focus must not end up nowhere: X11 looks for no grab then.
        xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, m_window, XCB_CURRENT_TIME);
        return hasFocus();
    });
}

void XClient::showUnmanagedWindow(const QRect &place, const QByteArray &type, bool isSavingUnder)
{
    m_window = xcb_generate_id(m_connection);
    constexpr quint32 white = 0xffffff;
    const quint32 values[]{white, true, isSavingUnder};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, m_root, qint16(place.x()), qint16(place.y()),
                      quint16(place.width()), quint16(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_SAVE_UNDER, values);
    if (!type.isEmpty()) {
        const xcb_atom_t value = atom(type.constData());
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM,
                            32, 1, &value);
    }
    xcb_map_window(m_connection, m_window);
    raiseUnmanagedWindow();
}

void XClient::raiseUnmanagedWindow()
{
    constexpr quint32 above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(m_connection, m_window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_flush(m_connection);
}

bool XClient::hasFocus() const
{
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return reply && reply->focus == m_window;
}

bool XClient::makeFullScreen()
{
    constexpr quint32 add = 1;
    ask(m_window, "_NET_WM_STATE", {add, atom("_NET_WM_STATE_FULLSCREEN")});
    return QTest::qWaitFor([this] {
        const Reply<xcb_get_geometry_reply_t> screen(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, m_root), nullptr));
        const Reply<xcb_get_geometry_reply_t> own(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, m_window), nullptr));
        return screen && own && screen->width == own->width && screen->height == own->height;
    });
}

void XClient::raise()
{
    constexpr quint32 fromPager = 2;
    ask(m_window, "_NET_ACTIVE_WINDOW", {fromPager});
}

QList<quint8> XClient::takePresses()
{
    receive();
    return std::exchange(m_presses, {});
}

int XClient::clickCount()
{
    receive();
    return m_clickCount;
}

void XClient::own(const char *selection)
{
    xcb_set_selection_owner(m_connection, m_window, atom(selection), XCB_CURRENT_TIME);
    xcb_flush(m_connection);
}

void XClient::receive()
{
    while (const auto event = Reply<xcb_generic_event_t>(xcb_poll_for_event(m_connection))) {
        const int type = event->response_type & 0x7f;
        if (type == XCB_KEY_PRESS)
            m_presses.append(reinterpret_cast<const xcb_key_press_event_t *>(event.get())->detail);
        else if (type == XCB_BUTTON_PRESS)
            ++m_clickCount;
    }
}

void XClient::lock(quint16 modifiers, quint8 group)
{
    const auto cookie = xcb_xkb_latch_lock_state_checked(m_connection, XCB_XKB_ID_USE_CORE_KBD, 0xff, quint8(modifiers),
                                                         true, group, 0, false, 0);
    const Reply<xcb_generic_error_t> error(xcb_request_check(m_connection, cookie)); // Waits for the server.
}

QByteArray XClient::windowManager() const
{
    const auto check = property(m_root, "_NET_SUPPORTING_WM_CHECK");
    xcb_window_t window = 0;
    if (check.size() != sizeof window)
        return {};
    std::memcpy(&window, check.constData(), sizeof window);
    return property(window, "_NET_WM_NAME");
}

bool XClient::setWorkspaceCount(quint32 count)
{
    ask(m_root, "_NET_NUMBER_OF_DESKTOPS", {count});
    return QTest::qWaitFor([&] { return numbers(m_root, "_NET_NUMBER_OF_DESKTOPS").value(0) == count; });
}

bool XClient::goToWorkspace(quint32 number)
{
    ask(m_root, "_NET_CURRENT_DESKTOP", {number});
    return QTest::qWaitFor([&] { return numbers(m_root, "_NET_CURRENT_DESKTOP").value(0) == number; });
}

QList<quint32> XClient::managedWindows() const
{
    return numbers(m_root, "_NET_CLIENT_LIST");
}

QList<quint32> XClient::stacking() const
{
    return numbers(m_root, "_NET_CLIENT_LIST_STACKING");
}

quint32 XClient::windowOfTitle(const QByteArray &title) const
{
    for (const quint32 window : managedWindows()) {
        if (property(window, "_NET_WM_NAME") == title)
            return window;
    }
    return 0;
}

QList<quint32> XClient::numbers(quint32 window, const char *name) const
{
    const auto bytes = property(window, name);
    QList<quint32> numbers(bytes.size() / qsizetype(sizeof(quint32)));
    if (!numbers.isEmpty())
        std::memcpy(numbers.data(), bytes.constData(), size_t(numbers.size()) * sizeof(quint32));
    return numbers;
}

void XClient::ask(quint32 window, const char *what, const QList<quint32> &data)
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom(what);
    for (qsizetype i = 0; i < data.size(); ++i)
        message.data.data32[i] = data[i];
    xcb_send_event(m_connection, false, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(m_connection);
}

xcb_atom_t XClient::atom(const char *name) const
{
    const auto cookie = xcb_intern_atom(m_connection, false, quint16(qstrlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

QByteArray XClient::property(xcb_window_t window, const char *name) const
{
    const auto cookie
        = xcb_get_property(m_connection, false, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 1 << 20);
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply.get())), xcb_get_property_value_length(reply.get())};
}

bool run(const QString &program, const QStringList &arguments)
{
    return QProcess::execute(program, arguments) == 0;
}

bool typeKeys(const QString &keys)
{
    return run(u"xdotool"_s, {u"key"_s, keys});
}

bool holdKeys(const QString &keys)
{
    return run(u"xdotool"_s, {u"keydown"_s, keys});
}

bool releaseKeys(const QString &keys)
{
    return run(u"xdotool"_s, {u"keyup"_s, keys});
}

bool setLayout(const QString &layout)
{
    return run(u"setxkbmap"_s,
               {u"-rules"_s, u"evdev"_s, u"-model"_s, u"pc105"_s, u"-layout"_s, layout, u"-option"_s, QString()});
}

} // namespace korvo
