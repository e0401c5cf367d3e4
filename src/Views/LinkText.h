#pragma once

#include <QColor>
#include <QLabel>

namespace korvo {

/// Words beside the main text with links in them, that open in the desktop's browser by pointer and by keyboard.
class LinkText : public QLabel {
    Q_OBJECT
public:
    explicit LinkText(const QString &richText, QWidget *parent = nullptr);

protected:
    bool event(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    void takeLook();

    QString m_richText;
    QColor m_linkColor;
};

} // namespace korvo
