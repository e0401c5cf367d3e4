#include "sandbox/Fault.h"

#include <QHash>
#include <QJsonValue>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr int megabyte = 1024 * 1024;

const QHash<QString, Fault::Kind> &plainKinds()
{
    static const QHash<QString, Fault::Kind> kinds{
        {u"slow"_s, Fault::Kind::slow},
        {u"lose-answer"_s, Fault::Kind::loseAnswer},
        {u"cut-body"_s, Fault::Kind::cutBody},
        {u"cut-headers"_s, Fault::Kind::cutHeaders},
        {u"close-without-answer"_s, Fault::Kind::closeWithoutAnswer},
        {u"close-before-reading"_s, Fault::Kind::closeBeforeReading},
        {u"never-answer"_s, Fault::Kind::neverAnswer},
    };
    return kinds;
}

Headers headersOf(const QJsonObject &json)
{
    Headers headers;
    for (auto it = json.begin(); it != json.end(); ++it)
        headers.append({it.key().toUtf8(), it.value().toVariant().toByteArray()});
    return headers;
}

std::optional<Fault> faultOf(const QString &kind, const QJsonObject &json)
{
    const int status = json.value(u"status"_s).toInt(500);
    if (kind == "error"_L1) {
        const QJsonValue retryAfter = json.value(u"retry_after"_s);
        return Fault::error(status, retryAfter.isUndefined() ? QByteArray() : retryAfter.toVariant().toByteArray());
    }
    if (kind == "answer"_L1)
        return Fault::answer(status, json.value(u"body"_s).toString().toUtf8(),
                             headersOf(json.value(u"headers"_s).toObject()));
    if (kind == "html"_L1)
        return Fault::html(status);
    if (kind == "not-utf8"_L1)
        return Fault::notUtf8(json.value(u"status"_s).toInt(200));
    if (kind == "nested"_L1)
        return Fault::nested(json.value(u"depth"_s).toInt(2000));
    if (kind == "streamed"_L1)
        return Fault::streamed(qint64{json.value(u"megabytes"_s).toInt(40)} * megabyte);
    if (plainKinds().contains(kind))
        return Fault::of(plainKinds().value(kind));
    return std::nullopt;
}

} // namespace

QString addFault(FaultPlan &plan, const QJsonObject &json)
{
    const QString kind = json.value(u"kind"_s).toString();
    std::optional<Fault> fault = faultOf(kind, json);
    if (!fault)
        return u"There is no kind of fault named \"%1\"."_s.arg(kind);
    fault->delay = std::chrono::milliseconds(json.value(u"delay_ms"_s).toInt(0));
    plan.add(*fault,
             FaultMatch{.method = json.value(u"method"_s).toString().toUtf8(),
                        .pathPrefix = json.value(u"path"_s).toString().toUtf8(),
                        .nth = json.value(u"nth"_s).toInt(1),
                        .times = json.value(u"times"_s).toInt(1)});
    return {};
}

} // namespace korvo::sandbox
