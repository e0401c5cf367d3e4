#include "Views/Stack.h"

#include <QWidget>

namespace korvo {

namespace {

/// Tells the layout a smaller widget than the one that it places.
class OverflowItem final : public QWidgetItem {
public:
    OverflowItem(QWidget *widget, int overflow) : QWidgetItem(widget), m_margins(overflow, overflow, overflow, overflow)
    {
    }

    QSize sizeHint() const override { return isEmpty() ? QSize(0, 0) : widget()->sizeHint().shrunkBy(m_margins); }
    QSize minimumSize() const override { return sizeHint(); }
    QSize maximumSize() const override { return sizeHint(); }
    Qt::Orientations expandingDirections() const override { return {}; }
    void setGeometry(const QRect &rect) override
    {
        QRect place(QPoint(), sizeHint());
        place.moveCenter(rect.center());
        widget()->setGeometry(place.marginsAdded(m_margins));
    }

private:
    QMargins m_margins;
};

} // namespace

QBoxLayout *makeStack(QBoxLayout::Direction direction, const StackStyle &style)
{
    auto *stack = new QBoxLayout(direction);
    stack->setSpacing(style.spacing);
    stack->setContentsMargins(style.padding);
    return stack;
}

void addToStack(QBoxLayout &stack, QWidget *child)
{
    const bool isRow = stack.direction() == QBoxLayout::LeftToRight;
    stack.addWidget(child, 0, isRow ? Qt::AlignVCenter : Qt::Alignment());
}

void addToStack(QBoxLayout &stack, QLayout *child)
{
    stack.addLayout(child);
}

void addToStack(QBoxLayout &stack, Spacer)
{
    stack.addStretch(1);
}

void addToStack(QBoxLayout &stack, EqualShare child)
{
    child.widget->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    stack.addWidget(child.widget, 1);
}

void addToStack(QBoxLayout &stack, Overflowing child)
{
    stack.addItem(new OverflowItem(child.widget, child.overflow));
}

QWidget *section(const QString &name, QLayout *stack)
{
    auto *widget = new QWidget;
    widget->setObjectName(name);
    widget->setLayout(stack);
    return widget;
}

} // namespace korvo
