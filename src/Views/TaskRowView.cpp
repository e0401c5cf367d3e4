#include "Views/TaskRowView.h"

#include "ViewModels/TimerViewModel.h"
#include "Views/CardButton.h"
#include "Views/ElidedLabel.h"
#include "Views/Stack.h"
#include "Views/SymbolIcon.h"
#include "Views/Theme.h"
#include "Views/TimerFigures.h"

#include <QFontInfo>

#include <algorithm>

namespace korvo {

namespace {

constexpr double playOpacity = 0.8;

int sizeOf(SystemText style)
{
    return QFontInfo(makeFont(style)).pixelSize();
}

} // namespace

TaskRowView::TaskRowView(const NotionTask &task, TimerViewModel &timerVM, QWidget *parent) :
    QWidget(parent),
    m_task(task),
    m_timerVM(timerVM)
{
    setAccessibleName(task.name);
    const auto ink = palette().color(QPalette::Active, QPalette::WindowText);
    auto *name = new ElidedLabel(task.name, makeFont(SystemText::body), ink);
    m_play = makeIconButton(Symbol::playCircle, sizeOf(SystemText::title3), theme::faded(ink, playOpacity),
                            tr("Start timer"), ink);
    m_play->setAccessibleDescription(task.name);
    m_timing = new SymbolIcon(Symbol::timer, sizeOf(SystemText::body), theme::systemGreenOn(palette()));
    m_timing->setAccessibleName(tr("Running"));

    constexpr auto edges = padding(16, 6);
    setLayout(
        hstack({.spacing = 8, .padding = edges}, name, Spacer(), m_timing, Overflowing{m_play, bareButtonMargin}));
    setFocusProxy(m_play);
    // As high with the sign as with the button, which is the larger.
    const int highest = std::max(name->sizeHint().height(), m_play->sizeHint().height() - 2 * bareButtonMargin);
    setMinimumHeight(edges.top() + highest + edges.bottom());

    connect(m_play, &PlainButton::clicked, &timerVM, [&timerVM, task] { timerVM.startTimer(task); });
    connect(&timerVM, &TimerViewModel::activeTimerChanged, this, &TaskRowView::refresh);
    connect(&timerVM, &TimerViewModel::isLoadingChanged, this, &TaskRowView::refresh);
    refresh();
}

bool TaskRowView::canStart(const TimerViewModel &timerVM)
{
    return !timerVM.isLoading() && !timerVM.activeTimer();
}

bool TaskRowView::isCurrentlyTiming() const
{
    return isTiming(m_timerVM, m_task);
}

void TaskRowView::refresh()
{
    m_play->setEnabled(canStart(m_timerVM));
    m_play->setVisible(!isCurrentlyTiming());
    m_timing->setVisible(isCurrentlyTiming());
}

} // namespace korvo
