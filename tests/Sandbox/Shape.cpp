#include "Sandbox/Shape.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {

bool isShapedLike(const QJsonValue &given, const QJsonValue &recorded)
{
    if (given.isNull() || recorded.isNull())
        return true;
    if (given.type() != recorded.type())
        return false;
    if (given.isArray()) {
        const QJsonArray items = given.toArray();
        const QJsonArray models = recorded.toArray();
        return std::all_of(items.begin(), items.end(), [&](const QJsonValue &item) {
            return std::any_of(models.begin(), models.end(),
                               [&](const QJsonValue &model) { return isShapedLike(item, model); });
        });
    }
    if (!given.isObject())
        return true;
    const QJsonObject object = given.toObject();
    const QJsonObject model = recorded.toObject();
    return object.keys() == model.keys() && std::ranges::all_of(object.keys(), [&](const QString &key) {
               return isShapedLike(object.value(key), model.value(key));
           });
}

QJsonValue frameOf(const QJsonValue &answer)
{
    QJsonObject frame = answer.toObject();
    for (const QString &key : {u"properties"_s, u"results"_s, u"icon"_s, u"cover"_s, u"title"_s, u"description"_s}) {
        if (frame.contains(key))
            frame.insert(key, QJsonValue());
    }
    return frame;
}

void PropertyCollection::add(const QJsonValue &answer)
{
    const QJsonArray results = answer[u"results"_s].toArray();
    for (const QJsonValue &page : results)
        add(page);
    const QJsonObject properties = answer[u"properties"_s].toObject();
    for (const QJsonValue &property : properties)
        m_properties[property[u"type"_s].toString()].append(property);
}

} // namespace korvo::sandbox
