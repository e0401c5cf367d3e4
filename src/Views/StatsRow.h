#pragma once

#include <QWidget>

namespace korvo {

class ElidedLabel;

/// One cell of the stats row: a small label over a value of one line.
class StatItem : public QWidget {
    Q_OBJECT
public:
    explicit StatItem(const QString &label, bool highlight = false, QWidget *parent = nullptr);

    void setValue(const QString &value);

private:
    ElidedLabel *m_value;
};

/// Cells of equal width in a rounded row, whose background shows through the gaps between them.
class StatsRow : public QWidget {
    Q_OBJECT
public:
    StatsRow(const QList<StatItem *> &cells, const QColor &background, double radius, QWidget *parent = nullptr);

    double radius() const { return m_radius; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QList<StatItem *> m_cells;
    QColor m_background;
    double m_radius;
};

} // namespace korvo
