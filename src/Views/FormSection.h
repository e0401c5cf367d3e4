#pragma once

#include <QWidget>

class QBoxLayout;

namespace korvo {

/// The height that fields, buttons and pickers have in common, whatever the style.
int controlHeight(const QWidget &control);

/// One group of a form: a heading, and a rounded box in the desktop's own colours with a row for each control and a
/// hairline between rows. Invisible rows take no room.
class FormSection : public QWidget {
    Q_OBJECT
public:
    /// A title of no letters has no place of its own.
    explicit FormSection(const QString &title, QWidget *parent = nullptr);

    /// A row that holds a widget, or a layout, alone.
    QWidget *addRow(QWidget *content);
    QWidget *addRow(QLayout *content);
    /// A row with a label before a control, whose buddy it is. `&` marks the key that leads there.
    QWidget *addRow(const QString &label, QWidget *control, QWidget *trailing = nullptr);
    /// Words that belong to the row above: no hairline between them.
    QWidget *addNote(QWidget *content);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QWidget *insertRow(QLayout *content, bool isNote);

    QWidget *m_box;
    QBoxLayout *m_rows;
};

} // namespace korvo
