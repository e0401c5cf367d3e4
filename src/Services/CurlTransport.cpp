#include "Services/CurlTransport.h"

#include "Services/CurlSockets.h"
#include "Services/CurlTransfer.h"
#include "Utilities/Completion.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>

#include <curl/curl.h>

#include <unordered_map>
#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

using HttpResult = Result<HttpResponse, HttpError>;

HttpError cancelled()
{
    return HttpError{u"The operation was cancelled"_s, true};
}

/// Whether OpenSSL can look authorities up in the folder one by one. That spares reading all of them from one file at
/// the first connection, some 40 ms of CPU time.
bool isHashed(const QString &certificateFolder)
{
    return QDirIterator(certificateFolder, {u"????????.[0-9]"_s}, QDir::Files).hasNext();
}

} // namespace

/// The transfers under way, and the connections, which outlive them. libcurl names the sockets and the time it waits
/// for; the main loop waits, and calls it when one is due.
class CurlTransport::Session final : public QObject {
public:
    Session()
    {
        static const auto globalInit = curl_global_init(CURL_GLOBAL_DEFAULT);
        Q_UNUSED(globalInit)
        m_multi = curl_multi_init();
        curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &Session::socketChanged);
        curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
        curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &Session::timerChanged);
        curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
        curl_multi_setopt(m_multi, CURLMOPT_MAXCONNECTS, 4L);
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
    }

    ~Session() override
    {
        for (auto &[id, running] : m_running) {
            running.done.complete(cancelled());
            curl_multi_remove_handle(m_multi, running.transfer->handle());
        }
        m_running.clear();
        curl_multi_cleanup(m_multi);
    }
    Q_DISABLE_COPY_MOVE(Session)

    /// Begins a transfer, whose result goes to `done`; gives its number.
    quint64 start(std::unique_ptr<CurlTransfer> transfer, const Completion<HttpResult> &done)
    {
        const auto id = ++m_lastId;
        CURL *const handle = transfer->handle();
        m_sockets.observe(handle);
        const auto isInUse = [this](curl_socket_t socket) { return m_notifiers.contains(socket); };
        m_sockets.retireDeparted(isInUse);
        m_sockets.retireSlept(isInUse);
        m_running.emplace(id, Running{std::move(transfer), done});
        if (curl_multi_add_handle(m_multi, handle) != CURLM_OK)
            finish(id, CURLE_FAILED_INIT);
        return id;
    }

    /// Drops a transfer if it is still under way.
    void cancel(quint64 id)
    {
        if (m_running.contains(id))
            finish(id, CURLE_ABORTED_BY_CALLBACK);
    }

private:
    struct Running {
        std::unique_ptr<CurlTransfer> transfer;
        Completion<HttpResult> done;
    };
    struct Notifiers {
        QSocketNotifier *read = nullptr;
        QSocketNotifier *write = nullptr;
    };

    static int socketChanged(CURL *, curl_socket_t socket, int what, void *self, void *)
    {
        static_cast<Session *>(self)->watch(socket, what == CURL_POLL_IN || what == CURL_POLL_INOUT,
                                            what == CURL_POLL_OUT || what == CURL_POLL_INOUT, what == CURL_POLL_REMOVE);
        return 0;
    }

    static int timerChanged(CURLM *, long milliseconds, void *self)
    {
        auto &timer = static_cast<Session *>(self)->m_timer;
        if (milliseconds < 0)
            timer.stop();
        else
            timer.start(std::chrono::milliseconds(milliseconds)); // 0 is the next turn: never from within libcurl.
        return 0;
    }

    void watch(curl_socket_t socket, bool isReading, bool isWriting, bool isGone)
    {
        auto &notifiers = m_notifiers[socket];
        follow(notifiers.read, socket, QSocketNotifier::Read, CURL_CSELECT_IN, isReading);
        follow(notifiers.write, socket, QSocketNotifier::Write, CURL_CSELECT_OUT, isWriting);
        if (!isGone)
            return;
        // One of them may be the sender of the very signal that brought us here.
        for (auto *const notifier : {notifiers.read, notifiers.write}) {
            if (notifier)
                notifier->deleteLater();
        }
        m_notifiers.erase(socket);
    }

    void follow(QSocketNotifier *&notifier, curl_socket_t socket, QSocketNotifier::Type type, int event, bool isWanted)
    {
        if (!notifier && isWanted) {
            notifier = new QSocketNotifier(socket, type, this);
            connect(notifier, &QSocketNotifier::activated, this, [this, socket, event] { act(socket, event); });
        }
        if (notifier)
            notifier->setEnabled(isWanted);
    }

    void act(curl_socket_t socket, int events)
    {
        int running = 0;
        curl_multi_socket_action(m_multi, socket, events, &running);
        int left = 0;
        while (const CURLMsg *const message = curl_multi_info_read(m_multi, &left)) {
            if (message->msg != CURLMSG_DONE)
                continue;
            const auto code = message->data.result;
            CURL *const handle = message->easy_handle; // The message goes with the handle's removal.
            for (const auto &[id, one] : m_running) {
                if (one.transfer->handle() == handle) {
                    finish(id, code);
                    break;
                }
            }
        }
    }

    /// Takes a transfer out and hands over its result. Never called from within libcurl.
    void finish(quint64 id, CURLcode code)
    {
        auto node = m_running.extract(id);
        auto &[transfer, done] = node.mapped();
        curl_multi_remove_handle(m_multi, transfer->handle());
        done.complete(transfer->takeResult(code));
    }

    CurlSockets m_sockets;
    CURLM *m_multi = nullptr;
    QTimer m_timer;
    std::unordered_map<curl_socket_t, Notifiers> m_notifiers;
    std::unordered_map<quint64, Running> m_running;
    quint64 m_lastId = 0;
};

CurlTransport::CurlTransport(const QString &certificateFolder) : m_certificateFolder(certificateFolder) { }
CurlTransport::~CurlTransport() = default;

QCoro::Task<HttpResult> CurlTransport::send(HttpRequest request, std::stop_token stop)
{
    if (stop.stop_requested())
        co_return cancelled();

    if (!m_session) {
        m_session = std::make_unique<Session>();
        if (isHashed(m_certificateFolder))
            m_hashedFolder = QFile::encodeName(m_certificateFolder);
    }
    const auto route = m_routes.constFind(request.url.host());
    auto transfer = std::make_unique<CurlTransfer>(std::move(request));
    if (const auto refusal = transfer->refusal())
        co_return *refusal;
    if (!m_hashedFolder.isEmpty())
        transfer->trustFolder(m_hashedFolder);
    if (route != m_routes.constEnd())
        transfer->connectTo(route->connectTo, route->caFile);

    const Completion<HttpResult> done;
    const QPointer session(m_session.get());
    const auto id = session->start(std::move(transfer), done);
    const std::stop_callback onStop(stop, [done, session, id] {
        done.complete(cancelled());
        if (session)
            QMetaObject::invokeMethod(
                session, [session, id] { session->cancel(id); }, Qt::QueuedConnection);
    });
    co_return co_await done;
}

void CurlTransport::redirectHost(const QString &host, const QString &address, quint16 port, const QString &caFile)
{
    // Host and port of the request, both; an empty port stands for any.
    const auto entry = host + "::"_L1 + address + u':' + QString::number(port);
    m_routes.insert(host.toLower(), {entry.toUtf8(), caFile.toLocal8Bit()});
}

CurlTransport &CurlTransport::shared()
{
    static CurlTransport transport;
    static const auto isWatched = [] {
        qAddPostRoutine([] { transport.m_session.reset(); }); // Socket notifiers need the application.
        return true;
    }();
    Q_UNUSED(isWatched)
    return transport;
}

} // namespace korvo
