#pragma once

#include <QByteArray>

#include <ctime>

namespace korvo {

/// Makes a zone of the time zone database the local one for as long as it lives.
class LocalZone {
public:
    explicit LocalZone(const QByteArray &name) : m_wasSet(qEnvironmentVariableIsSet("TZ")), m_before(qgetenv("TZ"))
    {
        qputenv("TZ", name);
        ::tzset();
    }
    ~LocalZone()
    {
        if (m_wasSet)
            qputenv("TZ", m_before);
        else
            qunsetenv("TZ");
        ::tzset();
    }
    Q_DISABLE_COPY_MOVE(LocalZone)

private:
    const bool m_wasSet;
    const QByteArray m_before;
};

} // namespace korvo
