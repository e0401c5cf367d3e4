#include "Views/DarkTaskRow.h"

#include "ViewModels/TimerViewModel.h"
#include "Views/ElidedLabel.h"
#include "Views/RoundedBox.h"
#include "Views/Stack.h"
#include "Views/SymbolIcon.h"
#include "Views/Theme.h"
#include "Views/TimerFigures.h"

namespace korvo {

namespace {

constexpr TextStyle nameStyle{.size = 12, .weight = QFont::Medium};

const QColor &idleDot()
{
    static const QColor color = theme::white(0.15);
    return color;
}

} // namespace

DarkTaskRow::DarkTaskRow(const NotionTask &task, TimerViewModel &timerVM, QWidget *parent) :
    PlainButton(task.name,
                hstack({.spacing = 10, .padding = padding(16, 8)}, makeDot(6, idleDot()),
                       new ElidedLabel(task.name, nameStyle, theme::white(0.8)), Spacer(),
                       new SymbolIcon(Symbol::playFill, 8, theme::white(0.2))),
                {}, parent),
    m_task(task),
    m_timerVM(timerVM),
    m_dot(findChild<RoundedBox *>()),
    m_icon(findChild<SymbolIcon *>())
{
    setAccessibleDescription(tr("Start timer"));
    connect(this, &PlainButton::clicked, &timerVM, [&timerVM, task] { timerVM.startTimer(task); });
    connect(&timerVM, &TimerViewModel::activeTimerChanged, this, &DarkTaskRow::refresh);
    connect(&timerVM, &TimerViewModel::isLoadingChanged, this, &DarkTaskRow::refresh);
    refresh();
}

bool DarkTaskRow::canBePressed(const TimerViewModel &timerVM, const NotionTask &task)
{
    if (timerVM.isLoading())
        return false;
    return !timerVM.activeTimer() || isTiming(timerVM, task);
}

void DarkTaskRow::refresh()
{
    const bool isActive = isTiming(m_timerVM, m_task);
    m_dot->setColor(isActive ? theme::systemGreen : idleDot());
    if (isActive)
        m_icon->setSymbol(Symbol::timer, 10, theme::systemGreen);
    else
        m_icon->setSymbol(Symbol::playFill, 8, theme::white(0.2));
    setEnabled(canBePressed(m_timerVM, m_task));
}

} // namespace korvo
