#pragma once

#include <QBoxLayout>
#include <QMargins>

namespace korvo {

inline constexpr int defaultSpacing = 8; ///< Where the design leaves the gap to the platform.

/// How a row or a column of widgets is set. The gap of `spacing` stands between any two children.
struct StackStyle {
    int spacing = defaultSpacing;
    QMargins padding{};
};

/// A child that takes all the room that is left, and none if none is left.
struct Spacer { };

/// A child that takes an equal share of the row's width together with others like it, whatever it holds.
struct EqualShare {
    QWidget *widget;
};

/// A child that is laid out at its own size and drawn, or clicked, so many points beyond it on all sides.
struct Overflowing {
    QWidget *widget;
    int overflow;
};

/// Padding in the order of the design's words.
constexpr QMargins padding(int horizontal, int vertical)
{
    return {horizontal, vertical, horizontal, vertical};
}
constexpr QMargins padding(int horizontal, int top, int bottom)
{
    return {horizontal, top, horizontal, bottom};
}

void addToStack(QBoxLayout &stack, QWidget *child);
void addToStack(QBoxLayout &stack, QLayout *child);
void addToStack(QBoxLayout &stack, Spacer child);
void addToStack(QBoxLayout &stack, EqualShare child);
void addToStack(QBoxLayout &stack, Overflowing child);

QBoxLayout *makeStack(QBoxLayout::Direction direction, const StackStyle &style);

/// A row: children at their own height in the middle, spacers stretched.
template <typename... Children> QBoxLayout *hstack(const StackStyle &style, Children... children)
{
    auto *stack = makeStack(QBoxLayout::LeftToRight, style);
    (addToStack(*stack, children), ...);
    return stack;
}

/// A column: children as wide as the column, texts at its leading edge.
template <typename... Children> QBoxLayout *vstack(const StackStyle &style, Children... children)
{
    auto *stack = makeStack(QBoxLayout::TopToBottom, style);
    (addToStack(*stack, children), ...);
    return stack;
}

/// A column whose children keep their own width and stand in the middle.
template <typename... Children> QBoxLayout *centeredStack(const StackStyle &style, Children... children)
{
    auto *stack = makeStack(QBoxLayout::TopToBottom, style);
    ((addToStack(*stack, children), stack->setAlignment(children, Qt::AlignHCenter)), ...);
    return stack;
}

/// Keeps a child at the top of a row that is higher than it.
template <typename Child> QBoxLayout *atTop(Child child)
{
    return vstack({.spacing = 0}, child, Spacer());
}

/// A widget without a look of its own that holds a stack.
QWidget *section(const QString &name, QLayout *stack);

} // namespace korvo
