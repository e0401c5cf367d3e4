#include "Platform/X11/X11MouseMonitor.h"

#include "Platform/X11/X11Connection.h"

#include <QApplication>
#include <QCursor>
#include <QInputEvent>
#include <QPointer>
#include <QScreen>
#include <QSocketNotifier>

#include <algorithm>
#include <cstdlib>
#include <span>
#include <utility>

#include <xcb/xinput.h>

using namespace std::chrono_literals;

namespace korvo {

namespace {

/// In which the toolkit gets a press that we have heard of, and is told of it.
constexpr std::chrono::milliseconds judgementTime = 10ms;

constexpr qsizetype rememberedCount = 16;

constexpr quint32 leftButton = 1;
constexpr quint32 rightButton = 3;

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

template <typename T> using Reply = std::unique_ptr<T, Free>;

/// Whether the toolkit has made that window: identifiers of a connection begin alike.
bool isOwnWindow(xcb_window_t window)
{
    const auto *const setup = xcb_get_setup(x11Connection());
    return (window & ~setup->resource_id_mask) == setup->resource_id_base;
}

/// Whether the pointer is where desktops have their bars.
bool isBesideWorkArea()
{
    const QPoint pointer = QCursor::pos();
    const QScreen *const screen = QGuiApplication::screenAt(pointer);
    return screen && !screen->availableGeometry().contains(pointer);
}

} // namespace

X11MouseMonitor::X11MouseMonitor(QObject *parent) : MouseMonitor(parent)
{
    m_judgement.setSingleShot(true);
    m_judgement.setInterval(judgementTime);
    connect(&m_judgement, &QTimer::timeout, this, &X11MouseMonitor::judge);
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        m_buttonOnBar.reset();
        emit mouseDown();
    });
    if (!x11Connection())
        return;
    m_connection.reset(xcb_connect(nullptr, nullptr));
    if (!selectEvents()) {
        m_connection.reset();
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection.get()), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11MouseMonitor::receive);
    qApp->installEventFilter(this);
    // What came while the replies above were read is no longer in the socket.
    QMetaObject::invokeMethod(this, &X11MouseMonitor::receive, Qt::QueuedConnection);
}

X11MouseMonitor::~X11MouseMonitor()
{
    if (m_notifier)
        m_notifier->setEnabled(false);
}

void X11MouseMonitor::forgetPressOnBar()
{
    // The bar may have been quicker than the X server's event, which would count as a press of its own.
    const QPointer self(this);
    receive();
    if (!self)
        return;
    m_presses.removeIf([](const Press &press) { return press.isOnBar; });
    m_buttonOnBar.reset();
    m_patience.stop();
}

/// The toolkit is told which window was pressed. By its place the pointer tells less: it moves on, and the pressed window
/// may be gone already.
bool X11MouseMonitor::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress && event->spontaneous()) {
        m_ownPresses.append(quint32(static_cast<QInputEvent *>(event)->timestamp()));
        if (m_ownPresses.size() > rememberedCount)
            m_ownPresses.removeFirst();
    }
    return MouseMonitor::eventFilter(watched, event);
}

bool X11MouseMonitor::selectEvents()
{
    auto *const connection = m_connection.get();
    if (xcb_connection_has_error(connection))
        return false;
    const auto *const extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (!extension || !extension->present)
        return false;
    // From 2.1 on raw events also come while somebody has grabbed the pointer, to those who know 2.1.
    const Reply<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(connection, xcb_input_xi_query_version(connection, 2, 2), nullptr));
    if (!version || version->major_version < 2)
        return false;
    m_extension = extension->major_opcode;
    m_windowType = atom("_NET_WM_WINDOW_TYPE");
    m_dockType = atom("_NET_WM_WINDOW_TYPE_DOCK");
    m_root = x11RootWindow();

    struct {
        xcb_input_event_mask_t head;
        quint32 events;
    } const wanted{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                   XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
    const Reply<xcb_generic_error_t> error(
        xcb_request_check(connection, xcb_input_xi_select_events_checked(connection, m_root, 1, &wanted.head)));
    return !error;
}

void X11MouseMonitor::receive()
{
    if (!m_connection)
        return;
    const QPointer self(this);
    while (const auto event = Reply<xcb_generic_event_t>(xcb_poll_for_event(m_connection.get()))) {
        if ((event->response_type & 0x7f) != XCB_GE_GENERIC)
            continue;
        const auto &raw = *reinterpret_cast<const xcb_input_raw_button_press_event_t *>(event.get());
        if (raw.extension != m_extension || (raw.detail != leftButton && raw.detail != rightButton))
            continue;
        if (raw.event_type == XCB_INPUT_RAW_BUTTON_PRESS)
            handlePress(raw.detail, raw.time);
        else if (raw.event_type == XCB_INPUT_RAW_BUTTON_RELEASE)
            handleRelease(raw.detail);
        if (!self)
            return;
    }
    if (xcb_connection_has_error(m_connection.get()))
        m_notifier->setEnabled(false); // The X server is gone, and will take the program along.
}

void X11MouseMonitor::handlePress(quint32 button, quint32 time)
{
    // An open menu of ours has grabbed the pointer, and gets every press.
    if (QApplication::activePopupWidget())
        return;
    const auto target = targetAtPointer();
    if (target.isOwn)
        return;
    m_presses.append({button, time, target.isBar, false});
    if (!m_judgement.isActive())
        m_judgement.start();
}

void X11MouseMonitor::handleRelease(quint32 button)
{
    for (Press &press : m_presses)
        press.isReleased = press.isReleased || press.button == button;
    if (m_buttonOnBar == button)
        m_patience.start();
}

void X11MouseMonitor::judge()
{
    const QPointer self(this);
    for (const Press &press : std::exchange(m_presses, {})) {
        if (m_ownPresses.contains(press.time))
            continue;
        m_patience.stop();
        m_buttonOnBar.reset();
        if (!press.isOnBar) {
            emit mouseDown();
            if (!self)
                return;
            continue;
        }
        m_buttonOnBar = press.button;
        if (press.isReleased)
            m_patience.start();
    }
}

/// What is under the pointer: raw events don't tell. From the root window down to the innermost one.
X11MouseMonitor::Target X11MouseMonitor::targetAtPointer()
{
    Target target;
    auto window = m_root;
    while (true) {
        const Reply<xcb_query_pointer_reply_t> pointer(
            xcb_query_pointer_reply(m_connection.get(), xcb_query_pointer(m_connection.get(), window), nullptr));
        if (!pointer || pointer->child == XCB_WINDOW_NONE)
            break;
        window = pointer->child;
        target.isOwn = target.isOwn || isOwnWindow(window);
        target.isBar = target.isBar || isDock(window);
    }
    target.isBar = target.isBar || isBesideWorkArea();
    return target;
}

bool X11MouseMonitor::isDock(xcb_window_t window) const
{
    constexpr quint32 longest = 16;
    const Reply<xcb_get_property_reply_t> types(xcb_get_property_reply(
        m_connection.get(),
        xcb_get_property(m_connection.get(), false, window, m_windowType, XCB_ATOM_ATOM, 0, longest), nullptr));
    if (!types || types->format != 32)
        return false;
    const auto *const first = static_cast<const xcb_atom_t *>(xcb_get_property_value(types.get()));
    return std::ranges::count(std::span(first, types->value_len), m_dockType) > 0;
}

xcb_atom_t X11MouseMonitor::atom(const char *name) const
{
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_connection.get(), xcb_intern_atom(m_connection.get(), false, quint16(qstrlen(name)), name), nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

} // namespace korvo
