#include "Views/NotchContentView.h"

#include "Models/AppSettings.h"
#include "Services/GlobalHotkeyService.h"
#include "Utilities/TimeFormatter.h"
#include "ViewModels/TimerViewModel.h"
#include "Views/ClockText.h"
#include "Views/ElidedLabel.h"
#include "Views/NotchShape.h"
#include "Views/ProgressRing.h"
#include "Views/RoundedBox.h"
#include "Views/Stack.h"
#include "Views/Theme.h"
#include "Views/Timeline.h"
#include "Views/TimerCard.h"
#include "Views/TimerFigures.h"

#include <QGraphicsOpacityEffect>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr double restingRadius = 14;
constexpr double expandedRadius = 20;

constexpr int expandedWidth = 440;  // At which the card is laid out, however far the panel has grown.
constexpr int expandedHeight = 210; // The strip above the screen included.
constexpr int cardTop = 50;         // Below that strip and the notch: from here on the card fades in.
constexpr int ringRoom = 8;         // For what the ring draws past its circle, which the card would cut off.

constexpr TimerCardStyle cardStyle{.horizontalPadding = 24,
                                   .headerTop = ringRoom,
                                   .headerBottom = 16,
                                   .nameLines = 1,
                                   .ringSize = 36,
                                   .ringLineWidth = 3,
                                   .ringSpacing = 10,
                                   .clockSize = 22,
                                   .statsBackground = 0.08,
                                   .statsRadius = 10,
                                   .statsBottom = 16,
                                   .buttonHeight = 32,
                                   .buttonRadius = 8,
                                   .buttonsBottom = 0,
                                   .isBusyWhileLoading = false};

} // namespace

NotchContentView::NotchContentView(TimerViewModel &timerVM, NotchState state, HoverHandler onHoverEnter,
                                   HoverHandler onHoverExit, AppSettings &settings, Clock &clock, QWidget *parent) :
    QWidget(parent),
    m_timerVM(timerVM),
    m_state(state),
    m_onHoverEnter(std::move(onHoverEnter)),
    m_onHoverExit(std::move(onHoverExit)),
    m_settings(settings),
    m_timeline(new Timeline(*this, clock))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(m_timeline, &Timeline::ticked, this, &NotchContentView::tick);
    connect(&timerVM, &TimerViewModel::activeTimerChanged, this, &NotchContentView::showTimer);
    replaceContent();
}

void NotchContentView::setState(NotchState state)
{
    if (state == m_state)
        return;
    m_state = state;
    replaceContent();
    emit outlineChanged(outline());
}

QPainterPath NotchContentView::outline() const
{
    const NotchShape shape{.cornerRadius = m_state == NotchState::expanded ? expandedRadius : restingRadius};
    return shape.path(rect());
}

void NotchContentView::setHovered(bool isHovered)
{
    isHovered ? m_onHoverEnter() : m_onHoverExit();
}

void NotchContentView::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(event->rect(), Qt::black);
}

void NotchContentView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrange();
    emit outlineChanged(outline());
}

void NotchContentView::showTimer()
{
    const auto &timer = m_timerVM.activeTimer();
    if (m_state == NotchState::idle)
        return;
    if (timer && m_card) {
        m_card->setTimer(*timer);
        m_timeline->begin();
    } else if (timer && m_clock) {
        m_timeline->begin();
    } else {
        replaceContent();
    }
}

void NotchContentView::replaceContent()
{
    if (auto *former = std::exchange(m_content, nullptr)) {
        former->hide();
        former->deleteLater(); // It may hold the button that led here.
    }
    m_card = nullptr;
    m_ring = nullptr;
    m_clock = nullptr;
    m_timeline->end();
    if (m_state == NotchState::idle)
        return;
    m_content = m_state == NotchState::compact ? compactView() : expandedView();
    m_content->setParent(this);
    arrange();
    m_content->show();
    if (m_ring || m_card)
        m_timeline->begin();
}

void NotchContentView::arrange()
{
    if (m_state == NotchState::compact)
        m_content->setGeometry(rect());
    if (m_state != NotchState::expanded)
        return;
    m_content->setGeometry((width() - expandedWidth) / 2, height() - expandedHeight, expandedWidth, expandedHeight);
    const double opacity = double(height() - cardTop) / (expandedHeight - cardTop);
    auto *effect = static_cast<QGraphicsOpacityEffect *>(m_content->graphicsEffect());
    if (opacity >= 1) {
        m_content->setGraphicsEffect(nullptr);
        return;
    }
    if (!effect) {
        effect = new QGraphicsOpacityEffect;
        m_content->setGraphicsEffect(effect);
    }
    effect->setOpacity(std::max(opacity, 0.0));
}

void NotchContentView::tick(const QDateTime &date)
{
    const auto &timer = m_timerVM.activeTimer();
    const double elapsed = timer ? elapsedSeconds(timer->startTime, date) : 0;
    if (m_ring)
        m_ring->setElapsed(elapsed);
    if (m_clock)
        m_clock->setTime(TimeFormatter::format(elapsed));
}

QWidget *NotchContentView::compactView()
{
    m_ring = new ProgressRing(20, 2.5);
    auto *row = hstack({.padding = padding(20, 0)}, Overflowing{m_ring, m_ring->overflow()}, Spacer());
    if (m_timerVM.activeTimer()) {
        const TextStyle clockStyle{.size = 13, .weight = QFont::DemiBold, .isMonospaced = true};
        m_clock = new ClockText(makeFont(clockStyle), Qt::white);
        addToStack(*row, m_clock);
    }
    return section(u"compactView"_s, row);
}

QWidget *NotchContentView::expandedView()
{
    auto *column = vstack({.spacing = 0});
    if (m_timerVM.activeTimer()) {
        column->addSpacing(cardTop - ringRoom);
        addToStack(*column, timerCard());
        addToStack(*column, Spacer());
    } else {
        column->addSpacing(cardTop);
        column->addWidget(emptyCard(), 1);
    }
    return section(u"expandedView"_s, column);
}

QWidget *NotchContentView::timerCard()
{
    m_card = new TimerCard(m_timerVM, *m_timeline, *m_timerVM.activeTimer(), cardStyle);
    m_card->setObjectName(u"timerCard"_s);
    return m_card;
}

QWidget *NotchContentView::emptyCard()
{
    auto *words = new ElidedLabel(tr("No active timer"), {.size = 14, .weight = QFont::Medium}, theme::white(0.5));
    auto *headline = section(u"headline"_s, hstack({.spacing = 6}, makeDot(8, theme::white(0.2)), words));
    auto *hint = new ElidedLabel({}, {.size = 11}, theme::white(0.25));
    hint->setObjectName(u"hint"_s);
    const auto showKeys
        = [this, hint] { hint->setText(tr("%1 to quick add a task").arg(quickAddHotkeyDisplay(m_settings))); };
    connect(&m_settings, &AppSettings::quickAddKeyCodeChanged, hint, showKeys);
    connect(&m_settings, &AppSettings::quickAddModifiersChanged, hint, showKeys);
    showKeys();
    return section(u"emptyCard"_s,
                   vstack({.spacing = 0}, Spacer(), centeredStack({.spacing = 12}, headline, hint), Spacer()));
}

} // namespace korvo
