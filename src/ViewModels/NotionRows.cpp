#include "ViewModels/NotionRows.h"

#include "Services/NotionPropertyMapper.h"

namespace korvo::NotionRows {

using namespace Qt::StringLiterals;

namespace {

constexpr double secondsPerMinute = 60.0;

std::optional<QJsonObject> propertiesOf(const QJsonObject &page)
{
    const auto properties = page["properties"_L1];
    return properties.isObject() ? std::optional(properties.toObject()) : std::nullopt;
}

/// The title of a page whose properties are not mapped. A page has one title property, so the first that is found is it.
std::optional<QString> findTitle(const QJsonObject &properties)
{
    for (auto property = properties.begin(); property != properties.end(); ++property) {
        if (const auto title = NotionPropertyMapper::title(properties, property.key()))
            return title;
    }
    return std::nullopt;
}

/// The properties of the page that a relation names first; none without such a page or if it cannot be read.
QCoro::Task<std::optional<QJsonObject>> firstRelated(QStringList pageIds, std::shared_ptr<NotionAPIService> api,
                                                     std::stop_token stop)
{
    if (pageIds.isEmpty())
        co_return std::nullopt;
    const auto page = co_await api->getPage(pageIds.first(), stop);
    if (!page)
        co_return std::nullopt;
    co_return propertiesOf(*page);
}

} // namespace

QJsonObject buildActiveTimerFilter(const FieldMapping &mapping)
{
    return {{u"property"_s, mapping.ttStatus}, {u"select"_s, QJsonObject{{u"equals"_s, mapping.ttStatusRunning}}}};
}

QJsonArray latestStartFirst(const FieldMapping &mapping)
{
    return {QJsonObject{{u"property"_s, mapping.ttStartTime}, {u"direction"_s, u"descending"_s}}};
}

QJsonObject buildTodayTasksFilter(const FieldMapping &mapping, QDate today)
{
    const QJsonObject isToday{{u"property"_s, mapping.taskDate},
                              {u"date"_s, QJsonObject{{u"equals"_s, today.toString(Qt::ISODate)}}}};
    if (mapping.taskTimerStatus.isEmpty() || mapping.taskTimerStatusRunning.isEmpty())
        return isToday;

    const QJsonObject isNotRunning{{u"property"_s, mapping.taskTimerStatus},
                                   {u"select"_s, QJsonObject{{u"does_not_equal"_s, mapping.taskTimerStatusRunning}}}};
    return {{u"and"_s, QJsonArray{isToday, isNotRunning}}};
}

std::optional<NotionTask> parseTodayTask(const QJsonObject &page, const FieldMapping &mapping)
{
    const auto id = page["id"_L1];
    const auto properties = propertiesOf(page);
    if (!id.isString() || !properties)
        return std::nullopt;
    return NotionTask{
        .id = id.toString(),
        .name = NotionPropertyMapper::title(*properties, mapping.taskName).value_or(u"Untitled"_s),
        .date = NotionPropertyMapper::date(*properties, mapping.taskDate),
        .timerStatus = NotionPropertyMapper::select(*properties, mapping.taskTimerStatus),
    };
}

QCoro::Task<NotionAPIService::Result<TimerEntry>> parseTimerEntry(QJsonObject page, FieldMapping mapping,
                                                                  std::shared_ptr<NotionAPIService> api, Clock &clock,
                                                                  std::stop_token stop)
{
    namespace Mapper = NotionPropertyMapper;

    const auto id = page["id"_L1];
    const auto properties = propertiesOf(page);
    if (!id.isString() || !properties) {
        const NotionAPIService::APIError error = NotionAPIService::APIError::InvalidResponse{};
        co_return error;
    }

    TimerEntry entry;
    entry.id = id.toString();
    entry.startTime = Mapper::date(*properties, mapping.ttStartTime).value_or(clock.now());
    entry.endTime = Mapper::date(*properties, mapping.ttEndTime);
    entry.status = Mapper::select(*properties, mapping.ttStatus) == mapping.ttStatusRunning
        ? TimerEntry::TimerStatus::running
        : TimerEntry::TimerStatus::stopped;
    entry.taskName = u"Unknown task"_s;

    const auto taskIds = Mapper::relations(*properties, mapping.ttTaskRelation);
    if (!taskIds.isEmpty())
        entry.taskId = taskIds.first();
    const auto task = co_await firstRelated(taskIds, api, stop);
    if (!task)
        co_return entry;
    entry.taskName = Mapper::title(*task, mapping.taskName).value_or(entry.taskName);

    const auto projectIds = Mapper::relations(*task, mapping.taskProjectRelation);
    const auto project = co_await firstRelated(projectIds, api, stop);
    if (project) {
        entry.projectName = findTitle(*project);
        const auto clientIds = Mapper::relations(*project, mapping.projectClientRelation);
        const auto client = co_await firstRelated(clientIds, api, stop);
        if (client)
            entry.clientName = findTitle(*client);
    }

    if (const auto minutes = Mapper::rollupNumber(*task, mapping.taskTotalTimeRollup))
        entry.totalTime = *minutes * secondsPerMinute;
    co_return entry;
}

} // namespace korvo::NotionRows
