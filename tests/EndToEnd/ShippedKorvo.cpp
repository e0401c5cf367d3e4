#include "EndToEnd/ShippedKorvo.h"

#include "EndToEnd/TrayLookUp.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace korvo {

ShippedKorvo::ShippedKorvo() : m_environment(QProcessEnvironment::systemEnvironment())
{
    setVariable(u"HOME"_s, m_home.path());
    for (const auto &name : {u"XDG_CONFIG_HOME"_s, u"XDG_DATA_HOME"_s, u"XDG_STATE_HOME"_s, u"XDG_CACHE_HOME"_s})
        m_environment.remove(name);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

bool ShippedKorvo::writeSettings(const QByteArray &json)
{
    const QDir folder(m_home.filePath(u".config/Korvo"_s));
    QFile file(folder.filePath(u"defaults.json"_s));
    return folder.mkpath(u"."_s) && file.open(QIODevice::WriteOnly) && file.write(json) == json.size();
}

bool ShippedKorvo::start()
{
    m_process.setProcessEnvironment(m_environment);
    m_process.start(qEnvironmentVariable("KORVO"), QStringList());
    return m_process.waitForStarted()
        && QTest::qWaitFor([this] { return !(m_item = findTrayItem(m_process.processId())).isEmpty(); }, patience)
        && (m_state.isEmpty()
            || QTest::qWaitFor([this] { return log().contains(u"[INFO] App launch complete"_s); }, patience));
}

bool ShippedKorvo::end()
{
    const auto pid = m_process.processId();
    m_process.kill();
    m_process.waitForFinished();
    return pid == 0 || QTest::qWaitFor([pid] { return findTrayItem(pid).isEmpty(); }, patience);
}

QStringList ShippedKorvo::log() const
{
    QFile file(m_state + u"/Korvo/korvo.log"_s);
    if (m_state.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    QStringList messages;
    for (const auto &line : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts))
        messages.append(u"["_s + line.section(u" ["_s, 1));
    return messages;
}

} // namespace korvo
