#include "Platform/Linux/DesktopEntry.h"

#include <algorithm>
#include <functional>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr auto header = "[Desktop Entry]";

bool isHeader(const QByteArray &line)
{
    return line.startsWith('[');
}

bool isBlankOrComment(const QByteArray &line)
{
    return line.startsWith('#') || line.trimmed().isEmpty();
}

QString escaped(const QString &value)
{
    QString text;
    for (const QChar character : value) {
        if (character == u'\\')
            text += "\\\\"_L1;
        else if (character == u' ' && text.isEmpty())
            text += "\\s"_L1; // Else it would count as the blank behind the equals sign.
        else
            text += character;
    }
    return text;
}

QString unescaped(const QString &text)
{
    QString value;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'\\' || i + 1 == text.size()) {
            value += text[i];
            continue;
        }
        switch (text[++i].unicode()) {
        case u's':
            value += u' ';
            break;
        case u'n':
            value += u'\n';
            break;
        case u't':
            value += u'\t';
            break;
        case u'r':
            value += u'\r';
            break;
        case u'\\':
            value += u'\\';
            break;
        default: // No escape at all.
            value += u'\\';
            value += text[i];
        }
    }
    return value;
}

/// Characters for which an argument of "Exec" has to stand in quotes.
bool isReserved(QChar character)
{
    return u" \"'\\><~|&;$*?#()`"_s.contains(character);
}

/// Characters before which a backslash stands inside quotes.
bool isEscapedInQuotes(QChar character)
{
    return u"\"`$\\"_s.contains(character);
}

} // namespace

DesktopEntry::DesktopEntry(const QByteArray &text)
{
    if (!text.isEmpty())
        m_lines = text.split('\n');
    if (!m_lines.isEmpty() && m_lines.last().isEmpty())
        m_lines.removeLast(); // What follows the last line feed.

    auto first = std::find_if(m_lines.begin(), m_lines.end(), isHeader);
    // Only comments may stand before the first group, which is the main one.
    const auto preambleEnd = std::remove_if(m_lines.begin(), first, std::not_fn(isBlankOrComment));
    first = m_lines.erase(preambleEnd, first);
    if (first == m_lines.end() || first->trimmed() != header)
        first = m_lines.insert(first, header);
    m_begin = first - m_lines.begin() + 1;
    m_end = std::find_if(first + 1, m_lines.end(), isHeader) - m_lines.begin();
}

bool DesktopEntry::isKey(qsizetype line, const QByteArray &key) const
{
    const auto &text = m_lines[line];
    const auto equals = text.indexOf('=');
    return equals > 0 && !text.startsWith('#') && text.first(equals).trimmed() == key;
}

/// The line of a key, -1 if there is none.
qsizetype DesktopEntry::find(const QByteArray &key) const
{
    for (auto line = m_begin; line < m_end; ++line) {
        if (isKey(line, key))
            return line;
    }
    return -1;
}

std::optional<QString> DesktopEntry::value(const QByteArray &key) const
{
    const auto line = find(key);
    if (line < 0)
        return std::nullopt;
    const auto &text = m_lines[line];
    return unescaped(QString::fromUtf8(text.mid(text.indexOf('=') + 1).trimmed()));
}

void DesktopEntry::setValue(const QByteArray &key, const QString &value)
{
    const QByteArray text = key + '=' + escaped(value).toUtf8();
    const auto line = find(key);
    remove(key); // With any further line of that key, which should not be.
    if (line >= 0) {
        m_lines.insert(line, text);
    } else {
        auto place = m_end;
        while (place > m_begin && m_lines[place - 1].trimmed().isEmpty())
            --place; // Before the blank lines that part the groups.
        m_lines.insert(place, text);
    }
    ++m_end;
}

void DesktopEntry::remove(const QByteArray &key)
{
    for (auto line = find(key); line >= 0; line = find(key)) {
        m_lines.removeAt(line);
        --m_end;
    }
}

QByteArray DesktopEntry::text() const
{
    return m_lines.join('\n') + '\n';
}

std::optional<QString> DesktopEntry::execOf(const QString &program)
{
    const auto isImpossible
        = [](QChar character) { return character.category() == QChar::Other_Control || character == u'='; };
    if (program.isEmpty() || std::any_of(program.begin(), program.end(), isImpossible))
        return std::nullopt;
    QString argument;
    for (const QChar character : program) {
        if (isEscapedInQuotes(character))
            argument += u'\\';
        argument += character;
        if (character == u'%')
            argument += u'%'; // A single one begins a field code.
    }
    const bool hasReserved = std::any_of(program.begin(), program.end(), isReserved);
    return hasReserved ? u'"' + argument + u'"' : argument;
}

QString DesktopEntry::programOf(const QString &exec)
{
    const auto line = exec.trimmed();
    const bool isQuoted = line.startsWith(u'"');
    QString argument;
    auto i = isQuoted ? 1 : 0;
    for (; i < line.size() && line[i] != (isQuoted ? u'"' : u' '); ++i) {
        const auto next = i + 1 < line.size() ? line[i + 1] : QChar();
        const bool isEscape = isQuoted && line[i] == u'\\' && isEscapedInQuotes(next);
        if (isEscape || (line[i] == u'%' && next == u'%'))
            ++i;
        argument += line[i];
    }
    const bool isOpen = isQuoted && i >= line.size();
    return isOpen ? QString() : argument;
}

} // namespace korvo
