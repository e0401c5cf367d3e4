#pragma once

#include <QMetaObject>
#include <QString>

#include <functional>
#include <optional>

namespace korvo {

class AppSettings;
class KeyGrabber;

/// The one system-wide shortcut, and the names of shortcuts. A shortcut is a virtual key code of the Mac and a set of
/// modifier bits as stored (see HotkeyModifiers.h). All of it on the main thread.
class GlobalHotkeyService {
public:
    /// Modifier flags of a key event, in the Mac's numbering.
    enum EventModifier : quint32 {
        shiftFlag = 0x20000,
        controlFlag = 0x40000,
        optionFlag = 0x80000,
        commandFlag = 0x100000,
    };

    explicit GlobalHotkeyService(KeyGrabber &grabber); ///< Must outlive it.
    ~GlobalHotkeyService();
    Q_DISABLE_COPY_MOVE(GlobalHotkeyService)

    /// Makes a shortcut system-wide in place of the former; `handler` is called within the key event. There is one
    /// handler in the process: also that of another instance is replaced. Failures are logged, nothing is undone.
    void registerHotkey(quint32 keyCode, quint32 modifiers, std::function<void()> handler);

    /// Gives the shortcut back and forgets the handler. Safe at any time.
    void unregister();

    /// The modifier bits as stored, of the flags of a key event. Other flags are ignored.
    static quint32 carbonModifiers(quint64 from);

    /// A shortcut as the user reads it, as in "⌥⌘Space". It knows no "Not set".
    static QString displayString(quint32 keyCode, quint32 modifiers);

    /// A key as the user reads it: a fixed name, else what it types under the layout in force now, in capitals, else
    /// "Key" and its number. A code that does not fit in 16 bits is fatal, if there is a layout that could be asked.
    static QString keyName(quint32 keyCode);

private:
    static void handlePress();
    void noteSuccess();
    void noteFailure(int status);

    static std::function<void()> onHotkeyPressed;

    KeyGrabber &m_grabber;
    QMetaObject::Connection m_failures;
    QMetaObject::Connection m_lateGrabs;
    QMetaObject::Connection m_eventHandler; ///< Valid while presses are delivered.
    bool m_isHotkeyHeld = false;
    std::optional<int> m_failure; ///< The status last logged, until the key is held.
    quint32 m_keyCode = 0;        ///< As last registered.
    quint32 m_modifiers = 0;
};

/// The quick-add shortcut as the user reads it, "Not set" if there is none. A binding that calls it follows the
/// settings.
QString quickAddHotkeyDisplay(const AppSettings &settings);

} // namespace korvo
