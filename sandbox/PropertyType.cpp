#include "sandbox/PropertyType.h"

#include <iterator>

namespace korvo::sandbox {
namespace {

constexpr QStringView names[] = {
    u"title",
    u"rich_text",
    u"number",
    u"select",
    u"multi_select",
    u"status",
    u"date",
    u"people",
    u"files",
    u"checkbox",
    u"url",
    u"email",
    u"phone_number",
    u"formula",
    u"relation",
    u"rollup",
    u"created_time",
    u"created_by",
    u"last_edited_time",
    u"last_edited_by",
    u"unique_id",
    u"button",
    u"place",
};

static_assert(std::size(names) == static_cast<int>(PropertyType::place) + 1);

} // namespace

QList<PropertyType> allPropertyTypes()
{
    QList<PropertyType> types;
    for (int i = 0; i < static_cast<int>(std::size(names)); ++i)
        types.append(static_cast<PropertyType>(i));
    return types;
}

QString typeName(PropertyType type)
{
    return names[static_cast<int>(type)].toString();
}

std::optional<PropertyType> propertyType(const QString &name)
{
    for (const PropertyType type : allPropertyTypes()) {
        if (names[static_cast<int>(type)] == name)
            return type;
    }
    return std::nullopt;
}

bool isWritable(PropertyType type)
{
    switch (type) {
    case PropertyType::formula:
    case PropertyType::rollup:
    case PropertyType::createdTime:
    case PropertyType::createdBy:
    case PropertyType::lastEditedTime:
    case PropertyType::lastEditedBy:
    case PropertyType::uniqueId:
    case PropertyType::button:
    case PropertyType::place:
        return false;
    default:
        return true;
    }
}

} // namespace korvo::sandbox
