#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace korvo::sandbox {

/// The types of property that the sample workspace knows.
enum class PropertyType {
    title,
    richText,
    number,
    select,
    multiSelect,
    status,
    date,
    people,
    files,
    checkbox,
    url,
    email,
    phoneNumber,
    formula,
    relation,
    rollup,
    createdTime,
    createdBy,
    lastEditedTime,
    lastEditedBy,
    uniqueId,
    button,
    place,
};

/// All types, in the order of the enumeration.
QList<PropertyType> allPropertyTypes();

/// The API's own word, "rich_text" for instance.
QString typeName(PropertyType type);

/// The type of that word; none if there is none.
std::optional<PropertyType> propertyType(const QString &name);

/// False for what the API works out itself.
bool isWritable(PropertyType type);

} // namespace korvo::sandbox
