#include "Views/KeyDownMonitor.h"

#include "Platform/KeyboardLayout.h"
#include "Services/GlobalHotkeyService.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWindow>

#include <limits>
#include <optional>
#include <utility>

namespace korvo {

namespace {

constexpr quint16 escapeKey = 53;

bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_Mode_switch:
        return true;
    default:
        return false;
    }
}

quint64 flagsOf(Qt::KeyboardModifiers modifiers)
{
    quint64 flags = 0;
    if (modifiers & Qt::ShiftModifier)
        flags |= GlobalHotkeyService::shiftFlag;
    if (modifiers & Qt::ControlModifier)
        flags |= GlobalHotkeyService::controlFlag;
    if (modifiers & Qt::AltModifier)
        flags |= GlobalHotkeyService::optionFlag;
    if (modifiers & Qt::MetaModifier)
        flags |= GlobalHotkeyService::commandFlag;
    return flags;
}

std::optional<KeyDown> keyDownOf(const QKeyEvent &event)
{
    if (isModifierKey(event.key()))
        return std::nullopt;
    if (event.key() == Qt::Key_Escape) // What leaves is what the user made Escape, be it another key of the board.
        return KeyDown{escapeKey, flagsOf(event.modifiers())};
    const auto code = KeyboardLayout::shared().keyCode(event.nativeScanCode());
    if (!code || *code > std::numeric_limits<quint16>::max())
        return std::nullopt;
    return KeyDown{quint16(*code), flagsOf(event.modifiers())};
}

} // namespace

KeyDownMonitor::KeyDownMonitor(Handler handler, QObject *parent) : QObject(parent), m_handler(std::move(handler))
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool KeyDownMonitor::eventFilter(QObject *watched, QEvent *event)
{
    if (QApplication::activePopupWidget())
        return false; // A menu has the keyboard to itself, Escape included.
    if (event->type() == QEvent::ShortcutOverride && m_precedesShortcuts) {
        event->accept(); // Asked before each press: who says so wants it as a key.
        return true;
    }
    // A press comes to the window first, and from there on to the widgets, as often as they pass it on.
    if (event->type() != QEvent::KeyPress || !qobject_cast<QWindow *>(watched))
        return false;
    const auto down = keyDownOf(*static_cast<QKeyEvent *>(event));
    const auto handler = m_handler; // It may destroy this monitor.
    return down && handler(*down);
}

} // namespace korvo
