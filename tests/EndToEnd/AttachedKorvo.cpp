#include "EndToEnd/AttachedKorvo.h"

#include "EndToEnd/TrayLookUp.h"
#include "Platform/Linux/LinuxClock.h"
#include "Utilities/Spawn.h"

#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTest>

#include <optional>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

/// Sends a request and keeps what came back.
QCoro::Task<> sendTo(HttpTransport &transport, HttpRequest request, std::shared_ptr<std::optional<HttpResponse>> answer)
{
    const auto result = co_await transport.send(std::move(request), std::stop_token());
    *answer = result ? *result : HttpResponse();
}

} // namespace

AttachedKorvo::~AttachedKorvo()
{
    for (auto *process : {m_korvo.get(), m_sandbox.get()}) {
        if (process) {
            process->kill();
            process->waitForFinished();
        }
    }
}

bool AttachedKorvo::startWorkspace()
{
    m_sandbox = std::make_unique<QProcess>();
    m_sandbox->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_sandbox->start(qEnvironmentVariable("KORVO_SANDBOX"), QStringList());
    if (!readWorkspace(*m_sandbox))
        return false;
    describeWorkspace(m_workspace);
    return true;
}

bool AttachedKorvo::readWorkspace(QProcess &process)
{
    if (!QTest::qWaitFor([&process] { return process.canReadLine(); }, patience))
        return false;
    m_workspace = QJsonDocument::fromJson(process.readLine()).object();
    m_transport.redirectHost(u"localhost"_s, u"127.0.0.1"_s, quint16(m_workspace["port"_L1].toInt()),
                             m_workspace["caFile"_L1].toString());
    return !m_workspace.isEmpty();
}

void AttachedKorvo::describeWorkspace(const QJsonObject &workspace)
{
    QFile file(m_folder.filePath(u"workspace.json"_s));
    if (file.open(QIODevice::WriteOnly))
        file.write(QJsonDocument(workspace).toJson());
}

QProcessEnvironment AttachedKorvo::environment() const
{
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_STATE_HOME"_s, m_folder.path());
    environment.insert(u"XDG_CONFIG_HOME"_s, m_folder.path());
    return environment;
}

bool AttachedKorvo::startKorvo(double pollSeconds)
{
    m_korvo = std::make_unique<QProcess>();
    m_korvo->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_korvo->setProcessEnvironment(environment());
    m_korvo->start(qEnvironmentVariable("KORVO_ATTACH"),
                   QStringList{m_folder.filePath(u"workspace.json"_s), u"--poll"_s, QString::number(pollSeconds)}
                       + arguments);
    return QTest::qWaitFor([this] { return isInTray(); }, patience)
        && !(m_item = findTrayItem(m_korvo->processId())).isEmpty();
}

bool AttachedKorvo::startDemo(const QString &busAddress)
{
    m_korvo = std::make_unique<QProcess>();
    m_korvo->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    auto itsEnvironment = environment();
    itsEnvironment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, busAddress);
    m_korvo->setProcessEnvironment(itsEnvironment);
    m_korvo->start(qEnvironmentVariable("KORVO_DEMO"), {u"--poll"_s, u"1"_s});
    return readWorkspace(*m_korvo)
        && QTest::qWaitFor([this] { return log().contains(u"[INFO] App launch complete"_s); }, patience);
}

void AttachedKorvo::tell(const QString &line)
{
    m_korvo->write(line.toUtf8() + '\n');
}

QJsonDocument AttachedKorvo::control(const QByteArray &method, const QString &path, const QJsonObject &body)
{
    HttpRequest request;
    request.method = method;
    request.url = QUrl(u"https://localhost:%1/sandbox/%2"_s.arg(m_workspace["port"_L1].toInt()).arg(path));
    if (!body.isEmpty())
        request.body = QJsonDocument(body).toJson();
    const auto answer = std::make_shared<std::optional<HttpResponse>>();
    spawn(sendTo(m_transport, request, answer));
    if (!QTest::qWaitFor([&] { return answer->has_value(); }, patience))
        return {};
    return QJsonDocument::fromJson((*answer)->body);
}

QString AttachedKorvo::runningTask()
{
    const auto pagesOf = [this](QLatin1StringView database) {
        return control("GET", u"pages?database="_s + m_workspace[database].toString())["pages"_L1].toArray();
    };
    QMap<QString, QString> names;
    for (const auto &task : pagesOf("tasksDBId"_L1))
        names.insert(task["id"_L1].toString(),
                     task["properties"_L1]["Name"_L1]["title"_L1][0]["plain_text"_L1].toString());
    QStringList running;
    for (const auto &entry : pagesOf("timeTrackerDBId"_L1)) {
        const auto properties = entry["properties"_L1];
        if (properties["Status"_L1]["select"_L1]["name"_L1] == "Running"_L1)
            running.append(names.value(properties["Task"_L1]["relation"_L1][0]["id"_L1].toString()));
    }
    return running.join(u'|');
}

bool AttachedKorvo::isInTray() const
{
    return m_korvo && !findTrayItem(m_korvo->processId()).isEmpty();
}

QString AttachedKorvo::property(const QString &name) const
{
    return trayItemProperty(m_item, name);
}

int AttachedKorvo::seconds() const
{
    static const QRegularExpression clock(u"^ ?(\\d+):(\\d\\d):(\\d\\d)$"_s);
    const auto match = clock.match(property(u"XAyatanaLabel"_s));
    if (!match.hasMatch())
        return -1;
    return match.captured(1).toInt() * 3600 + match.captured(2).toInt() * 60 + match.captured(3).toInt();
}

QString AttachedKorvo::log() const
{
    QFile file(m_folder.filePath(u"Korvo/korvo.log"_s));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

int runWithSystemClock(QObject &test, int argc, char **argv)
{
    LinuxClock clock;
    Clock::setShared(&clock);
    const int status = QTest::qExec(&test, argc, argv);
    Clock::setShared(nullptr);
    return status;
}

} // namespace korvo
