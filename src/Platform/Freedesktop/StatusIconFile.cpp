#include "Platform/Freedesktop/StatusIconFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr int side = 22; // The one tray that reads files shows them unscaled, at the usual size of its bar.

} // namespace

StatusIconFile::StatusIconFile(QString folder) : m_folder(std::move(folder)) { }

StatusIconFile::~StatusIconFile()
{
    for (const QString &path : std::as_const(m_paths))
        QFile::remove(path);
}

QString StatusIconFile::pathFor(const StatusImage &image, Backdrop backdrop)
{
    if (!m_paths.isEmpty() && m_key == image.key && m_backdrop == backdrop)
        return m_paths.last();
    if (m_folder.isEmpty() || !image.draw)
        return {};
    if (m_count == 0)
        removeLeftovers();

    const QString path
        = u"%1/korvo-status-%2-%3.png"_s.arg(m_folder).arg(QCoreApplication::applicationPid()).arg(++m_count);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !renderStatusImage(image, side, backdrop).save(&file, "PNG")
        || !file.commit())
        return {};
    m_key = image.key;
    m_backdrop = backdrop;
    m_paths.append(path);
    if (m_paths.size() > 2)
        QFile::remove(m_paths.takeFirst());
    return path;
}

QString StatusIconFile::sessionFolder()
{
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return QDir::isAbsolutePath(folder) && QDir(folder).exists() ? folder : QString();
}

/// A run that was killed leaves its last pictures behind.
void StatusIconFile::removeLeftovers()
{
    QDir folder(m_folder);
    for (const QString &name : folder.entryList({u"korvo-status-*-*.png"_s}, QDir::Files)) {
        if (!QDir(u"/proc/"_s + name.section(u'-', 2, 2)).exists())
            folder.remove(name);
    }
}

} // namespace korvo
