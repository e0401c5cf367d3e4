#include "sandbox/FilterConditions.h"

#include "sandbox/ApiError.h"
#include "sandbox/Database.h"
#include "sandbox/DateCondition.h"
#include "sandbox/RichText.h"
#include "sandbox/Uuid.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

/// The one operator of a condition and what makes a test of it.
struct Operator {
    QString name;
    QJsonValue operand;
    QString path; ///< Of the condition.

    QString text() const
    {
        if (!operand.isString())
            throw bodyError(path + u'.' + name + u" should be a string"_s, operand);
        return operand.toString();
    }

    double number() const
    {
        if (!operand.isDouble())
            throw bodyError(path + u'.' + name + u" should be a number"_s, operand);
        return operand.toDouble();
    }

    bool boolean() const
    {
        if (!operand.isBool())
            throw bodyError(path + u'.' + name + u" should be a boolean"_s, operand);
        return operand.toBool();
    }

    QString uuid() const
    {
        const auto id = normalisedUuid(text());
        if (!id)
            throw bodyError(path + u'.' + name + u" should be a valid uuid"_s, operand);
        return *id;
    }
};

QString textOf(const QJsonValue &value)
{
    return value.isArray() ? plainText(value.toArray()) : value.toString();
}

bool isEmpty(const QJsonValue &value)
{
    return value.isNull() || value.isUndefined() || (value.isArray() && value.toArray().isEmpty())
        || (value.isString() && value.toString().isEmpty());
}

std::optional<ValueTest> textTest(const Operator &op)
{
    const auto test = [&](auto holds) -> ValueTest {
        return [holds, operand = op.text()](const QJsonValue &value) { return holds(textOf(value), operand); };
    };
    if (op.name == "equals"_L1)
        return test([](const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) == 0; });
    if (op.name == "does_not_equal"_L1)
        return test([](const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) != 0; });
    if (op.name == "contains"_L1)
        return test([](const QString &a, const QString &b) { return a.contains(b, Qt::CaseInsensitive); });
    if (op.name == "does_not_contain"_L1)
        return test([](const QString &a, const QString &b) { return !a.contains(b, Qt::CaseInsensitive); });
    if (op.name == "starts_with"_L1)
        return test([](const QString &a, const QString &b) { return a.startsWith(b, Qt::CaseInsensitive); });
    if (op.name == "ends_with"_L1)
        return test([](const QString &a, const QString &b) { return a.endsWith(b, Qt::CaseInsensitive); });
    return std::nullopt;
}

std::optional<ValueTest> numberTest(const Operator &op)
{
    const auto test = [&](auto holds, bool keepsEmpty = false) -> ValueTest {
        return [holds, keepsEmpty, operand = op.number()](const QJsonValue &value) {
            return value.isDouble() ? holds(value.toDouble(), operand) : keepsEmpty;
        };
    };
    if (op.name == "equals"_L1)
        return test(std::equal_to<double>());
    if (op.name == "does_not_equal"_L1)
        return test(std::not_equal_to<double>(), true);
    if (op.name == "greater_than"_L1)
        return test(std::greater<double>());
    if (op.name == "less_than"_L1)
        return test(std::less<double>());
    if (op.name == "greater_than_or_equal_to"_L1)
        return test(std::greater_equal<double>());
    if (op.name == "less_than_or_equal_to"_L1)
        return test(std::less_equal<double>());
    return std::nullopt;
}

std::optional<ValueTest> checkboxTest(const Operator &op)
{
    if (op.name != "equals"_L1 && op.name != "does_not_equal"_L1)
        return std::nullopt;
    return [wanted = op.boolean() == (op.name == "equals"_L1)](const QJsonValue &value) {
        return value.toBool() == wanted;
    };
}

/// The operand, if the property has such an option.
QString optionName(const Operator &op, const PropertySchema *schema)
{
    const QString name = op.text();
    if (!schema || schema->optionByName(name))
        return name;
    QStringList available;
    for (const Option &option : schema->options)
        available.append(u'"' + option.name + u'"');
    throw validationError(u"%1 option \"%2\" not found for property \"%3\". Available options: %4."_s.arg(
        typeName(schema->type), name, schema->name, available.join(u", "_s)));
}

std::optional<ValueTest> optionTest(const Operator &op, const PropertySchema *schema)
{
    if (op.name != "equals"_L1 && op.name != "does_not_equal"_L1)
        return std::nullopt;
    // A row without a value does not equal anything, so does_not_equal keeps it.
    return [name = optionName(op, schema), wanted = op.name == "equals"_L1](const QJsonValue &value) {
        return (value[u"name"_s].toString() == name && value.isObject()) == wanted;
    };
}

std::optional<ValueTest> listTest(const Operator &op, const QString &key, const QString &operand)
{
    return [=, wanted = op.name == "contains"_L1](const QJsonValue &value) {
        const QJsonArray items = value.isObject() ? QJsonArray{value} : value.toArray();
        for (const QJsonValue &item : items) {
            if (item[key].toString() == operand)
                return wanted;
        }
        return !wanted;
    };
}

std::optional<ValueTest> dateTest(const Operator &op, const QDateTime &now)
{
    const auto test = compileDateOperator(op.name, op.operand, op.path, now);
    if (!test)
        return std::nullopt;
    return [test = *test](const QJsonValue &value) {
        return test(value.isObject() ? value[u"start"_s].toString() : value.toString());
    };
}

std::optional<ValueTest> familyTest(ConditionFamily family, const Operator &op, const PropertySchema *schema,
                                    const QDateTime &now)
{
    const bool isContainment = op.name == "contains"_L1 || op.name == "does_not_contain"_L1;
    switch (family) {
    case ConditionFamily::text:
        return textTest(op);
    case ConditionFamily::number:
        return numberTest(op);
    case ConditionFamily::checkbox:
        return checkboxTest(op);
    case ConditionFamily::option:
        return optionTest(op, schema);
    case ConditionFamily::optionList:
        return isContainment ? listTest(op, u"name"_s, optionName(op, schema)) : std::nullopt;
    case ConditionFamily::date:
        return dateTest(op, now);
    case ConditionFamily::idList:
        return isContainment ? listTest(op, u"id"_s, op.uuid()) : std::nullopt;
    case ConditionFamily::presence:
        break;
    }
    return std::nullopt;
}

} // namespace

ValueTest compileCondition(ConditionFamily family, const QJsonObject &condition, const PropertySchema *schema,
                           const QString &path, const QDateTime &now)
{
    if (condition.isEmpty())
        throw bodyError(path + u".is_empty should be defined"_s, QJsonValue(QJsonValue::Undefined));
    if (condition.size() > 1)
        throw bodyError(path + u'.' + condition.keys().last() + u" should be not present"_s,
                        (--condition.end()).value());
    const Operator op{condition.begin().key(), condition.begin().value(), path};
    const bool isPresence = op.name == "is_empty"_L1 || op.name == "is_not_empty"_L1;
    if (isPresence && family != ConditionFamily::checkbox) {
        if (op.operand != QJsonValue(true))
            throw bodyError(path + u'.' + op.name + u" should be `true`"_s, op.operand);
        return [wanted = op.name == "is_empty"_L1](const QJsonValue &value) { return isEmpty(value) == wanted; };
    }
    const auto test = familyTest(family, op, schema, now);
    if (!test)
        throw bodyError(path + u'.' + op.name + u" should be not present"_s, op.operand);
    return *test;
}

} // namespace korvo::sandbox
