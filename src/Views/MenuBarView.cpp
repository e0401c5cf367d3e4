#include "Views/MenuBarView.h"

#include "Services/GlobalHotkeyService.h"
#include "ViewModels/TimerViewModel.h"
#include "Views/CardButton.h"
#include "Views/DarkTaskRow.h"
#include "Views/ElidedLabel.h"
#include "Views/RoundedBox.h"
#include "Views/Stack.h"
#include "Views/SymbolIcon.h"
#include "Views/TaskColumn.h"
#include "Views/Theme.h"
#include "Views/Timeline.h"
#include "Views/TimerCard.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QEvent>
#include <QPainter>
#include <QUrl>

#include <algorithm>
#include <functional>
#include <utility>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr int viewWidth = 340;
constexpr double backgroundLevel = 0.08;
constexpr int taskListHeight = 200;

const QString vendorSiteName = u"korvo.app"_s;
const QString vendorSite = u"https://korvo.app"_s;

constexpr TimerCardStyle cardStyle{.horizontalPadding = 16,
                                   .headerTop = 14,
                                   .headerBottom = 12,
                                   .nameLines = 2,
                                   .ringSize = 32,
                                   .ringLineWidth = 3,
                                   .ringSpacing = 8,
                                   .clockSize = 20,
                                   .statsBackground = 0.06,
                                   .statsRadius = 8,
                                   .statsBottom = 12,
                                   .buttonHeight = 30,
                                   .buttonRadius = 7,
                                   .buttonsBottom = 14,
                                   .isBusyWhileLoading = true};

QWidget *rule()
{
    return makeRule(theme::white(0.06), 12);
}

ElidedLabel *text(const QString &words, const TextStyle &style, const QColor &color)
{
    return new ElidedLabel(words, style, color);
}

/// A child with padding around it.
template <typename Child> QWidget *padded(const QString &name, const QMargins &margins, Child child)
{
    return section(name, vstack({.spacing = 0, .padding = margins}, child));
}

} // namespace

MenuBarView::MenuBarView(TimerViewModel &timerVM, std::function<void()> onOpenSettings, AppSettings &settings,
                         Clock &clock, QWidget *parent) :
    QWidget(parent),
    m_timerVM(timerVM),
    m_onOpenSettings(std::move(onOpenSettings)),
    m_settings(settings),
    m_timeline(new Timeline(*this, clock)),
    m_stack(vstack({.spacing = 0}, Spacer()))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedWidth(viewWidth);
    setLayout(m_stack);
    connect(&timerVM, &TimerViewModel::hasNetworkErrorChanged, this, &MenuBarView::showSections);
    connect(&timerVM, &TimerViewModel::activeTimerChanged, this, &MenuBarView::showTimer);
    connect(&timerVM, &TimerViewModel::todayTasksChanged, this, &MenuBarView::showTasks);
    m_setupObserver = settings.bindableIsConfigured().addNotifier([this] { showSections(); });
    showSections();
}

void MenuBarView::setMaximumRoom(int height)
{
    m_maximumRoom = height;
    updateGeometry();
}

QSize MenuBarView::sizeHint() const
{
    const int content
        = m_stack->hasHeightForWidth() ? m_stack->heightForWidth(viewWidth) : m_stack->sizeHint().height();
    return {viewWidth, std::min(content, m_maximumRoom)};
}

bool MenuBarView::event(QEvent *event)
{
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest) {
        const int height = sizeHint().height();
        if (std::exchange(m_toldHeight, height) != height)
            emit heightChanged(height);
    }
    return isHandled;
}

void MenuBarView::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), theme::gray(backgroundLevel));
}

void MenuBarView::showSections()
{
    const bool isConfigured = m_settings.isConfigured();
    const bool hasTimer = m_timerVM.activeTimer().has_value();
    setSection(Section::banner, m_timerVM.hasNetworkError());
    setSection(Section::setup, !isConfigured);
    setSection(Section::timer, isConfigured && hasTimer);
    setSection(Section::idle, isConfigured && !hasTimer);
    setSection(Section::tasks, isConfigured);
    setSection(Section::footer, true);
    restoreTabOrder();
}

void MenuBarView::showTimer()
{
    auto *card = static_cast<TimerCard *>(shown(Section::timer));
    showSections();
    if (!card || card != shown(Section::timer))
        return; // It is new, or gone.
    card->setTimer(*m_timerVM.activeTimer());
    m_timeline->begin();
}

void MenuBarView::showTasks()
{
    // What stands below the heading is of another kind for an empty list; rows are kept by the column itself.
    auto *column = shown(Section::tasks) ? shown(Section::tasks)->findChild<TaskColumn *>() : nullptr;
    if (column && !m_timerVM.todayTasks().isEmpty()) {
        column->setTasks(m_timerVM.todayTasks());
        return;
    }
    setSection(Section::tasks, false);
    showSections();
}

void MenuBarView::setSection(Section section, bool isShown)
{
    auto *&widget = shown(section);
    if (isShown == (widget != nullptr))
        return;
    if (isShown) {
        const auto before = std::count_if(m_sections.begin(), m_sections.begin() + int(section), std::identity());
        widget = makeSection(section);
        m_stack->insertWidget(int(before), widget);
        widget->setVisible(true);
    } else {
        m_stack->removeWidget(widget);
        widget->hide();
        widget->deleteLater(); // It may be the one whose button led here.
        widget = nullptr;
    }
    if (section == Section::timer) {
        if (isShown)
            m_timeline->begin();
        else
            m_timeline->end();
    }
}

/// The window's order of focus is that in which widgets were made; the keyboard should go from top to bottom.
void MenuBarView::restoreTabOrder()
{
    QWidget *before = nullptr;
    for (auto *section : m_sections) {
        if (!section)
            continue;
        const auto widgets = section->findChildren<QWidget *>();
        for (auto *widget : widgets) {
            if (!(widget->focusPolicy() & Qt::TabFocus))
                continue;
            if (before)
                setTabOrder(before, widget);
            before = widget;
        }
    }
}

QWidget *MenuBarView::makeSection(Section section)
{
    switch (section) {
    case Section::banner:
        return padded(u"bannerPlace"_s, {16, 12, 16, 0}, networkErrorBanner());
    case Section::setup:
        return setupRequiredView();
    case Section::timer:
        return activeTimerCard(*m_timerVM.activeTimer());
    case Section::idle:
        return idleCard();
    case Section::tasks:
        return todayTasksSection();
    case Section::footer:
        break;
    }
    return footerView();
}

QWidget *MenuBarView::networkErrorBanner()
{
    const TextStyle style{.size = 11};
    auto *retry = makeTextButton(tr("Retry"), style, theme::systemOrange);
    retry->setObjectName(u"retry"_s);
    connect(retry, &PlainButton::clicked, &m_timerVM, &TimerViewModel::startPollingIfConfigured);

    auto *box = new RoundedBox(theme::faded(theme::systemOrange, 0.1), 6);
    box->setObjectName(u"networkErrorBanner"_s);
    box->setLayout(hstack(
        {.spacing = 6, .padding = padding(8, 8)}, new SymbolIcon(Symbol::wifiExclamationmark, 11, theme::systemOrange),
        text(tr("Connection issue"), style, theme::systemOrange), Spacer(), Overflowing{retry, bareButtonMargin}));
    return box;
}

QWidget *MenuBarView::setupRequiredView()
{
    auto *open = makeProminentButton(tr("Open Settings"), theme::systemBlue);
    open->setObjectName(u"openSettings"_s);
    connect(open, &PlainButton::clicked, this, [onOpenSettings = m_onOpenSettings] { onOpenSettings(); });

    return section(u"setupRequiredView"_s,
                   centeredStack({.spacing = 12, .padding = padding(0, 24)},
                                 new SymbolIcon(Symbol::gearBadge, 28, theme::white(0.4)),
                                 text(tr("Setup Required"), {.size = 14, .weight = QFont::DemiBold}, Qt::white),
                                 text(tr("Open Settings to connect to Notion"), {.size = 12}, theme::white(0.4)),
                                 open));
}

QWidget *MenuBarView::activeTimerCard(const TimerEntry &timer)
{
    auto *card = new TimerCard(m_timerVM, *m_timeline, timer, cardStyle);
    card->setObjectName(u"activeTimerCard"_s);
    return card;
}

QWidget *MenuBarView::idleCard()
{
    const TextStyle keyStyle{.size = 11, .weight = QFont::Medium, .isMonospaced = true};
    auto *keys = text(quickAddHotkeyDisplay(m_settings), keyStyle, theme::white(0.25))->keptWhole();
    const auto showKeys = [this, keys] { keys->setText(quickAddHotkeyDisplay(m_settings)); };
    connect(&m_settings, &AppSettings::quickAddKeyCodeChanged, keys, showKeys);
    connect(&m_settings, &AppSettings::quickAddModifiersChanged, keys, showKeys);
    auto *chip = new RoundedBox(theme::white(0.06), 4);
    chip->setObjectName(u"hotkeyChip"_s);
    chip->setLayout(hstack({.spacing = 0, .padding = padding(6, 2)}, keys));

    return section(u"idleCard"_s,
                   hstack({.spacing = 6, .padding = padding(16, 14)}, makeDot(8, theme::white(0.2)),
                          text(tr("No active timer"), {.size = 13, .weight = QFont::Medium}, theme::white(0.5)),
                          Spacer(), chip));
}

QWidget *MenuBarView::todayTasksSection()
{
    const TextStyle headingStyle{.size = 9, .weight = QFont::DemiBold, .tracking = 0.8};
    auto *heading
        = padded(u"heading"_s, padding(16, 10, 0), text(tr("TODAY'S TASKS"), headingStyle, theme::white(0.3)));
    const StackStyle style{.spacing = 4};
    const auto &todayTasks = m_timerVM.todayTasks();
    if (todayTasks.isEmpty()) {
        auto *words = text(tr("No tasks for today"), {.size = 12}, theme::white(0.3));
        return section(u"todayTasksSection"_s,
                       vstack(style, rule(), heading, padded(u"noTasks"_s, padding(16, 12), words)));
    }

    auto *column = new TaskColumn(
        taskListHeight,
        {.make = [this](const NotionTask &task, QWidget *parent) { return darkTaskRow(task, parent); },
         .canBePressed = [this](const NotionTask &task) { return DarkTaskRow::canBePressed(m_timerVM, task); }});
    column->useSlimScrollBar();
    column->setAccessibleName(tr("Today's tasks"));
    column->setTasks(todayTasks);
    // Queued: after the rows have taken notice themselves.
    connect(&m_timerVM, &TimerViewModel::isLoadingChanged, column, &TaskColumn::pressabilityChanged,
            Qt::QueuedConnection);
    connect(&m_timerVM, &TimerViewModel::activeTimerChanged, column, &TaskColumn::pressabilityChanged,
            Qt::QueuedConnection);
    return section(u"todayTasksSection"_s, vstack(style, rule(), heading, column));
}

QWidget *MenuBarView::darkTaskRow(const NotionTask &task, QWidget *parent)
{
    return new DarkTaskRow(task, m_timerVM, parent);
}

QWidget *MenuBarView::footerView()
{
    auto *openSettings = makeIconButton(Symbol::gear, 12, theme::white(0.4), tr("Settings"));
    openSettings->setObjectName(u"settings"_s);
    connect(openSettings, &PlainButton::clicked, this, [onOpenSettings = m_onOpenSettings] { onOpenSettings(); });

    auto *site = makeTextButton(vendorSiteName, {.size = 10, .weight = QFont::Medium}, theme::white(0.25));
    site->setObjectName(u"vendorSite"_s);
    connect(site, &PlainButton::clicked, this, [] { QDesktopServices::openUrl(QUrl(vendorSite)); });

    auto *quit = makeIconButton(Symbol::power, 12, theme::white(0.4), tr("Quit"));
    quit->setObjectName(u"quit"_s);
    connect(quit, &PlainButton::clicked, qApp, &QCoreApplication::quit);

    auto *row = section(u"footerRow"_s,
                        hstack({.padding = padding(16, 10)}, Overflowing{openSettings, bareButtonMargin}, Spacer(),
                               Overflowing{site, bareButtonMargin}, Spacer(), Overflowing{quit, bareButtonMargin}));
    return section(u"footerView"_s, vstack({.spacing = 0}, rule(), row));
}

} // namespace korvo
