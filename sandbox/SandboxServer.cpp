#include "sandbox/SandboxServer.h"

#include "sandbox/ApiRouter.h"
#include "sandbox/ControlRouter.h"
#include "sandbox/HttpConnection.h"
#include "sandbox/Listener.h"
#include "sandbox/TestCertificate.h"
#include "sandbox/Workspace.h"

#include <QFile>
#include <QJsonDocument>
#include <QPointer>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr qsizetype mostConnections = 256;
constexpr qsizetype mostRecorded = 20000; ///< Then the oldest records go.

QSslConfiguration tlsConfiguration(const TestCertificate &certificate)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(certificate.certificate));
    configuration.setPrivateKey(QSslKey(certificate.key, QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    configuration.setAllowedNextProtocols({"http/1.1"});
    return configuration;
}

} // namespace

class SandboxServer::Private {
public:
    explicit Private(SandboxServer &server) :
        q(server),
        workspace(std::make_unique<Workspace>()),
        router(std::make_unique<ApiRouter>(*workspace))
    {
    }

    bool prepareTls();
    void accept(QTcpSocket *socket);
    void receive(HttpConnection *connection, const Request &request);
    int record(const HttpConnection &connection, const Request &request);
    void noteStatus(int index, int status);
    void answer(HttpConnection *connection, const Request &request, int index);
    void carryOut(HttpConnection *connection, const Fault &fault, const Reply &reply, int index);

    SandboxServer &q;
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<ApiRouter> router;
    FaultPlan faults;
    QTemporaryDir folder;
    QString caFile;
    QString error;
    QList<RecordedRequest> requests;
    int nextIndex = 0;
    int connectionCount = 0;
    QList<HttpConnection *> connections;
    Listener listener; ///< Last, so that it goes first.
};

bool SandboxServer::Private::prepareTls()
{
    const TestCertificate certificate = makeTestCertificate();
    if (!certificate.isValid()) {
        error = u"OpenSSL made no certificate"_s;
        return false;
    }
    QFile file(folder.filePath(u"ca.pem"_s));
    if (!folder.isValid() || !file.open(QIODevice::WriteOnly)
        || file.write(certificate.authority) != certificate.authority.size()) {
        error = u"The authority's certificate could not be written: "_s + file.errorString();
        return false;
    }
    caFile = file.fileName();
    listener.setTls(tlsConfiguration(certificate));
    return true;
}

void SandboxServer::Private::accept(QTcpSocket *socket)
{
    auto *connection = new HttpConnection(socket, ++connectionCount, &q);
    connections.append(connection);
    connection->refusesToRead = [this] { return faults.takeCloseBeforeReading(); };
    connect(connection, &HttpConnection::requestRead, &q,
            [this, connection](const Request &request) { receive(connection, request); });
    connect(connection, &HttpConnection::closed, &q, [this, connection] {
        connections.removeAll(connection);
        connection->deleteLater();
    });
    if (connections.size() > mostConnections)
        connections.first()->drop();
}

void SandboxServer::Private::receive(HttpConnection *connection, const Request &request)
{
    workspace->followTheDay();
    if (isControlRequest(request)) {
        connection->send(handleControl(q, request));
        return;
    }
    const int index = record(*connection, request);
    const QPointer<HttpConnection> guard(connection);
    emit q.requestReceived(RecordedRequest(requests.last()));
    if (guard)
        answer(connection, request, index);
}

/// Gives the number of the record.
int SandboxServer::Private::record(const HttpConnection &connection, const Request &request)
{
    requests.append({.index = nextIndex++,
                     .connection = connection.number(),
                     .method = request.method,
                     .target = request.target,
                     .headers = request.headers,
                     .rawBody = request.body,
                     .body = QJsonDocument::fromJson(request.body).object()});
    if (requests.size() > mostRecorded)
        requests.removeFirst();
    return requests.last().index;
}

/// In the record, if it is still there.
void SandboxServer::Private::noteStatus(int index, int status)
{
    const auto record
        = std::find_if(requests.rbegin(), requests.rend(), [index](const auto &one) { return one.index == index; });
    if (record != requests.rend())
        record->status = status;
}

void SandboxServer::Private::answer(HttpConnection *connection, const Request &request, int index)
{
    const auto fault = faults.take(request.method, request.path());
    if (!fault) {
        const Reply reply = router->handle(request);
        noteStatus(index, reply.status);
        connection->send(reply);
        return;
    }
    const bool hasEffect = fault->kind == Fault::Kind::slow || fault->kind == Fault::Kind::loseAnswer
        || fault->kind == Fault::Kind::cutBody || fault->kind == Fault::Kind::cutHeaders;
    const Reply reply = hasEffect ? router->handle(request) : fault->reply;
    if (fault->delay.count() <= 0) {
        carryOut(connection, *fault, reply, index);
        return;
    }
    QTimer::singleShot(fault->delay, connection,
                       [this, connection, fault = *fault, reply, index] { carryOut(connection, fault, reply, index); });
}

void SandboxServer::Private::carryOut(HttpConnection *connection, const Fault &fault, const Reply &reply, int index)
{
    if (fault.kind == Fault::Kind::answer || fault.kind == Fault::Kind::slow)
        noteStatus(index, reply.status);
    switch (fault.kind) {
    case Fault::Kind::answer:
        if (fault.streamedBytes > 0)
            connection->stream(reply, fault.streamedBytes);
        else
            connection->send(reply);
        break;
    case Fault::Kind::slow:
        connection->send(reply);
        break;
    case Fault::Kind::cutBody:
        connection->send(reply, HttpConnection::Extent::halfBody);
        break;
    case Fault::Kind::cutHeaders:
        connection->send(reply, HttpConnection::Extent::halfHeaders);
        break;
    case Fault::Kind::loseAnswer:
    case Fault::Kind::closeWithoutAnswer:
    case Fault::Kind::closeBeforeReading:
        connection->drop();
        break;
    case Fault::Kind::neverAnswer:
        break;
    }
}

SandboxServer::SandboxServer(QObject *parent) : QObject(parent), d(std::make_unique<Private>(*this))
{
    d->listener.onConnection = [this](QTcpSocket *socket) { d->accept(socket); };
}

SandboxServer::~SandboxServer()
{
    d->listener.close();
    for (HttpConnection *connection : std::exchange(d->connections, {})) {
        disconnect(connection, nullptr, this, nullptr);
        delete connection;
    }
}

bool SandboxServer::listen(quint16 port, bool tls)
{
    d->error.clear();
    d->caFile.clear();
    d->listener.setTls(std::nullopt);
    if (tls && !d->prepareTls())
        return false;
    if (!d->listener.listen(QHostAddress::LocalHost, port)) {
        d->error = d->listener.errorString();
        return false;
    }
    return true;
}

QString SandboxServer::errorString() const
{
    return d->error;
}

quint16 SandboxServer::port() const
{
    return d->listener.serverPort();
}

bool SandboxServer::isTls() const
{
    return !d->caFile.isEmpty();
}

QString SandboxServer::caFile() const
{
    return d->caFile;
}

Workspace &SandboxServer::workspace()
{
    return *d->workspace;
}

FaultPlan &SandboxServer::faults()
{
    return d->faults;
}

QString SandboxServer::apiKey() const
{
    return d->router->apiKey();
}

void SandboxServer::setApiKey(const QString &key)
{
    d->router->setApiKey(key);
}

void SandboxServer::setClock(std::function<QDateTime()> clock)
{
    // In place, so that references to it stay good.
    *d->workspace = Workspace(std::move(clock));
}

QList<RecordedRequest> SandboxServer::requests() const
{
    return d->requests;
}

void SandboxServer::clearRequests()
{
    d->requests.clear();
}

int SandboxServer::connectionCount() const
{
    return d->connectionCount;
}

int SandboxServer::openConnectionCount() const
{
    return static_cast<int>(d->connections.size());
}

void SandboxServer::dropConnections()
{
    const QList<HttpConnection *> connections = d->connections;
    for (HttpConnection *connection : connections)
        connection->drop();
}

} // namespace korvo::sandbox
