#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace korvo {

/// A text file of records, one a line, that is opened and closed for each of them, so that what was logged before a
/// crash is in it. It drops the older half of its lines when it grows past `maxSize`. Nothing here fails outwards: what
/// cannot be written is lost.
class LogFile {
public:
    static constexpr qint64 maxSize = 1048576; ///< Bytes. A file of just this size is not cut.

    /// A log file at `path`. Its folder is made here and only here, for the user alone.
    explicit LogFile(const QString &path);

    /// Adds "[2024-05-01 09:30:12.345] [level] message" and a line feed, in UTF-8, the time in the local time zone and
    /// always in European digits. Opening and writing never block on anything but the disk.
    void append(const QString &level, const QString &message, const QDateTime &time = QDateTime::currentDateTime());

    /// Korvo/korvo.log in the user's folder for state: $XDG_STATE_HOME if that is an absolute path, else
    /// ~/.local/state. Source: XDG Base Directory Specification 0.8.
    static QString standardPath();

private:
    void rotate();

    const QByteArray m_path;
};

} // namespace korvo
