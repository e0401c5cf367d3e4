#include "sandbox/RichText.h"

#include "sandbox/ApiError.h"

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr qsizetype longestText = 2000;
constexpr qsizetype longestEquation = 1000;
constexpr qsizetype mostRuns = 100;

QJsonObject annotationsOf(const QJsonObject &written)
{
    QJsonObject annotations{{u"bold"_s, false},      {u"italic"_s, false}, {u"strikethrough"_s, false},
                            {u"underline"_s, false}, {u"code"_s, false},   {u"color"_s, u"default"_s}};
    for (auto it = annotations.begin(); it != annotations.end(); ++it) {
        if (written.value(it.key()).type() == it.value().type())
            it.value() = written.value(it.key());
    }
    return annotations;
}

void checkLength(const QString &text, qsizetype longest, const QString &path)
{
    if (text.size() > longest)
        throw bodyError(path + u".length should be ≤ `"_s + QString::number(longest) + u'`', text.size());
}

QJsonObject readText(const QJsonObject &written, const QString &path, QJsonObject run)
{
    const QJsonValue text = written.value(u"text"_s);
    if (!text.isObject())
        throw bodyError(path + u".text should be defined"_s, text);
    const QJsonValue content = text.toObject().value(u"content"_s);
    if (!content.isString())
        throw bodyError(path + u".text.content should be a string"_s, content);
    checkLength(content.toString(), longestText, path + u".text.content"_s);
    const QJsonValue link = text.toObject().value(u"link"_s);
    const QString url = link.toObject().value(u"url"_s).toString();
    checkLength(url, longestText, path + u".text.link.url"_s);
    run.insert(u"type"_s, u"text"_s);
    run.insert(
        u"text"_s,
        QJsonObject{{u"content"_s, content}, {u"link"_s, url.isEmpty() ? QJsonValue() : QJsonObject{{u"url"_s, url}}}});
    run.insert(u"plain_text"_s, content);
    run.insert(u"href"_s, url.isEmpty() ? QJsonValue() : QJsonValue(url));
    return run;
}

QJsonObject readRun(const QJsonValue &value, const QString &path)
{
    if (!value.isObject())
        throw bodyError(path + u" should be an object"_s, value);
    const QJsonObject written = value.toObject();
    QJsonObject run{{u"annotations"_s, annotationsOf(written.value(u"annotations"_s).toObject())}};
    const QJsonValue equation = written.value(u"equation"_s).toObject().value(u"expression"_s);
    if (equation.isString()) {
        checkLength(equation.toString(), longestEquation, path + u".equation.expression"_s);
        run.insert(u"type"_s, u"equation"_s);
        run.insert(u"equation"_s, QJsonObject{{u"expression"_s, equation}});
        run.insert(u"plain_text"_s, equation);
        run.insert(u"href"_s, QJsonValue());
        return run;
    }
    if (written.value(u"mention"_s).isObject()) {
        run.insert(u"type"_s, u"mention"_s);
        run.insert(u"mention"_s, written.value(u"mention"_s));
        run.insert(u"plain_text"_s, written.value(u"plain_text"_s).toString(u"@mention"_s));
        run.insert(u"href"_s, QJsonValue());
        return run;
    }
    return readText(written, path, run);
}

} // namespace

QJsonObject textRun(const QString &text)
{
    return {{u"type"_s, u"text"_s},
            {u"text"_s, QJsonObject{{u"content"_s, text}, {u"link"_s, QJsonValue()}}},
            {u"annotations"_s, annotationsOf({})},
            {u"plain_text"_s, text},
            {u"href"_s, QJsonValue()}};
}

QJsonArray richText(const QString &text)
{
    return text.isEmpty() ? QJsonArray() : QJsonArray{textRun(text)};
}

QString plainText(const QJsonArray &runs)
{
    QString text;
    for (const QJsonValue &run : runs)
        text += run[u"plain_text"_s].toString();
    return text;
}

QJsonArray readRichText(const QJsonArray &written, const QString &path)
{
    if (written.size() > mostRuns)
        throw bodyError(path + u".length should be ≤ `100`"_s, written.size());
    QJsonArray runs;
    for (qsizetype i = 0; i < written.size(); ++i) {
        const QJsonObject run = readRun(written[i], u"%1[%2]"_s.arg(path).arg(i));
        // A run without text leaves no trace.
        if (!run.value(u"plain_text"_s).toString().isEmpty())
            runs.append(run);
    }
    return runs;
}

} // namespace korvo::sandbox
