#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace korvo {

/// The main group of a desktop entry. Every line that isn't changed stays as it was written, comments, translations and
/// other groups included. Source: Desktop Entry Specification 1.5.
class DesktopEntry {
public:
    explicit DesktopEntry(const QByteArray &text = {});

    /// The value of a key, its escapes resolved; none if the key isn't there.
    std::optional<QString> value(const QByteArray &key) const;

    /// Writes a key in place of its former value, with what has to be escaped.
    void setValue(const QByteArray &key, const QString &value);

    void remove(const QByteArray &key);

    QByteArray text() const;

    /// The value of "Exec" that starts a program without arguments. None if no entry could name such a path: one with
    /// a control character or an equals sign.
    static std::optional<QString> execOf(const QString &program);

    /// The program that a value of "Exec" starts; empty if it is malformed.
    static QString programOf(const QString &exec);

private:
    bool isKey(qsizetype line, const QByteArray &key) const;
    qsizetype find(const QByteArray &key) const;

    QList<QByteArray> m_lines;
    qsizetype m_begin = 0; ///< The first line after the header of the main group.
    qsizetype m_end = 0;   ///< The first line behind the main group.
};

} // namespace korvo
