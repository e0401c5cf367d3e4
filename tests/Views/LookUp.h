#pragma once

#include "Views/ElidedLabel.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

namespace korvo {

// How tests find their way in a view.

/// Lets layouts settle and widgets go that are on their way out.
inline void settleLayout()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

/// The visible text; null if the view shows no such one.
inline ElidedLabel *textIn(const QWidget &view, const QString &text)
{
    for (auto *label : view.findChildren<ElidedLabel *>()) {
        if (label->isVisible() && label->text() == text)
            return label;
    }
    return nullptr;
}

/// The visible child of that name; null if there is none.
template <typename Widget = QWidget> Widget *childIn(const QWidget &view, const QString &name)
{
    for (auto *child : view.findChildren<Widget *>(name)) {
        if (child->isVisible())
            return child;
    }
    return nullptr;
}

/// The place of a child in the view's coordinates.
inline QRect placeIn(const QWidget &view, const QWidget *child)
{
    return {child->mapTo(&view, QPoint()), child->size()};
}

/// The children of one kind that are to be seen, in their order.
template <typename Widget> QList<Widget *> visibleIn(const QWidget &view)
{
    QList<Widget *> found;
    for (auto *child : view.findChildren<Widget *>()) {
        if (child->isVisible())
            found.append(child);
    }
    return found;
}

inline QColor inkOf(const QWidget *widget)
{
    return widget->palette().color(QPalette::Active, QPalette::WindowText);
}

} // namespace korvo
