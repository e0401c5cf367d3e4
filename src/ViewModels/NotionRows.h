#pragma once

#include "Models/FieldMapping.h"
#include "Models/NotionTask.h"
#include "Models/TimerEntry.h"
#include "Services/NotionAPIService.h"
#include "Utilities/Clock.h"

#include <QCoroTask>
#include <QDate>
#include <QJsonArray>
#include <QJsonObject>

#include <memory>
#include <optional>
#include <stop_token>

namespace korvo {

/// What is asked of the two databases, and how their rows become records.
namespace NotionRows {

/// Entries whose status is the mapped running option. The status property must be a select.
QJsonObject buildActiveTimerFilter(const FieldMapping &mapping);

/// The latest start first.
QJsonArray latestStartFirst(const FieldMapping &mapping);

/// Tasks of the day `today`, without those whose status is the mapped running option, if both are mapped.
QJsonObject buildTodayTasksFilter(const FieldMapping &mapping, QDate today);

/// A task from its row; none if the row has no "id" or no "properties". A task without a title is "Untitled".
std::optional<NotionTask> parseTodayTask(const QJsonObject &page, const FieldMapping &mapping);

/// A time entry from its row, with the names of its task, project and client: up to three page reads, one after the
/// other, none of which fails the whole. Fails with `InvalidResponse` if the row has no "id" or no "properties".
QCoro::Task<NotionAPIService::Result<TimerEntry>> parseTimerEntry(QJsonObject page, FieldMapping mapping,
                                                                  std::shared_ptr<NotionAPIService> api, Clock &clock,
                                                                  std::stop_token stop);

} // namespace NotionRows

} // namespace korvo
