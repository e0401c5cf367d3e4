#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <optional>

namespace korvo::bench {

/// Tells one figure as a line of JSON, for bench/report.py: less is better, and `goal` is the most that is good.
inline void tell(const QString &name, double value, const QString &unit, std::optional<double> goal = std::nullopt)
{
    QJsonObject figure{
        {QStringLiteral("name"), name}, {QStringLiteral("value"), value}, {QStringLiteral("unit"), unit}};
    if (goal)
        figure.insert(QStringLiteral("goal"), *goal);
    std::printf("%s\n", QJsonDocument(figure).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

/// Tells median and worst of times in ms. The goal is the median's.
inline void tellTimes(const QString &name, QList<double> times, std::optional<double> goal = std::nullopt)
{
    std::sort(times.begin(), times.end());
    tell(name + QStringLiteral(", median"), times.at(times.size() / 2), QStringLiteral("ms"), goal);
    tell(name + QStringLiteral(", worst"), times.last(), QStringLiteral("ms"));
}

} // namespace korvo::bench
