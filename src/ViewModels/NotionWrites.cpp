#include "ViewModels/NotionWrites.h"

#include "Services/NotionPropertyMapper.h"

#include <QJsonArray>

namespace korvo::NotionWrites {

using namespace Qt::StringLiterals;

QJsonObject closingOfEntry(const FieldMapping &mapping, const QDateTime &end)
{
    QJsonObject properties{{mapping.ttStatus, NotionPropertyMapper::buildSelectProperty(mapping.ttStatusStopped)}};
    if (!mapping.ttEndTime.isEmpty())
        properties.insert(mapping.ttEndTime, NotionPropertyMapper::buildDateProperty(end));
    return properties;
}

QJsonObject openingOfEntry(const FieldMapping &mapping, const QDateTime &start, const QString &taskId)
{
    return {{mapping.ttStatus, NotionPropertyMapper::buildSelectProperty(mapping.ttStatusRunning)},
            {mapping.ttStartTime, NotionPropertyMapper::buildDateProperty(start)},
            {mapping.ttTaskRelation, NotionPropertyMapper::buildRelationProperty({taskId})}};
}

QJsonObject timerStatusOfTask(const FieldMapping &mapping, const QString &option)
{
    if (mapping.taskTimerStatus.isEmpty() || option.isEmpty())
        return {};
    return {{mapping.taskTimerStatus, NotionPropertyMapper::buildSelectProperty(option)}};
}

QJsonObject newTask(const FieldMapping &mapping, const QString &name, const QDateTime &date)
{
    const QJsonObject run{{u"text"_s, QJsonObject{{u"content"_s, name}}}};
    QJsonObject properties = timerStatusOfTask(mapping, mapping.taskTimerStatusRunning);
    properties.insert(mapping.taskName, QJsonObject{{u"title"_s, QJsonArray{run}}});
    if (!mapping.taskDate.isEmpty())
        properties.insert(mapping.taskDate, NotionPropertyMapper::buildDateProperty(date));
    return properties;
}

QJsonObject parentDatabase(const QString &id)
{
    return {{u"database_id"_s, id}};
}

} // namespace korvo::NotionWrites
