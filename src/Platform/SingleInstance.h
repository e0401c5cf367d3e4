#pragma once

#include <QObject>

namespace korvo {

/// Keeps a session to one running program.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// True if this process is the session's only one, or if nobody can tell. Otherwise the other one has been asked to
    /// show itself, and this one should end.
    virtual bool claim() = 0;

    /// Gives the place up: whoever starts from now on is the only one. Free if it was never claimed.
    virtual void release() = 0;

signals:
    /// The program was started once more.
    void activationRequested();
};

} // namespace korvo
