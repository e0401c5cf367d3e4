#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace korvo::pages {

// Pages as Notion answers them, cut down to what a reader may look at. Property names as in `TestSettings::configure`.

inline QJsonObject title(const QStringList &runs)
{
    QJsonArray array;
    for (const auto &run : runs)
        array.append(
            QJsonObject{{QStringLiteral("type"), QStringLiteral("text")}, {QStringLiteral("plain_text"), run}});
    return {{QStringLiteral("type"), QStringLiteral("title")}, {QStringLiteral("title"), array}};
}

inline QJsonObject date(const QString &start)
{
    return {{QStringLiteral("date"),
             QJsonObject{{QStringLiteral("start"), start}, {QStringLiteral("end"), QJsonValue::Null}}}};
}

inline QJsonObject select(const QString &name)
{
    return {{QStringLiteral("select"), QJsonObject{{QStringLiteral("name"), name}}}};
}

inline QJsonObject relation(const QStringList &ids)
{
    QJsonArray array;
    for (const auto &id : ids)
        array.append(QJsonObject{{QStringLiteral("id"), id}});
    return {{QStringLiteral("relation"), array}, {QStringLiteral("has_more"), false}};
}

inline QJsonObject rollup(double number)
{
    return {{QStringLiteral("rollup"),
             QJsonObject{{QStringLiteral("type"), QStringLiteral("number")}, {QStringLiteral("number"), number}}}};
}

inline QJsonObject page(const QString &id, const QJsonObject &properties)
{
    return {{QStringLiteral("object"), QStringLiteral("page")},
            {QStringLiteral("id"), id},
            {QStringLiteral("properties"), properties}};
}

/// A running entry that began at half past eight on the fake clock's day, for the tasks named.
inline QJsonObject runningEntry(const QString &id, const QStringList &taskIds = {})
{
    return page(id,
                {{QStringLiteral("Start"), date(QStringLiteral("2026-11-21T08:30:00.000+00:00"))},
                 {QStringLiteral("Status"), select(QStringLiteral("Running"))},
                 {QStringLiteral("Task"), relation(taskIds)}});
}

inline QJsonObject task(const QString &id, const QString &name)
{
    return page(id,
                {{QStringLiteral("Name"), title({name})},
                 {QStringLiteral("Date"), date(QStringLiteral("2026-11-21"))},
                 {QStringLiteral("Timer"), QJsonObject{{QStringLiteral("select"), QJsonValue::Null}}}});
}

} // namespace korvo::pages
