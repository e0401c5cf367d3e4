#pragma once

#include "Views/TextStyle.h"

#include <QLabel>

namespace korvo {

/// A running time. All digits take the same room, so that nothing moves while it counts, and it is laid out anew only
/// when it gets longer or shorter.
class ClockText : public QLabel {
    Q_OBJECT
public:
    ClockText(const QFont &font, const QColor &color, QWidget *parent = nullptr);

    QString time() const { return m_time; }
    /// Shows "1:02:05". An equal text paints nothing.
    void setTime(const QString &time);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    double cellWidth(QChar character) const;

    QString m_time;
};

} // namespace korvo
