#pragma once

#include <QPointer>
#include <QPushButton>
#include <QTimer>

namespace korvo {

/// A button of the desktop that shows a turning spinner before its words while its operation goes on, and keeps the
/// keyboard's focus over that time.
class BusyButton : public QPushButton {
    Q_OBJECT
public:
    explicit BusyButton(const QString &text, QWidget *parent = nullptr);

    bool isBusy() const { return m_timer.isActive(); }
    void setBusy(bool isBusy);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void changeEvent(QEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void showStep();

    QTimer m_timer;
    int m_step = 0;
    bool m_hadFocus = false;         ///< As it was disabled.
    QPointer<QWidget> m_focusWentTo; ///< From here, as it was disabled.
};

} // namespace korvo
