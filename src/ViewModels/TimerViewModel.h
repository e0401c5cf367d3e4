#pragma once

#include "Models/AppSettings.h"
#include "Models/NotionTask.h"
#include "Models/TimerEntry.h"
#include "Services/NotionAPIService.h"
#include "Utilities/Clock.h"

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QProperty>

#include <memory>
#include <optional>
#include <stop_token>

namespace korvo {

class NotificationCenter;

/// The heart of the program: what the last poll saw of the running timer and of today's tasks, and the loop that polls.
/// Everything shown is read from here; only this class writes it. An observer is told of real changes alone.
class TimerViewModel : public QObject {
    Q_OBJECT
public:
    /// Performs no request and reads no setting. All references must outlive it and its requests.
    explicit TimerViewModel(NotificationCenter &notifications, HttpTransport &transport = HttpTransport::shared(),
                            AppSettings &settings = AppSettings::shared(), Clock &clock = Clock::shared(),
                            QObject *parent = nullptr);
    ~TimerViewModel() override;

    /// The running time entry as last read.
    const std::optional<TimerEntry> &activeTimer() const { return m_activeTimer.value(); }
    QBindable<std::optional<TimerEntry>> bindableActiveTimer() const { return &m_activeTimer; }

    /// Today's tasks as last read, in the order that Notion gave.
    const QList<NotionTask> &todayTasks() const { return m_todayTasks.value(); }
    QBindable<QList<NotionTask>> bindableTodayTasks() const { return &m_todayTasks; }

    /// Whether an action of the user is in progress.
    bool isLoading() const { return m_isLoading; }
    QBindable<bool> bindableIsLoading() const { return &m_isLoading; }

    /// The text of the last failure; none since a poll has succeeded.
    const std::optional<QString> &errorMessage() const { return m_errorMessage.value(); }
    QBindable<std::optional<QString>> bindableErrorMessage() const { return &m_errorMessage; }

    /// Whether the last poll failed, for whatever reason.
    bool hasNetworkError() const { return m_hasNetworkError; }
    QBindable<bool> bindableHasNetworkError() const { return &m_hasNetworkError; }

    /// Whether there is an active timer and its status is running.
    bool isTimerRunning() const { return m_isTimerRunning; }
    QBindable<bool> bindableIsTimerRunning() const { return &m_isTimerRunning; }

    /// Ends the poll loop, and starts it anew if the settings are complete: the first poll goes out at once.
    void startPollingIfConfigured();

    /// Ends the poll loop. What it last saw stays.
    void stopPolling();

    /// Ends the entry that runs, if one does, begins one for the task, and polls. Dropped while an action is in progress;
    /// a failure ends as `errorMessage` and leaves what was already written.
    void startTimer(const NotionTask &task);

    /// Ends the active entry, whatever its status, and polls. Otherwise as `startTimer`.
    void stopTimer();

    /// Creates a task of that name dated now, begins its entry, and polls. Otherwise as `startTimer`; logged either way.
    void quickAddTask(const QString &name);

    /// To be called each second while a timer runs, with its elapsed seconds: reminds once for each entry, if reminders
    /// are on, as soon as the entry has reached the limit.
    void checkReminder(double elapsed);

signals:
    void activeTimerChanged();
    void todayTasksChanged();
    void isLoadingChanged();
    void errorMessageChanged();
    void hasNetworkErrorChanged();
    void isTimerRunningChanged();

private:
    /// The handle of one run of the loop: dropping it does not end the run, requesting its stop does.
    using PollTask = std::shared_ptr<std::stop_source>;

    static QCoro::Task<> runPollLoop(QPointer<TimerViewModel> self, Clock &clock, std::stop_token stop);
    double pollInterval() const; ///< Seconds until the next poll, by what the last one left.
    QCoro::Task<> poll(std::stop_token stop);
    QCoro::Task<> fetchTodayTasks(std::stop_token stop);
    /// Reads timer and tasks; gives the words of what failed.
    QCoro::Task<std::optional<QString>> readWorkspace(std::stop_token stop);
    void setActiveTimer(std::optional<TimerEntry> entry);
    void setLoading(bool isLoading) { m_isLoading = isLoading; }

    // The actions, and their writes, which give the words of what failed.
    QCoro::Task<> runStart(NotionTask task);
    QCoro::Task<> runStop(TimerEntry entry);
    QCoro::Task<> runQuickAdd(QString name);
    QCoro::Task<std::optional<QString>> writeStart(NotionTask task);
    QCoro::Task<std::optional<QString>> writeQuickAdd(QString name);
    QCoro::Task<std::optional<QString>> closeRunningEntry();
    void sendReminderNotification();

    NotificationCenter &m_notifications;
    std::shared_ptr<NotionAPIService> m_api; // Shared with requests under way, which may outlive this object.
    AppSettings &m_settings;
    Clock &m_clock;

    Q_OBJECT_BINDABLE_PROPERTY(TimerViewModel, std::optional<TimerEntry>, m_activeTimer,
                               &TimerViewModel::activeTimerChanged)
    Q_OBJECT_BINDABLE_PROPERTY(TimerViewModel, QList<NotionTask>, m_todayTasks, &TimerViewModel::todayTasksChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(TimerViewModel, bool, m_isLoading, false, &TimerViewModel::isLoadingChanged)
    Q_OBJECT_BINDABLE_PROPERTY(TimerViewModel, std::optional<QString>, m_errorMessage,
                               &TimerViewModel::errorMessageChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(TimerViewModel, bool, m_hasNetworkError, false,
                                         &TimerViewModel::hasNetworkErrorChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(TimerViewModel, bool, m_isTimerRunning, false,
                                         &TimerViewModel::isTimerRunningChanged)
    QProperty<PollTask> m_pollTask;
    QProperty<bool> m_reminderSentForCurrentSession{false};
    std::stop_source m_actionStop; ///< Ends the requests of an action when this object goes.
};

} // namespace korvo
