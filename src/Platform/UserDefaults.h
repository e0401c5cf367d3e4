#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>
#include <variant>

namespace korvo {

/// A typed key-value store for the logged-in user that survives a restart. Reading and writing never fail outwards.
class UserDefaults {
public:
    using Value = std::variant<QString, double, bool, qint64, QByteArray>;

    virtual ~UserDefaults() = default;

    virtual bool contains(const QString &key) const = 0;

    /// The stored value if there is one and it is of that type; a whole number counts as a number too.
    virtual std::optional<QString> string(const QString &key) const = 0;
    virtual std::optional<double> number(const QString &key) const = 0;
    virtual std::optional<bool> boolean(const QString &key) const = 0;
    virtual std::optional<qint64> integer(const QString &key) const = 0;
    virtual std::optional<QByteArray> data(const QString &key) const = 0;

    /// Tells what the program goes by where nothing usable is stored. Such a value is not in the store, nor does reading
    /// find it. Setting it for the first time is no change: it is written where the store still holds what this process
    /// found there, or nothing, and gives way to what another process has put there.
    virtual void registerDefaults(const QList<std::pair<QString, Value>> &values) = 0;

    /// Writes the values in order, all or none: they are in the store when this returns. What other keys hold, also
    /// what another process wrote there meanwhile, stays. A failure is swallowed and loses nothing stored before.
    virtual void set(const QList<std::pair<QString, Value>> &values) = 0;

    /// The store of the process. The platform sets it before anything else runs.
    static UserDefaults &standard();
    static void setStandard(UserDefaults *defaults); ///< Must outlive its use; not owned.
};

} // namespace korvo
