#include "XDesktop.h"

#include <QProcess>
#include <QTest>

#include <cstdlib>
#include <cstring>
#include <memory>

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

bool XClient::showFocusedWindow()
{
    m_window = xcb_generate_id(m_connection);
    const quint32 events = XCB_EVENT_MASK_KEY_PRESS;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, m_root, 100, 100, 300, 200, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    return QTest::qWaitFor([this] {
        // A window manager that is still starting may miss the first request, and a hidden window gets no focus.
        xcb_map_window(m_connection, m_window);
        // Once the window goes, the focus must not end up nowhere: X11 looks for no grab then.
        xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, m_window, XCB_CURRENT_TIME);
        return hasFocus();
    });
}

bool XClient::hasFocus() const
{
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return reply && reply->focus == m_window;
}

QList<quint8> XClient::takePresses()
{
    QList<quint8> keys;
    while (const auto event = Reply<xcb_generic_event_t>(xcb_poll_for_event(m_connection))) {
        if ((event->response_type & 0x7f) == XCB_KEY_PRESS)
            keys.append(reinterpret_cast<const xcb_key_press_event_t *>(event.get())->detail);
    }
    return keys;
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

xcb_atom_t XClient::atom(const char *name) const
{
    const auto cookie = xcb_intern_atom(m_connection, false, quint16(qstrlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

QByteArray XClient::property(xcb_window_t window, const char *name) const
{
    const auto cookie = xcb_get_property(m_connection, false, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 64);
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
