#include "Platform/Linux/AutostartLoginItem.h"

#include "Platform/Linux/DesktopEntry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStringList>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maximumSize = qint64{1024} * 1024; // What is larger is no entry.
const auto gnomeSwitch = "X-GNOME-Autostart-enabled"_ba;
const auto mateSwitch = "X-MATE-Autostart-enabled"_ba;
const auto onlyShowIn = "OnlyShowIn"_ba;
const auto notShowIn = "NotShowIn"_ba;

QString failure(const QString &path, const QString &reason)
{
    return u"%1: %2"_s.arg(path, reason);
}

/// Whether something stands there, be it a link that leads nowhere.
bool isTaken(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

/// A program's file as the session would find it: by its path, or by its name in the folders of `PATH`.
QString executableOf(const QString &program)
{
    return program.isEmpty() ? QString() : QFileInfo(QStandardPaths::findExecutable(program)).canonicalFilePath();
}

bool isTrue(const DesktopEntry &entry, const QByteArray &key)
{
    return entry.value(key) == "true"_L1 || entry.value(key) == "1"_L1; // The digit is of older entries.
}

bool isFalse(const DesktopEntry &entry, const QByteArray &key)
{
    return entry.value(key) == "false"_L1 || entry.value(key) == "0"_L1;
}

/// The desktops that a key of the entry names.
QStringList desktopsOf(const DesktopEntry &entry, const QByteArray &key)
{
    return entry.value(key).value_or(QString()).split(u';', Qt::SkipEmptyParts);
}

/// Whether the present desktop is left out by the entry. The desktop has several names, the most fitting first, and the
/// first that the entry names at all decides; the names are compared as they are written.
bool isExcluded(const DesktopEntry &entry)
{
    const auto only = desktopsOf(entry, onlyShowIn);
    const auto never = desktopsOf(entry, notShowIn);
    const auto present = QString::fromLocal8Bit(qgetenv("XDG_CURRENT_DESKTOP")).split(u':', Qt::SkipEmptyParts);
    for (const auto &name : present) {
        if (only.contains(name))
            return false;
        if (never.contains(name))
            return true;
    }
    return entry.value(onlyShowIn).has_value();
}

/// Drops the key that leaves the present desktop out; what is said of other desktops stays as long as it can.
void includePresentDesktop(DesktopEntry &entry)
{
    if (isExcluded(entry))
        entry.remove(notShowIn);
    if (isExcluded(entry))
        entry.remove(onlyShowIn);
}

} // namespace

AutostartLoginItem::AutostartLoginItem(const QString &configFolder, const QString &program) :
    m_path(configFolder + "/autostart/com.korvo.app.desktop"_L1),
    m_program(program)
{
}

QString AutostartLoginItem::defaultConfigFolder()
{
    const QString folder = QFile::decodeName(qgetenv("XDG_CONFIG_HOME"));
    const bool isAbsolute = folder.startsWith(u'/'); // Others are invalid, and to be ignored.
    return isAbsolute ? folder : QDir::homePath() + "/.config"_L1;
}

QString AutostartLoginItem::program() const
{
    return m_program.isEmpty() ? QCoreApplication::applicationFilePath() : m_program;
}

std::optional<QString> AutostartLoginItem::registerItem()
{
    const auto exec = DesktopEntry::execOf(program());
    if (!exec)
        return failure(program(), u"An autostart entry cannot name a program of this path"_s);

    QByteArray former;
    const QFileInfo info(m_path); // Of what a link leads to.
    if (info.exists()) {
        QFile file(m_path);
        if (!info.isFile() || info.size() > maximumSize)
            return failure(m_path, u"There is something that is no autostart entry"_s);
        if (!file.open(QIODevice::ReadOnly))
            return failure(m_path, file.errorString());
        former = file.readAll();
        if (file.error() != QFile::NoError)
            return failure(m_path, file.errorString());
    } else if (!QDir().mkpath(info.path())) {
        return failure(info.path(), u"The folder cannot be made"_s);
    }

    DesktopEntry entry(former);
    entry.setValue("Type"_ba, u"Application"_s);
    entry.setValue("Name"_ba, u"Korvo"_s);
    entry.setValue("Exec"_ba, *exec);
    entry.setValue("TryExec"_ba, program()); // Once the program is removed, the entry is ignored.
    entry.setValue("Icon"_ba, u"com.korvo.app"_s);
    entry.setValue(gnomeSwitch, u"true"_s);
    entry.remove("Hidden"_ba);
    if (entry.value(mateSwitch))
        entry.setValue(mateSwitch, u"true"_s);
    includePresentDesktop(entry);

    const auto text = entry.text();
    QSaveFile file(m_path); // Follows a link, and replaces the file in one step.
    const bool isWritten = file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush();
    if (!isWritten || !file.commit())
        return failure(m_path, file.errorString());
    return std::nullopt;
}

std::optional<QString> AutostartLoginItem::unregisterItem()
{
    QFile file(m_path); // A link itself, not what it leads to.
    if (isTaken(m_path) && !file.remove())
        return failure(m_path, file.errorString());
    return std::nullopt;
}

LoginItem::Status AutostartLoginItem::status() const
{
    if (!isTaken(m_path))
        return Status::notRegistered;
    const QFileInfo info(m_path);
    QFile file(m_path);
    if (!info.isFile() || info.size() > maximumSize || !file.open(QIODevice::ReadOnly))
        return Status::notFound;

    const DesktopEntry entry(file.readAll());
    if (isTrue(entry, "Hidden"_ba) || isFalse(entry, gnomeSwitch) || isFalse(entry, mateSwitch) || isExcluded(entry))
        return Status::disabled;
    const auto executable = executableOf(DesktopEntry::programOf(entry.value("Exec"_ba).value_or(QString())));
    const auto tryExec = entry.value("TryExec"_ba);
    if (entry.value("Type"_ba) != "Application"_L1 || executable.isEmpty() || executable != executableOf(program())
        || (tryExec && executableOf(*tryExec).isEmpty()))
        return Status::notFound;
    return Status::enabled;
}

} // namespace korvo
