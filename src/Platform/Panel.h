#pragma once

#include <QObject>
#include <QPainterPath>
#include <QRect>

#include <memory>

class QWidget;

namespace korvo {

/// How a panel stands on the desktop.
struct PanelStyle {
    bool hasShadow = true;
    bool isAboveEverything = false; ///< Also above the desktop's own bars and menus.
};

/// A borderless, transparent window above the windows of other programs, over full-screen ones and on every workspace,
/// that never takes the keyboard and stands in no task list. Its content alone gives it a look.
class Panel : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// Takes `content` over, in place of what was there. It fills the frame.
    virtual void setContent(std::unique_ptr<QWidget> content) = 0;

    /// Where the panel stands, in logical pixels, y growing downwards.
    virtual void setFrame(const QRect &frame) = 0;

    /// Where alone the panel may be seen, for one whose frame changes many times a second: its window stands there once
    /// and for all, and the frame moves within it. Empty, as at the start, for a window that follows the frame.
    virtual void setRoom(const QRect &room) = 0;

    /// What of the frame is there to be seen and clicked, in the frame's own coordinates; the rest lets clicks through.
    /// The shadow follows it.
    virtual void setShape(const QPainterPath &shape) = 0;

    /// Shows the panel in front; the program that has the keyboard keeps it.
    virtual void orderFront() = 0;
    virtual void orderOut() = 0;
    virtual bool isVisible() const = 0;

signals:
    /// The pointer has come to what is to be seen of the panel, or that to the pointer; and they have parted.
    void pointerEntered();
    void pointerLeft();
};

} // namespace korvo
