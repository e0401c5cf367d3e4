#pragma once

#include <QColor>
#include <QWidget>

namespace korvo {

/// A rectangle in one colour, with rounded corners or without, around whatever layout it is given.
class RoundedBox : public QWidget {
    Q_OBJECT
public:
    explicit RoundedBox(const QColor &color, double radius = 0, QWidget *parent = nullptr);

    QColor color() const { return m_color; }
    double radius() const { return m_radius; }
    void setColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_color;
    double m_radius;
};

/// A filled circle of that diameter.
RoundedBox *makeDot(int diameter, const QColor &color);

/// A line of 1 point across the card, with that much padding at its ends.
QWidget *makeRule(const QColor &color, int horizontalPadding);

} // namespace korvo
