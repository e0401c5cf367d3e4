#pragma once

#include "Models/AppSettings.h"
#include "Models/NotionTask.h"
#include "Models/TimerEntry.h"
#include "Utilities/Clock.h"

#include <QPropertyNotifier>
#include <QWidget>

#include <array>
#include <functional>

class QBoxLayout;

namespace korvo {

class TaskColumn;
class Timeline;
class TimerCard;
class TimerViewModel;

/// The whole content of the menu panel: what is needed to finish the setup, or the running timer and today's tasks, and
/// the way to the settings and out. 340 points wide, as high as its content, and dark on every desktop.
class MenuBarView : public QWidget {
    Q_OBJECT
public:
    /// All references must outlive it. `onOpenSettings` may destroy the view.
    MenuBarView(TimerViewModel &timerVM, std::function<void()> onOpenSettings,
                AppSettings &settings = AppSettings::shared(), Clock &clock = Clock::shared(),
                QWidget *parent = nullptr);

    /// Gives it no more than so much height: the list of tasks gives way, the footer stays in sight.
    void setMaximumRoom(int height);

    /// Its width, and the height of its content within its room.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

signals:
    void heightChanged(int height); ///< That of `sizeHint`, after each change of the content.

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    /// From top to bottom.
    enum class Section { banner, setup, timer, idle, tasks, footer };
    static constexpr size_t sectionCount = 6;

    void showSections();
    void showTimer();
    void showTasks();
    void setSection(Section section, bool isShown);
    void restoreTabOrder();
    QWidget *makeSection(Section section);
    QWidget *&shown(Section section) { return m_sections[size_t(section)]; } ///< Null if it isn't there.

    QWidget *networkErrorBanner();
    QWidget *setupRequiredView();
    QWidget *activeTimerCard(const TimerEntry &timer);
    QWidget *idleCard();
    QWidget *todayTasksSection();
    QWidget *darkTaskRow(const NotionTask &task, QWidget *parent);
    QWidget *footerView();

    TimerViewModel &m_timerVM;
    std::function<void()> m_onOpenSettings;
    AppSettings &m_settings;
    Timeline *m_timeline;
    QBoxLayout *m_stack;
    std::array<QWidget *, sectionCount> m_sections{};
    int m_maximumRoom = QWIDGETSIZE_MAX;
    int m_toldHeight = 0;
    QPropertyNotifier m_setupObserver;
};

} // namespace korvo
