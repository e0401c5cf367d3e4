#pragma once

#include <QColor>
#include <QWidget>

namespace korvo {

/// A ring that fills clockwise from the top once an hour, in the colour of all the time that has elapsed. It is laid
/// out as `Overflowing{ring, ring->overflow()}`: its line stands astride the circle, and its glow beyond that.
class ProgressRing : public QWidget {
    Q_OBJECT
public:
    ProgressRing(double size, double lineWidth, QWidget *parent = nullptr);

    /// Shows so many seconds. Paints only what a person could tell from what is there.
    void setElapsed(double elapsed);

    double progress() const { return m_progress; } ///< From 0 to 1; 0 also before the start.
    QColor color() const { return m_color; }
    int overflow() const { return m_overflow; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    double m_size;
    double m_lineWidth;
    int m_overflow;
    double m_progress = 0;
    QColor m_color;
    int m_shownStep = 0; ///< How far the arc reaches in quarters of a pixel, as last painted.
};

} // namespace korvo
