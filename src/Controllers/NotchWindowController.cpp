#include "Controllers/NotchWindowController.h"

#include "Platform/Panel.h"
#include "Platform/Platform.h"
#include "Utilities/DiagnosticLogger.h"
#include "Utilities/Spawn.h"
#include "ViewModels/TimerViewModel.h"
#include "Views/NotchContentView.h"

#include <utility>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

// In points, whatever the screen and the housing measure.
constexpr int notchWidth = 200;
constexpr int notchHeight = 37;
constexpr int compactWidth = 440;
constexpr int compactHeight = 40;
constexpr int expandedWidth = 440;
constexpr int expandedHeight = 200;
constexpr int topOverflow = 10; // How far the panel reaches above the screen's edge.

constexpr TimingCurve timingCurve{{0.32, 0.72}, {0, 1}};
constexpr Clock::Seconds expandDuration(0.4);
constexpr Clock::Seconds shrinkDuration(0.3);

constexpr qint64 guardMilliseconds = 500; // So long after the card came the pointer's leaving is ignored.
constexpr Clock::Seconds collapseDelay(0.3);

QSize sizeOf(NotchState state)
{
    switch (state) {
    case NotchState::idle:
        break;
    case NotchState::compact:
        return {compactWidth, compactHeight};
    case NotchState::expanded:
        return {expandedWidth, expandedHeight};
    }
    return {notchWidth, notchHeight};
}

/// Whether a point is in a frame, half-open as seen with y growing upwards: the left and the lower edge belong to it.
bool isInFrame(const QRect &frame, const QPointF &point)
{
    return point.x() >= frame.x() && point.x() < frame.x() + frame.width() && point.y() > frame.y()
        && point.y() <= frame.y() + frame.height();
}

QString textOf(const QRectF &rect)
{
    return u"{{%1, %2}, {%3, %4}}"_s.arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

} // namespace

NotchWindowController::NotchWindowController(TimerViewModel &timerVM, Platform &platform, AppSettings &settings) :
    m_platform(platform),
    m_settings(settings),
    m_clock(platform.clock()),
    m_timerVM(timerVM),
    m_lastExpandTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC),
    m_animation(m_clock, [this](const QRect &frame) { setFrame(frame); })
{
}

NotchWindowController::~NotchWindowController()
{
    cancelCollapse();
}

void NotchWindowController::setup()
{
    Log::info(u"NotchWindowController.setup() — screen: "_s
              + textOf(m_platform.screens().mainScreen().value_or(Screen()).geometry));
    m_animation.stop(); // It moved the former panel.
    m_panel = m_platform.makePanel({.hasShadow = false, .isAboveEverything = true});
    m_panel->setRoom(notchRoom());
    setFrame(notchRect(NotchState::idle));
    auto view = makeContentView();
    m_hostingView = view.get();
    m_panel->setContent(std::move(view));
    m_panel->setShape(m_hostingView->outline());
    m_panel->orderFront();
}

std::unique_ptr<NotchContentView> NotchWindowController::makeContentView()
{
    const QPointer self(this);
    const auto enter = [self] {
        if (self)
            self->expand();
    };
    const auto leave = [self] {
        if (self)
            self->collapse();
    };
    auto view = std::make_unique<NotchContentView>(m_timerVM, NotchState::idle, enter, leave, m_settings, m_clock);
    connect(view.get(), &NotchContentView::outlineChanged, m_panel.get(), &Panel::setShape);
    connect(m_panel.get(), &Panel::pointerEntered, view.get(), [view = view.get()] { view->setHovered(true); });
    connect(m_panel.get(), &Panel::pointerLeft, view.get(), [view = view.get()] { view->setHovered(false); });
    return view;
}

void NotchWindowController::setState(NotchState state)
{
    m_state = state;
    if (m_panel) {
        const auto duration = state == NotchState::expanded ? expandDuration : shrinkDuration;
        m_animation.start(m_frame, notchRect(state), duration, timingCurve);
    }
    updateContent();
}

void NotchWindowController::updateContent()
{
    if (m_hostingView)
        m_hostingView->setState(m_state);
}

void NotchWindowController::updateForTimerState()
{
    if (m_timerVM.isTimerRunning()) {
        if (m_state == NotchState::idle)
            setState(NotchState::compact);
        show();
    } else if (m_state != NotchState::expanded) {
        setState(NotchState::idle);
    }
}

void NotchWindowController::show()
{
    if (m_panel)
        m_panel->orderFront();
}

void NotchWindowController::hide()
{
    if (m_panel)
        m_panel->orderOut();
}

void NotchWindowController::expand()
{
    cancelCollapse();
    if (m_state == NotchState::expanded)
        return;
    m_lastExpandTime = m_clock.now();
    setState(NotchState::expanded);
}

void NotchWindowController::collapse()
{
    if (m_state != NotchState::expanded || m_lastExpandTime.msecsTo(m_clock.now()) <= guardMilliseconds)
        return;
    cancelCollapse();
    const auto target = m_timerVM.isTimerRunning() ? NotchState::compact : NotchState::idle;
    m_collapseWorkItem.emplace();
    spawn(runCollapse(this, m_clock, target, m_collapseWorkItem->get_token()));
}

void NotchWindowController::cancelCollapse()
{
    if (m_collapseWorkItem)
        m_collapseWorkItem->request_stop();
}

QCoro::Task<> NotchWindowController::runCollapse(QPointer<NotchWindowController> self, Clock &clock, NotchState target,
                                                 std::stop_token stop)
{
    co_await clock.pauseFor(collapseDelay, stop);
    if (self && !stop.stop_requested())
        self->finishCollapse(target);
}

/// The delay is over. The target stays what it was at its begin, even if the timer has changed since.
void NotchWindowController::finishCollapse(NotchState target)
{
    if (m_state != NotchState::expanded)
        return;
    // A pointer that is nowhere to be found has gone to where the window system doesn't follow it, which is outside.
    const auto pointer = m_platform.screens().pointerPosition();
    if (m_panel && pointer && isInFrame(m_frame, *pointer))
        return;
    setState(target);
}

void NotchWindowController::setFrame(const QRect &frame)
{
    m_frame = frame;
    m_panel->setFrame(frame);
}

QRect NotchWindowController::notchRect(NotchState state) const
{
    const QRectF screen = menuBarScreen().geometry;
    const QSize size = sizeOf(state);
    return QRectF(screen.center().x() - size.width() / 2.0, screen.top() - topOverflow, size.width(),
                  size.height() + topOverflow)
        .toRect();
}

/// All that the panel can take up of its screen. What is above the edge is left out: another screen may be there.
QRect NotchWindowController::notchRoom() const
{
    const QRect all = notchRect(NotchState::idle) | notchRect(NotchState::compact) | notchRect(NotchState::expanded);
    return all & menuBarScreen().geometry.toRect();
}

Screen NotchWindowController::menuBarScreen() const
{
    const auto screens = m_platform.screens().screens();
    return screens.isEmpty() ? m_platform.screens().mainScreen().value_or(Screen()) : screens.first();
}

bool NotchWindowController::hasNotch() const
{
    return menuBarScreen().topSafeAreaInset > 0;
}

} // namespace korvo
