#pragma once

#include <QTimer>
#include <QWidget>

namespace korvo {

/// A small circle of spokes that turns as long as it is shown.
class BusyIndicator : public QWidget {
    Q_OBJECT
public:
    explicit BusyIndicator(const QColor &color, int size = 16, QWidget *parent = nullptr);

    bool isTurning() const { return m_timer.isActive(); }

    QSize sizeHint() const override { return {m_size, m_size}; }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_color;
    int m_size;
    int m_step = 0;
    QTimer m_timer;
};

} // namespace korvo
