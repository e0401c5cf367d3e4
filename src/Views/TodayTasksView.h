#pragma once

#include <QWidget>

class QBoxLayout;

namespace korvo {

class TimerViewModel;

/// Today's tasks in the desktop's own fonts and colours, for any host, each with a way to start its timer.
class TodayTasksView : public QWidget {
    Q_OBJECT
public:
    /// The view model must outlive it.
    explicit TodayTasksView(TimerViewModel &timerVM, QWidget *parent = nullptr);

protected:
    void changeEvent(QEvent *event) override;

private:
    void build();
    void showTasks();
    QWidget *heading() const;
    QWidget *list();

    TimerViewModel &m_timerVM;
    QBoxLayout *m_stack;
};

} // namespace korvo
