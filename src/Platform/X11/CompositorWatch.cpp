#include "Platform/X11/CompositorWatch.h"

#include "Platform/X11/X11Connection.h"

#include <QCoreApplication>

#include <cstdlib>
#include <memory>
#include <utility>

#include <xcb/xfixes.h>

namespace korvo {

namespace {

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

} // namespace

CompositorWatch::CompositorWatch(QObject *parent) : QObject(parent)
{
    auto *const connection = x11Connection();
    if (!connection)
        return;
    const auto name = "_NET_WM_CM_S" + QByteArray::number(x11ScreenNumber());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> atom(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, false, quint16(name.size()), name.constData()), nullptr));
    if (!atom)
        return;
    m_selection = atom->atom;
    const auto *const xfixes = xcb_get_extension_data(connection, &xcb_xfixes_id);
    if (xfixes && xfixes->present) {
        m_selectionEvent = xfixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
        // The toolkit has selected the same events for itself, so they are never given up.
        xcb_xfixes_select_selection_input(connection, x11RootWindow(), m_selection,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                                              | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                                              | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
        qApp->installNativeEventFilter(this);
    }
    const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, m_selection), nullptr));
    m_isRunning = owner && owner->owner != XCB_WINDOW_NONE;
}

CompositorWatch::~CompositorWatch()
{
    if (qApp)
        qApp->removeNativeEventFilter(this);
}

bool CompositorWatch::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    if ((static_cast<const xcb_generic_event_t *>(message)->response_type & 0x7f) != m_selectionEvent)
        return false;
    const auto *const event = static_cast<const xcb_xfixes_selection_notify_event_t *>(message);
    if (event->selection == m_selection)
        setRunning(event->owner != XCB_WINDOW_NONE);
    return false;
}

void CompositorWatch::setRunning(bool isRunning)
{
    if (std::exchange(m_isRunning, isRunning) == isRunning)
        return;
    // Queued: the toolkit has yet to see the event.
    QMetaObject::invokeMethod(this, &CompositorWatch::isRunningChanged, Qt::QueuedConnection);
}

} // namespace korvo
