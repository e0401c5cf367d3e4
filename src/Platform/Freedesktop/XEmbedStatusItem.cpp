#include "Platform/Freedesktop/XEmbedStatusItem.h"

#include "Platform/Freedesktop/ScreenSample.h"
#include "Platform/Freedesktop/StatusButton.h"
#include "Platform/Freedesktop/StatusMenu.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>

#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr std::chrono::milliseconds settleTime{300}; // After which the tray has drawn what is behind the icon.
constexpr int pictureSide = 22;                      // What Qt's icon window asks of the tray.

/// The room that a running time takes, up to 99 hours.
int titleWidth(const QString &title)
{
    const QFont font = QGuiApplication::font();
    return int(std::ceil(std::max(statusTextWidth(font, title), statusTextWidth(font, u" 00:00:00"_s)))) + 2;
}

} // namespace

/// What the window shows.
struct XEmbedStatusItem::Face {
    StatusImage image;
    QString title;
    Backdrop backdrop = Backdrop::unknown;
    bool isTitlePainted = false; ///< Whether the window had room for the title when it was last painted.
};

/// Paints the face straight into the window, in whatever size the tray has given to it.
class XEmbedStatusItem::Engine final : public QIconEngine {
public:
    explicit Engine(std::shared_ptr<Face> face) : m_face(std::move(face)) { }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode, QIcon::State) override
    {
        const int width = titleWidth(m_face->title);
        m_face->isTitlePainted = !m_face->title.isEmpty() && rect.width() >= pictureSide + width;
        if (!m_face->isTitlePainted) {
            paintStatusImage(*painter, rect, m_face->image, m_face->backdrop);
            return;
        }
        const QRect picture(rect.left(), rect.top(), rect.width() - width, rect.height());
        paintStatusImage(*painter, picture, m_face->image, m_face->backdrop);
        painter->setFont(QGuiApplication::font());
        paintStatusText(*painter, QRect(picture.right() + 1, rect.top(), width, rect.height()), m_face->title,
                        m_face->backdrop);
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, pixmap.rect(), mode, state);
        return pixmap;
    }
    QIconEngine *clone() const override { return new Engine(m_face); }

private:
    std::shared_ptr<Face> m_face;
};

XEmbedStatusItem::XEmbedStatusItem(QObject *parent) : StatusItem(parent), m_face(std::make_shared<Face>())
{
    connect(&m_icon, &QSystemTrayIcon::activated, this, &XEmbedStatusItem::receiveClick);
    connect(&m_menu, &QMenu::aboutToShow, this, &StatusItem::menuOpened);
    m_icon.setContextMenu(&m_menu);
    m_settled.setSingleShot(true);
    m_settled.setInterval(settleTime);
    connect(&m_settled, &QTimer::timeout, this, [this] {
        look();
        repaint();
    });
    repaint();
    m_icon.show();
    qApp->installNativeEventFilter(this);
    updateShown();
}

XEmbedStatusItem::~XEmbedStatusItem()
{
    qApp->removeNativeEventFilter(this);
}

void XEmbedStatusItem::setImage(const StatusImage &image)
{
    if (m_face->image.key == image.key)
        return;
    m_face->image = image;
    if (image.isTemplate || m_face->isTitlePainted)
        look(); // Again and again, for the tray moves, and people change its colours.
    repaint();
}

void XEmbedStatusItem::setTitle(const QString &title)
{
    if (m_face->title == title)
        return;
    const bool isRoomOther = m_face->title.isEmpty() || title.isEmpty() || m_face->title.size() != title.size();
    m_face->title = title;
    if (isRoomOther)
        claimWidth();
    if (m_face->isTitlePainted)
        repaint();
    updateToolTip();
}

void XEmbedStatusItem::setToolTip(const QString &headline, const QString &text)
{
    if (m_headline == headline && m_text == text)
        return;
    m_headline = headline;
    m_text = text;
    updateToolTip();
}

void XEmbedStatusItem::setMenu(const QList<StatusMenuEntry> &menu)
{
    fillStatusMenu(m_menu, menu);
}

/// A tray that comes tells so by a message to the root window; one that goes takes its window along.
bool XEmbedStatusItem::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const int type = static_cast<const xcb_generic_event_t *>(message)->response_type & 0x7f;
    // Queued, since Qt's own icon has yet to see the event.
    if (type == XCB_CLIENT_MESSAGE || type == XCB_DESTROY_NOTIFY)
        QMetaObject::invokeMethod(this, &XEmbedStatusItem::updateShown, Qt::QueuedConnection);
    return false;
}

void XEmbedStatusItem::receiveClick(QSystemTrayIcon::ActivationReason reason)
{
    // The second of two quick clicks comes as a double click alone.
    if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
        emit activated(place());
}

void XEmbedStatusItem::repaint()
{
    m_icon.setIcon(QIcon(new Engine(m_face)));
}

/// The window that the tray has taken in: one of the application's own widgets, though Qt's icon doesn't hand it out.
QWidget *XEmbedStatusItem::window() const
{
    const auto windows = QApplication::topLevelWidgets();
    const auto found = std::ranges::find(windows, u"QSystemTrayIconSys"_s, &QObject::objectName);
    return found == windows.end() ? nullptr : *found;
}

/// Where the window is, in logical pixels. Qt isn't told when the tray moves with all that it holds, so the X server is
/// asked.
QRect XEmbedStatusItem::place() const
{
    const QWidget *icon = window();
    const auto *x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!icon || !icon->internalWinId() || !x11)
        return m_icon.geometry();
    xcb_connection_t *connection = x11->connection();
    const auto id = xcb_window_t(icon->internalWinId());
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const auto asked = xcb_translate_coordinates(connection, id, root, 0, 0);
    const std::unique_ptr<xcb_translate_coordinates_reply_t, decltype(&std::free)> reply(
        xcb_translate_coordinates_reply(connection, asked, nullptr), &std::free);
    if (!reply)
        return m_icon.geometry();
    return {toLogical(QPoint(reply->dst_x, reply->dst_y), barScreens()), icon->size()};
}

/// Asks the tray for a window as wide as picture and title. Trays with square places give what they have.
void XEmbedStatusItem::claimWidth()
{
    // Not of the widget: that would take the size at once, and never learn that the tray has given it another.
    const QWidget *icon = window();
    QWindow *native = icon ? icon->windowHandle() : nullptr;
    const int width = m_face->title.isEmpty() ? pictureSide : pictureSide + titleWidth(m_face->title);
    if (!native || native->minimumWidth() == width)
        return;
    native->setMinimumSize({width, pictureSide});
    m_settled.start(); // The tray moves its windows now.
}

void XEmbedStatusItem::updateToolTip()
{
    QStringList lines;
    if (!m_headline.isEmpty())
        lines.append(u"<b>%1</b>"_s.arg(m_headline.toHtmlEscaped()));
    if (!m_face->title.isEmpty() && !m_face->isTitlePainted)
        lines.append(m_face->title.trimmed().toHtmlEscaped());
    if (!m_text.isEmpty())
        lines.append(m_text.toHtmlEscaped());
    m_icon.setToolTip(lines.isEmpty() ? QString()
                                      : u"<div style='white-space:pre'>%1</div>"_s.arg(lines.join("<br>"_L1)));
}

void XEmbedStatusItem::updateShown()
{
    claimWidth(); // The window is a new one after the tray has come back.
    const bool isShown = QSystemTrayIcon::isSystemTrayAvailable();
    if (std::exchange(m_isShown, isShown) == isShown)
        return;
    if (isShown)
        m_settled.start();
    emit isShownChanged();
}

/// Finds out what is behind the icon, of which its picture covers the lesser part.
void XEmbedStatusItem::look()
{
    m_face->backdrop = backdropAt(place());
}

} // namespace korvo
