#pragma once

#include <QDateTime>
#include <QJsonValue>
#include <QString>

#include <functional>
#include <optional>

namespace korvo::sandbox {

/// Makes the test of one operator on dates other than is_empty and is_not_empty; it is given the text of a date's
/// start. Both sides are cut to the minute; a day is compared with the UTC day. None for an unknown operator.
/// Throws ApiError for a value that is no date.
std::optional<std::function<bool(const QString &)>> compileDateOperator(const QString &name, const QJsonValue &operand,
                                                                        const QString &path, const QDateTime &now);

} // namespace korvo::sandbox
