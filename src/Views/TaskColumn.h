#pragma once

#include "Models/NotionTask.h"

#include <QAbstractScrollArea>
#include <QList>
#include <QMap>

#include <functional>

namespace korvo {

/// A column of rows, one a task, as high as its rows up to a limit, beyond which it scrolls. Rows are made as they come
/// into sight and go when they have left it. To the keyboard it is one stop before its rows, which Tab and the arrows
/// walk through in order, in sight or not.
class TaskColumn : public QAbstractScrollArea {
    Q_OBJECT
public:
    struct Rows {
        std::function<QWidget *(const NotionTask &, QWidget *parent)> make; ///< All rows are of one height.
        std::function<bool(const NotionTask &)> canBePressed;               ///< Whether the keyboard should stop at it.
    };

    TaskColumn(int maximumHeight, Rows rows, QWidget *parent = nullptr);

    /// Shows these tasks in this order. Rows of tasks that are equal to what they were stay.
    void setTasks(const QList<NotionTask> &tasks);

    /// To be called when the answers of `canBePressed` may have changed: the keyboard's place is kept.
    void pressabilityChanged();

    /// Lays a thin bar over the rows, for dark cards. Without it the bar is that of the platform.
    void useSlimScrollBar();

    /// The row of a task that is in sight; null for others.
    QWidget *rowAt(int index) const { return m_rows.value(index).widget; }
    int rowCount() const { return int(m_rows.size()); } ///< Of rows that exist.

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    struct Row {
        NotionTask task;
        QWidget *widget = nullptr;
    };

    void layOutRows();
    QWidget *rowMadeAt(int index);
    void discard(QWidget *row);
    void updateRange();
    int focusedIndex() const; ///< -1 while no row has the keyboard.
    int nextPressable(int from, int step) const;
    bool focusRow(int index, Qt::FocusReason reason);

    int m_maximumHeight;
    Rows m_source;
    QList<NotionTask> m_tasks;
    QMap<int, Row> m_rows; ///< By their index in the list.
    int m_rowHeight = 0;
    int m_lastFocused = -1;
    bool m_isLeaving = false; ///< The keyboard passes through on its way out.
    QWidget *m_slimScrollBar = nullptr;
};

} // namespace korvo
