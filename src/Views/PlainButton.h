#pragma once

#include <QAbstractButton>
#include <QColor>

class QLayout;

namespace korvo {

/// What a button draws behind its label.
struct ButtonLook {
    QColor background = Qt::transparent;
    QColor stroke = Qt::transparent; ///< Of width 1, on the edge of the background.
    double radius = 0;
    QColor hover = QColor(255, 255, 255, 13); ///< On top, under the pointer.
    QColor pressed = QColor(255, 255, 255, 26);
};

/// A button without the chrome of the platform: a label, all of whose room can be clicked. Space and Return press it;
/// arrows are left to the list that it may stand in.
class PlainButton : public QAbstractButton {
    Q_OBJECT
public:
    /// `name` is for screen readers.
    PlainButton(const QString &name, QLayout *label, const ButtonLook &look = {}, QWidget *parent = nullptr);

    const ButtonLook &look() const { return m_look; }

protected:
    bool event(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    ButtonLook m_look;
    bool m_showsFocus = false; ///< Only the keyboard's focus is shown.
};

} // namespace korvo
