#include "Platform/Freedesktop/TaskBarTile.h"

#include "Platform/ProgramIcon.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEvent>
#include <QImage>
#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

#include <xcb/xcb.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace korvo {

namespace {

constexpr auto firstPause = 300ms;
constexpr std::array iconSides{16, 22, 24, 32, 48, 64, 96, 128};

QImage drawn(const DockTileContent &content, int side)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / content.size.width(), side / content.size.height());
    content.draw(painter, content.size);
    return image;
}

/// The pictures in the form of _NET_WM_ICON: width, height, and the pixels as ARGB, one picture behind the other (the
/// Extended Window Manager Hints of freedesktop.org).
std::vector<quint32> iconProperty(const std::vector<QImage> &pictures)
{
    std::vector<quint32> numbers;
    for (const QImage &picture : pictures) {
        const QImage plain = picture.convertToFormat(QImage::Format_ARGB32);
        numbers.push_back(quint32(plain.width()));
        numbers.push_back(quint32(plain.height()));
        for (int y = 0; y < plain.height(); ++y) {
            const auto *const line = reinterpret_cast<const QRgb *>(plain.constScanLine(y));
            numbers.insert(numbers.end(), line, line + plain.width());
        }
    }
    return numbers;
}

xcb_atom_t atom(xcb_connection_t *connection, const char *name)
{
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, false, quint16(qstrlen(name)), name), nullptr),
        &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

/// Null where the desktop isn't one of X11.
xcb_connection_t *x11Connection()
{
    const auto *const x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

/// Whether a window that asks for it stays minimised. Tiling window managers have no such state, and tell the toolkit that
/// they have opened the window: it would lie in the middle of the screen, and the program's panel would open unasked. A
/// window manager that says nothing, as none that has come yet does, is thought to be able to. Source: Extended Window
/// Manager Hints of freedesktop.org.
bool canMinimize()
{
    auto *const connection = x11Connection();
    if (!connection)
        return false;
    constexpr quint32 mostNumbers = 1024; // More than any window manager tells.
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const auto cookie
        = xcb_get_property(connection, false, root, atom(connection, "_NET_SUPPORTED"), XCB_ATOM_ATOM, 0, mostNumbers);
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
        xcb_get_property_reply(connection, cookie, nullptr), &std::free);
    if (!reply || reply->format != 32 || reply->value_len == 0)
        return true;
    const std::span all(static_cast<const xcb_atom_t *>(xcb_get_property_value(reply.get())), reply->value_len);
    return std::ranges::count(all, atom(connection, "_NET_WM_ACTION_MINIMIZE")) > 0;
}

/// Puts a window that has not been shown yet on every workspace.
void showOnEveryWorkspace(WId window)
{
    auto *const connection = x11Connection();
    if (!connection)
        return;
    constexpr quint32 all = 0xffffffff;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, xcb_window_t(window), atom(connection, "_NET_WM_DESKTOP"),
                        XCB_ATOM_CARDINAL, 32, 1, &all);
    // Some window managers only heed the one, some the other.
    const xcb_atom_t sticky = atom(connection, "_NET_WM_STATE_STICKY");
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, xcb_window_t(window), atom(connection, "_NET_WM_STATE"),
                        XCB_ATOM_ATOM, 32, 1, &sticky);
}

} // namespace

/// One clear pixel without a frame, should anybody see it after all. It doesn't want the keyboard.
class TaskBarTile::Window final : public QWidget {
public:
    explicit Window(TaskBarTile &tile) :
        QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus),
        m_tile(tile)
    {
        setWindowTitle(u"Korvo"_s);
        setFixedSize(1, 1);
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_QuitOnClose, false);
    }

private:
    void changeEvent(QEvent *event) override
    {
        QWidget::changeEvent(event);
        if (event->type() != QEvent::WindowStateChange)
            return;
        if (isMinimized()) {
            m_wasMinimized = true;
            return;
        }
        // Some window managers show a new window first, whatever state it asks for.
        const bool isAsked = m_wasMinimized;
        showMinimized();
        if (isAsked)
            QMetaObject::invokeMethod(&m_tile, &DockTile::activated, Qt::QueuedConnection);
    }

    void closeEvent(QCloseEvent *event) override
    {
        if (!event->spontaneous())
            return; // The program ends.
        event->ignore();
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    }

    TaskBarTile &m_tile;
    bool m_wasMinimized = false;
};

TaskBarTile::TaskBarTile(LauncherEntry::Bus bus, QObject *parent) : DockTile(parent), m_launcherEntry(bus)
{
    m_windowComes.setSingleShot(true);
    m_windowComes.setInterval(firstPause);
    connect(&m_windowComes, &QTimer::timeout, this, &TaskBarTile::showWindow);
}

TaskBarTile::~TaskBarTile()
{
    delete m_window.data(); // Unless the application has gone, and its windows with it.
}

void TaskBarTile::setPresent(bool isPresent)
{
    if (isPresent == m_isPresent)
        return;
    m_isPresent = isPresent;
    m_launcherEntry.show(isPresent ? m_content : std::nullopt);
    if (isPresent) {
        m_windowComes.start();
        return;
    }
    m_windowComes.stop();
    if (m_window) {
        m_window->hide();
        m_window->deleteLater();
        m_window.clear();
    }
}

void TaskBarTile::showWindow()
{
    if (!canMinimize())
        return;
    m_window = new Window(*this);
    showOnEveryWorkspace(m_window->winId());
    updateIcon();
    m_window->showMinimized();
}

void TaskBarTile::setContent(const std::optional<DockTileContent> &content)
{
    const bool hadContent = m_content.has_value();
    m_content = content;
    if (!m_isPresent || (!content && !hadContent))
        return;
    if (m_window)
        updateIcon();
    m_launcherEntry.show(content);
}

/// Hands the pictures over by itself: the toolkit would keep a copy of every size for as long as the window is there.
void TaskBarTile::updateIcon()
{
    auto *const connection = x11Connection();
    if (!connection)
        return;
    const bool isDrawn = m_content && m_content->draw && !m_content->size.isEmpty();
    std::vector<QImage> pictures;
    const auto append = [&](int side) { pictures.push_back(isDrawn ? drawn(*m_content, side) : programIcon(side)); };
    for (const int side : iconSides)
        append(side);
    if (const double scale = m_window->devicePixelRatioF(); scale > 1)
        append(qRound(iconSides.back() * scale));
    const auto numbers = iconProperty(pictures);
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, xcb_window_t(m_window->winId()),
                        atom(connection, "_NET_WM_ICON"), XCB_ATOM_CARDINAL, 32, quint32(numbers.size()),
                        numbers.data());
    xcb_flush(connection);
}

} // namespace korvo
