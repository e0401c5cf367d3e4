#include "AppDelegate.h"

#include "Controllers/SettingsWindow.h"
#include "Platform/Platform.h"
#include "Views/SettingsView.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>

namespace korvo {

/// A closed window is not used again: the next one starts with a fresh view and knows nothing of the schemas.
void AppDelegate::openSettings()
{
    dismissMenuPanel();
    if (m_settingsWindow && m_settingsWindow->isVisible()) {
        m_settingsWindow->bringToFront();
        return;
    }
    const SettingsCallbacks callbacks{
        .onDockIconChange =
            [self = QPointer(this)] {
                if (self)
                    self->updateDockIconVisibility();
            },
        .onHotkeyChange =
            [self = QPointer(this)] {
                if (self)
                    self->registerGlobalHotkey();
            },
    };
    auto window = std::make_unique<SettingsWindow>(
        new SettingsView(m_timerVM, m_settings, m_transport, m_clock, m_platform.screens(), callbacks));
    window->bringToFront();
    m_settingsWindow = std::move(window);
    QCoreApplication::instance()->installEventFilter(this);
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Quit)
        endSettings();
    return QObject::eventFilter(watched, event);
}

/// The window goes with the program, and its going must not begin to poll again.
void AppDelegate::endSettings()
{
    if (m_settingsWindow)
        m_settingsWindow->view().endWithoutPoll();
}

} // namespace korvo
