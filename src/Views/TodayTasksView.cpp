#include "Views/TodayTasksView.h"

#include "ViewModels/TimerViewModel.h"
#include "Views/ElidedLabel.h"
#include "Views/Stack.h"
#include "Views/TaskColumn.h"
#include "Views/TaskRowView.h"
#include "Views/Theme.h"

#include <QEvent>

#include <memory>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr int listHeight = 220;

} // namespace

TodayTasksView::TodayTasksView(TimerViewModel &timerVM, QWidget *parent) :
    QWidget(parent),
    m_timerVM(timerVM),
    m_stack(vstack({.spacing = 4}))
{
    setLayout(m_stack);
    connect(&timerVM, &TimerViewModel::todayTasksChanged, this, &TodayTasksView::showTasks);
    build();
}

void TodayTasksView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        build();
}

void TodayTasksView::build()
{
    while (m_stack->count() > 0) {
        const std::unique_ptr<QLayoutItem> item(m_stack->takeAt(0));
        if (auto *widget = item->widget()) {
            widget->hide();
            widget->deleteLater();
        }
    }
    addToStack(*m_stack, heading());
    addToStack(*m_stack, list());
    m_stack->addStretch(1);
    for (int i = 0; i < 2; ++i)
        m_stack->itemAt(i)->widget()->setVisible(true);
}

void TodayTasksView::showTasks()
{
    auto *column = findChild<TaskColumn *>(QString(), Qt::FindDirectChildrenOnly);
    if (column && column->isVisibleTo(this) && !m_timerVM.todayTasks().isEmpty())
        column->setTasks(m_timerVM.todayTasks());
    else
        build();
}

QWidget *TodayTasksView::heading() const
{
    QFont font = makeFont(SystemText::caption, QFont::DemiBold);
    font.setCapitalization(QFont::AllUppercase);
    auto *label = new ElidedLabel(tr("Today's Tasks"), font, theme::secondaryOn(palette()));
    return section(u"heading"_s, vstack({.spacing = 0, .padding = padding(16, 0)}, label));
}

QWidget *TodayTasksView::list()
{
    const auto &tasks = m_timerVM.todayTasks();
    if (tasks.isEmpty()) {
        auto *words
            = new ElidedLabel(tr("No tasks for today"), makeFont(SystemText::caption), theme::secondaryOn(palette()));
        return section(u"noTasks"_s, vstack({.spacing = 0, .padding = padding(16, 12)}, words));
    }
    auto *column = new TaskColumn(
        listHeight,
        {.make = [this](const NotionTask &task, QWidget *parent) { return new TaskRowView(task, m_timerVM, parent); },
         .canBePressed = [this](const NotionTask &) { return TaskRowView::canStart(m_timerVM); }},
        this); // A child from the start: rows take their colours from it.
    column->setAccessibleName(tr("Today's tasks"));
    column->setTasks(tasks);
    connect(&m_timerVM, &TimerViewModel::isLoadingChanged, column, &TaskColumn::pressabilityChanged,
            Qt::QueuedConnection);
    connect(&m_timerVM, &TimerViewModel::activeTimerChanged, column, &TaskColumn::pressabilityChanged,
            Qt::QueuedConnection);
    return column;
}

} // namespace korvo
