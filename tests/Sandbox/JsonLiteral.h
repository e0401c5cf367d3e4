#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace korvo::sandbox {

/// The object that a text in a test stands for, with ' for ". An empty object if it is broken.
inline QJsonObject json(const char *text)
{
    return QJsonDocument::fromJson(QByteArray(text).replace('\'', '"')).object();
}

} // namespace korvo::sandbox
