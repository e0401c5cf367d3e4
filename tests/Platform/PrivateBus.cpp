#include "PrivateBus.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace korvo {

bool PrivateBus::start()
{
    QFile config(m_folder.filePath(u"bus.conf"_s));
    if (!config.open(QIODevice::WriteOnly))
        return false;
    config.write("<busconfig><type>session</type><listen>unix:path=" + QFile::encodeName(m_folder.filePath(u"bus"_s))
                 + "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
                   "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
    config.close();
    m_daemon.start(u"dbus-daemon"_s, {u"--nofork"_s, u"--print-address"_s, u"--config-file"_s, config.fileName()});
    if (!m_daemon.waitForReadyRead())
        return false;
    return true; // It tells its address once it listens there.
}

bool PrivateBus::kill()
{
    m_daemon.kill();
    return m_daemon.waitForFinished();
}

QString PrivateBus::address() const
{
    return u"unix:path="_s + m_folder.filePath(u"bus"_s);
}

} // namespace korvo
