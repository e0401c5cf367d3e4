#include "AppDelegate.h"

#include "Controllers/MenuPanelPlacement.h"
#include "Platform/MouseMonitor.h"
#include "Platform/Panel.h"
#include "Platform/Platform.h"
#include "Platform/Screens.h"
#include "Platform/StatusItem.h"
#include "Views/MenuBarView.h"
#include "Views/MenuPanelContent.h"

#include <QPainterPath>
#include <QPointer>

#include <algorithm>

namespace korvo {

void AppDelegate::togglePopover()
{
    if (isMenuPanelInSight()) {
        dismissMenuPanel();
        return;
    }
    openMenuPanel();
}

/// Built anew each time: the view starts fresh, and nothing is kept of a panel that nobody sees.
void AppDelegate::openMenuPanel()
{
    if (!m_statusItem || isMenuPanelInSight())
        return;
    dismissMenuPanel(); // One that is out of sight.
    const auto placement = placeMenuPanel(m_statusItem->button(), m_platform.screens().screens());
    m_menuPanel = m_platform.makePanel({});
    m_menuPanelFrame = placement.frame;
    m_menuPanel->setFrame(placement.frame);
    const auto openTheSettings = [self = QPointer(this)] {
        if (self)
            self->dismissMenuPanel();
        if (self)
            self->openSettings();
    };
    auto *view = new MenuBarView(m_timerVM, openTheSettings, m_settings, m_clock);
    const auto takeShape = [panel = QPointer(m_menuPanel.get())](const QPainterPath &shape) {
        if (panel)
            panel->setShape(shape);
    };
    m_menuPanel->setContent(
        std::make_unique<MenuPanelContent>(view, placement.frame.size(), placement.opensUpwards, takeShape));
    m_menuPanel->orderFront();
    m_menuPanelMonitor = m_platform.makeMouseMonitor();
    connect(m_menuPanelMonitor.get(), &MouseMonitor::mouseDown, this, &AppDelegate::dismissMenuPanel);
}

/// Whether it is open where a user can see it. A monitor that goes leaves its panel where no screen is: the next click
/// is to show one, not to close what nobody sees.
bool AppDelegate::isMenuPanelInSight() const
{
    if (!m_menuPanel || !m_menuPanel->isVisible())
        return false;
    const auto screens = m_platform.screens().screens();
    return screens.isEmpty() || std::ranges::any_of(screens, [this](const Screen &screen) {
               return screen.geometry.intersects(QRectF(m_menuPanelFrame));
           });
}

void AppDelegate::dismissMenuPanel()
{
    if (m_menuPanel)
        m_menuPanel->orderOut();
    // Not at once: what the user pressed in them may have led here.
    if (auto *panel = m_menuPanel.release())
        panel->deleteLater();
    if (auto *monitor = m_menuPanelMonitor.release())
        monitor->deleteLater();
}

} // namespace korvo
