// The user's actions on the workspace, each a fixed order of writes with a poll behind them. What was written before a
// failure stays written: there is no compensation.

#include "Platform/NotificationCenter.h"
#include "Utilities/DiagnosticLogger.h"
#include "Utilities/Spawn.h"
#include "ViewModels/NotionWrites.h"
#include "ViewModels/TimerViewModel.h"

#include <QUuid>

#include <algorithm>
#include <exception>
#include <utility>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr double secondsPerHour = 3600.0;

/// The words of a failed step; none after a step that worked.
using Failure = std::optional<QString>;

/// Lets an action's guard fall when the action ends, however it ends.
class LoadingGuard {
public:
    explicit LoadingGuard(QPointer<TimerViewModel> viewModel, void (TimerViewModel::*setLoading)(bool)) :
        m_viewModel(viewModel),
        m_setLoading(setLoading)
    {
        (m_viewModel->*m_setLoading)(true);
    }
    ~LoadingGuard()
    {
        if (m_viewModel)
            (m_viewModel->*m_setLoading)(false);
    }
    Q_DISABLE_COPY_MOVE(LoadingGuard)

private:
    QPointer<TimerViewModel> m_viewModel;
    void (TimerViewModel::*m_setLoading)(bool);
};

/// Gives the words of a failed step, also of one that ended by an exception.
QCoro::Task<Failure> failureOf(QCoro::Task<Failure> step)
{
    Failure failure;
    try {
        failure = co_await step;
    } catch (const std::exception &exception) {
        failure = QString::fromUtf8(exception.what());
    }
    co_return failure;
}

/// Updates a page; a write of nothing is no write.
QCoro::Task<Failure> write(std::shared_ptr<NotionAPIService> api, QString pageId, QJsonObject properties,
                           std::stop_token stop)
{
    if (properties.isEmpty())
        co_return std::nullopt;
    const auto page = co_await api->updatePage(pageId, properties, stop);
    if (!page)
        co_return page.error().errorDescription();
    co_return std::nullopt;
}

/// Ends an entry in the workspace and then gives its task, if it has one, the stopped status.
QCoro::Task<Failure> closeEntry(std::shared_ptr<NotionAPIService> api, TimerEntry entry, FieldMapping mapping,
                                QDateTime end, std::stop_token stop)
{
    const auto closing = NotionWrites::closingOfEntry(mapping, end);
    const auto closeFailure = co_await write(api, entry.id, closing, stop);
    if (closeFailure || !entry.taskId)
        co_return closeFailure;
    const auto status = NotionWrites::timerStatusOfTask(mapping, mapping.taskTimerStatusStopped);
    const auto taskId = *entry.taskId;
    const auto statusFailure = co_await write(api, taskId, status, stop);
    co_return statusFailure;
}

QCoro::Task<Failure> openEntry(std::shared_ptr<NotionAPIService> api, QString databaseId, FieldMapping mapping,
                               QDateTime start, QString taskId, std::stop_token stop)
{
    const auto parent = NotionWrites::parentDatabase(databaseId);
    const auto properties = NotionWrites::openingOfEntry(mapping, start, taskId);
    const auto page = co_await api->createPage(parent, properties, stop);
    if (!page)
        co_return page.error().errorDescription();
    co_return std::nullopt;
}

} // namespace

void TimerViewModel::startTimer(const NotionTask &task)
{
    if (!isLoading())
        spawn(runStart(task));
}

void TimerViewModel::stopTimer()
{
    if (activeTimer() && !isLoading())
        spawn(runStop(*activeTimer()));
}

void TimerViewModel::quickAddTask(const QString &name)
{
    if (!isLoading())
        spawn(runQuickAdd(name));
}

QCoro::Task<std::optional<QString>> TimerViewModel::closeRunningEntry()
{
    if (!isTimerRunning())
        co_return std::nullopt;
    const auto api = m_api;
    const auto failure = co_await closeEntry(api, *m_activeTimer.value(), m_settings.fieldMapping(), m_clock.now(),
                                             m_actionStop.get_token());
    co_return failure;
}

QCoro::Task<> TimerViewModel::runStart(NotionTask task)
{
    const QPointer self(this);
    const LoadingGuard guard(self, &TimerViewModel::setLoading);
    auto writing = writeStart(task);
    const auto failure = co_await failureOf(std::move(writing));
    if (!self)
        co_return;
    if (failure)
        m_errorMessage = u"Failed to start timer: "_s + *failure;
    else
        co_await poll(m_actionStop.get_token());
}

QCoro::Task<std::optional<QString>> TimerViewModel::writeStart(NotionTask task)
{
    const QPointer self(this);
    const auto api = m_api;
    const auto stop = m_actionStop.get_token();
    const auto closeFailure = co_await closeRunningEntry();
    if (closeFailure || !self)
        co_return closeFailure;

    const auto mapping = m_settings.fieldMapping();
    const auto databaseId = m_settings.timeTrackerDBId();
    const auto openFailure = co_await openEntry(api, databaseId, mapping, m_clock.now(), task.id, stop);
    if (openFailure)
        co_return openFailure;

    const auto status = NotionWrites::timerStatusOfTask(mapping, mapping.taskTimerStatusRunning);
    const auto statusFailure = co_await write(api, task.id, status, stop);
    co_return statusFailure;
}

QCoro::Task<> TimerViewModel::runStop(TimerEntry entry)
{
    const QPointer self(this);
    const LoadingGuard guard(self, &TimerViewModel::setLoading);
    const auto api = m_api;
    const auto stop = m_actionStop.get_token();

    auto writing = closeEntry(api, entry, m_settings.fieldMapping(), m_clock.now(), stop);
    const auto failure = co_await failureOf(std::move(writing));
    if (!self)
        co_return;
    if (failure) {
        m_errorMessage = u"Failed to stop timer: "_s + *failure;
        co_return;
    }

    m_activeTimer = std::nullopt; // Every surface goes idle without waiting for the poll.
    m_reminderSentForCurrentSession = false;
    co_await poll(stop);
}

QCoro::Task<> TimerViewModel::runQuickAdd(QString name)
{
    const QPointer self(this);
    const LoadingGuard guard(self, &TimerViewModel::setLoading);
    auto writing = writeQuickAdd(name);
    const auto failure = co_await failureOf(std::move(writing));
    if (!self)
        co_return;
    if (failure) {
        m_errorMessage = u"Failed to create task: "_s + *failure; // Whichever write it was that failed.
        Log::error(u"Quick add failed: "_s + *failure);
        co_return;
    }
    co_await poll(m_actionStop.get_token());
    Log::info(u"Quick add: created task '"_s + name + u"' and started timer"_s);
}

QCoro::Task<std::optional<QString>> TimerViewModel::writeQuickAdd(QString name)
{
    const QPointer self(this);
    const auto api = m_api;
    const auto stop = m_actionStop.get_token();
    const auto closeFailure = co_await closeRunningEntry();
    if (closeFailure || !self)
        co_return closeFailure;

    const auto mapping = m_settings.fieldMapping();
    const auto now = m_clock.now(); // The date of the task and the start of its entry.
    const auto parent = NotionWrites::parentDatabase(m_settings.tasksDBId());
    const auto properties = NotionWrites::newTask(mapping, name, now);
    const auto page = co_await api->createPage(parent, properties, stop);
    if (!self)
        co_return std::nullopt;
    if (!page)
        co_return page.error().errorDescription();
    const auto id = (*page)["id"_L1];
    if (!id.isString()) {
        const NotionAPIService::APIError error = NotionAPIService::APIError::InvalidResponse{};
        co_return error.errorDescription();
    }

    const auto trackerId = m_settings.timeTrackerDBId(); // As it is now: it may have changed while the task was made.
    const auto failure = co_await openEntry(api, trackerId, mapping, now, id.toString(), stop);
    co_return failure;
}

void TimerViewModel::checkReminder(double elapsed)
{
    if (!m_settings.reminderEnabled() || m_reminderSentForCurrentSession
        || m_settings.reminderHours() * secondsPerHour > elapsed)
        return;
    m_reminderSentForCurrentSession = true;
    sendReminderNotification();
}

void TimerViewModel::sendReminderNotification()
{
    const auto hours = qint64(std::clamp(m_settings.reminderHours(), -1e15, 1e15)); // Cut down to a whole number.
    const auto uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    m_notifications.add({.identifier = u"timerReminder-"_s + uuid,
                         .title = u"Timer Running"_s,
                         .body = u"Your timer has been running for over %1 hours."_s.arg(hours)});
}

} // namespace korvo
