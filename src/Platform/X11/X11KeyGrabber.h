#pragma once

#include "Platform/KeyGrabber.h"

#include <QAbstractNativeEventFilter>
#include <QList>
#include <QTimer>

#include <optional>

struct xcb_connection_t;
struct xcb_key_press_event_t;

namespace korvo {

/// A passive grab on every screen's root window, whatever locks are on. It is renewed when the keyboard changes, and
/// needs no window. Statuses besides those of `KeyGrabber` are X error codes. Source: XGrabKey(3).
class X11KeyGrabber final : public KeyGrabber, private QAbstractNativeEventFilter {
public:
    explicit X11KeyGrabber(QObject *parent = nullptr);
    ~X11KeyGrabber() override;

    int install() override;
    void uninstall() override;
    int grab(quint32 keyCode, quint32 modifiers) override;
    void ungrab() override;

private:
    /// One combination for each state of the locks.
    struct Grab {
        quint8 key = 0;        ///< X key code.
        quint16 modifiers = 0; ///< X bits.
        quint16 locks = 0;     ///< Bits that a press may have besides.
        QList<quint16> combinations() const;
    };

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    bool handlePress(const xcb_key_press_event_t &event);
    bool handleRelease(const xcb_key_press_event_t &event);
    int take(const Grab &grab);
    void giveBack(const Grab &grab, const Grab *except = nullptr);
    Grab currentGrab() const;
    void hold(const Grab &grab);
    void release();
    void renew();
    void startReleaseWatch();
    void watchRelease();
    bool isKeyDown() const;

    xcb_connection_t *m_connection = nullptr; ///< While installed.
    quint8 m_keyboardEvent = 0;
    quint32 m_evdevKeyCode = 0;
    quint32 m_modifiers = 0;
    bool m_isWanted = false;    ///< From a `grab` that succeeded on, until the key is given back.
    std::optional<Grab> m_grab; ///< What is held; none while another program keeps it from us.
    bool m_isDown = false;
    bool m_wasUp = false;      ///< As the watch last saw the key.
    quint32 m_releaseTime = 0; ///< In milliseconds of the server's clock.
    QTimer m_renewal;
    QTimer m_releaseWatch;
};

} // namespace korvo
