#include "Views/FormSection.h"

#include "Views/FormText.h"
#include "Views/Stack.h"
#include "Views/Theme.h"

#include <QAccessibleWidget>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPen>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr double radius = 8;
constexpr int inset = 14; ///< From the edge of the box to its rows.
constexpr int rowPadding = 8;
constexpr int leastRowHeight = 42;
constexpr auto noteProperty = "isNote";

/// Screen readers tell of the group, by its title, as the focus enters it.
QAccessibleInterface *makeAccessible(const QString &, QObject *object)
{
    auto *form = qobject_cast<FormSection *>(object);
    return form ? new QAccessibleWidget(form, QAccessible::Grouping) : nullptr;
}

} // namespace

int controlHeight(const QWidget &control)
{
    return control.fontMetrics().height() + 12;
}

FormSection::FormSection(const QString &title, QWidget *parent) :
    QWidget(parent),
    m_box(new QWidget),
    m_rows(vstack({.spacing = 0}))
{
    static const bool isInstalled = (QAccessible::installFactory(makeAccessible), true);
    Q_UNUSED(isInstalled)
    setAccessibleName(title);
    m_box->setLayout(m_rows);
    auto *stack = vstack({.spacing = 6});
    if (!title.isEmpty()) {
        auto *heading = new FormText(FormText::Role::heading, title, FormText::Lines::one);
        addToStack(*stack, vstack({.spacing = 0, .padding = padding(4, 0)}, heading));
    }
    addToStack(*stack, m_box);
    setLayout(stack);
}

QWidget *FormSection::addRow(QWidget *content)
{
    return addRow(hstack({.spacing = 0}, content));
}

QWidget *FormSection::addRow(QLayout *content)
{
    return insertRow(content, false);
}

QWidget *FormSection::addRow(const QString &label, QWidget *control, QWidget *trailing)
{
    auto *words = new QLabel(label);
    words->setBuddy(control->focusProxy() ? control->focusProxy() : control);
    if (control->accessibleName().isEmpty())
        control->setAccessibleName(QString(label).remove(u'&'));
    auto *row = hstack({.spacing = 12}, words, Spacer(), control);
    if (trailing)
        addToStack(*row, trailing);
    return addRow(row);
}

QWidget *FormSection::addNote(QWidget *content)
{
    return insertRow(hstack({.spacing = 0}, content), true);
}

QWidget *FormSection::insertRow(QLayout *content, bool isNote)
{
    auto *row = new QWidget;
    row->setProperty(noteProperty, isNote);
    content->setContentsMargins(inset, isNote ? 0 : rowPadding, inset, isNote ? rowPadding + 2 : rowPadding);
    row->setLayout(content);
    if (!isNote)
        row->setMinimumHeight(leastRowHeight);
    m_rows->addWidget(row);
    return row;
}

bool FormSection::event(QEvent *event)
{
    if (event->type() == QEvent::LayoutRequest)
        update(); // The hairlines stand between the rows.
    return QWidget::event(event);
}

void FormSection::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto window = palette().color(QPalette::Active, QPalette::Window);
    const auto box = theme::isDark(palette())
        ? theme::mixed(window, Qt::white, 0.06)
        : theme::mixed(palette().color(QPalette::Active, QPalette::Base), window, 0.15);
    const auto line = theme::separatorOn(palette());
    painter.setPen(QPen(line, 1));
    painter.setBrush(box);
    painter.drawRoundedRect(QRectF(m_box->geometry()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);

    painter.setRenderHint(QPainter::Antialiasing, false);
    bool isFirst = true;
    for (int i = 0; i < m_rows->count(); ++i) {
        const auto *row = m_rows->itemAt(i)->widget();
        if (row->isHidden())
            continue;
        if (!isFirst && !row->property(noteProperty).toBool())
            painter.fillRect(QRect(m_box->x() + inset, m_box->y() + row->y(), m_box->width() - 2 * inset, 1), line);
        isFirst = false;
    }
}

} // namespace korvo
