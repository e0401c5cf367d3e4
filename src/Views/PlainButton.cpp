#include "Views/PlainButton.h"

#include "Views/ElidedLabel.h"
#include "Views/Theme.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QPainter>
#include <QPen>

namespace korvo {

PlainButton::PlainButton(const QString &name, QLayout *label, const ButtonLook &look, QWidget *parent) :
    QAbstractButton(parent),
    m_look(look)
{
    setAccessibleName(name);
    setAttribute(Qt::WA_Hover); // Paints it anew as the pointer comes and goes.
    setFocusPolicy(Qt::TabFocus);
    setLayout(label);
    for (auto *part : findChildren<QWidget *>())
        part->setAttribute(Qt::WA_TransparentForMouseEvents);
}

bool PlainButton::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) {
        const auto position = static_cast<QHelpEvent *>(event)->globalPos();
        for (const auto *label : findChildren<ElidedLabel *>()) {
            if (label->showToolTip(position))
                return true;
        }
    }
    return QAbstractButton::event(event);
}

void PlainButton::focusInEvent(QFocusEvent *event)
{
    m_showsFocus = event->reason() != Qt::MouseFocusReason && event->reason() != Qt::ActiveWindowFocusReason;
    QAbstractButton::focusInEvent(event);
}

void PlainButton::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!event->isAutoRepeat())
            click();
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
        event->ignore();
        break;
    default:
        QAbstractButton::keyPressEvent(event);
    }
}

void PlainButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const auto fill = [&](const QColor &color) {
        if (color.alpha() == 0)
            return;
        painter.setBrush(color);
        painter.drawRoundedRect(rect(), m_look.radius, m_look.radius);
    };
    fill(m_look.background);
    if (isEnabled() && isDown())
        fill(m_look.pressed);
    else if (isEnabled() && underMouse())
        fill(m_look.hover);

    const auto outline = [&](const QColor &color, double width) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(color, width));
        const double inset = width / 2;
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), m_look.radius - inset,
                                m_look.radius - inset);
    };
    if (m_look.stroke.alpha() > 0)
        outline(m_look.stroke, 1);
    if (hasFocus() && m_showsFocus)
        outline(theme::faded(theme::systemBlue, 0.8), 2);
}

} // namespace korvo
