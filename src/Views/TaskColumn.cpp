#include "Views/TaskColumn.h"

#include "Views/SlimScrollBar.h"

#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace korvo {

namespace {

constexpr int wheelStep = 20; // Points a line of the wheel, of which a notch has three.

} // namespace

TaskColumn::TaskColumn(int maximumHeight, Rows rows, QWidget *parent) :
    QAbstractScrollArea(parent),
    m_maximumHeight(maximumHeight),
    m_source(std::move(rows))
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Maximum); // It gives way to all else.
    setFocusPolicy(Qt::TabFocus);
    viewport()->setAutoFillBackground(false);
    verticalScrollBar()->setSingleStep(wheelStep);
}

void TaskColumn::setTasks(const QList<NotionTask> &tasks)
{
    const auto former = std::exchange(m_rows, {});
    const int focused = m_lastFocused;
    m_tasks = tasks;
    QList<QWidget *> kept;
    for (auto row = former.begin(); row != former.end(); ++row) {
        const auto index = int(tasks.indexOf(row->task));
        if (index >= 0 && !m_rows.contains(index)) {
            m_rows.insert(index, *row);
            if (row.key() == focused)
                m_lastFocused = index;
        } else {
            discard(row->widget);
        }
    }
    if (!m_tasks.isEmpty() && m_rowHeight == 0)
        m_rowHeight = rowMadeAt(0)->sizeHint().expandedTo(rowMadeAt(0)->minimumSize()).height();
    updateGeometry();
    updateRange();
    layOutRows();
}

void TaskColumn::pressabilityChanged()
{
    // The row that had the keyboard left it here when it was locked.
    if (hasFocus() && !m_isLeaving && m_lastFocused >= 0 && m_lastFocused < m_tasks.size()
        && m_source.canBePressed(m_tasks.at(m_lastFocused)))
        focusRow(m_lastFocused, Qt::OtherFocusReason);
}

void TaskColumn::useSlimScrollBar()
{
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_slimScrollBar = new SlimScrollBar(*verticalScrollBar(), this);
}

QSize TaskColumn::sizeHint() const
{
    return {0, int(std::min<qint64>(m_maximumHeight, qint64(m_tasks.size()) * m_rowHeight))};
}

QSize TaskColumn::minimumSizeHint() const
{
    return {0, std::min(m_rowHeight, sizeHint().height())};
}

void TaskColumn::resizeEvent(QResizeEvent *)
{
    if (m_slimScrollBar)
        m_slimScrollBar->setGeometry(width() - SlimScrollBar::width, 0, SlimScrollBar::width, height());
    updateRange();
    layOutRows();
}

void TaskColumn::showEvent(QShowEvent *event)
{
    QAbstractScrollArea::showEvent(event);
    layOutRows();
}

void TaskColumn::scrollContentsBy(int, int)
{
    layOutRows();
}

void TaskColumn::updateRange()
{
    const int height = viewport()->height();
    verticalScrollBar()->setPageStep(height);
    verticalScrollBar()->setRange(0, std::max(0, int(m_tasks.size()) * m_rowHeight - height));
}

void TaskColumn::layOutRows()
{
    if (!isVisible() || m_rowHeight == 0)
        return; // Its size is not settled yet.
    const int top = verticalScrollBar()->value();
    const int first = top / m_rowHeight;
    const int last = std::min((top + viewport()->height() - 1) / m_rowHeight, int(m_tasks.size()) - 1);
    for (auto row = m_rows.begin(); row != m_rows.end();) {
        const bool isInSight = row.key() >= first && row.key() <= last;
        if (isInSight || row->widget->isAncestorOf(focusWidget()) || row->widget == focusWidget()) {
            ++row;
        } else {
            discard(row->widget);
            row = m_rows.erase(row);
        }
    }
    for (int index = first; index <= last; ++index)
        rowMadeAt(index)->show();
    for (auto row = m_rows.begin(); row != m_rows.end(); ++row)
        row->widget->setGeometry(0, row.key() * m_rowHeight - top, viewport()->width(), m_rowHeight);
}

QWidget *TaskColumn::rowMadeAt(int index)
{
    auto &row = m_rows[index];
    if (!row.widget) {
        row.task = m_tasks.at(index);
        row.widget = m_source.make(row.task, viewport());
        row.widget->setVisible(isVisible());
        // Out of the window's order of focus, where it would stand last: `focusNextPrevChild` knows its place.
        auto *stop = row.widget->focusProxy() ? row.widget->focusProxy() : row.widget;
        stop->setFocusPolicy(Qt::ClickFocus);
    }
    return row.widget;
}

void TaskColumn::discard(QWidget *row)
{
    row->hide();
    row->deleteLater(); // It may be the one whose event led here.
}

int TaskColumn::focusedIndex() const
{
    for (auto row = m_rows.begin(); row != m_rows.end(); ++row) {
        if (row->widget == focusWidget() || row->widget->isAncestorOf(focusWidget()))
            return row.key();
    }
    return -1;
}

int TaskColumn::nextPressable(int from, int step) const
{
    for (int index = from + step; index >= 0 && index < m_tasks.size(); index += step) {
        if (m_source.canBePressed(m_tasks.at(index)))
            return index;
    }
    return -1;
}

bool TaskColumn::focusRow(int index, Qt::FocusReason reason)
{
    if (index < 0)
        return false;
    auto *bar = verticalScrollBar();
    const int top = index * m_rowHeight;
    bar->setValue(std::clamp(bar->value(), top + m_rowHeight - viewport()->height(), top));
    m_lastFocused = index;
    rowMadeAt(index)->setFocus(reason);
    layOutRows();
    return true;
}

void TaskColumn::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    if (m_isLeaving)
        return;
    if (event->reason() == Qt::TabFocusReason)
        focusRow(nextPressable(-1, 1), event->reason());
    else if (event->reason() == Qt::BacktabFocusReason)
        focusRow(nextPressable(int(m_tasks.size()), -1), event->reason());
}

bool TaskColumn::focusNextPrevChild(bool next)
{
    const int focused = focusedIndex();
    if (focused < 0) {
        const bool isEntering = next && hasFocus() && focusRow(nextPressable(-1, 1), Qt::TabFocusReason);
        return isEntering || QAbstractScrollArea::focusNextPrevChild(next);
    }
    if (!m_source.canBePressed(m_tasks.at(focused))) {
        setFocus(Qt::OtherFocusReason); // The row was locked under the keyboard's hands: stay near.
        return true;
    }
    if (focusRow(nextPressable(focused, next ? 1 : -1), next ? Qt::TabFocusReason : Qt::BacktabFocusReason))
        return true;
    const QScopedValueRollback leaving(m_isLeaving, true);
    setFocus(Qt::OtherFocusReason); // The window's order of focus knows this place, not that of the row.
    return QAbstractScrollArea::focusNextPrevChild(next);
}

void TaskColumn::keyPressEvent(QKeyEvent *event)
{
    const int from = std::max(focusedIndex(), hasFocus() ? m_lastFocused : -1);
    int to = -1;
    switch (event->key()) {
    case Qt::Key_Down:
        to = nextPressable(from, 1);
        break;
    case Qt::Key_Up:
        to = nextPressable(from < 0 ? int(m_tasks.size()) : from, -1);
        break;
    case Qt::Key_Home:
        to = nextPressable(-1, 1);
        break;
    case Qt::Key_End:
        to = nextPressable(int(m_tasks.size()), -1);
        break;
    default:
        break;
    }
    // With no row to go to, the keys scroll.
    if (!focusRow(to, Qt::OtherFocusReason))
        QAbstractScrollArea::keyPressEvent(event);
}

} // namespace korvo
