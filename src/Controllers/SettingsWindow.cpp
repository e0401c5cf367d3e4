#include "Controllers/SettingsWindow.h"

#include "Platform/ProgramIcon.h"
#include "Views/SettingsView.h"
#include "Views/Stack.h"

#include <QCursor>
#include <QGuiApplication>
#include <QIcon>
#include <QKeySequence>
#include <QPixmap>
#include <QScreen>
#include <QShortcut>

#include <algorithm>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize askedSize(520, 620); // The content widens it to what it needs.
constexpr int titleBarHeight = 40;   // About; the window manager's own is known only once the window stands there.

QIcon appIcon()
{
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128})
        icon.addPixmap(QPixmap::fromImage(programIcon(side)));
    return icon;
}

QScreen *screenOfPointer()
{
    auto *screen = QGuiApplication::screenAt(QCursor::pos());
    return screen ? screen : QGuiApplication::primaryScreen();
}

} // namespace

SettingsWindow::SettingsWindow(SettingsView *view) :
    QWidget(nullptr,
            Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint),
    m_view(*view)
{
    setWindowTitle(tr("Korvo Settings"));
    setWindowIcon(appIcon());
    setLayout(vstack({.spacing = 0}, view));
    connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, &QWidget::close);
    takeSize();
}

/// No higher than the screen: the content scrolls. Where even the least is too much, its upper left part is in sight.
void SettingsWindow::takeSize()
{
    const auto least = m_view.minimumSizeHint();
    QSize size = askedSize.expandedTo(least);
    if (const auto *screen = screenOfPointer()) {
        const QRect room = screen->availableGeometry();
        size.setHeight(std::clamp(room.height() - titleBarHeight, least.height(), size.height()));
        const QPoint corner = room.center() - QPoint(size.width() / 2, (size.height() + titleBarHeight) / 2);
        move(std::max(corner.x(), room.left()), std::max(corner.y(), room.top()));
    }
    setFixedSize(size);
}

void SettingsWindow::bringToFront()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

} // namespace korvo
