#pragma once

#include <QLabel>

namespace korvo {

/// A text that looks like a field and cannot be edited, in the desktop's own colours. Highlighted it takes the accent
/// colour.
class ShortcutField : public QLabel {
    Q_OBJECT
public:
    explicit ShortcutField(QWidget *parent = nullptr);

    bool isHighlighted() const { return m_isHighlighted; }
    void setHighlighted(bool isHighlighted);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_isHighlighted = false;
};

} // namespace korvo
