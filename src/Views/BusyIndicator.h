#pragma once

#include <QTimer>
#include <QWidget>

#include <chrono>

class QPainter;

namespace korvo {

inline constexpr std::chrono::milliseconds spokeInterval{100}; ///< A turn in 0.8 seconds.

/// Draws the spinner after so many intervals.
void drawSpokes(QPainter &painter, const QRectF &rect, const QColor &color, int step);

/// A small circle of spokes that turns as long as it is shown, from the same place each time.
class BusyIndicator : public QWidget {
    Q_OBJECT
public:
    explicit BusyIndicator(const QColor &color, int size = 16, QWidget *parent = nullptr);
    /// In the colour of the desktop's texts.
    explicit BusyIndicator(QWidget *parent = nullptr) : BusyIndicator(QColor(), 16, parent) { }

    bool isTurning() const { return m_timer.isActive(); }

    QSize sizeHint() const override { return {m_size, m_size}; }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_color; ///< Invalid for that of the palette.
    int m_size;
    int m_step = 0;
    QTimer m_timer;
};

} // namespace korvo
