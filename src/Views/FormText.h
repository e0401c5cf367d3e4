#pragma once

#include <QLabel>

namespace korvo {

/// Plain words of a form in the desktop's own font and colours, which they follow. They wrap anywhere rather than ask
/// for room; of one line they end in an ellipsis, with the whole text as the tool tip.
class FormText : public QLabel {
    Q_OBJECT
public:
    enum class Role {
        heading, ///< Over a section.
        caption, ///< Small, beside the main text.
        error,   ///< Small and red.
        success, ///< Green.
        failure, ///< Red.
    };
    enum class Lines { one, any };

    explicit FormText(Role role, const QString &text = {}, Lines lines = Lines::any, QWidget *parent = nullptr);

    /// Shows a text that has come up by itself, and has it read out.
    void announce(const QString &text);

    /// What is shown at the present width, line by line.
    QStringList shownLines() const { return linesFor(width()); }
    bool isElided() const;
    QColor ink() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return m_lines == Lines::any; }
    int heightForWidth(int width) const override;

signals:
    void announced(const QString &text); ///< Together with the word to screen readers.

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QStringList linesFor(int width) const;
    void takeFont();

    Role m_role;
    Lines m_lines;
};

} // namespace korvo
