#include "Platform/Freedesktop/PortalRequest.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {
const auto requestInterface = u"org.freedesktop.portal.Request"_s;
}

PortalRequest::PortalRequest(const QDBusConnection &bus, QObject *parent) :
    QObject(parent),
    m_bus(bus),
    m_token(newToken())
{
}

void PortalRequest::send(const QDBusMessage &call)
{
    if (!m_bus.isConnected()) { // QtDBus would tell of no error.
        QMetaObject::invokeMethod(this, &PortalRequest::fail, Qt::QueuedConnection);
        return;
    }
    // The answer may come before the reply to the call.
    m_handle = path() + u"/request/"_s + callerPart(m_bus) + u'/' + m_token;
    m_bus.connect(service(), m_handle, requestInterface, u"Response"_s, this, SLOT(handleResponse(uint, QVariantMap)));
    auto *const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher->isError())
            fail();
    });
}

void PortalRequest::close()
{
    if (std::exchange(m_isDone, true) || m_handle.isEmpty())
        return;
    auto call = QDBusMessage::createMethodCall(service(), m_handle, requestInterface, u"Close"_s);
    call.setAutoStartService(false);
    m_bus.send(call);
}

void PortalRequest::handleResponse(uint code, const QVariantMap &results)
{
    if (!std::exchange(m_isDone, true))
        emit answered(code, results);
}

void PortalRequest::fail()
{
    if (!std::exchange(m_isDone, true))
        emit failed();
}

QString PortalRequest::callerPart(const QDBusConnection &bus)
{
    return bus.baseService().mid(1).replace(u'.', u'_');
}

QString PortalRequest::newToken()
{
    static quint32 count = 0;
    return u"korvo%1"_s.arg(++count);
}

} // namespace korvo
