#include "Platform/Freedesktop/TaskBarTile.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEvent>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QWidget>

#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr std::array pixelSizes{16, 22, 24, 32, 48, 64, 96, 128};

/// The picture at each size that task bars use. The toolkit hands each of them over `scale` times as large, if there is
/// one so large.
QIcon iconOf(const QSizeF &size, const std::function<void(QPainter &, const QSizeF &)> &draw, double scale)
{
    QIcon icon;
    std::vector<int> sides(pixelSizes.begin(), pixelSizes.end());
    if (scale > 1)
        sides.push_back(qRound(pixelSizes.back() * scale));
    for (const int side : sides) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(pixmap.width() / size.width(), pixmap.height() / size.height());
        draw(painter, size);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

/// The picture of data/icons, for where the icon theme doesn't have it or the toolkit can't read it.
void drawProgramIcon(QPainter &painter, const QSizeF &)
{
    constexpr QColor ring(0x30, 0xd1, 0x58);
    constexpr QColor track(0x30, 0xd1, 0x58, 0x33);
    constexpr QRectF circle(63, 63, 130, 130);
    constexpr int top = 90 * 16;
    constexpr int minutes42 = -252 * 16;
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x1c, 0x1c, 0x1e));
    painter.drawRoundedRect(QRectF(16, 16, 224, 224), 52, 52);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(track, 25));
    painter.drawEllipse(circle);
    painter.setPen(QPen(ring, 25, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(circle, top, minutes42);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(66.18, 148.09), 15, 15);
}

QIcon programIcon(double scale)
{
    const QIcon icon = QIcon::fromTheme(u"com.korvo.app"_s);
    if (!icon.pixmap(pixelSizes.back()).isNull())
        return icon;
    return iconOf(QSizeF(256, 256), drawProgramIcon, scale);
}

/// Puts a window that has not been shown yet on every workspace.
void showOnEveryWorkspace(WId window)
{
    const auto *const x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11)
        return;
    auto *const connection = x11->connection();
    const auto atom = [connection](const char *name) {
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            xcb_intern_atom_reply(connection, xcb_intern_atom(connection, false, quint16(qstrlen(name)), name),
                                  nullptr),
            &std::free);
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    };
    constexpr quint32 all = 0xffffffff;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, xcb_window_t(window), atom("_NET_WM_DESKTOP"),
                        XCB_ATOM_CARDINAL, 32, 1, &all);
    // Some window managers only heed the one, some the other.
    const xcb_atom_t sticky = atom("_NET_WM_STATE_STICKY");
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, xcb_window_t(window), atom("_NET_WM_STATE"), XCB_ATOM_ATOM,
                        32, 1, &sticky);
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

TaskBarTile::TaskBarTile(LauncherEntry::Bus bus, QObject *parent) : DockTile(parent), m_launcherEntry(bus) { }

TaskBarTile::~TaskBarTile()
{
    delete m_window.data(); // Unless the application has gone, and its windows with it.
}

void TaskBarTile::setPresent(bool isPresent)
{
    if (isPresent == !m_window.isNull())
        return;
    if (!isPresent) {
        m_window->hide();
        m_window->deleteLater();
        m_window.clear();
        m_launcherEntry.show(std::nullopt);
        return;
    }
    m_window = new Window(*this);
    updateIcon();
    showOnEveryWorkspace(m_window->winId());
    m_window->showMinimized();
    m_launcherEntry.show(m_content);
}

void TaskBarTile::setContent(const std::optional<DockTileContent> &content)
{
    const bool hadContent = m_content.has_value();
    m_content = content;
    if (!m_window || (!content && !hadContent))
        return;
    updateIcon();
    m_launcherEntry.show(content);
}

void TaskBarTile::updateIcon()
{
    const double scale = m_window->devicePixelRatioF();
    const bool isDrawn = m_content && m_content->draw && !m_content->size.isEmpty();
    m_window->setWindowIcon(isDrawn ? iconOf(m_content->size, m_content->draw, scale) : programIcon(scale));
}

} // namespace korvo
