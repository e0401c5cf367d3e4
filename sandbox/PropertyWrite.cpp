#include "sandbox/PropertyWrite.h"

#include "sandbox/ApiError.h"
#include "sandbox/PropertyValueReader.h"
#include "sandbox/Workspace.h"

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

/// The types of which the API lists one each when a value has the form of none.
ApiError noKnownForm(const QString &path)
{
    QString message = u"body failed validation. Fix one:"_s;
    for (const PropertyType type : allPropertyTypes()) {
        if (isWritable(type))
            message += u"\n%1.%2 should be defined, instead was `undefined`."_s.arg(path, typeName(type));
    }
    return validationError(message);
}

/// The value under the type's key, or the value itself where it comes without one, which the API takes too.
QJsonValue unwrapped(const PropertySchema &schema, const QJsonValue &written, const QString &path)
{
    if (!written.isObject())
        return written;
    const QJsonObject object = written.toObject();
    const QString type = typeName(schema.type);
    if (!object.contains(type)) {
        bool hasWritableType = false;
        for (auto it = object.begin(); it != object.end(); ++it) {
            const auto other = propertyType(it.key());
            hasWritableType = hasWritableType || (other && isWritable(*other));
        }
        if (hasWritableType)
            throw validationError(u"%1 is expected to be %2."_s.arg(schema.name, type));
        throw noKnownForm(path);
    }
    if (!isWritable(schema.type))
        throw noKnownForm(path);
    for (auto it = object.begin(); it != object.end(); ++it) {
        const bool isKnown = it.key() == type || it.key() == "type"_L1 || it.key() == "id"_L1
            || (schema.type == PropertyType::relation && it.key() == "has_more"_L1);
        if (!isKnown)
            throw bodyError(path + u'.' + it.key() + u" should be not present"_s, it.value());
    }
    return object.value(type);
}

} // namespace

QList<PropertyChange> readProperties(Workspace &workspace, const Database &database, const QJsonObject &properties)
{
    QList<PropertyChange> changes;
    for (auto it = properties.begin(); it != properties.end(); ++it) {
        const PropertySchema *schema = database.property(it.key());
        if (!schema)
            throw validationError(it.key() + u" is not a property that exists."_s);
        if (it.value().isNull()) {
            throw validationError(
                u"Body Validation Failed. Fix the following:\nInvalid property value for: \"%1\"."_s.arg(it.key()));
        }
        const QString path = u"body.properties."_s + it.key();
        const QJsonValue value = unwrapped(*schema, it.value(), path);
        if (!isWritable(schema->type))
            throw validationError(u"%1 is expected to be %2."_s.arg(schema->name, typeName(schema->type)));
        changes.append(readPropertyValue(workspace, *schema, value, path + u'.' + typeName(schema->type)));
    }
    return changes;
}

} // namespace korvo::sandbox
