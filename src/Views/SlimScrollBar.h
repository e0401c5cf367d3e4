#pragma once

#include <QScrollBar>
#include <QWidget>

#include <optional>

namespace korvo {

/// A thin bar on top of what it scrolls, in place of the platform's, which it steers. Absent while all is in sight.
class SlimScrollBar : public QWidget {
    Q_OBJECT
public:
    SlimScrollBar(QScrollBar &steered, QWidget *parent);

    static constexpr int width = 8;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QRectF thumb() const;
    void follow();

    QScrollBar &m_steered;
    std::optional<double> m_grip; ///< How far below the thumb's top it is held.
};

} // namespace korvo
