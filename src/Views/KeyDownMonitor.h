#pragma once

#include <QObject>

#include <functional>

namespace korvo {

/// A key that went down in a window of the program.
struct KeyDown {
    quint16 keyCode = 0;   ///< Virtual key code, whatever the keyboard layout; that of Escape for any key that is one.
    quint64 modifiers = 0; ///< Flags in the Mac's numbering, of shift, control, option and command alone.
};

/// Shows the key presses of the program's own windows, repeats included, to a handler before they reach a widget, for as
/// long as it lives. Left out are modifier keys by themselves, what an input method takes for itself (the text that it
/// makes, and Escape while it composes), and what goes to an open menu or list. The handler that was installed last sees
/// a press first; what it swallows no other one sees.
class KeyDownMonitor : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<bool(const KeyDown &)>; ///< True swallows the press.

    explicit KeyDownMonitor(Handler handler, QObject *parent = nullptr);

    /// Has it see also the presses that would otherwise be shortcuts and mnemonics of a window. These do nothing then,
    /// whether the handler swallows them or not.
    void precedeShortcuts() { m_precedesShortcuts = true; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Handler m_handler;
    bool m_precedesShortcuts = false;
};

} // namespace korvo
