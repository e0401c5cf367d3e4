#pragma once

#include "sandbox/Fault.h"
#include "sandbox/HttpMessage.h"

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace korvo::sandbox {

class Workspace;

/// A request as the server met it, whether or not a fault came over it.
struct RecordedRequest {
    int index = 0;      ///< Counts the requests from 0.
    int connection = 0; ///< The number of its connection, from 1.
    QByteArray method;
    QByteArray target; ///< Path and query as sent.
    Headers headers;
    QByteArray rawBody;
    QJsonObject body; ///< Empty if the body is no JSON object.
    int status = 0;   ///< Of the answer; 0 as long as none has been sent whole.

    QByteArray header(const QByteArray &name) const { return headerValue(headers, name); }
};

/// An HTTP or HTTPS server on the loopback interface that speaks the Notion REST API, version 2022-06-28, about a sample
/// workspace. It runs on the event loop of its thread and never blocks, so the client may live in the same process.
/// Requests below /sandbox/ control it (see ControlRouter); all others are the API's.
class SandboxServer : public QObject {
    Q_OBJECT
public:
    explicit SandboxServer(QObject *parent = nullptr);
    ~SandboxServer() override;

    /// Begins to listen on 127.0.0.1, on any free port for 0. With `tls` an authority and a certificate for
    /// "api.notion.com" and "localhost" are made first. False with errorString() if that fails.
    bool listen(quint16 port = 0, bool tls = true);
    QString errorString() const;
    quint16 port() const;
    bool isTls() const;
    /// The file with the authority's certificate, in a temporary folder that goes with the server; empty without TLS.
    QString caFile() const;

    Workspace &workspace();
    FaultPlan &faults();

    QString apiKey() const;
    void setApiKey(const QString &key); ///< "ntn_sandbox" at first.
    /// Lets another clock tell the time, and lays out the sample content anew around it: earlier edits are gone.
    void setClock(std::function<QDateTime()> clock);

    QList<RecordedRequest> requests() const;
    void clearRequests();
    int connectionCount() const; ///< Accepted since listen().
    int openConnectionCount() const;
    /// Closes all connections at once, as a network that goes away does.
    void dropConnections();

signals:
    /// A request was read; its answer is not out yet.
    void requestReceived(const korvo::sandbox::RecordedRequest &request);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace korvo::sandbox
