#pragma once

#include <QWidget>

namespace korvo {

class SettingsView;

/// The window of the settings: titled, to be closed and minimised, of a fixed size, in the middle of the screen that the
/// pointer is on. Closing it only hides it.
class SettingsWindow : public QWidget {
    Q_OBJECT
public:
    /// Takes the view over.
    explicit SettingsWindow(SettingsView *view);

    SettingsView &view() const { return m_view; }

    /// Shows it above the other windows, out of the task list if it was minimised, and gives it the keyboard.
    void bringToFront();

private:
    void takeSize();

    SettingsView &m_view;
};

} // namespace korvo
