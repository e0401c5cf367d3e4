#pragma once

#include <QHash>
#include <QJsonValue>
#include <QList>
#include <QString>

namespace korvo::sandbox {

/// True if the value is made as the recorded one: the same members in objects, the same types of values, items of
/// arrays like one of the recorded items. Null and an empty array stand for a value of any shape.
bool isShapedLike(const QJsonValue &given, const QJsonValue &recorded);

/// An answer without what differs by content: its properties and results, and the members that may be set or not.
QJsonValue frameOf(const QJsonValue &answer);

/// The properties found in answers, by their type.
class PropertyCollection {
public:
    /// Takes the properties of a page, a database or of all pages of a list.
    void add(const QJsonValue &answer);
    QList<QJsonValue> ofType(const QString &type) const { return m_properties.value(type); }

private:
    QHash<QString, QList<QJsonValue>> m_properties;
};

} // namespace korvo::sandbox
