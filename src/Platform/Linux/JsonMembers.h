#pragma once

#include <QByteArray>
#include <QHash>
#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>

namespace korvo {

/// The members of one JSON object in the order of the file, each value as the very text that stands there. So what
/// nobody touches is written again letter by letter, also numbers that no type of ours holds.
class JsonMembers {
public:
    /// None unless the text is one JSON object in valid UTF-8. Of members with the same key the last one counts.
    static std::optional<JsonMembers> parse(const QByteArray &json);

    /// One member a line, with a line feed at the end.
    QByteArray toJson() const;

    const QList<QString> &keys() const { return m_keys; }
    bool contains(const QString &key) const { return m_texts.contains(key); }
    QByteArray text(const QString &key) const { return m_texts.value(key); } ///< Empty if there is no such member.
    QJsonValue value(const QString &key) const;                              ///< Undefined if there is no such member.

    /// Sets a member to a value given as JSON text: where it stands, or as the last one.
    void set(const QString &key, const QByteArray &text);

    /// Whether the members are the same, letter by letter, in whatever order.
    bool operator==(const JsonMembers &other) const { return m_texts == other.m_texts; }

private:
    QList<QString> m_keys;
    QHash<QString, QByteArray> m_texts;
};

} // namespace korvo
