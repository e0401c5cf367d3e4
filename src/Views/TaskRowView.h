#pragma once

#include "Models/NotionTask.h"

#include <QWidget>

namespace korvo {

class PlainButton;
class SymbolIcon;
class TimerViewModel;

/// A task in the desktop's own fonts and colours, with a button that starts its timer, or a sign that it runs.
class TaskRowView : public QWidget {
    Q_OBJECT
public:
    /// The view model must outlive it.
    TaskRowView(const NotionTask &task, TimerViewModel &timerVM, QWidget *parent = nullptr);

    /// Whether a timer can be started as things stand: any running one locks all rows.
    static bool canStart(const TimerViewModel &timerVM);

private:
    bool isCurrentlyTiming() const;
    void refresh();

    NotionTask m_task;
    TimerViewModel &m_timerVM;
    PlainButton *m_play;
    SymbolIcon *m_timing;
};

} // namespace korvo
