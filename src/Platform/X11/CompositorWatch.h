#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <xcb/xcb.h>

namespace korvo {

/// Tells whether somebody blends the windows of this screen, so that translucent pixels are what they should be; without
/// a compositor they are black. Where there is no X11 there always is one. Source: Extended Window Manager Hints 1.5.
class CompositorWatch final : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT
public:
    explicit CompositorWatch(QObject *parent = nullptr);
    ~CompositorWatch() override;

    bool isRunning() const { return m_isRunning; }

signals:
    void isRunningChanged();

private:
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    void setRunning(bool isRunning);

    xcb_atom_t m_selection = XCB_ATOM_NONE; ///< Whoever owns it is the compositor.
    quint8 m_selectionEvent = 0;
    bool m_isRunning = true;
};

} // namespace korvo
