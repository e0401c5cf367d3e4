#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace korvo::databases {

// Databases as Notion answers them, cut down to what a reader may look at, and some members that it must not mind.

inline QJsonObject column(const QString &type, const QJsonValue &configuration = QJsonObject())
{
    return {{QStringLiteral("id"), QStringLiteral("%3FB%3AW")},
            {QStringLiteral("description"), QJsonValue::Null},
            {QStringLiteral("type"), type},
            {type, configuration}};
}

inline QJsonObject relation(const QString &databaseId)
{
    return column(QStringLiteral("relation"),
                  QJsonObject{{QStringLiteral("database_id"), databaseId},
                              {QStringLiteral("type"), QStringLiteral("single_property")},
                              {QStringLiteral("single_property"), QJsonObject()}});
}

/// A column of type "select" or "status", or of another that has options.
inline QJsonObject choice(const QString &type, const QStringList &names)
{
    QJsonArray options;
    for (const auto &name : names)
        options.append(QJsonObject{{QStringLiteral("name"), name}, {QStringLiteral("color"), QStringLiteral("red")}});
    return column(type, QJsonObject{{QStringLiteral("options"), options}});
}

inline QJsonObject database(const QJsonObject &properties)
{
    return {{QStringLiteral("object"), QStringLiteral("database")}, {QStringLiteral("properties"), properties}};
}

} // namespace korvo::databases
