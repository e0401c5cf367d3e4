#include "Platform/X11/X11InputPanel.h"

#include "Platform/X11/UserTime.h"
#include "Platform/X11/WindowProperties.h"
#include "Platform/X11/WindowShape.h"
#include "Platform/X11/X11Connection.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace korvo {

namespace {

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

template <typename T> using Reply = std::unique_ptr<T, Free>;

bool isWindowOfOurs(xcb_window_t window)
{
    return std::ranges::any_of(QGuiApplication::topLevelWindows(), [window](const QWindow *one) {
        return one->handle() && one->winId() == window; // Without a handle it has no native window, and would get one.
    });
}

/// Whether a window of the program has the keyboard. Grabs by other programs, as for a menu or a key, change nothing.
bool hasKeyboard()
{
    auto *const connection = x11Connection();
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return reply && isWindowOfOurs(reply->focus);
}

/// Makes a window that isn't shown yet a dialogue: window managers leave such windows where they are, and tiling ones don't
/// tile them. Unlike the toolkit's own dialogues it belongs to no other window, so that none is raised with it. The
/// toolkit's attribute for this has no effect on a frameless window.
void makeDialogue(xcb_window_t window)
{
    auto *const connection = x11Connection();
    if (!connection)
        return;
    const auto type = x11Atom("_NET_WM_WINDOW_TYPE_DIALOG");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, x11Atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1,
                        &type);
}

/// Keeps a window that isn't shown yet out of task lists and pagers. The toolkit leaves such states as they are.
void leaveOutOfLists(xcb_window_t window)
{
    auto *const connection = x11Connection();
    if (!connection)
        return;
    const std::array states{x11Atom("_NET_WM_STATE_SKIP_TASKBAR"), x11Atom("_NET_WM_STATE_SKIP_PAGER")};
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, window, x11Atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32,
                        quint32(states.size()), states.data());
}

/// Its window says of itself that it is one. What says so on the root window may be left from one that has ended.
bool hasWindowManager()
{
    constexpr char name[] = "_NET_SUPPORTING_WM_CHECK";
    const auto window = x11Numbers(x11RootWindow(), name);
    return !window.isEmpty() && x11Numbers(window.first(), name) == window;
}

/// Asks the window manager to give a window the keyboard as a person's own doing, so that its guard against programs that
/// take the focus unasked lets it pass. False if there is none that could be asked.
bool askForActivation(xcb_window_t window)
{
    auto *const connection = x11Connection();
    if (!connection || !hasWindowManager())
        return false;
    constexpr quint32 byTheUser = 2;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = x11Atom("_NET_ACTIVE_WINDOW");
    message.data.data32[0] = byTheUser;
    message.data.data32[1] = lastUserTime();
    xcb_send_event(connection, false, x11RootWindow(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(connection);
    return true;
}

} // namespace

class X11InputPanel::Window final : public QWidget {
public:
    explicit Window(X11InputPanel &panel) :
        QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::NoDropShadowWindowHint),
        m_panel(&panel)
    {
        setWindowTitle(QGuiApplication::applicationDisplayName()); // For screen readers.
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_QuitOnClose, false);
    }

    void leave() { m_panel = nullptr; }

private:
    bool event(QEvent *event) override
    {
        const bool isHandled = QWidget::event(event);
        // In device pixels, which may have another size on another screen. And some window managers take over for their
        // frames what of a window lets clicks through only when that changes while they have it.
        const bool isStale = event->type() == QEvent::ScreenChangeInternal || event->type() == QEvent::WindowActivate;
        if (isStale && m_panel)
            m_panel->applyShape();
        return isHandled;
    }

    X11InputPanel *m_panel;
};

X11InputPanel::X11InputPanel() : m_window(new Window(*this))
{
    m_focusLoss.setSingleShot(true);
    m_focusLoss.setInterval(0);
    connect(&m_focusLoss, &QTimer::timeout, this, &X11InputPanel::hideIfDeactivated);
    connect(&m_compositor, &CompositorWatch::isRunningChanged, this, &X11InputPanel::applyShape);
    qApp->installNativeEventFilter(this);
}

X11InputPanel::~X11InputPanel()
{
    if (qApp)
        qApp->removeNativeEventFilter(this);
    m_window->leave();
    m_window->hide();
    m_window->deleteLater();
}

void X11InputPanel::setContent(std::unique_ptr<QWidget> content, const QMargins &overflow)
{
    if (m_content) {
        m_content->hide();
        m_content->deleteLater();
    }
    m_content = content.release();
    m_overflow = m_content ? overflow : QMargins();
    if (m_content) {
        m_content->setParent(m_window);
        m_content->show();
    }
    layOut();
}

QWidget *X11InputPanel::content() const
{
    return m_content;
}

void X11InputPanel::setFrame(const QRect &frame)
{
    m_frame = frame;
    layOut();
}

void X11InputPanel::setShape(const QPainterPath &shape)
{
    m_shape = shape;
    applyShape();
}

void X11InputPanel::makeKeyAndOrderFront()
{
    if (!isVisible()) {
        m_hasHadKeyboard = false;
        const auto native = xcb_window_t(m_window->winId()); // All is set before anybody sees it.
        makeDialogue(native);
        leaveOutOfLists(native);
        layOut();
        m_window->show();
    }
    m_window->raise();
}

void X11InputPanel::activateIgnoringOtherApps()
{
    // The window manager gets this behind the request to show the window, so it knows the window by then.
    if (isVisible() && !askForActivation(xcb_window_t(m_window->winId())))
        m_window->activateWindow();
}

void X11InputPanel::makeKey()
{
    if (isVisible() && !m_window->isActiveWindow())
        activateIgnoringOtherApps();
}

void X11InputPanel::orderOut()
{
    m_focusLoss.stop();
    m_window->hide();
}

bool X11InputPanel::isVisible() const
{
    return m_window->isVisible();
}

bool X11InputPanel::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t" || !isVisible())
        return false;
    const int type = static_cast<const xcb_generic_event_t *>(message)->response_type & 0x7f;
    if (type != XCB_FOCUS_IN && type != XCB_FOCUS_OUT)
        return false;
    const auto *const event = static_cast<const xcb_focus_in_event_t *>(message); // The other has the same fields.
    // Who grabs the keyboard gives it back: a menu, a key of the desktop, our own shortcut.
    const bool isMove = event->mode == XCB_NOTIFY_MODE_NORMAL || event->mode == XCB_NOTIFY_MODE_WHILE_GRABBED;
    if (!isMove || event->detail == XCB_NOTIFY_DETAIL_POINTER || event->detail == XCB_NOTIFY_DETAIL_INFERIOR)
        return false;
    if (type == XCB_FOCUS_OUT)
        m_focusLoss.start();
    else if (event->event == xcb_window_t(m_window->internalWinId()))
        m_hasHadKeyboard = true;
    return false;
}

/// The keyboard may have gone to another window of the program, which leaves the panel as it is.
void X11InputPanel::hideIfDeactivated()
{
    if (isVisible() && m_hasHadKeyboard && !hasKeyboard())
        orderOut();
}

void X11InputPanel::layOut()
{
    const QRect place = m_frame.marginsAdded(m_overflow);
    if (!x11Connection())
        m_window->setFixedSize(place.size()); // Wayland's tiling compositors don't tile such windows.
    m_window->setGeometry(place);
    if (m_content)
        m_content->setGeometry(QRect(QPoint(), m_window->size()));
    applyShape();
}

void X11InputPanel::applyShape()
{
    QPainterPath shape = m_shape;
    if (shape.isEmpty())
        shape.addRect(QRectF(QPointF(), m_frame.size()));
    setWindowShape(*m_window, shape.translated(m_overflow.left(), m_overflow.top()), !m_compositor.isRunning());
}

} // namespace korvo
