#include "Platform/Linux/JsonMembers.h"

#include "Utilities/JsonText.h"

#include <QByteArrayView>
#include <QJsonArray>
#include <QJsonDocument>

namespace korvo {

namespace {

QJsonValue valueOf(const QByteArray &text)
{
    return QJsonDocument::fromJson('[' + text + ']').array().at(0);
}

/// Cuts JSON that is known to be valid into its tokens, where a nested array or object is one token.
class Scanner {
public:
    explicit Scanner(QByteArrayView json) : m_rest(json) { }

    /// The next string, number, word, array or object, or one of the characters `,` `:` `}`. Empty at the end.
    QByteArray next()
    {
        while (!m_rest.isEmpty() && QByteArrayView(" \t\r\n").contains(m_rest.front()))
            m_rest = m_rest.sliced(1);
        const qsizetype size = tokenSize();
        const QByteArray token = m_rest.first(size).toByteArray();
        m_rest = m_rest.sliced(size);
        return token;
    }

    void skip(qsizetype size) { m_rest = m_rest.sliced(size); }

private:
    qsizetype tokenSize() const
    {
        qsizetype depth = 0;
        qsizetype end = 0;
        while (end < m_rest.size()) {
            const char character = m_rest.at(end);
            if (character == '"') {
                end = stringEnd(end);
                if (depth == 0)
                    return end;
                continue;
            }
            if (depth == 0 && end > 0 && QByteArrayView(",:}] \t\r\n").contains(character))
                return end; // Behind a number or a word.
            ++end;
            if (character == '{' || character == '[')
                ++depth;
            else if (character == '}' || character == ']')
                --depth;
            const bool isStructure = QByteArrayView(",:}]").contains(character);
            if (isStructure && depth <= 0)
                return end;
        }
        return end;
    }

    qsizetype stringEnd(qsizetype start) const
    {
        for (qsizetype end = start + 1; end < m_rest.size(); ++end) {
            if (m_rest.at(end) == '\\')
                ++end;
            else if (m_rest.at(end) == '"')
                return end + 1;
        }
        return m_rest.size();
    }

    QByteArrayView m_rest;
};

} // namespace

std::optional<JsonMembers> JsonMembers::parse(const QByteArray &json)
{
    if (!QJsonDocument::fromJson(json).isObject())
        return std::nullopt;
    JsonMembers members;
    Scanner scanner(json);
    scanner.skip(json.indexOf('{') + 1); // Past a byte order mark, too.
    for (QByteArray token = scanner.next(); token != "}"; token = scanner.next()) {
        if (token == ",")
            continue;
        const QJsonValue key = valueOf(token);
        const QByteArray colon = scanner.next();
        const QByteArray text = scanner.next();
        if (!key.isString() || colon != ":" || text.isEmpty())
            return std::nullopt;
        members.set(key.toString(), text);
    }
    return members;
}

QByteArray JsonMembers::toJson() const
{
    QByteArray json;
    for (const QString &key : m_keys)
        json += (json.isEmpty() ? "  " : ",\n  ") + jsonText(key) + ": " + text(key);
    return json.isEmpty() ? QByteArray("{}\n") : "{\n" + json + "\n}\n";
}

QJsonValue JsonMembers::value(const QString &key) const
{
    const auto found = m_texts.find(key);
    return found == m_texts.end() ? QJsonValue(QJsonValue::Undefined) : valueOf(*found);
}

void JsonMembers::set(const QString &key, const QByteArray &text)
{
    if (!m_texts.contains(key))
        m_keys.append(key);
    m_texts.insert(key, text);
}

} // namespace korvo
