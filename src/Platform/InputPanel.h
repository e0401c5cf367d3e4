#pragma once

#include <QMargins>
#include <QObject>
#include <QPainterPath>
#include <QRect>

#include <memory>

class QWidget;

namespace korvo {

/// A borderless, transparent window above the windows of other programs that takes the keyboard, without raising another
/// window of the program, and stands in no task list. Its content alone gives it a look. It hides by itself when another
/// program gets the keyboard. All rectangles in logical pixels, y growing downwards.
class InputPanel : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// Takes `content` over, in place of what was there. It fills the frame and, by `overflow`, the room around it, for
    /// what is seen there but cannot be clicked, as a shadow.
    virtual void setContent(std::unique_ptr<QWidget> content, const QMargins &overflow) = 0;
    virtual QWidget *content() const = 0; ///< Null if there is none.

    virtual void setFrame(const QRect &frame) = 0;

    /// What of the frame can be clicked, in the frame's own coordinates, and all that is seen where the desktop knows no
    /// transparency.
    virtual void setShape(const QPainterPath &shape) = 0;

    /// Shows the panel in front of all windows, as one that the user has asked for.
    virtual void makeKeyAndOrderFront() = 0;

    /// Takes the keyboard from whatever program has it. Does nothing while the panel is hidden.
    virtual void activateIgnoringOtherApps() = 0;

    /// Takes the keyboard if the panel is shown and hasn't got it.
    virtual void makeKey() = 0;

    virtual void orderOut() = 0;
    virtual bool isVisible() const = 0;
};

} // namespace korvo
