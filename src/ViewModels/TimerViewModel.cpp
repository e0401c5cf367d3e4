#include "ViewModels/TimerViewModel.h"

#include "Utilities/DiagnosticLogger.h"
#include "Utilities/Spawn.h"
#include "ViewModels/NotionRows.h"

#include <exception>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr double idleIntervalWithoutOwner = 60.0; // Seconds; a vanished owner has no active timer.

std::optional<QString> idOf(const std::optional<TimerEntry> &entry)
{
    return entry ? std::optional(entry->id) : std::nullopt;
}

} // namespace

TimerViewModel::TimerViewModel(NotificationCenter &notifications, HttpTransport &transport, AppSettings &settings,
                               Clock &clock, QObject *parent) :
    QObject(parent),
    m_notifications(notifications),
    m_api(std::make_shared<NotionAPIService>(transport, settings, clock)),
    m_settings(settings),
    m_clock(clock)
{
    m_isTimerRunning.setBinding([this] {
        const auto &entry = m_activeTimer.value();
        return entry && entry->status == TimerEntry::TimerStatus::running;
    });
}

TimerViewModel::~TimerViewModel()
{
    if (m_pollTask.value())
        m_pollTask.value()->request_stop();
    m_actionStop.request_stop();
}

void TimerViewModel::startPollingIfConfigured()
{
    if (m_pollTask.value())
        m_pollTask.value()->request_stop();
    if (!m_settings.isConfigured())
        return; // The stopped run stays in m_pollTask: it is off, but not as after stopPolling().
    Log::info(u"Polling started"_s);
    const auto task = std::make_shared<std::stop_source>();
    m_pollTask = task;
    spawn(runPollLoop(this, m_clock, task->get_token()));
}

void TimerViewModel::stopPolling()
{
    Log::info(u"Polling stopped"_s);
    if (m_pollTask.value())
        m_pollTask.value()->request_stop();
    m_pollTask = nullptr;
}

QCoro::Task<> TimerViewModel::runPollLoop(QPointer<TimerViewModel> self, Clock &clock, std::stop_token stop)
{
    while (!stop.stop_requested()) {
        if (self)
            co_await self->poll(stop);
        const Clock::Seconds interval(self ? self->pollInterval() : idleIntervalWithoutOwner); // It may have gone.
        co_await clock.sleepFor(interval, stop); // A stop ends it at once, and the condition then ends the loop.
    }
    Log::info(u"Polling task finished (cancelled: %1)"_s.arg(stop.stop_requested() ? "true"_L1 : "false"_L1));
}

double TimerViewModel::pollInterval() const
{
    return activeTimer() ? m_settings.pollIntervalActive() : m_settings.pollIntervalIdle();
}

QCoro::Task<> TimerViewModel::poll(std::stop_token stop)
{
    const QPointer self(this);
    std::optional<QString> failure;
    try {
        failure = co_await readWorkspace(stop);
    } catch (const std::exception &exception) {
        failure = QString::fromUtf8(exception.what()); // The loop goes on: only a stop ends it.
    }
    if (!self)
        co_return;
    if (failure) {
        m_hasNetworkError = true;
        m_errorMessage = *failure;
        Log::error(u"Poll failed: "_s + *failure);
    } else {
        m_hasNetworkError = false;
        m_errorMessage = std::nullopt;
    }
}

QCoro::Task<std::optional<QString>> TimerViewModel::readWorkspace(std::stop_token stop)
{
    const QPointer self(this);
    const auto api = m_api;
    const auto mapping = m_settings.fieldMapping();
    const auto databaseId = m_settings.timeTrackerDBId();
    const std::optional filter(NotionRows::buildActiveTimerFilter(mapping));
    const std::optional sorts(NotionRows::latestStartFirst(mapping));

    const auto rows = co_await api->queryDatabase(databaseId, filter, sorts, 1, stop);
    if (!self)
        co_return std::nullopt;
    if (!rows)
        co_return rows.error().errorDescription();

    if (rows->isEmpty()) {
        setActiveTimer(std::nullopt);
    } else {
        const auto entry
            = co_await NotionRows::parseTimerEntry(rows->first(), m_settings.fieldMapping(), api, m_clock, stop);
        if (!self)
            co_return std::nullopt;
        if (!entry)
            co_return entry.error().errorDescription();
        setActiveTimer(*entry);
    }

    co_await fetchTodayTasks(stop);
    co_return std::nullopt;
}

void TimerViewModel::setActiveTimer(std::optional<TimerEntry> entry)
{
    if (idOf(activeTimer()) != idOf(entry))
        m_reminderSentForCurrentSession = false; // Another entry, or none: its reminder is still to come.
    m_activeTimer = std::move(entry);
}

QCoro::Task<> TimerViewModel::fetchTodayTasks(std::stop_token stop)
{
    const QPointer self(this);
    const auto api = m_api;
    const auto mapping = m_settings.fieldMapping();
    const auto databaseId = m_settings.tasksDBId();
    if (databaseId.isEmpty() || mapping.taskDate.isEmpty()) {
        m_todayTasks = QList<NotionTask>();
        co_return;
    }

    const std::optional filter(NotionRows::buildTodayTasksFilter(mapping, m_clock.now().toLocalTime().date()));
    const std::optional<QJsonArray> noSorts;
    const auto rows = co_await api->queryDatabase(databaseId, filter, noSorts, 100, stop);
    if (!self || !rows)
        co_return; // Today's list stays as it was; a failure here is nobody's news.

    const auto mappingNow = m_settings.fieldMapping();
    QList<NotionTask> tasks;
    for (const auto &row : *rows) {
        if (auto task = NotionRows::parseTodayTask(row, mappingNow))
            tasks.append(std::move(*task));
    }
    m_todayTasks = tasks;
}

} // namespace korvo
