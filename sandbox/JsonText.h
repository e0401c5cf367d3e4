#pragma once

#include <QByteArray>
#include <QJsonObject>

namespace korvo::sandbox {

/// The object as compact JSON. Unlike QJsonDocument it writes "properties" in the API's order: by the properties' ids,
/// the title last. No client may count on the order of the table or of the alphabet.
QByteArray jsonText(const QJsonObject &object);

} // namespace korvo::sandbox
