#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

namespace korvo {

/// One property (a column) of a Notion database, as far as the settings need it. Data only.
struct NotionProperty {
    /// Notion's types of properties. `unknown` is every type that is not among the others.
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
        phone,
        formula,
        relation,
        rollup,
        createdTime,
        lastEditedTime,
        createdBy,
        lastEditedBy,
        uniqueId,
        unknown,
    };

    /// The type with exactly that raw value, Notion's own name for it; `unknown` for any other text.
    static PropertyType propertyTypeFromRawValue(QStringView rawValue);
    static QString rawValue(PropertyType type);

    QString id;   ///< Notion's identifier, the identity in lists; empty if the JSON held none.
    QString name; ///< As the user sees it in Notion, which is what a `FieldMapping` stores.
    PropertyType type = PropertyType::unknown;
    QStringList selectOptions; ///< The options of a select or status property, in Notion's order.
    std::optional<QString> relationDatabaseId = std::nullopt; ///< The database that a relation points to.
};

/// The layout of one Notion database.
struct NotionDatabaseSchema {
    QList<NotionProperty> properties;
};

} // namespace korvo
