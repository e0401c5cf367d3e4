#pragma once

#include "Platform/InputPanel.h"
#include "Platform/X11/CompositorWatch.h"

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QTimer>

namespace korvo {

/// A window that the window manager puts above others and gives the keyboard, as a dialogue that the user has asked for
/// just now: such a one is over a full-screen window too, as that has lost the keyboard to it.
class X11InputPanel final : public InputPanel, private QAbstractNativeEventFilter {
    Q_OBJECT
public:
    X11InputPanel();
    ~X11InputPanel() override; ///< The content goes a turn of the event loop later: it may be what asked for it.

    void setContent(std::unique_ptr<QWidget> content, const QMargins &overflow) override;
    QWidget *content() const override;
    void setFrame(const QRect &frame) override;
    void setShape(const QPainterPath &shape) override;
    void makeKeyAndOrderFront() override;
    void activateIgnoringOtherApps() override;
    void makeKey() override;
    void orderOut() override;
    bool isVisible() const override;

private:
    class Window;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    void hideIfDeactivated();
    void layOut();
    void applyShape();

    CompositorWatch m_compositor;
    QRect m_frame;
    QMargins m_overflow;
    QPainterPath m_shape; ///< Empty for the whole frame.
    Window *m_window;
    QPointer<QWidget> m_content;
    bool m_hasHadKeyboard = false; ///< Since it was shown: before that there is nothing to lose.
    QTimer m_focusLoss; ///< Runs out once the toolkit has had the event by which a window of ours lost the keyboard.
};

} // namespace korvo
