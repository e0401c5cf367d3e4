#pragma once

#include "Views/TextStyle.h"

#include <QLabel>

namespace korvo {

/// Plain text of at most so many lines, the last of which ends in an ellipsis if the text does not fit. The whole text
/// is there for screen readers, and as the tool tip if it is cut.
class ElidedLabel : public QLabel {
    Q_OBJECT
public:
    ElidedLabel(const QString &text, const QFont &font, const QColor &color, int maximumLines = 1,
                QWidget *parent = nullptr);
    ElidedLabel(const QString &text, const TextStyle &style, const QColor &color, int maximumLines = 1,
                QWidget *parent = nullptr);

    /// Keeps a text of one line at its full width, so that others give way.
    ElidedLabel *keptWhole();

    /// What is shown at the present width, line by line.
    QStringList shownLines() const { return linesFor(width()); }
    bool isElided() const;
    /// Shows the whole text as a tool tip if it is cut. False if it isn't.
    bool showToolTip(const QPoint &globalPosition) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString wholeLine() const; ///< The text without breaks, no longer than could ever be seen.
    QStringList linesFor(int width) const;

    int m_maximumLines;
    bool m_isKeptWhole = false;
};

} // namespace korvo
