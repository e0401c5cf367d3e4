#include "Views/ActiveTimerView.h"

#include "Utilities/TimeFormatter.h"
#include "ViewModels/TimerViewModel.h"
#include "Views/CardButton.h"
#include "Views/ClockText.h"
#include "Views/ElidedLabel.h"
#include "Views/RoundedBox.h"
#include "Views/Stack.h"
#include "Views/Theme.h"
#include "Views/Timeline.h"
#include "Views/TimerFigures.h"

#include <QEvent>
#include <QFontInfo>

namespace korvo {

using namespace Qt::StringLiterals;

ActiveTimerView::ActiveTimerView(TimerViewModel &timerVM, Clock &clock, QWidget *parent) :
    QWidget(parent),
    m_timerVM(timerVM),
    m_timeline(new Timeline(*this, clock))
{
    setLayout(vstack({.spacing = 0}));
    connect(m_timeline, &Timeline::ticked, this, &ActiveTimerView::tick);
    connect(&timerVM, &TimerViewModel::activeTimerChanged, this, &ActiveTimerView::showTimer);
    connect(&timerVM, &TimerViewModel::isLoadingChanged, this, &ActiveTimerView::showLoading);
    showTimer();
}

QSize ActiveTimerView::sizeHint() const
{
    return m_content ? QWidget::sizeHint() : QSize(0, 0);
}

void ActiveTimerView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    const bool isOfLook = event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange;
    if (isOfLook && m_content) {
        delete m_content;
        m_content = nullptr;
        showTimer();
    }
}

void ActiveTimerView::build()
{
    const auto green = theme::systemGreenOn(palette());
    m_clock = new ClockText(makeFont(SystemText::title2, QFont::Normal, true), green);
    auto *status = hstack({.spacing = 6}, makeDot(8, green),
                          new ElidedLabel(tr("Running"), makeFont(SystemText::caption), green));
    auto *top = hstack({.spacing = 0}, status);
    top->addSpacing(defaultSpacing);
    addToStack(*top, Spacer());
    addToStack(*top, m_clock);

    const auto ink = palette().color(QPalette::Active, QPalette::WindowText);
    m_taskName = new ElidedLabel({}, makeFont(SystemText::body, QFont::Medium), ink, 2);
    m_taskName->setObjectName(u"taskName"_s);
    m_started = new ElidedLabel({}, makeFont(SystemText::caption), theme::secondaryOn(palette()));
    m_started->setObjectName(u"started"_s);

    const int textSize = QFontInfo(makeFont(SystemText::body)).pixelSize();
    m_stop = new CardButton(Symbol::stopCircleFill, tr("Stop Timer"),
                            {.foreground = Qt::white,
                             .background = theme::systemRedOn(palette()),
                             .stroke = Qt::transparent,
                             .radius = 6,
                             .minimumHeight = 2 * textSize,
                             .text = {.size = textSize, .weight = QFont::Medium},
                             .symbolSize = textSize,
                             .spacing = defaultSpacing});
    m_stop->setObjectName(u"stop"_s);
    connect(m_stop, &CardButton::clicked, &m_timerVM, &TimerViewModel::stopTimer);

    m_content
        = section(u"content"_s, vstack({.spacing = 10}, top, vstack({.spacing = 3}, m_taskName, m_started), m_stop));
    layout()->addWidget(m_content);
    m_content->setVisible(true);
    showLoading();
}

void ActiveTimerView::showTimer()
{
    const auto &timer = m_timerVM.activeTimer();
    if (!timer) {
        m_timeline->end();
        if (m_content) {
            layout()->removeWidget(m_content);
            m_content->hide();
            m_content->deleteLater(); // Its button may be the one whose press led here.
            m_content = nullptr;
        }
        updateGeometry();
        return;
    }
    if (!m_content)
        build();
    m_taskName->setText(timer->taskName);
    m_started->setText(tr("Started %1").arg(TimeFormatter::timeOfDay(timer->startTime)));
    m_timeline->begin();
}

void ActiveTimerView::showLoading()
{
    if (!m_content)
        return;
    m_stop->setBusy(m_timerVM.isLoading());
    m_stop->setDisabled(m_timerVM.isLoading());
}

void ActiveTimerView::tick(const QDateTime &date)
{
    if (m_content && m_timerVM.activeTimer())
        m_clock->setTime(TimeFormatter::format(elapsedSeconds(m_timerVM.activeTimer()->startTime, date)));
}

} // namespace korvo
