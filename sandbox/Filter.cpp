#include "sandbox/Filter.h"

#include "sandbox/ApiError.h"
#include "sandbox/Database.h"
#include "sandbox/DateText.h"
#include "sandbox/FilterConditions.h"
#include "sandbox/Page.h"
#include "sandbox/PropertyJson.h"
#include "sandbox/Workspace.h"

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr int deepestCompound = 2;

ConditionFamily familyOf(PropertyType type)
{
    switch (type) {
    case PropertyType::number:
    case PropertyType::uniqueId:
        return ConditionFamily::number;
    case PropertyType::checkbox:
        return ConditionFamily::checkbox;
    case PropertyType::select:
    case PropertyType::status:
        return ConditionFamily::option;
    case PropertyType::multiSelect:
        return ConditionFamily::optionList;
    case PropertyType::date:
    case PropertyType::createdTime:
    case PropertyType::lastEditedTime:
        return ConditionFamily::date;
    case PropertyType::people:
    case PropertyType::createdBy:
    case PropertyType::lastEditedBy:
    case PropertyType::relation:
        return ConditionFamily::idList;
    case PropertyType::files:
        return ConditionFamily::presence;
    default:
        return ConditionFamily::text;
    }
}

/// Besides its own name a column goes by the name of its kind: text-like ones take rich_text, time stamps date,
/// users people.
bool goesBy(PropertyType type, const QString &key)
{
    if (typeName(type) == key)
        return true;
    switch (type) {
    case PropertyType::title:
    case PropertyType::url:
    case PropertyType::email:
    case PropertyType::phoneNumber:
        return key == "rich_text"_L1;
    case PropertyType::createdTime:
    case PropertyType::lastEditedTime:
        return key == "date"_L1;
    case PropertyType::createdBy:
    case PropertyType::lastEditedBy:
        return key == "people"_L1;
    default:
        return false;
    }
}

ApiError noCondition(const QString &path)
{
    QString message = u"body failed validation. Fix one:"_s;
    for (const QString &key :
         {u"or"_s,       u"and"_s,        u"title"_s,        u"rich_text"_s,      u"number"_s,
          u"checkbox"_s, u"select"_s,     u"multi_select"_s, u"status"_s,         u"date"_s,
          u"people"_s,   u"files"_s,      u"url"_s,          u"email"_s,          u"phone_number"_s,
          u"relation"_s, u"created_by"_s, u"created_time"_s, u"last_edited_by"_s, u"last_edited_time"_s,
          u"formula"_s,  u"unique_id"_s,  u"rollup"_s})
        message += u"\n%1.%2 should be defined, instead was `undefined`."_s.arg(path, key);
    return validationError(message);
}

QJsonObject requireObject(const QJsonValue &value, const QString &path)
{
    if (!value.isObject())
        throw bodyError(path + u" should be an object"_s, value);
    return value.toObject();
}

class Compiler {
public:
    Compiler(const Workspace &workspace, const Database &database) : m_workspace(workspace), m_database(database) { }

    RowTest compile(const QJsonObject &filter, const QString &path, int depth) const
    {
        for (const QString &key : {u"and"_s, u"or"_s}) {
            if (filter.contains(key))
                return compileCompound(filter.value(key), key == "and"_L1, path + u'.' + key, depth);
        }
        if (filter.contains(u"timestamp"_s))
            return compileTimestamp(filter, path);
        if (filter.contains(u"property"_s))
            return compileProperty(filter, path);
        throw noCondition(path);
    }

private:
    RowTest compileCompound(const QJsonValue &value, bool isAnd, const QString &path, int depth) const
    {
        if (depth >= deepestCompound)
            throw bodyError(path + u" should be not present"_s, value);
        if (!value.isArray())
            throw bodyError(path + u" should be an array"_s, value);
        std::vector<RowTest> tests;
        for (qsizetype i = 0; i < value.toArray().size(); ++i) {
            const QString partPath = u"%1[%2]"_s.arg(path).arg(i);
            tests.push_back(compile(requireObject(value[i], partPath), partPath, depth + 1));
        }
        return [tests, isAnd](const Page &page) {
            const auto holds = [&](const RowTest &test) { return test(page); };
            return isAnd ? std::ranges::all_of(tests, holds) : std::ranges::any_of(tests, holds);
        };
    }

    RowTest compileTimestamp(const QJsonObject &filter, const QString &path) const
    {
        const QString name = filter.value(u"timestamp"_s).toString();
        const bool isCreated = name == "created_time"_L1;
        if (!isCreated && name != "last_edited_time"_L1)
            throw bodyError(path + u".timestamp should be `\"created_time\"` or `\"last_edited_time\"`"_s,
                            filter.value(u"timestamp"_s));
        if (!filter.contains(name))
            throw bodyError(path + u'.' + name + u" should be defined"_s, filter.value(name));
        const QString conditionPath = path + u'.' + name;
        const ValueTest test = compileCondition(ConditionFamily::date, requireObject(filter.value(name), conditionPath),
                                                nullptr, conditionPath, m_workspace.now());
        return [test, isCreated](const Page &page) {
            return test(stampText(isCreated ? page.createdTime : page.lastEditedTime));
        };
    }

    RowTest compileProperty(const QJsonObject &filter, const QString &path) const
    {
        const QJsonValue name = filter.value(u"property"_s);
        if (!name.isString())
            throw bodyError(path + u".property should be a string"_s, name);
        QString key;
        for (auto it = filter.begin(); it != filter.end(); ++it) {
            if (it.key() == "property"_L1 || it.key() == "type"_L1)
                continue;
            if (!propertyType(it.key()) || !key.isEmpty())
                throw bodyError(path + u'.' + it.key() + u" should be not present"_s, it.value());
            key = it.key();
        }
        if (key.isEmpty())
            throw noCondition(path);
        const PropertySchema *schema = m_database.property(name.toString());
        if (!schema)
            throw validationError(u"Could not find property with name or id: "_s + name.toString());
        if (!goesBy(schema->type, key)) {
            throw validationError(
                u"The property type in the database does not match the property type of the filter "
                "provided: database property %1 does not match filter %2"_s.arg(typeName(schema->type), key));
        }
        const QString conditionPath = path + u'.' + key;
        const QJsonObject condition = requireObject(filter.value(key), conditionPath);
        const ValueTest test = compileValueTest(*schema, condition, conditionPath);
        return [this_ = *this, schema, test](const Page &page) {
            if (schema->type == PropertyType::relation)
                return test(this_.wholeRelation(page, *schema));
            const QJsonValue value = propertyValue(this_.m_workspace, page, *schema);
            return test(schema->type == PropertyType::uniqueId ? value[u"number"_s] : value);
        };
    }

    ValueTest compileValueTest(const PropertySchema &schema, const QJsonObject &condition, const QString &path) const
    {
        if (schema.type == PropertyType::formula)
            return compileFormula(condition, path);
        if (schema.type == PropertyType::rollup)
            return compileRollup(condition, path);
        return compileCondition(familyOf(schema.type), condition, &schema, path, m_workspace.now());
    }

    /// {"number": condition}: the kind of value, then the condition on it.
    ValueTest compileFormula(const QJsonObject &condition, const QString &path) const
    {
        const QString kind = condition.isEmpty() ? QString() : condition.begin().key();
        const QHash<QString, std::pair<QString, ConditionFamily>> kinds{
            {u"string"_s, {u"string"_s, ConditionFamily::text}},
            {u"checkbox"_s, {u"boolean"_s, ConditionFamily::checkbox}},
            {u"number"_s, {u"number"_s, ConditionFamily::number}},
            {u"date"_s, {u"date"_s, ConditionFamily::date}}};
        if (!kinds.contains(kind) || condition.size() != 1)
            throw bodyError(path + u".string should be defined"_s, condition.value(u"string"_s));
        const auto &[member, family] = kinds[kind];
        const QString innerPath = path + u'.' + kind;
        const ValueTest test = compileCondition(family, requireObject(condition.value(kind), innerPath), nullptr,
                                                innerPath, m_workspace.now());
        return [test, key = member](const QJsonValue &value) { return test(value[key]); };
    }

    ValueTest compileRollup(const QJsonObject &condition, const QString &path) const
    {
        const QString kind = condition.isEmpty() ? QString() : condition.begin().key();
        const QString innerPath = path + u'.' + kind;
        if (kind == "number"_L1 || kind == "date"_L1) {
            const auto family = kind == "number"_L1 ? ConditionFamily::number : ConditionFamily::date;
            const ValueTest test = compileCondition(family, requireObject(condition.value(kind), innerPath), nullptr,
                                                    innerPath, m_workspace.now());
            return [test, kind](const QJsonValue &value) { return test(value[kind]); };
        }
        if (kind != "any"_L1 && kind != "every"_L1 && kind != "none"_L1)
            throw bodyError(path + u".any should be defined"_s, condition.value(u"any"_s));
        const QJsonObject inner = requireObject(condition.value(kind), innerPath);
        const auto type = inner.isEmpty() ? std::nullopt : propertyType(inner.begin().key());
        if (!type)
            throw noCondition(innerPath);
        const QString typePath = innerPath + u'.' + inner.begin().key();
        const ValueTest test = compileCondition(familyOf(*type), requireObject(inner.begin().value(), typePath),
                                                nullptr, typePath, m_workspace.now());
        return [test, kind](const QJsonValue &value) {
            const QJsonArray items = value[u"array"_s].toArray();
            const auto holds = [&](const QJsonValue &item) { return test(item[item[u"type"_s].toString()]); };
            if (kind == "every"_L1)
                return std::all_of(items.begin(), items.end(), holds);
            return std::any_of(items.begin(), items.end(), holds) == (kind == "any"_L1);
        };
    }

    /// All related ids, where an answer shows only the first of them.
    QJsonArray wholeRelation(const Page &page, const PropertySchema &schema) const
    {
        QJsonArray ids;
        for (const QString &id : m_workspace.relatedIds(page, schema))
            ids.append(QJsonObject{{u"id"_s, id}});
        return ids;
    }

    const Workspace &m_workspace;
    const Database &m_database;
};

} // namespace

RowTest compileFilter(const Workspace &workspace, const Database &database, const QJsonObject &filter)
{
    return Compiler(workspace, database).compile(filter, u"body.filter"_s, 0);
}

} // namespace korvo::sandbox
