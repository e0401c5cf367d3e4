#include "sandbox/Sort.h"

#include "sandbox/ApiError.h"
#include "sandbox/Database.h"
#include "sandbox/DateText.h"
#include "sandbox/Page.h"
#include "sandbox/PropertyJson.h"
#include "sandbox/RichText.h"
#include "sandbox/Workspace.h"

#include <algorithm>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

/// What a row is sorted by: a number or a text, or nothing.
struct SortKey {
    bool isEmpty = true;
    double number = 0;
    QString text;
};

struct SortStep {
    std::function<SortKey(const Page &)> key;
    bool isDescending = false;
};

SortKey numberKey(double number)
{
    return {.isEmpty = false, .number = number, .text = {}};
}

/// Texts sort without case and with the numbers in them by value: "Article 4" comes before "Article 10".
SortKey textKey(const QString &text)
{
    constexpr qsizetype digitsWidth = 20;
    QString key;
    QString digits;
    const auto flush = [&] {
        if (!digits.isEmpty())
            key += digits.rightJustified(digitsWidth, u'0');
        digits.clear();
    };
    for (const QChar character : text.toCaseFolded()) {
        if (character >= u'0' && character <= u'9') {
            digits += character;
            continue;
        }
        flush();
        key += character;
    }
    flush();
    return {.isEmpty = text.isEmpty(), .number = 0, .text = key};
}

SortKey dateKey(const QString &text)
{
    const auto date = parseDateText(text);
    return date ? numberKey(static_cast<double>(date->instant().toSecsSinceEpoch())) : SortKey();
}

/// The place of an option in the column's list, which is how options sort.
SortKey optionKey(const PropertySchema &schema, const QJsonValue &option)
{
    for (qsizetype i = 0; i < schema.options.size(); ++i) {
        if (schema.options[i].id == option[u"id"_s].toString())
            return numberKey(static_cast<double>(i));
    }
    return {};
}

SortKey computedKey(const QJsonValue &value)
{
    const QJsonValue inner = value[value[u"type"_s].toString()];
    if (inner.isDouble())
        return numberKey(inner.toDouble());
    if (inner.isBool())
        return numberKey(inner.toBool() ? 1 : 0);
    if (inner.isObject())
        return dateKey(inner[u"start"_s].toString());
    return textKey(inner.toString());
}

SortKey keyOf(const PropertySchema &schema, const QJsonValue &value)
{
    switch (schema.type) {
    case PropertyType::title:
    case PropertyType::richText:
        return textKey(plainText(value.toArray()));
    case PropertyType::number:
        return value.isDouble() ? numberKey(value.toDouble()) : SortKey();
    case PropertyType::select:
    case PropertyType::status:
        return optionKey(schema, value);
    case PropertyType::multiSelect:
        return optionKey(schema, value[0]);
    case PropertyType::date:
        return dateKey(value[u"start"_s].toString());
    case PropertyType::people:
        return textKey(value[0][u"name"_s].toString());
    case PropertyType::files:
        return textKey(value[0][u"name"_s].toString());
    case PropertyType::checkbox:
        return numberKey(value.toBool() ? 1 : 0);
    case PropertyType::formula:
    case PropertyType::rollup:
        return computedKey(value);
    case PropertyType::createdTime:
    case PropertyType::lastEditedTime:
        return dateKey(value.toString());
    case PropertyType::createdBy:
    case PropertyType::lastEditedBy:
        return textKey(value[u"name"_s].toString());
    case PropertyType::uniqueId:
        return numberKey(value[u"number"_s].toDouble());
    default:
        return textKey(value.toString());
    }
}

SortStep readStep(const Workspace &workspace, const Database &database, const QJsonValue &value, const QString &path)
{
    if (!value.isObject())
        throw bodyError(path + u" should be an object"_s, value);
    const QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (it.key() != "property"_L1 && it.key() != "timestamp"_L1 && it.key() != "direction"_L1)
            throw bodyError(path + u'.' + it.key() + u" should be not present"_s, it.value());
    }
    SortStep step;
    const QJsonValue direction = object.value(u"direction"_s);
    step.isDescending = direction == "descending"_L1;
    if (!step.isDescending && direction != "ascending"_L1)
        throw bodyError(path + u".direction should be `\"ascending\"` or `\"descending\"`"_s, direction);

    if (object.contains(u"timestamp"_s)) {
        const QJsonValue timestamp = object.value(u"timestamp"_s);
        const bool isCreated = timestamp == "created_time"_L1;
        if (!isCreated && timestamp != "last_edited_time"_L1)
            throw bodyError(path + u".timestamp should be `\"created_time\"` or `\"last_edited_time\"`"_s, timestamp);
        step.key = [isCreated](const Page &page) {
            return dateKey(stampText(isCreated ? page.createdTime : page.lastEditedTime));
        };
        return step;
    }
    const QJsonValue name = object.value(u"property"_s);
    if (!name.isString())
        throw bodyError(path + u".property should be defined"_s, name);
    const PropertySchema *schema = database.property(name.toString());
    if (!schema)
        throw validationError(u"Could not find sort property with name or id: "_s + name.toString());
    step.key
        = [&workspace, schema](const Page &page) { return keyOf(*schema, propertyValue(workspace, page, *schema)); };
    return step;
}

/// Negative if `a` comes first, positive if `b` does.
int compare(const SortKey &a, const SortKey &b, bool isDescending)
{
    if (a.isEmpty || b.isEmpty)
        return static_cast<int>(a.isEmpty) - static_cast<int>(b.isEmpty);
    int order = a.number < b.number ? -1 : (a.number > b.number ? 1 : 0);
    if (order == 0)
        order = QString::localeAwareCompare(a.text, b.text);
    return isDescending ? -order : order;
}

} // namespace

void sortRows(const Workspace &workspace, const Database &database, const QJsonArray &sorts, QList<const Page *> &rows)
{
    std::vector<SortStep> steps;
    for (qsizetype i = 0; i < sorts.size(); ++i)
        steps.push_back(readStep(workspace, database, sorts[i], u"body.sorts[%1]"_s.arg(i)));
    std::ranges::stable_sort(rows, [&](const Page *a, const Page *b) {
        for (const SortStep &step : steps) {
            if (const int order = compare(step.key(*a), step.key(*b), step.isDescending))
                return order < 0;
        }
        return false;
    });
}

} // namespace korvo::sandbox
