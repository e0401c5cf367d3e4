#pragma once

#include "Views/Binding.h"

#include <QWidget>

#include <memory>

namespace korvo {

/// Shows a shortcut, and records another: the next suitable key press in the program goes into the two bindings, the key
/// code first. A recording outlives the view. Whatever shortcut is registered stays so meanwhile: the desktop gives its
/// keys to the grab alone, so the present shortcut does what it always does, and the recording goes on.
class HotkeyRecorderView : public QWidget {
    Q_OBJECT
public:
    /// A virtual key code and modifier bits as stored; both 0 for no shortcut. They are written as long as a recording
    /// lasts, so what they need must outlive the view.
    HotkeyRecorderView(const Binding<quint32> &keyCode, const Binding<quint32> &modifiers, QWidget *parent = nullptr);

    /// The shortcut as the user reads it, or "Not set".
    QString displayText() const;
    bool isRecording() const;

private:
    class Recording;

    std::shared_ptr<Recording> m_recording; ///< Shared with the monitor of key presses.
};

} // namespace korvo
