#pragma once

#include "Platform/Linux/JsonMembers.h"
#include "Platform/UserDefaults.h"

#include <QByteArray>
#include <QHash>
#include <QJsonValue>
#include <QSet>
#include <QString>

#include <chrono>

class QLockFile;

namespace korvo {

/// User defaults in a file of one flat JSON object that its user alone may read; bytes stand there as
/// `{"base64": "..."}`. Types are strict: 0 and 1 are no booleans, true is no number; 45.0 is an integer, 45.5 is none,
/// and one beyond 64 bits reads as the nearest that fits. A number that is not finite is not stored: the former stays.
///
/// A process sees the file as it was at its start, what it wrote itself, and keys that others have added by the time of
/// its last write. Of what it sets, a value that it saw already, or went by as a default, does not overwrite what another
/// process put there meanwhile. What cannot be written stays in memory and is tried again with the next write, and at the end. A file
/// that is no JSON object is set aside as `.corrupt`; one that cannot be read is left alone. One that others can read is
/// closed to them whenever it is read.
class JsonUserDefaults final : public UserDefaults {
public:
    explicit JsonUserDefaults(const QString &path = defaultPath());
    ~JsonUserDefaults() override;
    Q_DISABLE_COPY_MOVE(JsonUserDefaults)

    /// `Korvo/defaults.json` in the user's configuration folder. Source: XDG Base Directory Specification 0.8.
    static QString defaultPath();

    bool contains(const QString &key) const override;
    std::optional<QString> string(const QString &key) const override;
    std::optional<double> number(const QString &key) const override;
    std::optional<bool> boolean(const QString &key) const override;
    std::optional<qint64> integer(const QString &key) const override;
    std::optional<QByteArray> data(const QString &key) const override;

    void registerDefaults(const QList<std::pair<QString, Value>> &values) override;
    void set(const QList<std::pair<QString, Value>> &values) override;

private:
    struct Default {
        QJsonValue value;
        QByteArray found; ///< What the store held instead, as JSON text; empty for nothing.
    };

    void load();
    bool store();
    bool acquire(QLockFile &lock);

    const QString m_path;
    JsonMembers m_view;                    ///< What this process sees.
    QSet<QString> m_changed;               ///< Keys whose value is to be stored whatever stands there.
    QHash<QString, QByteArray> m_replaced; ///< Keys whose value is to be stored if this text stands there.
    QHash<QString, Default> m_defaults;    ///< Of keys that were not set since.
    bool m_isStored = true;                ///< Whether the last attempt to write went well.
    std::chrono::milliseconds m_lockPatience;
};

} // namespace korvo
