#include "Fakes/FakeSessionManager.h"

#include <QSocketNotifier>

#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include <X11/ICE/ICElib.h>
#include <X11/ICE/ICEutil.h>
#include <X11/SM/SMlib.h>

namespace korvo {

struct FakeSessionManager::Connections {
    static int isTrusted(char *) { return True; }

    static int greet(SmsConn connection, SmPointer data, unsigned long *mask, SmsCallbacks *calls, char **)
    {
        static_cast<FakeSessionManager *>(data)->m_connections->program = connection;
        *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask
            | SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask | SmsSaveYourselfDoneProcMask
            | SmsCloseConnectionProcMask | SmsSetPropertiesProcMask | SmsDeletePropertiesProcMask
            | SmsGetPropertiesProcMask;
        calls->register_client.callback = registerProgram;
        calls->interact_request.callback = [](SmsConn, SmPointer, int) {};
        calls->interact_done.callback = [](SmsConn, SmPointer, int) {};
        calls->save_yourself_request.callback = [](SmsConn, SmPointer, int, int, int, int, int) {};
        calls->save_yourself_phase2_request.callback = [](SmsConn client, SmPointer) { SmsSaveYourselfPhase2(client); };
        calls->save_yourself_done.callback
            = [](SmsConn, SmPointer self, int) { ++static_cast<FakeSessionManager *>(self)->savedCount; };
        calls->close_connection.callback = close;
        calls->set_properties.callback = keepProperties;
        calls->delete_properties.callback = [](SmsConn, SmPointer, int count, char **names) {
            for (int i = 0; i < count; ++i)
                std::free(names[i]);
            std::free(names);
        };
        calls->get_properties.callback = [](SmsConn client, SmPointer) { SmsReturnProperties(client, 0, nullptr); };
        for (auto *place : {&calls->register_client.manager_data, &calls->interact_request.manager_data,
                            &calls->interact_done.manager_data, &calls->save_yourself_request.manager_data,
                            &calls->save_yourself_phase2_request.manager_data, &calls->save_yourself_done.manager_data,
                            &calls->close_connection.manager_data, &calls->set_properties.manager_data,
                            &calls->delete_properties.manager_data, &calls->get_properties.manager_data})
            *place = data;
        return True;
    }

    static int registerProgram(SmsConn client, SmPointer self, char *formerId)
    {
        if (formerId) { // Of a session that is not this one.
            std::free(formerId);
            return False;
        }
        char *id = SmsGenerateClientID(client);
        SmsRegisterClientReply(client, id);
        std::free(id);
        static_cast<FakeSessionManager *>(self)->isRegistered = true;
        return True;
    }

    static void close(SmsConn client, SmPointer self, int count, char **reasons)
    {
        SmFreeReasons(count, reasons);
        auto &all = *static_cast<FakeSessionManager *>(self)->m_connections;
        all.program = nullptr;
        all.notifiers.clear();
        IceConn connection = SmsGetIceConnection(client);
        SmsCleanUp(client);
        IceSetShutdownNegotiation(connection, False);
        IceCloseConnection(connection);
    }

    static void keepProperties(SmsConn, SmPointer self, int count, SmProp **properties)
    {
        for (int i = 0; i < count; ++i) {
            const auto *property = properties[i];
            if (std::strcmp(property->name, SmRestartStyleHint) == 0 && property->num_vals == 1)
                static_cast<FakeSessionManager *>(self)->restartStyle
                    = *static_cast<const unsigned char *>(property->vals[0].value);
            SmFreeProperty(properties[i]);
        }
        std::free(properties);
    }

    void accept(IceListenObj listener)
    {
        IceAcceptStatus status = IceAcceptFailure;
        IceConn connection = IceAcceptConnection(listener, &status);
        if (!connection || status != IceAcceptSuccess)
            return;
        auto notifier = std::make_unique<QSocketNotifier>(IceConnectionNumber(connection), QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this, connection] {
            if (IceProcessMessages(connection, nullptr, nullptr) == IceProcessMessagesIOError) {
                for (const auto &one : notifiers)
                    one->setEnabled(false); // It has gone without a word.
                program = nullptr;
            }
        });
        notifiers.push_back(std::move(notifier));
    }

    int count = 0;
    IceListenObj *listeners = nullptr;
    SmsConn program = nullptr;
    std::vector<std::unique_ptr<QSocketNotifier>> waiting;
    std::vector<std::unique_ptr<QSocketNotifier>> notifiers;
};

FakeSessionManager::FakeSessionManager() : m_connections(std::make_unique<Connections>())
{
    constexpr int room = 256;
    char error[room] = {};
    IceSetIOErrorHandler([](IceConn) {}); // Its own ends the process.
    auto &all = *m_connections;
    if (!SmsInitialize("Korvo", "1", Connections::greet, this, Connections::isTrusted, room, error)
        || !IceListenForConnections(&all.count, &all.listeners, room, error))
        return;
    for (int i = 0; i < all.count; ++i) {
        IceListenObj listener = all.listeners[i];
        IceSetHostBasedAuthProc(listener, Connections::isTrusted);
        auto notifier
            = std::make_unique<QSocketNotifier>(IceGetListenConnectionNumber(listener), QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                         [&all, listener] { all.accept(listener); });
        all.waiting.push_back(std::move(notifier));
    }
}

FakeSessionManager::~FakeSessionManager()
{
    m_connections->waiting.clear();
    m_connections->notifiers.clear();
    if (m_connections->listeners)
        IceFreeListenObjs(m_connections->count, m_connections->listeners);
}

QString FakeSessionManager::address() const
{
    if (!m_connections->listeners)
        return {};
    char *list = IceComposeNetworkIdList(m_connections->count, m_connections->listeners);
    const auto address = QString::fromLocal8Bit(list);
    std::free(list);
    return address;
}

void FakeSessionManager::saveYourself()
{
    if (m_connections->program)
        SmsSaveYourself(m_connections->program, SmSaveBoth, True, SmInteractStyleNone, False);
}

void FakeSessionManager::die()
{
    if (m_connections->program)
        SmsDie(m_connections->program);
}

} // namespace korvo
