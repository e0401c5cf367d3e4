#pragma once

#include "Platform/Freedesktop/StatusPicture.h"

#include <QString>
#include <QStringList>

namespace korvo {

/// The status item's picture as a file, for trays that take nothing else. Each picture gets a new name, since trays
/// remember what they have loaded; the one before it stays a while for a tray that is about to read it.
class StatusIconFile {
public:
    explicit StatusIconFile(QString folder); ///< An empty name: no files are written.
    ~StatusIconFile();
    StatusIconFile(const StatusIconFile &) = delete;
    StatusIconFile &operator=(const StatusIconFile &) = delete;

    /// The absolute path of a PNG with the picture, written at the first call for its key and backdrop; empty if
    /// that fails.
    QString pathFor(const StatusImage &image, Backdrop backdrop);

    /// The user's folder for files that live as long as the session; empty if there is none.
    static QString sessionFolder();

private:
    void removeLeftovers();

    QString m_folder;
    QString m_key;
    Backdrop m_backdrop = Backdrop::unknown; ///< That the newest picture is drawn for.
    QStringList m_paths;                     ///< The newest last, two at most.
    int m_count = 0;
};

} // namespace korvo
