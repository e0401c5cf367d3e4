#include "sandbox/Database.h"

#include <QUrl>

#include <algorithm>

namespace korvo::sandbox {
namespace {

template <typename Item, typename Test> const Item *find(const QList<Item> &items, Test test)
{
    const auto it = std::ranges::find_if(items, test);
    return it == items.end() ? nullptr : &*it;
}

} // namespace

const Option *PropertySchema::optionById(const QString &optionId) const
{
    return find(options, [&](const Option &option) { return option.id == optionId; });
}

const Option *PropertySchema::optionByName(const QString &optionName) const
{
    return find(options, [&](const Option &option) { return option.name == optionName; });
}

QString encodedPropertyId(const QString &id)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(id));
}

const PropertySchema *Database::propertyById(const QString &propertyId) const
{
    return find(properties, [&](const PropertySchema &schema) { return schema.id == propertyId; });
}

const PropertySchema *Database::titleProperty() const
{
    return find(properties, [](const PropertySchema &schema) { return schema.type == PropertyType::title; });
}

const PropertySchema *Database::property(const QString &nameOrId) const
{
    if (const auto *named = find(properties, [&](const PropertySchema &schema) { return schema.name == nameOrId; }))
        return named;
    return find(properties, [&](const PropertySchema &schema) {
        return schema.id == nameOrId || encodedPropertyId(schema.id) == nameOrId;
    });
}

} // namespace korvo::sandbox
