#pragma once

#include <QObject>

namespace korvo {

/// One key on the whole desktop: who holds it is told of a press whichever program has the focus. Statuses are 0 if all
/// is well, else why not: one of those below, or a number of the desktop's own, such as 10 of X11 for a key that
/// another program holds.
class KeyGrabber : public QObject {
    Q_OBJECT
public:
    enum Status {
        ok = 0,
        notSupported = -1, ///< This desktop has no such service.
        unknownKey = -2,   ///< No key of that code is known, or none that the desktop could grab.
        notBound = -3,     ///< The desktop agreed, but to nothing.
        serviceLost = -4,  ///< The desktop's service has gone, and the key with it.
    };

    using QObject::QObject;

    /// Begins to listen for presses; before it, and after `uninstall`, no press is told.
    virtual int install() = 0;

    /// Stops listening, and gives back a key that is still held. Nothing happens if nothing is installed.
    virtual void uninstall() = 0;

    /// Takes a key in place of the former: virtual key code, modifier bits as stored. A desktop that answers later
    /// gives 0 at once, then `failed` if it comes to that, and `grabbed` if it gives the key after such a failure.
    virtual int grab(quint32 keyCode, quint32 modifiers) = 0;

    /// Gives the key back. Nothing happens if none is held.
    virtual void ungrab() = 0;

signals:
    /// The key went down. Not repeated while it is held.
    void pressed();

    /// The key that `grab` took, or seemed to take, is not ours.
    void failed(int status);

    /// The key of the last `grab` is ours after all, or again, after it had `failed`.
    void grabbed();
};

} // namespace korvo
