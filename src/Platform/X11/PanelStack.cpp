#include "Platform/X11/PanelStack.h"

#include "Platform/X11/WindowProperties.h"
#include "Platform/X11/X11Connection.h"

#include <QGuiApplication>
#include <QRect>
#include <QScreen>
#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <span>

using namespace std::chrono_literals;

namespace korvo {

namespace {

constexpr std::chrono::milliseconds settleTime = 30ms; // A change comes in several events.

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};

template <typename T> using Reply = std::unique_ptr<T, Free>;

QList<xcb_window_t> childrenOf(xcb_connection_t *connection, xcb_window_t window)
{
    const Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
    if (!tree)
        return {};
    const auto *const first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

/// Whose windows those are: the identifiers of a client begin alike, and those of the server with nothing.
quint32 ownerOf(xcb_window_t window)
{
    constexpr quint32 usedBits = 0x1fffffff;
    return window & usedBits & ~xcb_get_setup(x11Connection())->resource_id_mask;
}

bool isOwn(xcb_window_t window)
{
    return ownerOf(window) == ownerOf(xcb_get_setup(x11Connection())->resource_id_base);
}

/// In device pixels, where the toolkit leaves the corner of a screen as it is.
bool coversScreen(const QRect &place)
{
    return std::ranges::any_of(QGuiApplication::screens(), [&](const QScreen *screen) {
        const QRect geometry = screen->geometry();
        return place.contains({geometry.topLeft(), (QSizeF(geometry.size()) * screen->devicePixelRatio()).toSize()});
    });
}

QRect placeOf(xcb_connection_t *connection, xcb_window_t window)
{
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    return geometry ? QRect(geometry->x, geometry->y, geometry->width, geometry->height) : QRect();
}

/// Whether that is a menu or the like, which comes for a moment and at the user's wish. Old toolkits give theirs no type.
bool isPopup(xcb_window_t window, const xcb_get_window_attributes_reply_t &attributes)
{
    const auto types = x11Numbers(window, "_NET_WM_WINDOW_TYPE");
    if (types.isEmpty())
        return attributes.save_under || !x11Numbers(window, "WM_TRANSIENT_FOR").isEmpty();
    constexpr std::array popups{"_NET_WM_WINDOW_TYPE_MENU",       "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
                                "_NET_WM_WINDOW_TYPE_POPUP_MENU", "_NET_WM_WINDOW_TYPE_TOOLTIP",
                                "_NET_WM_WINDOW_TYPE_COMBO",      "_NET_WM_WINDOW_TYPE_DND"};
    return std::ranges::any_of(popups, [&](const char *popup) { return types.contains(x11Atom(popup)); });
}

} // namespace

std::shared_ptr<PanelStack> PanelStack::shared()
{
    static std::weak_ptr<PanelStack> one;
    auto stack = one.lock();
    if (!stack) {
        stack = std::make_shared<PanelStack>();
        one = stack;
    }
    return stack;
}

PanelStack::PanelStack()
{
    m_settled.setSingleShot(true);
    m_settled.setInterval(settleTime);
    connect(&m_settled, &QTimer::timeout, this, &PanelStack::restore);
}

PanelStack::~PanelStack()
{
    if (m_notifier)
        m_notifier->setEnabled(false);
}

void PanelStack::raise(xcb_window_t window, bool isAboveEverything)
{
    const auto endOfLevel = [&] {
        return isAboveEverything ? m_windows.end() : std::ranges::find(m_windows, true, &Entry::isAboveEverything);
    };
    if (endOfLevel() != m_windows.begin() && std::prev(endOfLevel())->window == window)
        return;
    m_windows.removeIf([window](const Entry &entry) { return entry.window == window; });
    const auto place = endOfLevel() - m_windows.begin();
    m_windows.insert(place, {window, isAboveEverything});
    raiseFrom(place);
    listen();
}

void PanelStack::remove(xcb_window_t window)
{
    m_windows.removeIf([window](const Entry &entry) { return entry.window == window; });
    if (!m_windows.isEmpty())
        return;
    m_settled.stop();
    m_notifier.reset();
    m_connection.reset();
}

void PanelStack::listen()
{
    if (m_connection || !x11Connection())
        return;
    m_connection.reset(xcb_connect(nullptr, nullptr));
    auto *const connection = m_connection.get();
    if (xcb_connection_has_error(connection))
        return;
    constexpr char name[] = "WM_STATE";
    const Reply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, false, sizeof name - 1, name), nullptr));
    m_managedState = atom ? atom->atom : xcb_atom_t(XCB_ATOM_NONE);
    constexpr quint32 events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, x11RootWindow(), XCB_CW_EVENT_MASK, &events);
    xcb_flush(connection);
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &PanelStack::receive);
    m_settled.start(); // Something may have changed before.
}

void PanelStack::receive()
{
    while (const auto event = Reply<xcb_generic_event_t>(xcb_poll_for_event(m_connection.get()))) {
        const int type = event->response_type & 0x7f;
        if (type == XCB_MAP_NOTIFY) {
            const auto &map = *reinterpret_cast<const xcb_map_notify_event_t *>(event.get());
            if (map.override_redirect)
                m_newcomers.append(map.window);
        }
        if ((type == XCB_CONFIGURE_NOTIFY || type == XCB_MAP_NOTIFY) && !m_settled.isActive())
            m_settled.start();
    }
    if (xcb_connection_has_error(m_connection.get()))
        m_notifier->setEnabled(false); // The X server is gone, and will take the program along.
}

/// Raises the panels if a window of the window manager's is above one of them, and those that are above everything if
/// a new window covers one.
void PanelStack::restore()
{
    const auto all = childrenOf(m_connection.get(), x11RootWindow());
    const auto lowest = std::ranges::find_if(all, [this](xcb_window_t window) {
        return std::ranges::find(m_windows, window, &Entry::window) != m_windows.end();
    });
    const bool isBelow = std::any_of(lowest, all.end(), [this](xcb_window_t window) {
        return std::ranges::find(m_windows, window, &Entry::window) == m_windows.end() && isManaged(window);
    });
    if (isBelow)
        raiseFrom(0);
    else if (!m_newcomers.isEmpty() && isNewcomerOver(all))
        raiseFrom(std::ranges::find(m_windows, true, &Entry::isAboveEverything) - m_windows.begin());
    m_newcomers.clear();
    receive(); // What came while the replies were read is no longer in the socket.
}

/// Whether a new window, in none's care and no popup, covers part of a panel above everything. Not so while something
/// unmanaged fills a screen above the panel: that screen is locked.
bool PanelStack::isNewcomerOver(const QList<xcb_window_t> &all) const
{
    auto *const connection = m_connection.get();
    const auto panel = std::ranges::find_if(all, [this](xcb_window_t window) {
        const auto entry = std::ranges::find(m_windows, window, &Entry::window);
        return entry != m_windows.end() && entry->isAboveEverything;
    });
    if (panel == all.end())
        return false;
    const QRect room = placeOf(connection, *panel);
    bool isCovered = false;
    for (const xcb_window_t window : std::span(std::next(panel), all.end())) {
        if (isOwn(window) || ownerOf(window) == 0)
            continue;
        const Reply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), nullptr));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE
            || attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT)
            continue;
        const QRect place = placeOf(connection, window);
        if (coversScreen(place))
            return false;
        isCovered
            = isCovered || (m_newcomers.contains(window) && place.intersects(room) && !isPopup(window, *attributes));
    }
    return isCovered;
}

/// Whether that is a window in the window manager's care which is to be seen, or its frame.
bool PanelStack::isManaged(xcb_window_t window) const
{
    auto *const connection = m_connection.get();
    const Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), nullptr));
    if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
        return false;
    auto candidates = childrenOf(connection, window);
    candidates.append(window);
    return std::ranges::any_of(candidates, [&](xcb_window_t candidate) {
        const Reply<xcb_get_property_reply_t> state(xcb_get_property_reply(
            connection, xcb_get_property(connection, false, candidate, m_managedState, XCB_ATOM_ANY, 0, 0), nullptr));
        return state && state->type != XCB_ATOM_NONE;
    });
}

void PanelStack::raiseFrom(qsizetype first) const
{
    auto *const connection = x11Connection();
    if (!connection)
        return;
    for (const auto &entry : m_windows.sliced(first)) {
        const quint32 above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection, entry.window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    }
    xcb_flush(connection);
}

} // namespace korvo
