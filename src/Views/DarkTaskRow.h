#pragma once

#include "Models/NotionTask.h"
#include "Views/PlainButton.h"

namespace korvo {

class RoundedBox;
class SymbolIcon;
class TimerViewModel;

/// One of today's tasks on a dark card. All of it is a button that starts the task's timer; while another timer runs, or
/// an action is in progress, it is locked.
class DarkTaskRow : public PlainButton {
    Q_OBJECT
public:
    /// The view model must outlive it.
    DarkTaskRow(const NotionTask &task, TimerViewModel &timerVM, QWidget *parent = nullptr);

    /// Whether the row of a task can be pressed as things stand.
    static bool canBePressed(const TimerViewModel &timerVM, const NotionTask &task);

private:
    void refresh();

    NotionTask m_task;
    TimerViewModel &m_timerVM;
    RoundedBox *m_dot;
    SymbolIcon *m_icon;
};

} // namespace korvo
