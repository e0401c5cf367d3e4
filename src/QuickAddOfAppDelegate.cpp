#include "AppDelegate.h"

#include "Controllers/QuickAddWindowController.h"

#include <QCoreApplication>
#include <QPointer>

namespace korvo {

void AppDelegate::registerGlobalHotkey()
{
    const quint32 keyCode = m_settings.quickAddKeyCode();
    const quint32 modifiers = m_settings.quickAddModifiers();
    if (keyCode == 0 && modifiers == 0) { // 0 alone is the A key.
        m_hotkeyService.unregister();
        return;
    }
    const auto toggle = [self = QPointer(this)] {
        if (self && self->m_quickAddController)
            self->m_quickAddController->toggle();
    };
    m_hotkeyService.registerHotkey(keyCode, modifiers, [toggle] {
        QMetaObject::invokeMethod(QCoreApplication::instance(), toggle, Qt::QueuedConnection); // Within the key event.
    });
}

} // namespace korvo
