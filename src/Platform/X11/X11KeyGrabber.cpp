#include "Platform/X11/X11KeyGrabber.h"

#include "Platform/X11/MacKeyCodes.h"
#include "Platform/X11/ModifierMap.h"
#include "Platform/X11/UserTime.h"
#include "Platform/X11/X11Connection.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <utility>

// A field of the header is called so.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace korvo {

namespace {

/// A change of the keyboard comes in several events.
constexpr auto renewalDelay = 50ms;
constexpr auto releaseWatchInterval = 50ms;

constexpr quint16 allModifiers = 0xff;

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

QList<xcb_window_t> rootsOf(xcb_connection_t *connection)
{
    QList<xcb_window_t> roots;
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection)); screen.rem > 0; xcb_screen_next(&screen))
        roots.append(screen.data->root);
    return roots;
}

} // namespace

QList<quint16> X11KeyGrabber::Grab::combinations() const
{
    QList<quint16> found;
    for (quint16 subset = locks;; subset = quint16((subset - 1) & locks)) {
        found.append(modifiers | subset);
        if (subset == 0)
            return found;
    }
}

X11KeyGrabber::X11KeyGrabber(QObject *parent) : KeyGrabber(parent)
{
    m_renewal.setSingleShot(true);
    m_renewal.setInterval(renewalDelay);
    connect(&m_renewal, &QTimer::timeout, this, &X11KeyGrabber::renew);
    m_releaseWatch.setInterval(releaseWatchInterval);
    connect(&m_releaseWatch, &QTimer::timeout, this, &X11KeyGrabber::watchRelease);
}

X11KeyGrabber::~X11KeyGrabber()
{
    uninstall();
}

int X11KeyGrabber::install()
{
    uninstall();
    auto *const connection = x11Connection();
    if (!connection)
        return notSupported;
    m_connection = connection;
    const auto *const xkb = xcb_get_extension_data(connection, &xcb_xkb_id);
    m_keyboardEvent = xkb && xkb->present ? xkb->first_event : 0;
    if (m_keyboardEvent != 0) {
        constexpr quint16 events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
        constexpr quint16 parts = 0xff;
        xcb_xkb_select_events(connection, XCB_XKB_ID_USE_CORE_KBD, events, 0, events, parts, parts, nullptr);
    }
    qApp->installNativeEventFilter(this);
    return ok;
}

void X11KeyGrabber::uninstall()
{
    if (!m_connection)
        return;
    if (qApp) {
        ungrab();
        qApp->removeNativeEventFilter(this);
    }
    m_isWanted = false;
    m_grab.reset(); // Without an application its connection is closed, and the key given back with it.
    m_connection = nullptr;
}

int X11KeyGrabber::grab(quint32 keyCode, quint32 modifiers)
{
    ungrab();
    if (!m_connection)
        return notSupported;
    const auto evdev = evdevKeyCode(keyCode);
    if (!evdev || *evdev + 8 > 0xff)
        return unknownKey;
    m_evdevKeyCode = *evdev;
    m_modifiers = modifiers;
    const auto wanted = currentGrab();
    const int status = take(wanted);
    if (status != ok)
        return status;
    m_isWanted = true;
    hold(wanted);
    return ok;
}

void X11KeyGrabber::ungrab()
{
    m_isWanted = false;
    m_renewal.stop();
    release();
}

void X11KeyGrabber::hold(const Grab &grab)
{
    m_grab = grab;
    // Whoever has just chosen the shortcut may still hold it down: the repeats of that press are no press.
    m_isDown = isKeyDown();
    if (m_isDown)
        startReleaseWatch();
}

void X11KeyGrabber::release()
{
    m_releaseWatch.stop();
    m_isDown = false;
    m_releaseTime = 0;
    if (const auto held = std::exchange(m_grab, std::nullopt))
        giveBack(*held);
}

X11KeyGrabber::Grab X11KeyGrabber::currentGrab() const
{
    const auto map = ModifierMap::read(m_connection);
    Grab grab;
    grab.key = quint8(m_evdevKeyCode + 8);
    grab.modifiers = map.mask(m_modifiers);
    grab.locks = quint16(map.locks & ~grab.modifiers);
    return grab;
}

/// All of it or nothing; what we hold already may be taken again.
int X11KeyGrabber::take(const Grab &grab)
{
    QList<xcb_void_cookie_t> cookies;
    const auto combinations = grab.combinations();
    for (const auto root : rootsOf(m_connection)) {
        for (const auto combination : combinations) {
            cookies.append(xcb_grab_key_checked(m_connection, false, root, combination, grab.key, XCB_GRAB_MODE_ASYNC,
                                                XCB_GRAB_MODE_ASYNC));
        }
    }
    int status = ok;
    for (const auto cookie : std::as_const(cookies)) {
        const std::unique_ptr<xcb_generic_error_t, Free> error(xcb_request_check(m_connection, cookie));
        if (error && status == ok)
            status = error->error_code;
    }
    if (status != ok)
        giveBack(grab);
    return status;
}

void X11KeyGrabber::giveBack(const Grab &grab, const Grab *except)
{
    const auto kept = except && except->key == grab.key ? except->combinations() : QList<quint16>();
    for (const auto root : rootsOf(m_connection)) {
        for (const auto combination : grab.combinations()) {
            if (!kept.contains(combination))
                xcb_ungrab_key(m_connection, grab.key, root, combination);
        }
    }
    xcb_flush(m_connection);
}

/// The new combinations are taken before the old ones go, so that no press falls between. A key that another program
/// has kept from us is tried for again at the next change.
void X11KeyGrabber::renew()
{
    if (!m_isWanted)
        return;
    const auto wanted = currentGrab();
    const int status = take(wanted);
    const bool wasHeld = m_grab.has_value();
    if (status == ok && wasHeld) {
        const auto former = std::exchange(m_grab, wanted);
        giveBack(*former, &wanted);
    } else if (status == ok) {
        hold(wanted);
        emit grabbed();
    } else if (wasHeld) {
        release();
        emit failed(status);
    }
}

bool X11KeyGrabber::isKeyDown() const
{
    const std::unique_ptr<xcb_query_keymap_reply_t, Free> reply(
        xcb_query_keymap_reply(m_connection, xcb_query_keymap(m_connection), nullptr));
    return reply && (reply->keys[m_grab->key / 8] & (1 << (m_grab->key % 8))) != 0;
}

/// For releases that do not come to us: that of a press from before the grab, or from before our own window gave the
/// keyboard up.
void X11KeyGrabber::startReleaseWatch()
{
    m_wasUp = false;
    m_releaseWatch.start();
}

/// Repeats that the server sent before the release may still wait behind this timer, so the key has to be up twice.
void X11KeyGrabber::watchRelease()
{
    if (!std::exchange(m_wasUp, !isKeyDown()) || !m_wasUp)
        return;
    m_releaseWatch.stop();
    m_isDown = false;
}

bool X11KeyGrabber::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (!m_isWanted || eventType != "xcb_generic_event_t"_ba)
        return false;
    const auto *const event = static_cast<const xcb_generic_event_t *>(message);
    const quint8 type = event->response_type & 0x7f;
    if (type == XCB_KEY_PRESS && m_grab)
        return handlePress(*static_cast<const xcb_key_press_event_t *>(message));
    if (type == XCB_KEY_RELEASE && m_grab)
        return handleRelease(*static_cast<const xcb_key_release_event_t *>(message));
    if (type == m_keyboardEvent) {
        const quint8 kind = event->pad0; // The field xkbType of all events of the extension.
        if (kind == XCB_XKB_NEW_KEYBOARD_NOTIFY || kind == XCB_XKB_MAP_NOTIFY)
            m_renewal.start();
    }
    return false;
}

bool X11KeyGrabber::handlePress(const xcb_key_press_event_t &event)
{
    const quint16 modifiers = quint16(event.state & allModifiers & ~m_grab->locks);
    if (event.detail != m_grab->key || modifiers != m_grab->modifiers || !rootsOf(m_connection).contains(event.event))
        return false;
    // A held key repeats as presses alone, or as releases and presses at the same instant.
    const bool isRepeat = m_isDown || (m_releaseTime != 0 && event.time == m_releaseTime);
    m_isDown = true;
    startReleaseWatch();
    noteUserTime(event.time);
    if (!isRepeat)
        emit pressed(); // The last thing: who is told may give the key back.
    return false;       // The toolkit notes the time too, and tells it of windows that it then shows.
}

bool X11KeyGrabber::handleRelease(const xcb_key_press_event_t &event)
{
    if (event.detail != m_grab->key)
        return false;
    // Whatever window of ours it comes to: a menu that was opened at the press grabs the keyboard for itself.
    m_isDown = false;
    m_releaseWatch.stop();
    m_releaseTime = event.time;
    return rootsOf(m_connection).contains(event.event);
}

} // namespace korvo
