#include "Controllers/QuickAddWindowController.h"

#include "Controllers/QuickAddPlacement.h"
#include "Platform/InputPanel.h"
#include "Platform/Platform.h"
#include "Utilities/Clock.h"
#include "Utilities/Spawn.h"
#include "ViewModels/TimerViewModel.h"
#include "Views/KeyDownMonitor.h"
#include "Views/QuickAddView.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QWidget>

#include <algorithm>
#include <stop_token>
#include <utility>

namespace korvo {

namespace {
constexpr Clock::Seconds focusDelay{0.05};
constexpr quint16 escapeKey = 53;
} // namespace

QuickAddWindowController::QuickAddWindowController(TimerViewModel &timerVM, Platform &platform) :
    m_timerVM(timerVM),
    m_platform(platform)
{
}

QuickAddWindowController::~QuickAddWindowController() = default;

void QuickAddWindowController::toggle()
{
    if (isVisible())
        dismiss();
    else
        show();
}

/// A panel that has hidden by itself is replaced and not dismissed: the monitor that came with it lives on.
void QuickAddWindowController::show()
{
    if (isVisible())
        return;
    const auto self = weak_from_this();
    auto view = std::make_unique<QuickAddView>(
        [self](const QString &name) {
            if (const auto controller = self.lock()) {
                controller->createTaskAndStartTimer(name);
                controller->dismiss();
            }
        },
        [self] {
            if (const auto controller = self.lock())
                controller->dismiss();
        });
    const auto overflow = QuickAddView::shadowMargins;
    const int height = view->sizeHint().shrunkBy(overflow).height();
    const auto outline = QuickAddView::outline({quickAddPanelSize.width(), height});

    const std::shared_ptr<InputPanel> panel = m_platform.makeInputPanel();
    panel->setContent(std::move(view), overflow);
    place(*panel, height);
    panel->setShape(outline);
    panel->makeKeyAndOrderFront();
    panel->activateIgnoringOtherApps();
    spawn(focusSoon(shared_from_this(), panel));
    installEscMonitor();
    m_panel = panel; // Last, so that it counts as hidden until all is set up.
}

/// The view is as high as its texts want; what the panel needs for that beyond its own size goes upwards.
void QuickAddWindowController::place(InputPanel &panel, int contentHeight) const
{
    const QPoint lowerLeft = quickAddLowerLeft(m_platform.screens().mainScreen());
    const QSize size(quickAddPanelSize.width(), std::max(quickAddPanelSize.height(), contentHeight));
    panel.setFrame(QRect(lowerLeft - QPoint(0, size.height()), size));
}

void QuickAddWindowController::installEscMonitor()
{
    const auto dismissOnEscape = [self = weak_from_this()](const KeyDown &down) {
        if (down.keyCode != escapeKey)
            return false;
        if (const auto controller = self.lock())
            controller->dismiss();
        return true;
    };
    m_escMonitor = new KeyDownMonitor(dismissOnEscape, QCoreApplication::instance());
}

/// Once more when the window manager has had its say, whatever the first try came to.
QCoro::Task<> QuickAddWindowController::focusSoon(std::shared_ptr<QuickAddWindowController> self, // static
                                                  std::shared_ptr<InputPanel> panel)
{
    co_await self->m_platform.clock().pauseFor(focusDelay, std::stop_token());
    panel->makeKey();
    if (const auto *content = panel->content())
        self->focusTextField(*content);
}

void QuickAddWindowController::focusTextField(const QWidget &in)
{
    for (auto *child : in.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        auto *field = qobject_cast<QLineEdit *>(child);
        if (field && !field->isReadOnly()) {
            if (m_panel)
                field->setFocus();
            return;
        }
        focusTextField(*child);
    }
}

void QuickAddWindowController::dismiss()
{
    if (m_escMonitor)
        delete m_escMonitor;
    if (m_panel)
        m_panel->orderOut();
    m_panel.reset();
}

bool QuickAddWindowController::isVisible() const
{
    return m_panel && m_panel->isVisible();
}

/// A task of its own, which ends with the view model: it begins when the panel has closed, holds the controller until
/// then, and needs nothing of it from there on. How it ends the view model tells.
void QuickAddWindowController::createTaskAndStartTimer(const QString &name)
{
    QMetaObject::invokeMethod(
        &m_timerVM, [self = shared_from_this(), name] { self->m_timerVM.quickAddTask(name); }, Qt::QueuedConnection);
}

} // namespace korvo
