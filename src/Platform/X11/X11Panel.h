#pragma once

#include "Platform/Panel.h"
#include "Platform/X11/CompositorWatch.h"

#include <QPointer>

namespace korvo {

class PanelStack;

/// A window that the window manager has no say in: it is where it is told to be, on every workspace and above all others
/// from the moment it is ordered front, in no list, and never gets the keyboard. Managed windows are not over
/// full-screen ones under openbox and KWin, whatever they ask for. With a compositor its edge is smooth and it has a
/// shadow, which is part of the window and lets clicks through; without one the shape is cut out of the window.
class X11Panel final : public Panel {
    Q_OBJECT
public:
    explicit X11Panel(const PanelStyle &style);
    ~X11Panel() override; ///< The content goes a turn of the event loop later: it may be what asked for it.

    void setContent(std::unique_ptr<QWidget> content) override;
    void setFrame(const QRect &frame) override;
    void setRoom(const QRect &room) override;
    void setShape(const QPainterPath &shape) override;
    void orderFront() override;
    void orderOut() override;
    bool isVisible() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    class Window;
    class Rim;
    /// What the X server was told of the shape, in device pixels.
    struct NativeShape {
        quint32 window = 0;
        QPainterPath path;
        QSize size;
        bool isComposited = false;
        bool operator==(const NativeShape &) const = default;
    };

    QMargins margins() const;
    QRect windowPlace() const;
    QPainterPath shapeInWindow() const;
    void layOut();
    void applyShape();
    void applyNativeShape();

    const PanelStyle m_style;
    const std::shared_ptr<PanelStack> m_stack;
    CompositorWatch m_compositor;
    QRect m_frame;
    QRect m_room;         ///< Empty for the frame.
    QPainterPath m_shape; ///< Empty for the whole frame.
    NativeShape m_nativeShape;
    Window *m_window;
    Rim *m_rim; ///< A child of the window, above the content.
    QPointer<QWidget> m_content;
};

} // namespace korvo
