#pragma once

#include "Platform/UserDefaults.h"

#include <QMap>

#include <utility>

namespace korvo {

/// A store in memory that counts its writes.
class FakeUserDefaults final : public UserDefaults {
public:
    explicit FakeUserDefaults(QMap<QString, Value> stored = {}) : values(std::move(stored)) { }

    bool contains(const QString &key) const override { return values.contains(key); }
    std::optional<QString> string(const QString &key) const override { return get<QString>(key); }
    std::optional<double> number(const QString &key) const override
    {
        if (const auto whole = get<qint64>(key))
            return double(*whole);
        return get<double>(key);
    }
    std::optional<bool> boolean(const QString &key) const override { return get<bool>(key); }
    std::optional<qint64> integer(const QString &key) const override { return get<qint64>(key); }
    std::optional<QByteArray> data(const QString &key) const override { return get<QByteArray>(key); }

    void registerDefaults(const QList<std::pair<QString, Value>> &defaults) override
    {
        for (const auto &[key, value] : defaults)
            registered.insert(key, value);
    }
    void set(const QList<std::pair<QString, Value>> &written) override
    {
        writes.append(written);
        for (const auto &[key, value] : written)
            values.insert(key, value);
    }

    QMap<QString, Value> values;
    QMap<QString, Value> registered; ///< Not found by reading.
    QList<QList<std::pair<QString, Value>>> writes;

private:
    template <typename T> std::optional<T> get(const QString &key) const
    {
        const auto found = values.find(key);
        if (found == values.end() || !std::holds_alternative<T>(*found))
            return std::nullopt;
        return std::get<T>(*found);
    }
};

} // namespace korvo
