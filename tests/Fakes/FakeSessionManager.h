#pragma once

#include <QString>

#include <memory>

namespace korvo {

/// The session manager of a desktop, for one program at a time: what it was told, and the end of the session. It works
/// while the event loop turns. Source: X Session Management Protocol 1.0.
class FakeSessionManager {
public:
    FakeSessionManager();
    ~FakeSessionManager();
    Q_DISABLE_COPY_MOVE(FakeSessionManager)

    QString address() const; ///< For SESSION_MANAGER; empty if nobody can reach it.

    void saveYourself(); ///< As before the end: the program is to save what it has, and to wait.
    void die();          ///< The end.

    bool isRegistered = false;
    int savedCount = 0;    ///< How often the program said that it has saved what there is.
    int restartStyle = -1; ///< That it asked for, as the protocol counts; -1 for none.

private:
    struct Connections;

    std::unique_ptr<Connections> m_connections;
};

} // namespace korvo
