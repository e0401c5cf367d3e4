#pragma once

#include <QCoroTask>
#include <QPointer>
#include <QString>

#include <memory>

class QWidget;

namespace korvo {

class InputPanel;
class KeyDownMonitor;
class Platform;
class TimerViewModel;

/// Shows the panel in which the user types the name of a new task over whatever else goes on, and hands the name on. To
/// be held by a shared pointer: what it leaves with others holds it weakly.
class QuickAddWindowController : public std::enable_shared_from_this<QuickAddWindowController> {
public:
    /// Shows nothing. Both must outlive it.
    QuickAddWindowController(TimerViewModel &timerVM, Platform &platform);
    ~QuickAddWindowController();
    Q_DISABLE_COPY_MOVE(QuickAddWindowController)

    /// Closes the panel if it is to be seen, else shows one.
    void toggle();

    /// Shows a new panel, with an empty field that has the keyboard, if none is to be seen.
    void show();

    /// Closes the panel. Safe at any time.
    void dismiss();

    bool isVisible() const;

private:
    static QCoro::Task<> focusSoon(std::shared_ptr<QuickAddWindowController> self, std::shared_ptr<InputPanel> panel);
    void place(InputPanel &panel, int contentHeight) const;
    void installEscMonitor();
    void focusTextField(const QWidget &in);
    void createTaskAndStartTimer(const QString &name);

    TimerViewModel &m_timerVM;
    Platform &m_platform;
    std::shared_ptr<InputPanel> m_panel; ///< Also one that has hidden because another program got the keyboard.
    QPointer<KeyDownMonitor> m_escMonitor;
};

} // namespace korvo
