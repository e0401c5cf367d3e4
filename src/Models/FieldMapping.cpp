#include "Models/FieldMapping.h"

#include "Utilities/JsonText.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <array>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

struct Field {
    QLatin1StringView key;
    QString FieldMapping::*member;
};

// In declared order, which is the order of the JSON.
constexpr std::array fields{
    Field{"ttTaskRelation"_L1, &FieldMapping::ttTaskRelation},
    Field{"ttStartTime"_L1, &FieldMapping::ttStartTime},
    Field{"ttEndTime"_L1, &FieldMapping::ttEndTime},
    Field{"ttStatus"_L1, &FieldMapping::ttStatus},
    Field{"ttStatusRunning"_L1, &FieldMapping::ttStatusRunning},
    Field{"ttStatusStopped"_L1, &FieldMapping::ttStatusStopped},
    Field{"taskName"_L1, &FieldMapping::taskName},
    Field{"taskDate"_L1, &FieldMapping::taskDate},
    Field{"taskTimerStatus"_L1, &FieldMapping::taskTimerStatus},
    Field{"taskTimerStatusRunning"_L1, &FieldMapping::taskTimerStatusRunning},
    Field{"taskTimerStatusStopped"_L1, &FieldMapping::taskTimerStatusStopped},
    Field{"taskProjectRelation"_L1, &FieldMapping::taskProjectRelation},
    Field{"projectClientRelation"_L1, &FieldMapping::projectClientRelation},
    Field{"taskTotalTimeRollup"_L1, &FieldMapping::taskTotalTimeRollup},
};

} // namespace

QByteArray FieldMapping::toJson() const
{
    // Not by a QJsonObject, which sorts its keys.
    QByteArray json;
    for (const Field &field : fields) {
        json += json.isEmpty() ? '{' : ',';
        json += jsonText(field.key) + ':' + jsonText(this->*field.member);
    }
    return json + '}';
}

std::optional<FieldMapping> FieldMapping::fromJson(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    FieldMapping mapping;
    for (const Field &field : fields) {
        const QJsonValue value = object.value(field.key);
        if (!value.isString())
            return std::nullopt;
        mapping.*field.member = value.toString();
    }
    return mapping;
}

} // namespace korvo
