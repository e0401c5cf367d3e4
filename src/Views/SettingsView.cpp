#include "Views/SettingsView.h"

#include "Platform/Screens.h"
#include "ViewModels/TimerViewModel.h"
#include "Views/SettingField.h"
#include "Views/SettingsSidebar.h"
#include "Views/Stack.h"
#include "Views/Theme.h"

#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QShowEvent>
#include <QStackedWidget>
#include <QStyle>

#include <algorithm>

namespace korvo {

namespace {

constexpr QSize leastSize(640, 460);
constexpr int detailPadding = 4;
constexpr int ruleWidth = 1;

/// A page that scrolls up and down alone. Its controls take the focus, it does not.
QScrollArea *scrolling(QWidget *content, const QString &name)
{
    auto *area = new QScrollArea;
    area->setAccessibleName(name);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidgetResizable(true);
    area->setWidget(content);
    area->viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    return area;
}

} // namespace

SettingsView::SettingsView(TimerViewModel &timerVM, AppSettings &settings, HttpTransport &transport, Clock &clock,
                           const Screens &screens, const SettingsCallbacks &callbacks, QWidget *parent) :
    QWidget(parent),
    m_timerVM(timerVM),
    m_settings(settings),
    m_screens(screens),
    m_callbacks(callbacks),
    m_settingsVM(std::make_unique<SettingsViewModel>(transport, settings, clock)),
    m_sidebar(new SettingsSidebar),
    m_detail(new QStackedWidget)
{
    lookForNotch();
    for (const auto tab : allSettingsTabs) {
        QWidget *content = nullptr;
        switch (tab) {
        case SettingsTab::connection:
            content = connectionContent();
            break;
        case SettingsTab::timeTracker:
            content = timeTrackerContent();
            break;
        case SettingsTab::tasks:
            content = tasksContent();
            break;
        case SettingsTab::general:
            content = generalContent();
            break;
        }
        m_detail->addWidget(scrolling(content, rawValue(tab)));
    }
    auto *detail = vstack({.spacing = 0, .padding = {ruleWidth + detailPadding, 0, detailPadding, 0}}, m_detail);
    auto *columns = hstack({.spacing = 0}, vstack({.spacing = 0}, m_sidebar), detail);
    columns->setStretch(columns->indexOf(detail), 1);
    setLayout(columns);
    connect(m_sidebar, &SettingsSidebar::selectedTabChanged, this, &SettingsView::showDetail);
    connect(&m_screens, &Screens::changed, this, &SettingsView::lookForNotch);
}

SettingsView::~SettingsView() = default;

SettingsTab SettingsView::selectedTab() const
{
    return m_sidebar->selectedTab();
}

void SettingsView::setSelectedTab(SettingsTab tab)
{
    m_sidebar->setSelectedTab(tab);
}

void SettingsView::showDetail()
{
    lookForNotch();
    m_detail->setCurrentIndex(int(selectedTab()));
}

void SettingsView::lookForNotch()
{
    m_hasPhysicalNotch = hasPhysicalNotch();
}

bool SettingsView::hasPhysicalNotch() const
{
    const auto screens = m_screens.screens();
    const auto screen = screens.isEmpty() ? m_screens.mainScreen() : std::optional(screens.first());
    return screen && screen->topSafeAreaInset > 0;
}

QSize SettingsView::minimumSizeHint() const
{
    int detail = 0;
    for (int i = 0; i < m_detail->count(); ++i) {
        const auto *area = static_cast<QScrollArea *>(m_detail->widget(i));
        detail = std::max(detail,
                          area->widget()->minimumSizeHint().width() + area->verticalScrollBar()->sizeHint().width());
    }
    const int width = SettingsSidebar::columnWidth + ruleWidth + 2 * detailPadding + detail;
    return {std::max(leastSize.width(), width), leastSize.height()};
}

void SettingsView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return; // A window that was only minimised.
    auto *key = findChild<SettingField *>(QStringLiteral("apiKey"));
    if (m_settings.apiKey().isEmpty() && selectedTab() == SettingsTab::connection)
        key->setFocus(); // Where a new user begins.
    else
        m_sidebar->setFocus();
    m_settingsVM->loadMissingSchemas();
}

void SettingsView::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (m_pollsAfterwards && !event->spontaneous())
        m_timerVM.startPollingIfConfigured();
}

/// The line between the columns.
void SettingsView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect rule(m_sidebar->x() + m_sidebar->width(), 0, ruleWidth, height());
    painter.fillRect(QStyle::visualRect(layoutDirection(), rect(), rule), theme::separatorOn(palette()));
}

} // namespace korvo
