#include "Views/TimerCard.h"

#include "Utilities/TimeFormatter.h"
#include "ViewModels/TimerViewModel.h"
#include "Views/CardButton.h"
#include "Views/ClockText.h"
#include "Views/ElidedLabel.h"
#include "Views/ProgressRing.h"
#include "Views/RoundedBox.h"
#include "Views/Stack.h"
#include "Views/StatsRow.h"
#include "Views/Theme.h"
#include "Views/Timeline.h"
#include "Views/TimerFigures.h"

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr TextStyle nameStyle{.size = 15, .weight = QFont::DemiBold};
constexpr TextStyle noteStyle{.size = 11};

ElidedLabel *makeNote(const QString &text)
{
    return new ElidedLabel(text, noteStyle, theme::white(theme::secondary));
}

} // namespace

TimerCard::TimerCard(TimerViewModel &timerVM, Timeline &timeline, const TimerEntry &timer, const TimerCardStyle &style,
                     QWidget *parent) :
    QWidget(parent),
    m_timerVM(timerVM)
{
    setLayout(vstack({.spacing = 0}, header(style), stats(style), buttons(style)));
    setTimer(timer);
    connect(&timeline, &Timeline::ticked, this, &TimerCard::tick);
    if (style.isBusyWhileLoading) {
        connect(&timerVM, &TimerViewModel::isLoadingChanged, this, &TimerCard::showLoading);
        showLoading();
    }
}

QWidget *TimerCard::header(const TimerCardStyle &style)
{
    m_taskName = new ElidedLabel({}, nameStyle, Qt::white, style.nameLines);
    m_taskName->setObjectName(u"taskName"_s);
    m_started = makeNote({});
    m_started->setObjectName(u"started"_s);
    m_ring = new ProgressRing(style.ringSize, style.ringLineWidth);
    const TextStyle clockStyle{.size = style.clockSize, .weight = QFont::DemiBold, .isMonospaced = true};
    m_clock = new ClockText(makeFont(clockStyle), Qt::white);

    auto *status = hstack({.spacing = 6}, makeDot(6, theme::systemGreen), makeNote(tr("Running"))->keptWhole(),
                          makeDot(3, theme::white(0.3)), m_started, Spacer());
    auto *task = vstack({.spacing = 4}, m_taskName, status);
    auto *time = hstack({.spacing = style.ringSpacing}, Overflowing{m_ring, m_ring->overflow()}, m_clock);
    // A spacer next to a gap of the platform's own is that gap at the least.
    auto *row = hstack({.spacing = 0, .padding = padding(style.horizontalPadding, style.headerTop, style.headerBottom)},
                       atTop(task));
    row->addSpacing(defaultSpacing);
    addToStack(*row, Spacer());
    addToStack(*row, atTop(time));
    return section(u"header"_s, row);
}

QWidget *TimerCard::stats(const TimerCardStyle &style)
{
    m_project = new StatItem(tr("PROJECT"));
    m_client = new StatItem(tr("CLIENT"));
    m_total = new StatItem(tr("TOTAL"), true);
    auto *row = new StatsRow({m_project, m_client, m_total}, theme::white(style.statsBackground), style.statsRadius);
    return section(u"stats"_s,
                   vstack({.spacing = 0, .padding = padding(style.horizontalPadding, 0, style.statsBottom)}, row));
}

QWidget *TimerCard::buttons(const TimerCardStyle &style)
{
    m_stop = new CardButton(Symbol::stopFill, tr("Stop"),
                            {.foreground = theme::stopRed,
                             .background = theme::faded(theme::systemRed, 0.15),
                             .stroke = theme::faded(theme::systemRed, 0.2),
                             .radius = style.buttonRadius,
                             .minimumHeight = style.buttonHeight});
    m_stop->setObjectName(u"stop"_s);
    connect(m_stop, &CardButton::clicked, &m_timerVM, &TimerViewModel::stopTimer);

    auto *open = new CardButton(Symbol::arrowUpRightSquare, tr("Open in Notion"),
                                {.foreground = theme::white(theme::secondary),
                                 .background = theme::white(0.06),
                                 .stroke = theme::white(0.08),
                                 .radius = style.buttonRadius,
                                 .minimumHeight = style.buttonHeight});
    open->setObjectName(u"openInNotion"_s);
    connect(open, &CardButton::clicked, this, [this] { openInNotion(m_timerVM); });

    return section(u"buttons"_s,
                   hstack({.padding = padding(style.horizontalPadding, 0, style.buttonsBottom)}, EqualShare{m_stop},
                          EqualShare{open}));
}

void TimerCard::setTimer(const TimerEntry &timer)
{
    m_timer = timer;
    m_taskName->setText(timer.taskName);
    m_started->setText(tr("Started %1").arg(TimeFormatter::timeOfDay(timer.startTime)));
    m_project->setValue(timer.projectName.value_or(u"—"_s));
    m_client->setValue(timer.clientName.value_or(u"—"_s));
    m_total->setValue(formatTotalTime(timer.totalTime));
}

void TimerCard::showLoading()
{
    m_stop->setBusy(m_timerVM.isLoading());
    m_stop->setDisabled(m_timerVM.isLoading());
}

void TimerCard::tick(const QDateTime &date)
{
    m_clock->setTime(TimeFormatter::format(elapsedSeconds(m_timer.startTime, date)));
    const auto &active = m_timerVM.activeTimer();
    m_ring->setElapsed(active ? elapsedSeconds(active->startTime, date) : 0);
}

} // namespace korvo
