#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <functional>

namespace korvo::sandbox {

struct PropertySchema;

/// Says whether a property's value (what stands under the type's key) meets a condition.
using ValueTest = std::function<bool(const QJsonValue &)>;

/// The families of operators. Several types share one.
enum class ConditionFamily { text, number, checkbox, option, optionList, date, idList, presence };

/// Makes a test of a condition like {"equals": "Running"}. `schema` gives the options of an option family and may else
/// be null; `path` names the condition in errors; `now` is what this week and the like are counted from.
/// Throws ApiError for unknown operators, values of a wrong type and options that the property lacks.
ValueTest compileCondition(ConditionFamily family, const QJsonObject &condition, const PropertySchema *schema,
                           const QString &path, const QDateTime &now);

} // namespace korvo::sandbox
