#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>

namespace korvo {

/// One JSON value of any kind as compact JSON text in UTF-8, which a QJsonDocument alone does not write.
inline QByteArray jsonText(const QJsonValue &value)
{
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return array.sliced(1, array.size() - 2); // Without the brackets.
}

} // namespace korvo
